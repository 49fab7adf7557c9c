#pragma once

#include "faultkeeperd/store/StateStore.h"
#include "store/StoreFile.h"
#include "support/FreshDirectory.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

namespace StoreFixture
{

using namespace Faultkeeper;
using namespace Faultkeeper::Apps;

inline SStoredError Error(int type, bool raised, std::uint16_t counter, std::uint64_t raises = 1)
{
    SStoredError error;
    error.entry.problemCode = 0x40C1B;
    error.entry.problemType = static_cast<std::int16_t>(type);
    error.entry.flags = raised ? kRaisedFlag : std::uint16_t(0);
    error.entry.counter1 = counter;
    error.entry.counter2 = static_cast<std::uint16_t>(counter + 1);
    error.entry.raisedTime = Core::Time(1000 + type);
    error.entry.clearedTime = Core::Time(900 + type);
    error.raises = raises;
    return error;
}

inline STransition Transition(int type, bool raised)
{
    STransition transition;
    transition.time = Core::Time(2000 + type);
    transition.sinceBoot = 77;
    transition.raised = raised;
    transition.problemCode = 0x40C1B;
    transition.problemType = type;
    transition.session = "0123456789abcdef0123456789abcdef";
    return transition;
}

/// All that is in a store, one thing a line.
inline std::string Shown(const SStoreContents& contents)
{
    std::ostringstream text;
    for (const SStoredError& error : contents.errors)
        text << "error " << error.entry.problemCode << ":" << error.entry.problemType << " "
             << (error.entry.flags == kRaisedFlag ? "raised" : "clear") << " " << error.entry.counter1 << "/"
             << error.entry.counter2 << "/" << error.raises << " " << error.entry.raisedTime.Nanoseconds()
             << " " << error.entry.clearedTime.Nanoseconds() << "\n";
    for (const SStoredSession& session : contents.sessions)
        text << "session " << session.id << " " << session.applied << "\n";
    for (const std::string& dropped : contents.dropped)
        text << "dropped " << dropped << "\n";
    return text.str();
}

inline std::string Shown(const std::vector<STransition>& transitions)
{
    std::ostringstream text;
    for (const STransition& transition : transitions)
    {
        text << transition.number << (transition.raised ? " + " : " - ") << transition.problemCode << ":"
             << transition.problemType << " at " << transition.time.Nanoseconds() << "/"
             << transition.sinceBoot << " by " << transition.session;
        if (transition.caused)
            text << " because of " << transition.causeCode << ":" << transition.causeType;
        if (transition.reason != eorNone)
            text << " by the owner for reason " << transition.reason;
        text << "\n";
    }
    return text.str();
}

inline std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

inline void WriteFile(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

/// A store in a directory of its own.
class Test : public testing::Test
{
protected:
    SStoreSettings Settings(std::size_t journalLimit = SStoreSettings::kUsualJournalLimit) const
    {
        SStoreSettings settings;
        settings.path = m_directory.Prefix() + "state.db";
        settings.journalLimit = journalLimit;
        return settings;
    }

    std::string Contents() const { return Shown(CStateStore(Settings()).Read()); }

    Support::CFreshDirectory m_directory;
};

} // namespace StoreFixture
