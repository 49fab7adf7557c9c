#include "CtlFixture.h"

#include "support/ConfigurationBuilder.h"

#include <Faultkeeper/Identifiers.h>

#include <cstdlib>
#include <map>

namespace Support
{

namespace
{
const std::map<std::string, std::pair<int, int>> kIds = {{kLink, {0x40C09, 9}},
                                                         {kData, {0x4281B, 2}},
                                                         {kReceiver, {0x40C1B, 2}},
                                                         {kPosition, {0xA211B, 2}},
                                                         {kSound, {0x81F06, 11}}};

const char* const kPatterns = "<ErrorPatterns>\n<Patterns>\n"
                              "<pattern fixedCode=\"P-100\">\n"
                              "<error id=\"System:Position:No Data:2\"/>\n"
                              "<error id=\"Positioning:GPS:No Data:2\"/>\n"
                              "</pattern>\n</Patterns>\n</ErrorPatterns>\n";

STestError Position()
{
    STestTriggerSet set;
    set.errorLinking = "shallow";
    set.titleSource = "trigger";
    set.triggers = {kReceiver};
    STestError error;
    error.name = kPosition;
    error.sets = {set};
    return error;
}

STestError Sound()
{
    STestError error;
    error.name = kSound;
    error.problem = "Höhe des Tons: <unbekannt> & \"stumm\"";
    error.title = "-";
    error.severity = "Low";
    error.flags = "shouldBeep=\"yes\"";
    return error;
}

} // namespace

CVariable::CVariable(const std::string& name)
    : m_name(name), m_wasSet(std::getenv(name.c_str()) != nullptr),
      m_before(m_wasSet ? std::getenv(name.c_str()) : "")
{
    unsetenv(m_name.c_str());
}

CVariable::CVariable(const std::string& name, const std::string& value) : CVariable(name)
{
    setenv(m_name.c_str(), value.c_str(), 1);
}

CVariable::~CVariable()
{
    if (m_wasSet)
        setenv(m_name.c_str(), m_before.c_str(), 1);
    else
        unsetenv(m_name.c_str());
}

CtlTest::CtlTest()
{
    CConfigurationBuilder()
        .Leaf(kLink)
        .Leaf(kData)
        .Parent(kReceiver, {kLink, kData})
        .Add(Position())
        .Add(Sound())
        .WriteTo(m_configuration.Prefix());
    WriteFile(m_configuration.File("ErrorPatterns.xml"), kPatterns);
}

void CtlTest::StartOwner()
{
    m_database = std::make_unique<Faultkeeper::CErrorDatabase>(m_configuration.Prefix());
    m_owner = std::make_unique<Faultkeeper::CErrorDatabaseView>(true, Faultkeeper::eViewOwner);
    ASSERT_TRUE(m_owner->LoadErrors(*m_database));
    ASSERT_TRUE(m_owner->FaultkeeperReady(true));
}

void CtlTest::Raise(const std::string& name)
{
    const std::pair<int, int> id = kIds.at(name);
    ASSERT_TRUE(WaitUntil([&] { return m_owner->RaiseError(id.first, id.second); }));
}

void CtlTest::Clear(const std::string& name)
{
    const std::pair<int, int> id = kIds.at(name);
    ASSERT_TRUE(WaitUntil([&] { return m_owner->ClearError(id.first, id.second); }));
}

std::unique_ptr<CProgram> CtlTest::Start(const std::vector<std::string>& arguments) const
{
    std::vector<std::string> command = {FAULTKEEPER_TEST_CTL, "--config", Configuration(), "--run-dir",
                                        m_directory.Path()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return std::make_unique<CProgram>(command);
}

SFinished CtlTest::Ctl(const std::vector<std::string>& arguments) const
{
    const std::unique_ptr<CProgram> program = Start(arguments);
    const int status = program->Wait();
    return {status, program->Output(), program->Errors()};
}

Json CtlTest::Document(std::vector<std::string> arguments) const
{
    arguments.emplace_back("--json");
    const SFinished finished = Ctl(arguments);
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.errors, "");
    return Json::parse(finished.output);
}

SFinished CtlTest::Bare(const std::vector<std::string>& arguments)
{
    std::vector<std::string> command = {FAULTKEEPER_TEST_CTL};
    command.insert(command.end(), arguments.begin(), arguments.end());
    CProgram program(command);
    const int status = program.Wait();
    return {status, program.Output(), program.Errors()};
}

std::string WithoutTimes(std::string text)
{
    const std::size_t length = std::string("2026-03-01T17:05:09+00:00").size();
    for (std::size_t at = text.find("20"); at != std::string::npos; at = text.find("20", at + 1))
    {
        if (text.size() >= at + length && text[at + 10] == 'T' && text[at + 19] == '+')
            text.replace(at, length, "TIME");
    }
    return text;
}

std::string KeysOf(const Json& object)
{
    std::string keys;
    for (const auto& item : object.items())
        keys += (keys.empty() ? "" : " ") + item.key();
    return keys;
}

} // namespace Support
