// The real transport on Qt sockets against the card simulator on loopback.

#include "sim/sim_host.h"
#include "support/loopback_platform.h"

#include <gtest/gtest.h>

using namespace torv;
using namespace torv::test;
using torv::sim::Fault;

namespace {

// What the card read: function, body and Content-Length of each request.
QStringList wireLog(const sim::SimHost& sim) {
    QStringList out;
    for (const sim::RequestRecord& r : sim.requests())
        out << QStringLiteral("%1 %2 %3").arg(r.function, r.body).arg(r.contentLength);
    return out;
}

class LoopbackTest : public ::testing::Test {
protected:
    void SetUp() override {
        port = sim.start();
        ASSERT_NE(port, 0);
    }
    sim::SimHost sim;
    quint16 port = 0;
    LoopbackPlatform platform;
};

// The socket client alone: the TcpClient contract on real sockets.
class SocketClientTest : public LoopbackTest {
protected:
    std::unique_ptr<TcpClient> connectAndAsk() {
        auto client = platform.createTcpClient();
        client->onConnect = [c = client.get()] {
            c->send("POST /GetRTStatus\r\n");
            c->send("Content-Length: 4\r\n\r\n");
            c->send("ID=4\r\n");
        };
        client->onError = [this](int, const QString&) { ++errors; };
        client->connectToHost("127.0.0.1", port);
        return client;
    }
    int errors = 0;
};

TEST_F(SocketClientTest, LargeAnswerArrivesInPiecesThenTheClose) {
    Fault oversize;
    oversize.kind = Fault::Kind::Oversize;
    sim.injectFault(oversize);
    auto client = connectAndAsk();
    QByteArray all;
    QList<qsizetype> sizes;
    bool closed = false;
    client->onDataArrival = [&](const QByteArray& data) {
        EXPECT_FALSE(closed);
        all += data;
        sizes << data.size();
    };
    client->onClose = [&] { closed = true; };
    ASSERT_TRUE(platform.runUntil([&] { return closed; }, 10000));
    EXPECT_EQ(errors, 0);
    EXPECT_GT(all.size(), 32767);
    EXPECT_TRUE(all.contains("</GetRTStatus>"));
    EXPECT_GE(sizes.size(), 5);
    for (qsizetype n : sizes)
        EXPECT_LE(n, 8192);
    EXPECT_EQ(wireLog(sim), QStringList{"GetRTStatus ID=4 4"});
}

TEST_F(SocketClientTest, ClosedOrDestroyedInsideItsCallbackReportsNothingMore) {
    for (bool destroy : {false, true}) {
        std::unique_ptr<TcpClient> client = connectAndAsk();
        bool gotData = false, closed = false;
        client->onDataArrival = [&](const QByteArray&) {
            EXPECT_FALSE(gotData); // nothing after our own close
            gotData = true;
            if (destroy)
                client.reset();
            else
                client->close();
        };
        client->onClose = [&] { closed = true; };
        ASSERT_TRUE(platform.runUntil([&] { return gotData; }, 5000));
        platform.runUntil([] { return false; }, 300);
        EXPECT_FALSE(closed);
        EXPECT_EQ(errors, 0);
    }
}

} // namespace
