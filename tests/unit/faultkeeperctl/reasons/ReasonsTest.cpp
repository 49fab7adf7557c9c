#include "faultkeeperctl/reasons/Reasons.h"
#include "faultkeeperctl/reasons/ReasonText.h"

#include "support/CapturedOutput.h"
#include "support/ConfigurationBuilder.h"
#include "support/FreshDirectory.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

using namespace Faultkeeper;
using namespace Faultkeeper::Apps;
using Support::STestError;
using Support::STestTriggerSet;

namespace
{
const std::string kA = "Positioning:GPS:Communications:9";
const std::string kB = "Positioning:Ublox:No Data:2";
const std::string kC = "Audio:None:Cannot Open:11";
const std::string kParent = "Positioning:GPS:No Data:2";
const std::string kTop = "System:Position:No Data:2";

STestTriggerSet Set(const std::vector<std::string>& triggers, int needed = 1, bool automatic = true)
{
    STestTriggerSet set;
    set.triggers = triggers;
    set.triggersNeeded = needed;
    set.autoTrigger = automatic;
    return set;
}

class ReasonsTest : public testing::Test
{
protected:
    ReasonsTest() { setenv("TZ", "UTC0", 1); }

    void Define(const std::vector<STestTriggerSet>& sets)
    {
        Support::CConfigurationBuilder builder;
        builder.Leaf(kA).Leaf(kB).Leaf(kC);
        STestError parent;
        parent.name = kParent;
        parent.sets = sets;
        builder.Add(parent).Parent(kTop, {kParent});
        builder.WriteTo(m_directory.Prefix());
        m_database = std::make_unique<CErrorDatabase>(m_directory.Prefix());
    }

    static ErrorId Id(const std::string& name)
    {
        ErrorId id;
        std::string problem;
        EXPECT_TRUE(ParseErrorId(name, id, problem)) << problem;
        return id;
    }

    const CError& Error(const std::string& name) const
    {
        return *m_database->RetrieveError(Id(name).first, Id(name).second);
    }

    void Raise(const std::string& name) { m_database->RaiseError(Id(name).first, Id(name).second, false); }
    void Clear(const std::string& name) { m_database->ClearError(Id(name).first, Id(name).second, false); }

    void Record(const std::string& name, std::int64_t raised, std::int64_t cleared)
    {
        SErrorEntry record;
        record.problemCode = Id(name).first;
        record.problemType = static_cast<std::int16_t>(Id(name).second);
        record.raisedTime = Core::Time(raised);
        record.clearedTime = Core::Time(cleared);
        m_records.push_back(record);
    }

    std::string Why(const std::string& name) const
    {
        return ReasonText(CReasons(*m_database, m_records).ReasonOf(Id(name)));
    }

    Support::CFreshDirectory m_directory;
    std::unique_ptr<CErrorDatabase> m_database;
    std::vector<SErrorEntry> m_records;
};
} // namespace

TEST_F(ReasonsTest, GoDownToWhatWasReported)
{
    Define({Set({kA, kB})});
    Raise(kA);
    Record(kTop, 1772384709, 0);
    Record(kA, 1772384708, 0);
    EXPECT_EQ(Why(kTop), "System:Position:No Data:2: active since 2026-03-01T17:05:09+00:00\n"
                         "  set 1 has 1 of 1 active and needs 1, which holds it active\n"
                         "    Positioning:GPS:No Data:2: active since never\n"
                         "      set 1 has 1 of 2 active and needs 1, which holds it active\n"
                         "        Positioning:GPS:Communications:9: active since 2026-03-01T17:05:08+00:00; "
                         "reported\n");
}

TEST_F(ReasonsTest, TellWhatIsMissing)
{
    Define({Set({kA, kB, kC}, 2), Set({kC}, 1, false), Set({kC}, 3)});
    Raise(kA);
    Record(kA, 1772384709, 0);
    Record(kB, 1772384709, 1772384710);
    EXPECT_EQ(Why(kParent),
              "Positioning:GPS:No Data:2: not active, and never was\n"
              "  set 1 has 1 of 3 active and needs 2: 1 more would raise it\n"
              "    Positioning:GPS:Communications:9: active since 2026-03-01T17:05:09+00:00\n"
              "    Positioning:Ublox:No Data:2: not active; last raised 2026-03-01T17:05:09+00:00, cleared "
              "2026-03-01T17:05:10+00:00\n"
              "    Audio:None:Cannot Open:11: not active, and never was\n"
              "  set 2 has 0 of 1 active and needs 1, but is not automatic\n"
              "    Audio:None:Cannot Open:11: not active, and never was\n"
              "  set 3 has 0 of 1 active and needs 3: it has too few triggers to raise it ever\n"
              "    Audio:None:Cannot Open:11: not active, and never was\n");
}

TEST_F(ReasonsTest, OfAnErrorThatWasClearedItself)
{
    Define({Set({kA})});
    Raise(kA);
    Clear(kParent);
    EXPECT_EQ(Why(kParent), "Positioning:GPS:No Data:2: not active, and never was\n"
                            "  set 1 has 1 of 1 active and needs 1: enough, but it was cleared itself since; "
                            "the next one that is raised raises it\n"
                            "    Positioning:GPS:Communications:9: active since never\n");
}

