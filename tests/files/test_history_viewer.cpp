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
    DataFilePaths paths;
    QString name = "All_data.txt";
};
} // namespace

TEST_F(HistoryViewerTest, BrowseRemembersTheChosenFile) {
    p.fileDialogAnswer = "/data/runs/run7.txt";
    SelectPath(p, paths, name);
    ASSERT_EQ(p.fileDialogs.size(), 1u);
    EXPECT_EQ(p.fileDialogs[0].initialFolder + "|" + p.fileDialogs[0].fileName, "|All_data.txt");
    EXPECT_EQ(p.fileDialogs[0].filter,
              "Text (*.txt)|*.txt|*.doc|L*.*|All_data*.*|All files (*.*)|*.*");
    EXPECT_EQ(p.fileDialogs[0].filterIndex, 2);
    EXPECT_EQ(paths.fullPath + "|" + paths.folder + "|" + name,
              "/data/runs/run7.txt|/data/runs|run7.txt");

    p.fileDialogAnswer.reset(); // cancelled: quietly nothing
    SelectPath(p, paths, name);
    EXPECT_EQ(p.fileDialogs[1].initialFolder + "|" + p.fileDialogs[1].fileName,
              "/data/runs|run7.txt");
    EXPECT_EQ(paths.fullPath + "|" + name, "/data/runs/run7.txt|run7.txt");
    EXPECT_TRUE(p.dialogs.empty());
}

TEST_F(HistoryViewerTest, ViewerGetsFileModeAndIntegration) {
    put("trendlog", "");
    paths.folder = "/data/runs";
    EXPECT_TRUE(CmdShowGraph_Click(p, paths, "run7.txt", 2, "20"));
    ASSERT_EQ(p.startedPrograms.size(), 1u);
    EXPECT_EQ(p.startedPrograms[0].first, dir.path() + "/trendlog");
    EXPECT_EQ(p.startedPrograms[0].second, QStringList{"/data/runs/run7.txt/2/20"});

    // No folder remembered: the file name stands in for it, and is remembered.
    paths = {};
    EXPECT_TRUE(CmdShowGraph_Click(p, paths, name, 1, "5"));
    EXPECT_EQ(p.startedPrograms[1].second, QStringList{"All_data.txt/All_data.txt/1/5"});
    EXPECT_EQ(paths.folder, "All_data.txt");
    EXPECT_TRUE(p.dialogs.empty());
}

TEST_F(HistoryViewerTest, MissingOrFailingViewerIsReported) {
    EXPECT_FALSE(CmdShowGraph_Click(p, paths, name, 1, "5"));
    EXPECT_TRUE(p.startedPrograms.empty());
    EXPECT_EQ(p.lastMessage(),
              "The history viewer \"trendlog\" is not installed in " + dir.path() + ".");

    put("Trendlog.exe", "");
    p.startProgramSucceeds = false;
    EXPECT_FALSE(CmdShowGraph_Click(p, paths, name, 1, "5"));
    EXPECT_EQ(p.startedPrograms.at(0).first, dir.path() + "/Trendlog.exe");
    EXPECT_EQ(p.dialogs.size(), 2u);
}

TEST_F(HistoryViewerTest, ShutDownClosesEveryListedViewer) {
    closeHistoryViewers(p, dir.path()); // no list: nothing
    put("hWndListTrendlog", "123\r\n 456 \r\njunk\r\n-5\r\n\r\n0\r\n99999999999999999999\r\n789");
    closeHistoryViewers(p, dir.path());
    EXPECT_EQ(p.closedWindows, (std::vector<std::int64_t>{123, 456, 789}));

    p.closedWindows.clear();
    QByteArray binary(70000, '\0');
    for (int i = 0; i < binary.size(); ++i)
        binary[i] = char(i * 131);
    put("hWndListTrendlog", binary);
    closeHistoryViewers(p, dir.path());
    EXPECT_TRUE(p.closedWindows.empty());
}
