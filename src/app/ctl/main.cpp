// torvctl: the TORV-NET card from the command line. No display: QCoreApplication only.

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

// Takes the value of "--name VALUE" or "--name=VALUE" at args[i]; false when `name` is not
// there. A missing value leaves `value` null.
bool optionValue(const QStringList& args, int& i, const QString& name, const QString& shortName,
                 QString& value) {
    const QString& a = args[i];
    if (a.startsWith(name + QLatin1Char('='))) {
        value = a.mid(name.size() + 1);
        return true;
    }
    if (a != name && (shortName.isEmpty() || a != shortName)) return false;
    value = i + 1 < args.size() ? args[++i] : QString();
    return true;
}

int startStatusCommand(Session& session, const QStringList& args, StatusPoll*& poll) {
    const QString cmd = QStringLiteral("status");
    StatusOptions o;
    for (int i = 0; i < args.size(); ++i) {
        QString v;
        qint64 n = 0;
        if (optionValue(args, i, QStringLiteral("--count"), QStringLiteral("-c"), v)) {
            if (!parseWhole(v, 0, std::numeric_limits<qint32>::max(), n))
                return usage(QStringLiteral("status --count: a whole number 0..2147483647 "
                                            "(0 = until interrupted)"),
                             cmd);
            o.count = n;
        } else if (optionValue(args, i, QStringLiteral("--interval"), QStringLiteral("-i"), v)) {
            if (!parseWhole(v, 0, 86400000, n))
                return usage(QStringLiteral("status --interval: milliseconds 0..86400000"), cmd);
            o.intervalMs = static_cast<int>(n);
        } else if (optionValue(args, i, QStringLiteral("--format"), QStringLiteral("-f"), v)) {
            const std::optional<RowFormat> f = rowFormatFromName(v);
            if (!f)
                return usage(QStringLiteral("status --format: plain, csv, jsonl or influx"), cmd);
            o.format = *f;
        } else if (optionValue(args, i, QStringLiteral("--output"), QStringLiteral("-o"), v)) {
            if (v.isEmpty()) return usage(QStringLiteral("status -o: a file name"), cmd);
            o.outputPath = v;
        } else {
            return usage(QStringLiteral("status: unexpected '%1'").arg(args[i]), cmd);
        }
    }
    poll = new StatusPoll(session, o);
    return poll->start() ? -1 : session.status;
}

int startSampleCommand(Session& session, const QStringList& args, SampleRun*& run) {
    const QString cmd = QStringLiteral("sample");
    SampleOptions o;
    for (int i = 0; i < args.size(); ++i) {
        QString v;
        qint64 n = 0;
        if (optionValue(args, i, QStringLiteral("--seconds"), QStringLiteral("-s"), v)) {
            bool ok = false;
            o.seconds = v.toDouble(&ok);
            if (!ok || !(o.seconds > 0) || o.seconds > 86400)
                return usage(QStringLiteral("sample --seconds: more than 0, at most 86400"), cmd);
        } else if (optionValue(args, i, QStringLiteral("--readings"), QStringLiteral("-n"), v)) {
            if (!parseWhole(v, 1, 20000, n))
                return usage(QStringLiteral("sample --readings: 1..20000"), cmd);
            o.readings = n;
        } else if (optionValue(args, i, QStringLiteral("--output"), QStringLiteral("-o"), v)) {
            if (v.isEmpty()) return usage(QStringLiteral("sample -o: a file name"), cmd);
            o.path = v;
        } else {
            return usage(QStringLiteral("sample: unexpected '%1'").arg(args[i]), cmd);
        }
    }
    if ((o.seconds > 0) == (o.readings > 0))
        return usage(QStringLiteral("sample: --seconds S or --readings N, one of them"), cmd);
    if (session.cards.size() != 1) return usage(QStringLiteral("sample: one card at a time"), cmd);
    run = new SampleRun(session, o);
    run->start();
    return -1;
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

    const QStringList all = app.arguments().mid(1);
    QStringList addressTexts, args;
    QString command, timeoutText;
    bool help = false, version = false;
    for (int i = 0; i < all.size(); ++i) {
        QString v;
        const QString& a = all[i];
        if (optionValue(all, i, QStringLiteral("--address"), QStringLiteral("-a"), v)) {
            addressTexts << v;
        } else if (optionValue(all, i, QStringLiteral("--timeout"), QStringLiteral("-t"), v)) {
            timeoutText = v.isNull() ? QStringLiteral("?") : v;
        } else if (a == QLatin1String("--help") || a == QLatin1String("-h")) {
            help = true;
        } else if (a == QLatin1String("--version") || a == QLatin1String("-V")) {
            version = true;
        } else if (command.isEmpty() && a.startsWith(QLatin1Char('-'))) {
            return usage(QStringLiteral("unknown option '%1'").arg(a));
        } else if (command.isEmpty()) {
            command = a;
        } else {
            args << a;
        }
    }
    if (version) {
        std::printf("torvctl %s\n", TORV_VERSION);
        return ExitOk;
    }
    if (!command.isEmpty() && commandHelpText(command).isEmpty())
        return usage(QStringLiteral("unknown command '%1'").arg(command));
    if (help) {
        const QString text = command.isEmpty() ? programHelp() : commandHelpText(command);
        std::fputs(text.toLocal8Bit().constData(), stdout);
        return ExitOk;
    }
    if (command.isEmpty()) return usage(QStringLiteral("no command"));

    HeadlessPlatform platform;
    Session session;
    session.platform = &platform;
    if (!timeoutText.isNull()) {
        qint64 ms = 0;
        if (!parseWhole(timeoutText, 1, 3600000, ms))
            return usage(QStringLiteral("--timeout: milliseconds 1..3600000"));
        session.timeoutMs = static_cast<int>(ms);
    }
    const QString configName = QStringLiteral("TORV_NET.cfg");
    if (QFile::exists(configName)) {
        ClientConfig config;
        Load_Config_File(platform, configName, config, QString());
        session.xMode = config.xMode == QLatin1String("2") ? 2 : 1;
        if (addressTexts.isEmpty() && !config.address.trimmed().isEmpty()) {
            client::CardAddress a;
            if (!parseCardAddress(config.address, a))
                return usage(configName +
                             QStringLiteral(": '%1' is not a card address").arg(config.address));
            addressTexts << config.address;
        }
    }
    if (addressTexts.isEmpty())
        return usage(QStringLiteral("no card address: give --address HOST[:PORT], or run where "
                                    "TORV_NET.cfg names the card"));
    for (const QString& text : addressTexts) {
        client::CardAddress a;
        if (!parseCardAddress(text, a))
            return usage(
                QStringLiteral("--address '%1': not HOST or HOST:PORT (port 1..65535)").arg(text));
        session.cards.push_back(std::make_unique<client::CardClient>(a, session.timeoutMs));
    }

    StatusPoll* poll = nullptr;
    SampleRun* run = nullptr;
    int started = -1;
    if (command == QLatin1String("status"))
        started = startStatusCommand(session, args, poll);
    else if (command == QLatin1String("sample"))
        started = startSampleCommand(session, args, run);
    else if (command == QLatin1String("outputs"))
        started = startOutputs(session, args);
    else if (command == QLatin1String("setpoints"))
        started = startSetpoints(session, args);
    else if (command == QLatin1String("d2a"))
        started = startD2A(session, args);
    else if (command == QLatin1String("integration"))
        started = startIntegration(session, args);
    else if (command == QLatin1String("channel"))
        started = startChannel(session, args);
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
