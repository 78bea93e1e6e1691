// The one argument "Show History Graph" gives the viewer: built by the panel, taken apart by
// the viewer into the same file, mode and integration.

#include "files/viewer_argument.h"

#include <gtest/gtest.h>

using namespace torv;

TEST(ViewerArgument, TheViewerTakesApartWhatThePanelBuilds) {
    struct Case {
        QString folder, file;
        int mode;
        QString integration;
        QString argument;
        QStringList candidates;
    };
    const Case cases[] = {
        {"/data/runs",
         "run7.txt",
         2,
         "20",
         "/data/runs/run7.txt/2/20",
         {"/data/runs/run7.txt", "/data/runs"}},
        {"/d", "All_data.txt", 1, "", "/d/All_data.txt/1/", {"/d/All_data.txt", "/d"}},
        // No folder remembered: the file name stands in for it.
        {"All_data.txt",
         "All_data.txt",
         1,
         "5",
         "All_data.txt/All_data.txt/1/5",
         {"All_data.txt/All_data.txt", "All_data.txt"}},
        {"/a b/c", "x/y.txt", 2, "8", "/a b/c/x/y.txt/2/8", {"/a b/c/x/y.txt", "/a b/c/x"}},
    };
    for (const Case& c : cases) {
        const QString argument = historyViewerArgument(c.folder, c.file, c.mode, c.integration);
        EXPECT_EQ(argument, c.argument);
        const auto parsed = parseHistoryViewerArgument(argument);
        ASSERT_TRUE(parsed) << argument.toStdString();
        EXPECT_EQ(parsed->xMode, c.mode);
        EXPECT_EQ(parsed->integration, c.integration);
        EXPECT_EQ(parsed->candidates(), c.candidates);
    }
    for (const char* plain : {"All_data.txt", "/data/run.txt", "/1/5", "a/3/20", "a/12/20", "/"})
        EXPECT_FALSE(parseHistoryViewerArgument(plain)) << plain;
}
