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

TEST_F(CardTest, StatusAnswerHasEveryElementInTheWireForm) {
    EXPECT_EQ(ask("GetRTStatus", "ID=4"),
              QStringLiteral("<GetRTStatus><WEIGHT>12.345</WEIGHT><A2D>494</A2D>"
                             "<OUT_STATUS>16383</OUT_STATUS><IN_STATUS>255</IN_STATUS>"
                             "<INTEGRATION>8</INTEGRATION><MAXIMUM_LOAD>3000</MAXIMUM_LOAD>"
                             "<UNIT>KG</UNIT><SP_STATUS>0</SP_STATUS><ERROR_CODE>0</ERROR_CODE>"
                             "<ERROR_DESCRIPTION>OK</ERROR_DESCRIPTION></GetRTStatus>"));
}

TEST_F(CardTest, ConverterCountFollowsTheWeightAndSignalsOverload) {
    card.setSignal({SignalKind::Steady, 1234.567, 1000, 0});
    EXPECT_EQ(els(ask("GetRTStatus"), {"WEIGHT", "A2D"}), "1234.567|49383");
    card.setSignal({SignalKind::Steady, -0.0001, 1000, 0});
    EXPECT_EQ(el(ask("GetRTStatus"), "WEIGHT"), "0.000"); // never "-0.000"
    card.setSignal({SignalKind::Steady, 3300, 1000, 0});
    EXPECT_EQ(el(ask("GetRTStatus"), "A2D"), "132000"); // beyond the cell's range by itself
    card.setSignal({SignalKind::Steady, 10, 1000, 0});
    card.setOverload(true);
    const QString a = ask("GetRTStatus");
    EXPECT_GT(el(a, "A2D").toInt(), 130000);
    EXPECT_EQ(el(a, "WEIGHT"), "10.000");
}

TEST_F(CardTest, SignalsFollowTheClock) {
    auto at = [](const SignalShape& shape, std::initializer_list<qint64> times) {
        std::vector<double> out;
        for (qint64 t : times)
            out.push_back(std::round(signalValue(shape, t) * 1e6) / 1e6);
        return out;
    };
    const SignalShape ramp{SignalKind::Ramp, 100, 1000, 0};
    EXPECT_EQ(at(ramp, {0, 500, 1250, -250}), (std::vector<double>{0, 50, 25, 75}));
    EXPECT_EQ(at({SignalKind::Sine, 100, 1000, 0}, {0, 250, 500}),
              (std::vector<double>{0, 50, 100}));
    EXPECT_EQ(at({SignalKind::Steps, 100, 1000, 0}, {199, 200, 999}),
              (std::vector<double>{0, 25, 100}));
    EXPECT_EQ(at({SignalKind::Steady, 7.5, 1000, 3}, {123456}), std::vector<double>{7.5});

    const SignalShape noise{SignalKind::Noise, 100, 1000, 2};
    double lo = 1e9, hi = -1e9;
    for (qint64 t = 0; t < 2000; ++t) {
        const double v = signalValue(noise, t);
        lo = std::min(lo, v);
        hi = std::max(hi, v);
    }
    EXPECT_GE(lo, 98);
    EXPECT_LE(hi, 102);
    EXPECT_GT(hi - lo, 3.5); // it does spread
    EXPECT_EQ(signalValue(noise, 77), signalValue(noise, 77));

    card.setSignal(ramp);
    now = 300;
    EXPECT_EQ(el(ask("GetRTStatus"), "WEIGHT"), "30.000");
}

TEST_F(CardTest, InputsChangeOneAfterTheOtherWhenAsked) {
    card.setInputsPeriod(100);
    QList<int> seen;
    for (now = 0; now < 800; now += 100)
        seen << el(ask("GetRTStatus"), "IN_STATUS").toInt();
    EXPECT_EQ(seen, (QList<int>{255, 254, 255, 253, 255, 251, 255, 247}));
    card.setInputsPeriod(0);
    card.setInputs(0x0F);
    now = 100;
    EXPECT_EQ(el(ask("GetRTStatus"), "IN_STATUS"), "15");
}

