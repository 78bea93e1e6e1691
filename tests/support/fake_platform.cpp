#include "fake_platform.h"

#include <algorithm>

namespace torv::test {

FakeTcpClient::FakeTcpClient(FakeBase& platform, int id)
    : platform_(platform)
    , id_(id) {
    platform_.sockets.push_back(this);
}

FakeTcpClient::~FakeTcpClient() {
    auto& v = platform_.sockets;
    v.erase(std::remove(v.begin(), v.end(), this), v.end());
}

void FakeTcpClient::connectToHost(const QString& host, std::uint16_t port) {
    host_ = host;
    port_ = port;
    connectRequested_ = true;
    platform_.wire << QStringLiteral("connect %1:%2").arg(host).arg(port);
}

void FakeTcpClient::send(const QByteArray& data) {
    sends_.push_back(data);
    platform_.wire << QStringLiteral("send ") + QString::fromLatin1(data);
}

void FakeTcpClient::close() {
    if (!closed_) platform_.wire << QStringLiteral("close #%1").arg(id_);
    closed_ = true;
}

QByteArray FakeTcpClient::sentText() const {
    QByteArray all;
    for (const auto& s : sends_)
        all += s;
    return all;
}

// Each fire copies the callback first: the handler may destroy this client.
void FakeTcpClient::fireConnect() {
    if (auto cb = onConnect) cb();
}
void FakeTcpClient::deliver(const QByteArray& data) {
    if (auto cb = onDataArrival) cb(data);
}
void FakeTcpClient::peerClose() {
    closed_ = true;
    if (auto cb = onClose) cb();
}
void FakeTcpClient::fail(int number, const QString& description) {
    if (auto cb = onError) cb(number, description);
}

FakeTimer::FakeTimer(FakeBase& platform)
    : platform_(platform) {
    platform_.timers.push_back(this);
}

FakeTimer::~FakeTimer() {
    auto& v = platform_.timers;
    v.erase(std::remove(v.begin(), v.end(), this), v.end());
}

void FakeTimer::setInterval(int ms) {
    interval_ = ms;
    if (enabled_) nextDue_ = platform_.now + static_cast<std::uint32_t>(interval_);
}

void FakeTimer::setEnabled(bool enabled) {
    if (enabled && !enabled_) nextDue_ = platform_.now + static_cast<std::uint32_t>(interval_);
    enabled_ = enabled;
}

void FakeTimer::fire() {
    if (auto cb = onTick) cb();
}

FakeBase::FakeBase() = default;

FakeBase::~FakeBase() {
    for (auto* s : sockets)
        s->onConnect = nullptr;
}

void FakeBase::tick() {
    ++now;
    if (heldEventsDue_) {
        heldEventsDue_ = false;
        deliverHeldEvents();
    }
    while (!scheduled_.empty() && scheduled_.begin()->first <= now) {
        auto action = std::move(scheduled_.begin()->second);
        scheduled_.erase(scheduled_.begin());
        action();
    }
    const std::vector<FakeTimer*> snapshot = timers;
    for (FakeTimer* t : snapshot) {
        if (std::find(timers.begin(), timers.end(), t) == timers.end()) continue;
        if (t->enabled_ && t->interval_ > 0 && static_cast<std::int32_t>(now - t->nextDue_) >= 0) {
            t->nextDue_ = now + static_cast<std::uint32_t>(t->interval_);
            t->fire();
        }
    }
    if (onTick) onTick();
}

void FakeBase::advance(int ms) {
    for (int i = 0; i < ms; ++i)
        tick();
}

void FakeBase::at(std::uint32_t when, std::function<void()> action) {
    scheduled_.emplace(when, std::move(action));
}

std::unique_ptr<TcpClient> FakeBase::createTcpClient() {
    return std::make_unique<FakeTcpClient>(*this, ++socketsCreated);
}

std::unique_ptr<PeriodicTimer> FakeBase::createTimer() {
    return std::make_unique<FakeTimer>(*this);
}

void FakeBase::processEvents(int) {
    ++processEventsCalls;
    advance(processStepMs);
}

} // namespace torv::test
