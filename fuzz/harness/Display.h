#pragma once

#include "harness/ScratchDirectory.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>
#include <Faultkeeper/ErrorOverlay.h>
#include <Faultkeeper/StatusTable.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Fuzz
{

/// A display and an owner in one process, in a directory of their own, with a configuration that has every
/// way of linking, two errors that trigger each other, one that is defined twice and one that triggers
/// itself. Make it before the first thread, and not twice.
class CDisplay
{
public:
    CDisplay();

    /// Back to the beginning: the table is loaded and ready, nothing was raised, the reading view has not
    /// seen it ready and the database has nothing active.
    void Reset();

    Faultkeeper::CErrorDatabase& Database() { return *m_database; }
    Faultkeeper::CErrorDatabaseView& Owner() { return *m_owner; }
    Faultkeeper::CErrorDatabaseView& Reader() { return *m_reader; }
    const Faultkeeper::CErrorOverlay& Overlay() const { return *m_overlay; }

    /// The shared segment itself.
    Faultkeeper::SStatusTable& Table() { return *m_table; }

private:
    void ForgetWhatWasSeen();

    CScratchDirectory m_directory;
    std::unique_ptr<Faultkeeper::CErrorDatabase> m_database;
    std::unique_ptr<Faultkeeper::CErrorDatabaseView> m_owner;
    std::unique_ptr<Faultkeeper::CErrorDatabaseView> m_reader;
    std::unique_ptr<Faultkeeper::CErrorOverlay> m_overlay;
    Faultkeeper::SStatusTable* m_table;
};

/// Rebuilds a tree from a key, with plain lines and drawn ones, and expects that both differ by nothing else,
/// that what may be thrown is thrown before anything changes, and that lines stand for contributing errors.
/// @return false if the key was refused
bool RebuildTree(CDisplay& display, const std::string& stateKey);

} // namespace Fuzz
