#include "SystemFixture.h"

#include <gtest/gtest.h>

using namespace Support;

namespace
{

class Reporting : public SystemTest
{
};

const Ids kLinkSensorAndParents = {kLinkSensor, kReceiver, kPosition};
const Ids kDataSensorAndParents = {kDataSensor, kReceiver, kPosition};

} // namespace

TEST_F(Reporting, ARaiseReachesEveryDisplayAlongWithItsParents)
{
    const auto owner = StartOwner();
    CDisplay display(Configuration());
    CDisplay another(Configuration());
    Report("raise 0x40C09 9");
    EXPECT_TRUE(display.ShowsInTime(kLinkSensorAndParents));
    EXPECT_TRUE(another.ShowsInTime(kLinkSensorAndParents));
    EXPECT_EQ(display.Record(kPosition).counter1, 1);
}

TEST_F(Reporting, AClearByAnotherReporterClearsTheParents)
{
    const auto owner = StartOwner();
    CDisplay display(Configuration());
    Report("raise 0x40C09 9");
    ASSERT_TRUE(display.ShowsInTime(kLinkSensorAndParents));
    Report("clear 0x40C09 9");
    EXPECT_TRUE(display.ShowsInTime({}));
    EXPECT_TRUE(display.Record(kPosition).raisedTime < display.Record(kPosition).clearedTime);
}

TEST_F(Reporting, AParentStaysWhileAnotherReporterKeepsItsChildRaised)
{
    const auto owner = StartOwner();
    CDisplay display(Configuration());
    Report("raise 0x40C09 9");
    ASSERT_TRUE(display.ShowsInTime(kLinkSensorAndParents));
    Report("raise 0x4281B 2");
    ASSERT_TRUE(display.ShowsInTime({kLinkSensor, kDataSensor, kReceiver, kPosition}));
    Report("clear 0x40C09 9");
    EXPECT_TRUE(display.ShowsInTime(kDataSensorAndParents));
    EXPECT_EQ(display.Record(kReceiver).counter1, 1);
}

TEST_F(Reporting, ADisplayThatComesLateShowsWhatWasRaisedBefore)
{
    const auto owner = StartOwner();
    Report("raise 0x40C09 9 raise 0x4281B 2 clear 0x40C09 9");
    CDisplay display(Configuration());
    EXPECT_TRUE(display.ShowsInTime(kDataSensorAndParents));
}

TEST_F(Reporting, ReportersAtTheSameTimeLoseNothing)
{
    const auto owner = StartOwner();
    const auto first = StartReporter("repeat 300 raise 0x40C09 9 clear 0x40C09 9");
    const auto second = StartReporter("repeat 300 raise 0x4281B 2 clear 0x4281B 2");
    const auto third =
        StartReporter("repeat 300 clear 0x40C1C 3 raise 0x40C1C 3"); // an error that does not exist
    EXPECT_EQ(first->Wait(), 0);
    EXPECT_EQ(second->Wait(), 0);
    EXPECT_EQ(third->Wait(), 0);
    EXPECT_TRUE(WaitUntil(
        [&] { return Record(kLinkSensor).counter1 == 300 && Record(kDataSensor).counter1 == 300; }));
    CDisplay display(Configuration());
    EXPECT_TRUE(display.ShowsInTime({}));
}

TEST_F(Reporting, AReportFromBeforeTheOwnerStartedIsQueuedAndArrives)
{
    const auto reporter = StartReporter("queue raise 0x40C09 9 clear 0x40C09 9 raise 0x4281B 2");
    EXPECT_TRUE(WaitUntil([&] { return reporter->Output() == "-1\n-1\n-1\n"; })) << reporter->Output();
    const auto owner = StartOwner();
    CDisplay display(Configuration());
    EXPECT_TRUE(display.ShowsInTime(kDataSensorAndParents));
    EXPECT_EQ(Record(kLinkSensor).counter1, 1);
    EXPECT_EQ(reporter->Wait(), 0);
}

TEST_F(Reporting, AScriptReportsWithOneLineOfText)
{
    const auto owner = StartOwner();
    CDisplay display(Configuration());
    const CRawConnection script;
    script.Send("d4:argsli265243ei2ei0ee4:name10:RaiseErrore");
    EXPECT_TRUE(display.ShowsInTime({kReceiver, kPosition}));
    script.Send("d4:argsli265243ei2ee4:name10:ClearErrore");
    EXPECT_TRUE(display.ShowsInTime({}));
}

TEST_F(Reporting, AnUnknownErrorIsLoggedByItsName)
{
    const auto owner = StartOwner();
    Report("raise 0x40C1B 4");
    EXPECT_TRUE(
        owner->SaysInTime("RaiseError of an unknown error \"Positioning:GPS:No Data:4\", \"0x40C1B:4\"\n"))
        << owner->Errors();
}

TEST_F(Reporting, ANumberThatIsTooLargeIsLoggedAndRaisesNothing)
{
    const auto owner = StartOwner();
    const CRawConnection script;
    // 2^32 + 0x40C09: its lower half is the link sensor's code
    script.Send("d4:argsli4295232521ei9ei0ee4:name10:RaiseErrore");
    EXPECT_TRUE(
        owner->SaysInTime("at byte 0: RaiseError with wrong arguments: argument 1 is out of range\n"));
    script.Send("d4:argsli265243ei2ei0ee4:name10:RaiseErrore"); // the connection is still good
    CDisplay display(Configuration());
    EXPECT_TRUE(display.ShowsInTime({kReceiver, kPosition}));
}

TEST_F(Reporting, AnUnknownNotificationIsLoggedWithItsPlaceInTheStream)
{
    const auto owner = StartOwner();
    const CRawConnection script;
    script.Send("d4:argsli265243ei2ei0ee4:name10:RaiseErrore");
    script.Send("d4:argsle4:name5:Helpee");
    EXPECT_TRUE(owner->SaysInTime("at byte 43: "));
}

TEST_F(Reporting, NonsenseEndsItsOwnConnectionOnly)
{
    const auto owner = StartOwner();
    const CRawConnection script;
    const CRawConnection stranger;
    stranger.Send("GET / HTTP/1.1\r\n\r\n");
    EXPECT_TRUE(stranger.ClosedInTime());
    EXPECT_TRUE(owner->SaysInTime(" at byte 0: ")) << owner->Errors();
    script.Send("d4:argsli265243ei2ei0ee4:name10:RaiseErrore");
    CDisplay display(Configuration());
    EXPECT_TRUE(display.ShowsInTime({kReceiver, kPosition}));
}
