#include "faultkeeperd/service/Signals.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <unistd.h>

#include <csignal>

using Faultkeeper::Apps::CSignals;

namespace
{
bool HasInput(const CSignals& signals)
{
    struct pollfd input = {signals.Descriptor(), POLLIN, 0};
    return poll(&input, 1, 0) == 1;
}

/// Sets how a signal is dealt with, for the life of the object.
class CDisposition
{
public:
    CDisposition(int number, void (*handler)(int)) : m_number(number), m_before(std::signal(number, handler))
    {
    }
    ~CDisposition() { std::signal(m_number, m_before); }
    CDisposition(const CDisposition&) = delete;
    CDisposition& operator=(const CDisposition&) = delete;

private:
    int m_number;
    void (*m_before)(int);
};
} // namespace

TEST(Signals, HaveNothingToTellAtFirst)
{
    const CSignals signals;
    EXPECT_EQ(signals.Received(), 0);
    EXPECT_FALSE(HasInput(signals));
}

TEST(Signals, TellTheFirstThatAsksToEnd)
{
    for (const int number : {SIGTERM, SIGINT})
    {
        const CSignals signals;
        raise(number);
        raise(SIGTERM);
        EXPECT_EQ(signals.Received(), number);
        EXPECT_TRUE(HasInput(signals));
    }
}

TEST(Signals, TellASecondOneOnceTheFirstIsSeenTo)
{
    const CSignals signals;
    raise(SIGTERM);
    signals.TakeFirst();
    EXPECT_FALSE(HasInput(signals));
    EXPECT_EQ(signals.Received(), SIGTERM);
    raise(SIGINT);
    EXPECT_TRUE(HasInput(signals));
}

TEST(Signals, TellASecondOneThatCameBeforeTheFirstWasSeenTo)
{
    const CSignals signals;
    raise(SIGTERM);
    raise(SIGINT);
    signals.TakeFirst();
    EXPECT_TRUE(HasInput(signals));
}

TEST(Signals, TellASecondOneWhereThereWasNoFirst)
{
    const CSignals signals;
    signals.TakeFirst(); // and does not wait for one
    raise(SIGTERM);
    EXPECT_TRUE(HasInput(signals));
}

TEST(Signals, AskToEndEvenIfTheyWereBlockedOrIgnored)
{
    const CDisposition ignored(SIGINT, SIG_IGN);
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGINT);
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
    const CSignals signals;
    raise(SIGINT);
    EXPECT_EQ(signals.Received(), SIGINT);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST(Signals, HangingUpAsksToEnd)
{
    const CDisposition standard(SIGHUP, SIG_DFL);
    const CSignals signals;
    raise(SIGHUP);
    EXPECT_EQ(signals.Received(), SIGHUP);
}

TEST(Signals, HangingUpIsIgnoredIfItWasBefore)
{
    const CDisposition ignored(SIGHUP, SIG_IGN);
    const CSignals signals;
    raise(SIGHUP);
    EXPECT_EQ(signals.Received(), 0);
}

TEST(Signals, ABrokenPipeIsNone)
{
    const CSignals signals;
    raise(SIGPIPE);
    EXPECT_EQ(signals.Received(), 0);
}

TEST(Signals, AFileThatMayNotGrowIsNone)
{
    const CSignals signals;
    raise(SIGXFSZ);
    EXPECT_EQ(signals.Received(), 0);
}
