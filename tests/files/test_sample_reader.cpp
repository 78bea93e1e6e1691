// The sample data file read back: what the writers write comes back unchanged, damaged and
// foreign files are refused with the line and what was expected, and no bytes at all make
// the reader crash, hang or return half a result.

#include "files/sample_file.h"
#include "files/sample_reader.h"
#include "support/fake_platform.h"

#include <cmath>
#include <gtest/gtest.h>

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

} // namespace

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
        {"Timer2Interval,  300 \r\n-999999  1  2  3  4  5 \r\n 0  1\r\n\r\n",
         "line 4: " + data + "; found an empty line"},
        {kGood.left(kGood.indexOf("Scanned")),
         "line 10: the file ends here; expected the trailer line \"Scanned:\""},
        {QByteArray(kGood).replace("ms2:,1", "ms2:,3"),
         "line 18: expected the X mode \"Reading1_ms2:,1\" or \"Reading1_ms2:,2\"; found "
         "\"Reading1_ms2:,3\""},
        {kGood + "more\r\n", "line 19: expected the end of the file or appended block lines "
                             "(\"-999999\" and five whole numbers); found \"more\""},
        {QByteArray("Timer2Interval, 300\r\n-999999 1 2 3 4 5\r\n\x01\x02\x85") +
             QByteArray(70, 'z'),
         "line 3: " + data + "; found \"???zzz"},
    };
    for (const Case& c : cases) {
        const QString got = readError(c.bytes);
        if (c.bytes.contains('\x01'))
            EXPECT_TRUE(got.startsWith(c.error)) << got.toStdString();
        else
            EXPECT_EQ(got.toStdString(), c.error.toStdString());
    }
}

TEST(SampleReader, FilesOnDiskAndTheIntegrationText) {
    SampleFileContent c;
    SampleFileError error;
    EXPECT_FALSE(readSampleFile("/nonexistent/All_data.txt", c, error));
    EXPECT_EQ(error.text(), "the file does not exist");
    EXPECT_FALSE(readSampleFile("/", c, error));
    EXPECT_EQ(error.text(), "the file cannot be read");
}
