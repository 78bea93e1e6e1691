#pragma once

// Before a data file that holds readings is replaced, a copy of it is kept beside it, named
// after it with the date and time ("All_data-kept-20261124-195803.txt"); the newest few
// copies stay, older ones go. The new file itself is written exactly as before.

#include <QByteArray>
#include <QDateTime>
#include <QString>

namespace torv {

inline constexpr int kKeptDataFiles = 5;

struct KeptFile {
    QString path;  // the copy made, empty when none was needed or possible
    QString error; // why the old file could not be kept (empty when kept or not needed)
};

// The name of the copy of `path` made at `when`.
QString keptFileName(const QString& path, const QDateTime& when);

// Keeps the file at `path` when it holds readings and differs from `next`, the content about
// to replace it; then removes all but the newest `keep` copies of it. Never throws.
KeptFile keepPreviousDataFile(const QString& path, const QByteArray& next,
                              const QDateTime& when = QDateTime::currentDateTime(),
                              int keep = kKeptDataFiles);

} // namespace torv
