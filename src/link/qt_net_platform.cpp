#include "qt_net_platform.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QDateTime>
#include <QLocale>
#include <QNetworkProxy>
#include <QPointer>
#include <QTcpSocket>
#include <QThread>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <memory>

namespace torv {

namespace {

// Received data is handed on in pieces of at most this many bytes, one DataArrival each,
// whatever the socket has buffered: the card's own network stack never delivered more at
// once, and the completion search of the transport counts positions by arrival size.
constexpr qsizetype kMaxArrival = 8192;

class QtTcpClient final : public TcpClient {
public:
    QtTcpClient()
        : socket_(new QTcpSocket)
        , alive_(std::make_shared<bool>(true)) {
        // The card is on the local network; never route its raw TCP through a proxy.
        socket_->setProxy(QNetworkProxy::NoProxy);
        socket_->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        QObject::connect(socket_, &QTcpSocket::connected, socket_, [this] {
            if (closing_) return;
            if (auto cb = onConnect) cb();
        });
        QObject::connect(socket_, &QTcpSocket::readyRead, socket_, [this] { deliverReceived(); });
        QObject::connect(socket_, &QTcpSocket::disconnected, socket_, [this] {
            if (closing_) return;
            // Anything still buffered arrives before the Close.
            const std::shared_ptr<bool> alive = alive_;
            deliverReceived();
            if (!*alive || closing_) return;
            if (auto cb = onClose) cb();
        });
        QObject::connect(socket_, &QTcpSocket::errorOccurred, socket_,
                         [this](QAbstractSocket::SocketError error) {
                             if (closing_) return;
                             // The peer closing is a Close, not an error.
                             if (error == QAbstractSocket::RemoteHostClosedError) return;
                             if (auto cb = onError)
                                 cb(static_cast<int>(error), socket_->errorString());
                         });
    }

    ~QtTcpClient() override {
        *alive_ = false;
        retire();
    }

    void connectToHost(const QString& host, std::uint16_t port) override {
        socket_->connectToHost(host, port);
    }

    void send(const QByteArray& data) override { socket_->write(data); }

    void close() override {
        closing_ = true;
        socket_->abort();
    }

private:
    // Hands everything buffered to onDataArrival in pieces. A handler may close or destroy
    // this client; the rest is then dropped.
    void deliverReceived() {
        const std::shared_ptr<bool> alive = alive_;
        while (!closing_ && socket_->bytesAvailable() > 0) {
            const QByteArray data = socket_->read(kMaxArrival);
            if (data.isEmpty()) return;
            auto cb = onDataArrival; // copied: the handler may destroy this client
            if (!cb) return;
            cb(data);
            if (!*alive) return;
        }
    }

    void retire() {
        closing_ = true;
        socket_->disconnect();
        socket_->abort();
        // The socket may be inside its own signal right now: delete it later.
        socket_->deleteLater();
    }

    QTcpSocket* socket_;
    std::shared_ptr<bool> alive_;
    bool closing_ = false;
};

// A watchdog-style timer: an interval of 0 never ticks (rather than ticking on every pass
// of the event loop).
class QtPeriodicTimer final : public PeriodicTimer {
public:
    QtPeriodicTimer()
        : timer_(new QTimer) {
        timer_->setTimerType(Qt::PreciseTimer);
        QObject::connect(timer_, &QTimer::timeout, timer_, [this] {
            if (auto cb = onTick) cb();
        });
    }
    ~QtPeriodicTimer() override {
        timer_->disconnect();
        timer_->stop();
        timer_->deleteLater();
    }

    void setInterval(int ms) override {
        interval_ = std::max(ms, 0);
        timer_->setInterval(interval_); // restarts a running timer
        update();
    }
    int interval() const override { return interval_; }
    void setEnabled(bool enabled) override {
        enabled_ = enabled;
        update();
    }
    bool isEnabled() const override { return enabled_; }

private:
    void update() {
        const bool run = enabled_ && interval_ > 0;
        if (run && !timer_->isActive())
            timer_->start();
        else if (!run)
            timer_->stop();
    }

    QTimer* timer_;
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
    return std::make_unique<QtTcpClient>();
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

QString QtNetPlatform::programFolder() {
    return QCoreApplication::applicationDirPath();
}

} // namespace torv