TEST_F(ReasonsTest, OfOneThatOnlyAReportRaises)
{
    Define({Set({kA}, 1, false)});
    EXPECT_EQ(Why(kA),
              "Positioning:GPS:Communications:9: not active, and never was; it has no triggers: only "
              "a report of it raises it\n");
    EXPECT_EQ(Why(kParent).substr(0, Why(kParent).find('\n')),
              "Positioning:GPS:No Data:2: not active, and never was; none of its sets is automatic: only a "
              "report of it raises it");
    Raise(kA);
    Raise(kParent);
    EXPECT_EQ(Why(kParent),
              "Positioning:GPS:No Data:2: active since never; reported itself: none of its sets "
              "is automatic\n"
              "  set 1 has 1 of 1 active and needs 1, but is not automatic\n"
              "    Positioning:GPS:Communications:9: active since never; reported\n");
}

TEST_F(ReasonsTest, OfOneThatItsTriggersCouldNotClear)
{
    Define({Set({kA}), Set({kB})});
    Raise(kA);
    Clear(kA); // the second set does not hold it
    EXPECT_EQ(Why(kParent),
              "Positioning:GPS:No Data:2: active since never; no automatic set is satisfied: it "
              "was reported itself, or its triggers went in a way that could not clear it\n");
}

TEST_F(ReasonsTest, NameASharedTriggerASecondTimeOnly)
{
    Define({Set({kA, kB}), Set({kA})});
    Raise(kA);
    EXPECT_EQ(Why(kParent), "Positioning:GPS:No Data:2: active since never\n"
                            "  set 1 has 1 of 2 active and needs 1, which holds it active\n"
                            "    Positioning:GPS:Communications:9: active since never; reported\n"
                            "  set 2 has 1 of 1 active and needs 1, which holds it active\n"
                            "    Positioning:GPS:Communications:9: active since never; told above\n");
}

TEST_F(ReasonsTest, EndWhereErrorsRaiseEachOther)
{
    Support::CConfigurationBuilder()
        .Leaf(kA)
        .Parent(kParent, {kA, kTop})
        .Parent(kTop, {kParent})
        .WriteTo(m_directory.Prefix());
    Support::WarnedBy([this] { m_database = std::make_unique<CErrorDatabase>(m_directory.Prefix()); });
    Raise(kA);
    EXPECT_EQ(Why(kTop), "System:Position:No Data:2: active since never\n"
                         "  set 1 has 1 of 1 active and needs 1, which holds it active\n"
                         "    Positioning:GPS:No Data:2: active since never\n"
                         "      set 1 has 2 of 2 active and needs 1, which holds it active\n"
                         "        Positioning:GPS:Communications:9: active since never; reported\n"
                         "        System:Position:No Data:2: active since never; told above\n");
}

TEST_F(ReasonsTest, AreDocumentsToo)
{
    Define({Set({kA, kB}, 2)});
    Raise(kA);
    const Json document = ReasonDocument(CReasons(*m_database, m_records).ReasonOf(Id(kParent)));
    EXPECT_EQ(document["id"], kParent);
    EXPECT_EQ(document["active"], false);
    EXPECT_EQ(document["sets"][0].dump(),
              R"({"set":1,"automatic":true,"active":1,"of":2,"needed":2,"satisfied":false,"missing":1,)"
              R"("why":"set 1 has 1 of 2 active and needs 2: 1 more would raise it","triggers":)" +
                  document["sets"][0]["triggers"].dump() + "}");
    EXPECT_EQ(document["sets"][0]["triggers"][0]["active"], true);
    EXPECT_EQ(document["sets"][0]["triggers"][1]["active"], false);
}

TEST_F(ReasonsTest, OfWhatFollowedNameTheSetsThatDecided)
{
    Define({Set({kA, kB}), Set({kC, kA}, 2), Set({kB}, 1, false)});
    Raise(kA);
    EXPECT_EQ(WhyFollowed(Error(kParent), Error(kA)), "set 1 has 1 of 2 active and needs 1");
    Raise(kB);
    EXPECT_EQ(WhyNotFollowed(Error(kParent), Error(kB)), "set 1 has 2 of 2 active and needs 1");
    Clear(kB);
    EXPECT_EQ(WhyNotFollowed(Error(kParent), Error(kB)),
              "set 1 has 1 of 2 active and needs 1; set 2 does not hold Positioning:Ublox:No Data:2");
    Clear(kA);
    EXPECT_EQ(WhyFollowed(Error(kParent), Error(kA)),
              "set 1 has 0 of 2 active and needs 1; set 2 has 0 of 2 active and needs 2");
}

TEST_F(ReasonsTest, OfWhatDidNotFollowNameSetsThatAreNotAutomatic)
{
    Define({Set({kA}, 1, false)});
    Raise(kA);
    EXPECT_EQ(WhyNotFollowed(Error(kParent), Error(kA)), "none of its sets is automatic");
    Define({Set({kA}, 1, false), Set({kB})});
    Raise(kA);
    EXPECT_EQ(WhyNotFollowed(Error(kParent), Error(kA)),
              "no automatic set holds Positioning:GPS:Communications:9");
}

TEST_F(ReasonsTest, CountATriggerThatIsListedTwiceTwice)
{
    Define({Set({kA, kA, kB}, 2)});
    Raise(kA);
    EXPECT_EQ(WhyFollowed(Error(kParent), Error(kA)), "set 1 has 2 of 3 active and needs 2");
}

TEST_F(ReasonsTest, AnyTriggerSatisfiesASetThatNeedsNone)
{
    Define({Set({kA}, 0)});
    EXPECT_EQ(SetStates(Error(kParent)).front().Missing(), 1);
    Raise(kA);
    EXPECT_TRUE(SetStates(Error(kParent)).front().Satisfied());
    Clear(kA);
    EXPECT_EQ(WhyNotFollowed(Error(kParent), Error(kA)), "set 1 has 0 of 1 active and needs 0");
}
