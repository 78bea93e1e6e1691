#include "history_viewer.h"

#include "base/platform.h"
#include "fields.h"
#include "viewer_argument.h"

#include <QDir>
#include <QFileInfo>

namespace torv {

void SelectPath(Platform& platform, DataFilePaths& paths, QString& txtHistFileName) {
    FileDialogRequest request;
    request.initialFolder = paths.folder;
    request.fileName = txtHistFileName;
    request.filter = QString::fromLatin1(kDataFileFilter);
    request.filterIndex = 2;
    const std::optional<QString> choice = platform.openFileDialog(request);
    if (!choice || choice->isEmpty()) return; // cancelled: nothing changes

    // Files are opened relative to the current folder, so a relative answer is taken from there.
    const QFileInfo chosen(*choice);
    const QString fullPath = chosen.absoluteFilePath();
    const QString bareName = QFileInfo(fullPath).fileName();
    if (bareName.isEmpty()) return; // a folder, not a file
    paths.fullPath = fullPath;
    paths.folder = fullPath.left(fullPath.size() - bareName.size() - 1);
    txtHistFileName = bareName;
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

bool CmdShowGraph_Click(Platform& platform, DataFilePaths& paths, const QString& txtHistFileName,
                        int xMode, const QString& txtIntegration) {
    // With no folder remembered the file name stands in for it (the viewer then finds the
    // file by the name it is given).
    if (paths.folder.isEmpty()) paths.folder = txtHistFileName;

    const QString programFolder = platform.programFolder();
    const QString viewer = findHistoryViewer(programFolder);
    if (viewer.isEmpty()) {
        platform.messageBox(QStringLiteral("The history viewer \"%1\" is not installed in %2.")
                                .arg(historyViewerNames().constFirst(), programFolder));
        return false;
    }
    const QString argument =
        historyViewerArgument(paths.folder, txtHistFileName, xMode, txtIntegration);
    if (!platform.startProgram(viewer, {argument})) {
        platform.messageBox(
            QStringLiteral("The history viewer %1 could not be started.").arg(viewer));
        return false;
    }
    return true;
}

void closeHistoryViewers(Platform& platform, const QString& folder) {
    const QString path = folder.isEmpty()
                             ? QString::fromLatin1(kViewerListName)
                             : QDir(folder).filePath(QString::fromLatin1(kViewerListName));
    QByteArray content;
    if (!readFileCapped(path, kViewerListMaxBytes, content)) return;
    FieldReader in(content);
    while (!in.atEnd()) {
        bool ok = false;
        const qint64 handle = in.readLine().trimmed().toLongLong(&ok);
        if (ok && handle > 0) platform.postCloseMessage(handle);
    }
}

} // namespace torv
