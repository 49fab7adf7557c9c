#pragma once

#include "unit/Common/view/ViewFixture.h"

#include <Faultkeeper/ErrorDbViewChanged.h>

#include <string>
#include <utility>

/// Writes down each call: the record's failure mode, "+" or "-", and in brackets which errors the local
/// database held active at that moment.
class WritingListener : public Faultkeeper::CErrorDbViewChanged
{
public:
    explicit WritingListener(const Faultkeeper::CErrorDatabase& database) : m_database(database) {}

    void ErrorEntryChanged(const Faultkeeper::SErrorEntry& entry) override
    {
        m_text += std::to_string(entry.problemType) +
                  ((entry.flags & Faultkeeper::kRaisedFlag) != 0 ? "+" : "-") + "[" + Active(m_database) +
                  "] ";
        m_tops += std::to_string(m_database.ActiveErrors(false).size());
    }

    /// The failure modes of the active errors.
    static std::string Active(const Faultkeeper::CErrorDatabase& database)
    {
        std::string active;
        for (const Faultkeeper::CError& error : database.GetErrorList())
            if (error.Active())
                active += std::to_string(error.ProblemType());
        return active;
    }

    /// The calls since the last time that this was asked.
    std::string Text() { return std::exchange(m_text, std::string()); }
    /// How many active tops the database listed at each call.
    std::string Tops() { return std::exchange(m_tops, std::string()); }

private:
    const Faultkeeper::CErrorDatabase& m_database;
    std::string m_text;
    std::string m_tops;
};

/// A ready table with a reader whose listener writes its calls down.
class ReaderFixture : public ReadyTableFixture
{
protected:
    ReaderFixture() { m_reader.SetCallback(&m_listener); }

    int Synchronise() { return m_reader.Synchronise(m_database); }
    std::string Active() const { return WritingListener::Active(m_database); }
    std::size_t Tops() const { return m_database.ActiveErrors(false).size(); }

    void Restore(int number, const Core::Time& raised, const Core::Time& cleared)
    {
        Faultkeeper::SErrorEntry entry;
        entry.problemCode = NumberedErrors::Code(number);
        entry.problemType = static_cast<std::int16_t>(number);
        entry.counter1 = entry.counter2 = 9;
        entry.raisedTime = raised;
        entry.clearedTime = cleared;
        EXPECT_TRUE(m_owner.UpdateErrorDetails({entry}));
    }

    Faultkeeper::CErrorDatabaseView m_reader{false, Faultkeeper::eViewReader};
    WritingListener m_listener{m_database};
};
