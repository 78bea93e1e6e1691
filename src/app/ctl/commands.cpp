// The one-shot commands: outputs, set points, analog output, integration, channel; and the
// start of `status`.

#include "commands.h"

#include "link/catalogue.h"
#include "rows.h"
#include "status_poll.h"

#include <QCoreApplication>
#include <cstdio>

namespace torv::ctl {

using client::CardClient;
using client::Failure;
using client::FailureKind;
using client::Reply;

namespace {

constexpr int kOutputs = 14;
constexpr int kInputs = 8;
const int kIntegrations[] = {2, 4, 8, 12, 16, 32, 64, 128, 256};

void say(const QString& line) {
    std::fputs((line + QLatin1Char('\n')).toLocal8Bit().constData(), stdout);
    std::fflush(stdout);
}

// Counts the cards still at work; the event loop ends with the last.
struct Countdown {
    Session& session;
    std::size_t left;
    void done() {
        if (--left == 0) QCoreApplication::exit(session.status);
    }
};

// Runs `step` for every card; each calls `finished` once when its card is done.
int forEachCard(Session& session,
                const std::function<void(CardClient&, std::function<void()>)>& step) {
    auto count = std::make_shared<Countdown>(Countdown{session, session.cards.size()});
    for (auto& card : session.cards)
        step(*card, [count] { count->done(); });
    return -1;
}

// A failure with the card's address in front of a parse failure's detail.
Failure at(const CardClient& card, Failure f) {
    f.detail = card.address().text() + QStringLiteral(": ") + f.detail;
    return f;
}

// "1 2 5-14": the numbers 1..n whose bit in `word` equals `bit`.
QString numbersWithBit(int word, int n, int bit) {
    QStringList parts;
    for (int k = 1; k <= n; ++k) {
        if (((word >> (k - 1)) & 1) != bit) continue;
        int last = k;
        while (last < n && ((word >> last) & 1) == bit)
            ++last;
        parts << (last > k + 1 ? QStringLiteral("%1-%2").arg(k).arg(last)
                  : last == k  ? QString::number(k)
                               : QStringLiteral("%1 %2").arg(k).arg(last));
        k = last;
    }
    return parts.isEmpty() ? QStringLiteral("none") : parts.join(QLatin1Char(' '));
}

// A 1 bit is an output off, a 0 bit on; an input is active at 0.
QString outputsLine(int word) {
    return QStringLiteral("outputs %1  on: %2  off: %3")
        .arg(word)
        .arg(numbersWithBit(word, kOutputs, 0), numbersWithBit(word, kOutputs, 1));
}

QString inputsLine(int word) {
    return QStringLiteral("inputs  %1  active: %2  inactive: %3")
        .arg(word)
        .arg(numbersWithBit(word, kInputs, 0), numbersWithBit(word, kInputs, 1));
}

// One request per card; `read` turns a complete answer into lines or a failure.
int oneRequest(Session& session, const QString& function, const QString& body,
               const std::function<std::optional<Failure>(CardClient&, const QString&)>& read) {
    return forEachCard(session, [&session, function, body, read](CardClient& card,
                                                                 std::function<void()> finished) {
        card.request(function, body, [&session, &card, read, finished](const Reply& reply) {
            if (reply.failure)
                session.fail(*reply.failure);
            else if (auto f = read(card, reply.answer))
                session.fail(at(card, *f));
            finished();
        });
    });
}

// A Set command whose answer echoes the value in `element`.
int echoCommand(Session& session, const QString& function, const QString& body,
                const QString& element, const QString& caption) {
    return oneRequest(session, function, body,
                      [&session, element, caption](CardClient& card, const QString& answer) {
                          std::optional<std::int64_t> echo;
                          if (auto f = client::parseEcho(answer, element, echo)) return f;
                          say(session.prefix(card) + caption + QStringLiteral(": ") +
                              (echo ? QString::number(*echo) : QStringLiteral("(no echo)")));
                          return std::optional<Failure>();
                      });
}

QString numberText(double v) {
    QString t = QString::number(v, 'f', 6);
    while (t.endsWith(QLatin1Char('0')))
        t.chop(1);
    if (t.endsWith(QLatin1Char('.'))) t.chop(1);
    return t == QLatin1String("-0") ? QStringLiteral("0") : t;
}

void showSetpoints(Session& session, CardClient& card, std::function<void()> finished) {
    card.request(fn::GetSetpoints, QStringLiteral("ID=1"), [&, finished](const Reply& reply) {
        client::SetpointsRecord sp;
        if (reply.failure) {
            session.fail(*reply.failure);
        } else if (auto f = client::parseSetpoints(reply.answer, sp)) {
            session.fail(at(card, *f));
        } else {
            QStringList parts;
            for (int n = 0; n < 4; ++n)
                parts << QStringLiteral("%1: %2").arg(n + 1).arg(!sp.values[n] ? QStringLiteral("-")
                                                                 : *sp.values[n] == -1
                                                                     ? QStringLiteral("none")
                                                                     : numberText(*sp.values[n]));
            say(session.prefix(card) + QStringLiteral("set points  ") +
                parts.join(QStringLiteral("  ")));
        }
        finished();
    });
}

} // namespace

int usage(const QString& message, const QString& command) {
    complain(message);
    std::fprintf(stderr, "Try 'torvctl %s--help'.\n",
                 command.isEmpty() ? "" : (command + QLatin1Char(' ')).toLocal8Bit().constData());
    return ExitUsage;
}

bool parseWhole(const QString& text, qint64 low, qint64 high, qint64& out) {
    const QString t = text.trimmed();
    bool ok = false;
    const qint64 v = t.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)
                         ? t.mid(2).toLongLong(&ok, 16)
                         : t.toLongLong(&ok, 10);
    if (!ok || v < low || v > high) return false;
    out = v;
    return true;
}

