// The sample data file read back: what the writers write comes back unchanged, damaged and
// foreign files are refused with the line and what was expected, and no bytes at all make
// the reader crash, hang or return half a result.

#include "files/sample_file.h"
#include "files/sample_reader.h"
#include "support/fake_platform.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

using namespace torv;

namespace {

const QByteArray kTrailer = "-1, -1\r\nStartDateTime:2/19/2004 10:30:53 AM\r\nTORV-NET  \r\n"
                            "Sampling Rate: 20 (ms.)\r\nScanned:\r\nInegrationBufferSize: 12\r\n"
                            "Gain Bias Resol. Units LoLimit HiLimit\r\n"
                            "  36   49 0.0002 kg     0.234   4.321\r\n"
                            "Average Minimum Maximum Delta1 Delta2 Cnt1 Cnt2\r\n"
                            " 1107  801  1398 -306  291  1  1\r\nSamples: 2\r\n"
                            "Value1_A2D:, 1 \r\nReading1_ms2:,1\r\n";
const QByteArray kGood = "Timer2Interval,  300 \r\n-999999  1  2  3  4  2 \r\n 0  1.5\r\n"
                         " 1  -2\r\n 2  3,25\r\n" +
                         kTrailer;

QString readError(const QByteArray& bytes) {
    SampleFileContent content;
    SampleFileError error;
    if (parseSampleFile(bytes, content, error)) return QStringLiteral("read");
    return error.text();
}

QString readingsOf(const SampleFileContent& c) {
    QStringList out;
    for (std::size_t i = 0; i < c.index.size(); ++i)
        out << QStringLiteral("%1=%2").arg(c.index[i]).arg(c.value[i]);
    return out.join(QLatin1Char(' '));
}

} // namespace

TEST(SampleReader, WhatTheWritersWriteComesBack) {
    test::FakePlatform p;
    SampleData data;
    data.readingsAllocated = true;
    data.startDateTime = "11/22/2026 3:04:05 PM";
    data.readings = {"1.234", "1.240", "-0.5", "17", "x", "2.5e2"};
    data.blocks[0] = BlockRecord{{1, 2, 40, 2, 2}};
    data.blocks[1] = BlockRecord{{-1, 3, 95, 4, 3}};
    data.blocks[2] = BlockRecord{{1, 4, 0, 0, 3}}; // no readings of its own
    data.blocks[3] = BlockRecord{{1, 5, 0, 0, 5}};
    const TrailerInfo info{"8", "kg", 2};
    SampleFileContent c;
    SampleFileError error;
    ASSERT_TRUE(parseSampleFile(memoryFileText(p, 0, 4, data, info), c, error))
        << error.text().toStdString();
    EXPECT_EQ(readingsOf(c), "0=1.234 1=1.24 2=-0.5 3=17 4=17 5=250");
    ASSERT_EQ(c.blocks.size(), 4u);
    EXPECT_EQ(c.blocks[1].value, (std::array<qint32, 5>{-1, 3, 95, 4, 3}));
    EXPECT_EQ(c.blocks[1].line, 6);
    EXPECT_EQ(c.blocks[3].firstReading, 4);
    EXPECT_EQ(c.trailer.startDateTime, "11/22/2026 3:04:05 PM");
    EXPECT_EQ(QStringList({c.trailer.cardName, c.trailer.integration, c.trailer.bufferSize,
                           c.trailer.unitsCaption, c.trailer.samples}),
              QStringList({"TORV-NET", "8", "8", "kg", "5"}));
    EXPECT_EQ(c.trailer.xMode, 2);
    EXPECT_EQ(c.timerInterval, "300");
    EXPECT_EQ(c.trailers, 1);
    EXPECT_TRUE(c.remarks.isEmpty());

    // Appended blocks bring a second trailer; the last one counts.
    data.readings.push_back("6.5");
    data.blocks[4] = BlockRecord{{1, 6, 0, 0, 6}};
    const QByteArray appended =
        memoryFileText(p, 0, 4, data, info) + memoryFileText(p, 4, 5, data, {"20", "N", 1});
    ASSERT_TRUE(parseSampleFile(appended, c, error)) << error.text().toStdString();
    EXPECT_EQ(c.trailers, 2);
    EXPECT_EQ(c.index.size(), 7u);
    EXPECT_EQ(c.trailer.unitsCaption, "N");
    EXPECT_EQ(c.trailer.xMode, 1);

    // The real-time writer's one block, with a bad first reading written as it stands.
    data.rtReadingCount = 2;
    data.readings = {"abc", "3", "4"};
    ASSERT_TRUE(parseSampleFile(*rtWeightFileText(data, info), c, error));
    EXPECT_EQ(readingsOf(c), "1=3 2=4");
    EXPECT_EQ(c.remarks, QStringList{"line 3: reading 0 is not a number (\"abc\"); left out"});
}

TEST(SampleReader, LooseButHarmlessFormsAreRead) {
    SampleFileContent c;
    SampleFileError error;
    QByteArray lf = kGood;
    lf.replace("\r\n", "\n");
    ASSERT_TRUE(parseSampleFile(lf + "\n\n", c, error)) << error.text().toStdString();
    EXPECT_EQ(readingsOf(c), "0=1.5 1=-2 2=3.25");

    QByteArray unordered = kGood;
    unordered.replace(" 1  -2", " 7  -2");
    ASSERT_TRUE(parseSampleFile(unordered, c, error));
    EXPECT_EQ(readingsOf(c), "0=1.5 7=-2 2=3.25");
    EXPECT_EQ(c.remarks, QStringList{"the readings are not in index order; they are shown sorted"});
}

