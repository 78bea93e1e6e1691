#pragma once

// A scripted card behind the fake platform's sockets: it accepts every connection, reads the
// three sends of a request and answers through `respond`. It runs on the fake clock, so
// waits that pump events (WaitMS, WaitTrueFlag) see its answers as they would a real card's.

#include "fake_platform.h"

#include <QSet>
#include <QString>
#include <functional>

namespace torv::test {

struct CardRequest {
    QString function;
    QString body;
    int contentLength = -1;
};

class FakeCard {
public:
    explicit FakeCard(FakePlatform& platform);
    ~FakeCard();

    // The tagged answer for a request; an empty text means the card stays silent.
    std::function<QString(const CardRequest&)> respond;
    // Milliseconds between the connect and the connect event, and between the request and
    // its answer.
    int connectDelayMs = 1;
    int answerDelayMs = 1;
    bool enabled = true;

    QList<CardRequest> requests; // every request the card read, in order
    QStringList functions() const;

    // Splits a raw request ("POST /Name\r\nContent-Length: n\r\n\r\nbody\r\n").
    static CardRequest parse(const QByteArray& raw);

private:
    void pump();
    FakePlatform& p_;
    struct Pending {
        int id;
        std::uint32_t due;
        bool connected = false;
        bool answered = false;
    };
    QList<Pending> pending_;
};

// "<Name>" + inner + "</Name>" with an ERROR_CODE of 0 unless the inner text carries one.
QString cardAnswer(const QString& function, const QString& inner);

} // namespace torv::test
