#pragma once

// Reads one request as the panel sends it, in whatever pieces the bytes arrive:
//   "POST /" name CR LF
//   "Content-Length: " n CR LF CR LF
//   body (n bytes), usually followed by CR LF
// Header lines end in LF with an optional CR. Bytes after the body are ignored.

#include <QByteArray>
#include <QString>

namespace torv::sim {

class RequestReader {
public:
    enum class State { Incomplete, Complete, Failed };

    explicit RequestReader(int maxBytes = 64 * 1024);

    State feed(const QByteArray& data);
    State state() const { return state_; }

    bool hasRequestLine() const { return haveLine_; }
    QString function() const { return function_; }
    int contentLength() const { return contentLength_; } // -1 until the header is read
    QString body() const;                                // so far
    qint64 bytesReceived() const { return received_; }

    // When Failed: the card's error code and a description for the answer.
    int errorCode() const { return errorCode_; }
    QString errorDescription() const { return errorDescription_; }

private:
    enum class Phase { RequestLine, Headers, Body, Done };
    State fail(int code, const QString& description);
    bool takeLine(QByteArray& line);
    State parse();

    int maxBytes_;
    QByteArray buffer_;
    qint64 received_ = 0;
    Phase phase_ = Phase::RequestLine;
    State state_ = State::Incomplete;
    bool haveLine_ = false;
    QString function_;
    int contentLength_ = -1;
    QByteArray body_;
    int errorCode_ = 0;
    QString errorDescription_;
};

} // namespace torv::sim
