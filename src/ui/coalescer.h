#pragma once

// Runs a refresh at most once a frame however often it is asked for: the first request starts a
// single-shot timer, later requests before it fires ride along.

#include <QTimer>
#include <functional>

namespace torv {

class Coalescer {
public:
    explicit Coalescer(std::function<void()> run, int intervalMs = 16);

    void request();
    // Runs the pending refresh now (before a screenshot, say).
    void flush();
    bool pending() const { return timer_.isActive(); }
    int runs() const { return runs_; }

private:
    void fire();
    std::function<void()> run_;
    QTimer timer_;
    int runs_ = 0;
};

} // namespace torv
