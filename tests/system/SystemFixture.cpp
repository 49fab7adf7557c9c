#include "SystemFixture.h"

#include "support/ConfigurationBuilder.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/shm.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <sstream>
#include <system_error>

using namespace Faultkeeper;

namespace Support
{

CDisplay::CDisplay(const std::string& configuration) : m_database(configuration), m_view(false, eViewReader)
{
}

Ids CDisplay::Active()
{
    m_view.Synchronise(m_database);
    Ids active;
    for (const CError& error : m_database.GetErrorList())
    {
        if (error.Active())
            active.emplace_back(error.ProblemCode(), error.ProblemType());
    }
    return active;
}

bool CDisplay::ShowsInTime(const Ids& ids)
{
    return WaitUntil([&] { return Active() == ids; });
}

SErrorEntry CDisplay::Record(const Id& id) const
{
    SErrorEntry record;
    m_view.RetrieveErrorDetails(id.first, id.second, record);
    return record;
}

CRawConnection::CRawConnection() : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    struct sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(5300);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(m_socket, reinterpret_cast<struct sockaddr*>(&address), sizeof address) != 0)
        throw std::system_error(errno, std::generic_category(), "connect");
}

CRawConnection::~CRawConnection()
{
    close(m_socket);
}

void CRawConnection::Send(const std::string& bytes) const
{
    ASSERT_EQ(send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
}

void CRawConnection::EndSending() const
{
    shutdown(m_socket, SHUT_WR);
}

std::string CRawConnection::Received(std::size_t size) const
{
    std::string received;
    struct pollfd input = {m_socket, POLLIN, 0};
    char byte = 0;
    while (received.size() < size)
    {
        if (poll(&input, 1, kPatienceMilliseconds) != 1)
            return received + "late";
        if (recv(m_socket, &byte, 1, 0) <= 0)
            break;
        received += byte;
    }
    return received;
}

bool CRawConnection::ClosedInTime() const
{
    struct pollfd input = {m_socket, POLLIN, 0};
    char byte = 0;
    return poll(&input, 1, kPatienceMilliseconds) == 1 && recv(m_socket, &byte, 1, 0) <= 0;
}

SystemTest::SystemTest()
{
    CConfigurationBuilder builder;
    builder.Leaf("Positioning:GPS:Communications:9").Leaf("Positioning:Ublox:No Data:2");
    builder.Parent("Positioning:GPS:No Data:2",
                   {"Positioning:GPS:Communications:9", "Positioning:Ublox:No Data:2"});
    builder.Parent("System:Position:No Data:2", {"Positioning:GPS:No Data:2"});
    builder.WriteTo(Configuration());
}

std::unique_ptr<CProgram> SystemTest::StartOwner(const std::vector<std::string>& more)
{
    std::vector<std::string> arguments = {"--config", Configuration(), "--run-dir", m_directory.Path()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    std::unique_ptr<CProgram> owner = RunOwner(arguments);
    EXPECT_TRUE(owner->SaysInTime("info: ready")) << owner->Errors();
    return owner;
}

void SystemTest::Kill(CProgram& owner)
{
    owner.Process().Signal(SIGKILL);
    EXPECT_EQ(owner.Wait(), 128 + SIGKILL);
}

std::unique_ptr<CProgram> SystemTest::RunOwner(const std::vector<std::string>& arguments)
{
    std::vector<std::string> command = {FAULTKEEPER_TEST_OWNER};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return std::make_unique<CProgram>(command);
}

std::unique_ptr<CProgram> SystemTest::StartReporter(const std::string& words)
{
    std::vector<std::string> command = {FAULTKEEPER_TEST_REPORTER};
    std::istringstream stream(words);
    for (std::string word; stream >> word;)
        command.push_back(word);
    return std::make_unique<CProgram>(command);
}

void SystemTest::Report(const std::string& words)
{
    const std::unique_ptr<CProgram> reporter = StartReporter(words);
    EXPECT_EQ(reporter->Wait(), 0) << reporter->Errors();
}

SStatusTable SystemTest::Table()
{
    SStatusTable table;
    std::memcpy(static_cast<void*>(&table), m_directory.Table(), sizeof table);
    return table;
}

SErrorEntry SystemTest::Record(const Id& id)
{
    const SStatusTable table = Table();
    for (const SErrorEntry& record : table.records)
    {
        if (record.problemCode == id.first && record.problemType == id.second)
            return record;
    }
    ADD_FAILURE() << std::hex << "no record of " << id.first;
    return SErrorEntry();
}

bool SystemTest::TableExists() const
{
    return shmget(m_directory.Key(), 0, 0) != -1;
}

} // namespace Support
