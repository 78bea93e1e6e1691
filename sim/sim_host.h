#pragma once

// The card simulator inside another program: a server on 127.0.0.1 running on a thread of
// its own, so that a caller that blocks in its own waits is still answered. The program must
// have a QCoreApplication (or QApplication). Every member may be called from any thread.

#include "sim/card.h"
#include "sim/options.h"
#include "sim/types.h"

#include <QList>
#include <QStringList>
#include <functional>
#include <memory>

namespace torv::sim {

class SimHost { // owns a thread running the server; all members thread-safe
public:
    explicit SimHost(SimOptions options = {});
    ~SimHost(); // stops
    SimHost(const SimHost&) = delete;
    SimHost& operator=(const SimHost&) = delete;

    // Listens on 127.0.0.1; 0 = a free port. Returns the port, 0 on failure (port taken, or
    // no QCoreApplication). When already running returns the running port.
    quint16 start(quint16 port = 0);
    void stop();
    quint16 port() const;

    void injectFault(const Fault& f);
    void clearFaults();
    QList<Fault> faults() const;

    QList<RequestRecord> requests() const;
    void clearRequests();

    // f must not call back into this SimHost: the server waits for the same lock.
    void withCard(const std::function<void(Card&)>& f); // runs f under the card's lock
    QStringList recordedSamples() const; // every fast-sampling reading text sent, in order
    void clearRecordedSamples();

    // Receives one line per request (instead of stderr); set before start().
    void setLogSink(std::function<void(const QString&)> sink);

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};

} // namespace torv::sim
