#pragma once

// A scripted Platform for tests: a fake millisecond clock, fake sockets and timers that the
// test drives by hand, and message boxes answered from a script and recorded.

#include "scripted_dialogs.h"

#include <QString>
#include <QStringList>
#include <deque>
#include <functional>
#include <map>
#include <vector>

namespace torv::test {

class FakeBase;

class FakeTcpClient : public TcpClient {
public:
    explicit FakeTcpClient(FakeBase& platform, int id);
    ~FakeTcpClient() override;

    void connectToHost(const QString& host, std::uint16_t port) override;
    void send(const QByteArray& data) override;
    void close() override;

    // Driven by the test.
    void fireConnect();
    void deliver(const QByteArray& data);
    void peerClose();
    void fail(int number = 10061, const QString& description = QStringLiteral("refused"));

    int id() const { return id_; }
    QString host() const { return host_; }
    std::uint16_t port() const { return port_; }
    bool isClosed() const { return closed_; }
    bool connectRequested() const { return connectRequested_; }
    const std::vector<QByteArray>& sends() const { return sends_; }
    QByteArray sentText() const;

private:
    FakeBase& platform_;
    int id_;
    QString host_;
    std::uint16_t port_ = 0;
    bool closed_ = false;
    bool connectRequested_ = false;
    std::vector<QByteArray> sends_;
};

class FakeTimer : public PeriodicTimer {
public:
    explicit FakeTimer(FakeBase& platform);
    ~FakeTimer() override;
    void setInterval(int ms) override;
    int interval() const override { return interval_; }
    void setEnabled(bool enabled) override;
    bool isEnabled() const override { return enabled_; }

    void fire(); // one tick now, whatever the clock says
    std::uint32_t nextDue() const { return nextDue_; }

private:
    friend class FakeBase;
    FakeBase& platform_;
    int interval_ = 0;
    bool enabled_ = false;
    std::uint32_t nextDue_ = 0;
};

// The clock, sockets and timers of the fake; dialogs come from Scripted.
class FakeBase : public Platform {
public:
    FakeBase();
    ~FakeBase() override;

    // Clock -----------------------------------------------------------------
    std::uint32_t now = 100000;
    // Moves the clock one millisecond at a time, firing due timers and scheduled actions.
    void advance(int ms);
    // Runs `action` when the clock reaches `tick` (during advance or processEvents).
    void at(std::uint32_t tick, std::function<void()> action);
    void after(int ms, std::function<void()> action) {
        at(now + static_cast<std::uint32_t>(ms), std::move(action));
    }
    // How far processEvents moves the clock.
    int processStepMs = 1;
    int processEventsCalls = 0;
    // Runs after every millisecond of fake time (a fake card answers from here).
    std::function<void()> onTick;

    // Network ---------------------------------------------------------------
    // The wire as the fake saw it: "connect HOST:PORT", "send TEXT", "close #ID".
    QStringList wire;
    std::vector<FakeTcpClient*> sockets; // live sockets, oldest first
    int socketsCreated = 0;
    FakeTcpClient* socket() const { return sockets.empty() ? nullptr : sockets.back(); }
    std::vector<FakeTimer*> timers;

    QString folder = QStringLiteral("/opt/torv-net");
    QString localeSample = QStringLiteral("1.5");
    QString nowText = QStringLiteral("2/19/2004 10:30:53 AM");

    // Platform --------------------------------------------------------------
    std::uint32_t GetTickCount() override { return now; }
    QString NowString() override { return nowText; }
    QString localeTextOfOnePointFive() override { return localeSample; }
    std::unique_ptr<TcpClient> createTcpClient() override;
    std::unique_ptr<PeriodicTimer> createTimer() override;
    void processEvents(int maxWaitMs = 0) override;
    QString programFolder() override { return folder; }

protected:
    // Held events run on the next millisecond of fake time, as from the event loop.
    void scheduleHeldEvents() override { heldEventsDue_ = true; }

private:
    bool heldEventsDue_ = false;
    friend class FakeTcpClient;
    friend class FakeTimer;
    void tick();
    std::multimap<std::uint32_t, std::function<void()>> scheduled_;
};

class FakePlatform : public Scripted<FakeBase> {};

} // namespace torv::test
