#include "fields.h"

#include "base/runtime_error.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QStringDecoder>

#include <algorithm>
#include <cerrno>
#include <climits>
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

namespace {

// The file a path names: a symbolic link is followed to its target (which may not exist
// yet). Bytes throughout, so names that are not UTF-8 stay as they are.
QByteArray resolvedTarget(const QByteArray& path) {
    QByteArray target = path;
    for (int hops = 0; hops < 40; ++hops) {
        struct stat st {};
        if (::lstat(target.constData(), &st) != 0 || !S_ISLNK(st.st_mode)) return target;
        QByteArray link(PATH_MAX, '\0');
        const ssize_t n =
            ::readlink(target.constData(), link.data(), static_cast<size_t>(link.size()));
        if (n <= 0) return target;
        link.truncate(n);
        if (link.startsWith('/')) {
            target = link;
        } else {
            const qsizetype slash = target.lastIndexOf('/');
            target = slash < 0 ? link : target.left(slash + 1) + link;
        }
    }
    return target;
}

// Rewrites an existing file in place: for a folder that takes no new files.
bool writeInPlace(const QByteArray& target, const QByteArray& text) {
    const int fd = ::open(target.constData(), O_WRONLY | O_CLOEXEC);
    if (fd < 0) return false;
    const bool ok = writeAll(fd, text) && ::ftruncate(fd, static_cast<off_t>(text.size())) == 0 &&
                    (::fsync(fd) == 0 || errno == EINVAL);
    const int err = errno;
    ::close(fd);
    if (!ok) throw fileError(err);
    return true;
}

} // namespace

void writeTextFile(const QString& path, const QByteArray& text) {
    if (path.isEmpty()) throw RuntimeError(75);
    const QByteArray target = resolvedTarget(QFile::encodeName(path));
    struct stat old {};
    const bool exists = ::stat(target.constData(), &old) == 0;
    if (exists && S_ISDIR(old.st_mode)) throw RuntimeError(75);
    const qsizetype slash = target.lastIndexOf('/');
    const QByteArray folder =
        slash < 0 ? QByteArray(".") : target.left(std::max<qsizetype>(slash, 1));
    const QByteArray name = target.mid(slash + 1);
    QByteArray temp = folder + "/." + name + ".XXXXXX";
    const int fd = ::mkstemp(temp.data());
    if (fd < 0) {
        const int err = errno;
        if (exists && S_ISREG(old.st_mode) && writeInPlace(target, text)) return;
        throw fileError(err);
    }

    const mode_t mode = exists ? (old.st_mode & 07777) : 0644;
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

QString writeRecoveryFile(const QString& path, const QByteArray& text) {
    QString base = QFileInfo(path).completeBaseName();
    if (base.isEmpty()) base = QStringLiteral("All_data");
    const QString name = base + QStringLiteral("-recovered-") +
                         QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss")) +
                         QStringLiteral(".txt");
    const QString folders[] = {QStandardPaths::writableLocation(QStandardPaths::AppDataLocation),
                               QDir::tempPath()};
    for (const QString& folder : folders) {
        if (folder.isEmpty() || !QDir().mkpath(folder)) continue;
        const QString full = QDir(folder).filePath(name);
        try {
            writeTextFile(full, text);
            return full;
        } catch (const RuntimeError&) {
            // The next folder, then.
        }
    }
    return {};
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
