#include "viewer_list.h"

#include "base/runtime_error.h"
#include "files/fields.h"
#include "files/history_viewer.h"

#include <QByteArrayList>
#include <QDir>
#include <QFile>
#include <QLockFile>

namespace torv::viewer {

namespace {

// The list's lines without blank ones and without those holding `handle`.
QByteArrayList otherLines(const QString& path, qint64 handle) {
    QByteArray content;
    readFileCapped(path, kViewerListMaxBytes, content); // missing or unreadable: empty
    content.replace("\r\n", "\n");
    content.replace('\r', '\n');
    QByteArrayList kept;
    const QByteArray mine = QByteArray::number(handle);
    for (const QByteArray& line : content.split('\n'))
        if (!line.trimmed().isEmpty() && line.trimmed() != mine) kept << line;
    return kept;
}

bool rewrite(const QString& folder, qint64 handle, bool add) {
    const QString path = viewerListPath(folder);
    QLockFile lock(path + QStringLiteral(".lock"));
    lock.setStaleLockTime(5000);
    if (!lock.tryLock(2000)) return false;
    QByteArrayList lines = otherLines(path, handle);
    if (add) lines << QByteArray::number(handle);
    try {
        if (lines.isEmpty()) return !QFile::exists(path) || QFile::remove(path);
        writeTextFile(path, lines.join(kLineEnd) + kLineEnd);
    } catch (const RuntimeError&) {
        return false;
    }
    return true;
}

} // namespace

QString viewerListPath(const QString& folder) {
    return QDir(folder).filePath(QString::fromLatin1(kViewerListName));
}

bool addToViewerList(const QString& folder, qint64 handle) {
    return rewrite(folder, handle, true);
}

bool removeFromViewerList(const QString& folder, qint64 handle) {
    return rewrite(folder, handle, false);
}

} // namespace torv::viewer
