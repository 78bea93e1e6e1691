#include "files/sample_file.h"

#include "base/numeric.h"
#include "support/fake_platform.h"
#include "temp_folder.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>
#include <gtest/gtest.h>

using namespace torv;
using torv::test::FakePlatform;
using torv::test::ProgramEnded;

namespace {

const QString kFile = "All_data.txt";

const QByteArray kHead = "Timer2Interval,  300 \r\n";

// The fixed lines after the data.
QByteArray trailer(const char* samples, const char* rate = "20", const char* buffer = "12",
                   const char* mode = "1") {
    return QStringLiteral("-1, -1\r\nStartDateTime:2/19/2004 10:30:53 AM\r\nTORV-NET  \r\n"
                          "Sampling Rate: %1 (ms.)\r\nScanned:\r\nInegrationBufferSize: %2\r\n"
                          "Gain Bias Resol. Units LoLimit HiLimit\r\n"
                          "  36   49 0.0002 kg     0.234   4.321\r\n"
                          "Average Minimum Maximum Delta1 Delta2 Cnt1 Cnt2\r\n"
                          " 1107  801  1398 -306  291  1  1\r\nSamples: %3\r\n"
                          "Value1_A2D:, 1 \r\nReading1_ms2:,%4\r\n")
        .arg(rate, buffer, samples, mode)
        .toLatin1();
}

class SampleFileTest : public torv::test::InTempFolder {
protected:
    void SetUp() override {
        InTempFolder::SetUp();
        data.startDateTime = "2/19/2004 10:30:53 AM";
        data.readingsAllocated = true;
    }
    void setBlock(int i, Int32 a, Int32 b, Int32 c, Int32 d, Int32 last) {
        data.blocks[i] = BlockRecord{{a, b, c, d, last}};
    }
    QByteArray save(Int32 first, Int32 count) {
        SaveMemory2File(p, kFile, first, count, data, info);
        return get(kFile);
    }
    FakePlatform p;
    SampleData data;
    TrailerInfo info{"20", "kg", 1};
};

} // namespace

TEST_F(SampleFileTest, OneSessionByteForByte) {
    setBlock(0, 1, 2, 40, 2, 2);
    setBlock(1, 1, 3, 95, 4, 4);
    data.readings = {"1.234", "1.240", "1.251", "1.262", "-0.5"};
    EXPECT_EQ(save(0, 2), kHead +
                              "-999999  1  2  40  2  2 \r\n 0  1.234\r\n 1  1.240\r\n"
                              " 2  1.251\r\n-999999  1  3  95  4  4 \r\n 3  1.262\r\n"
                              " 4  -0.5\r\n" +
                              trailer("4"));
    EXPECT_TRUE(p.dialogs.empty());
    EXPECT_EQ(entries(), QStringList{kFile});
    // The real-time writer: readings 0 to the count, in one block.
    data.rtReadingCount = 2;
    Save_RT_Weight_to_File(p, kFile, data, info);
    EXPECT_TRUE(get(kFile).contains(" 1  1.240\r\n 2  1.251\r\n-1, -1"));

    // No blocks: still the frame.
    info = {"5", "kg", 2};
    EXPECT_EQ(save(0, 0), kHead + trailer("-1", "5", "5", "2"));
}

TEST_F(SampleFileTest, BadReadingRepeatsItsPredecessorInMemoryToo) {
    setBlock(0, 1, 1, 1, 1, 2);
    data.readings = {"5", "x", "7"};
    EXPECT_TRUE(save(0, 1).contains("\r\n 0  5\r\n 1  5\r\n 2  7\r\n-1, -1"));
    EXPECT_EQ(data.readings[1], "5");
}

TEST_F(SampleFileTest, BlockLinesCarrySignsAndWarnings) {
    setBlock(0, -3, 0, 0, 3, 0); // adds up to 0
    setBlock(1, 0, 0, 0, 1, -1); // adds up to 0 too, and has no readings
    data.readings = {"1"};
    const QByteArray text = save(0, 2);
    EXPECT_TRUE(
        text.contains("\r\n-999999 -3  0  0  3  0 \r\n 0  1\r\n-999999  0  0  0  1 -1 \r\n"));
    EXPECT_EQ(p.messages(), (QStringList{"<<<<<>>>>>", "<<<<<>>>>>"}));
    EXPECT_TRUE(text.contains("Samples: 0"));
}

