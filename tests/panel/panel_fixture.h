#pragma once

// The main panel on the fake platform with a scripted card: tests drive clicks and keys
// through the panel's handlers and let fake time run so answers arrive.

#include "base/numeric.h"
#include "panel/frm_client.h"
#include "support/fake_card.h"
#include "support/fake_platform.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace torv::test {

// What the scripted card reports in its status answers.
struct CardState {
    QString weight = QStringLiteral("12.345");
    QString a2d = QStringLiteral("49380");
    QString outStatus = QStringLiteral("16383");
    QString inStatus = QStringLiteral("255");
    QString integration = QStringLiteral("8");
    QString maximumLoad = QStringLiteral("3000");
    QString unit = QStringLiteral("KG");
    QString spStatus = QStringLiteral("0");
    QString setpoints[4] = {QStringLiteral("-1"), QStringLiteral("-1"), QStringLiteral("-1"),
                            QStringLiteral("-1")};
    QString errorCode = QStringLiteral("0");
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

    // The answers of a well-behaved card in state `state`.
    QString standardAnswer(const CardRequest& r) {
        const CardState& s = state;
        auto el = [](const char* tag, const QString& v) {
            return QStringLiteral("<%1>%2</%1>").arg(QLatin1String(tag), v);
        };
        const QString err =
            el("ERROR_CODE", s.errorCode) + el("ERROR_DESCRIPTION", QStringLiteral("OK"));
        QString inner;
        if (r.function == QStringLiteral("GetRTStatus")) {
            inner = el("WEIGHT", s.weight) + el("A2D", s.a2d) + el("OUT_STATUS", s.outStatus) +
                    el("IN_STATUS", s.inStatus) + el("INTEGRATION", s.integration) +
                    el("MAXIMUM_LOAD", s.maximumLoad) + el("UNIT", s.unit) +
                    el("SP_STATUS", s.spStatus);
        } else if (r.function == QStringLiteral("SetOutput")) {
            const int eq = r.body.indexOf(QStringLiteral("OUT_STATUS="));
            if (eq >= 0) state.outStatus = r.body.mid(eq + 11);
            inner = el("OUT_STATUS_ECHO", state.outStatus);
        } else if (r.function == QStringLiteral("GetSetpoints")) {
            for (int n = 1; n <= 4; ++n)
                inner +=
                    QStringLiteral("<SETPOINT_%1>%2</SETPOINT_%1>").arg(n).arg(s.setpoints[n - 1]);
        } else if (r.function == QStringLiteral("SetSetpoints")) {
            for (int n = 1; n <= 4; ++n) {
                const QString key = QStringLiteral("SETPOINT_%1=").arg(n);
                const int at = r.body.indexOf(key);
                if (at < 0) continue;
                int end = r.body.indexOf(QLatin1Char('&'), at);
                if (end < 0) end = static_cast<int>(r.body.size());
                state.setpoints[n - 1] = r.body.mid(at + key.size(), end - at - key.size());
            }
        } else if (r.function == QStringLiteral("SetD2A")) {
            const int at = r.body.indexOf(QStringLiteral("D2A="));
            inner = el("ANALOG_OUT", at >= 0 ? r.body.mid(at + 4) : QString());
        } else if (r.function == QStringLiteral("SetIntegration")) {
            const int at = r.body.indexOf(QStringLiteral("INTEGRATION="));
            if (at >= 0) state.integration = r.body.mid(at + 12);
            inner = el("INTEGRATION_ECHO", state.integration);
        }
        return QStringLiteral("<%1>%2%3</%1>").arg(r.function, inner, err);
    }

    // Lays the panel out as start-up does, without talking to the card.
    void layOut() {
        f.TxtIP.caption = QStringLiteral("10.0.0.2");
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

    QTemporaryDir dir_;
    QString oldDir_;
    FakePlatform p;
    FakeCard card{p};
    CardState state;
    FrmClient panel{p};
    FrmClientForm& f = panel.f;
};

} // namespace torv::test
