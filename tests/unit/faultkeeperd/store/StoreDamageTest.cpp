#include "StoreFixture.h"

#include "common/text/ErrorNames.h"
#include "support/EveryCase.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <random>
#include <vector>

using namespace StoreFixture;

// Whatever happens to the file, a store is what was written, less exactly the rows that are named, or it says
// that it is damaged, or not ours. And what was named once is gone: the store is read again to see that.
//
// By default some of all bits of a file are flipped, one at a time. FAULTKEEPER_TEST_FULL=1 in the
// environment takes all of them, which takes some minutes. FAULTKEEPER_TRUNCATION_STEP says how many bytes
// lie between one cut and the next.

namespace
{

/// How many bytes lie between one cut and the next, unless the environment says otherwise.
std::size_t TruncationStep(int usual)
{
    const char* const chosen = std::getenv("FAULTKEEPER_TRUNCATION_STEP");
    const int step = chosen == nullptr ? usual : std::atoi(chosen);
    return step > 1 ? static_cast<std::size_t>(step) : 1;
}

/// What came of opening a store.
struct SSeen
{
    std::string refusal; ///< "damaged" or "not ours"; then there is nothing else
    std::vector<std::string> lines;
    std::vector<std::string> dropped;
};

std::string Kind(const std::string& line)
{
    return line.substr(0, line.find(' '));
}

std::vector<std::string> OfKind(const std::string& kind, const std::vector<std::string>& lines)
{
    std::vector<std::string> some;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(some),
                 [&kind](const std::string& line) { return Kind(line) == kind; });
    return some;
}

class StoreDamage : public Test
{
protected:
    /// @param generation  changes all of it
    static SStoreBatch Batch(int generation)
    {
        SStoreBatch batch;
        for (int type = 0; type < 5; ++type)
            batch.errors.push_back(Error(type, generation % 2 == 0, static_cast<std::uint16_t>(generation),
                                         static_cast<std::uint64_t>(generation)));
        for (const char last : {'1', '2', '3'})
            batch.sessions.push_back(
                {std::string(31, '0') + last, static_cast<std::uint64_t>(generation), 100 + last});
        for (int type = 0; type < 5; ++type)
            batch.transitions.push_back(Transition(type, generation % 2 == 0));
        return batch;
    }

    void Store(int generation) const
    {
        CStateStore store(Settings());
        store.Begin("boot", "configuration");
        store.Commit(Batch(generation));
    }

    /// Opens the store, reads all that it gives and takes it over, as an owner does.
    SSeen Look() const
    {
        SSeen seen;
        try
        {
            CStateStore store(Settings());
            const SStoreContents contents = store.Read();
            const std::vector<STransition> journal = store.Journal(0, 1000);
            EXPECT_EQ(store.JournalLength(), journal.size());
            AddLines("fact boot " + contents.boot + "\nfact configuration " + contents.configuration + "\n",
                     seen);
            seen.dropped = contents.dropped;
            SStoreContents sound = contents;
            sound.dropped.clear();
            AddLines(Shown(sound), seen);
            for (const STransition& transition : journal)
                AddLines("transition " + Shown(std::vector<STransition>{transition}), seen);
            store.Begin("boot", "configuration");
        }
        catch (const CSqliteFailure& failure)
        {
            seen = SSeen();
            seen.refusal = failure.Damage() ? "damaged" : "not ours";
            EXPECT_TRUE(failure.Damage() ||
                        std::string(failure.what()).find("left as it is") != std::string::npos)
                << failure.what();
        }
        return seen;
    }

