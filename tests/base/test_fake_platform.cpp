#include "support/fake_platform.h"

#include <gtest/gtest.h>

using namespace torv;
using namespace torv::test;

// The fake is what every logic test stands on: its clock, timers and sockets must behave
// like the real ones in the ways the logic relies on.
TEST(FakePlatformTest, TimersFireOnTheirIntervalOnlyWhileEnabled) {
    FakePlatform p;
    auto t = p.createTimer();
    int ticks = 0;
    t->onTick = [&] { ++ticks; };
    t->setInterval(100);
    p.advance(250);
    t->setEnabled(true);
    p.advance(250);
    t->setEnabled(true); // enabling a running timer does not restart it
    p.advance(50);
    EXPECT_EQ(ticks, 3);
    t->setEnabled(false);
    p.advance(500);
    EXPECT_EQ(ticks, 3);
    bool fired = false; // scheduled actions run on the clock, not on processEvents alone
    p.after(5, [&] { fired = true; });
    p.processEvents();
    EXPECT_FALSE(fired);
    p.advance(4);
    EXPECT_TRUE(fired);
}

TEST(FakePlatformTest, SocketsRecordTheWireAndSurviveDeletionInCallbacks) {
    FakePlatform p;
    std::unique_ptr<TcpClient> s = p.createTcpClient();
    s->onDataArrival = [&](const QByteArray&) { s.reset(); };
    s->connectToHost("10.0.0.2", 80);
    s->send("abc");
    ASSERT_NE(p.socket(), nullptr);
    p.socket()->deliver("x"); // destroys the client inside its own callback
    EXPECT_EQ(p.socket(), nullptr);
    EXPECT_EQ(p.wire, (QStringList{"connect 10.0.0.2:80", "send abc"}));
}
