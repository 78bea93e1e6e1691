#pragma once

// Choosing the sample data file and handing it to the history viewer, which lies in the
// program's folder, and closing the viewers that were started when the panel shuts down.

#include <QString>
#include <QStringList>
#include <cstdint>
#include <optional>
#include <vector>

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
// mode ("1" readings, "2" milliseconds) + "/" + integration. The viewer's window handle; 0,
// after a message, when the viewer is not installed or does not start.
std::int64_t startHistoryViewer(Platform& platform, const QString& folder, const QString& fileName,
                                int xMode, const QString& integration);

// The list of viewer windows, one handle a line, kept by the viewers the panel started.
inline constexpr char kViewerListName[] = "hWndListTrendlog";
inline constexpr qint64 kViewerListMaxBytes = 1 << 20;

// Where the panel and its viewers keep the list: the program's folder when it can be
// written, else a folder of the user's own at run time (so an installed viewer is listed too).
QString viewerListFolder(const QString& programFolder);

// Asks the viewers in the list that this panel started (`started`) to close; viewers of other
// panels and those opened by hand stay. A missing or unreadable list, or lines that are not
// window handles, are passed over.
void closeHistoryViewers(Platform& platform, const QString& folder,
                         const std::vector<std::int64_t>& started);

} // namespace torv
