#include "probe_hub.h"

namespace torv::exporter {

ProbeHub::ProbeHub(Fetch fetch, QObject* parent)
    : QObject(parent)
    , fetch_(std::move(fetch)) {}

void ProbeHub::probe(const QString& key, const client::CardAddress& card, int timeoutMs,
                     Done done) {
    Waiter waiter{std::move(done), {}};
    waiter.since.start();
    ++waiting_;
    auto it = flights_.find(key);
    if (it != flights_.end()) {
        it->waiters.push_back(std::move(waiter));
        return;
    }
    flights_[key].waiters.push_back(std::move(waiter));
    fetch_(card, timeoutMs,
           [this, key](const client::Reply& reply, const client::StatusRecord& record) {
               land(key, reply, record);
           });
}

void ProbeHub::land(const QString& key, const client::Reply& reply,
                    const client::StatusRecord& record) {
    auto it = flights_.find(key);
    if (it == flights_.end()) return;
    std::vector<Waiter> waiters = std::move(it->waiters);
    flights_.erase(it);
    waiting_ -= int(waiters.size());
    ProbeOutcome outcome;
    outcome.failure = reply.failure;
    outcome.record = record;
    for (Waiter& w : waiters) {
        outcome.seconds = w.since.nsecsElapsed() / 1e9;
        w.done(outcome);
    }
}

} // namespace torv::exporter
