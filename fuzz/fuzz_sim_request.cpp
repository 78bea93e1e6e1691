// The simulator's request reader (it is a server too) on requests of any bytes in any pieces,
// and the card model on what it read.
//
// Input: a piece count, then pieces (a length byte, the bytes), the rest as the last piece.
// Checks: the reader ends in one state and stays there; a complete request has a function and
// a body of its Content-Length; a failed one has an error code; the reader never holds more
// than its limit.

#include "fuzz_support.h"
#include "sim/card.h"
#include "sim/request_reader.h"

using namespace torv;
using State = sim::RequestReader::State;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input in(data, size);
    const int limit = in.flag() ? 64 : 64 * 1024;
    sim::RequestReader reader(limit);
    const int pieces = in.choose(16);
    QByteArrayList parts;
    for (int i = 0; i < pieces; ++i)
        parts << in.piece();
    parts << in.rest();

    State state = State::Incomplete;
    for (const QByteArray& part : parts) {
        const State before = state;
        state = reader.feed(part);
        fuzz::check(before == State::Incomplete || state == before,
                    "the reader left a final state");
        fuzz::check(state == reader.state(), "feed and state disagree");
    }
    if (state == State::Failed) {
        fuzz::check(reader.errorCode() != 0, "a failure without an error code");
        return 0;
    }
    if (state != State::Complete) return 0;
    fuzz::check(!reader.function().isEmpty(), "a complete request without a function");
    fuzz::check(reader.contentLength() >= 0 && reader.contentLength() <= limit,
                "a complete request with a bad length");

    sim::Card card;
    const QString answer = card.answer(reader.function(), reader.body());
    fuzz::check(answer.startsWith(QLatin1Char('<')), "the card's answer is not tagged", answer);
    return 0;
}
