#pragma once

// Choosing the sample data file and handing it to the history viewer, which lies in the
// program's folder, and closing the viewers that were started when the panel shuts down.

#include <QString>
#include <QStringList>

namespace torv {

class Platform;

struct DataFilePaths {
    QString fullPath; // the remembered data-file path
    QString folder;   // the remembered folder, the dialog's next initial folder
};

inline constexpr char kDataFileFilter[] =
    "Text (*.txt)|*.txt|*.doc|L*.*|All_data*.*|All files (*.*)|*.*";

// The file dialog of the "Browse" button. A choice becomes the remembered path and folder
// and its bare name goes to `txtHistFileName`; cancelling changes nothing.
void SelectPath(Platform& platform, DataFilePaths& paths, QString& txtHistFileName);

// The names the viewer program may carry in the program's folder, in the order they are
// looked for.
QStringList historyViewerNames();
// The viewer program in `programFolder`, or an empty text when none is there.
QString findHistoryViewer(const QString& programFolder);

// Starts the viewer, minimised with focus, with one argument: remembered folder + "/" +
// `txtHistFileName` + "/" + mode + "/" + `txtIntegration`. With no remembered folder the
// folder becomes the text of `txtHistFileName`. False, after a message, when the viewer is
// not installed or does not start.
bool CmdShowGraph_Click(Platform& platform, DataFilePaths& paths, const QString& txtHistFileName,
                        int xMode, const QString& txtIntegration);

// The list of viewer windows kept by the viewer in `folder`, one handle a line.
inline constexpr char kViewerListName[] = "hWndListTrendlog";
inline constexpr qint64 kViewerListMaxBytes = 1 << 20;

// Asks every viewer in the list to close. A missing or unreadable list, or lines that are
// not window handles, are passed over.
void closeHistoryViewers(Platform& platform, const QString& folder);

} // namespace torv
