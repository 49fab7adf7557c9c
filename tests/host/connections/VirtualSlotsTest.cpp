#include <MPI/MPISocketClientC.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <tuple>
#include <type_traits>
#include <unistd.h>

namespace
{

/// The slot of a virtual operation, as a pointer to it tells by the C++ ABI of all our targets: its first
/// word is the offset in the table plus one, or, where code may lie at odd addresses, the offset, with a mark
/// in the second word.
template <typename Operation> std::size_t Slot(Operation operation)
{
    std::ptrdiff_t words[2] = {};
    static_assert(sizeof(operation) == sizeof(words));
    std::memcpy(words, &operation, sizeof(words));
    const bool markedInFirst = (words[0] & 1) != 0;
    EXPECT_TRUE(markedInFirst || (words[1] & 1) != 0) << "not virtual";
    return static_cast<std::size_t>(markedInFirst ? words[0] - 1 : words[0]) / sizeof(void*);
}

TEST(HostVirtualSlots, AreTheOnesThatProgramsInTheFieldUse)
{
    using Client = MPISocketClientC;
    EXPECT_EQ(Slot(&Client::Idle), 2u);
    EXPECT_EQ(Slot(&Client::Accept), 3u);
    EXPECT_EQ(Slot(&Client::Reconnect), 4u);
    EXPECT_EQ(Slot(&Client::Connected), 5u);
    EXPECT_EQ(Slot(&Client::GetExtraReader), 6u);
    EXPECT_EQ(Slot(&Client::ReadExtra), 7u);
    EXPECT_EQ(Slot(&Client::DataReceived), 8u);
    EXPECT_EQ(Slot(&Client::DataReceivedFrom), 9u);
    EXPECT_EQ(Slot(&Client::DataSent), 10u);
    EXPECT_EQ(Slot(&Client::Disconnected), 11u);
    EXPECT_EQ(Slot(&Client::Destroy), 12u);
    EXPECT_EQ(Slot(&Client::DoCallback), 13u);
    EXPECT_EQ(Slot(&Client::DoClientCallback), 14u);
    EXPECT_EQ(Slot(&Client::ProcessMessages), 15u);
    EXPECT_EQ(Slot(&Client::CheckCallbacks), 16u);
    EXPECT_EQ(Slot(&Client::SetTimeout), 17u);
    EXPECT_EQ(Slot(&Client::SendMessage), 18u);
    EXPECT_EQ(Slot(&Client::SendMessageElement), 19u);
    EXPECT_EQ(Slot(&Client::ReceiveMessage), 20u);
    EXPECT_EQ(Slot(&Client::MessageReceived), 21u);
}

TEST(HostVirtualSlots, AreNoMoreThanTwentyTwo)
{
    class OneMore : public MPISocketClientC
    {
    public:
        OneMore() : MPISocketClientC(false) {}
        virtual void Another() {}
    };
    EXPECT_EQ(Slot(&OneMore::Another), 22u);
}

TEST(HostVirtualSlots, BeginWithTheTwoDestructors)
{
    class OneMore : public Socket
    {
    public:
        virtual void Another() {}
    };
    EXPECT_EQ(Slot(&Socket::Idle), 2u) << "both forms of the destructor come before the first operation";
    EXPECT_EQ(Slot(&OneMore::Another), 12u) << "slots 2 to 11 are the socket's";
}

/// The types of an operation's arguments: a type of its own, so that they can be compared.
template <typename Class, typename Result, typename... Arguments>
std::tuple<Arguments...>* ArgumentsOf(Result (Class::*)(Arguments...));

TEST(HostVirtualSlots, TakeTheArgumentsThatProgramsInTheFieldPass)
{
    using Client = MPISocketClientC;
    const bool same[] = {
        std::is_same<decltype(ArgumentsOf(&Client::Idle)), std::tuple<>*>::value,
        std::is_same<decltype(ArgumentsOf(&Client::Accept)), std::tuple<int>*>::value,
        std::is_same<decltype(ArgumentsOf(&Client::Reconnect)), std::tuple<int>*>::value,
        std::is_same<decltype(ArgumentsOf(&Client::Connected)), std::tuple<>*>::value,
        std::is_same<decltype(ArgumentsOf(&Client::GetExtraReader)), std::tuple<>*>::value,
        std::is_same<decltype(ArgumentsOf(&Client::ReadExtra)), std::tuple<>*>::value,
        std::is_same<decltype(ArgumentsOf(&Client::DataReceived)), std::tuple<>*>::value,
        std::is_same<decltype(ArgumentsOf(&Client::DataReceivedFrom)),
                     std::tuple<std::string, unsigned short>*>::value,
        std::is_same<decltype(ArgumentsOf(&Client::DataSent)), std::tuple<>*>::value,
        std::is_same<decltype(ArgumentsOf(&Client::Disconnected)), std::tuple<>*>::value,
        std::is_same<decltype(ArgumentsOf(&Client::Destroy)), std::tuple<>*>::value,
        std::is_same<decltype(ArgumentsOf(&Client::DoCallback)),
                     std::tuple<const std::string&, BListC*>*>::value,
        std::is_same<decltype(ArgumentsOf(&Client::DoClientCallback)),
                     std::tuple<const std::string&, BListC*>*>::value,
        std::is_same<decltype(ArgumentsOf(&Client::ProcessMessages)), std::tuple<bool>*>::value,
        std::is_same<decltype(ArgumentsOf(&Client::CheckCallbacks)), std::tuple<>*>::value,
        std::is_same<decltype(ArgumentsOf(&Client::SetTimeout)), std::tuple<int>*>::value,
        std::is_same<decltype(ArgumentsOf(&Client::SendMessage)), std::tuple<BEncoderC*>*>::value,
        std::is_same<decltype(ArgumentsOf(&Client::SendMessageElement)), std::tuple<BElementC*>*>::value,
        std::is_same<decltype(ArgumentsOf(&Client::ReceiveMessage)), std::tuple<bool>*>::value,
        std::is_same<decltype(ArgumentsOf(&Client::MessageReceived)), std::tuple<BDictionaryC*>*>::value,
    };
    for (std::size_t index = 0; index < std::size(same); ++index)
        EXPECT_TRUE(same[index]) << "slot " << index + 2;
}

/// The code in the slots of an object's table, up to a number of them.
template <typename Object> const std::uintptr_t* TableOf(const Object& object)
{
    const std::uintptr_t* table = nullptr;
    std::memcpy(&table, static_cast<const void*>(&object), sizeof(table));
    return table;
}

/// Which of the slots from 2 on differ, as text.
template <typename Base, typename Derived>
std::string Overridden(const Base& base, const Derived& derived, std::size_t slots)
{
    std::string result;
    for (std::size_t slot = 2; slot < slots; ++slot)
    {
        if (TableOf(base)[slot] != TableOf(derived)[slot])
            result += std::to_string(slot) + " ";
    }
    return result;
}

TEST(HostVirtualSlots, AreFilledByTheClassesThatProgramsInTheFieldExpect)
{
    const Socket socket;
    const MPISocketConnectionC connection;
    const MPISocketClientC client(false);
    EXPECT_EQ(Overridden(socket, connection, 12), "5 ") << "the connection overrides Connected";
    EXPECT_EQ(Overridden(connection, client, 22), "16 ") << "the client overrides CheckCallbacks";
}

/// Watches a descriptor without saying what to do about it.
class Watching : public MPISocketClientC
{
public:
    explicit Watching(int reader) : MPISocketClientC(false), m_reader(reader) {}
    int GetExtraReader() override { return m_reader; }

private:
    const int m_reader;
};

TEST(HostVirtualSlots, ReadExtraLeavesTheInputAloneByDefault)
{
    int ends[2] = {-1, -1};
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(write(ends[1], "x", 1), 1);
    Watching client(ends[0]);
    client.SetTimeout(-1);
    EXPECT_EQ(client.ProcessMessages(true), 0) << "the wait ends";
    char byte = 0;
    EXPECT_EQ(read(ends[0], &byte, 1), 1);
    EXPECT_EQ(byte, 'x');
    close(ends[0]);
    close(ends[1]);
}

} // namespace
