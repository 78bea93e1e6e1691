#include "sim_host.h"

#include "sim/server.h"
#include "sim/sim_state.h"

#include <QCoreApplication>
#include <QMutex>
#include <QThread>
#include <atomic>
#include <cstdio>

namespace torv::sim {

struct SimHost::Impl {
    SimOptions options;
    std::shared_ptr<SimState> state;
    std::function<void(const QString&)> sink;
    QMutex lifecycle; // start and stop one at a time
    QThread* thread = nullptr;
    QObject* anchor = nullptr; // lives in the thread; calls into it go through this
    Server* server = nullptr;  // created, used and deleted on the thread
    std::atomic<quint16> port{0};

    // Runs f on the server's thread and waits for it.
    void onThread(const std::function<void()>& f) {
        if (!thread) return;
        if (QThread::currentThread() == thread)
            f();
        else
            QMetaObject::invokeMethod(anchor, f, Qt::BlockingQueuedConnection);
    }
};

SimHost::SimHost(SimOptions options)
    : d_(std::make_unique<Impl>()) {
    d_->options = std::move(options);
    d_->state = std::make_shared<SimState>(d_->options);
}

SimHost::~SimHost() {
    stop();
}

quint16 SimHost::start(quint16 port) {
    QMutexLocker lock(&d_->lifecycle);
    if (d_->thread) return d_->port;
    if (!QCoreApplication::instance()) {
        std::fprintf(stderr, "torv::sim::SimHost: a QCoreApplication is needed to run the card "
                             "simulator\n");
        return 0;
    }
    d_->thread = new QThread;
    d_->thread->setObjectName(QStringLiteral("torv-sim"));
    d_->anchor = new QObject;
    d_->anchor->moveToThread(d_->thread);
    d_->thread->start();
    bool ok = false;
    QString error;
    d_->onThread([&] {
        d_->server = new Server(d_->state, d_->options);
        if (d_->sink) d_->server->setLogSink(d_->sink);
        ok = d_->server->listen(QHostAddress::LocalHost, port);
        if (ok)
            d_->port = d_->server->port();
        else
            error = d_->server->errorString();
    });
    if (!ok) {
        std::fprintf(stderr, "torv::sim::SimHost: cannot listen on 127.0.0.1:%u: %s\n",
                     static_cast<unsigned>(port), error.toLocal8Bit().constData());
        lock.unlock();
        stop();
        return 0;
    }
    return d_->port;
}

void SimHost::stop() {
    QMutexLocker lock(&d_->lifecycle);
    if (!d_->thread) return;
    d_->onThread([&] {
        delete d_->server;
        d_->server = nullptr;
    });
    d_->thread->quit();
    d_->thread->wait();
    delete d_->anchor; // its thread has finished
    d_->anchor = nullptr;
    delete d_->thread;
    d_->thread = nullptr;
    d_->port = 0;
}

quint16 SimHost::port() const {
    return d_->port;
}

void SimHost::injectFault(const Fault& f) {
    d_->state->addFault(f);
    QMutexLocker lock(&d_->lifecycle);
    d_->onThread([&] {
        if (d_->server) d_->server->applyFaults();
    });
}

void SimHost::clearFaults() {
    d_->state->clearFaults();
    QMutexLocker lock(&d_->lifecycle);
    d_->onThread([&] {
        if (d_->server) d_->server->applyFaults();
    });
}

QList<Fault> SimHost::faults() const {
    return d_->state->faults();
}

QList<RequestRecord> SimHost::requests() const {
    return d_->state->requests();
}

void SimHost::clearRequests() {
    d_->state->clearRequests();
}

void SimHost::withCard(const std::function<void(Card&)>& f) {
    d_->state->withCard([&](Card& card) {
        f(card);
        return 0;
    });
}

QStringList SimHost::recordedSamples() const {
    return d_->state->withCard([](Card& card) { return card.sentReadings(); });
}

void SimHost::clearRecordedSamples() {
    d_->state->withCard([](Card& card) {
        card.clearSentReadings();
        return 0;
    });
}

void SimHost::setLogSink(std::function<void(const QString&)> sink) {
    QMutexLocker lock(&d_->lifecycle);
    d_->sink = std::move(sink);
}

} // namespace torv::sim
