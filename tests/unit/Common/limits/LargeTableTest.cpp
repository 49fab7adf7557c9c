#include "support/CapturedOutput.h"
#include "support/ConfigurationBuilder.h"
#include "support/SharedTable.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>
#include <Faultkeeper/ErrorDbViewChanged.h>
#include <Faultkeeper/ErrorOverlay.h>
#include <Faultkeeper/ErrorPresentation.h>
#include <Faultkeeper/ErrorTree.h>
#include <Faultkeeper/StatusTable.h>

#include <algorithm>
#include <array>
#include <cstring>

// Databases around the table's capacity and far beyond it, and counters beyond their 16 bits.

namespace
{

using namespace Faultkeeper;

typedef std::pair<int, int> TId;

constexpr int kModes = 21;
constexpr int kProblems = 30;
constexpr int kSubModules = 50;

/// Name of one of 31500 errors of Positioning.
std::string Name(int number)
{
    const auto problem = static_cast<EProblemIdentifier>(1 + number / kModes % kProblems);
    const auto subModule =
        static_cast<ESubModuleIdentifier>((1 + number / (kModes * kProblems) % kSubModules) << 8);
    return "Positioning:" + TranslateSubModuleId(subModule) + ":" + TranslateProblemId(problem) + ":" +
           std::to_string(number % kModes);
}

class CountingListener : public CErrorDbViewChanged
{
public:
    void ErrorEntryChanged(const SErrorEntry&) override { ++m_calls; }
    std::size_t Calls() const { return m_calls; }

private:
    std::size_t m_calls = 0;
};

class LargeTableTest : public Support::SharedTableTest
{
protected:
    void Load(int errors)
    {
        Support::CConfigurationBuilder builder;
        for (int number = 0; number < errors; ++number)
            builder.Leaf(Name(number));
        builder.WriteTo(m_directory.Prefix());
        m_database = std::make_unique<CErrorDatabase>(m_directory.Prefix());
        ASSERT_EQ(m_database->GetErrorList().size(), static_cast<std::size_t>(errors));
        for (const CError& error : m_database->GetErrorList())
            m_ids.emplace_back(error.ProblemCode(), error.ProblemType());
    }

    const SStatusTable& Table() { return *reinterpret_cast<const SStatusTable*>(m_directory.Table()); }

    std::size_t Active() const
    {
        const std::vector<CError>& errors = m_database->GetErrorList();
        return static_cast<std::size_t>(
            std::count_if(errors.begin(), errors.end(), [](const CError& error) { return error.Active(); }));
    }

    std::unique_ptr<CErrorDatabase> m_database;
    std::vector<TId> m_ids;
    CErrorDatabaseView m_owner{true, eViewOwner};
    CErrorDatabaseView m_reader{false, eViewReader};
};

class TableSizeTest : public LargeTableTest, public testing::WithParamInterface<int>
{
protected:
    void SetUp() override
    {
        Load(GetParam());
        m_warning = Support::WarnedBy([this] { m_loaded = m_owner.LoadErrors(*m_database); });
        ASSERT_TRUE(m_owner.FaultkeeperReady(true));
    }

    std::size_t Kept() const { return std::min<std::size_t>(m_ids.size(), kStatusTableCapacity); }

