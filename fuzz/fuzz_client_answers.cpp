// The headless client's answer parsing on any answer: the status record, the set points, the
// error elements and the echo of each Set command.
//
// Input: which parser (and echo element), then the answer (Latin-1).
// Checks: a parse fails only as Malformed or CardError, a CardError carries a code other than
// "0", and every value of a record lies within the range its element allows.

#include "client/card_client.h"
#include "fuzz_support.h"

#include <cmath>

using namespace torv;
using namespace torv::client;

namespace {

void checkFailure(const std::optional<Failure>& f) {
    if (!f) return;
    fuzz::check(f->kind == FailureKind::Malformed || f->kind == FailureKind::CardError,
                "a parse failure of a kind only a connection has", f->detail);
    fuzz::check(!f->detail.isEmpty(), "a failure without a detail");
    if (f->kind == FailureKind::CardError)
        fuzz::check(!f->errorCode.isEmpty() && f->errorCode != QLatin1String("0"),
                    "a card error with code 0", f->errorCode);
}

bool word(const std::optional<int>& v) {
    return !v || (*v >= -32768 && *v <= 65535);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input in(data, size);
    const int which = in.choose(6);
    const QString answer = QString::fromLatin1(in.rest());
    switch (which) {
    case 0: {
        StatusRecord r;
        const std::optional<Failure> f = parseStatus(answer, r);
        checkFailure(f);
        fuzz::check(!r.weight || std::isfinite(*r.weight), "a weight that is no finite number");
        fuzz::check(!r.maximumLoad || std::isfinite(*r.maximumLoad),
                    "a maximum load that is no finite number");
        fuzz::check(word(r.outputs) && word(r.inputs) && word(r.setpointStatus),
                    "a status word out of 16 bits");
        fuzz::check(!r.integration || (*r.integration >= 0 && *r.integration <= 65535),
                    "an integration out of range");
        if (!f) fuzz::check(r.errorCode.isEmpty() || r.errorCode == "0", "success with an error");
        break;
    }
    case 1: {
        SetpointsRecord r;
        checkFailure(parseSetpoints(answer, r));
        for (const auto& v : r.values)
            fuzz::check(!v || std::isfinite(*v), "a set point that is no finite number");
        break;
    }
    case 2:
        checkFailure(parseErrorCode(answer));
        break;
    default: {
        static const char* const kEchoes[] = {"OUT_STATUS_ECHO", "ANALOG_OUT", "INTEGRATION_ECHO"};
        std::optional<std::int64_t> v;
        checkFailure(parseEcho(answer, QString::fromLatin1(kEchoes[which - 3]), v));
    }
    }
    return 0;
}
