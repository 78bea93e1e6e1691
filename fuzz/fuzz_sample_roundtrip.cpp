// Any list of readings written to the sample data file, by the block writer or by the
// real-time writer, and read back as the history viewer reads it gives the same readings.
//
// Input: flags (which writer), the block sizes, then the readings: each a number made of
// four bytes or a text of the card's (a piece), which may be no number at all.
// Checks: the file reads; it holds readings 0 .. N in order, each the number written, a
// reading that was no number repeating the one before it; what the panel does not take as a
// number is left out or read as a number with a decimal comma.

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

    // What the file should hold: a reading that is no number repeats the one before it. A
    // text written although the panel does not take it as a number (a first reading that is
    // none, and what repeats it) may be read by the viewer's wider rule ("2,5", as in a file
    // from a comma locale) or left out; a first one that is none is not written by the block
    // writer at all.
    std::size_t at = 0; // the next reading read back
    QString previous;
    for (Int32 k = 0; k <= last; ++k) {
        QString text = written[static_cast<std::size_t>(k)];
        double want = 0;
        if (k > 0 && !readingValue(text, want)) text = previous;
        previous = text;
        const bool number = readingValue(text, want);
        const bool present = at < content.index.size() && content.index[at] == k;
        const QString detail = QStringLiteral("index %1: wrote \"%2\"").arg(k).arg(text.left(40));
        if (number) {
            fuzz::check(present, "a reading written is not read back", detail);
        } else if (!present) {
            continue;
        } else {
            fuzz::check(realTime || k > 0, "a reading the block writer leaves out is read", detail);
            fuzz::check(numericValue(text, QLatin1Char(','), want),
                        "a reading that is no number is read back", detail);
        }
        const double got = content.value[at++];
        fuzz::check(got == want, "a reading read back differs",
                    detail + QStringLiteral(", read %1").arg(got, 0, 'g', 17));
    }
    fuzz::check(at == content.index.size(), "more readings read back than written",
                QStringLiteral("%1 read").arg(content.index.size()));
    return 0;
}