int startOutputs(Session& session, const QStringList& args) {
    const QString cmd = QStringLiteral("outputs");
    int on = 0, off = 0; // bit masks
    std::optional<qint64> word;
    int mode = 0; // 1 after "on", 2 after "off"
    for (int i = 0; i < args.size(); ++i) {
        const QString& a = args[i];
        qint64 v = 0;
        if (a == QLatin1String("on")) {
            mode = 1;
        } else if (a == QLatin1String("off")) {
            mode = 2;
        } else if (a == QLatin1String("--word")) {
            if (i + 1 >= args.size() || !parseWhole(args[i + 1], 0, 65535, v))
                return usage(QStringLiteral("outputs --word: a value 0..65535 (a 1 bit is an "
                                            "output off)"),
                             cmd);
            word = v;
            ++i;
        } else if (mode != 0 && parseWhole(a, 1, kOutputs, v)) {
            (mode == 1 ? on : off) |= 1 << (v - 1);
        } else if (mode != 0) {
            return usage(
                QStringLiteral("outputs: output '%1' out of range 1..%2").arg(a).arg(kOutputs),
                cmd);
        } else {
            return usage(QStringLiteral("outputs: unexpected '%1'").arg(a), cmd);
        }
    }
    if (word && (on | off))
        return usage(QStringLiteral("outputs: --word or on/off, not both"), cmd);
    if (on & off) return usage(QStringLiteral("outputs: an output both on and off"), cmd);
    if (mode != 0 && !(on | off))
        return usage(QStringLiteral("outputs: which outputs? e.g. 'outputs on 1 2 off 3'"), cmd);

    const auto set = [&session](CardClient& card, int newWord, std::function<void()> finished) {
        card.request(fn::SetOutput, setOutputBody(static_cast<Int16>(newWord)),
                     [&session, &card, newWord, finished](const Reply& reply) {
                         std::optional<std::int64_t> echo;
                         if (reply.failure)
                             session.fail(*reply.failure);
                         else if (auto f = client::parseEcho(
                                      reply.answer, QStringLiteral("OUT_STATUS_ECHO"), echo))
                             session.fail(at(card, *f));
                         else
                             say(session.prefix(card) +
                                 outputsLine(echo ? static_cast<int>(*echo & 0xFFFF) : newWord));
                         finished();
                     });
    };
    if (word) {
        const int w = static_cast<int>(*word);
        return forEachCard(session, [set, w](CardClient& card, std::function<void()> finished) {
            set(card, w, std::move(finished));
        });
    }
    // The output word now, then (for on/off) the word with those bits changed.
    const bool change = (on | off) != 0;
    return forEachCard(session, [&session, set, on, off, change](CardClient& card,
                                                                 std::function<void()> finished) {
        card.status([&session, &card, set, on, off, change,
                     finished](const Reply& reply, const client::StatusRecord& s) {
            if (reply.failure) {
                session.fail(*reply.failure);
                if (reply.failure->kind != FailureKind::CardError || change) {
                    finished();
                    return;
                }
            }
            if (!s.outputs) {
                session.fail(at(card, {FailureKind::Malformed,
                                       QStringLiteral("the status answer has no OUT_STATUS"),
                                       {},
                                       {}}));
                finished();
                return;
            }
            const int current = *s.outputs & 0xFFFF;
            if (!change) {
                say(session.prefix(card) + outputsLine(current));
                if (s.inputs) say(session.prefix(card) + inputsLine(*s.inputs & 0xFF));
                finished();
                return;
            }
            set(card, (current & ~on) | off, finished);
        });
    });
}

