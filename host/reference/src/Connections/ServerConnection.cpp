#include "Connections/ServerConnection.h"

#include "Connections/NotificationParts.h"
#include "Sockets/SocketCalls.h"

#include <MPI/BEncoderC.h>

#include <algorithm>

namespace
{

constexpr const char* kIntroduction = "Hello";
constexpr std::size_t kSessionDigits = 32;

// An acknowledgement to a client that has just ended makes its system cut off what it still has to send. So
// none is sent before nothing has come in for a moment, or else so much has that a client which goes on must
// be about to wait for it.
constexpr std::size_t kReadAtMostWithoutAcknowledging = 786432; // three quarters of what a client keeps

bool IsHexadecimal(char digit)
{
    return (digit >= '0' && digit <= '9') || (digit >= 'a' && digit <= 'f') || (digit >= 'A' && digit <= 'F');
}

/// The session that an introduction tells of; null if it is none.
const std::string* SessionIn(const BListC& arguments)
{
    const BAtomC* const atom = arguments.Size() == 1 ? arguments.At(0)->AsAtom() : nullptr;
    if (atom == nullptr || atom->IsInteger() || atom->Text().size() != kSessionDigits)
        return nullptr;
    const std::string& text = atom->Text();
    return std::all_of(text.begin(), text.end(), IsHexadecimal) ? &text : nullptr;
}

} // namespace

ServerConnection::ServerConnection(MPIServerHandlerC& handler, SessionOrder& order, std::uint64_t number,
                                   FileDescriptor descriptor)
    : m_handler(handler), m_order(order), m_peer()
{
    ReadToTheEnd();
    m_peer.connection = number;
    Accept(descriptor.Release());
    m_peer.name = PeerName();
}

void ServerConnection::Tell()
{
    m_handler.PeerConnected(MPIPeerC(m_peer));
    m_told = true;
}

bool ServerConnection::Silent() const
{
    return m_messages == 0 && !HasWork() && !SocketCalls::HasInput(Descriptor());
}

int ServerConnection::QuietLooks()
{
    m_quietLooks = HasWork() || SocketCalls::HasInput(Descriptor()) ? 0 : m_quietLooks + 1;
    return m_quietLooks;
}

int ServerConnection::Serve(char* buffer, std::size_t size)
{
    m_passedOn = 0;
    m_bytesRead = 0;
    TellFinished();
    if (HasWork())
        PassOn(m_leftover, m_next);
    else
        PassOnFrom(buffer, size);
    if (!HasLeftover())
    {
        m_next = 0;
        std::string().swap(m_leftover); // idle connections are many, and keep nothing
    }
    Conclude();
    return m_passedOn;
}

/// Before the end itself is read, with which the connection is closed: so it is told once.
void ServerConnection::TellFinished()
{
    if (!m_endSeen || HasWork() || m_decoder.Incomplete() || SocketCalls::HasInput(Descriptor()))
        return;
    m_handler.PeerFinished(MPIPeerC(m_peer));
    SendAcknowledgement(); // one that has waited for a pause
}

void ServerConnection::PassOnFrom(char* buffer, std::size_t size)
{
    m_bytesRead = Receive(buffer, size);
    m_unacknowledgedBytes += m_bytesRead;
    if (m_bytesRead == 0)
        return;
    m_readLately = true;
    m_quietLooks = 0;
    SocketCalls::AcknowledgeAtOnce(Descriptor());
    const std::string_view bytes(buffer, m_bytesRead);
    std::size_t done = 0;
    try
    {
        PassOn(bytes, done);
    }
    catch (...)
    {
        KeepForLater(bytes.substr(done));
        throw;
    }
    m_leftover = bytes.substr(done);
}

/// Without memory for it the connection ends: a client that keeps account sends all of it again over the
/// next.
void ServerConnection::KeepForLater(std::string_view bytes)
{
    try
    {
        m_leftover = bytes;
    }
    catch (...)
    {
        m_ended = true;
    }
}

/// @param done  how many bytes are done with, also where the handler throws
void ServerConnection::PassOn(std::string_view bytes, std::size_t& done)
{
    PassOnMessage();
    while (done < bytes.size() && !m_ended && m_message == nullptr &&
           m_inBatch < MPISocketServerC::kBatchMessages)
    {
        const std::string_view rest = bytes.substr(done);
        const std::size_t scanned = m_decoder.Incomplete() ? 0 : PassOnScanned(rest);
        done += scanned;
        if (scanned > 0)
            continue;
        done += Decode(rest);
        PassOnMessage();
    }
    if (m_ended)
        done = bytes.size();
}

/// @return how many bytes it had; 0 if the decoder has to see to it
std::size_t ServerConnection::PassOnScanned(std::string_view bytes)
{
    const std::size_t size = m_scan.Read(bytes);
    const MPINumbersC notification = m_scan.Notification(m_scanned + m_decoder.StreamOffset());
    if (size == 0 || notification.name == kIntroduction)
        return 0;
    NotePassedOn(m_handler.NumbersReceived(m_peer, notification));
    m_scanned += size;
    return size;
}

