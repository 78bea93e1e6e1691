#include "status_poll.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>

namespace torv::ctl {

namespace {
constexpr double kFirstBucketMs = 0.001;
const double kBucketStep = std::log(1.01);
constexpr qint64 kRetryPauseMs = 100;
} // namespace

int AnswerTimes::bucketOf(double ms) {
    if (!(ms > kFirstBucketMs)) return 0;
    const int b = static_cast<int>(std::log(ms / kFirstBucketMs) / kBucketStep);
    return std::min(b, kBuckets - 1);
}

void AnswerTimes::add(double ms) {
    min_ = count_ == 0 ? ms : std::min(min_, ms);
    max_ = count_ == 0 ? ms : std::max(max_, ms);
    ++buckets_[static_cast<std::size_t>(bucketOf(ms))];
    ++count_;
}

double AnswerTimes::median() const {
    if (count_ == 0) return 0;
    const qint64 wanted = (count_ + 1) / 2;
    qint64 seen = 0;
    for (int b = 0; b < kBuckets; ++b) {
        seen += buckets_[static_cast<std::size_t>(b)];
        if (seen >= wanted) {
            const double middle = kFirstBucketMs * std::exp((b + 0.5) * kBucketStep);
            return std::clamp(middle, min_, max_);
        }
    }
    return max_;
}

StatusPoll::StatusPoll(Session& session, StatusOptions options)
    : session_(session)
    , options_(std::move(options)) {}

bool StatusPoll::start() {
    QString error;
    if (!out_.open(options_.outputPath, error)) {
        complain(error);
        session_.worsen(ExitUsage);
        return false;
    }
    if (options_.format == RowFormat::Plain || out_.wasEmpty())
        out_.write(headerLine(options_.format));
    runs_.resize(session_.cards.size());
    clock_.start();
    for (std::size_t i = 0; i < runs_.size(); ++i)
        ask(i);
    return true;
}

void StatusPoll::ask(std::size_t i) {
    if (finished_) return;
    runs_[i].startedMs = clock_.elapsed();
    session_.cards[i]->status(
        [this, i](const client::Reply& reply, const client::StatusRecord& record) {
            onReply(i, reply, record);
        });
}

void StatusPoll::onReply(std::size_t i, const client::Reply& reply,
                         const client::StatusRecord& record) {
    if (finished_) return;
    Card& run = runs_[i];
    const client::CardClient& card = *session_.cards[i];
    ++run.requests;
    const bool cardError = reply.failure && reply.failure->kind == client::FailureKind::CardError;
    if (reply.failure && !cardError) {
        ++run.failures;
        // A card that keeps failing the same way is reported once, not every interval.
        if (run.lastFailure != reply.failure->kind) session_.fail(*reply.failure);
        session_.worsen(exitStatusOf(reply.failure->kind));
        run.lastFailure = reply.failure->kind;
    } else {
        ++run.answers;
        run.times.add(reply.elapsedMs);
        const std::optional<client::FailureKind> before = run.lastFailure;
        run.lastFailure.reset();
        if (cardError) {
            if (before != client::FailureKind::CardError) session_.fail(*reply.failure);
            session_.worsen(ExitCardError);
            run.lastFailure = client::FailureKind::CardError;
        } else if (before) {
            complain(card.address().text() + QStringLiteral(": answers again"));
        }
        if (!out_.write(rowLine(options_.format, QDateTime::currentDateTimeUtc(),
                                card.address().text(), record))) {
            complain(QStringLiteral("cannot write the output: ") +
                     QString::fromLocal8Bit(std::strerror(errno)));
            session_.worsen(ExitUsage);
            finish();
            return;
        }
    }
    if (options_.count > 0 && run.requests >= options_.count) {
        run.done = true;
        if (std::all_of(runs_.begin(), runs_.end(), [](const Card& c) { return c.done; })) finish();
        return;
    }
    qint64 wait = options_.intervalMs - (clock_.elapsed() - run.startedMs);
    // A card that does not answer is not hammered at full rate: it is asked again after a
    // pause.
    if (reply.failure && !cardError) wait = std::max(wait, kRetryPauseMs);
    if (wait <= 0) {
        ask(i); // the card's next request starts as soon as this answer is done
        return;
    }
    QTimer::singleShot(static_cast<int>(std::max<qint64>(0, wait)), Qt::PreciseTimer, this,
                       [this, i] { ask(i); });
}

void StatusPoll::interrupt() {
    if (finished_) return;
    options_.count = 0; // the closing lines are printed whatever was asked
    finish();
}

void StatusPoll::finish() {
    if (finished_) return;
    finished_ = true;
    if (options_.count != 1) {
        for (std::size_t i = 0; i < runs_.size(); ++i) {
            const Card& run = runs_[i];
            const double loss = run.requests ? 100.0 * run.failures / run.requests : 0.0;
            QString line = QStringLiteral("--- %1 status ---\n%2 requests, %3 answers, %4 "
                                          "failures, %5% loss")
                               .arg(session_.cards[i]->address().text())
                               .arg(run.requests)
                               .arg(run.answers)
                               .arg(run.failures)
                               .arg(loss, 0, 'f', 1);
            if (run.times.count() > 0)
                line += QStringLiteral(", answer time min/median/max = %1/%2/%3 ms")
                            .arg(run.times.minimum(), 0, 'f', 3)
                            .arg(run.times.median(), 0, 'f', 3)
                            .arg(run.times.maximum(), 0, 'f', 3);
            std::fprintf(stderr, "%s\n", line.toLocal8Bit().constData());
        }
        std::fflush(stderr);
    }
    QCoreApplication::exit(session_.status);
}

} // namespace torv::ctl
