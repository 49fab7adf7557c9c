#include <MPI/MPISocketConnectionC.h>

#include "Connections/FlagScope.h"
#include "Connections/NotificationParts.h"
#include "Sockets/Deadline.h"
#include "Sockets/SessionDelivery.h"

#include <utility>

namespace
{

constexpr int kLongestWaitUnconnected = 250; // as often as a client may connect again

} // namespace

MPISocketConnectionC::MPISocketConnectionC() = default;

MPISocketConnectionC::~MPISocketConnectionC() = default;

bool MPISocketConnectionC::Connected()
{
    return Socket::Connected() && !PeerHasEnded();
}

void MPISocketConnectionC::Destroy()
{
    Forget();
    DropOutbox();
    PromiseToAccept(false);
    ForgetInput();
}

bool MPISocketConnectionC::DoCallback(const std::string& name, BListC* arguments)
{
    const auto found = m_callbacks.find(name);
    if (found == m_callbacks.end())
        return false;
    const Callback callback = found->second; // which may register another in its place
    callback(arguments);
    return true;
}

bool MPISocketConnectionC::DoClientCallback(const std::string&, BListC*)
{
    return false;
}

int MPISocketConnectionC::ProcessMessages(bool wait)
{
    if (m_inTurn)
        return 0;
    const FlagScope turn(m_inTurn);
    CheckCallbacks();
    const int handled = HandleMessages();
    if (handled > 0 || !wait)
        return handled;
    if (!Wait(WaitingTime()))
        Idle();
    CheckCallbacks();
    return HandleMessages();
}

int MPISocketConnectionC::WaitingTime() const
{
    const bool tooLong = m_timeout < 0 || m_timeout > kLongestWaitUnconnected;
    return Descriptor() < 0 && tooLong ? kLongestWaitUnconnected : m_timeout;
}

int MPISocketConnectionC::HandleMessages()
{
    m_turnBytes = 0;
    int handled = 0;
    while (const std::unique_ptr<BDictionaryC> message = ReceiveMessage(false))
    {
        ++handled;
        MessageReceived(message.get());
    }
    return handled;
}

void MPISocketConnectionC::CheckCallbacks()
{
    Socket::Connected(); // goes on connecting
    if (Session() != nullptr)
        Session()->LosePatience();
    FlushUnlessGathering(!Welcomed());
}

std::unique_ptr<BDictionaryC> MPISocketConnectionC::ReceiveMessage(bool wait)
{
    const Deadline deadline(m_timeout);
    for (;;)
    {
        FollowConnection();
        if (auto message = DecodeBuffered())
        {
            Hear(*message);
            return message;
        }
        if (ReadMore(!wait))
            continue;
        if (!wait || Descriptor() < 0 || deadline.Passed())
            return nullptr;
        Wait(deadline.MillisecondsLeft());
        CheckCallbacks();
    }
}

void MPISocketConnectionC::FollowConnection()
{
    if (m_connection == ConnectionCount())
        return;
    m_connection = ConnectionCount();
    ForgetInput();
}

void MPISocketConnectionC::ForgetInput()
{
    m_input.clear();
    m_decoded = 0;
    m_decoder.Reset();
}

std::unique_ptr<BDictionaryC> MPISocketConnectionC::DecodeBuffered()
{
    m_decoded += m_decoder.Feed(m_input.data() + m_decoded, m_input.size() - m_decoded);
    if (m_decoder.Failed())
    {
        m_decoded = m_input.size();
        Close();
    }
    return m_decoder.TakeMessage();
}

/// All is in order before anything is read: what Receive calls may ask for messages itself.
bool MPISocketConnectionC::ReadMore(bool limited)
{
    if (limited && m_inTurn && m_turnBytes >= kTurnBytes)
        return false;
    FollowConnection(); // refused input has closed the connection, and Disconnected may have made the next
    m_decoded = 0;
    m_input.clear();
    const std::size_t count = Receive(m_input);
    m_turnBytes += count;
    return count > 0;
}

void MPISocketConnectionC::MessageReceived(BDictionaryC* message)
{
    const NotificationParts parts(*message);
    if (parts.Complete() && !DoCallback(*parts.name, parts.arguments))
        DoClientCallback(*parts.name, parts.arguments);
}

void MPISocketConnectionC::RegisterCallback(const std::string& name, Callback callback)
{
    m_callbacks[name] = std::move(callback);
}
