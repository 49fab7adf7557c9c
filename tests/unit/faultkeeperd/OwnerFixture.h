#pragma once

#include "common/text/ErrorNames.h"
#include "faultkeeperd/owner/FormerState.h"
#include "faultkeeperd/owner/Owner.h"
#include "faultkeeperd/store/StateKeeper.h"
#include "support/ConfigurationBuilder.h"
#include "support/SharedTable.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>
#include <Faultkeeper/StatusTable.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Support
{

using Id = std::pair<int, int>;

// Either sensor raises the receiver, the receiver raises the position.
const Id kLinkSensor(0x40C09, 9);
const Id kDataSensor(0x4281B, 2);
const Id kReceiver(0x40C1B, 2);
const Id kPosition(0xA211B, 2);

/// A database of three levels, and the table of the working directory as other processes see it.
class OwnerTest : public SharedTableTest
{
protected:
    void SetUp() override
    {
        CConfigurationBuilder builder;
        builder.Leaf("Positioning:GPS:Communications:9").Leaf("Positioning:Ublox:No Data:2");
        builder.Parent("Positioning:GPS:No Data:2",
                       {"Positioning:GPS:Communications:9", "Positioning:Ublox:No Data:2"});
        builder.Parent("System:Position:No Data:2", {"Positioning:GPS:No Data:2"});
        builder.WriteTo(m_directory.Prefix());
        LoadAgain();
    }

    Faultkeeper::CErrorDatabase& Database() { return *m_database; }
    Faultkeeper::Apps::CStateKeeper& Keeper() { return *m_keeper; }

    /// Where the keeper keeps the state from now on; it begins without.
    Faultkeeper::Apps::SStoreSettings UseStore()
    {
        Faultkeeper::Apps::SStoreSettings settings;
        settings.path = m_directory.File("state.db");
        UseStore(settings);
        return settings;
    }

    void UseStore(Faultkeeper::Apps::SStoreSettings settings)
    {
        settings.note = m_directory.File("note");
        m_keeper.reset(); // only one can have the file
        m_keeper = std::make_unique<Faultkeeper::Apps::CStateKeeper>(settings);
    }

    /// An owner that starts from nothing.
    std::unique_ptr<Faultkeeper::Apps::COwner> NewOwner()
    {
        return std::make_unique<Faultkeeper::Apps::COwner>(Database(), Keeper(),
                                                           Faultkeeper::Apps::SFormerState());
    }

    /// The database anew, as in a process that has just started.
    void LoadAgain() { m_database = std::make_unique<Faultkeeper::CErrorDatabase>(m_directory.Prefix()); }

    Faultkeeper::SStatusTable Table()
    {
        Faultkeeper::SStatusTable table;
        std::memcpy(static_cast<void*>(&table), m_directory.Table(), sizeof table);
        return table;
    }

    Faultkeeper::SErrorEntry Record(const Id& id)
    {
        const Faultkeeper::SStatusTable table = Table();
        for (const Faultkeeper::SErrorEntry& record : table.records)
        {
            if (record.problemCode == id.first && record.problemType == id.second)
                return record;
        }
        ADD_FAILURE() << "no record of " << Faultkeeper::Apps::ErrorName(id.first, id.second);
        return Faultkeeper::SErrorEntry();
    }

    /// Identifiers of the raised records, in the table's order.
    std::vector<Id> Raised()
    {
        const Faultkeeper::SStatusTable table = Table();
        std::vector<Id> raised;
        for (const Faultkeeper::SErrorEntry& record : table.records)
        {
            if ((record.flags & Faultkeeper::kRaisedFlag) != 0)
                raised.emplace_back(record.problemCode, record.problemType);
        }
        return raised;
    }

private:
    std::unique_ptr<Faultkeeper::CErrorDatabase> m_database;
    std::unique_ptr<Faultkeeper::Apps::CStateKeeper> m_keeper =
        std::make_unique<Faultkeeper::Apps::CStateKeeper>(Faultkeeper::Apps::SStoreSettings());
};

/// Holds the table's lock, as a display does while it copies.
class CBusyLock
{
public:
    CBusyLock() : m_view(false, Faultkeeper::eViewReader) { EXPECT_TRUE(m_view.GetLock(false)); }
    ~CBusyLock() { Release(); }
    CBusyLock(const CBusyLock&) = delete;
    CBusyLock& operator=(const CBusyLock&) = delete;

    void Release()
    {
        if (m_held)
        {
            EXPECT_TRUE(m_view.ReleaseLock());
        }
        m_held = false;
    }

private:
    Faultkeeper::CErrorDatabaseView m_view;
    bool m_held = true;
};

} // namespace Support
