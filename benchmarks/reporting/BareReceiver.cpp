#include "reporting/BareReceiver.h"

#include <unistd.h>

#include <cstdlib>
#include <vector>

namespace Benchmarks
{

namespace
{
constexpr std::size_t kBuffer = 262144;
}

CBareReceiver::CBareReceiver(int bell) : m_shared(Share<SShared>())
{
    const int listener = ListenOnLoopback(0);
    SShared& shared = m_shared;
    m_process =
        std::make_unique<CChildProcess>([listener, bell, &shared] { Receive(listener, bell, shared); });
    m_sender = std::make_unique<CBareSocket>(CBareSocket::Connect(PortOf(listener)));
    close(listener);
    m_sender->NoDelay(true);
}

void CBareReceiver::Receive(int listener, int bell, SShared& shared)
{
    const CBareSocket peer(AcceptOne(listener));
    std::vector<char> buffer(kBuffer);
    for (;;)
    {
        const std::size_t got = peer.Receive(buffer.data(), buffer.size());
        if (bell >= 0)
            shared.receivedAt = MonotonicSeconds();
        shared.bytes.fetch_add(got, std::memory_order_release);
        if (got == 0 || (bell >= 0 && write(bell, "", 1) != 1))
            std::_Exit(0);
    }
}

} // namespace Benchmarks
