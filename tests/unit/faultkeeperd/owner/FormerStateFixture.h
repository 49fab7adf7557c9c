#pragma once

#include "../OwnerFixture.h"
#include "../store/FailingDisk.h"
#include "faultkeeperd/owner/FormerState.h"
#include "support/CapturedOutput.h"
#include "support/FreshDirectory.h"

#include <cerrno>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace Support
{

const Id kUnknown(0x50C1B, 2); // Service:GPS:No Data:2

inline Faultkeeper::Apps::SStoredError StoredError(const Id& id, bool raised, std::uint16_t counter,
                                                   std::uint64_t raises)
{
    Faultkeeper::Apps::SStoredError error;
    error.entry.problemCode = id.first;
    error.entry.problemType = static_cast<std::int16_t>(id.second);
    error.entry.flags = raised ? Faultkeeper::kRaisedFlag : std::uint16_t(0);
    error.entry.counter1 = counter;
    error.entry.counter2 = counter;
    error.entry.raisedTime = Core::Time(1000);
    error.entry.clearedTime = Core::Time(900);
    error.raises = raises;
    return error;
}

class FormerState : public OwnerTest
{
protected:
    /// A store as an owner of that boot and that configuration has left it.
    void LeaveStore(const std::string& boot, const std::string& configuration)
    {
        UseStore();
        Keeper().Open(boot, configuration);
        Keeper().Keep(StoredError(kLinkSensor, true, 5, 5));
        Keeper().Keep(StoredError(kUnknown, true, 6, 6));
        Keeper().Keep(
            Faultkeeper::Apps::SStoredSession{"a", 17, Faultkeeper::Apps::SStoredSession::kConnected});
        Keeper().CommitAtOnce(Faultkeeper::Apps::CStateKeeper::Clock::now());
        UseStore();
    }

    /// A table with one raised error, as a dead owner has left it.
    void LeaveTable()
    {
        Faultkeeper::CErrorDatabaseView owner(true, Faultkeeper::eViewOwner);
        owner.LoadErrors(Database());
        owner.FaultkeeperReady(true);
        owner.RaiseError(kDataSensor.first, kDataSensor.second);
    }

    /// A table in which these errors were raised so often, one clear between two raises.
    void LeaveTable(const std::vector<Id>& ids, int raises)
    {
        Faultkeeper::CErrorDatabaseView owner(true, Faultkeeper::eViewOwner);
        owner.LoadErrors(Database());
        owner.FaultkeeperReady(true);
        for (int raise = 0; raise < raises; ++raise)
        {
            owner.ClearErrors(ids);
            owner.RaiseErrors(ids);
        }
    }

    /// What was put into the store while the table was locked, and so later.
    void StoreLater(const std::vector<Faultkeeper::Apps::SStoredError>& errors)
    {
        UseStore();
        Keeper().Open("boot", "c");
        for (Faultkeeper::Apps::SStoredError error : errors)
        {
            error.entry.raisedTime = Core::Time::Now();
            Keeper().Keep(error);
        }
        Keeper().CommitAtOnce(Faultkeeper::Apps::CStateKeeper::Clock::now());
        UseStore();
    }

    void LeaveNote(const std::string& sign)
    {
        WriteFile(m_directory.File("note"), sign + " " + m_directory.File("state.db") + "\n");
    }

    /// As Found, while the store can only be read.
    std::string FoundReadOnly()
    {
        FailingDisk::RefuseAfter(0, EROFS, -1, FailingDisk::ekWrite | FailingDisk::ekOpenToWrite);
        std::string found = Found();
        FailingDisk::Mend();
        return found;
    }

    std::string Found()
    {
        std::ostringstream text;
        m_said = WarnedBy(
            [&] { m_former = Faultkeeper::Apps::FindFormerState(Keeper(), Database(), "boot", "c"); });
        for (const Faultkeeper::Apps::SStoredError& error : m_former.errors)
        {
            if (error.raises > 0)
                text << Faultkeeper::Apps::ErrorName(error.entry.problemCode, error.entry.problemType) << " "
                     << (error.entry.flags != 0 ? "raised " : "clear ") << error.entry.counter1 << "/"
                     << error.raises << "\n";
        }
        for (const Faultkeeper::Apps::SStoredSession& session : m_former.sessions)
            text << session.id << " " << session.applied << "\n";
        return text.str();
    }

    Faultkeeper::Apps::SFormerState m_former;
    std::string m_said;
};

} // namespace Support
