#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

/// A host without a network, for tests of a client's exact calls: everything that is done with it is written
/// down, and what it answers is set beforehand. One at a time: it is the process's.
namespace FakeHost
{

struct SState
{
    std::vector<std::string> calls; ///< since the start or the last TakeCalls()

    std::deque<bool> answers;       ///< of the next calls of VerifyConnection, one each
    bool connected = true;          ///< its answer when there are no more of those
    bool connects = true;           ///< what Connect returns
    std::function<void()> onVerify; ///< called in the middle of VerifyConnection
    std::function<void()> onSend;   ///< called in the middle of SendNotification
    std::function<void()> onList;   ///< called before a list is allocated
    int elementsAlive = 0;
};

SState& State();

/// Forgets everything.
void Reset();

void Record(const std::string& call);

/// The calls so far, one a line; the record starts anew.
std::string TakeCalls();

} // namespace FakeHost
