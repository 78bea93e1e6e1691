#pragma once

// The card simulator's card model behind the fake platform's sockets: it accepts every
// connection, reads the three sends of a request and answers with `sim::Card` (or with
// `respond`, where a test wants another answer). It runs on the fake clock, so waits that pump
// events (WaitMS, WaitTrueFlag) see its answers as they would a real card's.

#include "fake_platform.h"
#include "sim/card.h"

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

    sim::Card sim; // the card's state; its clock is the fake clock
    // The answer to a request; by default the card's own. An empty text: the card is silent.
    std::function<QString(const CardRequest&)> respond;
    // Milliseconds between the connect and the connect event, and between the request and
    // its answer.
    int connectDelayMs = 1;
    int answerDelayMs = 1;

    QList<CardRequest> requests; // every request the card read, in order
    QStringList functions() const;

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