    static void AddLines(const std::string& text, SSeen& seen)
    {
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);)
            seen.lines.push_back(line);
    }

    void Clear() const
    {
        for (const char* const part : {"", "-wal", "-shm", "-journal"})
            std::remove((Settings().path + part).c_str());
    }

    /// Writes the file and opens it twice.
    /// @return what was seen first
    SSeen ExpectHonest(const std::string& file, const std::vector<std::string>& written) const
    {
        Clear();
        WriteFile(Settings().path, file);
        SSeen seen = Look();
        if (!seen.refusal.empty())
            return seen;
        ExpectLess(written, seen);
        if (!seen.dropped.empty())
        {
            const SSeen again = Look();
            EXPECT_EQ(again.refusal, "");
            EXPECT_EQ(again.dropped, std::vector<std::string>()) << "is gone";
            EXPECT_EQ(again.lines, seen.lines) << "is as it was";
        }
        return seen;
    }

    /// Is it what was written, less what is named?
    static void ExpectLess(const std::vector<std::string>& written, const SSeen& seen)
    {
        std::vector<std::string> missing;
        auto line = seen.lines.begin();
        for (const std::string& expected : written)
        {
            if (line != seen.lines.end() && *line == expected)
                ++line;
            else
                missing.push_back(expected);
        }
        EXPECT_TRUE(line == seen.lines.end()) << "was never written: " << *line;
        std::vector<std::string> names;
        for (const std::string& error : OfKind("error", missing))
            names.push_back("error Positioning:GPS:No Data:" + error.substr(error.find(':') + 1, 1));
        EXPECT_EQ(OfKind("error", seen.dropped), names);
        // The name of a session is all that there is of it, and damaged, too, perhaps.
        EXPECT_EQ(OfKind("session", seen.dropped).size(), OfKind("session", missing).size());
        EXPECT_EQ(OfKind("transition", seen.dropped).size(), OfKind("transition", missing).size());
        EXPECT_EQ(OfKind("fact", missing), std::vector<std::string>()) << "each is there twice";
    }

    static std::string Flipped(std::string file, std::size_t bit)
    {
        file[bit / 8] = static_cast<char>(file[bit / 8] ^ (1 << bit % 8));
        return file;
    }

    /// What the last tests of files have come to.
    std::map<std::string, int> m_outcomes;

    void Note(const SSeen& seen)
    {
        ++m_outcomes[!seen.refusal.empty() ? seen.refusal : seen.dropped.empty() ? "whole" : "less"];
    }
};

TEST_F(StoreDamage, CutAtAnyByteItNeverGivesWhatWasNotWritten)
{
    Store(1); // closing moves the log into the file
    const std::string whole = ReadFile(Settings().path);
    const std::vector<std::string> written = Look().lines;
    ASSERT_EQ(written.size(), 2u + 5u + 3u + 5u);
    for (std::size_t size = 1; size < whole.size(); size += TruncationStep(1))
    {
        SCOPED_TRACE(size);
        Note(ExpectHonest(whole.substr(0, size), written));
    }
    Note(ExpectHonest(whole.substr(0, whole.size() - 1), written));
    EXPECT_GT(m_outcomes["less"], 0) << "the last byte is one of a row";
    EXPECT_GT(m_outcomes["damaged"], 0);
    EXPECT_EQ(m_outcomes["not ours"], 0);
    EXPECT_EQ(m_outcomes["whole"], 0);
    Clear();
    WriteFile(Settings().path, "");
    EXPECT_EQ(Look().lines, (std::vector<std::string>{"fact boot ", "fact configuration "})) << "is new";
}

TEST_F(StoreDamage, OneBitThatFlipsNeverGivesWhatWasNotWritten)
{
    Store(1);
    const std::string whole = ReadFile(Settings().path);
    const std::vector<std::string> written = Look().lines;
    for (std::size_t bit = 0; bit < whole.size() * 8; bit += Support::EveryCase(false) ? 1 : 101)
    {
        SCOPED_TRACE(bit);
        const SSeen seen = ExpectHonest(Flipped(whole, bit), written);
        const bool inFormat = bit / 8 >= 60 && bit / 8 < 64; // a higher one is another one
        EXPECT_TRUE(inFormat || seen.refusal != "not ours");
        Note(seen);
    }
    EXPECT_GT(m_outcomes["whole"], 0);
    EXPECT_GT(m_outcomes["less"], 0);
    EXPECT_GT(m_outcomes["damaged"], 0);
}

