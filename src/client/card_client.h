#pragma once

// The headless card client: one request per connection, one outstanding request per card,
// a time-out per request, typed results and typed failures. No boxes, no windows, no 16-bit
// panel quirks. torvctl and torv-exporter are built on it.

#include <QObject>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <functional>
#include <optional>

namespace torv::client {

// Where a card is: "10.1.2.3" (port 80), "card.local:8081", "[::1]:8081".
struct CardAddress {
    QString host;
    std::uint16_t port = 80;
    QString text() const; // "host:port" ("[v6]:port" for an IPv6 literal)
};
// False for text that is not an address (the panel's TxtIP rule).
bool parseCardAddress(const QString& text, CardAddress& out);

enum class FailureKind {
    Refused,   // the connection was refused or could not be made (name lookup, no route)
    Silent,    // no complete answer within the time-out
    CutOff,    // the card closed the connection before a complete answer
    Oversize,  // more than 4 MiB without a complete answer
    Malformed, // an answer that is not the card's: a value that does not parse, garbage
    CardError, // the card answered with an error code other than "0"
};
const char* failureName(FailureKind kind); // "refused", "silent", "cut off", ...

struct Failure {
    FailureKind kind;
    // One line for a person: the address, the kind and what happened
    // ("10.0.0.20:80: silent: no complete answer within 500 ms"). The parse functions below
    // leave the address out; CardClient::status puts it in front.
    QString detail;
    QString errorCode;   // CardError: the card's code
    QString description; // CardError: the card's ERROR_DESCRIPTION
};

// One GetRTStatus answer. Elements the answer lacks are empty optionals.
struct StatusRecord {
    std::optional<double> weight;      // gross weight as the card reports it
    QString unit;                      // the unit word as received ("KG", "GRAM", ...)
    std::optional<std::int64_t> a2d;   // converter count
    std::optional<int> outputs;        // output word, 16 bits as sent (a 1 bit is an output off)
    std::optional<int> inputs;         // input word, 16 bits
    std::optional<int> integration;    // integration in ms
    std::optional<double> maximumLoad; // capacity
    std::optional<int> setpointStatus; // set point word
    QString errorCode;                 // "0" for success; empty when missing
    QString errorDescription;
    bool overload() const { return a2d && *a2d >= 130001; }
};

// Set points as the card answers GetSetpoints: four values, empty optional when missing.
struct SetpointsRecord {
    std::optional<double> values[4];
};

// Parsing a complete answer (the text up to and including its closing tag). Pure; tested and
// fuzzed on their own. Return a Failure (Malformed or CardError) when the answer is not usable.
std::optional<Failure> parseStatus(const QString& answer, StatusRecord& out);
std::optional<Failure> parseSetpoints(const QString& answer, SetpointsRecord& out);
// The error elements of any answer: a CardError failure for a code other than "0".
std::optional<Failure> parseErrorCode(const QString& answer);
// Echo answers: OUT_STATUS_ECHO, ANALOG_OUT, INTEGRATION_ECHO (empty optional when missing).
std::optional<Failure> parseEcho(const QString& answer, const QString& element,
                                 std::optional<std::int64_t>& out);

// The result of one request: the complete answer text, or a failure, and the time it took.
struct Reply {
    QString function; // the function name sent
    QString answer;   // complete answer (empty on failure)
    std::optional<Failure> failure;
    double elapsedMs = 0;
};

// One card. Requests are queued: a second request waits until the first has ended, so the
// card never sees two connections at once. Lives on the thread of its QObject parent.
class CardClient : public QObject {
    Q_OBJECT
public:
    CardClient(CardAddress address, int timeoutMs, QObject* parent = nullptr);
    ~CardClient() override;

    const CardAddress& address() const { return address_; }

    // Sends POST /function with body (framed as the panel frames it) on a fresh connection;
    // `done` runs once with the reply, on the event loop, never from inside this call (and
    // never once the client is destroyed).
    void request(const QString& function, const QString& body,
                 std::function<void(const Reply&)> done);
    // The card's status: GetRTStatus with "ID=4", parsed.
    void status(std::function<void(const Reply&, const StatusRecord&)> done);
    // Requests queued or in flight.
    int pending() const;

private:
    struct Impl;
    CardAddress address_;
    Impl* d_;
};

} // namespace torv::client