    bool m_loaded = false;
    std::string m_warning;
};

TEST_P(TableSizeTest, TheTableHoldsTheFirstErrorsAndTheRestIsTold)
{
    EXPECT_TRUE(m_loaded);
    EXPECT_EQ(Table().header.count, static_cast<std::int32_t>(Kept()));
    for (std::size_t i = 0; i < Kept(); ++i)
        ASSERT_EQ(TId(Table().records[i].problemCode, Table().records[i].problemType), m_ids[i]) << i;
    const std::size_t left = m_ids.size() - Kept();
    EXPECT_EQ(m_warning,
              left == 0 ? ""
                        : "the status table holds 400 errors, " + std::to_string(left) + " were left out\n");
}

TEST_P(TableSizeTest, EveryRecordIsRaisedReplayedAndCleared)
{
    CountingListener listener;
    m_reader.SetCallback(&listener);
    EXPECT_EQ(m_reader.Synchronise(*m_database), 0);
    ASSERT_TRUE(m_owner.RaiseErrors(m_ids)); // those left out are not known to the table
    EXPECT_EQ(m_reader.Synchronise(*m_database), 1);
    EXPECT_EQ(listener.Calls(), Kept());
    EXPECT_EQ(Active(), Kept());
    EXPECT_EQ(m_database->ActiveErrors(false).size(), Kept());
    EXPECT_EQ(m_database->InactiveErrors(false).size(), m_ids.size() - Kept());
    ASSERT_TRUE(m_owner.ClearErrors(m_ids));
    EXPECT_EQ(m_reader.Synchronise(*m_database), 2);
    EXPECT_EQ(listener.Calls(), 2 * Kept());
    EXPECT_EQ(Active(), 0u);
}

TEST_P(TableSizeTest, TheLastRecordIsLikeAnyOther)
{
    const TId last = m_ids[Kept() - 1];
    ASSERT_TRUE(m_owner.RaiseError(last.first, last.second));
    EXPECT_EQ(m_reader.Synchronise(*m_database), 1);
    EXPECT_TRUE(m_database->RetrieveError(last.first, last.second)->Active());
    EXPECT_EQ(Active(), 1u);
    EXPECT_EQ(m_reader.RetrieveErrorIndex(last.first, last.second), static_cast<int>(Kept()) - 1);
    TId id;
    EXPECT_EQ(m_reader.RetrieveErrorFromIndex(static_cast<int>(Kept()) - 1, id.first, id.second), 1);
    EXPECT_EQ(id, last);
    EXPECT_EQ(m_reader.RetrieveErrorFromIndex(static_cast<int>(Kept()), id.first, id.second), -1);
}

TEST_P(TableSizeTest, ErrorsThatWereLeftOutHaveNoRecordAndAKeyOfNobody)
{
    EXPECT_EQ(m_reader.Synchronise(*m_database), 0);
    std::list<const CError*> errors{&m_database->GetErrorList()[Kept() - 1],
                                    &m_database->GetErrorList().back()};
    std::vector<SErrorTree> trees;
    CErrorPresentation::GetErrorTree(m_reader, CErrorOverlay(m_directory.Prefix()), errors, trees, false);
    ASSERT_EQ(trees.size(), 2u);
    EXPECT_EQ(trees[0].stateKey, Kept() == 399 ? "6380" : "63C0");
    EXPECT_EQ(trees[1].stateKey, Kept() == m_ids.size() ? trees[0].stateKey : "FFC0");
    const std::string before(reinterpret_cast<const char*>(&Table()), kStatusTableBytes);
    if (Kept() != m_ids.size())
    {
        EXPECT_TRUE(m_owner.RaiseErrors({m_ids.back()}));
    }
    EXPECT_EQ(std::memcmp(&Table(), before.data(), kStatusTableBytes), 0);
}

INSTANTIATE_TEST_SUITE_P(Errors, TableSizeTest, testing::Values(399, 400, 401, 5000));

TEST_F(LargeTableTest, CountersGoOnAtZeroAfter65535Raises)
{
    Load(3);
    ASSERT_TRUE(m_owner.LoadErrors(*m_database));
    ASSERT_TRUE(m_owner.FaultkeeperReady(true));
    m_reader.Synchronise(*m_database);
    constexpr int kRaises = 65536 + 1234;
    for (int raise = 1; raise <= kRaises; ++raise)
    {
        ASSERT_TRUE(m_owner.RaiseErrors({m_ids[1]}));
        ASSERT_TRUE(m_owner.RaiseErrors({m_ids[1]})); // again: it counts once
        if (raise % 4096 == 0 || raise == 65535 || raise == 65537)
        {
            EXPECT_EQ(m_reader.Synchronise(*m_database), 1);
            SErrorEntry entry;
            m_reader.RetrieveErrorDetails(m_ids[1].first, m_ids[1].second, entry);
            EXPECT_EQ(entry.counter1, raise % 65536);
            EXPECT_EQ(entry.counter2, raise % 65536);
        }
        ASSERT_TRUE(m_owner.ClearErrors({m_ids[1]}));
    }
    EXPECT_EQ(Table().records[1].counter1, 1234);
    EXPECT_EQ(Table().records[1].counter2, 1234);
    const std::array<std::uint16_t, 4> neighbours = {Table().records[0].counter1, Table().records[0].counter2,
                                                     Table().records[2].counter1,
                                                     Table().records[2].counter2};
    EXPECT_EQ(neighbours, (std::array<std::uint16_t, 4>{}));
    EXPECT_EQ(m_reader.Synchronise(*m_database), 2);
    EXPECT_EQ(Active(), 0u);
}

TEST_F(LargeTableTest, AHistoryShowsAnErrorAgainOnceItsCounterHasLeftZero)
{
    Load(1);
    ASSERT_TRUE(m_owner.LoadErrors(*m_database));
    SErrorEntry remembered;
    remembered.problemCode = m_ids[0].first;
    remembered.problemType = static_cast<std::int16_t>(m_ids[0].second);
    remembered.counter1 = remembered.counter2 = 65535;
    ASSERT_TRUE(m_owner.UpdateErrorDetails({remembered}));
    ASSERT_TRUE(m_owner.FaultkeeperReady(true));
    std::vector<std::uint32_t> counters;
    for (int raise = 0; raise < 3; ++raise)
    {
        std::vector<SErrorEntry> entries;
        m_owner.RetrieveAllErrors(entries);
        std::vector<SErrorTree> trees;
        CErrorPresentation::FormatErrorList(entries, trees);
        counters.push_back(trees.empty() ? 0 : trees[0].counter2);
        ASSERT_TRUE(m_owner.RaiseErrors(m_ids));
        ASSERT_TRUE(m_owner.ClearErrors(m_ids));
    }
    EXPECT_EQ(counters, (std::vector<std::uint32_t>{65535, 0, 1}));
}

} // namespace
