#include "Sockets/SessionDelivery.h"

#include <MPI/BEncoderC.h>

#include <algorithm>
#include <random>
#include <sys/random.h>

namespace
{

constexpr std::size_t kIdBytes = 16;

/// 32 hexadecimal digits that no other client has.
std::string NewId()
{
    unsigned char bytes[kIdBytes];
    if (getrandom(bytes, sizeof(bytes), GRND_NONBLOCK) != static_cast<ssize_t>(sizeof(bytes)))
    {
        std::random_device random; // the kernel has no randomness yet, so early after the start
        for (unsigned char& byte : bytes)
            byte = static_cast<unsigned char>(random());
    }
    std::string id;
    for (const unsigned char byte : bytes)
    {
        id += "0123456789abcdef"[byte >> 4];
        id += "0123456789abcdef"[byte & 15];
    }
    return id;
}

std::string EncodedIntroduction()
{
    BEncoderC encoder;
    encoder.BeginDictionary();
    encoder.Text("args");
    encoder.BeginList();
    encoder.Text(NewId());
    encoder.End();
    encoder.Text("name");
    encoder.Text("Hello");
    encoder.End();
    return encoder.Bytes();
}

} // namespace

SessionDelivery::SessionDelivery(MessageOutbox& outbox, bool bridgesOutages)
    : m_outbox(outbox), m_bridgesOutages(bridgesOutages), m_introduction(EncodedIntroduction())
{
}

void SessionDelivery::Begin()
{
    m_up = true;
    m_welcomed = false;
    m_silent = false;
    m_begin = Clock::now();
}

/// Called before the outbox is told of the loss.
void SessionDelivery::End()
{
    m_up = false;
    if (!m_welcomed)
    {
        m_sentSilently = std::max(m_sentSilently, m_outbox.LastOfConnection());
        NoteGap(m_outbox.FirstOfConnection());
    }
    m_outbox.HoldBack(m_everWelcomed);
}

/// @param first  that a connection without a welcome has had whole; 0: none
void SessionDelivery::NoteGap(std::uint64_t first)
{
    if (first <= m_acknowledged + 1)
        return;
    m_firstGap = m_firstGap == 0 ? first : std::min(m_firstGap, first);
    m_lastGap = std::max(m_lastGap, first);
}

void SessionDelivery::GiveUpWhatWasPassedOver(std::uint64_t applied)
{
    if (m_firstGap != 0 && applied >= m_firstGap)
        GiveUpBefore(std::min(m_lastGap, applied + 1));
}

void SessionDelivery::GiveUpBefore(std::uint64_t number)
{
    if (number <= m_acknowledged + 1)
        return;
    m_givenUp += number - 1 - m_acknowledged;
    m_acknowledged = number - 1;
}

/// @return the first number that this connection has had or will have
std::uint64_t SessionDelivery::SendTheRest()
{
    if (m_outbox.FirstOfConnection() != 0)
        return m_outbox.FirstOfConnection(); // what came before can't be sent in order any more
    if (!m_outbox.WithinMessage())
        m_outbox.SendAgain(0);
    const std::uint64_t first = m_outbox.FirstUnsent();
    return first != 0 ? first : NextNumber();
}

bool SessionDelivery::Welcome(std::int64_t number)
{
    if (m_welcomed || number < 0 || static_cast<std::uint64_t>(number) > m_outbox.LastHanded())
        return false;
    const auto applied = static_cast<std::uint64_t>(number);
    m_welcomed = true;
    m_everWelcomed = true;
    if (m_up)
        NoteGap(m_outbox.FirstOfConnection());
    GiveUpWhatWasPassedOver(applied);
    m_acknowledged = std::max(m_acknowledged, applied);
    m_outbox.Acknowledge(applied);
    m_outbox.MayForget(false);
    if (!m_up)
    {
        m_outbox.HoldBack(true); // heard of a connection that has gone: its successor will say more
        return false;
    }
    const std::uint64_t first = SendTheRest();
    GiveUpBefore(first);
    m_outbox.Acknowledge(first - 1);
    m_firstGap = 0;
    m_lastGap = 0;
    m_outbox.HoldBack(false);
    return true;
}

void SessionDelivery::Acknowledge(std::int64_t number)
{
    if (!m_welcomed || number < 0 || static_cast<std::uint64_t>(number) > m_outbox.LastHanded())
        return;
    const auto applied = static_cast<std::uint64_t>(number);
    m_acknowledged = std::max(m_acknowledged, applied);
    m_outbox.Acknowledge(applied);
}

void SessionDelivery::LosePatience()
{
    if (!m_up || m_welcomed || m_silent || !m_everWelcomed ||
        Clock::now() - m_begin < std::chrono::milliseconds(kWelcomeMilliseconds))
        return;
    m_silent = true;
    m_outbox.SendAgain(m_sentSilently);
    m_outbox.MayForget(true);
    m_outbox.HoldBack(false);
}

void SessionDelivery::Forget()
{
    m_outbox.Clear();
    m_outbox.HoldBack(false);
    m_outbox.MayForget(true);
    m_everWelcomed = false;
    GiveUpBefore(NextNumber());
    m_firstGap = 0;
    m_lastGap = 0;
}
