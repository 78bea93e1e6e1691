#pragma once

// `torvctl status`: every card polled on its own, each interval, one row per card and
// reading; a closing line per card in the manner of ping.

#include "rows.h"
#include "session.h"

#include <QElapsedTimer>
#include <QObject>
#include <array>

namespace torv::ctl {

// Answer times for the closing line: minimum and maximum exact, the median from buckets 1 %
// wide (constant memory however long the run).
class AnswerTimes {
public:
    void add(double ms);
    qint64 count() const { return count_; }
    double minimum() const { return min_; }
    double maximum() const { return max_; }
    double median() const;

private:
    static constexpr int kBuckets = 2400; // 1 us .. beyond 10 minutes
    static int bucketOf(double ms);
    std::array<qint64, kBuckets> buckets_{};
    qint64 count_ = 0;
    double min_ = 0, max_ = 0;
};

struct StatusOptions {
    qint64 count = 1; // 0: until interrupted
    int intervalMs = 1000;
    RowFormat format = RowFormat::Plain;
    QString outputPath; // empty: standard output
};

class StatusPoll : public QObject {
public:
    StatusPoll(Session& session, StatusOptions options);
    // Opens the output and starts polling; false (the status set) when the output cannot be
    // opened.
    bool start();
    // Ctrl-C or SIGTERM: the closing lines, then the event loop ends.
    void interrupt();

private:
    struct Card {
        qint64 requests = 0, answers = 0, failures = 0;
        qint64 startedMs = 0;
        AnswerTimes times;
        std::optional<client::FailureKind> lastFailure;
        bool done = false;
    };
    void ask(std::size_t i);
    void onReply(std::size_t i, const client::Reply& reply, const client::StatusRecord& record);
    void finish();

    Session& session_;
    StatusOptions options_;
    LineOutput out_;
    std::vector<Card> runs_;
    QElapsedTimer clock_;
    bool finished_ = false;
};

} // namespace torv::ctl