TEST(SampleReader, DamagedFilesNameTheLineAndWhatWasExpected) {
    const QString data = "expected a block line (\"-999999\" and five whole numbers), a reading "
                         "line (reading index and reading) or the end of the data (\"-1, -1\")";
    struct Case {
        QByteArray bytes;
        QString error;
    };
    const Case cases[] = {
        {"", "the file is empty; expected the first line of a sample data file, "
             "\"Timer2Interval, 300\""},
        {"index,time_ms,value\n0,0,1\n",
         "line 1: expected the first line of a sample data file, \"Timer2Interval, 300\"; found "
         "\"index,time_ms,value\""},
        {"Timer2Interval,  300 \r\n 0  1.5\r\n", "line 2: " + data + "; found \" 0  1.5\""},
        {"Timer2Interval,  300 \r\n-999999  1  2  3  4 \r\n",
         "line 2: expected a block line, \"-999999\" and five whole numbers; found "
         "\"-999999  1  2  3  4 \", with 4 numbers"},
        {"Timer2Interval,  300 \r\n-999999  1  2  3  4  99999999999 \r\n",
         "line 2: expected a block line, \"-999999\" and five whole numbers; found "
         "\"-999999  1  2  3  4  99999999999 \""},
        {"Timer2Interval,  300 \r\n-999999  1  2  3  4  5 \r\n 0  1\r\n\r\n",
         "line 4: " + data + "; found an empty line"},
        {"Timer2Interval,  300 \r\n-999999  1  2  3  4  5 \r\n 0  1\r\n 1  2",
         "line 5: the file ends here; " + data},
        {kGood.left(kGood.indexOf("Scanned")),
         "line 10: the file ends here; expected the trailer line \"Scanned:\""},
        {QByteArray(kGood).replace("Sampling Rate", "Sample rate"),
         "line 9: expected the trailer line \"Sampling Rate: <integration> (ms.)\"; found "
         "\"Sample rate: 20 (ms.)\""},
        {QByteArray(kGood).replace("ms2:,1", "ms2:,3"),
         "line 18: expected the X mode \"Reading1_ms2:,1\" or \"Reading1_ms2:,2\"; found "
         "\"Reading1_ms2:,3\""},
        {kGood + "more\r\n", "line 19: expected the end of the file or appended block lines "
                             "(\"-999999\" and five whole numbers); found \"more\""},
        {QByteArray("Timer2Interval, 300\r\n-999999 1 2 3 4 5\r\n\x01\x02") + QByteArray(70, 'z'),
         "line 3: " + data + "; found \"??zzz"},
    };
    for (const Case& c : cases) {
        const QString got = readError(c.bytes);
        if (c.bytes.contains('\x01'))
            EXPECT_TRUE(got.startsWith(c.error)) << got.toStdString();
        else
            EXPECT_EQ(got.toStdString(), c.error.toStdString());
    }
}

TEST(SampleReader, AnyBytesEndInContentOrOneError) {
    std::mt19937 rng(20261122);
    auto below = [&](int n) { return std::uniform_int_distribution<int>(0, n - 1)(rng); };
    static const QList<QByteArray> pieces =
        QByteArray("-999999 |-1, -1|\r\n|\n|\r| |,|-|1|0|.|e|9999999999|StartDateTime:|"
                   "Reading1_ms2:,|Samples: |TORV-NET|Sampling Rate: |(ms.)")
            .split('|');
    for (int round = 0; round < 3000; ++round) {
        QByteArray bytes = kGood;
        for (int edits = below(6); edits >= 0; --edits) {
            const int at = below(int(bytes.size()) + 1);
            switch (below(4)) {
            case 0:
                bytes.insert(at, pieces[below(int(pieces.size()))]);
                break;
            case 1:
                bytes.remove(at, below(8));
                break;
            case 2:
                if (at < bytes.size()) bytes[at] = char(below(256));
                break;
            default:
                bytes.truncate(at);
            }
        }
        if (round % 10 == 0) { // plain noise as well
            bytes.clear();
            for (int i = below(400); i > 0; --i)
                bytes += below(3) ? char(below(256)) : pieces[below(int(pieces.size()))][0];
        }
        SampleFileContent c;
        SampleFileError error;
        const qsizetype lines = bytes.count('\n') + bytes.count('\r') + 1;
        if (parseSampleFile(bytes, c, error)) {
            ASSERT_EQ(c.index.size(), c.value.size());
            ASSERT_GE(c.trailers, 1);
            for (double v : c.value)
                ASSERT_TRUE(std::isfinite(v));
        } else {
            ASSERT_FALSE(error.message.isEmpty());
            ASSERT_LE(error.line, lines + 1) << bytes.toStdString();
            ASSERT_TRUE(c.index.empty());
        }
    }
}

TEST(SampleReader, FilesOnDiskAndTheIntegrationText) {
    SampleFileContent c;
    SampleFileError error;
    EXPECT_FALSE(readSampleFile("/nonexistent/All_data.txt", c, error));
    EXPECT_EQ(error.text(), "the file does not exist");
    EXPECT_FALSE(readSampleFile("/", c, error));
    EXPECT_EQ(error.text(), "the file cannot be read");

    const QStringList texts = {"20", " 8 ", "2,5", "0", "-4", "", "fast", "1e400"};
    QStringList values;
    for (const QString& t : texts)
        values << QString::number(integrationValue(t));
    EXPECT_EQ(values.join(' '), "20 8 2.5 0 0 0 0 0");
}
