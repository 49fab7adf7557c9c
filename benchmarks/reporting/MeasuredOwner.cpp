#include "reporting/MeasuredOwner.h"

#include "common/Patience.h"
#include "subjects/Configurations.h"
#include "subjects/MeasuredIds.h"

#include <fcntl.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <unistd.h>

#include <stdexcept>

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
Ids IdsAt(const std::vector<std::size_t>& places, std::size_t errors)
{
    const Ids all = MakeIdPairs(errors);
    Ids ids;
    for (const std::size_t place : places)
        ids.push_back(all[place]);
    return ids;
}

void Execute(std::vector<std::string> command)
{
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (std::string& argument : command)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    execv(arguments[0], arguments.data());
    throw std::runtime_error("cannot execute " + command.front());
}
} // namespace

CMeasuredOwner::CMeasuredOwner(std::size_t errors, const std::vector<std::string>& arguments)
    : m_errors(errors)
{
    const Shape shape = MakeShape(esPlausible, errors);
    const std::vector<std::size_t> singles = SinglePlaces(shape);
    m_singleIds = IdsAt(singles.empty() ? TopPlaces(shape) : singles, errors);
    m_leafIds = IdsAt(LeafPlaces(shape), errors);
    Start(arguments);
}

void CMeasuredOwner::Start(const std::vector<std::string>& arguments)
{
    std::vector<std::string> command{FAULTKEEPER_OWNER, "--config", ConfigurationOf(esPlausible, m_errors),
                                     "--run-dir", m_directory.Path()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const std::string log = m_directory.File("log");
    m_process = std::make_unique<CChildProcess>(
        [&]
        {
            const int file = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
            dup2(file, STDERR_FILENO);
            Execute(command);
        });
    WaitPatiently("the owner's table and lock",
                  [this]
                  {
                      if (!m_process->Running())
                          throw std::runtime_error("the owner has ended");
                      return shmget(m_directory.Key(), 0, 0) != -1 && semget(m_directory.Key(), 0, 0) != -1;
                  });
    m_table = std::make_unique<CBareTable>();
    WaitPatiently("the owner", [this] { return m_table->Table().header.ready == 1; });
    if (m_table->Table().header.count != static_cast<int>(m_errors))
        throw std::runtime_error("the owner has another number of errors");
}

const volatile SErrorEntry& CMeasuredOwner::Record(const Id& id) const
{
    const volatile SStatusTable& table = m_table->Table();
    for (const volatile SErrorEntry& record : table.records)
    {
        if (record.problemCode == id.first && record.problemType == id.second)
            return record;
    }
    throw std::runtime_error("no such record");
}

} // namespace Benchmarks