TEST_F(CardTest, SetOutputTakesTheSignedWordAndShowsInTheStatus) {
    EXPECT_EQ(els(ask("SetOutput", "ID=4&OUT_STATUS=16379"), {"OUT_STATUS_ECHO", "ERROR_CODE"}),
              "16379|0");
    EXPECT_EQ(el(ask("GetRTStatus"), "OUT_STATUS"), "16379");
    EXPECT_EQ(el(ask("SetOutput", "ID=4&OUT_STATUS=-1"), "OUT_STATUS_ECHO"), "-1");
    EXPECT_EQ(card.outputWord(), 0xFFFF);
    EXPECT_EQ(el(ask("GetRTStatus"), "OUT_STATUS"), "-1");

    for (const char* bad :
         {"ID=4&OUT_STATUS=65536", "ID=4&OUT_STATUS=abc", "ID=4", "ID=4&OUT_STATUS=1.5"}) {
        const QString a = ask("SetOutput", QLatin1String(bad));
        EXPECT_EQ(els(a, {"ERROR_CODE", "OUT_STATUS_ECHO"}), "2|-1") << bad; // unchanged
        EXPECT_FALSE(el(a, "ERROR_DESCRIPTION").isEmpty());
    }
}

TEST_F(CardTest, SetPointsAreStoredAsSentAndClearedByMinusOne) {
    EXPECT_EQ(el(ask("GetSetpoints", "ID=1"), "SETPOINT_1"), "-1");
    QString a = ask("SetSetpoints", QStringLiteral("ID=1&SETPOINT_1=100&SETPOINT_2=5000"
                                                   "&SETPOINT_3=12,5&SETPOINT_4=-1"));
    EXPECT_EQ(el(a, "ERROR_CODE"), "0");
    // Above the maximum load: kept.
    EXPECT_EQ(
        els(ask("GetSetpoints", "ID=1"), {"SETPOINT_1", "SETPOINT_2", "SETPOINT_3", "SETPOINT_4"}),
        "100|5000|12.5|-1");

    // A bad value changes none of them; a missing one stays; any negative value clears.
    a = ask("SetSetpoints", "ID=1&SETPOINT_1=7&SETPOINT_4=Type Value>0");
    EXPECT_EQ(el(a, "ERROR_CODE"), "2");
    EXPECT_EQ(card.setpoint(1), 100);
    ask("SetSetpoints", "ID=1&SETPOINT_2=-5");
    EXPECT_EQ(card.setpoint(1), 100);
    EXPECT_EQ(card.setpoint(2), -1);
}

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

TEST_F(CardTest, AnalogOutputAndIntegrationEchoWhatTheyTake) {
    EXPECT_EQ(el(ask("SetD2A", "ID=1&D2A=255"), "ANALOG_OUT"), "255");
    EXPECT_EQ(el(ask("SetD2A", "ID=1&D2A=0"), "ANALOG_OUT"), "0");
    for (const char* bad : {"ID=1&D2A=256", "ID=1&D2A=-1", "ID=1&D2A=0x10", "ID=1"}) {
        EXPECT_EQ(els(ask("SetD2A", QLatin1String(bad)), {"ERROR_CODE", "ANALOG_OUT"}), "2|0")
            << bad;
    }
    EXPECT_EQ(el(ask("SetIntegration", "ID=1&INTEGRATION=256"), "INTEGRATION_ECHO"), "256");
    EXPECT_EQ(el(ask("GetRTStatus"), "INTEGRATION"), "256");
    EXPECT_EQ(els(ask("SetIntegration", "ID=1&INTEGRATION=0"), {"ERROR_CODE", "INTEGRATION_ECHO"}),
              "2|256");
}

