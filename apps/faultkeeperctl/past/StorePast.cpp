#include "faultkeeperctl/past/StorePast.h"

#include "common/owner/RunDirectory.h"
#include "faultkeeperctl/Settings.h"
#include "store/BootClock.h"
#include "store/StoreFile.h"
#include "store/reading/StoreReader.h"

#include <cstdio>
#include <ctime>

namespace Faultkeeper::Apps
{

namespace
{
std::int64_t Now()
{
    constexpr std::int64_t kSecond = 1000000000;
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    return now.tv_sec * kSecond + now.tv_nsec;
}

std::string FailureText(const std::string& path, const CSqliteFailure& failure)
{
    return "the state store " + path + ": " + failure.what();
}
} // namespace

std::string StorePath(const SSettings& settings, const std::string& option)
{
    return option.empty() ? UsualStorePath(settings.runDirectory) : AbsolutePath(option);
}

SPast ReadPast(const std::string& path)
{
    try
    {
        CStoreReader reader(path, escWholeFile);
        SPast past;
        past.journal = reader.Journal();
        past.errors = reader.Errors();
        past.now = Now();
        past.bootTime = past.now - NanosecondsSinceBoot();
        const std::string boot = reader.Boot();
        past.ofThisBoot = !boot.empty() && boot == BootId();
        for (const std::string& dropped : reader.Dropped())
            std::fprintf(stderr,
                         "faultkeeperctl: the state store holds a damaged row, which is left out: %s\n",
                         dropped.c_str());
        return past;
    }
    catch (const CSqliteFailure& failure)
    {
        throw CFailure(epsNo, FailureText(path, failure));
    }
}

std::vector<STransition> CJournalFollower::News()
{
    const SStoreMark mark = MarkOfStore(m_path);
    if (m_read && mark.settled && mark.SameAs(m_mark))
        return {};
    try
    {
        std::vector<STransition> news = Read();
        m_failureTold = false;
        m_mark = mark;
        m_read = mark.settled;
        return news;
    }
    catch (const CSqliteFailure& failure)
    {
        if (!m_failureTold)
            std::fprintf(stderr, "faultkeeperctl: %s; waiting for it\n",
                         FailureText(m_path, failure).c_str());
        m_failureTold = true;
        m_read = false;
        return {};
    }
}

std::vector<STransition> CJournalFollower::Read()
{
    CStoreReader reader(m_path, escRowsOnly);
    if (m_next > reader.NextNumber())
    {
        std::fprintf(stderr, "faultkeeperctl: the state store %s was begun anew\n", m_path.c_str());
        m_next = 1;
    }
    std::vector<STransition> news = reader.Journal(m_next);
    if (!news.empty())
        m_next = news.back().number + 1;
    return news;
}

} // namespace Faultkeeper::Apps
