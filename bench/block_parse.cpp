// Parsing of fast-sampling answers: readings per second for blocks of 100, 1000 and 20000
// readings, and how the cost of one reading grows with the block (target: the largest block
// costs at most 1.5 times per reading what the smallest costs).

#include "link/block_parser.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

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

// Nanoseconds per reading over one pass of about a million readings, each answer stored in a
// reading list of a session's size, as the panel does.
double nsPerReading(std::vector<QString>& list, const QString& answer, int readings) {
    const int repeats = std::max(5, 1'000'000 / readings);
    const torv::BlockParseRules rules;
    const auto start = Clock::now();
    for (int r = 0; r < repeats; ++r) {
        const torv::FastSamplingBlock block =
            torv::parseFastSamplingBlock(answer, 0, list[0], rules);
        if (!block.taken || block.lastIndex != readings - 1 || block.answerErrors != 0) {
            std::fprintf(stderr, "block of %d readings not taken (last index %d)\n", readings,
                         block.lastIndex);
            std::exit(1);
        }
        std::copy(block.readings.begin(), block.readings.end(), list.begin());
    }
    const double ns = std::chrono::duration<double, std::nano>(Clock::now() - start).count();
    return ns / (static_cast<double>(repeats) * readings);
}

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

} // namespace

// The sizes take turns within each round, so a busy machine slows them alike; each figure is
// the median over the rounds.
int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 7;
    std::vector<QString> list(22001, QStringLiteral("0"));
    const int sizes[] = {100, 1000, 20000};
    QString answers[3];
    for (int i = 0; i < 3; ++i)
        answers[i] = answerOf(sizes[i]);
    std::vector<double> cost[3], ratio;
    for (int round = 0; round < rounds; ++round) {
        double c[3];
        for (int i = 0; i < 3; ++i) {
            c[i] = nsPerReading(list, answers[i], sizes[i]);
            cost[i].push_back(c[i]);
        }
        const auto [lo, hi] = std::minmax_element(std::begin(c), std::end(c));
        ratio.push_back(*hi / *lo);
    }
    std::printf("block_parse: fast-sampling answers parsed into the reading list, %d rounds\n",
                rounds);
    for (int i = 0; i < 3; ++i) {
        const double ns = median(cost[i]);
        std::printf("  %6d readings per answer: %12.0f readings/s  (%.1f ns per reading)\n",
                    sizes[i], 1e9 / ns, ns);
    }
    std::printf("  per-reading cost, largest / smallest: %.2f (median of rounds; target at most "
                "1.5)\n",
                median(ratio));
    return 0;
}
