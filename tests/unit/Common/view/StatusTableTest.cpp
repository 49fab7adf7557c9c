#include "unit/Common/view/ViewFixture.h"

#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/shm.h>

#include <algorithm>
#include <cstdint>
#include <memory>

using namespace Faultkeeper;

namespace
{

class StatusTableTest : public ViewFixture
{
protected:
    /// The number that stands at an offset of the segment, in the machine's byte order.
    template <typename Number> Number At(std::size_t offset)
    {
        Number number;
        std::memcpy(&number, m_directory.Table() + offset, sizeof number);
        return number;
    }

    shmid_ds Segment()
    {
        shmid_ds status = {};
        EXPECT_EQ(shmctl(shmget(m_directory.Key(), 0, 0), IPC_STAT, &status), 0);
        return status;
    }

    semid_ds SemaphoreSet()
    {
        union
        {
            int value;
            semid_ds* buffer;
        } argument;
        semid_ds status = {};
        argument.buffer = &status;
        EXPECT_EQ(semctl(m_directory.Semaphore(), 0, IPC_STAT, argument), 0);
        return status;
    }

    /// Makes the segment before any view does, every byte 0xFF.
    void FillSegment()
    {
        const int segment = shmget(m_directory.Key(), kStatusTableBytes, IPC_CREAT | 0644);
        ASSERT_NE(segment, -1);
        std::memset(m_directory.Table(), 0xFF, kStatusTableBytes);
    }
};

TEST_F(StatusTableTest, IsKeyedFromTheWorkingDirectoryAndProject68)
{
    const CErrorDatabaseView view(true, eViewOwner);
    const key_t key = ftok(m_directory.Path().c_str(), 68);
    EXPECT_NE(shmget(key, 0, 0), -1);
    EXPECT_NE(semget(key, 0, 0), -1);
}

TEST_F(StatusTableTest, Has14432BytesThatOnlyItsUserMayWrite)
{
    const CErrorDatabaseView view(false, eViewReader);
    EXPECT_EQ(Segment().shm_segsz, 14432u);
    EXPECT_EQ(Segment().shm_perm.mode & 0777, 0644);
}

TEST_F(StatusTableTest, IsGuardedByOneSemaphoreThatEveryoneMayChange)
{
    const CErrorDatabaseView view(false, eViewReader);
    EXPECT_EQ(SemaphoreSet().sem_nsems, 1u);
    EXPECT_EQ(SemaphoreSet().sem_perm.mode & 0777, 0666);
}

TEST_F(StatusTableTest, IsFilledWithZerosByACreatingView)
{
    FillSegment();
    const CErrorDatabaseView view(true, eViewOwner);
    EXPECT_EQ(Bytes(), std::string(14432, '\0'));
}

TEST_F(StatusTableTest, IsFilledWithZerosByACreatingReader)
{
    FillSegment();
    const CErrorDatabaseView view(true, eViewReader);
    EXPECT_EQ(Bytes(), std::string(14432, '\0'));
    EXPECT_EQ(m_directory.SemaphoreValue(), 1);
}

TEST_F(StatusTableTest, IsLeftAsItIsByAViewThatDoesNotCreate)
{
    FillSegment();
    const CErrorDatabaseView reader(false, eViewReader);
    const CErrorDatabaseView owner(false, eViewOwner);
    EXPECT_EQ(Bytes(), std::string(14432, '\xFF'));
    EXPECT_EQ(m_directory.SemaphoreValue(), 0);
}

TEST_F(StatusTableTest, IsMadeEmptyByAReaderThatComesFirst)
{
    const CErrorDatabaseView reader(false, eViewReader);
    EXPECT_FALSE(reader.Failed());
    EXPECT_EQ(Bytes(), std::string(14432, '\0'));
}

TEST_F(StatusTableTest, IsSharedWithAReaderThatCameBeforeTheCreator)
{
    CErrorDatabaseView reader(false, eViewReader);
    CErrorDatabaseView owner(true, eViewOwner);
    owner.FaultkeeperReady(true);
    EXPECT_TRUE(reader.FaultkeeperReady());
}

TEST_F(StatusTableTest, HasItsLockMadeAvailableOnceByEachCreatingView)
{
    const CErrorDatabaseView first(true, eViewOwner);
    EXPECT_EQ(m_directory.SemaphoreValue(), 1);
    const CErrorDatabaseView second(true, eViewOwner);
    EXPECT_EQ(m_directory.SemaphoreValue(), 2);
}

TEST_F(StatusTableTest, IsZeroedAgainByALaterCreator)
{
    CErrorDatabaseView first(true, eViewOwner);
    first.LoadErrors(m_database);
    first.FaultkeeperReady(true);
    const CErrorDatabaseView second(true, eViewOwner);
    EXPECT_EQ(Bytes(), std::string(14432, '\0'));
}

TEST_F(StatusTableTest, StaysAttachedAndWholeWhenAViewIsDestroyed)
{
    auto view = std::make_unique<CErrorDatabaseView>(true, eViewOwner);
    view->LoadErrors(m_database);
    view->FaultkeeperReady(true);
    const std::string bytes = Bytes();
    const auto attached = Segment().shm_nattch;
    view.reset();
    EXPECT_EQ(Bytes(), bytes);
    EXPECT_EQ(Segment().shm_nattch, attached);
    EXPECT_EQ(m_directory.SemaphoreValue(), 1);
}

TEST_F(StatusTableTest, IsAnotherOneInAnotherDirectory)
{
    CErrorDatabaseView here(true, eViewOwner);
    here.FaultkeeperReady(true);
    Support::CSharedTableDirectory elsewhere;
    CErrorDatabaseView there(true, eViewOwner);
    EXPECT_FALSE(there.FaultkeeperReady());
    EXPECT_TRUE(here.FaultkeeperReady());
}

TEST_F(StatusTableTest, IsTheOneOfTheDirectoryInWhichTheViewWasMade)
{
    CErrorDatabaseView view(true, eViewOwner);
    const Support::CWorkingDirectory elsewhere("/");
    EXPECT_TRUE(view.FaultkeeperReady(true));
    EXPECT_EQ(At<std::uint32_t>(0), 1u);
}

TEST_F(StatusTableTest, BeginsWithTheReadyWordAndTheCount)
{
    CErrorDatabaseView owner(true, eViewOwner);
    owner.LoadErrors(m_database);
    EXPECT_EQ(At<std::uint32_t>(0), 0u);
    EXPECT_EQ(At<std::int32_t>(4), 4);
    owner.FaultkeeperReady(true);
    EXPECT_EQ(At<std::uint32_t>(0), 1u);
    EXPECT_EQ(At<std::int32_t>(4), 4);
}

TEST_F(StatusTableTest, HoldsTheLastRaiseTimeAt8AndTheLastClearTimeAt20)
{
    CErrorDatabaseView owner(true, eViewOwner);
    owner.LoadErrors(m_database);
    owner.FaultkeeperReady(true);
    const std::int64_t before = Core::Time::Now().Nanoseconds();
    owner.RaiseErrors({NumberedErrors::Id(1)});
    const std::int64_t between = Core::Time::Now().Nanoseconds();
    EXPECT_GT(At<std::int64_t>(12), before);
    EXPECT_LT(At<std::int64_t>(12), between);
    EXPECT_EQ(At<std::int64_t>(24), 0);
    owner.ClearErrors({NumberedErrors::Id(1)});
    EXPECT_GT(At<std::int64_t>(24), between);
    EXPECT_EQ(At<std::uint32_t>(8), 4u) << "changes: loaded, declared ready, raised, cleared";
    EXPECT_EQ(At<std::uint32_t>(20), 0u) << "type word of the last clear time";
}

TEST_F(StatusTableTest, HoldsARecordOf36BytesForEachError)
{
    CErrorDatabaseView owner(true, eViewOwner);
    owner.LoadErrors(m_database);
    owner.FaultkeeperReady(true);
    owner.RaiseErrors({NumberedErrors::Id(3)});
    owner.ClearErrors({NumberedErrors::Id(3)});
    owner.RaiseErrors({NumberedErrors::Id(3)});
    const std::size_t record = 32 + 3 * 36;
    EXPECT_EQ(At<std::int32_t>(record), 0x40C1B);
    EXPECT_EQ(At<std::int16_t>(record + 4), 3);
    EXPECT_EQ(At<std::uint16_t>(record + 6), 1);
    EXPECT_EQ(At<std::uint16_t>(record + 8), 2);
    EXPECT_EQ(At<std::uint16_t>(record + 10), 2);
    EXPECT_EQ(At<std::uint32_t>(record + 12), 0u);
    EXPECT_EQ(At<std::int64_t>(record + 16), At<std::int64_t>(12)) << "raised time";
    EXPECT_EQ(At<std::uint32_t>(record + 24), 0u);
    EXPECT_EQ(At<std::int64_t>(record + 28), At<std::int64_t>(24)) << "cleared time";
}

TEST_F(StatusTableTest, KeepsTheTwoCountersApart)
{
    CErrorDatabaseView owner(true, eViewOwner);
    owner.LoadErrors(m_database);
    SErrorEntry remembered;
    remembered.problemCode = NumberedErrors::Code(2);
    remembered.problemType = 2;
    remembered.counter1 = 0x1234;
    remembered.counter2 = 0x5678;
    remembered.raisedTime = Core::Time(1000);
    remembered.clearedTime = Core::Time(2000);
    owner.UpdateErrorDetails({remembered});
    const std::size_t record = 32 + 2 * 36;
    EXPECT_EQ(At<std::uint16_t>(record + 8), 0x1234);
    EXPECT_EQ(At<std::uint16_t>(record + 10), 0x5678);
    EXPECT_EQ(At<std::int64_t>(record + 16), 1000'000'000'000);
    EXPECT_EQ(At<std::int64_t>(record + 28), 2000'000'000'000);
}

class FullStatusTableTest : public ViewFixture
{
protected:
    FullStatusTableTest() : ViewFixture(400) {}
};

TEST_F(FullStatusTableTest, Of400RecordsEndsAtByte14432)
{
    CErrorDatabaseView owner(true, eViewOwner);
    owner.LoadErrors(m_database);
    owner.FaultkeeperReady(true);
    owner.RaiseErrors({NumberedErrors::Id(399)});
    owner.ClearErrors({NumberedErrors::Id(399)});
    const std::string bytes = Bytes();
    ASSERT_EQ(bytes.size(), 14432u);
    EXPECT_EQ(Header().count, 400);
    EXPECT_EQ(bytes.substr(14432 - 12), bytes.substr(20, 12)) << "the last record's cleared time";
    std::int32_t code = 0;
    std::memcpy(&code, bytes.data() + 14432 - 36, sizeof code);
    EXPECT_EQ(code, NumberedErrors::Code(399));
}

} // namespace