TEST_F(StoreDamage, OneBitThatFlipsInWhatARowSaysCostsNoOtherRow)
{
    Store(1);
    const std::string whole = ReadFile(Settings().path);
    const std::vector<std::string> written = Look().lines;
    for (const std::string said : {"0123456789abcdef0123456789abcdef", "boot", "configuration"})
    {
        for (std::size_t at = whole.find(said); at != std::string::npos; at = whole.find(said, at + 1))
        {
            for (std::size_t bit = at * 8; bit < (at + said.size()) * 8;
                 bit += Support::EveryCase(false) ? 1 : 5)
            {
                SCOPED_TRACE(bit);
                const SSeen seen = ExpectHonest(Flipped(whole, bit), written);
                EXPECT_EQ(seen.refusal, "");
                EXPECT_EQ(seen.dropped.size(), 1u);
            }
        }
    }
}

class FlippedStore : public StoreDamage, public testing::WithParamInterface<unsigned>
{
};

TEST_P(FlippedStore, NeverGivesWhatWasNotWritten)
{
    Store(1);
    const std::string whole = ReadFile(Settings().path);
    const std::vector<std::string> written = Look().lines;
    std::mt19937 random(GetParam());
    for (int round = 0; round < 1000; ++round)
    {
        // Most of a small file is room for more: half of the flips are where something is.
        std::size_t bit = random() % (whole.size() * 8);
        while (round % 2 == 0 && whole[bit / 8] == 0)
            bit = random() % (whole.size() * 8);
        SCOPED_TRACE(bit);
        Note(ExpectHonest(Flipped(whole, bit), written));
    }
    EXPECT_GT(m_outcomes["whole"], 0);
    EXPECT_GT(m_outcomes["less"], 0);
    EXPECT_GT(m_outcomes["damaged"], 0);
}

INSTANTIATE_TEST_SUITE_P(Seeds, FlippedStore, testing::Range(0u, 10u));

/// A store as an owner leaves it that is killed: with a log.
class KilledStore : public StoreDamage
{
protected:
    void SetUp() override
    {
        Store(1);
        m_before = Look().lines;
        {
            CStateStore store(Settings());
            store.Commit(Batch(2));
            m_file = ReadFile(Settings().path);
            m_log = ReadFile(Settings().path + "-wal");
        }
        m_after = Look().lines;
        ASSERT_FALSE(m_log.empty());
        ASSERT_NE(m_before, m_after);
    }

    /// @return whether it was the state after the commit
    bool ExpectBeforeOrAfter(const std::string& log)
    {
        Clear();
        WriteFile(Settings().path, m_file);
        WriteFile(Settings().path + "-wal", log);
        const SSeen seen = Look();
        EXPECT_EQ(seen.refusal, "");
        EXPECT_EQ(seen.dropped, std::vector<std::string>());
        EXPECT_TRUE(seen.lines == m_before || seen.lines == m_after);
        return seen.lines == m_after;
    }

    std::string m_file;
    std::string m_log;
    std::vector<std::string> m_before;
    std::vector<std::string> m_after;
};

TEST_F(KilledStore, WhoseLogIsCutAtAnyByteIsTheStateBeforeOrAfterTheCommit)
{
    int after = 0;
    for (std::size_t size = 0; size < m_log.size(); size += TruncationStep(13))
    {
        SCOPED_TRACE(size);
        after += ExpectBeforeOrAfter(m_log.substr(0, size)) ? 1 : 0;
    }
    after += ExpectBeforeOrAfter(m_log.substr(0, m_log.size() - 1)) ? 1 : 0;
    EXPECT_EQ(after, 0) << "the last byte is one of the commit";
    EXPECT_TRUE(ExpectBeforeOrAfter(m_log));
}

TEST_F(KilledStore, InWhoseLogABitFlipsIsTheStateBeforeOrAfterTheCommit)
{
    for (std::size_t bit = 0; bit < m_log.size() * 8; bit += Support::EveryCase(false) ? 1 : 211)
    {
        SCOPED_TRACE(bit);
        ExpectBeforeOrAfter(Flipped(m_log, bit));
    }
}

} // namespace
