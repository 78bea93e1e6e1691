// Reading a request from bytes that arrive in any pieces.

#include "sim/card.h"
#include "sim/request_reader.h"

#include <gtest/gtest.h>

using namespace torv::sim;
using State = RequestReader::State;

namespace {

const QByteArray kSetD2A = "POST /SetD2A\r\nContent-Length: 12\r\n\r\nID=1&D2A=128\r\n";

void expectSetD2A(const RequestReader& r) {
    EXPECT_EQ(r.state(), State::Complete);
    EXPECT_EQ(r.function(), "SetD2A");
    EXPECT_EQ(r.contentLength(), 12);
    EXPECT_EQ(r.body(), "ID=1&D2A=128");
}

TEST(RequestReader, ReadsTheRequestSplitAnywhere) {
    for (int cut = 0; cut <= kSetD2A.size(); ++cut) {
        RequestReader r;
        r.feed(kSetD2A.left(cut));
        r.feed(kSetD2A.mid(cut));
        expectSetD2A(r);
        if (testing::Test::HasFailure()) FAIL() << "cut at " << cut;
    }
    RequestReader r;
    for (char c : kSetD2A) {
        EXPECT_NE(r.feed(QByteArray(1, c)), State::Failed);
    }
    expectSetD2A(r);
}

TEST(RequestReader, CompletesWithTheBodyWhateverFollows) {
    RequestReader r;
    // Complete before the trailing CR LF arrives, and bytes after the body are ignored.
    EXPECT_EQ(r.feed("POST /SetD2A\r\nContent-Length: 12\r\n\r\nID=1&D2A=128"), State::Complete);
    EXPECT_EQ(r.feed("\r\nPOST /junk"), State::Complete);
    expectSetD2A(r);

    RequestReader empty; // an empty body: complete at the blank line
    EXPECT_EQ(empty.feed("POST /StopSample\r\nContent-Length: 0\r\n\r\n"), State::Complete);
    EXPECT_EQ(empty.function(), "StopSample");
    EXPECT_EQ(empty.body(), "");

    RequestReader loose; // LF-only lines, a version, other headers, no Content-Length
    EXPECT_EQ(loose.feed("\r\nPOST /GetRTStatus HTTP/1.0\nHost: card\ncontent-length:4\n\nID=4"),
              State::Complete);
    EXPECT_EQ(loose.function(), "GetRTStatus");
    EXPECT_EQ(loose.body(), "ID=4");
    RequestReader none;
    EXPECT_EQ(none.feed("POST /GetRTStatus\r\n\r\n"), State::Complete);
    EXPECT_EQ(none.contentLength(), 0);
}

TEST(RequestReader, WaitsForAShortBody) {
    RequestReader r;
    EXPECT_EQ(r.feed("POST /SetD2A\r\nContent-Length: 12\r\n\r\nID=1&"), State::Incomplete);
    EXPECT_TRUE(r.hasRequestLine());
    EXPECT_EQ(r.body(), "ID=1&");
    EXPECT_EQ(r.contentLength(), 12);
}

TEST(RequestReader, RefusesWhatIsNoRequest) {
    struct Case {
        QByteArray bytes;
        int code;
    };
    const Case cases[] = {
        {"GET / HTTP/1.0\r\n\r\n", ErrBadRequest},
        {"G", ErrBadRequest}, // refused at once, without waiting for a line end
        {"\x16\x03\x01\x02", ErrBadRequest},
        {"POST /\r\n\r\n", ErrBadRequest},
        {"POST /SetD2A\r\nContent-Length: abc\r\n\r\n", ErrBadRequest},
        {"POST /SetD2A\r\nContent-Length: -1\r\n\r\n", ErrBadRequest},
        {"POST /SetD2A\r\nno colon here\r\n\r\n", ErrBadRequest},
        {"POST /SetD2A\r\nContent-Length: 70000\r\n\r\n", ErrTooLarge},
    };
    for (const auto& c : cases) {
        RequestReader r;
        EXPECT_EQ(r.feed(c.bytes), State::Failed) << c.bytes.constData();
        EXPECT_EQ(r.errorCode(), c.code) << c.bytes.constData();
        EXPECT_FALSE(r.errorDescription().isEmpty());
    }
    RequestReader partial; // a beginning that can still become a request
    EXPECT_EQ(partial.feed("PO"), State::Incomplete);
}

TEST(RequestReader, CapsTheHeaderSize) {
    RequestReader r(1024);
    EXPECT_EQ(r.feed("POST /GetRTStatus\r\n"), State::Incomplete);
    State s = State::Incomplete;
    for (int i = 0; i < 100 && s == State::Incomplete; ++i)
        s = r.feed("X-Filler: 0123456789012345678901234567890123456789\r\n");
    EXPECT_EQ(s, State::Failed);
    EXPECT_EQ(r.errorCode(), ErrTooLarge);
    EXPECT_LE(r.bytesReceived(), 1100);

    RequestReader endless(1024); // one line that never ends
    EXPECT_EQ(endless.feed("POST /" + QByteArray(2000, 'A')), State::Failed);
}

} // namespace
