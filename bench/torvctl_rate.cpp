// torvctl against the card simulator program (torv-sim): answers per second of
// `torvctl status --count N --interval 0` (the whole program, start-up included) beside a
// loop of plain blocking sockets doing the same exchange on the same simulator, with their
// ratio (target at least 0.9); and readings per second of `torvctl sample` over a session of
// at least 20,000 readings, beside the pace at which the simulated card records them.
//
//   torvctl_rate [answers per round, default 10000] [rounds, default 5] [readings, 20000]

#include "plain_socket_loop.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

using torv::bench::median;
using torv::bench::plainRate;

namespace {

// The simulated card records a fast-sampling reading every `integration` ms.
constexpr int kSampleIntegration = 1;

// torv-sim on a free port, answering as fast as it can.
class Simulator {
public:
    Simulator() {
        QStringList options = {"--port", "0", "--quiet", "--integration",
                               QString::number(kSampleIntegration)};
        // A simulator that paces its answers is asked not to.
        QProcess help;
        help.start(QStringLiteral(TORV_SIM_PATH), {"--help"});
        help.waitForFinished(5000);
        if (help.readAllStandardOutput().contains("--answer-ms"))
            options << "--answer-ms"
                    << "0";
        process_.setReadChannel(QProcess::StandardError);
        process_.start(QStringLiteral(TORV_SIM_PATH), options);
        QElapsedTimer t;
        t.start();
        QByteArray said;
        static const QRegularExpression listening("listening on 127\\.0\\.0\\.1:(\\d+)");
        while (port == 0 && t.elapsed() < 5000) {
            process_.waitForReadyRead(100);
            said += process_.readAllStandardError();
            const auto m = listening.match(QString::fromLocal8Bit(said));
            if (m.hasMatch()) port = m.captured(1).toUShort();
        }
        if (port == 0) throw std::runtime_error("torv-sim did not start");
    }
    ~Simulator() {
        process_.kill();
        process_.waitForFinished(2000);
    }
    QString address() const { return QStringLiteral("127.0.0.1:%1").arg(port); }
    quint16 port = 0;

private:
    QProcess process_;
};

// Runs torvctl to its end; the wall time of the whole program.
double runTorvctl(const QStringList& args, QByteArray& out) {
    QProcess p;
    QElapsedTimer clock;
    clock.start();
    p.start(QStringLiteral(TORVCTL_PATH), args);
    if (!p.waitForFinished(600000) || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0)
        throw std::runtime_error("torvctl failed: " + p.readAllStandardError().toStdString());
    out = p.readAllStandardOutput();
    return static_cast<double>(clock.nsecsElapsed()) / 1e9;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const int answers = argc > 1 ? std::max(100, std::atoi(argv[1])) : 10000;
    const int rounds = argc > 2 ? std::max(1, std::atoi(argv[2])) : 5;
    const int readings = argc > 3 ? std::clamp(std::atoi(argv[3]), 100, 20000) : 20000;
    try {
        Simulator sim;
        QTemporaryDir folder;
        const QString log = folder.filePath(QStringLiteral("log.csv"));
        std::vector<double> plain, ctl, ratios;
        plainRate(sim.port, 200); // warm-up
        for (int r = 0; r < rounds; ++r) {
            const double p = plainRate(sim.port, answers);
            QByteArray out;
            const double seconds =
                runTorvctl({"-a", sim.address(), "status", "--count", QString::number(answers),
                            "--interval", "0", "--format", "csv", "-o", log},
                           out);
            const double c = answers / seconds;
            plain.push_back(p);
            ctl.push_back(c);
            ratios.push_back(c / p);
        }
        std::printf("torvctl_rate: status, %d answers x %d rounds against torv-sim\n", answers,
                    rounds);
        // On a shared machine other work only ever slows a round down: the best round of each
        // side is the closest to its own rate, the median pair ratio the more cautious figure.
        const double bestPlain = *std::max_element(plain.begin(), plain.end());
        const double bestCtl = *std::max_element(ctl.begin(), ctl.end());
        std::printf("  plain sockets   %8.0f answers/s (median), %8.0f (best round)\n",
                    median(plain), bestPlain);
        std::printf("  torvctl status  %8.0f answers/s (median), %8.0f (best round; the whole "
                    "program)\n",
                    median(ctl), bestCtl);
        std::printf("  ratio torvctl / plain  %.3f (median of the rounds), %.3f (best rounds); "
                    "target >= 0.9\n",
                    median(ratios), bestCtl / bestPlain);

        QByteArray out;
        const QString file = folder.filePath(QStringLiteral("All_data.txt"));
        const double seconds = runTorvctl(
            {"-a", sim.address(), "sample", "--readings", QString::number(readings), "-o", file},
            out);
        const auto m = QRegularExpression("^(\\d+) readings in (\\d+) blocks, ([\\d.]+) readings/s")
                           .match(QString::fromLocal8Bit(out));
        if (!m.hasMatch()) throw std::runtime_error("sample said: " + out.toStdString());
        const double cardPace = 1000.0 / kSampleIntegration;
        std::printf("torvctl_rate: sample, %s readings in %s blocks (%.1f s with start and stop)\n",
                    qPrintable(m.captured(1)), qPrintable(m.captured(2)), seconds);
        std::printf("  torvctl sample  %8.0f readings/s during the session\n",
                    m.captured(3).toDouble());
        std::printf("  the card's pace %8.0f readings/s; ratio %.3f\n", cardPace,
                    m.captured(3).toDouble() / cardPace);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "torvctl_rate: %s\n", e.what());
        return 1;
    }
    return 0;
}
