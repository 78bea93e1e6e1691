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
    appendTextFile("data.txt", "+more");
    EXPECT_EQ(get("data.txt"), "old+more");
}

TEST_F(SafeWriteTest, PathErrorsCarryTheirNumbers) {
    QDir().mkdir("folder");
    EXPECT_EQ(errorOf([] { writeTextFile("no_such_folder/x.txt", "a"); }), 76);
    EXPECT_EQ(errorOf([] { appendTextFile("no_such_folder/x.txt", "a"); }), 76);
    EXPECT_EQ(errorOf([] { writeTextFile("folder", "a"); }), 75);
    EXPECT_EQ(errorOf([] { writeTextFile("", "a"); }), 75);
    EXPECT_TRUE(QFileInfo("folder").isDir());
}

TEST_F(SafeWriteTest, LinksLongNamesAndFoldersThatAreNotUtf8) {
    // A symbolic link is written through: its target changes, the link stays.
    put("target.txt", "old");
    ASSERT_TRUE(QFile::link("target.txt", "link.txt"));
    writeTextFile("link.txt", "new");
    EXPECT_EQ(get("target.txt"), "new");
    EXPECT_TRUE(QFileInfo("link.txt").isSymLink());

    // No temporary file can be made beside a name this long: the file is written in place.
    const QString longName = QString(250, 'n') + ".txt";
    put(longName, "old content");
    writeTextFile(longName, "new");
    EXPECT_EQ(get(longName), "new");

    // The current folder's name is not UTF-8.
    const QByteArray odd = "caf\xe9";
    ASSERT_EQ(::mkdir(odd.constData(), 0755), 0);
    ASSERT_EQ(::chdir(odd.constData()), 0);
    writeTextFile("data.txt", "inside");
    appendTextFile("data.txt", "+more");
    ASSERT_EQ(::chdir(".."), 0);
    const int fd = ::open((odd + "/data.txt").constData(), O_RDONLY);
    ASSERT_GE(fd, 0);
    char buffer[64] = {};
    const ssize_t n = ::read(fd, buffer, sizeof buffer);
    ::close(fd);
    EXPECT_EQ(QByteArray(buffer, static_cast<int>(std::max<ssize_t>(n, 0))), "inside+more");
}
