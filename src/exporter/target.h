#pragma once

// What a scrape may ask for: a card's address, checked before anything is connected, and the
// list of networks the exporter may reach (--allow).

#include <QHostAddress>
#include <QList>
#include <QPair>
#include <QString>
#include <cstdint>

namespace torv::exporter {

// A probe target: a host name or an IP literal, and a port (80 when none is given).
struct Target {
    QString host; // as it will be connected: a name, or the normalised IP literal
    std::uint16_t port = 80;
    QHostAddress address; // null for a host name
    bool isName() const { return address.isNull(); }
    QString key() const; // "host:port", "[v6]:port": one card, one key
};

// Longest target text accepted (a host name is at most 253 characters).
inline constexpr int kMaxTargetLength = 270;

// Accepts "host", "host:port", "[v6]", "[v6]:port" and a bare IPv6 literal. A host name is
// letters, digits, '-' and '.' in labels of 1..63 characters. IPv4-mapped IPv6 addresses become
// IPv4. On failure returns false and a one-line reason in `error`.
bool parseTarget(const QString& text, Target& out, QString& error);

// Networks in CIDR notation; an address alone is a /32 or /128 network.
class AllowList {
public:
    bool add(const QString& cidr, QString& error);
    bool empty() const { return nets_.isEmpty(); }
    bool allows(const QHostAddress& address) const; // true for every address when empty
    QStringList texts() const;

private:
    QList<QPair<QHostAddress, int>> nets_;
};

// IPv4-mapped IPv6 (::ffff:a.b.c.d) as IPv4; every other address unchanged.
QHostAddress normalised(const QHostAddress& address);

} // namespace torv::exporter
