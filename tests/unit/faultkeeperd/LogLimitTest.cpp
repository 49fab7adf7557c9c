#include "faultkeeperd/LogLimit.h"

#include "faultkeeperd/Log.h"

#include <gtest/gtest.h>

using Faultkeeper::Apps::CLogLimit;
using Faultkeeper::Apps::Quoted;
using std::chrono::milliseconds;

namespace
{

class LogLimit : public testing::Test
{
protected:
    std::string Admitted(const std::string& line, int after) { return m_limit.Admit(line, At(after)); }

    std::vector<std::string> LeftOut(int after, bool all = false) { return m_limit.LeftOut(At(after), all); }

    /// So many different lines, one each millisecond: "x", "xx" and so on.
    void AdmitKinds(std::size_t count)
    {
        for (std::size_t kind = 0; kind < count; ++kind)
            EXPECT_NE(Admitted(std::string(kind + 1, 'x'), static_cast<int>(kind)), "");
    }

    static CLogLimit::Clock::time_point At(int after)
    {
        return CLogLimit::Clock::time_point(milliseconds(1000000 + after));
    }

    CLogLimit m_limit;
};

using Lines = std::vector<std::string>;

} // namespace

TEST_F(LogLimit, LetsDifferentLinesThrough)
{
    EXPECT_EQ(Admitted("a", 0), "a");
    EXPECT_EQ(Admitted("b", 0), "b");
    EXPECT_EQ(LeftOut(5000), Lines());
}

TEST_F(LogLimit, LetsTheSameLineThroughOnceASecondWithACount)
{
    EXPECT_EQ(Admitted("a", 0), "a");
    EXPECT_EQ(Admitted("a", 1), "");
    EXPECT_EQ(Admitted("a", 999), "");
    EXPECT_EQ(Admitted("a", 1000), "a (and 2 like it before)");
    EXPECT_EQ(Admitted("a", 1999), "");
    EXPECT_EQ(Admitted("a", 3000), "a (and 1 like it before)");
    EXPECT_EQ(Admitted("a", 4000), "a");
}

TEST_F(LogLimit, TakesLinesForTheSameThatDifferInNumbersAndWhatIsQuoted)
{
    EXPECT_EQ(Admitted("127.0.0.1:40312 at byte 68: unknown \"x\"", 0),
              "127.0.0.1:40312 at byte 68: unknown \"x\"");
    EXPECT_EQ(Admitted("127.0.0.1:40313 at byte 7: unknown \"yy\"", 1), "");
    EXPECT_EQ(Admitted("127.0.0.1:40313 at byte 7: malformed \"yy\"", 1),
              "127.0.0.1:40313 at byte 7: malformed \"yy\"");
}

TEST_F(LogLimit, IsNotDeceivedByMarksWithinWhatIsQuoted)
{
    EXPECT_NE(Admitted("unknown " + Quoted("\"x"), 0), "");
    EXPECT_EQ(Admitted("unknown " + Quoted("\"y"), 1), "");
    EXPECT_EQ(Admitted("unknown " + Quoted("\\\"z\\"), 1), "");
    EXPECT_NE(Admitted("unknown " + Quoted("\\") + " indeed", 1), "");
}

TEST_F(LogLimit, TellsWhatWasLeftOutOnceTheSecondIsOver)
{
    Admitted("a 1", 0);
    Admitted("a 2", 1);
    Admitted("a 3", 2);
    EXPECT_EQ(LeftOut(999), Lines());
    EXPECT_EQ(LeftOut(1000), Lines{"a 3 (2 like it)"});
    EXPECT_EQ(LeftOut(3000), Lines());
    EXPECT_EQ(Admitted("a 4", 1500), "") << "the count was a line, too";
    EXPECT_EQ(LeftOut(1501, true), Lines{"a 4 (1 like it)"});
}

TEST_F(LogLimit, RemembersSoManyKindsOfLines)
{
    AdmitKinds(CLogLimit::kKinds);
    EXPECT_EQ(Admitted("x", 100), "");
    EXPECT_EQ(Admitted("another", 1000), "another") << "in the place of the oldest";
    EXPECT_EQ(Admitted("x", 1001), "x") << "which is forgotten";
}

TEST_F(LogLimit, LeavesOutWhatIsOfTooManyKindsAtOnce)
{
    AdmitKinds(CLogLimit::kKinds);
    EXPECT_EQ(Admitted("a", 900), "");
    EXPECT_EQ(Admitted("b", 999), "");
    EXPECT_EQ(LeftOut(999), Lines{"b (the last of 2 of too many kinds)"});
    EXPECT_EQ(Admitted("c", 999), "");
    EXPECT_EQ(LeftOut(1500), Lines());
    EXPECT_EQ(LeftOut(1999), Lines{"c (the last of 1 of too many kinds)"});
    EXPECT_EQ(LeftOut(9999, true), Lines());
}

TEST_F(LogLimit, LosesNoCountOfAKindThatMakesRoom)
{
    AdmitKinds(CLogLimit::kKinds);
    EXPECT_EQ(Admitted("x", 1), "");
    EXPECT_EQ(Admitted("a", 1000), "a");
    EXPECT_EQ(LeftOut(1000), Lines{"x (the last of 1 of too many kinds)"});
}
