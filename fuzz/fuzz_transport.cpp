// The transport's accumulation of an answer that arrives in pieces the input chooses: the
// closing-tag rule, the 4 MiB cap, the card closing early and the watchdog in between.
//
// Input: the function (one of the card's eleven or an unknown name), whether the request
// repeats, then events: a piece of data, a long run of filler (towards the cap), the card
// closing, or time passing.
// Checks: an answer is dispatched exactly when a model of the closing-tag rule says it is
// complete, it is everything the card sent on that connection, and the buffer never holds
// more than the cap.

#include "fuzz_support.h"
#include "link/catalogue.h"
#include "link/link_recorders.h"
#include "link/tcp_client.h"
#include "link/transport.h"

#include <algorithm>

using namespace torv;

namespace {

// What the transport should do with the bytes of one connection: the answer is complete
// once the start of the closing tag lies at or after the position the search starts from,
// which is the size of the piece before (1 for the first piece).
struct Model {
    QByteArray received;
    qsizetype searchStart = 1;
    qsizetype lastTag = -1; // where the closing tag last starts, searched once per byte
    void add(const QByteArray& piece, const QByteArray& tag) {
        const qsizetype from = std::max<qsizetype>(0, received.size() - tag.size() + 1);
        received += piece;
        for (qsizetype at = received.indexOf(tag, from); at >= 0;
             at = received.indexOf(tag, at + 1))
            lastTag = at;
    }
    bool complete() const { return lastTag >= 0 && lastTag >= searchStart - 1; }
};

struct Rig {
    Rig() {
        view.onServerNoAnswer = [this] {
            t.closeSocket();
            t.TimerTimeOut().setEnabled(false);
        };
        handlers.onAnswer = [this](const QString&) { t.IssueRequest(t.req.blnRepeatRequest); };
    }
    fuzz::Platform platform;
    test::RecordingView view;
    test::RecordingHandlers handlers;
    Transport t{platform, view, handlers};
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input in(data, size);
    Rig rig;
    Transport& t = rig.t;
    const int which = in.choose(12);
    t.req.strFunctionName = which < 11 ? *fuzz::kFunctions[which] : QStringLiteral("Unknown");
    t.req.blnRepeatRequest = in.flag();
    const QByteArray tag = "</" + t.req.strFunctionName.toLatin1();
    t.IssueRequest(true);

    Model model;
    int events = 0;
    while (!in.empty() && ++events < 200) {
        test::FakeTcpClient* sock = rig.platform.socket();
        if (!sock || sock->isClosed()) break; // no request under way any more
        if (sock->sends().empty()) {
            sock->fireConnect();
            model = Model{};
            continue;
        }
        const std::uint8_t op = in.byte();
        QByteArrayList pieces;
        switch (op % 16) {
        case 10: { // filler towards the cap, in the pieces the socket hands on
            const qsizetype total = qsizetype((op >> 4) + 1) * 256 * 1024;
            for (qsizetype at = 0; at < total; at += kMaxArrivalBytes)
                pieces << QByteArray(std::min<qsizetype>(kMaxArrivalBytes, total - at), 'x');
            break;
        }
        case 11:
            sock->peerClose();
            continue;
        case 12:
        case 13:
        case 14:
        case 15:
            rig.platform.advance((op >> 4) * 400);
            continue;
        default:
            pieces << in.take(op % 2 ? in.byte() : in.u16() % kMaxArrivalBytes);
        }
        for (const QByteArray& piece : pieces) {
            if (rig.platform.socket() != sock || sock->isClosed()) break;
            const qsizetype calls = rig.handlers.calls.size();
            const int reports = rig.view.noAnswerReports;
            const std::size_t boxes = rig.platform.dialogs.size();
            sock->deliver(piece);
            if (piece.isEmpty()) continue;
            if (rig.view.noAnswerReports > reports) {
                fuzz::check(model.received.size() + piece.size() > Transport::kLongestAnswer,
                            "the server reported silent within the cap");
                break;
            }
            model.add(piece, tag);
            // The channel switches and unknown names have no handler: dispatch only says so.
            const bool dispatched = rig.handlers.calls.size() > calls ||
                                    (rig.platform.dialogs.size() > boxes &&
                                     rig.platform.lastMessage().startsWith("Unknown Function"));
            const bool complete = model.complete();
            fuzz::check(dispatched == complete,
                        complete ? "a complete answer was not dispatched"
                                 : "an incomplete answer was dispatched",
                        QString::fromLatin1(model.received.right(200)));
            if (rig.handlers.calls.size() > calls)
                fuzz::check(rig.handlers.answers.back() == QString::fromLatin1(model.received),
                            "the dispatched answer is not what the card sent");
            if (dispatched) break;
            fuzz::check(t.strRecvBuffer.size() <= Transport::kLongestAnswer,
                        "the buffer grew beyond the cap");
            model.searchStart = piece.size();
        }
    }
    t.closeSocket();
    return 0;
}
