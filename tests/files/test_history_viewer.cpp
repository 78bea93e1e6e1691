#include "files/history_viewer.h"

#include "support/fake_platform.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

using namespace torv;
using torv::test::FakePlatform;

namespace {
class HistoryViewerTest : public torv::test::InTempFolder {
protected:
    void SetUp() override {
        InTempFolder::SetUp();
        p.folder = dir.path();
    }
    FakePlatform p;
    QString name = "All_data.txt";
};
} // namespace

TEST_F(HistoryViewerTest, DataFileDialogGivesTheAbsolutePathOrNothing) {
    p.fileDialogAnswer = "/data/runs/run7.txt";
    EXPECT_EQ(chooseDataFile(p, "/data", name).value_or("<none>"), "/data/runs/run7.txt");
    ASSERT_EQ(p.fileDialogs.size(), 1u);
    EXPECT_EQ(p.fileDialogs[0].initialFolder + "|" + p.fileDialogs[0].fileName,
              "/data|All_data.txt");
    EXPECT_EQ(p.fileDialogs[0].filter,
              "Text (*.txt)|*.txt|*.doc|L*.*|All_data*.*|All files (*.*)|*.*");
    EXPECT_EQ(p.fileDialogs[0].filterIndex, 2);
    p.fileDialogAnswer = "run8.txt"; // relative to the current folder
    EXPECT_EQ(chooseDataFile(p, "", name).value_or("<none>"), dir.path() + "/run8.txt");
    p.fileDialogAnswer.reset(); // cancelled: quietly nothing
    EXPECT_FALSE(chooseDataFile(p, "", name).has_value());
    EXPECT_TRUE(p.dialogs.empty());
}

TEST_F(HistoryViewerTest, MissingOrFailingViewerIsReported) {
    EXPECT_EQ(startHistoryViewer(p, "", name, 1, "5"), 0);
    EXPECT_TRUE(p.startedPrograms.empty());
    EXPECT_EQ(p.lastMessage(),
              "The history viewer \"trendlog\" is not installed in " + dir.path() + ".");

    put("trendlog", "");
    EXPECT_NE(startHistoryViewer(p, "/data/runs", "run7.txt", 2, "20"), 0);
    EXPECT_EQ(p.startedPrograms.at(0).first, dir.path() + "/trendlog");
}

TEST_F(HistoryViewerTest, ShutDownClosesTheListedViewersThisPanelStarted) {
    const std::vector<std::int64_t> ours{123, 456, 789, 5, 0};
    closeHistoryViewers(p, dir.path(), ours); // no list: nothing
    // 321 is another panel's viewer or one opened by hand.
    put("hWndListTrendlog",
        "123\r\n 456 \r\njunk\r\n321\r\n-5\r\n\r\n0\r\n99999999999999999999\r\n789");
    closeHistoryViewers(p, dir.path(), ours);
    EXPECT_EQ(p.closedWindows, (std::vector<std::int64_t>{123, 456, 789}));
}

TEST(ViewerListFolder, ProgramFolderWhenWritableElseTheUsersOwn) {
    QTemporaryDir writable;
    EXPECT_EQ(viewerListFolder(writable.path()), writable.path());
    const QString own = viewerListFolder("/nonexistent/torv"); // no folder to write in
    EXPECT_NE(own, "/nonexistent/torv");
    EXPECT_TRUE(QFileInfo(own).isDir() && QFileInfo(own).isWritable()) << qPrintable(own);
    EXPECT_EQ(viewerListFolder("/nonexistent/torv"), own); // the panel and the viewer agree
}
