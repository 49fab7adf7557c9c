#ifndef FAULTKEEPERCTL_DISPLAY_H
#define FAULTKEEPERCTL_DISPLAY_H

#include "common/owner/TableProbe.h"
#include "common/text/ErrorNames.h"
#include "faultkeeperctl/Settings.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>
#include <Faultkeeper/ErrorEntry.h>
#include <Faultkeeper/ErrorOverlay.h>
#include <Faultkeeper/ErrorTree.h>

#include <memory>
#include <string>
#include <vector>

namespace Faultkeeper::Apps
{

/// What a display program holds: the configuration, and of the shared table a picture that is exact each time
/// it is refreshed, whatever was missed in between.
///
/// Works in the run directory, which it makes the working directory, and makes neither table nor lock.
class CDisplay
{
public:
    /// Loads the configuration and goes to the run directory.
    /// @throws CFailure
    explicit CDisplay(const SSettings& settings);

    /// Brings records and database to the present state of the table. Without a table that is ready they keep
    /// what they hold.
    /// @return how things stand with the table
    ETableState Refresh();

    /// Sleeps until the table has changed since the last Refresh, or the time is over, or a signal was
    /// handled. Without a table that is ready it is the time that ends it.
    void Wait(int timeoutMilliseconds);

    /// The same as Refresh for commands that show one picture and end; warns of another configuration, too.
    /// @throws CFailure if there is no table that is ready; its message says why
    void RequirePicture();

    /// Tells on standard error if the owner has loaded another configuration: names and texts may be of other
    /// errors then, and some may be missing. An owner that cannot be asked is none of its business.
    void WarnOfOtherConfiguration() const;

    /// What the last Refresh found.
    const STableFacts& Facts() const { return m_facts; }
    /// Have the records changed with the last Refresh?
    bool Changed() const { return m_changed; }
    /// The table's records in its order.
    const std::vector<SErrorEntry>& Records() const { return m_records; }
    const CErrorDatabase& Database() const { return *m_database; }

    /// The trees of all active top errors in identifier order.
    /// @param useTextKeys  with the keys of translations in the place of texts
    std::vector<SErrorTree> Trees(bool useTextKeys = false) const;

    /// The errors that a state key stands for, the top one first, by the positions of the owner's table.
    /// @param key  capital hexadecimal digits, three or more
    /// @return none if the key names none
    std::vector<ErrorId> ErrorsOfKey(const std::string& key);

    /// Names of the errors that are raised and that this configuration does not know, so that no tree shows
    /// them.
    std::vector<std::string> UnknownRaised() const;

private:
    ETableState RefreshTelling();
    void FollowTable();
    bool CopyRecords();
    void CorrectDatabase();

    SSettings m_settings;
    std::unique_ptr<CErrorDatabase> m_database;
    CErrorOverlay m_overlay;
    STableFacts m_facts;
    std::unique_ptr<CErrorDatabaseView> m_view;
    std::vector<int>
        m_attached; // segments that this process has attached; once for each time; views never detach
    std::vector<SErrorEntry> m_records;
    bool m_changed = false;
};

/// The state for people, also where the lock is busy and nobody in particular keeps it.
std::string StateText(const STableFacts& facts, const std::string& directory);

/// Status for a state in which nothing can be shown.
EProgramStatus StatusOf(ETableState state);

/// Tells on standard error which raised errors the display cannot show.
void WarnOfUnknown(const CDisplay& display);

} // namespace Faultkeeper::Apps

#endif
