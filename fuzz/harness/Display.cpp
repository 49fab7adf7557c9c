#include "harness/Display.h"

#include "harness/Expectation.h"
#include "harness/Silence.h"

#include "support/ConfigurationBuilder.h"
#include "support/FreshDirectory.h"

#include <Faultkeeper/ErrorPresentation.h>

#include <sys/shm.h>

#include <stdexcept>

namespace Fuzz
{

using namespace Faultkeeper;

namespace
{
Support::STestTriggerSet Set(const std::vector<std::string>& triggers, const std::string& linking,
                             const std::string& title, int needed = 1)
{
    Support::STestTriggerSet set;
    set.triggersNeeded = needed;
    set.errorLinking = linking;
    set.titleSource = title;
    set.triggers = triggers;
    return set;
}

Support::STestError Error(const std::string& name, const std::vector<Support::STestTriggerSet>& sets)
{
    Support::STestError error;
    error.name = name;
    error.sets = sets;
    error.flags = R"(visible="yes" shouldBeep="yes" shouldBeepIfGuiding="yes")";
    return error;
}

// Tops first. The triggers of one error, of its sets together, are 9, 8 and less: keys end within and between
// bytes.
void WriteConfiguration(const std::string& prefix)
{
    const std::string noData = "Positioning:GPS:No Data:2";
    const std::string connection = "Positioning:GPS:Connection:11";
    const std::string heading = "Positioning:GPS:Heading:3";
    const std::string speed = "Positioning:GPS:Speed:1";
    const std::string settings = "Positioning:GPS:Settings:14";
    const std::string circleA = "System:Battery:Power:0";
    const std::string circleB = "System:Battery:Voltage:1";
    const std::string leaf = "GPS:GPS:Communications:";
    const std::vector<std::string> leaves = {leaf + "0", leaf + "1", leaf + "2", leaf + "3",
                                             leaf + "4", leaf + "5", leaf + "6", leaf + "7"};

    Support::CConfigurationBuilder builder;
    builder.Add(
        Error(noData, {Set({connection, heading, leaves[0]}, "", ""), Set({speed}, "verbose", "trigger"),
                       Set({leaves[1], leaves[2], circleA, settings, leaves[1]}, "shallow", "parent", 2)}));
    builder.Add(Error(connection, {Set(leaves, "shallow", "trigger")}));
    builder.Add(Error(heading, {Set({leaves[3], settings}, "childOnly", "trigger")}));
    builder.Add(Error(speed, {Set({leaves[4]}, "verbose", "trigger"), Set({leaves[5], speed}, "", "", 0)}));
    builder.Add(Error(settings, {Set({leaves[6]}, "", "trigger"), Set({"Base:GPS:No Data:1"}, "", "")}));
    builder.Add(Error(circleA, {Set({circleB, leaves[7]}, "verbose", "", 2)}));
    builder.Add(Error(circleB, {Set({circleA}, "shallow", "trigger")}));
    for (const std::string& name : leaves)
        builder.Leaf(name);
    builder.Leaf(leaves.front());
    builder.WriteTo(prefix);
    Support::WriteFile(
        prefix + "ErrorPatterns.xml",
        "<Overlay><Patterns><pattern fixedCode=\"P-1\" allowPartialMatch=\"yes\"><error id=\"" + leaves[3] +
            "\"/></pattern><pattern fixedCode=\"P-2\"><error id=\"" + circleA +
            "\"/></pattern></Patterns></Overlay>");
}

/// What a rebuilt tree is made of.
struct SRebuilt
{
    SErrorTree tree;
    std::vector<std::string> lines;
    std::vector<std::pair<int, int>> codes;
};

bool Rebuild(CDisplay& display, const std::string& stateKey, bool plain, SRebuilt& rebuilt)
{
    try
    {
        CErrorPresentation::RegenerateErrorTree(stateKey, display.Database(), display.Reader(), rebuilt.tree,
                                                rebuilt.lines, rebuilt.codes, plain);
    }
    catch (const std::invalid_argument&)
    {
        Expect(rebuilt.lines.empty() && rebuilt.codes.empty() && rebuilt.tree.title.empty(),
               "a key with a wrong digit changes nothing");
        return false;
    }
    catch (const std::out_of_range&)
    {
        Expect(stateKey.size() < 3, "only a key that does not hold an index is too short");
        return false;
    }
    return true;
}

/// Without the branches that are drawn in front of it.
std::string Plain(const std::string& line)
{
    const std::size_t begin = line.find_first_not_of("+-");
    return begin == std::string::npos ? std::string() : line.substr(begin);
}
} // namespace

CDisplay::CDisplay() : m_table(static_cast<SStatusTable*>(shmat(m_directory.Segment(), nullptr, 0)))
{
    WriteConfiguration(m_directory.Prefix());
    const CSilence silence; // loading tells of the errors that trigger themselves
    m_database = std::make_unique<CErrorDatabase>(m_directory.Prefix());
    m_overlay = std::make_unique<CErrorOverlay>(m_directory.Prefix());
    const Support::CWorkingDirectory here(m_directory.Prefix()); // views find the table by it
    m_owner = std::make_unique<CErrorDatabaseView>(true, eViewOwner);
    m_reader = std::make_unique<CErrorDatabaseView>(false, eViewReader);
    Expect(!m_owner->Failed() && !m_reader->Failed(), "the views have a table");
}

void CDisplay::Reset()
{
    ForgetWhatWasSeen();
    for (const CError& error : m_database->GetErrorList())
        m_database->ClearError(error.ProblemCode(), error.ProblemType(), true);
    m_database->UpdateErrorTree();
    *m_table = SStatusTable();
    m_owner->LoadErrors(*m_database);
    m_owner->FaultkeeperReady(true);
}

/// A reading view remembers times of records. Making a new view for each input would attach the segment each
/// time until the system has no more room, so the one that there is sees 400 records without times, and then
/// no table.
void CDisplay::ForgetWhatWasSeen()
{
    *m_table = SStatusTable();
    m_reader->Synchronise(*m_database);
    m_table->header.ready = 1;
    m_table->header.count = kStatusTableCapacity;
    m_reader->Synchronise(*m_database);
    *m_table = SStatusTable();
    m_reader->Synchronise(*m_database);
}

bool RebuildTree(CDisplay& display, const std::string& stateKey)
{
    SRebuilt drawn;
    SRebuilt plain;
    const bool accepted = Rebuild(display, stateKey, false, drawn);
    Expect(Rebuild(display, stateKey, true, plain) == accepted, "how lines look does not decide on a key");
    Expect(drawn.codes == plain.codes && drawn.tree.title == plain.tree.title &&
               drawn.tree.problems == plain.tree.problems && drawn.tree.solutions == plain.tree.solutions,
           "how lines look changes nothing else");
    Expect(drawn.lines.size() == plain.lines.size() && drawn.lines.size() <= drawn.codes.size(),
           "each line stands for an error that contributes");
    for (std::size_t i = 0; i < drawn.lines.size(); ++i)
        Expect(Plain(drawn.lines[i]) == plain.lines[i], "lines differ by their branches only");
    return accepted;
}

} // namespace Fuzz