TEST_F(CardTest, ChannelSwitchChangesTheWeightAndIsRefusedWhileSampling) {
    card.setSignal({SignalKind::Steady, 40, 1000, 0}, 2);
    EXPECT_EQ(ask("ch2_switch", "ID=4"),
              "<ch2_switch><ERROR_CODE>0</ERROR_CODE><ERROR_DESCRIPTION>OK</ERROR_DESCRIPTION></"
              "ch2_switch>");
    EXPECT_EQ(el(ask("GetRTStatus"), "WEIGHT"), "40.000");
    EXPECT_EQ(el(ask("StartSample"), "ERROR_CODE"), "1"); // channel 1 only
    ask("ch1_switch", "ID=4");
    EXPECT_EQ(el(ask("StartSample"), "ERROR_CODE"), "0");
    EXPECT_EQ(el(ask("ch2_switch", "ID=4"), "ERROR_CODE"), "200");
    ask("StopSample");
    EXPECT_EQ(el(ask("ch2_switch"), "ERROR_CODE"), "200"); // still delivering
    EXPECT_EQ(card.channel(), 1);
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
    now = 1010; // readings at 1000, 1002, ..., 1010
    QString a = ask("GetFastSampling", "ID=4");
    EXPECT_EQ(el(a, "ERROR_CODE"), "0");
    EXPECT_EQ(readings(a),
              (QStringList{"100.000", "100.200", "100.400", "100.600", "100.800", "101.000"}));
    // The readings close the answer, right before its closing tag.
    EXPECT_TRUE(a.endsWith("<W5>101.000</W5></GetFastSampling>"));

    // Nothing new yet: an empty block, and the time to the next reading.
    a = ask("GetFastSampling");
    EXPECT_TRUE(readings(a).isEmpty());
    EXPECT_EQ(card.msUntilReadingDue(), 2);
    now = 1013;
    EXPECT_EQ(readings(ask("GetFastSampling")), QStringList{"101.200"}); // numbered from 0 again

    // A long wait: blocks of at most 500.
    now = 1013 + 2000;
    QList<int> sizes;
    for (int i = 0; i < 3; ++i)
        sizes << readings(ask("GetFastSampling")).size();
    EXPECT_EQ(sizes, (QList<int>{500, 500, 0}));
    EXPECT_EQ(card.pendingReadings(), 0);
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

TEST_F(CardTest, SentReadingsAreTheTextsOfEveryAnswer) {
    card.setSignal({SignalKind::Noise, 50, 1000, 5});
    card.setIntegration(3);
    ask("StartSample");
    QStringList got;
    for (now = 10; now < 400; now += 37)
        got << readings(ask("GetFastSampling"));
    now = 399; // the last reading is taken at 399
    ask("StopSample");
    for (int i = 0; i < 3; ++i)
        got << readings(ask("GetFastSampling"));
    EXPECT_EQ(got.size(), 400 / 3 + 1);
    EXPECT_EQ(card.sentReadings(), got);
    for (qsizetype k = 0; k < got.size(); ++k)
        ASSERT_EQ(got[k], Card::weightText(card.weightAt(k * 3, 1))) << k;
}

TEST_F(CardTest, ForcedAnswersShowTheStateAndChangeNothing) {
    card.setAnalogOut(17);
    EXPECT_EQ(els(card.forcedAnswer("SetD2A", 9, "Error 9"), {"ERROR_CODE", "ANALOG_OUT"}), "9|17");
    EXPECT_EQ(els(card.forcedAnswer("GetRTStatus", 5, "x"), {"ERROR_CODE", "WEIGHT"}), "5|12.345");
    ask("StartSample");
    now = 100;
    EXPECT_TRUE(readings(card.forcedAnswer("GetFastSampling", 7, "x")).isEmpty());
    EXPECT_EQ(card.pendingReadings(), 13); // 0, 8, ..., 96
}

TEST_F(CardTest, UnknownFunctionsAreAnsweredWithAnError) {
    const QString a = ask("GetWeight");
    EXPECT_TRUE(a.startsWith("<GetWeight>") && a.endsWith("</GetWeight>")) << a.toStdString();
    EXPECT_EQ(el(a, "ERROR_CODE"), "3");
    EXPECT_TRUE(ask("a<b>/c").startsWith("<Error><ERROR_CODE>3</ERROR_CODE>"));
    // Every function name of the card is known.
    for (const QString& f : Card::functions())
        EXPECT_NE(el(card.answer(f, "ID=4"), "ERROR_CODE"), "3") << f.toStdString();
}

} // namespace
