// Status-polling rate of the real transport against the in-process card simulator, next to
// a minimal loop of plain blocking sockets doing the same exchange: connect, send the
// request, read until the closing tag, close. Prints the rates and their ratios; the third
// figure is the whole main panel (its form model, no widgets) polling the same way.
//
//   poll_rate [answers per side and round, default 1000] [rounds, default 12]
//             [transport|plain|panel]
//
// The third argument runs one side only (for profiling); then no ratio is printed.

#include "link/catalogue.h"
#include "link/dispatch.h"
#include "link/link_view.h"
#include "link/qt_net_platform.h"
#include "link/transport.h"
#include "panel/frm_client.h"
#include "sim/sim_host.h"
#include "support/scripted_dialogs.h"

#include "plain_socket_loop.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <vector>

using namespace torv;

using torv::bench::median;
using torv::bench::plainRate;

namespace {

// The Qt clock and sockets; dialogs are printed and counted (a clean run shows none).
class BenchPlatform : public test::Scripted<QtNetPlatform> {
public:
    BenchPlatform() { echo = true; }
};

class BenchView : public LinkView {
public:
    QString host;
    int reports = 0;
    QString hostText() override { return host; }
    void setCommStatus(const QString&) override {}
    void requestSent(const QString&) override {}
    void showRawAnswer(const QString&) override {}
    void ServerNoAnswer() override { ++reports; }
};

// Counts status answers and keeps polling until `target`, like the panel's status handler.
class PollHandlers : public AnswerHandlers {
public:
    Transport* transport = nullptr;
    QEventLoop* loop = nullptr;
    int answers = 0, target = 0;

    void DataArrival_GetRTStatus(const QString&) override {
        if (++answers < target) {
            transport->IssueRequest(transport->req.blnRepeatRequest);
        } else {
            transport->IssueRequest(false);
            loop->quit();
        }
    }
    void DataArrival_FastSampling(const QString&) override {}
    void DataArrival_SetOutput(const QString&) override {}
    void DataArrival_SetD2A(const QString&) override {}
    void DataArrival_GetSetpoints(const QString&) override {}
    void DataArrival_SetSetpoints(const QString&) override {}
    void DataArrival_StartSample(const QString&) override {}
    void DataArrival_StopSample(const QString&) override {}
    void DataArrival_SetIntegration(const QString&) override {}
};

// Answers per second through the transport, on the application's event loop.
double transportRate(quint16 port, int answers) {
    BenchPlatform platform;
    BenchView view;
    view.host = QStringLiteral("127.0.0.1:") + QString::number(port);
    PollHandlers handlers;
    Transport t(platform, view, handlers);
    QEventLoop loop;
    handlers.transport = &t;
    handlers.loop = &loop;
    handlers.target = answers;

    QElapsedTimer clock;
    clock.start();
    t.req.strFunctionName = fn::GetRTStatus;
    t.req.strParameters = QStringLiteral("ID=4");
    t.req.blnRepeatRequest = true;
    t.IssueRequest(true);
    loop.exec();
    const double seconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    if (handlers.answers != answers || view.reports != 0 || !platform.dialogs.empty())
        throw std::runtime_error("transport run did not complete cleanly");
    return answers / seconds;
}

// Answers per second of the main panel's status polling: every answer goes through the
// panel's handler and updates the form model (weight, counters, lamps, readings list).
double panelRate(quint16 port, int answers) {
    BenchPlatform platform;
    FrmClient panel(platform);
    panel.f.TxtIP.caption = QStringLiteral("127.0.0.1:") + QString::number(port);
    panel.layOutFrames();
    QEventLoop loop;
    panel.onModelChanged = [&] {
        if (panel.counters().lngReadings >= answers) loop.quit();
    };
    QElapsedTimer clock;
    clock.start();
    panel.event([&] { panel.cmdWeight_Click(); });
    loop.exec();
    const double seconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    panel.onModelChanged = nullptr;
    panel.closeLink();
    if (panel.counters().lngReadings < answers || !platform.dialogs.empty())
        throw std::runtime_error("panel run did not complete cleanly");
    return panel.counters().lngReadings / seconds;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const int answers = argc > 1 ? std::max(100, std::atoi(argv[1])) : 1000;
    const int rounds = argc > 2 ? std::max(1, std::atoi(argv[2])) : 12;
    const QString only = argc > 3 ? QString::fromLocal8Bit(argv[3]) : QString();
    const bool runTransport = only.isEmpty() || only == QLatin1String("transport");
    const bool runPlain = only.isEmpty() || only == QLatin1String("plain");
    const bool runPanel = only.isEmpty() || only == QLatin1String("panel");

    sim::SimOptions options;
    options.answerMs = 0; // the transport's own rate, not a card's answer time
    sim::SimHost sim(options);
    sim.setLogSink([](const QString&) {});
    const quint16 port = sim.start();
    if (port == 0) {
        std::fprintf(stderr, "poll_rate: the card simulator did not start\n");
        return 1;
    }
    try {
        if (runTransport) transportRate(port, 200);
        if (runPlain) plainRate(port, 200);
        if (runPanel) panelRate(port, 200);
        // Short rounds, alternating which side goes first, so that both see the same load
        // on a shared machine; each round gives one ratio and the median is the figure.
        std::vector<double> transport, plain, panel, ratios, panelRatios;
        for (int r = 0; r < rounds; ++r) {
            double tr = 0, pl = 0, pa = 0;
            if (r % 2 == 0) {
                if (runTransport) tr = transportRate(port, answers);
                if (runPlain) pl = plainRate(port, answers);
                if (runPanel) pa = panelRate(port, answers);
            } else {
                if (runPanel) pa = panelRate(port, answers);
                if (runPlain) pl = plainRate(port, answers);
                if (runTransport) tr = transportRate(port, answers);
            }
            transport.push_back(tr);
            plain.push_back(pl);
            panel.push_back(pa);
            if (tr > 0 && pl > 0) ratios.push_back(tr / pl);
            if (pa > 0 && pl > 0) panelRatios.push_back(pa / pl);
        }
        std::printf("poll_rate: GetRTStatus polls of the card simulator on loopback, %d rounds of "
                    "%d answers per side\n",
                    rounds, answers);
        if (runTransport)
            std::printf("  transport      %8.0f answers/s (median)\n", median(transport));
        if (runPlain) std::printf("  plain sockets  %8.0f answers/s (median)\n", median(plain));
        if (runPanel) std::printf("  whole panel    %8.0f answers/s (median)\n", median(panel));
        if (!ratios.empty())
            std::printf(
                "  ratio          %8.3f (median of rounds, range %.3f-%.3f; target >= 0.9)\n",
                median(ratios), *std::min_element(ratios.begin(), ratios.end()),
                *std::max_element(ratios.begin(), ratios.end()));
        if (!panelRatios.empty())
            std::printf(
                "  panel ratio    %8.3f (median of rounds, range %.3f-%.3f; target >= 0.85)\n",
                median(panelRatios), *std::min_element(panelRatios.begin(), panelRatios.end()),
                *std::max_element(panelRatios.begin(), panelRatios.end()));
    } catch (const std::exception& e) {
        std::fprintf(stderr, "poll_rate: %s\n", e.what());
        return 1;
    }
    return 0;
}
