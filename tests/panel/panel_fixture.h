#pragma once

// The main panel on the fake platform with the simulator's card model behind the fake
// sockets: tests drive clicks and keys through the panel's handlers and let fake time run so
// answers arrive.

#include "base/numeric.h"
#include "form_checks.h"
#include "panel/frm_client.h"
#include "support/fake_card.h"
#include "support/fake_platform.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace torv::test {

class PanelTest : public ::testing::Test {
protected:
    PanelTest() {
        setDecimalSeparator(QLatin1Char('.'));
        oldDir_ = QDir::currentPath();
        QDir::setCurrent(dir_.path());
    }
    ~PanelTest() override {
        QDir::setCurrent(oldDir_);
        setDecimalSeparator(QLatin1Char('.'));
    }

    // The card's own answer.
    QString standardAnswer(const CardRequest& r) { return card.sim.answer(r.function, r.body); }
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
    sim::Card& sim = card.sim;
    FrmClient panel{p};
    FrmClientForm& f = panel.f;
};

} // namespace torv::test
