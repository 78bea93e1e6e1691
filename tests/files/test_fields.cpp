#include "files/fields.h"

#include "base/runtime_error.h"
#include "temp_folder.h"

#include "support/run_time_errors.h"

#include <algorithm>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace torv;
using torv::test::FileSizeLimit;
using torv::test::InTempFolder;

using torv::test::errorOf;

TEST(FieldReaderTest, FieldsEndAtCommasAndAnyLineEnd) {
    FieldReader in("IPaddress,  10.0.0.7 \r\nA, 1\nB,\rlast");
    QStringList fields; // blanks are skipped before a value only; a bare CR ends a value
    for (int i = 0; i < 6; ++i)
        fields << in.readField();
    EXPECT_EQ(fields, QStringList({"IPaddress", "10.0.0.7 ", "A", "1", "B", ""}));
    EXPECT_EQ(in.readLine(), "last");
    EXPECT_TRUE(in.atEnd());
    EXPECT_EQ(errorOf([&] { in.readField(); }), 62);
    EXPECT_EQ(errorOf([&] { in.readLine(); }), 62);
}

TEST(PrintNumberTest, SignTakesTheLeadingBlank) {
    EXPECT_EQ(printNumber(0) + printNumber(300) + printNumber(-3) + printNumber(-2147483648LL),
              " 0  300 -3 -2147483648 ");
}

using SafeWriteTest = InTempFolder;

TEST_F(SafeWriteTest, ReplacesWholeAndLeavesNoTemporaryFile) {
    put("data.txt", "old content that is longer");
    writeTextFile("data.txt", "new\r\n");
    EXPECT_EQ(get("data.txt"), "new\r\n");
    EXPECT_EQ(entries(), QStringList{"data.txt"});
}

TEST_F(SafeWriteTest, FailedWriteKeepsTheOldFile) {
    put("data.txt", "old");
    const QByteArray big(64 * 1024, 'x');
    {
        FileSizeLimit limit(4096);
        EXPECT_EQ(errorOf([&] { writeTextFile("data.txt", big); }), 61);
        EXPECT_EQ(errorOf([&] { appendTextFile("data.txt", big); }), 61);
    }
    EXPECT_EQ(get("data.txt"), "old"); // neither half a file nor a partial append
    EXPECT_EQ(entries(), QStringList{"data.txt"});
}

TEST_F(SafeWriteTest, PathErrorsCarryTheirNumbers) {
    QDir().mkdir("folder");
    EXPECT_EQ(errorOf([] { writeTextFile("no_such_folder/x.txt", "a"); }), 76);
    EXPECT_EQ(errorOf([] { appendTextFile("no_such_folder/x.txt", "a"); }), 76);
    EXPECT_EQ(errorOf([] { writeTextFile("folder", "a"); }), 75);
    EXPECT_EQ(errorOf([] { writeTextFile("", "a"); }), 75);
    EXPECT_TRUE(QFileInfo("folder").isDir());
}
