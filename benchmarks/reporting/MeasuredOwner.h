#pragma once

#include "common/BareTable.h"
#include "common/ChildProcess.h"
#include "subjects/Shapes.h"
#include "support/FileLock.h"
#include "support/SharedTable.h"

#include <Faultkeeper/StatusTable.h>

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Benchmarks
{

using Id = std::pair<int, int>;
using Ids = std::vector<Id>;

/// faultkeeperd itself as a process of its own, on the port that all reporters use, with a configuration of
/// families, in a fresh run directory that is this process's working directory as well.
class CMeasuredOwner
{
public:
    /// @param errors     of the configuration
    /// @param arguments  further ones
    CMeasuredOwner(std::size_t errors, const std::vector<std::string>& arguments);

    std::size_t Errors() const { return m_errors; }

    /// Errors that no other follows, without any link where there are such, and errors whose parents follow.
    const Ids& SingleIds() const { return m_singleIds; }
    const Ids& LeafIds() const { return m_leafIds; }

    /// The error's record as it stands, without the lock.
    const volatile Faultkeeper::SErrorEntry& Record(const Id& id) const;

    const std::string& RunDirectory() const { return m_directory.Path(); }

private:
    void Start(const std::vector<std::string>& arguments);

    Support::CPortLock m_port; // first: released last
    Support::CSharedTableDirectory m_directory;
    std::unique_ptr<CChildProcess> m_process;
    std::unique_ptr<CBareTable> m_table;
    std::size_t m_errors;
    Ids m_singleIds;
    Ids m_leafIds;
};

} // namespace Benchmarks
