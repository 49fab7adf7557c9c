#pragma once

#include "common/BareTable.h"
#include "support/SharedTable.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>
#include <Faultkeeper/ErrorOverlay.h>
#include <Faultkeeper/ErrorTree.h>

#include <cstddef>
#include <list>
#include <memory>
#include <vector>

namespace Benchmarks
{

/// A display that has followed a table in which most errors are raised, each more than once in its life. Of
/// more errors than the table holds, those in front have records.
class CScreen
{
public:
    explicit CScreen(std::size_t errors);

    Faultkeeper::CErrorDatabase& Database() { return m_database; }
    Faultkeeper::CErrorDatabaseView& View() { return *m_view; }
    const Faultkeeper::CErrorOverlay& Overlay() const { return m_overlay; }
    CBareTable& Bare() { return *m_bare; }

    /// The active tops.
    const std::list<const Faultkeeper::CError*>& Tops() const { return m_database.ActiveErrors(false); }
    std::vector<Faultkeeper::SErrorTree> Trees(bool useTextKeys) const;

private:
    Support::CSharedTableDirectory m_directory; // first: the views work in it
    Faultkeeper::CErrorDatabase& m_database;
    Faultkeeper::CErrorOverlay m_overlay;
    std::unique_ptr<Faultkeeper::CErrorDatabaseView> m_owner;
    std::unique_ptr<Faultkeeper::CErrorDatabaseView> m_view;
    std::unique_ptr<CBareTable> m_bare;
};

} // namespace Benchmarks
