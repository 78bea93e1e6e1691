#pragma once

// The one argument "Show History Graph" hands to the history viewer, built by the panel and
// taken apart by the viewer: folder + "/" + file name + "/" + X-mode + "/" + integration.

#include <QString>
#include <QStringList>
#include <optional>

namespace torv {

QString historyViewerArgument(const QString& folder, const QString& fileName, int xMode,
                              const QString& integration);

struct ViewerArgument {
    QString path;        // folder + "/" + file name
    int xMode = 1;       // 1 readings, 2 milliseconds
    QString integration; // as the panel showed it; may be empty
    // Where the data file may lie, in the order to try: the path itself, then its folder part
    // (the panel repeats the file name as the folder when no folder was chosen).
    QStringList candidates() const;
};

// The panel's argument taken apart; nullopt when `text` does not end in "/1/..." or "/2/...".
std::optional<ViewerArgument> parseHistoryViewerArgument(const QString& text);

} // namespace torv
