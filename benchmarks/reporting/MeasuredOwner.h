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
/// 400 errors in families, in a fresh run directory that is this process's working directory as well.
class CMeasuredOwner
{
public:
    /// @param arguments  further ones
    explicit CMeasuredOwner(const std::vector<std::string>& arguments);

    /// Errors without any link, and errors whose parents follow.
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
    Ids m_singleIds;
    Ids m_leafIds;
};

} // namespace Benchmarks
