#pragma once

#include "support/SharedTable.h"
#include "unit/Common/view/NumberedErrors.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>
#include <Faultkeeper/StatusTable.h>

#include <cstring>
#include <string>
#include <vector>

/// A database of a few numbered errors in a fresh directory, and sight of the shared table's bytes.
class ViewFixture : public Support::SharedTableTest
{
protected:
    explicit ViewFixture(int errors = 4) : m_database(NumberedErrors::Written(m_directory.Prefix(), errors))
    {
    }

    /// The segment itself: what is written here is seen by every view.
    Faultkeeper::SStatusTable& Table()
    {
        return *reinterpret_cast<Faultkeeper::SStatusTable*>(m_directory.Table());
    }

    Faultkeeper::SStatusHeader& Header() { return Table().header; }
    Faultkeeper::SErrorEntry& Record(int index) { return Table().records[index]; }

    /// All bytes of the segment as they are now.
    std::string Bytes()
    {
        return std::string(reinterpret_cast<const char*>(m_directory.Table()),
                           Faultkeeper::kStatusTableBytes);
    }

    /// The bytes of one record.
    std::string RecordBytes(int index)
    {
        return Bytes().substr(32 + 36 * static_cast<std::size_t>(index), 36);
    }

    Faultkeeper::CErrorDatabase m_database;
};

/// The same with an owning view that has loaded the errors and declared the table ready.
class ReadyTableFixture : public ViewFixture
{
protected:
    explicit ReadyTableFixture(int errors = 4) : ViewFixture(errors)
    {
        EXPECT_TRUE(m_owner.LoadErrors(m_database));
        EXPECT_TRUE(m_owner.FaultkeeperReady(true));
    }

    bool Raise(int number)
    {
        return m_owner.RaiseError(NumberedErrors::Code(number), NumberedErrors::Type(number));
    }
    bool Clear(int number)
    {
        return m_owner.ClearError(NumberedErrors::Code(number), NumberedErrors::Type(number));
    }

    Faultkeeper::CErrorDatabaseView m_owner{true, Faultkeeper::eViewOwner};
};
