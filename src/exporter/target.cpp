#include "target.h"

namespace torv::exporter {

namespace {

bool validName(const QString& host) {
    if (host.isEmpty() || host.size() > 253) return false;
    const QStringList labels = host.split(QLatin1Char('.'));
    for (int i = 0; i < labels.size(); ++i) {
        const QString& label = labels[i];
        if (label.isEmpty()) return i == labels.size() - 1 && i > 0; // one trailing dot
        if (label.size() > 63) return false;
        if (label.startsWith(QLatin1Char('-')) || label.endsWith(QLatin1Char('-'))) return false;
        for (const QChar c : label)
            if (!(c.isLetterOrNumber() && c.unicode() < 128) && c != QLatin1Char('-')) return false;
    }
    return true;
}

bool parsePort(const QString& text, std::uint16_t& port) {
    if (text.isEmpty() || text.size() > 5) return false;
    for (const QChar c : text)
        if (c < QLatin1Char('0') || c > QLatin1Char('9')) return false;
    const int v = text.toInt();
    if (v < 1 || v > 65535) return false;
    port = static_cast<std::uint16_t>(v);
    return true;
}

// Only literals written the usual way: inet_aton's "10.1" or "0x7f.1" forms are names here,
// and not valid ones.
bool parseLiteral(const QString& text, QHostAddress& out) {
    if (text.contains(QLatin1Char(':'))) {
        QHostAddress a;
        if (!a.setAddress(text) || a.protocol() != QAbstractSocket::IPv6Protocol) return false;
        out = normalised(a);
        return true;
    }
    const QStringList parts = text.split(QLatin1Char('.'));
    if (parts.size() != 4) return false;
    for (const QString& p : parts) {
        // "010" is 8 to inet_aton and 10 to a person: a leading zero is refused.
        if (p.isEmpty() || p.size() > 3 || (p.size() > 1 && p.startsWith(QLatin1Char('0'))))
            return false;
        for (const QChar c : p)
            if (c < QLatin1Char('0') || c > QLatin1Char('9')) return false;
    }
    return out.setAddress(text) && out.protocol() == QAbstractSocket::IPv4Protocol;
}

} // namespace

QHostAddress normalised(const QHostAddress& address) {
    if (address.protocol() == QAbstractSocket::IPv6Protocol) {
        bool ok = false;
        const quint32 v4 = address.toIPv4Address(&ok);
        if (ok) return QHostAddress(v4);
    }
    return address;
}

QString Target::key() const {
    const QString h =
        host.contains(QLatin1Char(':')) ? QLatin1Char('[') + host + QLatin1Char(']') : host;
    return h + QLatin1Char(':') + QString::number(port);
}

bool parseTarget(const QString& text, Target& out, QString& error) {
    if (text.isEmpty()) {
        error = QStringLiteral("missing target: ask for /probe?target=HOST[:PORT]");
        return false;
    }
    if (text.size() > kMaxTargetLength) {
        error = QStringLiteral("target longer than %1 characters").arg(kMaxTargetLength);
        return false;
    }
    Target t;
    QString host;
    QString port;
    if (text.startsWith(QLatin1Char('['))) {
        const int close = text.indexOf(QLatin1Char(']'));
        if (close < 0) {
            error = QStringLiteral("target: '[' without ']'");
            return false;
        }
        host = text.mid(1, close - 1);
        const QString rest = text.mid(close + 1);
        if (!rest.isEmpty()) {
            if (!rest.startsWith(QLatin1Char(':'))) {
                error = QStringLiteral("target: text after ']' that is not ':PORT'");
                return false;
            }
            port = rest.mid(1);
            if (port.isEmpty()) {
                error = QStringLiteral("target: empty port");
                return false;
            }
        }
        if (!host.contains(QLatin1Char(':')) || !parseLiteral(host, t.address)) {
            error = QStringLiteral("target: not an IPv6 address between '[' and ']'");
            return false;
        }
    } else if (text.count(QLatin1Char(':')) > 1) {
        // A bare IPv6 literal, port 80.
        if (!parseLiteral(text, t.address)) {
            error = QStringLiteral("target: not an IPv6 address (write [ADDRESS]:PORT)");
            return false;
        }
    } else {
        const int colon = text.indexOf(QLatin1Char(':'));
        host = colon < 0 ? text : text.left(colon);
        if (colon >= 0) {
            port = text.mid(colon + 1);
            if (port.isEmpty()) {
                error = QStringLiteral("target: empty port");
                return false;
            }
        }
        if (host.isEmpty()) {
            error = QStringLiteral("target: empty host");
            return false;
        }
        if (!parseLiteral(host, t.address)) {
            bool numeric = true;
            for (const QChar c : host)
                numeric = numeric && (c.isDigit() || c == QLatin1Char('.'));
            if (numeric || !validName(host)) {
                error = QStringLiteral("target: not a host name or an IP address");
                return false;
            }
            t.host = host.toLower();
        }
    }
    if (!port.isEmpty() && !parsePort(port, t.port)) {
        error = QStringLiteral("target: port must be a number from 1 to 65535");
        return false;
    }
    if (!t.address.isNull()) t.host = t.address.toString();
    out = t;
    return true;
}

bool AllowList::add(const QString& cidr, QString& error) {
    QString text = cidr.trimmed();
    if (!text.contains(QLatin1Char('/'))) {
        QHostAddress a;
        if (!parseLiteral(text, a)) {
            error = QStringLiteral("--allow %1: not a network (CIDR) or an address").arg(cidr);
            return false;
        }
        nets_.append({a, a.protocol() == QAbstractSocket::IPv4Protocol ? 32 : 128});
        return true;
    }
    QPair<QHostAddress, int> net = QHostAddress::parseSubnet(text);
    if (net.first.isNull() || net.second < 0) {
        error = QStringLiteral("--allow %1: not a network (CIDR) or an address").arg(cidr);
        return false;
    }
    // Targets are compared as IPv4 when IPv4-mapped, so a mapped network is kept as IPv4 too.
    static const QPair<QHostAddress, int> kMapped(QHostAddress(QStringLiteral("::ffff:0:0")), 96);
    if (net.first.protocol() == QAbstractSocket::IPv6Protocol && net.second >= 96 &&
        net.first.isInSubnet(kMapped))
        net = {QHostAddress(net.first.toIPv4Address()), net.second - 96};
    nets_.append(net);
    return true;
}

bool AllowList::allows(const QHostAddress& address) const {
    if (nets_.isEmpty()) return true;
    const QHostAddress a = normalised(address);
    for (const auto& net : nets_)
        if (a.protocol() == net.first.protocol() && a.isInSubnet(net)) return true;
    return false;
}

QStringList AllowList::texts() const {
    QStringList out;
    for (const auto& net : nets_)
        out << net.first.toString() + QLatin1Char('/') + QString::number(net.second);
    return out;
}

} // namespace torv::exporter
