// Randomized inputs (fixed seeds) for element extraction and answer completion: whatever a
// card sends, only the documented outcomes occur.

#include "link/catalogue.h"
#include "link/elements.h"
#include "link/transport.h"
#include "link_recorders.h"
#include "support/fake_platform.h"

#include "base/runtime_error.h"

#include <gtest/gtest.h>
#include <random>

using namespace torv;
using namespace torv::test;

namespace {

class Noise {
public:
    explicit Noise(std::uint32_t seed)
        : rng_(seed) {}
    int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(rng_); }

    // Bytes with a bias toward tag fragments, so tags meet, split and overlap often.
    QByteArray bytes(int pieces) {
        static const QList<QByteArray> fragments =
            QByteArray("<A2D>|</A2D>|<|>|/|A2D|</|<W0>|</W0>|\r\n|</GetRTStatus|</GetRTStatus>|"
                       "GetRT|Status>")
                .split('|');
        QByteArray out;
        for (int i = 0; i < pieces; ++i) {
            if (below(3) == 0)
                out += fragments[below(static_cast<int>(fragments.size()))];
            else
                out += static_cast<char>(below(256));
        }
        return out;
    }

private:
    std::mt19937 rng_;
};

TEST(Fuzz, ElementExtractionHasOnlyDocumentedOutcomes) {
    Noise noise(20040219);
    FakePlatform platform;
    const QString tags[] = {"<A2D>", "<W0>", "<>",     "<A2D",   "A2D>",
                            "",      "<</>", "<A2D>>", "<<A2D>", "</A2D>"};
    int found = 0, missing = 0, ended = 0, overflows = 0, invalidCalls = 0;
    for (int i = 0; i < 4000; ++i) {
        QString xml = QString::fromLatin1(noise.bytes(noise.below(60)));
        if (noise.below(100) == 0) xml += QString(32700 + noise.below(100), QLatin1Char('.'));
        const QString tag = tags[noise.below(static_cast<int>(std::size(tags)))];
        const bool wellFormed = tag.startsWith('<') && tag.endsWith('>');
        const QString closing = "</" + tag.mid(1);
        const QString before = QStringLiteral("prev");
        QString value = before;
        platform.dialogs.clear();
        try {
            if (Get_XML_Element_Data(platform, xml, tag, value)) {
                ++found;
                const qsizetype open = xml.indexOf(tag);
                ASSERT_GE(open, 0);
                // The value runs from the opening tag to the first closing tag.
                EXPECT_EQ(xml.indexOf(closing), open + tag.size() + value.size());
                EXPECT_EQ(xml.mid(open + tag.size(), value.size()), value);
            } else {
                ++missing;
                EXPECT_EQ(value, before);
                EXPECT_TRUE(xml.indexOf(tag) < 0 || xml.indexOf(closing) < 0);
            }
            EXPECT_TRUE(wellFormed);
            EXPECT_LE(xml.size(), 32767);
        } catch (const ProgramEnded&) {
            ++ended;
            EXPECT_FALSE(wellFormed);
            EXPECT_EQ(platform.lastMessage(),
                      "Invalid XML element:prev\r\n At least one of '<','>' is absent ");
        } catch (const RuntimeError& e) {
            ASSERT_TRUE(wellFormed);
            if (e.number() == RuntimeError::Overflow) {
                ++overflows;
                EXPECT_GT(xml.size(), 32767);
            } else {
                ++invalidCalls;
                ASSERT_EQ(e.number(), RuntimeError::InvalidCall);
                EXPECT_LT(xml.indexOf(closing), xml.indexOf(tag) + tag.size());
                EXPECT_GE(xml.indexOf(closing), 0);
            }
            EXPECT_EQ(value, before);
        }
    }
    // Every outcome was reached, so the run exercised them all.
    EXPECT_GT(found, 50);
    EXPECT_GT(missing, 50);
    EXPECT_GT(ended, 50);
    EXPECT_GT(overflows, 5);
    EXPECT_GT(invalidCalls, 5);
}

TEST(Fuzz, CompletionOverArbitraryArrivals) {
    Noise noise(7);
    FakePlatform platform;
    RecordingView view;
    RecordingHandlers handlers;
    Transport t(platform, view, handlers);
    handlers.onAnswer = [&](const QString&) { t.IssueRequest(false); };
    const QByteArray tag = "</GetRTStatus";
    int dispatched = 0, overflowCases = 0;
    for (int round = 0; round < 1500; ++round) {
        t.req.strFunctionName = fn::GetRTStatus;
        t.IssueRequest(true);
        FakeTcpClient* socket = platform.socket();
        socket->fireConnect();
        platform.dialogs.clear();
        const int before = static_cast<int>(handlers.calls.size());

        QByteArray all;
        bool done = false, sawBigMiss = false;
        const int chunks = 1 + noise.below(8);
        for (int c = 0; c < chunks && !done; ++c) {
            QByteArray chunk = noise.bytes(noise.below(40));
            if (noise.below(60) == 0) chunk += QByteArray(32760 + noise.below(20), 'x');
            all += chunk;
            const bool wasWholeInChunk = chunk.contains(tag);
            socket->deliver(chunk);
            done = handlers.calls.size() > before;
            if (done) {
                EXPECT_EQ(t.req.strResponse.toLatin1(), all); // every byte, in order
                EXPECT_TRUE(all.contains(tag));
            } else {
                // A closing tag that arrives whole is always seen.
                EXPECT_FALSE(wasWholeInChunk) << round;
                EXPECT_EQ(t.strRecvBuffer.toLatin1(), all);
                if (chunk.size() > 32767) sawBigMiss = true;
            }
        }
        if (!all.contains(tag)) {
            EXPECT_FALSE(done);
        }
        EXPECT_LE(handlers.calls.size(), before + 1);
        for (const QString& m : platform.messages())
            EXPECT_EQ(m, "Run-time error '6': Overflow");
        if (sawBigMiss) {
            ++overflowCases;
            EXPECT_FALSE(platform.dialogs.empty());
        }
        dispatched += done ? 1 : 0;
        socket->deliver(tag); // late data on a finished or abandoned exchange
        EXPECT_LE(handlers.calls.size(), before + 1);
    }
    EXPECT_GT(dispatched, 200);
    EXPECT_LT(dispatched, 1400);
    EXPECT_GT(overflowCases, 3);
}

} // namespace
