#pragma once

// Faults the simulator can inject and the record it keeps of every request.

#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

namespace torv::sim {

// One injected fault. Kinds:
//   Chunked    the answer goes out in pieces of chunkSizes bytes (the last size repeats),
//              each flushed on its own, delayMs (at least 1 ms) apart
//   Trickle    the same, slowly: pieces of chunkSizes bytes (default 1) every delayMs
//              (default 50 ms)
//   Silent     the request is read and never answered; the connection stays open
//   Refuse     connections are refused; limited to a number of connections or to one
//              function, the connection is accepted and reset instead
//   Reset      part of the answer (chunkSizes[0] bytes, default half) is sent, then the
//              connection is reset
//   Garbage    bytes that are no answer are sent, then the connection is closed
//   Oversize   the answer is padded to more than 32767 characters
//   ErrorCode  the answer carries errorCode (and changes nothing on the card)
struct Fault {
    enum class Kind { None, Chunked, Trickle, Silent, Refuse, Reset, Garbage, Oversize, ErrorCode };
    Kind kind = Kind::None;
    QList<int> chunkSizes;
    int delayMs = 0;
    int errorCode = 0;
    int connections = -1; /* how many connections it applies to, -1 = until cleared */
    QString function;     /* only requests of this function; empty = any */
};

struct RequestRecord {
    QString function;
    QString body;
    int contentLength = -1;
};

QString faultKindName(Fault::Kind kind);
std::optional<Fault::Kind> faultKindFromName(const QString& name);
QStringList faultKindNames(); // every kind but None

} // namespace torv::sim
