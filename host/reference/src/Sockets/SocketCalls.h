#ifndef SOCKETS_SOCKETCALLS_H
#define SOCKETS_SOCKETCALLS_H

#include "Sockets/FileDescriptor.h"
#include "Sockets/SocketAddress.h"

#include <cstddef>

/// Every system call on sockets, in one place. None of them waits but Poll; none raises a signal.
namespace SocketCalls
{

/// What became of a try to connect.
enum class EConnecting
{
    failed,
    underWay,
    established
};

/// Bytes moved; or that none could be just now, or never again.
struct STransfer
{
    std::size_t bytes; // 0 unless something was moved
    bool lost;         // the connection is gone or has been ended by the peer
};

/// A socket for connections; invalid if the system has none to give.
FileDescriptor MakeStream(int family);

/// Begins to connect. Later calls to Progress tell how it goes.
bool StartConnecting(int descriptor, const SocketAddress& address);

/// Also finds out a socket that has connected to itself, which happens on a port that nobody listens on:
/// failed.
EConnecting Progress(int descriptor);

/// Makes a descriptor non-blocking, closed by exec, and without delay for small messages.
void PrepareStream(int descriptor);

/// Do small messages go out at once, or may they wait for each other while the peer acknowledges others?
void SendWithoutDelay(int descriptor, bool on);

STransfer Send(int descriptor, const char* bytes, std::size_t size);
STransfer Receive(int descriptor, char* buffer, std::size_t size);

/// Reads and forgets what has come in, within reason: a peer that never stops sending does not hold us up.
void DiscardInput(int descriptor);

void EndWriting(int descriptor);

/// Has the peer ended its sending, or the connection broken?
bool PeerHasEnded(int descriptor);

/// How many bytes of what was sent have not arrived for certain; 0 if all have been passed on and they are
/// few, or if that cannot be told. (Of many at once the peer's system may drop some and ask for them again.)
std::size_t BytesHeldBack(int descriptor);

/// Is there input to read that is not the end?
bool HasInput(int descriptor);

/// Acknowledges what has been received now, not with the next bytes we send. Holds until the next read.
void AcknowledgeAtOnce(int descriptor);

/// A listening socket.
/// @param problem  errno if the result is invalid, otherwise untouched
FileDescriptor Listen(const SocketAddress& address, int& problem);

/// The next connection that waits to be accepted.
/// @param problem  errno if the result is invalid (EAGAIN: none waits), otherwise untouched
FileDescriptor Accept(int listener, int& problem);

/// Waits for input on either descriptor, or output on the first if `output`; negative ones are left out.
/// @return bit 0: the first is ready, bit 1: the second is; 0 if the time was over or a signal came
unsigned Poll(int first, bool output, int second, int timeoutMilliseconds);

} // namespace SocketCalls

#endif
