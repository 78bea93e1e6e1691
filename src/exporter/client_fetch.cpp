#include "probe_hub.h"

namespace torv::exporter {

ProbeHub::Fetch clientFetch(QObject* owner) {
    return [owner](const client::CardAddress& card, int timeoutMs, ProbeHub::StatusDone done) {
        auto* c = new client::CardClient(card, timeoutMs, owner);
        c->status([c, done = std::move(done)](const client::Reply& reply,
                                              const client::StatusRecord& record) {
            done(reply, record);
            c->deleteLater();
        });
    };
}

} // namespace torv::exporter
