#include "coalescer.h"

namespace torv {

Coalescer::Coalescer(std::function<void()> run, int intervalMs)
    : run_(std::move(run)) {
    timer_.setSingleShot(true);
    timer_.setInterval(intervalMs);
    QObject::connect(&timer_, &QTimer::timeout, [this] { fire(); });
}

void Coalescer::request() {
    if (!timer_.isActive()) timer_.start();
}

void Coalescer::flush() {
    if (!timer_.isActive()) return;
    timer_.stop();
    fire();
}

void Coalescer::fire() {
    ++runs_;
    run_();
}

} // namespace torv
