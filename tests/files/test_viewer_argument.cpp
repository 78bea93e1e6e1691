// The one argument "Show History Graph" gives the viewer: built by the panel, taken apart by
// the viewer into the same file, mode and integration.

#include "files/viewer_argument.h"

#include <gtest/gtest.h>

using namespace torv;

TEST(ViewerArgument, TheViewerTakesApartWhatThePanelBuilds) {
    // folder, file, X mode, integration -> the argument, then the viewer's candidate files.
    // With no folder remembered the file name stands in for it.
    const QStringList rows[] = {
        {"/data/runs", "run7.txt", "2", "20", "/data/runs/run7.txt/2/20", "/data/runs/run7.txt",
         "/data/runs"},
        {"/d", "All_data.txt", "1", "", "/d/All_data.txt/1/", "/d/All_data.txt", "/d"},
        {"All_data.txt", "All_data.txt", "1", "5", "All_data.txt/All_data.txt/1/5",
         "All_data.txt/All_data.txt", "All_data.txt"},
        {"/a b/c", "x/y.txt", "2", "8", "/a b/c/x/y.txt/2/8", "/a b/c/x/y.txt", "/a b/c/x"}};
    for (const QStringList& r : rows) {
        const QString argument = historyViewerArgument(r[0], r[1], r[2].toInt(), r[3]);
        EXPECT_EQ(argument, r[4]);
        const auto parsed = parseHistoryViewerArgument(argument);
        ASSERT_TRUE(parsed) << argument.toStdString();
        EXPECT_EQ(QString::number(parsed->xMode) + parsed->integration, r[2] + r[3]);
        EXPECT_EQ(parsed->candidates(), r.mid(5));
    }
    for (const char* plain : {"All_data.txt", "/data/run.txt", "/1/5", "a/3/20", "a/12/20", "/"})
        EXPECT_FALSE(parseHistoryViewerArgument(plain)) << plain;
}
