#pragma once

// The main panel against the card simulator on loopback, in a temporary current folder (the
// panel opens its files by bare names). The panel is laid out and pointed at the simulator.

#include "base/colors.h"
#include "base/numeric.h"
#include "form_checks.h"
#include "panel/frm_client.h"
#include "sim/sim_host.h"
#include "support/loopback_platform.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace torv::test {

class PanelOnSimulator : public ::testing::Test {
protected:
    explicit PanelOnSimulator(double weight) {
        setDecimalSeparator(QLatin1Char('.'));
        oldDir_ = QDir::currentPath();
        QDir::setCurrent(dir_.path());
        sim::SimOptions options;
        options.signal.weight = weight;
        options.inputsPeriodMs = 0;
        host = std::make_unique<sim::SimHost>(options);
        host->setLogSink([](const QString&) {});
        port = host->start();
        f.TxtIP.caption = "127.0.0.1:" + QString::number(port);
        panel.layOutFrames();
    }
    ~PanelOnSimulator() override {
        panel.closeLink();
        host->stop();
        QDir::setCurrent(oldDir_);
    }

    // What `get` returns for the card, read under the card's lock.
    template <typename F> auto onCard(F get) {
        decltype(get(std::declval<sim::Card&>())) value{};
        host->withCard([&](sim::Card& c) { value = get(c); });
        return value;
    }
    // The functions the card was asked, in order.
    QStringList functions() const {
        QStringList out;
        for (const sim::RequestRecord& r : host->requests())
            out << r.function;
        return out;
    }
    std::string dialogs() const { return p.messages().join(QLatin1Char('|')).toStdString(); }
    void startPolling(int readings = 3) {
        panel.event([&] { panel.cmdWeight_Click(); });
        ASSERT_TRUE(p.runUntil([&] { return panel.counters().lngReadings >= readings; }, 20000))
            << panel.counters().lngReadings << " " << dialogs();
    }

    QTemporaryDir dir_;
    QString oldDir_;
    std::unique_ptr<sim::SimHost> host;
    quint16 port = 0;
    LoopbackPlatform p;
    FrmClient panel{p};
    FrmClientForm& f = panel.f;
};

} // namespace torv::test
