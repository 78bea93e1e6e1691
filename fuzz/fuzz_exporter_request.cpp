// The exporter's request handling: any bytes sent to its HTTP port (path, query, the target
// and its parsing, the allow list, headers), the target parser and allow list on their own,
// and its command line. The cards behind it are a fake that answers at once with a status
// made from the input; nothing leaves loopback.
//
// Input: the mode (HTTP request, target and network, command line), then its bytes.
// Checks: every request gets an HTTP answer with a known status; a card is asked only for an
// address of the allow list; a probe's body is exposition text; a parsed target's key parses
// to the same target; an allowed network allows its own address.

#include "client/card_client.h"
#include "exporter/exporter_server.h"
#include "exporter/options.h"
#include "exporter/target.h"
#include "exposition_check.h"
#include "fuzz_support.h"
#include "no_network.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTcpSocket>

#include <sys/socket.h>

using namespace torv;
using namespace torv::exporter;

namespace {

QString statusAnswer; // what the fake card answers
QString askedOutside; // a card address outside the allow list that was asked
AllowList allowed;    // the exporter's allow list

struct Server {
    Server() {
        static int argc = 1;
        static char name[] = "fuzz_exporter_request";
        static char* argv[] = {name, nullptr};
        app = new QCoreApplication(argc, argv);
        ServerOptions options;
        options.port = 0;
        options.logFailures = false;
        options.maxInFlight = 4;
        QString error;
        options.allow.add(QStringLiteral("127.0.0.0/8"), error);
        options.allow.add(QStringLiteral("::1"), error);
        allowed = options.allow;
        server = new ExporterServer(
            options, [](const client::CardAddress& card, int, ProbeHub::StatusDone done) {
                if (!allowed.allows(QHostAddress(card.host))) askedOutside = card.text();
                client::Reply reply;
                reply.function = QStringLiteral("GetRTStatus");
                reply.answer = statusAnswer;
                client::StatusRecord record;
                reply.failure = client::parseStatus(statusAnswer, record);
                done(reply, record);
            });
        if (!server->start(error)) fuzz::fault("the exporter does not start:", error);
        port = server->port();
    }
    QCoreApplication* app;
    ExporterServer* server;
    quint16 port = 0;
};

// The whole answer to `request`, read until the server closes or the answer is complete.
QByteArray exchange(quint16 port, const QByteArray& request) {
    QTcpSocket s;
    s.connectToHost(QHostAddress::LocalHost, port);
    QElapsedTimer t;
    t.start();
    while (s.state() != QAbstractSocket::ConnectedState && t.elapsed() < 2000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    s.write(request);
    s.flush();
    ::shutdown(static_cast<int>(s.socketDescriptor()), SHUT_WR); // nothing more will come
    QByteArray in;
    while (t.elapsed() < 3000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        in += s.readAll();
        const qsizetype head = in.indexOf("\r\n\r\n");
        if (head >= 0) {
            const QByteArray lower = in.left(head).toLower();
            const qsizetype cl = lower.indexOf("content-length:");
            if (cl >= 0 &&
                in.size() - head - 4 >= lower.mid(cl + 15).split('\r')[0].trimmed().toLongLong())
                break;
        }
        if (s.state() == QAbstractSocket::UnconnectedState) break;
    }
    return in;
}

void httpRequest(Server& server, fuzz::Input& in) {
    statusAnswer = QString::fromLatin1(in.piece());
    const QByteArray request = in.rest();
    const QByteArray answer = exchange(server.port, request);
    fuzz::check(askedOutside.isEmpty(), "a card outside the allow list was asked:", askedOutside);
    if (answer.isEmpty()) return; // the server may close on bytes that are no request
    fuzz::check(answer.startsWith("HTTP/1.1 "), "an answer that is not HTTP",
                QString::fromLatin1(answer.left(60)));
    const int status = answer.mid(9, 3).toInt();
    fuzz::check(status >= 200 && status < 600, "an unknown HTTP status",
                QString::fromLatin1(answer.left(60)));
    const qsizetype head = answer.indexOf("\r\n\r\n");
    const QByteArray path = request.left(request.indexOf('\n')).split(' ').value(1);
    if (status == 200 && path.startsWith("/probe") && head >= 0) {
        const QString fault = fuzz::expositionFault(answer.mid(head + 4));
        fuzz::check(fault.isEmpty(), "a probe's body is not exposition text:", fault);
    }
}

void targetAndNetwork(fuzz::Input& in) {
    const QString network = QString::fromLatin1(in.piece());
    const QString text = QString::fromLatin1(in.rest());
    Target t;
    QString error;
    if (parseTarget(text, t, error)) {
        fuzz::check(!t.host.isEmpty() && t.port > 0, "a target without host or port", text);
        Target again;
        fuzz::check(parseTarget(t.key(), again, error) && again.key() == t.key(),
                    "a target's key does not parse to the same target", t.key());
    } else {
        fuzz::check(!error.isEmpty(), "a target refused without a reason", text);
    }
    AllowList allow;
    if (allow.add(network, error)) {
        // An address the network holds (by Qt's own subnet rule) is allowed. An IPv4-mapped
        // address, and "::", are compared as IPv4, so only within the mapped block.
        const QString base = network.section(QLatin1Char('/'), 0, 0).trimmed();
        const QHostAddress address(base);
        const auto subnet =
            network.contains(QLatin1Char('/'))
                ? QHostAddress::parseSubnet(network.trimmed())
                : qMakePair(address,
                            address.protocol() == QAbstractSocket::IPv4Protocol ? 32 : 128);
        const bool asIPv4 = normalised(address).protocol() != address.protocol();
        if (!address.isNull() && !subnet.first.isNull() && address.isInSubnet(subnet) &&
            (!asIPv4 || (subnet.second >= 96 &&
                         address.isInSubnet(QHostAddress(QStringLiteral("::ffff:0:0")), 96))))
            fuzz::check(allow.allows(address), "a network does not allow its own address", network);
        if (!t.isName()) allow.allows(t.address);
    }
}

void commandLine(fuzz::Input& in) {
    QStringList args{QStringLiteral("torv-exporter")};
    for (const QByteArray& a : in.rest().split('\0'))
        args << QString::fromLatin1(a);
    const CommandLine c = parseCommandLine(args);
    if (c.error.isEmpty() && !c.help && !c.version)
        fuzz::check(c.options.maxInFlight > 0 && c.options.timeoutMs > 0,
                    "a command line accepted with bounds of zero");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Server server;
    fuzz::Input in(data, size);
    switch (in.choose(3)) {
    case 0:
        httpRequest(server, in);
        break;
    case 1:
        targetAndNetwork(in);
        break;
    default:
        commandLine(in);
    }
    return 0;
}
