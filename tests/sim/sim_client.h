#pragma once

// A plain blocking TCP client for driving the simulator in tests: POSIX sockets with
// timeouts, so the test thread needs no event loop and sees exactly what arrives.

#include <QByteArray>
#include <QList>
#include <QString>

namespace torv::sim::test {

struct Reply {
    QByteArray raw;           // everything received
    QList<QByteArray> pieces; // as the reads returned them
    bool closed = false;      // the server ended the connection (orderly or by reset)
    bool reset = false;       // the connection was reset
    bool timedOut = false;    // the wait ended before the server closed

    QByteArray header() const; // up to the blank line
    QString tagged() const;    // after the blank line
    // The value of element `name`, or a null string when it is missing.
    QString element(const QString& name) const;
    QString errorCode() const { return element(QStringLiteral("ERROR_CODE")); }
};

class Client {
public:
    explicit Client(quint16 port);
    ~Client();
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    bool connected() const { return fd_ >= 0; }
    int connectError() const { return error_; } // errno of a failed connect

    bool send(const QByteArray& bytes);
    // The request as the panel writes it: request line, header, body, in three writes.
    bool sendRequest(const QString& function, const QString& body);
    // Reads until the server closes or `timeoutMs` passes without the connection ending.
    Reply read(int timeoutMs = 3000);

private:
    int fd_ = -1;
    int error_ = 0;
};

// One whole exchange: connect, the three writes, read to the end.
Reply request(quint16 port, const QString& function, const QString& body, int timeoutMs = 3000);

} // namespace torv::sim::test
