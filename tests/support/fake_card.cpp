#include "fake_card.h"

namespace torv::test {

namespace {
sim::SimOptions quietCard() {
    sim::SimOptions o;
    o.inputsPeriodMs = 0;
    return o;
}

// Splits a raw request ("POST /Name\r\nContent-Length: n\r\n\r\nbody\r\n").
CardRequest parse(const QByteArray& raw) {
    CardRequest r;
    const QString text = QString::fromLatin1(raw);
    const int lineEnd = text.indexOf(QStringLiteral("\r\n"));
    if (text.startsWith(QStringLiteral("POST /")) && lineEnd > 0)
        r.function = text.mid(6, lineEnd - 6);
    const int cl = text.indexOf(QStringLiteral("Content-Length: "));
    if (cl >= 0) r.contentLength = text.mid(cl + 16, text.indexOf(u'\r', cl) - cl - 16).toInt();
    const int head = text.indexOf(QStringLiteral("\r\n\r\n"));
    if (head >= 0)
        r.body = text.mid(head + 4).chopped(text.endsWith(QStringLiteral("\r\n")) ? 2 : 0);
    return r;
}
} // namespace

FakeCard::FakeCard(FakePlatform& platform)
    : sim(quietCard())
    , p_(platform) {
    sim.setClock([this] { return static_cast<qint64>(p_.now); });
    respond = [this](const CardRequest& r) { return sim.answer(r.function, r.body); };
    p_.onTick = [this] { pump(); };
}

FakeCard::~FakeCard() {
    p_.onTick = nullptr;
}

QStringList FakeCard::functions() const {
    QStringList out;
    for (const auto& r : requests)
        out << r.function;
    return out;
}

void FakeCard::pump() {
    // Forget connections whose socket is gone.
    for (int i = pending_.size() - 1; i >= 0; --i) {
        bool alive = false;
        for (FakeTcpClient* c : p_.sockets)
            if (c->id() == pending_[i].id) alive = true;
        if (!alive) pending_.removeAt(i);
    }
    // New connections: every live socket that asked to connect and is not known yet.
    for (FakeTcpClient* s : p_.sockets) {
        if (!s->connectRequested() || s->isClosed()) continue;
        bool known = false;
        for (const auto& q : pending_)
            if (q.id == s->id()) known = true;
        if (!known) pending_.append({s->id(), p_.now + static_cast<std::uint32_t>(connectDelayMs)});
    }
    for (int i = 0; i < pending_.size(); ++i) {
        Pending& q = pending_[i];
        FakeTcpClient* s = nullptr;
        for (FakeTcpClient* c : p_.sockets)
            if (c->id() == q.id) s = c;
        if (!s || s->isClosed() || q.answered) continue;
        if (p_.now < q.due) continue;
        if (!q.connected) {
            q.connected = true;
            q.due = p_.now + static_cast<std::uint32_t>(answerDelayMs);
            s->fireConnect();
            return; // the handler may have closed or replaced the socket
        }
        if (s->sends().size() < 3) continue;
        q.answered = true;
        const CardRequest r = parse(s->sentText());
        requests.append(r);
        const QString answer = respond ? respond(r) : QString();
        if (answer.isEmpty()) continue;
        s->deliver(QByteArrayLiteral("HTTP/1.0 200 OK\r\nContent-Type: text/xml\r\n\r\n") +
                   answer.toLatin1());
        return; // the answer's handler may have started another request
    }
}

QString cardAnswer(const QString& function, const QString& inner) {
    QString body = inner;
    if (!body.contains(QStringLiteral("<ERROR_CODE>")))
        body +=
            QStringLiteral("<ERROR_CODE>0</ERROR_CODE><ERROR_DESCRIPTION>OK</ERROR_DESCRIPTION>");
    return QStringLiteral("<%1>%2</%1>").arg(function, body);
}

} // namespace torv::test
