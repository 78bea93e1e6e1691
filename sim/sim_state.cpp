#include "sim_state.h"

namespace torv::sim {

namespace {
bool refusesAny(const Fault& f) {
    return f.kind == Fault::Kind::Refuse && f.function.isEmpty();
}
} // namespace

SimState::SimState(const SimOptions& options)
    : card_(options)
    , requestLogLimit_(options.requestLogLimit) {
    for (const Fault& f : options.faults)
        addFault(f);
}

void SimState::addFault(const Fault& fault) {
    if (fault.kind == Fault::Kind::None || fault.connections == 0) return;
    Fault f = fault;
    if (f.connections < 0) f.connections = -1;
    QMutexLocker lock(&mutex_);
    faults_.append(f);
}

void SimState::clearFaults() {
    QMutexLocker lock(&mutex_);
    faults_.clear();
}

QList<Fault> SimState::faults() const {
    QMutexLocker lock(&mutex_);
    return faults_;
}

std::optional<Fault> SimState::take(const std::function<bool(const Fault&)>& applies) {
    QMutexLocker lock(&mutex_);
    for (qsizetype i = 0; i < faults_.size(); ++i) {
        Fault& f = faults_[i];
        if (!applies(f)) continue;
        const Fault taken = f;
        if (f.connections > 0 && --f.connections == 0) faults_.removeAt(i);
        return taken;
    }
    return std::nullopt;
}

std::optional<Fault> SimState::takeAcceptFault() {
    return take([](const Fault& f) { return refusesAny(f) && f.connections > 0; });
}

std::optional<Fault> SimState::takeFault(const QString& function) {
    return take([&](const Fault& f) {
        if (refusesAny(f)) return false; // handled when the connection is accepted
        return f.function.isEmpty() || f.function == function;
    });
}

bool SimState::refusingAll() const {
    QMutexLocker lock(&mutex_);
    for (const Fault& f : faults_)
        if (refusesAny(f) && f.connections < 0) return true;
    return false;
}

void SimState::logRequest(const RequestRecord& record) {
    QMutexLocker lock(&mutex_);
    requests_.append(record);
    if (requestLogLimit_ > 0 && requests_.size() > requestLogLimit_)
        requests_.remove(0, requests_.size() - requestLogLimit_);
}

QList<RequestRecord> SimState::requests() const {
    QMutexLocker lock(&mutex_);
    return requests_;
}

void SimState::clearRequests() {
    QMutexLocker lock(&mutex_);
    requests_.clear();
}

} // namespace torv::sim
