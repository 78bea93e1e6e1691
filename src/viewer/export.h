#pragma once

// The readings as CSV for spreadsheets and pandas: a header line "index,time_ms,value", then
// one row per reading, time_ms = index x integration.

#include "viewer/series.h"

#include <QByteArray>
#include <QString>

namespace torv::viewer {

// Rows of the readings at positions [first, last).
QByteArray csvText(const Series& series, std::size_t first, std::size_t last);

// Writes the rows to `path`, replacing it as a whole. False, with `error` set, on failure.
bool writeCsv(const QString& path, const Series& series, std::size_t first, std::size_t last,
              QString& error);

} // namespace torv::viewer
