#pragma once

// The TCP client of the Qt platform: one non-blocking socket per connection, watched by the
// Qt event loop.

#include "base/platform.h"

#include <memory>

namespace torv {

// Received data is handed on in pieces of at most this many bytes, one DataArrival each,
// whatever the socket has buffered: the card's own network stack never delivered more at
// once, and the completion search of the transport counts positions by arrival size.
inline constexpr int kMaxArrivalBytes = 8192;

// What the clients of one thread share: socket notifiers, handed from one connection to
// the next instead of being created and destroyed for every request. Clients keep it alive.
class SocketPool;

std::shared_ptr<SocketPool> createSocketPool();

// Connects to an IP address directly and to a host name after an asynchronous lookup
// (trying each address in turn). Callbacks run on the thread's event loop, never from
// inside connectToHost. What a Connect callback sends goes out in one write right after it.
// A peer that closes the connection is a Close; one that resets it, or that is gone before
// the request is written, is an Error.
std::unique_ptr<TcpClient> createSocketTcpClient(const std::shared_ptr<SocketPool>& pool);

} // namespace torv
