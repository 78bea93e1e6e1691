// Parsing of fast-sampling answers: readings per second for blocks of 100, 1000 and 20000
// readings, and how the cost of one reading grows with the block (target: the largest block
// costs at most 1.5 times per reading what the smallest costs).

#include "link/qt_net_platform.h"
#include "panel/frm_client.h"

#include <QCoreApplication>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace {

// The Qt clock and sockets; dialogs answer at once (a parse of good readings asks nothing).
class BenchPlatform : public torv::QtNetPlatform {
public:
    int messages = 0;
    void messageBox(const QString&) override { ++messages; }
    bool askYesNo(const QString&) override {
        ++messages;
        return true;
    }
    int textWidth(const QString& text) override { return static_cast<int>(text.size()) * 6; }
    int messageReferenceWidth() override { return 0; }
    std::optional<QString> openFileDialog(const torv::FileDialogRequest&) override { return {}; }
    bool startProgram(const QString&, const QStringList&) override { return false; }
    void postCloseMessage(std::int64_t) override {}
    [[noreturn]] void endProgram() override { std::exit(2); }
};

// An answer as the card sends it, with readings of varying length ("-12.5" .. "1234.567").
QString answerOf(int readings) {
    QString s = QStringLiteral("HTTP/1.0 200 OK\r\nContent-Type: text/xml\r\n\r\n"
                               "<GetFastSampling><ERROR_CODE>0</ERROR_CODE>"
                               "<ERROR_DESCRIPTION>OK</ERROR_DESCRIPTION>");
    for (int i = 0; i < readings; ++i) {
        const double value = (i % 7 == 0) ? -12.5 : 1000.0 + (i % 997) * 0.237;
        s += QStringLiteral("<W%1>%2</W%1>").arg(i).arg(value, 0, 'f', (i % 3) + 1);
    }
    s += QStringLiteral("</GetFastSampling>");
    return s;
}

using Clock = std::chrono::steady_clock;

// Nanoseconds per reading: the best of several rounds, each parsing about a million readings.
double nsPerReading(torv::FrmClient& panel, int readings) {
    const QString answer = answerOf(readings);
    const int repeats = std::max(5, 1'000'000 / readings);
    double best = 1e300;
    for (int round = 0; round < 5; ++round) {
        const auto start = Clock::now();
        for (int r = 0; r < repeats; ++r) {
            torv::Int32 last = -1;
            bool ok = false;
            panel.GetVarSizeArray(answer, 0, last, 1, 1, 0, 0, ok);
            if (!ok || last != readings - 1) {
                std::fprintf(stderr, "block of %d readings not taken (last index %d)\n", readings,
                             last);
                std::exit(1);
            }
        }
        const double ns = std::chrono::duration<double, std::nano>(Clock::now() - start).count();
        best = std::min(best, ns / (static_cast<double>(repeats) * readings));
    }
    return best;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    BenchPlatform platform;
    torv::FrmClient panel(platform);
    panel.InitStart_Sample_Parameters();

    const int sizes[] = {100, 1000, 20000};
    double cost[3] = {};
    std::printf("block_parse: fast-sampling answers parsed into the reading list\n");
    for (int i = 0; i < 3; ++i) {
        cost[i] = nsPerReading(panel, sizes[i]);
        std::printf("  %6d readings per answer: %12.0f readings/s  (%.1f ns per reading)\n",
                    sizes[i], 1e9 / cost[i], cost[i]);
    }
    const auto [lo, hi] = std::minmax_element(std::begin(cost), std::end(cost));
    std::printf("  per-reading cost, largest / smallest: %.2f (target at most 1.5)\n", *hi / *lo);
    if (platform.messages != 0 || panel.link.iXmlErrors != 0) {
        std::fprintf(stderr, "unexpected messages or answer errors\n");
        return 1;
    }
    return 0;
}
