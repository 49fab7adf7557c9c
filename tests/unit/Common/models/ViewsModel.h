#pragma once

#include "unit/Common/models/TableModel.h"
#include "unit/Common/models/ViewScript.h"

#include <string>
#include <vector>

namespace Models
{

/// When an operation took place, and what only the clock can tell of it.
struct SMoment
{
    std::int64_t seconds = 0;                        ///< from which the items' hours count
    Core::Time before;                               ///< a reading of the clock
    Core::Time after;                                ///< likewise
    Faultkeeper::SStatusTable* afterwards = nullptr; ///< the table; only its times are looked at
};

/// The identifiers of the items.
std::vector<TErrorId> IdsOf(const std::vector<SItem>& items);
/// What the items say is remembered.
std::vector<Faultkeeper::SErrorEntry> EntriesOf(const std::vector<SItem>& items, std::int64_t seconds);

// ---- Answers as text, so that they can be compared and read

std::string Answer(bool done);
std::string Answer(int position);
/// All that a record holds.
std::string Answer(const Faultkeeper::SErrorEntry& record);
std::string Answer(const std::vector<Faultkeeper::SErrorEntry>& records);
/// A result with an identifier.
std::string Answer(int result, int code, int type);
/// What a synchronisation left behind.
std::string Answer(int result, const std::string& calls, const std::set<TErrorId>& active, std::size_t tops);

/// What a caller's variables hold before a view is asked.
constexpr int kUntouched = 4711;
Faultkeeper::SErrorEntry UntouchedEntry();

/// The shared table and everybody who has a view of it, without any view: who may do what, and what comes of
/// it.
class CViewsModel
{
public:
    explicit CViewsModel(const SStage& stage);

    /// Follows an operation that has taken place.
    /// @return what is answered and printed
    std::string Do(const SOperation& operation, const SMoment& moment);

    /// What the times in the table should be and are not, empty if there is nothing to complain of.
    const std::string& Complaint() const { return m_complaint; }
    /// The table, its first time's type word included, which counts the changes.
    const Faultkeeper::SStatusTable& Table() const { return *m_table; }
    /// Present value of the semaphore.
    int Semaphore() const { return m_creators; }

private:
    struct SView
    {
        Faultkeeper::EViewType type = Faultkeeper::eViewReader;
        bool failed = false;
        bool ready = false; ///< what an owner has said, or seen, last
        CReaderModel reader;

        bool Owns() const { return type == Faultkeeper::eViewOwner; }
    };

    static bool Allowed(const SView& view, EOperation kind);
    static bool NeedsLock(const SView& view, EOperation kind);
    static std::string Refusal(SView& view, EOperation kind);
    std::string Replace(SView& view, const SOperation& operation);
    std::string Done(SView& view, const SOperation& operation, const SMoment& moment);
    std::string Retrieved(SView& view, const SOperation& operation);
    std::string Synchronised(SView& view);
    static std::string Told(SView& view, int result);

    bool Write(SView& view, const SOperation& operation, const SMoment& moment);
    bool Change(const TErrorId& id, bool raise, EOperation kind, const SMoment& moment);
    void CheckTimes(const TErrorId& id, const Core::Time& record, const Core::Time& header, EOperation kind,
                    const SMoment& moment);
    bool Remember(const std::vector<Faultkeeper::SErrorEntry>& entries, const Core::Time& now);
    bool Restore(const std::vector<Faultkeeper::SErrorEntry>& entries);
    void Load(bool shuffled);
    void Count();

    const int m_errors;
    std::vector<SView> m_views;
    std::unique_ptr<Faultkeeper::SStatusTable> m_table = std::make_unique<Faultkeeper::SStatusTable>();
    int m_creators = 1;
    std::string m_complaint;
};

} // namespace Models
