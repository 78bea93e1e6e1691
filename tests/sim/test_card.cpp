// The card without sockets: its answers and state, on a clock the test moves by hand.

#include "sim/card.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace torv::sim;

namespace {

QString el(const QString& answer, const QString& name) {
    const QString open = QLatin1Char('<') + name + QLatin1Char('>');
    const auto a = answer.indexOf(open);
    const auto b = answer.indexOf("</" + name + QLatin1Char('>'));
    if (a < 0 || b < a) return {};
    return answer.mid(a + open.size(), b - a - open.size());
}

// The values of several elements, joined by '|'.
QString els(const QString& answer, const QStringList& names) {
    QStringList out;
    for (const QString& name : names)
        out << el(answer, name);
    return out.join('|');
}

QStringList readings(const QString& answer) {
    QStringList out;
    for (int n = 0;; ++n) {
        const QString v = el(answer, QStringLiteral("W%1").arg(n));
        if (v.isNull()) return out;
        out << v;
    }
}

class CardTest : public ::testing::Test {
protected:
    explicit CardTest(SimOptions o = quietOptions())
        : card(o) {
        card.setClock([this] { return now; });
    }
    static SimOptions quietOptions() {
        SimOptions o;
        o.inputsPeriodMs = 0;
        return o;
    }
    QString ask(const char* function, const QString& body = {}) {
        return card.answer(QLatin1String(function), body);
    }
    qint64 now = 0;
    Card card;
};

TEST_F(CardTest, SetPointOutputsFollowTheWeight) {
    card.setSignal({SignalKind::Ramp, 100, 1000, 0}); // weight = now / 10
    card.setOutputWord(0xFFFF);
    ask("SetSetpoints", QStringLiteral("ID=1&SETPOINT_1=50&SETPOINT_2=-1&SETPOINT_3=-1"
                                       "&SETPOINT_4=80"));
    now = 499; // 49.9: nothing reached
    EXPECT_EQ(els(ask("GetRTStatus"), {"SP_STATUS", "OUT_STATUS"}), "0|-1");
    now = 500; // 50: set point 1 reached, output 11 on
    EXPECT_EQ(els(ask("GetRTStatus"), {"SP_STATUS", "OUT_STATUS"}),
              "2|" + QString::number(qint16(0xFFFF & ~(1 << 10))));
    now = 900; // both
    EXPECT_EQ(els(ask("GetRTStatus"), {"SP_STATUS", "OUT_STATUS"}),
              "18|" + QString::number(qint16(0xFFFF & ~(1 << 10) & ~(1 << 13))));

    // The weight wins over the word written for a set-point output; other outputs obey it.
    now = 100;
    EXPECT_EQ(el(ask("SetOutput", "ID=4&OUT_STATUS=0"), "OUT_STATUS_ECHO"),
              QString::number((1 << 10) | (1 << 13)));
    ask("SetSetpoints", "ID=1&SETPOINT_1=-1&SETPOINT_4=-1");
    EXPECT_EQ(el(ask("GetRTStatus"), "OUT_STATUS"), "0");
}

TEST_F(CardTest, SamplingHandsOutEveryReadingOnceInNumberedBlocks) {
    card.setSignal({SignalKind::Ramp, 1000, 10000, 0}); // weight = now / 10
    card.setIntegration(65);                            // above the limit: refused
    const QString refused = ask("StartSample");
    EXPECT_EQ(el(refused, "ERROR_CODE"), "1");
    EXPECT_FALSE(el(refused, "ERROR_DESCRIPTION").isEmpty());
    EXPECT_FALSE(card.sampling());
    card.setIntegration(64);
    EXPECT_EQ(el(ask("StartSample"), "ERROR_CODE"), "0");
    EXPECT_EQ(card.samplePeriodMs(), 64);
    ask("StopSample");
    for (int i = 0; i < 3 && card.sampling(); ++i)
        ask("GetFastSampling");
    card.setIntegration(2);
    now = 1000;
    ask("StartSample");
    now = 1010; // readings at 1000, 1002, ..., 1010, each the mean over its 2 ms
    QString a = ask("GetFastSampling", "ID=4");
    EXPECT_EQ(el(a, "ERROR_CODE"), "0");
    EXPECT_EQ(readings(a),
              (QStringList{"99.950", "100.150", "100.350", "100.550", "100.750", "100.950"}));
    // The readings close the answer, right before its closing tag.
    EXPECT_TRUE(a.endsWith("<W5>100.950</W5></GetFastSampling>"));

    // Nothing new yet: an empty block, and the time to the next reading.
    a = ask("GetFastSampling");
    EXPECT_TRUE(readings(a).isEmpty());
    EXPECT_EQ(card.msUntilReadingDue(), 2);
    now = 1013;
    EXPECT_EQ(readings(ask("GetFastSampling")), QStringList{"101.150"}); // numbered from 0 again

    // A long wait: blocks of at most 500.
    now = 1013 + 2000;
    QList<int> sizes;
    for (int i = 0; i < 3; ++i)
        sizes << readings(ask("GetFastSampling")).size();
    EXPECT_EQ(sizes, (QList<int>{500, 500, 0}));
    EXPECT_EQ(card.pendingReadings(), 0);
}

// What the viewer's tuning table relies on: two consecutive readings at integration 2 average
// to the reading at integration 4 of the same moment.
TEST_F(CardTest, ASessionAtIntegration4ReadsThePairwiseMeanOfOneAt2) {
    card.setSignal({SignalKind::NoisySteps, 100, 400, 5});
    QList<double> at[2];
    for (int i = 0; i < 2; ++i) {
        card.setIntegration(2 << i);
        now = 1000;
        ask("StartSample");
        now = 1400;
        for (const QString& r : readings(ask("GetFastSampling")))
            at[i] << r.toDouble();
        ask("StopSample");
        while (card.sampling())
            ask("GetFastSampling");
    }
    ASSERT_EQ(at[0].size(), 201);
    ASSERT_EQ(at[1].size(), 101);
    for (int k = 1; k < 101; ++k)
        EXPECT_NEAR(at[1][k], (at[0][2 * k] + at[0][2 * k - 1]) / 2, 0.0011) << k;
}

TEST_F(CardTest, StopDeliversTheRestThenEndsWithCode200) {
    card.setIntegration(1);
    ask("StartSample");
    now = 1199; // 1200 readings recorded
    EXPECT_EQ(readings(ask("GetFastSampling")).size(), 500);
    QString a = ask("StopSample");
    EXPECT_EQ(el(a, "ERROR_CODE"), "0");
    now = 5000; // nothing more is recorded after the stop
    EXPECT_EQ(card.msUntilReadingDue(), 0);
    EXPECT_EQ(readings(ask("GetFastSampling")).size(), 500);
    EXPECT_EQ(readings(ask("GetFastSampling")).size(), 200);
    a = ask("GetFastSampling");
    EXPECT_EQ(el(a, "ERROR_CODE"), "200");
    EXPECT_FALSE(el(a, "ERROR_DESCRIPTION").isEmpty());
    EXPECT_TRUE(readings(a).isEmpty());
    EXPECT_FALSE(card.sampling());
    EXPECT_EQ(card.sentReadings().size(), 1200);
    EXPECT_EQ(el(ask("GetFastSampling"), "ERROR_CODE"), "200");
    // Stopping what does not run is refused with 1.
    EXPECT_TRUE(ask("StopSample").contains("<ERROR_CODE>1</ERROR_CODE>"));
}

} // namespace
