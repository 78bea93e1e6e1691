// torvctl's commands on any arguments (outputs, setpoints, d2a, integration, channel), run to
// their end against the card simulator on loopback, which answers as the card does or with
// one of its faults (garbage, error codes, cut-off, oversize, silence).
//
// Also torvctl's whole command line (global options, status and sample options) read by
// parseCommandLine, which sends nothing.
//
// Input: a first byte of 0..4 picks the command, then come the simulator's fault and the
// arguments separated by NUL bytes. A first byte of 5 (mod 6) makes the rest a whole command
// line, its arguments separated by NUL bytes or newlines.
// Checks: a command either refuses its arguments with usage status 2 before anything is sent,
// or ends with one of torvctl's exit statuses within its time-outs. A command line is either
// refused with a one-line message, or read into a known command whose values are in range.

#include "command_line.h"
#include "commands.h"
#include "fuzz_support.h"
#include "help.h"
#include "no_network.h"
#include "session.h"
#include "sim/sim_host.h"

#include <QCoreApplication>
#include <QTimer>
#include <limits>

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

void checkRefusal(const Refusal& r) {
    fuzz::check(!r.message.isEmpty(), "a usage error without a message");
    fuzz::check(!r.message.contains(QLatin1Char('\n')), "a usage message of several lines",
                r.message);
    fuzz::check(r.command.isEmpty() || !commandHelpText(r.command).isEmpty(),
                "a usage hint to an unknown command", r.command);
}

void checkCommandLine(const QStringList& args) {
    const CommandLine line = parseCommandLine(args);
    using Action = CommandLine::Action;
    fuzz::check(line.refusal.has_value() == (line.action == Action::Usage),
                "a refusal without the usage action, or the reverse");
    if (line.refusal) checkRefusal(*line.refusal);
    if (line.action == Action::Usage || line.action == Action::Version) return;
    fuzz::check(line.command.isEmpty() ? line.action == Action::Help
                                       : !commandHelpText(line.command).isEmpty(),
                "an unknown command accepted", line.command);
    if (line.action == Action::Help) return;
    if (line.timeoutMs)
        fuzz::check(*line.timeoutMs >= 1 && *line.timeoutMs <= 3600000, "a time-out out of range",
                    QString::number(*line.timeoutMs));
    if (line.lateRefusal) return checkRefusal(*line.lateRefusal);
    fuzz::check(line.cards.size() == static_cast<std::size_t>(line.addresses.size()),
                "an --address lost");
    for (const client::CardAddress& a : line.cards) {
        client::CardAddress again;
        fuzz::check(a.port > 0 && parseCardAddress(a.text(), again) && again.host == a.host &&
                        again.port == a.port,
                    "a card address that does not read back", a.text());
    }
    const StatusOptions& s = line.status;
    fuzz::check(s.count >= 0 && s.count <= std::numeric_limits<qint32>::max() &&
                    s.intervalMs >= 0 && s.intervalMs <= 86400000,
                "status options out of range");
    const SampleOptions& o = line.sample;
    if (line.command != QLatin1String("sample")) return;
    fuzz::check((o.seconds > 0 && o.seconds <= 86400 && o.readings == 0) ||
                    (o.seconds == 0 && o.readings >= 1 && o.readings <= 20000),
                "sample without exactly one limit in range");
    fuzz::check(line.cards.size() <= 1 && !o.path.isEmpty(), "sample on several cards or no file");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Card card;
    fuzz::Input in(data, size);
    const int choice = in.choose(6);
    if (choice == 5) {
        QStringList args;
        const QByteArray rest = in.rest();
        for (const QByteArray& a : rest.split('\0'))
            for (const QByteArray& b : a.split('\n'))
                args << QString::fromLatin1(b);
        if (rest.isEmpty()) args.clear();
        checkCommandLine(args);
        return 0;
    }
    const Start start = kCommands[choice];
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
