#include "sample_run.h"

#include "link/block_parser.h"
#include "link/catalogue.h"

#include <QCoreApplication>
#include <QSaveFile>
#include <QTimer>
#include <unistd.h>

#include <cstdio>

namespace torv::ctl {

namespace {
// The reading list and its limits, as the panel keeps them.
constexpr Int32 kLastSampleIndex = 20000;
constexpr Int32 kReadingListSize = 22001;
constexpr int kAbnormalLength = 10;
// A card that has been asked to stop ends the session within this time, or is left.
constexpr qint64 kStopGraceMs = 30000;
constexpr qint64 kProgressEveryMs = 200;
constexpr int kStopRetries = 3;
constexpr int kEmptyBlockPauseMs = 10;
} // namespace

SampleRun::SampleRun(Session& session, SampleOptions options)
    : session_(session)
    , options_(std::move(options))
    , card_(*session.cards.front())
    , data_(std::make_unique<SampleData>()) {
    terminal_ = ::isatty(STDERR_FILENO);
    trailer_.xMode = session.xMode;
}

void SampleRun::start() {
    card_.status([this](const client::Reply& r, const client::StatusRecord& s) { onStatus(r, s); });
}

void SampleRun::onStatus(const client::Reply& reply, const client::StatusRecord& status) {
    if (reply.failure && reply.failure->kind != client::FailureKind::CardError) {
        session_.fail(*reply.failure);
        end(session_.status);
        return;
    }
    // The card's integration and unit go to the file's trailer, as the panel shows them.
    if (status.integration) trailer_.integration = QString::number(*status.integration);
    if (!status.unit.isEmpty()) trailer_.unitsCaption = GetInterUnit(status.unit);
    data_->readings.assign(static_cast<std::size_t>(kReadingListSize), QStringLiteral("0"));
    data_->readingsAllocated = true;
    data_->startDateTime = session_.platform->NowString();
    clock_.start();
    card_.request(fn::StartSample, QString(), [this](const client::Reply& r) { onStarted(r); });
}

void SampleRun::onStarted(const client::Reply& reply) {
    if (reply.failure) {
        session_.fail(*reply.failure);
        end(session_.status);
        return;
    }
    if (auto f = client::parseErrorCode(reply.answer)) {
        complain(card_.address().text() + QStringLiteral(": fast sampling refused, ") + f->detail +
                 QStringLiteral(" (a smaller integration may help)"));
        end(ExitCardError);
        return;
    }
    fetch();
}

void SampleRun::fetch() {
    card_.request(fn::GetFastSampling, QStringLiteral("ID=4"),
                  [this](const client::Reply& r) { onBlock(r); });
}

void SampleRun::onBlock(const client::Reply& reply) {
    if (ended_) return;
    if (reply.failure) {
        session_.fail(*reply.failure);
        end(session_.status); // what came so far is saved
        return;
    }
    if (!stopEnabled_) ++blocksAfterStop_;
    ++blocksAnswered_;
    const std::optional<client::Failure> error = client::parseErrorCode(reply.answer);
    if (error && error->errorCode == QLatin1String("200")) { // the card has ended the session
        end(session_.status);
        return;
    }
    if (error && !errorShown_) { // once; the blocks are fetched on, as the panel does
        complain(card_.address().text() + QStringLiteral(": ") + error->detail);
        errorShown_ = true;
    }
    const qint64 readingsBefore = parsedReadings_;
    takeBlock(reply.answer, static_cast<Int32>(clock_.elapsed()));
    if (parsedReadings_ > readingsBefore) lastReadingMs_ = clock_.elapsed();
    if (blocksAnswered_ == 2 && !stopRequested_) stopEnabled_ = true;
    progress(false);

    const bool timeUp = options_.seconds > 0 && clock_.elapsed() >= options_.seconds * 1000;
    const bool enough = options_.readings > 0 && parsedReadings_ >= options_.readings;
    if (!stopRequested_ && (timeUp || enough)) requestStop();
    if (!stopRequested_ && clock_.elapsed() - lastReadingMs_ > kStopGraceMs) {
        complain(card_.address().text() +
                 QStringLiteral(": no readings for %1 s; stopping").arg(kStopGraceMs / 1000));
        requestStop();
    }
    if (stopRequested_ && clock_.elapsed() - stopAskedMs_ > kStopGraceMs) {
        complain(card_.address().text() +
                 QStringLiteral(": the card did not end the session within %1 s of the stop")
                     .arg(kStopGraceMs / 1000));
        session_.worsen(ExitNoAnswer);
        end(session_.status);
        return;
    }
    // A block without readings: the card has none yet; it is asked again a little later
    // instead of at once.
    if (parsedReadings_ > readingsBefore)
        fetch();
    else
        QTimer::singleShot(kEmptyBlockPauseMs, this, [this] { fetch(); });
}

void SampleRun::takeBlock(const QString& answer, Int32 value3) {
    if (answer.isEmpty() || blockNumber_ > kLastBlockIndex) return;
    BlockParseRules rules;
    rules.lastSampleIndex = kLastSampleIndex;
    rules.listSize = kReadingListSize;
    rules.abnormalLength = kAbnormalLength;
    rules.keepAbnormal = [this](const QString&) {
        ++abnormal_; // kept, as an operator who answers "continue"; counted in the summary
        return true;
    };
    std::vector<QString>& list = data_->readings;
    const QString before = list[static_cast<std::size_t>(position_ > 0 ? position_ - 1 : 0)];
    const FastSamplingBlock block = parseFastSamplingBlock(answer, position_, before, rules);
    formFaults_ += block.answerErrors;
    if (block.noRoom) {
        if (block.listFull) requestStop();
        return;
    }
    if (!block.read) return;
    for (std::size_t k = 0; k < block.readings.size(); ++k)
        list[static_cast<std::size_t>(position_) + k] = block.readings[k];
    errorReadings_ += block.errorReadings;
    if (!block.taken) return;
    BlockRecord& record = data_->blocks[static_cast<std::size_t>(blockNumber_)];
    record.value[0] = blockNumber_;
    record.value[1] = blocksAnswered_;
    record.value[2] = blocksAfterStop_;
    record.value[3] = value3;
    record.value[4] = block.lastIndex;
    parsedReadings_ += block.lastIndex - position_ + 1;
    ++blockNumber_;
    data_->blockCount = blockNumber_;
    position_ = block.lastIndex + 1;
    if (block.reachedLimit) requestStop();
}

void SampleRun::requestStop() {
    if (stopRequested_) return;
    stopRequested_ = true;
    stopEnabled_ = false;
    stopAskedMs_ = clock_.elapsed();
    card_.request(fn::StopSample, QString(), [this](const client::Reply& r) {
        if (r.failure) {
            session_.fail(*r.failure); // the blocks still tell when it has ended
            return;
        }
        // A stop the card did not take is asked again with the next block, a few times.
        if (client::parseErrorCode(r.answer) && ++stopRefusals_ <= kStopRetries)
            stopRequested_ = false;
    });
}

void SampleRun::interrupt() {
    if (ended_) return;
    if (!clock_.isValid()) { // the session has not started
        end(session_.status);
        return;
    }
    if (interrupted_) {
        complain(QStringLiteral("interrupted: the session is left running on the card"));
        end(session_.status);
        return;
    }
    interrupted_ = true;
    complain(QStringLiteral("stopping; the readings still on the card are fetched (again to "
                            "leave at once)"));
    requestStop();
}

void SampleRun::progress(bool last) {
    if (!terminal_) return;
    const qint64 now = clock_.isValid() ? clock_.elapsed() : 0;
    if (!last && now - lastProgressMs_ < kProgressEveryMs) return;
    lastProgressMs_ = now;
    const double rate = now > 0 ? parsedReadings_ * 1000.0 / now : 0;
    std::fprintf(stderr, "\rreadings %lld  blocks %d  rate %.0f/s%s   %s",
                 static_cast<long long>(parsedReadings_), blockNumber_, rate,
                 stopRequested_ ? "  stopping" : "", last ? "\n" : "");
    std::fflush(stderr);
}

void SampleRun::end(int status) {
    if (ended_) return;
    ended_ = true;
    progress(true);
    session_.worsen(status);
    if (data_->blockCount > 0) {
        const QByteArray text =
            memoryFileText(*session_.platform, 0, data_->blockCount, *data_, trailer_);
        QSaveFile file(options_.path);
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit()) {
            complain(options_.path + QStringLiteral(": ") + file.errorString());
            session_.worsen(ExitUsage);
        } else {
            const qint64 ms = clock_.elapsed();
            std::printf("%lld readings in %d blocks, %.1f readings/s, written to %s\n",
                        static_cast<long long>(parsedReadings_), blockNumber_,
                        ms > 0 ? parsedReadings_ * 1000.0 / ms : 0.0,
                        options_.path.toLocal8Bit().constData());
            if (errorReadings_ + abnormal_ + formFaults_ > 0)
                std::printf("remarks: %lld readings not numbers (each repeats the one before), "
                            "%lld abnormally long readings kept, %d faulty answers\n",
                            static_cast<long long>(errorReadings_),
                            static_cast<long long>(abnormal_), formFaults_);
            std::fflush(stdout);
        }
    } else if (session_.status == ExitOk) {
        complain(QStringLiteral("the session ended without readings; %1 left as it was")
                     .arg(options_.path));
    }
    QCoreApplication::exit(session_.status);
}

} // namespace torv::ctl
