#pragma once

// "hWndListTrendlog" in the folder viewerListFolder() picks (the program's folder when it can
// be written): one line per viewer started by a panel, its window handle, which on this system
// is its process id. A panel reads it when it shuts down and asks the listed viewers it started
// to close. Such viewers add their line at start and remove it at exit; a lock file beside it
// keeps two viewers from rewriting it at once.

#include <QString>

namespace torv::viewer {

QString viewerListPath(const QString& folder);

// Adds `handle` as a line, keeping every other line. False when the list cannot be written.
bool addToViewerList(const QString& folder, qint64 handle);
// Removes the lines that hold `handle`, keeping the others; the file goes when none are left.
bool removeFromViewerList(const QString& folder, qint64 handle);

} // namespace torv::viewer
