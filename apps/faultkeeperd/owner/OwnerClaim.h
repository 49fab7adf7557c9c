#ifndef FAULTKEEPER_FAULTKEEPERD_OWNER_OWNERCLAIM_H
#define FAULTKEEPER_FAULTKEEPERD_OWNER_OWNERCLAIM_H

namespace Faultkeeper::Apps
{

/// The right to own the table of the working directory, for one process at a time and until it ends, however
/// it ends.
///
/// The table and its lock cannot tell: what a killed owner leaves behind can look as if it were in use. So
/// the directory itself is locked (flock(2)), which writes nothing and leaves nothing.
class COwnerClaim
{
public:
    COwnerClaim() = default;
    ~COwnerClaim();
    COwnerClaim(const COwnerClaim&) = delete;
    COwnerClaim& operator=(const COwnerClaim&) = delete;

    /// Waits up to a second for one that is just ending, or for a cleaner that looks through the directory.
    /// @return false if another process has it
    bool Take();

private:
    bool TryTake() const;

    int m_directory = -1;
};

} // namespace Faultkeeper::Apps

#endif
