#pragma once

// The main panel on the fake platform with a scripted card: tests drive clicks and keys
// through the panel's handlers and let fake time run so answers arrive.

#include "base/numeric.h"
#include "form_checks.h"
#include "panel/frm_client.h"
#include "support/fake_card.h"
#include "support/fake_platform.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace torv::test {

// The value of `key` in a form-encoded body, or a null text.
inline QString formValue(const QString& body, const QString& key) {
    for (const QString& pair : body.split(QLatin1Char('&')))
        if (pair.startsWith(key + QLatin1Char('='))) return pair.mid(key.size() + 1);
    return {};
}

// What the scripted card reports in its status answers.
struct CardState {
    QString weight = "12.345", a2d = "49380", outStatus = "16383", inStatus = "255";
    QString integration = "8", maximumLoad = "3000", unit = "KG", spStatus = "0";
    QString setpoints[4] = {"-1", "-1", "-1", "-1"};
    QString errorCode = "0";
};

class PanelTest : public ::testing::Test {
protected:
    PanelTest() {
        setDecimalSeparator(QLatin1Char('.'));
        oldDir_ = QDir::currentPath();
        QDir::setCurrent(dir_.path());
        card.respond = [this](const CardRequest& r) { return standardAnswer(r); };
    }
    ~PanelTest() override {
        QDir::setCurrent(oldDir_);
        setDecimalSeparator(QLatin1Char('.'));
    }

    // The answers of a well-behaved card in state `state`; set commands change the state.
    QString standardAnswer(const CardRequest& r) {
        CardState& s = state;
        auto el = [](const char* tag, const QString& v) {
            return QStringLiteral("<%1>%2</%1>").arg(QLatin1String(tag), v);
        };
        const QString fn = r.function;
        QString inner;
        if (fn == "GetRTStatus") {
            inner = el("WEIGHT", s.weight) + el("A2D", s.a2d) + el("OUT_STATUS", s.outStatus) +
                    el("IN_STATUS", s.inStatus) + el("INTEGRATION", s.integration) +
                    el("MAXIMUM_LOAD", s.maximumLoad) + el("UNIT", s.unit) +
                    el("SP_STATUS", s.spStatus);
        } else if (fn == "SetOutput") {
            if (!formValue(r.body, "OUT_STATUS").isNull())
                s.outStatus = formValue(r.body, "OUT_STATUS");
            inner = el("OUT_STATUS_ECHO", s.outStatus);
        } else if (fn == "GetSetpoints" || fn == "SetSetpoints") {
            for (int n = 1; n <= 4; ++n) {
                const QString key = QStringLiteral("SETPOINT_%1").arg(n);
                if (fn == "GetSetpoints")
                    inner += QStringLiteral("<%1>%2</%1>").arg(key, s.setpoints[n - 1]);
                else if (!formValue(r.body, key).isNull())
                    s.setpoints[n - 1] = formValue(r.body, key);
            }
        } else if (fn == "SetD2A") {
            inner = el("ANALOG_OUT", formValue(r.body, "D2A"));
        } else if (fn == "SetIntegration") {
            if (!formValue(r.body, "INTEGRATION").isNull())
                s.integration = formValue(r.body, "INTEGRATION");
            inner = el("INTEGRATION_ECHO", s.integration);
        }
        inner += el("ERROR_CODE", s.errorCode) + el("ERROR_DESCRIPTION", "OK");
        return QStringLiteral("<%1>%2</%1>").arg(fn, inner);
    }
    // The card answers `function` with `inner` and everything else as usual.
    void answerWith(const QString& function, const QString& inner) {
        card.respond = [this, function, inner](const CardRequest& r) {
            return r.function == function ? cardAnswer(r.function, inner) : standardAnswer(r);
        };
    }

    // Lays the panel out as start-up does, without talking to the card.
    void layOut() {
        f.TxtIP.caption = "10.0.0.2";
        panel.layOutFrames();
    }

    // Lets fake time run until `done` holds or `ms` have passed; true when it held.
    template <typename F> bool runUntil(F done, int ms = 10000) {
        for (int i = 0; i < ms; ++i) {
            if (done()) return true;
            p.advance(1);
        }
        return done();
    }

    // Runs a handler at the event boundary, as a click of the window does.
    template <typename F> void click(F handler) { panel.event(handler); }

    // Starts status polling and lets the first answer arrive.
    void startPolling() {
        click([&] { panel.cmdWeight_Click(); });
        ASSERT_TRUE(runUntil([&] { return !f.LbLMaxWGTdata.caption.isEmpty(); }, 100));
    }
    int requestCount() const { return static_cast<int>(card.requests.size()); }
    // The functions the card read from request `from` on.
    QStringList functionsFrom(int from) const { return card.functions().mid(from); }
    int requestsOf(const QString& function) const {
        return static_cast<int>(card.functions().count(function));
    }
    // The body of the last request of `function`.
    QString lastBody(const QString& function) const {
        for (int i = requestCount() - 1; i >= 0; --i)
            if (card.requests[i].function == function) return card.requests[i].body;
        return "<none>";
    }
    // True when polling goes on: two more status requests reach the card, and nothing else.
    bool pollingGoesOn() {
        const int from = requestCount();
        runUntil([&] { return functionsFrom(from).count("GetRTStatus") >= 2; }, 200);
        const QStringList later = functionsFrom(from);
        return later.count("GetRTStatus") >= 2 && later.last() == "GetRTStatus" &&
               card.requests.last().body == "ID=4";
    }
    // The operating controls are free again and the fast-sample button is back to normal.
    void expectIdle() {
        EXPECT_EQ(
            enabledOf({&f.cmdStart_Sample, &f.cmdWeight, &f.cmdStopSample, &f.cmdSetOutOn[1]}),
            "1101");
        EXPECT_EQ(f.cmdStart_Sample.backColor, color::ButtonFace);
        EXPECT_TRUE(f.FraOut.toolTip.isEmpty());
    }

    QTemporaryDir dir_;
    QString oldDir_;
    FakePlatform p;
    FakeCard card{p};
    CardState state;
    FrmClient panel{p};
    FrmClientForm& f = panel.f;
};

} // namespace torv::test
