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

} // namespace