/// @return how many bytes it has taken
std::size_t ServerConnection::Decode(std::string_view bytes)
{
    std::size_t taken = 0;
    try
    {
        taken = m_decoder.Feed(bytes.data(), bytes.size());
    }
    catch (...)
    {
        m_ended = true; // where it has stopped nobody can say
        throw;
    }
    m_message = m_decoder.TakeMessage();
    if (m_decoder.Failed())
        Refuse(m_scanned + m_decoder.FaultOffset(), m_decoder.FaultReason());
    return taken;
}

/// A message stays until the handler has taken it, or while its connection is held.
void ServerConnection::PassOnMessage()
{
    if (m_message == nullptr)
        return;
    PassOnDecoded(*m_message, m_scanned + m_decoder.MessageOffset());
    if (!m_held)
        m_message.reset();
}

void ServerConnection::PassOnDecoded(const BDictionaryC& message, std::uint64_t offset)
{
    const ConstNotificationParts parts(message);
    if (!parts.Complete())
        return Refuse(offset, "not a notification: no \"name\" or no \"args\"");
    if (*parts.name == kIntroduction)
        return Introduce(*parts.arguments, offset);
    std::uint64_t number = 0;
    if (!ReadNumber(message, number))
        return Refuse(offset, "\"seq\" is not a number from 1 on");
    NotePassedOn(
        m_handler.NotificationReceived(m_peer, {*parts.name, *parts.arguments, message, offset, number}));
}

void ServerConnection::NotePassedOn(bool goesOn)
{
    ++m_messages;
    ++m_passedOn;
    ++m_inBatch;
    m_ended = m_ended || !goesOn; // the handler may have closed the server meanwhile
}

void ServerConnection::Introduce(const BListC& arguments, std::uint64_t offset)
{
    if (!m_peer.session.empty())
        return Refuse(offset, "a second introduction");
    if (m_messages > 0)
        return Refuse(offset, "an introduction after other messages");
    const std::string* const session = SessionIn(arguments);
    if (session == nullptr)
        return Refuse(offset, "an introduction takes 32 hexadecimal digits");
    m_session = *session;
    m_held = !m_order.Join(m_session, m_peer.connection);
    if (!m_held)
        TellIntroduction();
}

void ServerConnection::TellIntroduction()
{
    m_peer.session = m_session;
    try
    {
        m_handler.PeerIntroduced(m_peer);
    }
    catch (...)
    {
        m_peer.session.clear(); // to be told again
        throw;
    }
    ++m_messages;
}

bool ServerConnection::ReadNumber(const BDictionaryC& message, std::uint64_t& number) const
{
    const BElementC* const element = message.Find("seq");
    if (element == nullptr)
        return true;
    const BAtomC* const atom = element->AsAtom();
    if (atom == nullptr || atom->Integer() < 1)
        return false;
    number = static_cast<std::uint64_t>(atom->Integer());
    return true;
}

void ServerConnection::Refuse(std::uint64_t offset, const std::string& reason)
{
    m_ended = true;
    m_refusal = SRefusal{offset, reason};
}

/// Ends a turn: first what was right, then what was not.
void ServerConnection::Conclude()
{
    if (m_inBatch > 0)
        m_handler.BatchEnded(m_peer);
    m_inBatch = 0;
    if (!m_ended && Ended() && m_decoder.Incomplete())
        m_refusal = SRefusal{m_scanned + m_decoder.StreamOffset(), "connection ended within a message"};
    if (m_refusal)
        m_handler.InputRefused(m_peer, m_refusal->offset, m_refusal->reason);
    m_refusal.reset();
}

void ServerConnection::Welcome(std::uint64_t number)
{
    Send("welcome", number);
}

void ServerConnection::Acknowledge(std::uint64_t number)
{
    m_acknowledge = number;
    const bool heardToTheEnd = PeerHasEnded() && !HasLeftover() && !SocketCalls::HasInput(Descriptor());
    if (heardToTheEnd || m_unacknowledgedBytes >= kReadAtMostWithoutAcknowledging)
        SendAcknowledgement();
}

bool ServerConnection::AcknowledgeIfQuiet()
{
    const bool quiet = !m_readLately && !HasLeftover() && !SocketCalls::HasInput(Descriptor());
    m_readLately = false;
    if (quiet)
        SendAcknowledgement();
    return !AcknowledgementWaits();
}

void ServerConnection::SendAcknowledgement()
{
    if (!AcknowledgementWaits() || BytesWaiting() > 0)
        return;
    m_unacknowledgedBytes = 0;
    Send("ack", *m_acknowledge);
    m_acknowledge.reset();
}

void ServerConnection::Send(std::string_view key, std::uint64_t number)
{
    BEncoderC encoder;
    encoder.BeginDictionary();
    encoder.Text(key);
    encoder.Integer(static_cast<std::int64_t>(number));
    encoder.End();
    Queue(encoder.Bytes(), 0); // a peer that has left no room goes without
    Flush(false);              // also to who has ended sending, and only listens
}

bool ServerConnection::Answer(const BElementC& message)
{
    BEncoderC encoder;
    encoder.Element(message);
    const bool fits = encoder.Bytes().size() <= BDecoderC::kMaximumMessageBytes &&
                      encoder.Depth() <= BDecoderC::kMaximumDepth;
    if (!fits || BytesWaiting() > 0 || !Up())
        return false;
    const bool accepted = Queue(encoder.Bytes(), 0);
    Flush(false);
    return accepted;
}

void ServerConnection::SendWaiting()
{
    Flush(false);
}
