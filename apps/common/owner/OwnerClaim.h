#ifndef FAULTKEEPER_APPS_OWNERCLAIM_H
#define FAULTKEEPER_APPS_OWNERCLAIM_H

#include <sys/types.h>

#include <string>

namespace Faultkeeper::Apps
{

/// The right to own the table of the working directory, for one process at a time and until it ends, however
/// it ends.
///
/// The table and its lock cannot tell: what a killed owner leaves behind can look as if it were in use. So a
/// file beside them is locked (flock(2)): "faultkeeper.owner", which only its user may open, so that nobody
/// else can hold it. It is never removed. It holds the owner's process id and, while the claim is marked,
/// which lock it has made available. Where that file cannot be had, the directory itself is locked.
class COwnerClaim
{
public:
    COwnerClaim() = default;
    ~COwnerClaim();
    COwnerClaim(const COwnerClaim&) = delete;
    COwnerClaim& operator=(const COwnerClaim&) = delete;

    /// Waits up to a second for one that is just ending. What a former owner has marked stays marked: if this
    /// process ends before it has taken over, the lock is still that owner's.
    /// @return false if another process has it
    bool Take();

    /// If Take was false: the process that says it has it; 0 if that is not known.
    pid_t Holder() const;

    /// From here on the claim stands for the present lock of the working directory: if it is free without
    /// having been unmarked, this process has ended without being able to put things in order.
    void Mark();
    void Unmark();

private:
    bool TryTake() const;
    void Write(const std::string& mark) const;

    int m_descriptor = -1;
    bool m_file = false; // and not the directory
};

/// Has the owner ended that has made this lock available last? Only if it had claimed the working directory;
/// of others nobody can tell. Makes nothing, and leaves everything as it was.
/// @param semaphore  lock of the working directory
bool OwnerClaimLeft(int semaphore);

/// Has the working directory the file of a claim? One that only other owners have used has none.
bool OwnerClaimMade();

} // namespace Faultkeeper::Apps

#endif
