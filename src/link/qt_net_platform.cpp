#include "qt_net_platform.h"

#include "tcp_client.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QLocale>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <limits>

namespace torv {

namespace {

// A watchdog timer that is enabled for every request and disabled by every answer: each
// enable only moves a deadline, and one Qt timer, armed for the earliest time a tick could
// be due, checks the deadline when it fires. An interval of 0 never ticks (rather than
// ticking on every pass of the event loop).
class QtPeriodicTimer final : public PeriodicTimer {
public:
    QtPeriodicTimer()
        : timer_(new QTimer) {
        timer_->setSingleShot(true);
        timer_->setTimerType(Qt::PreciseTimer);
        clock_.start();
        QObject::connect(timer_, &QTimer::timeout, timer_, [this] { onTimeout(); });
    }
    ~QtPeriodicTimer() override {
        timer_->disconnect();
        timer_->stop();
        timer_->deleteLater(); // may be inside its own timeout
    }

    void setInterval(int ms) override {
        interval_ = std::max(ms, 0);
        if (enabled_) restart();
    }
    int interval() const override { return interval_; }
    void setEnabled(bool enabled) override {
        if (enabled == enabled_) return;
        enabled_ = enabled;
        // Disabling leaves the Qt timer armed: when it fires it finds nothing to do.
        if (enabled_) restart();
    }
    bool isEnabled() const override { return enabled_; }

private:
    // A full interval from now.
    void restart() {
        if (interval_ <= 0) {
            timer_->stop();
            return;
        }
        deadline_ = clock_.elapsed() + interval_;
        if (!timer_->isActive() || firesAt_ > deadline_) arm(interval_);
    }

    void arm(qint64 ms) {
        firesAt_ = clock_.elapsed() + ms;
        timer_->start(static_cast<int>(std::min<qint64>(ms, std::numeric_limits<int>::max())));
    }

    void onTimeout() {
        if (!enabled_ || interval_ <= 0) return;
        const qint64 left = deadline_ - clock_.elapsed();
        if (left > 0) {
            arm(left);
            return;
        }
        deadline_ = clock_.elapsed() + interval_;
        arm(interval_);
        if (auto cb = onTick) cb(); // last: the handler may destroy this timer
    }

    QTimer* timer_;
    QElapsedTimer clock_;
    qint64 deadline_ = 0; // when the next tick is due
    qint64 firesAt_ = 0;  // when the Qt timer fires
    int interval_ = 0;
    bool enabled_ = false;
};

} // namespace

QtNetPlatform::QtNetPlatform() {
    clock_.start();
    // Start from the system's uptime counter as the card's clock does, in 32 bits.
    const auto up = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now().time_since_epoch());
    base_ = static_cast<std::uint32_t>(up.count());
}

std::uint32_t QtNetPlatform::GetTickCount() {
    return base_ + static_cast<std::uint32_t>(clock_.elapsed());
}

QString QtNetPlatform::NowString() {
    return QLocale::c().toString(QDateTime::currentDateTime(),
                                 QStringLiteral("M/d/yyyy h:mm:ss AP"));
}

QString QtNetPlatform::localeTextOfOnePointFive() {
    return QLocale().toString(1.5);
}

std::unique_ptr<TcpClient> QtNetPlatform::createTcpClient() {
    if (!sockets_) sockets_ = createSocketPool();
    return createSocketTcpClient(sockets_);
}

std::unique_ptr<PeriodicTimer> QtNetPlatform::createTimer() {
    return std::make_unique<QtPeriodicTimer>();
}

void QtNetPlatform::processEvents(int maxWaitMs) {
    if (maxWaitMs <= 0) {
        QCoreApplication::processEvents(QEventLoop::AllEvents);
        return;
    }
    // Wait for the first event at most maxWaitMs: a short single-shot timer wakes the
    // dispatcher when nothing else does, so the wait never burns the processor.
    QTimer wake;
    wake.setSingleShot(true);
    wake.setTimerType(Qt::PreciseTimer);
    wake.start(maxWaitMs);
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

void QtNetPlatform::scheduleHeldEvents() {
    const std::weak_ptr<int> alive = alive_;
    QTimer::singleShot(0, [this, alive] {
        if (alive.lock()) deliverHeldEvents();
    });
}

QString QtNetPlatform::programFolder() {
    return QCoreApplication::applicationDirPath();
}

} // namespace torv
