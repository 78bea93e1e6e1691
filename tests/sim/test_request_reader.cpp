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
    RequestReader r; // byte by byte
    for (char c : kSetD2A)
        r.feed(QByteArray(1, c));
    expectSetD2A(r);
}

TEST(RequestReader, CompletesWithTheBodyWhateverFollows) {
    RequestReader r;
    // Complete before the trailing CR LF arrives, and bytes after the body are ignored.
    EXPECT_EQ(r.feed("POST /SetD2A\r\nContent-Length: 12\r\n\r\nID=1&D2A=128"), State::Complete);
    EXPECT_EQ(r.feed("\r\nPOST /junk"), State::Complete);
    expectSetD2A(r);

    // An empty body: complete at the blank line; LF-only lines, a version, other headers; no
    // Content-Length at all. Function, body and length as read.
    for (const auto& [bytes, read] :
         {std::pair{"POST /StopSample\r\nContent-Length: 0\r\n\r\n", "StopSample  0"},
          {"\r\nPOST /GetRTStatus HTTP/1.0\nHost: card\ncontent-length:4\n\nID=4",
           "GetRTStatus ID=4 4"},
          {"POST /GetRTStatus\r\n\r\n", "GetRTStatus  0"}}) {
        RequestReader one;
        EXPECT_EQ(one.feed(bytes), State::Complete) << bytes;
        EXPECT_EQ(
            QStringLiteral("%1 %2 %3").arg(one.function(), one.body()).arg(one.contentLength()),
            read);
    }

    RequestReader shortBody; // waits for the rest of the body
    EXPECT_EQ(shortBody.feed("POST /SetD2A\r\nContent-Length: 12\r\n\r\nID=1&"), State::Incomplete);
    EXPECT_TRUE(shortBody.hasRequestLine());
    EXPECT_EQ(shortBody.body(), "ID=1&");
}

TEST(RequestReader, RefusesWhatIsNoRequest) {
    // "G" is refused at once, without waiting for a line end.
    for (const QByteArray bad :
         {"GET / HTTP/1.0\r\n\r\n", "G", "\x16\x03\x01\x02", "POST /\r\n\r\n",
          "POST /SetD2A\r\nContent-Length: abc\r\n\r\n",
          "POST /SetD2A\r\nContent-Length: -1\r\n\r\n", "POST /SetD2A\r\nno colon here\r\n\r\n",
          "POST /SetD2A\r\nContent-Length: 70000\r\n\r\n"}) {
        RequestReader r;
        EXPECT_EQ(r.feed(bad), State::Failed) << bad.constData();
        EXPECT_EQ(r.errorCode(), bad.contains("70000") ? ErrTooLarge : ErrBadRequest)
            << bad.constData();
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
