// torv-exporter under the load of a plant: 100 simulated cards probed concurrently, round after
// round, the way Prometheus scrapes them (one keep-alive connection per card). Prints probes
// per second, the probe latency (p50, p99), the longest round, and the exporter's CPU seconds
// per 1,000 probes (the exporter runs as its own process, the program built beside this one).
//
//   exporter_load [cards, default 100] [rounds, default 30]

#include "sim/sim_host.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <unistd.h>
#include <vector>

using namespace torv;

namespace {

// User plus system CPU seconds of a process, from /proc.
double cpuSeconds(qint64 pid) {
    QFile f(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!f.open(QIODevice::ReadOnly)) return -1;
    const QByteArray line = f.readAll();
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    return (fields[11].toDouble() + fields[12].toDouble()) / double(sysconf(_SC_CLK_TCK));
}

// One scraper: a keep-alive HTTP connection asking /probe for one card.
struct Scraper {
    QTcpSocket socket;
    QByteArray request;
    QByteArray in;
    QElapsedTimer sent;
    bool busy = false;
    bool ok = false;

    // True when a whole answer is in `in`.
    bool complete() const {
        const int head = in.indexOf("\r\n\r\n");
        if (head < 0) return false;
        static const QRegularExpression length(QStringLiteral("(?i)content-length:\\s*(\\d+)"));
        const auto m = length.match(QString::fromLatin1(in.left(head)));
        return m.hasMatch() && in.size() >= head + 4 + m.captured(1).toInt();
    }
};

double percentile(std::vector<double> v, double p) {
    if (v.empty()) return 0;
    std::sort(v.begin(), v.end());
    return v[std::min(v.size() - 1, size_t(p * double(v.size())))];
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const int cards = argc > 1 ? std::max(1, atoi(argv[1])) : 100;
    const int rounds = argc > 2 ? std::max(1, atoi(argv[2])) : 30;

    std::vector<std::unique_ptr<sim::SimHost>> sims;
    for (int i = 0; i < cards; ++i) {
        sim::SimOptions o;
        o.log = false;
        o.signal.weight = 100 + i;
        sims.push_back(std::make_unique<sim::SimHost>(o));
        if (!sims.back()->start(0)) {
            std::fprintf(stderr, "exporter_load: simulator %d did not start\n", i);
            return 1;
        }
    }

    QProcess exporter;
    exporter.setProgram(QStringLiteral(TORV_EXPORTER_PATH));
    exporter.setArguments({QStringLiteral("--listen"), QStringLiteral("127.0.0.1:0"),
                           QStringLiteral("--quiet"), QStringLiteral("--max-in-flight"),
                           QString::number(cards * 2)});
    exporter.setReadChannel(QProcess::StandardError);
    exporter.start();
    quint16 port = 0;
    QByteArray err;
    while (port == 0 && exporter.waitForReadyRead(5000)) {
        err += exporter.readAllStandardError();
        const auto m = QRegularExpression(QStringLiteral("127\\.0\\.0\\.1:(\\d+)/"))
                           .match(QString::fromLatin1(err));
        if (m.hasMatch()) port = quint16(m.captured(1).toUInt());
    }
    exporter.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    if (port == 0) {
        std::fprintf(stderr, "exporter_load: %s did not start\n", TORV_EXPORTER_PATH);
        return 1;
    }

    std::vector<std::unique_ptr<Scraper>> scrapers;
    for (int i = 0; i < cards; ++i) {
        auto s = std::make_unique<Scraper>();
        s->request = "GET /probe?target=127.0.0.1:" + QByteArray::number(sims[i]->port()) +
                     " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n";
        s->socket.connectToHost(QHostAddress::LocalHost, port);
        if (!s->socket.waitForConnected(3000)) return 1;
        scrapers.push_back(std::move(s));
    }

    std::vector<double> latencies;
    std::vector<double> roundMs;
    int failed = 0;
    int open = 0;
    QEventLoop loop;
    for (auto& s : scrapers) {
        Scraper* sp = s.get();
        QObject::connect(&sp->socket, &QTcpSocket::readyRead, [&, sp] {
            sp->in += sp->socket.readAll();
            if (!sp->busy || !sp->complete()) return;
            latencies.push_back(sp->sent.nsecsElapsed() / 1e6);
            sp->busy = false;
            if (!sp->in.contains("\ntorv_probe_success 1\n")) ++failed;
            if (--open == 0) loop.quit();
        });
    }

    const double cpuBefore = cpuSeconds(exporter.processId());
    QElapsedTimer total;
    total.start();
    for (int r = 0; r < rounds; ++r) {
        QElapsedTimer round;
        round.start();
        open = cards;
        for (auto& s : scrapers) {
            s->in.clear();
            s->busy = true;
            s->sent.start();
            s->socket.write(s->request);
        }
        QTimer::singleShot(10000, &loop, &QEventLoop::quit);
        loop.exec();
        roundMs.push_back(round.nsecsElapsed() / 1e6);
        if (open != 0) {
            std::fprintf(stderr, "exporter_load: round %d: %d probes unanswered\n", r, open);
            return 1;
        }
    }
    const double seconds = total.nsecsElapsed() / 1e9;
    const double cpu = cpuSeconds(exporter.processId()) - cpuBefore;
    const double probes = double(cards) * rounds;

    std::printf("exporter_load: %d cards, %d rounds, %.0f probes, %d failed\n", cards, rounds,
                probes, failed);
    std::printf("  probes per second        %10.0f\n", probes / seconds);
    std::printf("  probe latency p50        %10.2f ms\n", percentile(latencies, 0.50));
    std::printf("  probe latency p99        %10.2f ms   (target below 250 ms)\n",
                percentile(latencies, 0.99));
    std::printf("  round of %d cards, median %8.1f ms, longest %.1f ms   (target below 1000 ms)\n",
                cards, percentile(roundMs, 0.5), *std::max_element(roundMs.begin(), roundMs.end()));
    std::printf("  exporter CPU per 1,000 probes %6.3f s\n", cpu / probes * 1000);
    exporter.terminate();
    exporter.waitForFinished(3000);
    return failed == 0 ? 0 : 1;
}
