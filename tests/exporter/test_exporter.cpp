// torv-exporter's library: what a scrape may ask for, the metrics text of a probe, one shared
// request per card. The HTTP side is tested on the real program (exporter_system.py).

#include "exporter/metrics.h"
#include "exporter/probe_hub.h"
#include "exporter/target.h"

#include <gtest/gtest.h>

using namespace torv;
using namespace torv::exporter;

namespace {

TEST(Target, AcceptsHostsAndPortsAndRefusesTheRest) {
    struct Case {
        const char* text;
        const char* key; // nullptr: refused
    } cases[] = {
        {"10.0.0.5", "10.0.0.5:80"},
        {"10.0.0.5:8081", "10.0.0.5:8081"},
        {"Card-7.Plant.local", "card-7.plant.local:80"},
        {"[::1]:9000", "[::1]:9000"},
        {"::1", "[::1]:80"},
        {"[::ffff:10.0.0.5]:81", "10.0.0.5:81"}, // mapped IPv4 is IPv4
        {"", nullptr},
        {":::", nullptr},
        {"[::1]", "[::1]:80"},
        {"10.0.0.5:", nullptr},
        {"10.0.0.5:0", nullptr},
        {"10.0.0.5:65536", nullptr},
        {"10.1", nullptr},      // inet_aton shorthand: neither an address nor a name
        {"300.1.1.1", nullptr}, // numeric, not an address
        {"010.0.0.5", nullptr}, // a leading zero reads as octal elsewhere: refused
        {"a..b", nullptr},
        {"k\xc3\xa4rt", nullptr},
        {"host:80:80", nullptr},
    };
    for (const Case& c : cases) {
        Target t;
        QString error;
        const bool ok = parseTarget(QString::fromUtf8(c.text), t, error);
        EXPECT_EQ(ok, c.key != nullptr) << c.text << ": " << error.toStdString();
        if (ok && c.key) {
            EXPECT_EQ(t.key(), QString::fromLatin1(c.key)) << c.text;
        } else {
            EXPECT_FALSE(error.isEmpty()) << c.text;
        }
    }
    Target t;
    QString error;
    EXPECT_FALSE(parseTarget(QString(10240, QLatin1Char('a')), t, error));
    EXPECT_TRUE(error.contains(QLatin1String("longer"))) << error.toStdString();
}

TEST(AllowList, MatchesIPv4AndIPv6Networks) {
    AllowList allow;
    QString error;
    EXPECT_TRUE(allow.allows(QHostAddress("192.0.2.1"))); // empty: everything
    ASSERT_TRUE(allow.add("10.1.0.0/16", error));
    ASSERT_TRUE(allow.add("2001:db8::/32", error));
    ASSERT_TRUE(allow.add("127.0.0.1", error));
    for (const char* bad : {"10.1.0.0/33", "card.local", "10.1.0.0/x", ""})
        EXPECT_FALSE(allow.add(bad, error)) << bad;
    struct Case {
        const char* address;
        bool allowed;
    } cases[] = {
        {"10.1.255.7", true},      {"10.2.0.1", false},        {"127.0.0.1", true},
        {"127.0.0.2", false},      {"2001:db8:5::1", true},    {"2001:db9::1", false},
        {"::ffff:10.1.2.3", true}, {"::ffff:10.9.2.3", false},
    };
    for (const Case& c : cases)
        EXPECT_EQ(allow.allows(QHostAddress(c.address)), c.allowed) << c.address;
}

// The value of one sample in the text ("" when the series is absent).
QString sample(const QByteArray& text, const QString& series) {
    for (const QByteArray& line : text.split('\n'))
        if (line.startsWith(series.toUtf8() + ' '))
            return QString::fromUtf8(line.mid(series.size() + 1));
    return {};
}

client::StatusRecord healthy() {
    client::StatusRecord r;
    r.weight = 12.5;
    r.unit = QStringLiteral("lb");
    r.a2d = 130000;
    r.outputs = 16379; // every bit set but output 3's: only output 3 is on
    r.inputs = 254;    // only input 1 active
    r.integration = 8;
    r.maximumLoad = 3000;
    r.setpointStatus = 2 | 16; // set points 1 and 4
    r.errorCode = QStringLiteral("0");
    return r;
}

TEST(ProbeMetrics, AHealthyCardShowsEveryValueByItsRule) {
    ProbeOutcome o;
    o.record = healthy();
    o.seconds = 0.25;
    const QByteArray text = renderProbe(o);
    struct {
        const char* series;
        const char* value;
    } expected[] = {
        {"torv_probe_success", "1"},
        {"torv_probe_duration_seconds", "0.25"},
        {"torv_weight{unit=\"lb\"}", "12.5"},
        {"torv_weight_grams", "5669.904625"},
        {"torv_converter_reading", "130000"},
        {"torv_overload", "0"},
        {"torv_maximum_load{unit=\"lb\"}", "3000"},
        {"torv_integration_seconds", "0.008"},
        {"torv_output_on{output=\"3\"}", "1"},
        {"torv_output_on{output=\"1\"}", "0"},
        {"torv_output_on{output=\"14\"}", "0"},
        {"torv_input_active{input=\"1\"}", "1"},
        {"torv_input_active{input=\"8\"}", "0"},
        {"torv_setpoint_active{setpoint=\"1\"}", "1"},
        {"torv_setpoint_active{setpoint=\"2\"}", "0"},
        {"torv_setpoint_active{setpoint=\"4\"}", "1"},
        {"torv_card_error", "0"},
        {"torv_probe_failure{reason=\"silent\"}", ""},
    };
    for (const auto& e : expected)
        EXPECT_EQ(sample(text, e.series), QString::fromLatin1(e.value)) << e.series;
    EXPECT_EQ(text.count("torv_output_on{"), 14);
    EXPECT_EQ(text.count("torv_input_active{"), 8);
}

TEST(ProbeMetrics, OverloadUnitsErrorsAndFailures) {
    ProbeOutcome o;
    o.record = healthy();
    o.record.a2d = 130001;
    o.record.unit = QStringLiteral("TON");
    EXPECT_EQ(sample(renderProbe(o), "torv_overload"), "1");
    EXPECT_EQ(sample(renderProbe(o), "torv_weight_grams"), "12500000");

    o.record.unit = QStringLiteral("Newton \"x\"\\\n"); // escaped, and no grams
    EXPECT_EQ(sample(renderProbe(o), "torv_weight{unit=\"Newton \\\"x\\\"\\\\\\n\"}"), "12.5");
    EXPECT_EQ(sample(renderProbe(o), "torv_weight_grams"), "");

    // A card error code: the card answered, so the probe succeeded and the code shows.
    o.record.errorCode = QStringLiteral("00");
    o.failure = client::Failure{client::FailureKind::CardError, {}, "00", {}};
    EXPECT_EQ(sample(renderProbe(o), "torv_probe_success"), "1");
    EXPECT_EQ(sample(renderProbe(o), "torv_card_error"), "1");
    EXPECT_EQ(sample(renderProbe(o), "torv_card_error_code"), "0");

    o.failure = client::Failure{client::FailureKind::CutOff, {}, {}, {}};
    const QByteArray dead = renderProbe(o);
    EXPECT_EQ(sample(dead, "torv_probe_success"), "0");
    EXPECT_EQ(sample(dead, "torv_probe_failure{reason=\"cut_off\"}"), "1");
    EXPECT_FALSE(dead.contains("torv_weight")) << "a dead card has no values";
}

// A card that answers only when told to; counts the requests it was sent.
struct ScriptedCards {
    QList<QPair<QString, ProbeHub::StatusDone>> open;
    ProbeHub::Fetch fetch() {
        return [this](const client::CardAddress& card, int, ProbeHub::StatusDone done) {
            open.append({card.host + ':' + QString::number(card.port), std::move(done)});
        };
    }
    void answerAll() {
        const auto all = std::exchange(open, {});
        for (const auto& [card, done] : all)
            done(client::Reply{}, healthy());
    }
};

TEST(ProbeHub, ProbesOfOneCardShareTheRequestInFlight) {
    ScriptedCards cards;
    ProbeHub hub(cards.fetch());
    int answered = 0;
    const auto count = [&](const ProbeOutcome& o) { answered += o.answered(); };
    client::CardAddress a{QStringLiteral("10.0.0.1"), 80};
    client::CardAddress b{QStringLiteral("10.0.0.2"), 80};
    for (int i = 0; i < 5; ++i)
        hub.probe("10.0.0.1:80", a, 1000, count);
    hub.probe("10.0.0.2:80", b, 1000, count);
    EXPECT_EQ(cards.open.size(), 2) << "one request per card, many cards at once";
    EXPECT_EQ(hub.waiting(), 6);
    cards.answerAll();
    EXPECT_EQ(answered, 6);
    EXPECT_EQ(hub.flights(), 0);
    hub.probe("10.0.0.1:80", a, 1000, count);
    EXPECT_EQ(cards.open.size(), 1) << "after the answer, a new probe asks again";
}

} // namespace
