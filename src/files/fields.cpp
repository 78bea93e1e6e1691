#include "fields.h"

#include "base/runtime_error.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace torv {

namespace {

bool isLineEnd(QChar c) {
    return c == QLatin1Char('\r') || c == QLatin1Char('\n');
}

[[noreturn]] void raisePastEnd() {
    throw RuntimeError(62);
}

// The run-time's number for a failed file operation of this system.
RuntimeError fileError(int err) {
    switch (err) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return RuntimeError(61);
    case ENOENT:
    case ENOTDIR:
        return RuntimeError(76, QStringLiteral("Path not found"));
    default:
        return RuntimeError(75);
    }
}

bool writeAll(int fd, const QByteArray& text) {
    const char* p = text.constData();
    qsizetype left = text.size();
    while (left > 0) {
        const ssize_t n = ::write(fd, p, static_cast<size_t>(left));
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        p += n;
        left -= n;
    }
    return true;
}

} // namespace

QString decodeFileText(const QByteArray& bytes) {
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8.decode(bytes);
    if (utf8.hasError()) return QString::fromLatin1(bytes);
    return text;
}

FieldReader::FieldReader(const QByteArray& content)
    : text_(decodeFileText(content)) {}

bool FieldReader::atEnd() const {
    return pos_ >= text_.size();
}

QString FieldReader::readField() {
    if (atEnd()) raisePastEnd();
    const qsizetype n = text_.size();
    while (pos_ < n && (text_[pos_] == QLatin1Char(' ') || text_[pos_] == QLatin1Char('\t')))
        ++pos_;
    const qsizetype start = pos_;
    while (pos_ < n && text_[pos_] != QLatin1Char(',') && !isLineEnd(text_[pos_]))
        ++pos_;
    const QString field = text_.mid(start, pos_ - start);
    if (pos_ < n) {
        if (text_[pos_] == QLatin1Char(','))
            ++pos_;
        else if (text_[pos_++] == QLatin1Char('\r') && pos_ < n && text_[pos_] == QLatin1Char('\n'))
            ++pos_;
    }
    return field;
}

QString FieldReader::readLine() {
    if (atEnd()) raisePastEnd();
    const qsizetype n = text_.size();
    const qsizetype start = pos_;
    while (pos_ < n && !isLineEnd(text_[pos_]))
        ++pos_;
    const QString line = text_.mid(start, pos_ - start);
    if (pos_ < n && text_[pos_++] == QLatin1Char('\r') && pos_ < n &&
        text_[pos_] == QLatin1Char('\n'))
        ++pos_;
    return line;
}

QString printNumber(qint64 v) {
    const QString digits = QString::number(v);
    return v < 0 ? digits + QLatin1Char(' ') : QLatin1Char(' ') + digits + QLatin1Char(' ');
}

bool readFileCapped(const QString& path, qint64 maxBytes, QByteArray& content, int* errorNumber) {
    content.clear();
    auto fail = [&](int number) {
        if (errorNumber) *errorNumber = number;
        return false;
    };
    std::error_code ec;
    const std::filesystem::path fsPath(path.toStdU16String());
    if (path.isEmpty() || !std::filesystem::exists(fsPath, ec)) return fail(53);
    // Only regular files are read: a folder, a pipe or a device never counts as content.
    if (!std::filesystem::is_regular_file(fsPath, ec)) return fail(75);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return fail(75);
    content = file.read(maxBytes);
    if (file.error() != QFileDevice::NoError) {
        content.clear();
        return fail(75);
    }
    return true;
}

void writeTextFile(const QString& path, const QByteArray& text) {
    if (path.isEmpty()) throw RuntimeError(75);
    const QFileInfo info(path);
    if (info.isDir()) throw RuntimeError(75);
    const QByteArray target = QFile::encodeName(path);
    QByteArray temp =
        QFile::encodeName(info.absolutePath() + QStringLiteral("/.") + info.fileName()) + ".XXXXXX";
    const int fd = ::mkstemp(temp.data());
    if (fd < 0) throw fileError(errno);

    struct stat old {};
    const mode_t mode = ::stat(target.constData(), &old) == 0 ? (old.st_mode & 07777) : 0644;
    ::fchmod(fd, mode);

    auto abandon = [&](int err) {
        ::close(fd);
        ::unlink(temp.constData());
        throw fileError(err);
    };
    if (!writeAll(fd, text)) abandon(errno);
    if (::fsync(fd) != 0 && errno != EINVAL) abandon(errno);
    if (::close(fd) != 0) {
        const int err = errno;
        ::unlink(temp.constData());
        throw fileError(err);
    }
    if (::rename(temp.constData(), target.constData()) != 0) {
        const int err = errno;
        ::unlink(temp.constData());
        throw fileError(err);
    }
}

void appendTextFile(const QString& path, const QByteArray& text) {
    if (path.isEmpty()) throw RuntimeError(75);
    if (QFileInfo(path).isDir()) throw RuntimeError(75);
    const QByteArray target = QFile::encodeName(path);
    struct stat before {};
    const bool existed = ::stat(target.constData(), &before) == 0;
    const int fd = ::open(target.constData(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (fd < 0) throw fileError(errno);
    struct stat opened {};
    const off_t oldSize = ::fstat(fd, &opened) == 0 ? opened.st_size : 0;

    // A failed append is taken back, so the file keeps its last complete trailer.
    auto takeBack = [&](int err) {
        if (existed && ::ftruncate(fd, oldSize) != 0) {
            // Nothing more can be done: the error below is reported all the same.
        }
        ::close(fd);
        if (!existed) ::unlink(target.constData());
        throw fileError(err);
    };
    if (!writeAll(fd, text)) takeBack(errno);
    if (::fsync(fd) != 0 && errno != EINVAL) takeBack(errno);
    if (::close(fd) != 0) throw fileError(errno);
}

} // namespace torv
