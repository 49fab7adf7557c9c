// The sending half of MPISocketConnectionC.
#include <MPI/MPISocketConnectionC.h>

#include "Connections/FlagScope.h"
#include "Sockets/Deadline.h"
#include "Sockets/SessionDelivery.h"

#include <MPI/BAtomC.h>
#include <MPI/BListC.h>

#include <algorithm>
#include <utility>

namespace
{

constexpr std::size_t kBatchBytes = 65536;        // gathered before they are sent
constexpr int kLongestWaitForAcknowledging = 100; // milliseconds, until what is due is done again

void WriteEmptyList(BEncoderC& encoder)
{
    encoder.BeginList();
    encoder.End();
}

/// Gives a variable a value for one scope.
template <typename Value> class ValueScope
{
public:
    ValueScope(Value& variable, Value value) : m_variable(variable), m_before(std::exchange(variable, value))
    {
    }
    ~ValueScope() { m_variable = m_before; }
    ValueScope(const ValueScope&) = delete;
    ValueScope& operator=(const ValueScope&) = delete;

private:
    Value& m_variable;
    const Value m_before;
};

} // namespace

bool MPISocketConnectionC::SendMessage(BEncoderC* message)
{
    const std::uint64_t number = message == m_numbered ? m_number : 0;
    const bool fits = message->Bytes().size() <= BDecoderC::kMaximumMessageBytes &&
                      message->Depth() <= BDecoderC::kMaximumDepth;
    if (!fits)
        return false;
    if (number != 0)
        return SendNumbered(message->Bytes(), number);
    if (!Connected() || !Queue(message->Bytes(), 0))
        return false;
    FlushUnlessGathering(false); // Connected has looked
    return true;
}

bool MPISocketConnectionC::SendNumbered(const std::string& message, std::uint64_t number)
{
    if (number < Session()->NextNumber())
        return false; // one sent on the way here has it, and numbers go up
    const bool promised = std::exchange(m_promised, false);
    if ((!Bridges() && !Connected() && !promised) || !Queue(message, number))
        return false;
    Session()->Accepted(number);
    FlushUnlessGathering(false); // likewise, or what is sent in vain is sent again
    return true;
}

bool MPISocketConnectionC::SendMessageElement(BElementC* element)
{
    BEncoderC encoder;
    encoder.Element(*element);
    return SendMessage(&encoder);
}

bool MPISocketConnectionC::SendNotification(const std::string& name, BListC* arguments)
{
    if (m_encoding) // from within the sending of another
    {
        BEncoderC encoder;
        return SendEncoded(encoder, name, arguments);
    }
    const FlagScope encoding(m_encoding);
    m_encoder.Clear();
    return SendEncoded(m_encoder, name, arguments);
}

bool MPISocketConnectionC::SendEncoded(BEncoderC& encoder, const std::string& name, BListC* arguments)
{
    const std::uint64_t number = Session() != nullptr ? Session()->NextNumber() : 0;
    encoder.BeginDictionary(); // written in steps because a dictionary would want to own the arguments
    encoder.Text("args");
    if (arguments != nullptr)
        encoder.Element(*arguments);
    else
        WriteEmptyList(encoder);
    encoder.Text("name");
    encoder.Text(name);
    if (number != 0)
    {
        encoder.Text("seq");
        encoder.Integer(static_cast<std::int64_t>(number));
    }
    encoder.End();
    bool accepted = false;
    {
        const ValueScope<const BEncoderC*> numberedScope(m_numbered, &encoder);
        const ValueScope<std::uint64_t> numberScope(m_number, number);
        accepted = SendMessage(&encoder);
    }
    if (accepted && number != 0 && number == Session()->NextNumber())
        Session()->Accepted(number); // by who has taken SendMessage's place
    return accepted;
}

void MPISocketConnectionC::BeginBatch()
{
    if (m_batches == 0)
        m_batch += 2;
    ++m_batches;
}

void MPISocketConnectionC::EndBatch()
{
    if (m_batches > 0)
        --m_batches;
    FlushUnlessGathering(!Welcomed());
}

void MPISocketConnectionC::FlushUnlessGathering(bool look)
{
    if (m_batches > 0 && BytesWaiting() < kBatchBytes && HasRoom())
        return;
    Flush(look);
}

bool MPISocketConnectionC::HasRoom() const
{
    return Outbox().Occupied() + BDecoderC::kMaximumMessageBytes <= kOutboxBytes;
}

bool MPISocketConnectionC::Welcomed() const
{
    return Session() != nullptr && Session()->Welcomed();
}

bool MPISocketConnectionC::Bridges() const
{
    return Session() != nullptr && Session()->Bridges();
}

std::size_t MPISocketConnectionC::WaitingCount() const
{
    return Outbox().WaitingCount();
}

std::uint64_t MPISocketConnectionC::SentCount() const
{
    return Outbox().LastHanded();
}

std::uint64_t MPISocketConnectionC::UnacknowledgedCount() const
{
    return Session() != nullptr ? Session()->Unacknowledged() : 0;
}

std::uint64_t MPISocketConnectionC::GivenUpCount() const
{
    return Session() != nullptr ? Session()->GivenUp() : 0;
}

bool MPISocketConnectionC::WaitUntilAcknowledged(int timeoutMilliseconds)
{
    const Deadline deadline(timeoutMilliseconds);
    for (;;)
    {
        ProcessMessages(false);
        if (UnacknowledgedCount() == 0)
            return GivenUpCount() == 0;
        if (m_inTurn || deadline.Passed() || (Descriptor() < 0 && !ConnectsAgain()))
            return false;
        const int left = deadline.MillisecondsLeft();
        Wait(left < 0 ? kLongestWaitForAcknowledging : std::min(left, kLongestWaitForAcknowledging));
    }
}

/// Takes in what a receiver tells of the session.
void MPISocketConnectionC::Hear(const BDictionaryC& message)
{
    if (Session() == nullptr || message.Size() != 1)
        return;
    const auto& entry = *message.Elements().begin();
    const BAtomC* const atom = entry.second->AsAtom();
    if (atom == nullptr || !atom->IsInteger())
        return;
    if (entry.first == "ack")
        Session()->Acknowledge(atom->Integer());
    if (entry.first != "welcome" || !Session()->Welcome(atom->Integer()))
        return;
    SendWithoutDelay(false); // it acknowledges at once, so gathering costs no time
    Flush(false);
}
