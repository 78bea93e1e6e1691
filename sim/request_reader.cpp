#include "request_reader.h"

#include "sim/card.h"

namespace torv::sim {

namespace {
const QByteArray kPost = QByteArrayLiteral("POST /");
}

RequestReader::RequestReader(int maxBytes)
    : maxBytes_(maxBytes > 0 ? maxBytes : 64 * 1024) {}

RequestReader::State RequestReader::fail(int code, const QString& description) {
    state_ = State::Failed;
    errorCode_ = code;
    errorDescription_ = description;
    phase_ = Phase::Done;
    return state_;
}

QString RequestReader::body() const {
    return QString::fromUtf8(body_);
}

RequestReader::State RequestReader::feed(const QByteArray& data) {
    if (state_ != State::Incomplete) return state_;
    received_ += data.size();
    if (phase_ == Phase::Body) {
        const qint64 want = contentLength_ - body_.size();
        body_.append(data.left(std::min<qsizetype>(want, data.size())));
        if (body_.size() == contentLength_) {
            phase_ = Phase::Done;
            state_ = State::Complete;
        }
        return state_;
    }
    buffer_.append(data);
    parse();
    if (state_ == State::Incomplete && phase_ != Phase::Body && received_ > maxBytes_)
        return fail(ErrTooLarge, QStringLiteral("Request too large"));
    return state_;
}

bool RequestReader::takeLine(QByteArray& line) {
    const int lf = buffer_.indexOf('\n');
    if (lf < 0) return false;
    line = buffer_.left(lf);
    if (line.endsWith('\r')) line.chop(1);
    buffer_.remove(0, lf + 1);
    return true;
}

RequestReader::State RequestReader::parse() {
    while (state_ == State::Incomplete) {
        if (phase_ == Phase::RequestLine) {
            // Blank lines before the request are tolerated.
            while (buffer_.startsWith("\r\n") || buffer_.startsWith('\n'))
                buffer_.remove(0, buffer_.startsWith('\n') ? 1 : 2);
            // Refuse as soon as the start cannot become "POST /".
            const int n = static_cast<int>(std::min<qsizetype>(buffer_.size(), kPost.size()));
            if (buffer_.left(n) != kPost.left(n) && !(n == 1 && buffer_ == "\r"))
                return fail(ErrBadRequest, QStringLiteral("Bad request: expected POST /"));
            QByteArray line;
            if (!takeLine(line)) return state_;
            QByteArray name = line.mid(kPost.size());
            const int end = name.indexOf(' ');
            if (end >= 0) name.truncate(end); // "POST /name HTTP/1.0"
            if (name.isEmpty())
                return fail(ErrBadRequest, QStringLiteral("Bad request: no function"));
            function_ = QString::fromUtf8(name);
            haveLine_ = true;
            phase_ = Phase::Headers;
        } else if (phase_ == Phase::Headers) {
            QByteArray line;
            if (!takeLine(line)) return state_;
            if (line.isEmpty()) {
                if (contentLength_ < 0) contentLength_ = 0;
                phase_ = Phase::Body;
                const QByteArray rest = buffer_;
                buffer_.clear();
                received_ -= rest.size(); // counted again by feed()
                if (contentLength_ == 0) {
                    phase_ = Phase::Done;
                    state_ = State::Complete;
                    return state_;
                }
                return feed(rest);
            }
            const int colon = line.indexOf(':');
            if (colon < 0) return fail(ErrBadRequest, QStringLiteral("Bad request: broken header"));
            if (line.left(colon).trimmed().toLower() == "content-length") {
                const QByteArray v = line.mid(colon + 1).trimmed();
                bool ok = !v.isEmpty();
                for (char c : v)
                    ok = ok && c >= '0' && c <= '9';
                const qint64 len = ok && v.size() <= 9 ? v.toLongLong() : -1;
                if (len < 0)
                    return fail(ErrBadRequest, QStringLiteral("Bad request: bad Content-Length"));
                if (len > maxBytes_) return fail(ErrTooLarge, QStringLiteral("Request too large"));
                contentLength_ = static_cast<int>(len);
            }
        } else {
            return state_;
        }
    }
    return state_;
}

} // namespace torv::sim
