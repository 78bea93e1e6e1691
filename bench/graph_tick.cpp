// The real-time graph's sampling tick: nanoseconds per tick at the start of a graph and with
// the store nearly full, and the heap allocations a tick makes (target: none, and a tick near
// the end costs at most 1.5 times one at the start).

#include "base/platform.h"
#include "graph/graph_store.h"

#include "support/scripted_dialogs.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> allocations{0};

// A clock that steps a millisecond a call; dialogs from the scripted-dialog helper.
class TickClock : public torv::Platform {
public:
    std::uint32_t now = 0;
    std::uint32_t GetTickCount() override { return ++now; }
    QString NowString() override { return {}; }
    QString localeTextOfOnePointFive() override { return QStringLiteral("1.5"); }
    std::unique_ptr<torv::TcpClient> createTcpClient() override { return nullptr; }
    std::unique_ptr<torv::PeriodicTimer> createTimer() override { return nullptr; }
    void processEvents(int) override {}
    QString programFolder() override { return {}; }
};
using BenchPlatform = torv::test::Scripted<TickClock>;

// The panel's reading label: weights as the panel shows them, taken in turn.
class BenchPanel : public torv::GraphPanel {
public:
    QString texts[4] = {QStringLiteral("1249.937"), QStringLiteral("1250.004"),
                        QStringLiteral("987.125"), QStringLiteral("1302.5")};
    int next = 0;
    QString currentReadingText() override { return texts[next++ & 3]; }
    QString cardAddress() override { return {}; }
    torv::ChannelCalibration calibration(int) override { return {}; }
    QString currentFunctionName() override { return {}; }
    bool pollingOn() override { return true; }
    void setPollingButtonEnabled(bool) override {}
};

class NullView : public torv::GraphView {
public:
    void DrawGraph_TORV() override {}
    void Form_MyUnload() override {}
    void SetTopMost(bool) override {}
};

using Clock = std::chrono::steady_clock;

// Nanoseconds per tick over `ticks` ticks starting at reading count `from` (best of 5), and
// the allocations made meanwhile.
double nsPerTick(torv::GraphStore& store, torv::Int32 from, int ticks, long& allocs) {
    double best = 1e300;
    allocs = 0;
    for (int round = 0; round < 5; ++round) {
        store.readingCount[0] = store.pointCount[0] = from;
        const long before = allocations.load();
        const auto start = Clock::now();
        for (int i = 0; i < ticks; ++i)
            store.GraphSamplingTick();
        const double ns = std::chrono::duration<double, std::nano>(Clock::now() - start).count();
        allocs += allocations.load() - before;
        best = std::min(best, ns / ticks);
    }
    return best;
}

} // namespace

void* operator new(std::size_t size) {
    ++allocations;
    if (void* p = std::malloc(size ? size : 1)) return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept {
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
    std::free(p);
}

int main() {
    BenchPlatform platform;
    BenchPanel panel;
    NullView view;
    torv::GraphStore store(platform);
    store.panel = &panel;
    store.sizeStores(1);
    store.channelActive[0] = true;
    store.graphWindows[0] = &view;
    store.realTimeGraphRuns = true;

    long startAllocs = 0, fullAllocs = 0;
    const int ticks = 45000;
    const double atStart = nsPerTick(store, 0, ticks, startAllocs);
    const double nearFull = nsPerTick(store, 49000 - ticks / 10, ticks / 10, fullAllocs);
    std::printf("graph tick: %.0f ns at the start, %.0f ns near a full store (ratio %.2f, "
                "target <= 1.5)\n",
                atStart, nearFull, nearFull / atStart);
    std::printf("graph tick: %ld heap allocations in %d ticks (target 0)\n",
                startAllocs + fullAllocs, 5 * (ticks + ticks / 10));
    return 0;
}
