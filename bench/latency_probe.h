#pragma once

// How late does the event loop run a 10 ms timer while the panel works? The probe records the
// lateness of each tick; the percentiles summarise it.

#include <QElapsedTimer>
#include <QTimer>
#include <algorithm>
#include <vector>

namespace torv::bench {

class LatencyProbe {
public:
    LatencyProbe() {
        timer_.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer_, &QTimer::timeout, [this] {
            const qint64 now = clock_.elapsed();
            lateness_.push_back(static_cast<double>(now - expected_));
            expected_ = now + kPeriodMs;
        });
    }
    void start() {
        clock_.start();
        expected_ = kPeriodMs;
        timer_.start(kPeriodMs);
    }
    void stop() { timer_.stop(); }
    // Seconds since start.
    double elapsed() const { return static_cast<double>(clock_.elapsed()) / 1000.0; }
    std::size_t ticks() const { return lateness_.size(); }
    // Lateness in ms at quantile q (0.5 the median, 1.0 the largest).
    double percentile(double q) const {
        if (lateness_.empty()) return 0;
        std::vector<double> v = lateness_;
        std::sort(v.begin(), v.end());
        return v[static_cast<std::size_t>(q * static_cast<double>(v.size() - 1))];
    }

private:
    static constexpr int kPeriodMs = 10;
    QElapsedTimer clock_;
    QTimer timer_;
    qint64 expected_ = kPeriodMs;
    std::vector<double> lateness_;
};

} // namespace torv::bench
