// torvctl's commands on any arguments (outputs, setpoints, d2a, integration, channel), run to
// their end against the card simulator on loopback, which answers as the card does or with
// one of its faults (garbage, error codes, cut-off, oversize, silence).
//
// Input: the command, the simulator's fault, then the arguments separated by NUL bytes.
// Checks: a command either refuses its arguments with usage status 2 before anything is sent,
// or ends with one of torvctl's exit statuses within its time-outs.

#include "commands.h"
#include "fuzz_support.h"
#include "no_network.h"
#include "session.h"
#include "sim/sim_host.h"

#include <QCoreApplication>
#include <QTimer>

using namespace torv;
using namespace torv::ctl;

namespace {

struct Card {
    Card() {
        static int argc = 1;
        static char name[] = "fuzz_torvctl_args";
        static char* argv[] = {name, nullptr};
        app = new QCoreApplication(argc, argv);
        sim::SimOptions o;
        o.inputsPeriodMs = 0;
        host = new sim::SimHost(o);
        host->setLogSink([](const QString&) {});
        port = host->start(0);
        if (port == 0) fuzz::fault("the simulator does not start");
    }
    QCoreApplication* app;
    sim::SimHost* host;
    quint16 port = 0;
};

using Start = int (*)(Session&, const QStringList&);
const Start kCommands[] = {startOutputs, startSetpoints, startD2A, startIntegration, startChannel};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Card card;
    fuzz::Input in(data, size);
    const Start start = kCommands[in.choose(5)];
    sim::Fault fault;
    fault.kind = static_cast<sim::Fault::Kind>(in.choose(9));
    fault.chunkSizes = {1 + in.choose(64)};
    fault.delayMs = 1;
    fault.errorCode = in.choose(300);
    card.host->clearFaults();
    if (fault.kind != sim::Fault::Kind::None) card.host->injectFault(fault);
    QStringList args;
    if (!in.empty())
        for (const QByteArray& a : in.rest().split('\0'))
            args << QString::fromLatin1(a);

    HeadlessPlatform platform;
    Session session;
    session.platform = &platform;
    session.timeoutMs = 300;
    session.cards.push_back(std::make_unique<client::CardClient>(
        client::CardAddress{QStringLiteral("127.0.0.1"), card.port}, session.timeoutMs));
    const int started = start(session, args);
    if (started >= 0) {
        fuzz::check(started == ExitUsage, "arguments refused without the usage status");
        return 0;
    }
    bool ended = false;
    QTimer guard;
    guard.setSingleShot(true);
    QObject::connect(&guard, &QTimer::timeout, [] { QCoreApplication::exit(-1); });
    guard.start(5000);
    const int status = QCoreApplication::exec();
    ended = status != -1;
    fuzz::check(ended, "a command did not end within 5 s of a 300 ms time-out");
    fuzz::check(status >= ExitOk && status <= ExitNotCard, "an unknown exit status",
                QString::number(status));
    return 0;
}
