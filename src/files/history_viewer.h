#pragma once

// Choosing the sample data file and handing it to the history viewer, which lies in the
// program's folder, and closing the viewers that were started when the panel shuts down.

#include <QString>
#include <QStringList>
#include <optional>

namespace torv {

class Platform;

struct DataFilePaths {
    QString fullPath; // the remembered data-file path
    QString folder;   // the remembered folder, the dialog's next initial folder
};

inline constexpr char kDataFileFilter[] =
    "Text (*.txt)|*.txt|*.doc|L*.*|All_data*.*|All files (*.*)|*.*";

// The file dialog for the data file: starting in `initialFolder` with `fileName`, the data-file
// filter with its second entry preselected. The absolute path of the file chosen; nothing
// when the operator cancels or picks no file.
std::optional<QString> chooseDataFile(Platform& platform, const QString& initialFolder,
                                      const QString& fileName);

// The names the viewer program may carry in the program's folder, in the order they are
// looked for.
QStringList historyViewerNames();
// The viewer program in `programFolder`, or an empty text when none is there.
QString findHistoryViewer(const QString& programFolder);

// Starts the viewer, minimised with focus, with one argument: folder + "/" + fileName + "/" +
// mode ("1" readings, "2" milliseconds) + "/" + integration. False, after a message, when the
// viewer is not installed or does not start.
bool startHistoryViewer(Platform& platform, const QString& folder, const QString& fileName,
                        int xMode, const QString& integration);

// The list of viewer windows kept by the viewer in `folder`, one handle a line.
inline constexpr char kViewerListName[] = "hWndListTrendlog";
inline constexpr qint64 kViewerListMaxBytes = 1 << 20;

// Asks every viewer in the list to close. A missing or unreadable list, or lines that are
// not window handles, are passed over.
void closeHistoryViewers(Platform& platform, const QString& folder);

} // namespace torv
