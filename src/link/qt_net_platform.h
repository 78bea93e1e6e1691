#pragma once

// The parts of the Platform that Qt Core and Qt Network provide: the clock, TCP sockets,
// periodic timers and event processing. The window layer adds the dialogs; tests that run
// against real sockets add scripted dialogs.

#include "base/platform.h"

#include <QElapsedTimer>
#include <memory>

namespace torv {

class SocketPool;

class QtNetPlatform : public Platform {
public:
    QtNetPlatform();

    std::uint32_t GetTickCount() override;
    QString NowString() override;
    QString localeTextOfOnePointFive() override;
    std::unique_ptr<TcpClient> createTcpClient() override;
    std::unique_ptr<PeriodicTimer> createTimer() override;
    void processEvents(int maxWaitMs = 0) override;
    QString programFolder() override;

protected:
    // Held events run from the event loop, after the handler that opened the box.
    void scheduleHeldEvents() override;

private:
    std::shared_ptr<int> alive_ = std::make_shared<int>(0); // for the scheduled delivery
    QElapsedTimer clock_;
    std::shared_ptr<SocketPool> sockets_; // shared with the clients; may outlive this
    std::uint32_t base_;
};

} // namespace torv
