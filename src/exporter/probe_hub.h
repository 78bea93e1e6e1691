#pragma once

// One status request per card at a time, shared: a probe of a card that already has a request
// in flight waits for that request's answer instead of opening a second connection. Many cards
// are probed at once. Everything runs on the thread of the hub's QObject.

#include "client/card_client.h"
#include "exporter/metrics.h"

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <functional>
#include <vector>

namespace torv::exporter {

class ProbeHub : public QObject {
public:
    using StatusDone = std::function<void(const client::Reply&, const client::StatusRecord&)>;
    // Starts one status request to the card with this time-out; `done` runs once, later, on
    // the event loop.
    using Fetch = std::function<void(const client::CardAddress&, int timeoutMs, StatusDone done)>;
    using Done = std::function<void(const ProbeOutcome&)>;

    explicit ProbeHub(Fetch fetch, QObject* parent = nullptr);

    // Probes the card at `key` (one key per card); `done` runs once, on the event loop. The
    // time-out is that of a new request; a probe that joins one in flight shares its time-out.
    void probe(const QString& key, const client::CardAddress& card, int timeoutMs, Done done);

    int flights() const { return int(flights_.size()); } // cards with a request in flight
    int waiting() const { return waiting_; }             // probes waiting for one

private:
    struct Waiter {
        Done done;
        QElapsedTimer since;
    };
    struct Flight {
        std::vector<Waiter> waiters;
    };
    void land(const QString& key, const client::Reply& reply, const client::StatusRecord& record);

    Fetch fetch_;
    QHash<QString, Flight> flights_;
    int waiting_ = 0;
};

// A Fetch on the card client: one CardClient per request, deleted when it has answered.
ProbeHub::Fetch clientFetch(QObject* owner);

} // namespace torv::exporter
