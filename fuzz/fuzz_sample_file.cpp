// The sample data file of any bytes, read as the history viewer reads it, and the viewer's
// model on what was read: the series in both X modes, statistics of stretches, the nearest
// reading, the cursors, the CSV export and the tuning table with its report.
//
// Input: two choice bytes (X mode, a stretch), then the whole file.
// Checks: a file is either read or refused with a message naming what was expected; what
// was read has one value per index; statistics stay within the minimum and maximum; the
// tuning table has a row for each integration it can preview or says why it has none.

#include "files/sample_reader.h"
#include "fuzz_support.h"
#include "viewer/export.h"
#include "viewer/series.h"
#include "viewer/tuning.h"

#include <cmath>

using namespace torv;
using namespace torv::viewer;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input in(data, size);
    const int mode = 1 + in.choose(2);
    const std::uint8_t stretch = in.byte();
    const QByteArray bytes = in.rest();

    SampleFileContent content;
    SampleFileError error;
    if (!parseSampleFile(QByteArrayView(bytes), content, error)) {
        fuzz::check(!error.text().isEmpty(), "a file refused without a message");
        return 0;
    }
    fuzz::check(content.index.size() == content.value.size(),
                "indices and values differ in number");

    Series series;
    series.setXMode(mode);
    series.setIntegration(integrationValue(content.trailer.integration));
    series.load(std::move(content));
    const Stats all = series.allStats();
    fuzz::check(all.count == qint64(series.size()), "the statistics miss readings");
    if (series.empty()) return 0;

    for (std::size_t i = 1; i < series.size(); ++i)
        fuzz::check(series.indexAt(i - 1) <= series.indexAt(i), "readings out of index order");
    const double first = series.keyAt(0), last = series.keyAt(series.size() - 1);
    const double lo = first + (last - first) * (stretch & 15) / 16.0;
    const double hi = lo + (last - lo) * (stretch >> 4) / 15.0;
    const auto [from, to] = series.positionsIn(lo, hi);
    fuzz::check(from <= to && to <= series.size(), "a stretch outside the series");
    const Stats part = series.stats(lo, hi);
    fuzz::check(part.count == qint64(to - from), "the stretch's statistics miss readings");
    if (part.count > 0 && std::isfinite(part.min) && std::isfinite(part.max))
        fuzz::check(part.min <= part.max, "minimum above maximum");
    fuzz::check(series.nearest(lo) < series.size(), "the nearest reading is outside");

    Cursors cursors;
    cursors.place(0, lo, series);
    cursors.place(1, hi, series);
    fuzz::check(cursors.difference(series).has_value(), "two cursors placed give no difference");
    for (double b : series.boundaries())
        fuzz::check(!std::isnan(b), "a block boundary that is no number");

    TuningSettings tuning;
    tuning.integrationMs = series.integration();
    tuning.first = from;
    tuning.last = to;
    if (stretch & 1) tuning.tolerance = std::abs(part.max - part.min) / 4;
    std::vector<double> values(series.content().value);
    const TuningTable table = tuningTable(values, tuning);
    fuzz::check(table.error.isEmpty() != table.rows.empty(),
                "a tuning table with rows and an error, or with neither", table.error);
    const QByteArray report = tuningCsv(table, stretch >> 7 ? 0.5 : 0);
    fuzz::check(report.count('\n') >= qsizetype(table.rows.size()), "the tuning report lost rows");

    const std::size_t rows = std::min<std::size_t>(to - from, 2000);
    const QByteArray csv = csvText(series, from, from + rows);
    fuzz::check(csv.count('\n') == qsizetype(rows) + 1, "the CSV export lost rows");
    return 0;
}
