#include "export.h"

#include "base/runtime_error.h"
#include "files/fields.h"

#include <algorithm>
#include <charconv>

namespace torv::viewer {

namespace {

void appendNumber(QByteArray& out, double v) {
    char buffer[32];
    const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, v);
    out.append(buffer, ec == std::errc() ? end - buffer : 0);
}

void appendNumber(QByteArray& out, qint64 v) {
    char buffer[24];
    const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, v);
    out.append(buffer, ec == std::errc() ? end - buffer : 0);
}

} // namespace

QByteArray csvText(const Series& series, std::size_t first, std::size_t last) {
    last = std::min(last, series.size());
    QByteArray out("index,time_ms,value\n");
    if (first < last) out.reserve(out.size() + qsizetype(last - first) * 24);
    for (std::size_t i = first; i < last; ++i) {
        appendNumber(out, series.indexAt(i));
        out += ',';
        appendNumber(out, series.timeMsOf(i));
        out += ',';
        appendNumber(out, series.valueAt(i));
        out += '\n';
    }
    return out;
}

bool writeCsv(const QString& path, const Series& series, std::size_t first, std::size_t last,
              QString& error) {
    try {
        writeTextFile(path, csvText(series, first, last));
        return true;
    } catch (const RuntimeError& e) {
        error = QStringLiteral("%1 could not be written: %2").arg(path, e.message());
        return false;
    }
}

} // namespace torv::viewer
