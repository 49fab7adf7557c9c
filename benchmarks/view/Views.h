#pragma once

#include "common/BareTable.h"
#include "support/SharedTable.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace Benchmarks
{

using Ids = std::vector<std::pair<int, int>>;

/// A table of so many errors in a fresh working directory, with its owner, for one benchmark at a time. Both
/// sides live in this process, so that nothing else's turn is measured.
class CViews
{
public:
    explicit CViews(std::size_t errors);

    Faultkeeper::CErrorDatabaseView& Owner() { return *m_owner; }
    /// The display's side: a database and a view that have followed the table once.
    Faultkeeper::CErrorDatabase& Database() { return m_database; }
    Faultkeeper::CErrorDatabaseView& Reader() { return *m_reader; }
    CBareTable& Bare() { return *m_bare; }
    /// All identifiers, in an order that jumps all over the table.
    const Ids& AllIds() const { return m_ids; }

private:
    Support::CSharedTableDirectory m_directory; // first: the views work in it
    Faultkeeper::CErrorDatabase& m_database;
    std::unique_ptr<Faultkeeper::CErrorDatabaseView> m_owner;
    std::unique_ptr<Faultkeeper::CErrorDatabaseView> m_reader;
    std::unique_ptr<CBareTable> m_bare;
    Ids m_ids;
};

} // namespace Benchmarks
