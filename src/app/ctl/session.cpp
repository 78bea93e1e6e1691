#include "session.h"

#include <QFileInfo>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace torv::ctl {

int exitStatusOf(client::FailureKind kind) {
    switch (kind) {
    case client::FailureKind::CardError:
        return ExitCardError;
    case client::FailureKind::Refused:
    case client::FailureKind::Silent:
    case client::FailureKind::CutOff:
        return ExitNoAnswer;
    case client::FailureKind::Oversize:
    case client::FailureKind::Malformed:
        return ExitNotCard;
    }
    return ExitNotCard;
}

void complain(const QString& text) {
    std::fprintf(stderr, "torvctl: %s\n", text.toLocal8Bit().constData());
    std::fflush(stderr);
}

void HeadlessPlatform::messageBox(const QString& text) {
    complain(text.simplified());
}

bool HeadlessPlatform::askYesNo(const QString& text) {
    complain(text.simplified() + QStringLiteral(" (yes)"));
    return true;
}

void HeadlessPlatform::endProgram() {
    std::fflush(nullptr);
    std::_Exit(ExitUsage);
}

bool LineOutput::open(const QString& path, QString& error) {
    if (path.isEmpty()) {
        file_ = stdout;
        return true;
    }
    const QByteArray name = QFile::encodeName(path);
    file_ = std::fopen(name.constData(), "ab");
    if (!file_) {
        error = path + QStringLiteral(": ") + QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }
    own_ = true;
    std::fseek(file_, 0, SEEK_END);
    wasEmpty_ = std::ftell(file_) == 0;
    const int fd = fileno(file_);
    syncer_ = std::thread([this, fd] {
        std::unique_lock<std::mutex> lock(stopLock_);
        while (
            !stopSignal_.wait_for(lock, std::chrono::milliseconds(100), [this] { return stop_; }))
            if (dirty_.exchange(false)) ::fdatasync(fd); // the rows are in the kernel already
    });
    return true;
}

LineOutput::~LineOutput() {
    if (!own_) return;
    {
        const std::lock_guard<std::mutex> lock(stopLock_);
        stop_ = true;
    }
    stopSignal_.notify_all();
    if (syncer_.joinable()) syncer_.join();
    std::fflush(file_);
    ::fdatasync(fileno(file_));
    std::fclose(file_);
}

bool LineOutput::write(const QByteArray& bytes) {
    if (bytes.isEmpty()) return true;
    if (std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), file_) !=
            static_cast<std::size_t>(bytes.size()) ||
        std::fflush(file_) != 0)
        return false;
    if (own_) dirty_ = true;
    return true;
}

bool LineOutput::isTerminal() const {
    return file_ && ::isatty(fileno(file_));
}

void Session::fail(const client::Failure& failure) {
    complain(failure.detail);
    worsen(exitStatusOf(failure.kind));
}

QString Session::prefix(const client::CardClient& card) const {
    return cards.size() > 1 ? card.address().text() + QStringLiteral(": ") : QString();
}

} // namespace torv::ctl
