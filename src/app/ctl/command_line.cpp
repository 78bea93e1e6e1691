#include "command_line.h"

#include "commands.h"
#include "help.h"

#include <limits>

namespace torv::ctl {

namespace {

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

std::optional<Refusal> readStatusOptions(const QStringList& args, StatusOptions& o) {
    const QString cmd = QStringLiteral("status");
    for (int i = 0; i < args.size(); ++i) {
        QString v;
        qint64 n = 0;
        if (optionValue(args, i, QStringLiteral("--count"), QStringLiteral("-c"), v)) {
            if (!parseWhole(v, 0, std::numeric_limits<qint32>::max(), n))
                return Refusal{QStringLiteral("status --count: a whole number 0..2147483647 "
                                              "(0 = until interrupted)"),
                               cmd};
            o.count = n;
        } else if (optionValue(args, i, QStringLiteral("--interval"), QStringLiteral("-i"), v)) {
            if (!parseWhole(v, 0, 86400000, n))
                return Refusal{QStringLiteral("status --interval: milliseconds 0..86400000"), cmd};
            o.intervalMs = static_cast<int>(n);
        } else if (optionValue(args, i, QStringLiteral("--format"), QStringLiteral("-f"), v)) {
            const std::optional<RowFormat> f = rowFormatFromName(v);
            if (!f)
                return Refusal{QStringLiteral("status --format: plain, csv, jsonl or influx"), cmd};
            o.format = *f;
        } else if (optionValue(args, i, QStringLiteral("--output"), QStringLiteral("-o"), v)) {
            if (v.isEmpty()) return Refusal{QStringLiteral("status -o: a file name"), cmd};
            o.outputPath = v;
        } else {
            return Refusal{QStringLiteral("status: unexpected '%1'").arg(args[i]), cmd};
        }
    }
    return std::nullopt;
}

std::optional<Refusal> readSampleOptions(const QStringList& args, int cards, SampleOptions& o) {
    const QString cmd = QStringLiteral("sample");
    for (int i = 0; i < args.size(); ++i) {
        QString v;
        qint64 n = 0;
        if (optionValue(args, i, QStringLiteral("--seconds"), QStringLiteral("-s"), v)) {
            bool ok = false;
            o.seconds = v.toDouble(&ok);
            if (!ok || !(o.seconds > 0) || o.seconds > 86400)
                return Refusal{QStringLiteral("sample --seconds: more than 0, at most 86400"), cmd};
        } else if (optionValue(args, i, QStringLiteral("--readings"), QStringLiteral("-n"), v)) {
            if (!parseWhole(v, 1, 20000, n))
                return Refusal{QStringLiteral("sample --readings: 1..20000"), cmd};
            o.readings = n;
        } else if (optionValue(args, i, QStringLiteral("--output"), QStringLiteral("-o"), v)) {
            if (v.isEmpty()) return Refusal{QStringLiteral("sample -o: a file name"), cmd};
            o.path = v;
        } else {
            return Refusal{QStringLiteral("sample: unexpected '%1'").arg(args[i]), cmd};
        }
    }
    if ((o.seconds > 0) == (o.readings > 0))
        return Refusal{QStringLiteral("sample: --seconds S or --readings N, one of them"), cmd};
    if (cards != 1) return Refusal{QStringLiteral("sample: one card at a time"), cmd};
    return std::nullopt;
}

CommandLine refuse(CommandLine line, const QString& message) {
    line.action = CommandLine::Action::Usage;
    line.refusal = Refusal{message, QString()};
    return line;
}

} // namespace

CommandLine parseCommandLine(const QStringList& all) {
    CommandLine line;
    QString timeoutText;
    bool help = false, version = false;
    for (int i = 0; i < all.size(); ++i) {
        QString v;
        const QString& a = all[i];
        if (optionValue(all, i, QStringLiteral("--address"), QStringLiteral("-a"), v)) {
            line.addresses << v;
        } else if (optionValue(all, i, QStringLiteral("--timeout"), QStringLiteral("-t"), v)) {
            timeoutText = v.isNull() ? QStringLiteral("?") : v;
        } else if (a == QLatin1String("--help") || a == QLatin1String("-h")) {
            help = true;
        } else if (a == QLatin1String("--version") || a == QLatin1String("-V")) {
            version = true;
        } else if (line.command.isEmpty() && a.startsWith(QLatin1Char('-'))) {
            return refuse(line, QStringLiteral("unknown option '%1'").arg(a));
        } else if (line.command.isEmpty()) {
            line.command = a;
        } else {
            line.args << a;
        }
    }
    if (version) {
        line.action = CommandLine::Action::Version;
        return line;
    }
    if (!line.command.isEmpty() && commandHelpText(line.command).isEmpty())
        return refuse(line, QStringLiteral("unknown command '%1'").arg(line.command));
    if (help) {
        line.action = CommandLine::Action::Help;
        return line;
    }
    if (line.command.isEmpty()) return refuse(line, QStringLiteral("no command"));
    if (!timeoutText.isNull()) {
        qint64 ms = 0;
        if (!parseWhole(timeoutText, 1, 3600000, ms))
            return refuse(line, QStringLiteral("--timeout: milliseconds 1..3600000"));
        line.timeoutMs = static_cast<int>(ms);
    }

    for (const QString& text : line.addresses) {
        client::CardAddress a;
        if (!parseCardAddress(text, a)) {
            line.lateRefusal = Refusal{
                QStringLiteral("--address '%1': not HOST or HOST:PORT (port 1..65535)").arg(text),
                QString()};
            return line;
        }
        line.cards.push_back(a);
    }
    // Without --address, TORV_NET.cfg names the one card (or the run stops before this).
    const int cards = line.addresses.isEmpty() ? 1 : static_cast<int>(line.cards.size());
    if (line.command == QLatin1String("status"))
        line.lateRefusal = readStatusOptions(line.args, line.status);
    else if (line.command == QLatin1String("sample"))
        line.lateRefusal = readSampleOptions(line.args, cards, line.sample);
    return line;
}

} // namespace torv::ctl
