// torvctl: the TORV-NET card from the command line. No display: QCoreApplication only.

#include "command_line.h"
#include "commands.h"
#include "files/config_file.h"
#include "help.h"
#include "sample_run.h"
#include "status_poll.h"

#include <QCoreApplication>
#include <QFile>
#include <QSocketNotifier>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace torv::ctl {

namespace {

std::function<void()> g_interrupt;
int g_signalPipe[2] = {-1, -1};

void onSignal(int) {
    const char byte = 1;
    [[maybe_unused]] const ssize_t n = ::write(g_signalPipe[1], &byte, 1);
}

// Ctrl-C and SIGTERM reach the event loop through a pipe, so the closing lines are written
// from there and not from inside the signal handler.
void catchInterrupts(QObject* owner) {
    if (::pipe(g_signalPipe) != 0) return;
    for (int fd : g_signalPipe)
        ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
    auto* notifier = new QSocketNotifier(g_signalPipe[0], QSocketNotifier::Read, owner);
    QObject::connect(notifier, &QSocketNotifier::activated, owner, [] {
        char bytes[16];
        while (::read(g_signalPipe[0], bytes, sizeof bytes) > 0) {
        }
        if (g_interrupt) g_interrupt();
    });
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
}

} // namespace

} // namespace torv::ctl

int main(int argc, char* argv[]) {
    using namespace torv;
    using namespace torv::ctl;
    // Sockets and timers only: Qt's own event dispatcher costs less per request than GLib's.
    if (!qEnvironmentVariableIsSet("QT_NO_GLIB")) qputenv("QT_NO_GLIB", "1");
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("torvctl"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TORV_VERSION));

    const CommandLine line = parseCommandLine(app.arguments().mid(1));
    const auto refuse = [](const Refusal& r) { return usage(r.message, r.command); };
    switch (line.action) {
    case CommandLine::Action::Usage:
        return refuse(*line.refusal);
    case CommandLine::Action::Version:
        std::printf("torvctl %s\n", TORV_VERSION);
        return ExitOk;
    case CommandLine::Action::Help: {
        const QString text = line.command.isEmpty() ? programHelp() : commandHelpText(line.command);
        std::fputs(text.toLocal8Bit().constData(), stdout);
        return ExitOk;
    }
    case CommandLine::Action::Run:
        break;
    }

    HeadlessPlatform platform;
    Session session;
    session.platform = &platform;
    if (line.timeoutMs) session.timeoutMs = *line.timeoutMs;
    std::vector<client::CardAddress> cards = line.cards;
    const QString configName = QStringLiteral("TORV_NET.cfg");
    if (QFile::exists(configName)) {
        ClientConfig config;
        Load_Config_File(platform, configName, config, QString());
        session.xMode = config.xMode == QLatin1String("2") ? 2 : 1;
        if (line.addresses.isEmpty() && !config.address.trimmed().isEmpty()) {
            client::CardAddress a;
            if (!parseCardAddress(config.address, a))
                return usage(configName +
                             QStringLiteral(": '%1' is not a card address").arg(config.address));
            cards.push_back(a);
        }
    }
    if (line.addresses.isEmpty() && cards.empty())
        return usage(QStringLiteral("no card address: give --address HOST[:PORT], or run where "
                                    "TORV_NET.cfg names the card"));
    if (line.lateRefusal) return refuse(*line.lateRefusal);
    for (const client::CardAddress& a : cards)
        session.cards.push_back(std::make_unique<client::CardClient>(a, session.timeoutMs));

    StatusPoll* poll = nullptr;
    SampleRun* run = nullptr;
    int started = -1;
    const QString& command = line.command;
    const QStringList& args = line.args;
    if (command == QLatin1String("status")) {
        poll = new StatusPoll(session, line.status);
        started = poll->start() ? -1 : session.status;
    } else if (command == QLatin1String("sample")) {
        run = new SampleRun(session, line.sample);
        run->start();
    } else if (command == QLatin1String("outputs")) {
        started = startOutputs(session, args);
    } else if (command == QLatin1String("setpoints")) {
        started = startSetpoints(session, args);
    } else if (command == QLatin1String("d2a")) {
        started = startD2A(session, args);
    } else if (command == QLatin1String("integration")) {
        started = startIntegration(session, args);
    } else if (command == QLatin1String("channel")) {
        started = startChannel(session, args);
    }
    std::unique_ptr<StatusPoll> pollOwner(poll);
    std::unique_ptr<SampleRun> runOwner(run);
    if (started >= 0) return started;
    if (poll) g_interrupt = [poll] { poll->interrupt(); };
    if (run) g_interrupt = [run] { run->interrupt(); };
    if (g_interrupt) catchInterrupts(&app);
    const int status = app.exec();
    session.cards.clear();
    return status;
}
