// Any list of readings written to the sample data file, by the block writer or by the
// real-time writer, and read back as the history viewer reads it gives the same readings.
//
// Input: flags (which writer), the block sizes, then the readings: each a number made of
// four bytes or a text of the card's (a piece), which may be no number at all.
// Checks: the file reads; it holds readings 0 .. N in order (index 0 left out when it was no
// number); each value is the number written, a reading that was no number repeating the one
// before it.

#include "base/numeric.h"
#include "files/sample_file.h"
#include "files/sample_reader.h"
#include "fuzz_support.h"

#include <cmath>

using namespace torv;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input in(data, size);
    setDecimalSeparator(QLatin1Char('.'));
    const bool realTime = in.flag();
    std::vector<int> blockSizes(1 + in.choose(6));
    for (int& b : blockSizes)
        b = 1 + in.choose(40);

    SampleData sample;
    sample.readingsAllocated = true;
    sample.startDateTime = QStringLiteral("2/19/2004 10:30:53 AM");
    while (!in.empty() && sample.readings.size() < 600) {
        if (in.byte() & 1) {
            const qint32 v = static_cast<qint32>(in.u16() | std::uint32_t(in.u16()) << 16);
            const int decimals = in.choose(5);
            sample.readings.push_back(QString::number(v / std::pow(10.0, decimals), 'f', decimals));
        } else {
            sample.readings.push_back(QString::fromLatin1(in.piece()));
        }
    }
    if (sample.readings.size() < 2) return 0;
    const Int32 last = static_cast<Int32>(sample.readings.size()) - 1;
    const std::vector<QString> written = sample.readings;

    fuzz::Platform p;
    QByteArray file;
    if (realTime) {
        sample.rtReadingCount = last;
        sample.blocks[1].value[0] = 1;
        file = *rtWeightFileText(sample, TrailerInfo{});
    } else {
        Int32 end = -1, count = 0;
        for (int b : blockSizes) {
            if (end >= last) break;
            end = std::min(last, end + b);
            sample.blocks[static_cast<std::size_t>(count++)] = {{1, 2, 3, 4, end}};
        }
        sample.blocks[static_cast<std::size_t>(count - 1)].value[4] = last;
        file = memoryFileText(p, 0, count, sample, TrailerInfo{});
    }

    SampleFileContent content;
    SampleFileError error;
    fuzz::check(parseSampleFile(QByteArrayView(file), content, error),
                "the written file does not read", error.text());

    // What the file should hold: a reading that is no number repeats the one before it (a
    // first one that is no number is left out by the reader, or not written at all).
    std::vector<qint64> indices;
    std::vector<double> values;
    QString previous;
    for (Int32 k = 0; k <= last; ++k) {
        QString text = written[static_cast<std::size_t>(k)];
        double v = 0;
        if (k > 0 && !readingValue(text, v)) text = previous;
        previous = text;
        if (readingValue(text, v)) {
            indices.push_back(k);
            values.push_back(v);
        }
    }
    // The real-time writer keeps a first reading that is no number as it came; the viewer may
    // read it by its own wider rule ("1,5" in a file from a comma locale).
    double first = 0;
    if (realTime && !readingValue(written[0], first) && !content.index.empty() &&
        content.index[0] == 0) {
        content.index.erase(content.index.begin());
        content.value.erase(content.value.begin());
    }
    fuzz::check(
        content.index == indices, "the readings read back at other indices",
        QStringLiteral("%1 read, %2 written").arg(content.index.size()).arg(indices.size()));
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double got = content.value[i], want = values[i];
        fuzz::check(got == want || (std::isnan(got) && std::isnan(want)),
                    "a reading read back differs",
                    QStringLiteral("index %1: wrote %2, read %3")
                        .arg(indices[i])
                        .arg(written[static_cast<std::size_t>(indices[i])])
                        .arg(got, 0, 'g', 17));
    }
    return 0;
}