int startSetpoints(Session& session, const QStringList& args) {
    const QString cmd = QStringLiteral("setpoints");
    if (args.isEmpty())
        return forEachCard(session, [&session](CardClient& card, std::function<void()> finished) {
            showSetpoints(session, card, std::move(finished));
        });
    if (args.size() != 4)
        return usage(QStringLiteral("setpoints: four values A B C D, or none to read them"), cmd);
    std::array<double, 4> values{};
    for (int n = 0; n < 4; ++n) {
        bool ok = false;
        values[n] = args[n].trimmed().toDouble(&ok);
        if (!ok || !std::isfinite(values[n]) || (values[n] < 0 && values[n] != -1))
            return usage(QStringLiteral("setpoints: set point %1 '%2' out of range: 0 .. the "
                                        "card's maximum load, or -1 for none")
                             .arg(n + 1)
                             .arg(args[n]),
                         cmd);
    }
    // The card's maximum load bounds the values: read it first, set nothing above it.
    return forEachCard(
        session, [&session, values](CardClient& card, std::function<void()> finished) {
            card.status([&session, &card, values, finished](const Reply& reply,
                                                            const client::StatusRecord& s) {
                if (reply.failure) {
                    session.fail(*reply.failure);
                    finished();
                    return;
                }
                for (int n = 0; n < 4; ++n) {
                    if (s.maximumLoad && values[n] > *s.maximumLoad) {
                        complain(QStringLiteral("%1set point %2 (%3) out of range 0..%4 (the "
                                                "card's maximum load), or -1 for none; nothing set")
                                     .arg(session.prefix(card))
                                     .arg(n + 1)
                                     .arg(numberText(values[n]), numberText(*s.maximumLoad)));
                        session.worsen(ExitUsage);
                        finished();
                        return;
                    }
                }
                const QString body = setSetpointsBody(numberText(values[0]), numberText(values[1]),
                                                      numberText(values[2]), numberText(values[3]));
                card.request(fn::SetSetpoints, body, [&session, &card, finished](const Reply& r) {
                    client::SetpointsRecord ignored;
                    if (r.failure) {
                        session.fail(*r.failure);
                        finished();
                    } else if (auto f = client::parseSetpoints(r.answer, ignored)) {
                        session.fail(at(card, *f));
                        finished();
                    } else {
                        showSetpoints(session, card, finished);
                    }
                });
            });
        });
}

int startD2A(Session& session, const QStringList& args) {
    qint64 v = 0;
    if (args.size() != 1 || !parseWhole(args[0], 0, 255, v))
        return usage(QStringLiteral("d2a: one value 0..255 (decimal, or hexadecimal after 0x)"),
                     QStringLiteral("d2a"));
    return echoCommand(session, fn::SetD2A, setD2ABody(static_cast<int>(v)),
                       QStringLiteral("ANALOG_OUT"), QStringLiteral("analog output"));
}

int startIntegration(Session& session, const QStringList& args) {
    qint64 v = 0;
    const bool listed =
        args.size() == 1 && parseWhole(args[0], 0, 256, v) &&
        std::find(std::begin(kIntegrations), std::end(kIntegrations), v) != std::end(kIntegrations);
    if (!listed)
        return usage(QStringLiteral("integration: one of 2 4 8 12 16 32 64 128 256 (ms)"),
                     QStringLiteral("integration"));
    return echoCommand(session, fn::SetIntegration, setIntegrationBody(static_cast<Int16>(v)),
                       QStringLiteral("INTEGRATION_ECHO"), QStringLiteral("integration"));
}

int startChannel(Session& session, const QStringList& args) {
    qint64 v = 0;
    if (args.size() != 1 || !parseWhole(args[0], 1, 2, v))
        return usage(QStringLiteral("channel: 1 or 2"), QStringLiteral("channel"));
    const int channel = static_cast<int>(v);
    // The switch carries the status request's body, as the panel sends it while it polls.
    return oneRequest(session, channelSwitchName(channel), QStringLiteral("ID=4"),
                      [&session, channel](CardClient& card, const QString& answer) {
                          if (auto f = client::parseErrorCode(answer)) return f;
                          say(session.prefix(card) + QStringLiteral("channel %1").arg(channel));
                          return std::optional<Failure>();
                      });
}

} // namespace torv::ctl