TEST_F(SampleFileTest, FailuresLeaveTheOldFile) {
    put(kFile, "old");
    setBlock(0, 1, 0, 0, 0, 5); // points past the reading list
    data.readings = {"1", "2"};
    EXPECT_THROW(save(0, 1), RuntimeError);
    data.rtReadingCount = 2;
    EXPECT_THROW(Save_RT_Weight_to_File(p, kFile, data, info), RuntimeError);
    EXPECT_EQ(get(kFile), "old");
    EXPECT_EQ(data.readings, (std::vector<QString>{"1", "2"}));

    // A full disk ends the program with the system's message.
    QStandardPaths::setTestModeEnabled(true);
    {
        torv::test::FileSizeLimit limit(100);
        EXPECT_THROW(SaveMemory2File(p, kFile, 0, 0, data, info), ProgramEnded);
    }
    EXPECT_TRUE(p.lastMessage().startsWith("Run-time error '61': Disk full\n"));
    EXPECT_EQ(get(kFile), "old");
    // No temporary file is left behind; the copy of "old" kept before the write may stay.
    EXPECT_EQ(entries().filter(QRegularExpression("^(?!All_data-kept-)")), QStringList{kFile});
}

TEST_F(SampleFileTest, UnwritableFileLeavesTheReadingsInANamedRecoveryFile) {
    QStandardPaths::setTestModeEnabled(true);
    data.readings = {"1.5", "2.5"};
    data.rtReadingCount = 1;
    setBlock(0, 1, 0, 0, 0, 1);
    const QByteArray session = memoryFileText(p, 0, 1, data, info);
    const QByteArray realTime = *rtWeightFileText(data, info);
    struct Row {
        QString path;
        bool session;
    };
    const Row rows[] = {{"missing/" + kFile, true}, {"missing/rt.txt", false}};
    int ends = 0;
    for (const Row& r : rows) {
        if (r.session)
            EXPECT_THROW(SaveMemory2File(p, r.path, 0, 1, data, info), ProgramEnded);
        else
            EXPECT_THROW(Save_RT_Weight_to_File(p, r.path, data, info), ProgramEnded);
        EXPECT_EQ(p.errorEndings, ++ends) << r.path.toStdString();
        const QString message = p.lastMessage();
        const QString said = "The readings were saved to ";
        ASSERT_TRUE(message.contains(said)) << message.toStdString();
        const QString recovery = message.mid(message.indexOf(said) + said.size());
        EXPECT_TRUE(QFileInfo(recovery).isAbsolute()) << recovery.toStdString();
        EXPECT_EQ(get(recovery), r.session ? session : realTime) << recovery.toStdString();
        QFile::remove(recovery);
    }
}

// Replacing a file that holds readings keeps the old one beside it; the new one is written as
// it always was.
TEST_F(SampleFileTest, AReplacedSessionIsKeptBesideTheNewFile) {
    setBlock(0, 1, 2, 40, 2, 2);
    data.readings = {"1.234", "1.240", "1.251"};
    const QByteArray first = save(0, 1);
    data.readings = {"2.000", "2.100", "2.200"};
    const QByteArray second = memoryFileText(p, 0, 1, data, info);
    KeptFile kept;
    SaveMemory2File(p, kFile, 0, 1, data, info, &kept);
    EXPECT_EQ(get(kFile), second);
    ASSERT_FALSE(kept.path.isEmpty());
    EXPECT_TRUE(QFileInfo(kept.path).fileName().contains(
        QRegularExpression("^All_data-kept-\\d{8}-\\d{6}\\.txt$")))
        << qPrintable(kept.path);
    EXPECT_EQ(get(kept.path), first);

    // Nothing to keep: the same bytes again, a file without readings, no file at all.
    kept = {};
    SaveMemory2File(p, kFile, 0, 1, data, info, &kept);
    put("empty.txt", memoryFileText(p, 0, 0, data, info));
    put("blank.txt", "");
    for (const QString& name : {QString("empty.txt"), QString("blank.txt"), QString("none.txt")})
        EXPECT_TRUE(keepPreviousDataFile(name, second).path.isEmpty()) << qPrintable(name);
    EXPECT_TRUE(kept.path.isEmpty() && kept.error.isEmpty());
    // A file that is no data file of ours is kept rather than lost.
    put("notes.txt", "my own notes");
    EXPECT_FALSE(keepPreviousDataFile("notes.txt", second).path.isEmpty());
}

TEST_F(SampleFileTest, OnlyTheNewestKeptCopiesStay) {
    put(kFile, "x");
    const QDateTime t0(QDate(2026, 11, 24), QTime(19, 58, 3));
    QStringList made;
    for (int i : {0, 0, 0, 1, 2, 3, 4}) // three saves within one second
        made << QFileInfo(keepPreviousDataFile(kFile, "y", t0.addSecs(i), 3).path).fileName();
    EXPECT_EQ(made.mid(0, 3), (QStringList{"All_data-kept-20261124-195803.txt",
                                           "All_data-kept-20261124-195803~2.txt",
                                           "All_data-kept-20261124-195803~3.txt"}));
    EXPECT_EQ(entries(),
              (QStringList{"All_data-kept-20261124-195805.txt", "All_data-kept-20261124-195806.txt",
                           "All_data-kept-20261124-195807.txt", kFile}));
}
