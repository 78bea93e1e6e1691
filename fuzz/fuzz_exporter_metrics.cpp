// The exporter's metrics for any status the client can produce and any failure, and its own
// figures: the output must be valid exposition text, checked line by line.
//
// Input: the failure kind (or none), the probe's duration, the exporter's figures, then a
// status answer (Latin-1) parsed by the client.

#include "client/card_client.h"
#include "exporter/metrics.h"
#include "exposition_check.h"
#include "fuzz_support.h"

#include <cstring>

using namespace torv;
using namespace torv::exporter;

namespace {

double anyDouble(fuzz::Input& in) {
    std::uint64_t bits = 0;
    for (int i = 0; i < 8; ++i)
        bits = bits << 8 | in.byte();
    double v = 0;
    std::memcpy(&v, &bits, sizeof v);
    return v;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input in(data, size);
    const int kind = in.choose(7); // 6: no failure
    const bool anyNumbers = in.flag();
    ProbeOutcome o;
    o.seconds = anyNumbers ? anyDouble(in) : in.u16() / 1000.0;
    ExporterFigures figures;
    figures.probesSucceeded = in.u16();
    figures.probesFailed = in.u16();
    figures.cardRequests = in.u16();
    figures.requestsInFlight = in.byte();
    figures.refused[400 + in.choose(200)] = in.byte();
    figures.cpuSeconds = anyNumbers ? anyDouble(in) : in.u16() / 100.0;
    figures.heapBytes = anyNumbers ? anyDouble(in) : -1;
    for (int i = in.choose(8); i > 0; --i)
        figures.durations.observe(anyNumbers ? anyDouble(in) : in.u16() / 1000.0);

    const QString answer = QString::fromLatin1(in.rest());
    const std::optional<client::Failure> parsed = client::parseStatus(answer, o.record);
    if (kind < 6)
        o.failure = client::Failure{static_cast<client::FailureKind>(kind), QStringLiteral("x"),
                                    QStringLiteral("7"), QString()};
    else
        o.failure = parsed;

    const QString probe = fuzz::expositionFault(renderProbe(o));
    fuzz::check(probe.isEmpty(), "the probe's metrics are not exposition text:", probe);
    const QString own = fuzz::expositionFault(renderExporter(figures));
    fuzz::check(own.isEmpty(), "the exporter's metrics are not exposition text:", own);
    return 0;
}
