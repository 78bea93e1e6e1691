#include "history_viewer.h"

#include "base/platform.h"
#include "fields.h"
#include "viewer_argument.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <algorithm>

namespace torv {

std::optional<QString> chooseDataFile(Platform& platform, const QString& initialFolder,
                                      const QString& fileName) {
    FileDialogRequest request;
    request.initialFolder = initialFolder;
    request.fileName = fileName;
    request.filter = QString::fromLatin1(kDataFileFilter);
    request.filterIndex = 2;
    const std::optional<QString> choice = platform.openFileDialog(request);
    if (!choice || choice->isEmpty()) return std::nullopt; // cancelled

    // Files are opened relative to the current folder, so a relative answer is taken from there.
    const QString fullPath = QFileInfo(*choice).absoluteFilePath();
    if (QFileInfo(fullPath).fileName().isEmpty()) return std::nullopt; // a folder, not a file
    return fullPath;
}

QStringList historyViewerNames() {
    return {QStringLiteral("trendlog"), QStringLiteral("Trendlog"), QStringLiteral("Trendlog.exe"),
            QStringLiteral("trendlog.exe")};
}

QString findHistoryViewer(const QString& programFolder) {
    const QDir dir(programFolder);
    for (const QString& name : historyViewerNames()) {
        const QFileInfo candidate(dir.filePath(name));
        if (candidate.isFile()) return candidate.filePath();
    }
    return {};
}

std::int64_t startHistoryViewer(Platform& platform, const QString& folder, const QString& fileName,
                                int xMode, const QString& integration) {
    const QString programFolder = platform.programFolder();
    const QString viewer = findHistoryViewer(programFolder);
    if (viewer.isEmpty()) {
        platform.messageBox(QStringLiteral("The history viewer \"%1\" is not installed in %2.")
                                .arg(historyViewerNames().constFirst(), programFolder));
        return 0;
    }
    const QString argument = historyViewerArgument(folder, fileName, xMode, integration);
    const std::int64_t handle = platform.startProgram(viewer, {argument});
    if (handle == 0)
        platform.messageBox(
            QStringLiteral("The history viewer %1 could not be started.").arg(viewer));
    return handle;
}

QString viewerListFolder(const QString& programFolder) {
    const QFileInfo folder(programFolder.isEmpty() ? QStringLiteral(".") : programFolder);
    if (folder.isDir() && folder.isWritable()) return programFolder;
    QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    QString name = QStringLiteral("torv-net");
    if (runtime.isEmpty()) { // a shared folder: the user's name keeps the lists apart
        runtime = QDir::tempPath();
        name += QLatin1Char('-') + QString::fromLocal8Bit(qgetenv("USER"));
    }
    const QString own = QDir(runtime).filePath(name);
    QDir().mkpath(own);
    return own;
}

void closeHistoryViewers(Platform& platform, const QString& folder,
                         const std::vector<std::int64_t>& started) {
    const QString path = folder.isEmpty()
                             ? QString::fromLatin1(kViewerListName)
                             : QDir(folder).filePath(QString::fromLatin1(kViewerListName));
    QByteArray content;
    if (!readFileCapped(path, kViewerListMaxBytes, content)) return;
    FieldReader in(content);
    while (!in.atEnd()) {
        bool ok = false;
        const qint64 handle = in.readLine().trimmed().toLongLong(&ok);
        if (ok && handle > 0 && std::find(started.begin(), started.end(), handle) != started.end())
            platform.postCloseMessage(handle);
    }
}

} // namespace torv
