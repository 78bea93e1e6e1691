// "hWndListTrendlog": each viewer adds its own line and removes only that line, whatever
// else the list holds or whether it is there at all.

#include "viewer/viewer_list.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace torv::viewer;

namespace {

QByteArray contentOf(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<none>");
}

} // namespace

TEST(ViewerList, EachViewerAddsAndRemovesItsOwnLine) {
    QTemporaryDir dir;
    const QString list = viewerListPath(dir.path());
    EXPECT_TRUE(list.endsWith("/hWndListTrendlog"));

    EXPECT_TRUE(addToViewerList(dir.path(), 4242));
    EXPECT_TRUE(addToViewerList(dir.path(), 77));
    EXPECT_TRUE(addToViewerList(dir.path(), 4242)); // never twice
    EXPECT_EQ(contentOf(list), "77\r\n4242\r\n");
    EXPECT_TRUE(removeFromViewerList(dir.path(), 4242));
    EXPECT_EQ(contentOf(list), "77\r\n");
    EXPECT_TRUE(removeFromViewerList(dir.path(), 77));
    EXPECT_EQ(contentOf(list), "<none>");
    EXPECT_TRUE(removeFromViewerList(dir.path(), 77)); // nothing there: nothing to do

    // A damaged list: other lines stay as they are, blank ones go.
    {
        QFile f(list);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(QByteArray("12\n\n\x01\xff garbage\r\n 4242 \r\r\n99"));
    }
    EXPECT_TRUE(removeFromViewerList(dir.path(), 4242));
    EXPECT_EQ(contentOf(list), QByteArray("12\r\n\x01\xff garbage\r\n99\r\n"));

    EXPECT_FALSE(addToViewerList(dir.filePath("no/such/folder"), 1));
}
