#include "faultkeeperd/owner/StateRecorder.h"

#include "../OwnerFixture.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace Support;
using namespace Faultkeeper;
using namespace Faultkeeper::Apps;

namespace
{

class StateRecorder : public OwnerTest
{
protected:
    void SetUp() override
    {
        OwnerTest::SetUp();
        UseStore();
        Keeper().Open("boot", "c");
        m_recorder = std::make_unique<CStateRecorder>(Database(), Keeper());
    }

    /// What is in the store once everything is: identifier, state, counters, all raises, and both times where
    /// they were given by hand.
    std::string Stored()
    {
        m_recorder->HandOver();
        Keeper().CommitAtOnce(CStateKeeper::Clock::now());
        m_transitions = Keeper().Journal(0, 100);
        const std::string path = UseStore().path;
        std::ostringstream text;
        for (const SStoredError& error : Keeper().Open("boot", "c").errors)
            text << ErrorName(error.entry.problemCode, error.entry.problemType) << " "
                 << (error.entry.flags != 0 ? "raised " : "clear ") << error.entry.counter1 << "/"
                 << error.entry.counter2 << "/" << error.raises << "\n";
        return text.str();
    }

    std::string Journal()
    {
        std::ostringstream text;
        for (const STransition& transition : m_transitions)
            text << transition.number << (transition.raised ? " + " : " - ")
                 << ErrorName(transition.problemCode, transition.problemType) << " "
                 << (transition.caused ? ErrorName(transition.causeCode, transition.causeType)
                                       : transition.session)
                 << "\n";
        return text.str();
    }

    std::unique_ptr<CStateRecorder> m_recorder;
    std::vector<STransition> m_transitions;
};

} // namespace

TEST_F(StateRecorder, CountsEachRaiseAndNoRepeat)
{
    for (const bool raised : {true, true, false, false, true})
    {
        m_recorder->Begin("s");
        m_recorder->Note(kLinkSensor, raised);
    }
    EXPECT_EQ(Stored(), "Positioning:GPS:Communications:9 raised 2/2/2\n");
    EXPECT_EQ(Journal(), "1 + Positioning:GPS:Communications:9 s\n"
                         "2 - Positioning:GPS:Communications:9 s\n"
                         "3 + Positioning:GPS:Communications:9 s\n");
}

TEST_F(StateRecorder, GoesOnFromAFormerOwnersCounts)
{
    SStoredError former;
    former.entry.problemCode = kLinkSensor.first;
    former.entry.problemType = static_cast<std::int16_t>(kLinkSensor.second);
    former.entry.counter1 = 65535;
    former.entry.counter2 = 7;
    former.raises = 131071;
    m_recorder->Restore(former, former.entry);
    m_recorder->Note(kLinkSensor, true);
    EXPECT_EQ(Stored(), "Positioning:GPS:Communications:9 raised 0/8/131072\n");
}

TEST_F(StateRecorder, TellsWhoReportedAndWhatFollowed)
{
    m_recorder->Begin("0123456789abcdef0123456789abcdef");
    m_recorder->Note(kLinkSensor, true);
    m_recorder->Note(kReceiver, true);
    m_recorder->Note(kPosition, true);
    m_recorder->Begin("");
    m_recorder->Note(kDataSensor, true);
    Stored();
    EXPECT_EQ(Journal(), "1 + Positioning:GPS:Communications:9 0123456789abcdef0123456789abcdef\n"
                         "2 + Positioning:GPS:No Data:2 Positioning:GPS:Communications:9\n"
                         "3 + System:Position:No Data:2 Positioning:GPS:No Data:2\n"
                         "4 + Positioning:Ublox:No Data:2 \n");
}

TEST_F(StateRecorder, TakesTheTablesTimesForWhatHasChanged)
{
    m_recorder->Note(kLinkSensor, true);
    m_recorder->HandOver();
    EXPECT_TRUE(m_recorder->WantsTimes());
    SErrorEntry record;
    record.problemCode = kLinkSensor.first;
    record.problemType = static_cast<std::int16_t>(kLinkSensor.second);
    record.raisedTime = Core::Time(1234);
    SErrorEntry second = record; // nobody writes to it
    second.raisedTime = Core::Time();
    m_recorder->TakeTimes({record, second});
    EXPECT_FALSE(m_recorder->WantsTimes());
    Keeper().CommitAtOnce(CStateKeeper::Clock::now());
    UseStore();
    EXPECT_EQ(Keeper().Open("boot", "c").errors.at(0).entry.raisedTime, Core::Time(1234));
}
