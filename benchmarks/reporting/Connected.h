#pragma once

#include "common/Patience.h"

#include <Faultkeeper/FaultkeeperAPI.h>

#include <chrono>
#include <thread>

namespace Benchmarks
{

/// Waits until a client is connected, and welcomed if it will be at all.
inline void WaitForConnection(Faultkeeper::CFaultkeeperAPI& client)
{
    WaitPatiently("a connection", [&] { return client.VerifyConnection(); });
    for (int look = 0; look < 20; ++look)
    {
        client.ProcessMessages(false);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

} // namespace Benchmarks
