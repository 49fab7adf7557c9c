#include "unit/Common/dumps/TableDump.h"
#include "support/SharedTable.h"
#include "unit/Common/limits/FakeClock.h"
#include "unit/Common/view/NumberedErrors.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>
#include <Faultkeeper/StatusTable.h>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Faultkeeper;

namespace
{

constexpr int kRecords = 4;
constexpr std::size_t kUsedBytes = 32 + kRecords * 36;

SErrorEntry Remembered(int number, std::uint16_t counter1, std::uint16_t counter2)
{
    SErrorEntry entry;
    entry.problemCode = NumberedErrors::Code(number);
    entry.problemType = static_cast<std::int16_t>(NumberedErrors::Type(number));
    entry.counter1 = counter1;
    entry.counter2 = counter2;
    entry.raisedTime = Core::Time::FromNanoseconds(0x0102030405060708);
    entry.clearedTime = Core::Time::FromNanoseconds(0x0112233445566778);
    return entry;
}

/// What an owner leaves behind after a few changes, the last of them beyond 2038. The clock never goes back
/// within a process, so this is done once.
std::string WriteTable()
{
    Support::CSharedTableDirectory directory;
    const CErrorDatabase database(NumberedErrors::Written(directory.Prefix(), kRecords));
    const FakeClock clock(1600000000);
    CErrorDatabaseView owner(true, eViewOwner);
    owner.LoadErrors(database);
    owner.FaultkeeperReady(true);
    owner.UpdateErrorDetails({Remembered(1, 0x1234, 0x5678)});
    FakeClock::Set(1700000000, 123456789);
    owner.RaiseErrors({NumberedErrors::Id(2)});
    FakeClock::Set(1700000100, 1);
    owner.ClearErrors({NumberedErrors::Id(2)});
    FakeClock::Set(4102444800, 987654321);
    owner.RaiseError(NumberedErrors::Code(3), NumberedErrors::Type(3));
    return std::string(reinterpret_cast<const char*>(directory.Table()), kStatusTableBytes);
}

const std::string& OwnTable()
{
    static const std::string table = WriteTable();
    return table;
}

std::string Dump(TableDump::EByteOrder order)
{
    const std::string name = order == TableDump::eboBig ? "big-endian.txt" : "little-endian.txt";
    return Support::ReadFile(std::string(TABLE_DUMPS_DIRECTORY) + "/" + name);
}

const std::string kFields = "ready 00000001\n"
                            "count 00000004\n"
                            "changes 00000006\n"
                            "last raise 38eecfcf918468b1\n"
                            "last clear type 00000000\n"
                            "last clear 17979d157ea0e801\n"
                            "record 0 code 00040c1b\n"
                            "record 0 type 0000\n"
                            "record 0 flags 0000\n"
                            "record 0 counter 1 0000\n"
                            "record 0 counter 2 0000\n"
                            "record 0 raised type 00000000\n"
                            "record 0 raised 0000000000000000\n"
                            "record 0 cleared type 00000000\n"
                            "record 0 cleared 0000000000000000\n"
                            "record 1 code 00040c1b\n"
                            "record 1 type 0001\n"
                            "record 1 flags 0000\n"
                            "record 1 counter 1 1234\n"
                            "record 1 counter 2 5678\n"
                            "record 1 raised type 00000000\n"
                            "record 1 raised 0102030405060708\n"
                            "record 1 cleared type 00000000\n"
                            "record 1 cleared 0112233445566778\n"
                            "record 2 code 00040c1b\n"
                            "record 2 type 0002\n"
                            "record 2 flags 0000\n"
                            "record 2 counter 1 0001\n"
                            "record 2 counter 2 0001\n"
                            "record 2 raised type 00000000\n"
                            "record 2 raised 17979cfe3d85cd15\n"
                            "record 2 cleared type 00000000\n"
                            "record 2 cleared 17979d157ea0e801\n"
                            "record 3 code 00040c1b\n"
                            "record 3 type 0003\n"
                            "record 3 flags 0001\n"
                            "record 3 counter 1 0001\n"
                            "record 3 counter 2 0001\n"
                            "record 3 raised type 00000000\n"
                            "record 3 raised 38eecfcf918468b2\n"
                            "record 3 cleared type 00000000\n"
                            "record 3 cleared 0000000000000000\n";

TEST(TableDumpTest, TheOwnersTableIsByteForByteTheDumpOfThisByteOrder)
{
    EXPECT_EQ(TableDump::BytesText(OwnTable(), kRecords), Dump(TableDump::OwnOrder()));
    EXPECT_EQ(OwnTable().substr(kUsedBytes), std::string(kStatusTableBytes - kUsedBytes, '\0'));
}

TEST(TableDumpTest, TheTableReadInThisByteOrderHasTheNumbersThatTheOwnerGave)
{
    EXPECT_EQ(TableDump::FieldsText(OwnTable(), kRecords, TableDump::OwnOrder()), kFields);
}

TEST(TableDumpTest, BothDumpsReadInTheirByteOrderHaveTheSameNumbers)
{
    for (const TableDump::EByteOrder order : {TableDump::eboLittle, TableDump::eboBig})
        EXPECT_EQ(TableDump::FieldsText(TableDump::BytesOf(Dump(order)), kRecords, order), kFields);
}

TEST(TableDumpTest, TheFieldsCoverEveryByteOnce)
{
    std::size_t next = 0;
    for (const TableDump::SField& field : TableDump::Fields(kRecords))
    {
        EXPECT_EQ(field.offset, next) << field.name;
        next = field.offset + field.bytes;
    }
    EXPECT_EQ(next, kUsedBytes);
    EXPECT_EQ(TableDump::BytesOf(Dump(TableDump::eboLittle)).size(), kUsedBytes);
    EXPECT_EQ(TableDump::BytesOf(Dump(TableDump::eboBig)).size(), kUsedBytes);
}

TEST(TableDumpTest, TheOtherMachinesTableTurnedFieldByFieldIsThisMachinesTable)
{
    const bool big = TableDump::OwnOrder() == TableDump::eboBig;
    std::string turned = TableDump::BytesOf(Dump(big ? TableDump::eboLittle : TableDump::eboBig));
    for (const TableDump::SField& field : TableDump::Fields(kRecords))
    {
        const auto begin = turned.begin() + static_cast<std::ptrdiff_t>(field.offset);
        std::reverse(begin, begin + static_cast<std::ptrdiff_t>(field.bytes));
    }
    EXPECT_EQ(TableDump::BytesText(turned, kRecords), TableDump::BytesText(OwnTable(), kRecords));
}

} // namespace
