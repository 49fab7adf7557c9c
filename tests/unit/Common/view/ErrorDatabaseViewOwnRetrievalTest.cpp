// What the owner reads from its own table.
#include "unit/Common/view/ViewFixture.h"

#include <limits>

using namespace Faultkeeper;
using NumberedErrors::Code;

namespace
{

class ErrorDatabaseViewOwnRetrievalTest : public ReadyTableFixture
{
};

TEST_F(ErrorDatabaseViewOwnRetrievalTest, RetrievesAllErrorsFromTheTableItself)
{
    Raise(3);
    std::vector<SErrorEntry> entries;
    m_owner.RetrieveAllErrors(entries);
    ASSERT_EQ(entries.size(), 4u);
    for (int index = 0; index < 4; ++index)
        EXPECT_EQ(std::memcmp(&entries[static_cast<std::size_t>(index)], &Record(index), 36), 0) << index;
}

TEST_F(ErrorDatabaseViewOwnRetrievalTest, RetrievingTwiceYieldsEachRecordTwice)
{
    std::vector<SErrorEntry> entries;
    m_owner.RetrieveAllErrors(entries);
    m_owner.RetrieveAllErrors(entries);
    ASSERT_EQ(entries.size(), 8u);
    for (std::size_t index = 0; index < 8; ++index)
        EXPECT_EQ(entries[index].problemType, index % 4);
}

TEST_F(ErrorDatabaseViewOwnRetrievalTest, RetrievesAtMost400AndAtLeastNoErrors)
{
    std::vector<SErrorEntry> entries;
    Header().count = -5;
    m_owner.RetrieveAllErrors(entries);
    EXPECT_EQ(entries.size(), 0u);
    Header().count = 100000;
    m_owner.RetrieveAllErrors(entries);
    EXPECT_EQ(entries.size(), 400u);
}

TEST_F(ErrorDatabaseViewOwnRetrievalTest, RetrievesTheIdentifierAtAnIndex)
{
    int code = 0;
    int type = 0;
    EXPECT_EQ(m_owner.RetrieveErrorFromIndex(3, code, type), 1);
    EXPECT_EQ(code, Code(3));
    EXPECT_EQ(type, 3);
}

TEST_F(ErrorDatabaseViewOwnRetrievalTest, RetrievesANegativeProblemTypeWithItsSign)
{
    Record(1).problemType = -2;
    int code = 0;
    int type = 0;
    EXPECT_EQ(m_owner.RetrieveErrorFromIndex(1, code, type), 1);
    EXPECT_EQ(type, -2);
}

TEST_F(ErrorDatabaseViewOwnRetrievalTest, RetrievesNothingFromAnIndexOutsideTheCount)
{
    int code = 4711;
    int type = 4712;
    for (const int index :
         {4, 399, 400, 1000, std::numeric_limits<int>::max(), -1, -400, std::numeric_limits<int>::min()})
        EXPECT_EQ(m_owner.RetrieveErrorFromIndex(index, code, type), -1) << index;
    Header().count = 100000;
    EXPECT_EQ(m_owner.RetrieveErrorFromIndex(400, code, type), -1);
    Header().count = -5;
    EXPECT_EQ(m_owner.RetrieveErrorFromIndex(0, code, type), -1);
    EXPECT_EQ(m_owner.RetrieveErrorFromIndex(-6, code, type), -1);
    EXPECT_EQ(code, 4711);
    EXPECT_EQ(type, 4712);
    Header().count = 100000;
    EXPECT_EQ(m_owner.RetrieveErrorFromIndex(399, code, type), 1);
    EXPECT_EQ(code, 0);
}

} // namespace
