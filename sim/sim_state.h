#pragma once

// What the server threads and their controllers share: the card under its lock, the faults
// waiting to be injected and the log of requests. Every member is thread-safe.

#include "sim/card.h"
#include "sim/options.h"
#include "sim/types.h"

#include <QList>
#include <QMutex>
#include <functional>
#include <optional>

namespace torv::sim {

class SimState {
public:
    explicit SimState(const SimOptions& options = {});

    template <typename F> auto withCard(F&& f) {
        QMutexLocker lock(&cardMutex_);
        return f(card_);
    }

    void addFault(const Fault& fault);
    void clearFaults();
    QList<Fault> faults() const;
    // A connection was accepted: a Refuse fault for any function that is limited to a number
    // of connections applies now (and counts this connection).
    std::optional<Fault> takeAcceptFault();
    // A request of `function` was read: the first fault that applies to it (and counts it).
    std::optional<Fault> takeFault(const QString& function);
    // A Refuse fault for any function and without a limit is active: the port is closed.
    bool refusingAll() const;

    void logRequest(const RequestRecord& record);
    QList<RequestRecord> requests() const;
    void clearRequests();

private:
    std::optional<Fault> take(const std::function<bool(const Fault&)>& applies);

    mutable QMutex cardMutex_;
    Card card_;
    mutable QMutex mutex_;
    QList<Fault> faults_;
    QList<RequestRecord> requests_;
    int requestLogLimit_;
};

} // namespace torv::sim
