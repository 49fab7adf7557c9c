#ifndef FAULTKEEPERCTL_PRIVATETABLE_H
#define FAULTKEEPERCTL_PRIVATETABLE_H

#include <Faultkeeper/ErrorDatabaseView.h>

#include <signal.h>

#include <memory>
#include <string>
#include <vector>

namespace Faultkeeper
{
class CErrorDatabase;
}

namespace Faultkeeper::Apps
{

/// A table of this process alone, in a new directory below the temporary one, with the errors of a database
/// in their order: what an owner with the same configuration would publish. Goes with the object, directory
/// and lock included.
///
/// The directory is the working directory meanwhile, and signals that would end the process wait until all is
/// gone; the segment goes even if the process is killed.
class CPrivateTable
{
public:
    /// @throws CFailure (epsNo) if it cannot be made; nothing is left then
    explicit CPrivateTable(const CErrorDatabase& database);
    ~CPrivateTable();
    CPrivateTable(const CPrivateTable&) = delete;
    CPrivateTable& operator=(const CPrivateTable&) = delete;

    CErrorDatabaseView& View() { return *m_view; }

    /// What a display of the same table would hold.
    CErrorDatabaseView& Reader() { return *m_reader; }

private:
    bool TryDirectory();
    void Attach(const CErrorDatabase& database);
    void RemoveAll();

    sigset_t m_signalsBefore;
    std::string m_directoryBefore;
    std::vector<std::string> m_directories; // those whose key was taken, and the one in use
    int m_semaphore = -1;
    int m_segment = -1;
    std::unique_ptr<CErrorDatabaseView> m_view;
    std::unique_ptr<CErrorDatabaseView> m_reader;
};

} // namespace Faultkeeper::Apps

#endif
