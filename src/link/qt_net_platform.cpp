#include "qt_net_platform.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QDateTime>
#include <QLocale>
#include <QPointer>
#include <QTcpSocket>
#include <QThread>
#include <QTimer>
#include <chrono>

namespace torv {

namespace {

class QtTcpClient final : public TcpClient {
public:
    QtTcpClient() : socket_(new QTcpSocket) {
        socket_->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        QObject::connect(socket_, &QTcpSocket::connected, socket_, [this] {
            if (auto cb = onConnect) cb();
        });
        QObject::connect(socket_, &QTcpSocket::readyRead, socket_, [this] {
            // Copy the callback: the handler may destroy this client.
            const QByteArray data = socket_->readAll();
            if (data.isEmpty()) return;
            if (auto cb = onDataArrival) cb(data);
        });
        QObject::connect(socket_, &QTcpSocket::disconnected, socket_, [this] {
            if (closing_) return;
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

    ~QtTcpClient() override { retire(); }

    void connectToHost(const QString& host, std::uint16_t port) override {
        socket_->connectToHost(host, port);
    }

    void send(const QByteArray& data) override { socket_->write(data); }

    void close() override {
        closing_ = true;
        socket_->abort();
    }

private:
    void retire() {
        closing_ = true;
        socket_->disconnect();
        socket_->abort();
        // The socket may be inside its own signal right now: delete it later.
        socket_->deleteLater();
    }

    QTcpSocket* socket_;
    bool closing_ = false;
};

class QtPeriodicTimer final : public PeriodicTimer {
public:
    QtPeriodicTimer() : timer_(new QTimer) {
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

    void setInterval(int ms) override { timer_->setInterval(ms); }
    int interval() const override { return timer_->interval(); }
    void setEnabled(bool enabled) override {
        if (enabled && !timer_->isActive())
            timer_->start();
        else if (!enabled)
            timer_->stop();
    }
    bool isEnabled() const override { return timer_->isActive(); }

private:
    QTimer* timer_;
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

QString QtNetPlatform::localeTextOfOnePointFive() { return QLocale().toString(1.5); }

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

QString QtNetPlatform::programFolder() { return QCoreApplication::applicationDirPath(); }

} // namespace torv
