#include "sample_reader.h"

#include "base/numeric.h"

#include "fields.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

namespace torv {

namespace {

using Sv = std::string_view;

constexpr Sv kBlockMark = "-999999";
constexpr Sv kEndOfData = "-1, -1";
constexpr int kMaxRemarks = 20;

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

Sv trimmed(Sv s) {
    while (!s.empty() && isBlank(s.front()))
        s.remove_prefix(1);
    while (!s.empty() && isBlank(s.back()))
        s.remove_suffix(1);
    return s;
}

bool startsWith(Sv s, Sv prefix) {
    return s.substr(0, prefix.size()) == prefix;
}

QString textOf(Sv s) {
    return decodeFileText(QByteArray(s.data(), static_cast<qsizetype>(s.size())));
}

// A line as a message shows it: quoted, at most 60 bytes, control characters as "?".
QString shown(Sv line) {
    if (trimmed(line).empty()) return QStringLiteral("an empty line");
    const bool cut = line.size() > 60;
    QString text = textOf(line.substr(0, 60));
    for (QChar& c : text)
        if (c.category() == QChar::Other_Control) c = QLatin1Char('?'); // C0, DEL and C1
    return QLatin1Char('"') + text + (cut ? QStringLiteral("...\"") : QStringLiteral("\""));
}

bool wholeNumber(Sv token, qint64& v) {
    if (token.empty()) return false;
    const auto [end, ec] = std::from_chars(token.data(), token.data() + token.size(), v);
    return ec == std::errc() && end == token.data() + token.size();
}

// A reading: a decimal number with "." or "," as the decimal point, optionally signed.
bool readingValue(Sv text, double& v) {
    text = trimmed(text);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    if (text.empty() || text.size() > 64) return false;
    char buffer[64];
    if (text.find(',') != Sv::npos) {
        if (text.find('.') != Sv::npos) return false;
        for (std::size_t i = 0; i < text.size(); ++i)
            buffer[i] = text[i] == ',' ? '.' : text[i];
        text = Sv(buffer, text.size());
    }
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v);
    return ec == std::errc() && end == text.data() + text.size() && std::isfinite(v);
}

class LineSource {
public:
    explicit LineSource(Sv all)
        : all_(all) {}
    bool next(Sv& line) {
        if (held_) {
            held_ = false;
            line = heldLine_;
            return true;
        }
        if (pos_ >= all_.size()) return false;
        std::size_t end = all_.find('\n', pos_);
        if (end == Sv::npos) end = all_.size();
        line = all_.substr(pos_, end - pos_);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        pos_ = end + 1;
        ++number_;
        return true;
    }
    void giveBack(Sv line) {
        held_ = true;
        heldLine_ = line;
    }
    qsizetype number() const { return number_; }

private:
    Sv all_;
    std::size_t pos_ = 0;
    qsizetype number_ = 0;
    bool held_ = false;
    Sv heldLine_;
};

class Parser {
public:
    Parser(Sv bytes, SampleFileContent& out, SampleFileError& error)
        : lines_(bytes)
        , out_(out)
        , error_(error) {}

    bool run() {
        if (!firstLine()) return false;
        for (;;) {
            if (!dataSection() || !trailer()) return false;
            ++out_.trailers;
            Sv line;
            while (lines_.next(line) && trimmed(line).empty()) {
            }
            if (trimmed(line).empty()) break; // only blank lines to the end
            if (!startsWith(line, kBlockMark))
                return fail(QStringLiteral("expected the end of the file or appended block "
                                           "lines (\"-999999\" and five whole numbers); found %1")
                                .arg(shown(line)));
            lines_.giveBack(line);
        }
        if (unordered_)
            remark(QStringLiteral("the readings are not in index order; they are shown sorted"));
        if (leftOut_ > kMaxRemarks)
            out_.remarks << QStringLiteral("%1 more readings that are not numbers were left out")
                                .arg(leftOut_ - kMaxRemarks);
        return true;
    }

private:
    bool fail(const QString& message) {
        error_.line = lines_.number();
        error_.message = message;
        return false;
    }
    bool failAtEnd(const QString& expected) {
        error_.line = lines_.number() + 1;
        error_.message = QStringLiteral("the file ends here; expected %1").arg(expected);
        return false;
    }
    void remark(const QString& text) { out_.remarks << text; }

    bool firstLine() {
        static const QString expected =
            QStringLiteral("the first line of a sample data file, \"Timer2Interval, 300\"");
        Sv line;
        if (!lines_.next(line)) {
            error_ = {0, QStringLiteral("the file is empty; expected %1").arg(expected)};
            return false;
        }
        constexpr Sv key = "Timer2Interval,";
        qint64 interval = 0;
        if (!startsWith(line, key) || !wholeNumber(trimmed(line.substr(key.size())), interval))
            return fail(QStringLiteral("expected %1; found %2").arg(expected, shown(line)));
        out_.timerInterval = QString::number(interval);
        return true;
    }

    bool blockLine(Sv line) {
        SampleBlockLine block;
        block.line = lines_.number();
        block.firstReading = static_cast<qsizetype>(out_.index.size());
        Sv rest = line.substr(kBlockMark.size());
        int count = 0;
        for (;;) {
            rest = trimmed(rest);
            if (rest.empty()) break;
            std::size_t end = 0;
            while (end < rest.size() && !isBlank(rest[end]))
                ++end;
            qint64 v = 0;
            if (count == 5 || !wholeNumber(rest.substr(0, end), v) || v < INT32_MIN ||
                v > INT32_MAX)
                return fail(QStringLiteral("expected a block line, \"-999999\" and five whole "
                                           "numbers; found %1")
                                .arg(shown(line)));
            block.value[static_cast<std::size_t>(count++)] = static_cast<qint32>(v);
            rest.remove_prefix(end);
        }
        if (count != 5)
            return fail(QStringLiteral("expected a block line, \"-999999\" and five whole "
                                       "numbers; found %1, with %2 numbers")
                            .arg(shown(line))
                            .arg(count));
        out_.blocks.push_back(block);
        return true;
    }

    // Lines after the first line or a trailer, up to and including "-1, -1".
    bool dataSection() {
        const QString expected =
            QStringLiteral("a block line (\"-999999\" and five whole numbers), a reading line "
                           "(reading index and reading) or the end of the data (\"-1, -1\")");
        bool inBlock = false;
        Sv line;
        while (lines_.next(line)) {
            if (line.size() > 1 && line[0] == '-') {
                if (startsWith(line, kBlockMark) &&
                    (line.size() == kBlockMark.size() || isBlank(line[kBlockMark.size()]))) {
                    if (!blockLine(line)) return false;
                    inBlock = true;
                    continue;
                }
                if (trimmed(line) == kEndOfData) return true;
            }
            if (!inBlock || !readingLine(line))
                return fail(QStringLiteral("expected %1; found %2").arg(expected, shown(line)));
        }
        return failAtEnd(expected);
    }

    // " 57  1.234": the reading index, then the reading. False when the line has no index.
    bool readingLine(Sv line) {
        Sv rest = line;
        while (!rest.empty() && isBlank(rest.front()))
            rest.remove_prefix(1);
        std::size_t end = 0;
        while (end < rest.size() && !isBlank(rest[end]))
            ++end;
        qint64 index = 0;
        if (!wholeNumber(rest.substr(0, end), index) || index < 0) return false;
        double v = 0;
        // The panel writes every reading its own number rule takes ("&H10" too); those the
        // quick decimal scan does not know are read by that rule.
        if (!readingValue(rest.substr(end), v) &&
            !torv::readingValue(textOf(trimmed(rest.substr(end))), v)) {
            if (++leftOut_ <= kMaxRemarks)
                remark(QStringLiteral("line %1: reading %2 is not a number (%3); left out")
                           .arg(lines_.number())
                           .arg(index)
                           .arg(shown(trimmed(rest.substr(end)))));
            return true;
        }
        if (out_.value.size() < 1000) {
            const Sv text = trimmed(rest.substr(end));
            const std::size_t point = text.find_first_of(".,");
            int decimals = 0;
            for (std::size_t i = point + 1;
                 point != Sv::npos && i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i)
                ++decimals;
            out_.decimals = std::max(out_.decimals, decimals);
        }
        if (!out_.index.empty() && index <= out_.index.back()) unordered_ = true;
        out_.index.push_back(index);
        out_.value.push_back(v);
        return true;
    }

    // Lines 5 to 16: the start date-time and the fixed facts after the data.
    bool trailer() {
        SampleTrailerFacts t;
        Sv line;
        auto expectLine = [&](Sv prefix, const char* what) {
            if (!lines_.next(line))
                return failAtEnd(QStringLiteral("the trailer line %1").arg(QLatin1String(what)));
            if (!startsWith(line, prefix))
                return fail(QStringLiteral("expected the trailer line %1; found %2")
                                .arg(QLatin1String(what), shown(line)));
            return true;
        };
        auto after = [&](Sv prefix) { return textOf(trimmed(line.substr(prefix.size()))); };

        if (!expectLine("StartDateTime:", "\"StartDateTime:<date and time>\"")) return false;
        t.startDateTime = after("StartDateTime:");
        if (!expectLine("TORV-NET", "\"TORV-NET\"")) return false;
        t.cardName = textOf(trimmed(line));
        if (!expectLine("Sampling Rate:", "\"Sampling Rate: <integration> (ms.)\"")) return false;
        Sv rate = trimmed(line.substr(Sv("Sampling Rate:").size()));
        if (rate.size() >= 5 && rate.substr(rate.size() - 5) == "(ms.)")
            rate = trimmed(rate.substr(0, rate.size() - 5));
        t.integration = textOf(rate);
        if (!expectLine("Scanned:", "\"Scanned:\"")) return false;
        if (!expectLine("InegrationBufferSize:", "\"InegrationBufferSize: <size>\"")) return false;
        t.bufferSize = after("InegrationBufferSize:");
        if (!expectLine("Gain", "\"Gain Bias Resol. Units LoLimit HiLimit\"")) return false;
        if (!expectLine("", "of gain, bias, resolution, units and limits")) return false;
        t.unitsCaption = unitsOf(line);
        if (!expectLine("Average", "\"Average Minimum Maximum Delta1 Delta2 Cnt1 Cnt2\""))
            return false;
        if (!expectLine("", "of average, minimum, maximum, deltas and counts")) return false;
        if (!expectLine("Samples:", "\"Samples: <last reading index>\"")) return false;
        t.samples = after("Samples:");
        if (!expectLine("Value1_A2D:", "\"Value1_A2D:, 1\"")) return false;
        if (!expectLine("Reading1_ms2:,", "\"Reading1_ms2:,1\" or \"Reading1_ms2:,2\""))
            return false;
        const Sv mode = trimmed(line.substr(Sv("Reading1_ms2:,").size()));
        if (mode != "1" && mode != "2")
            return fail(QStringLiteral("expected the X mode \"Reading1_ms2:,1\" or "
                                       "\"Reading1_ms2:,2\"; found %1")
                            .arg(shown(line)));
        t.xMode = mode == "1" ? 1 : 2;
        out_.trailer = t;
        return true;
    }

    // "  36   49 0.0002 kg     0.234   4.321": the words between the third and the last two.
    static QString unitsOf(Sv line) {
        std::vector<Sv> words;
        for (Sv rest = trimmed(line); !rest.empty(); rest = trimmed(rest)) {
            std::size_t end = 0;
            while (end < rest.size() && !isBlank(rest[end]))
                ++end;
            words.push_back(rest.substr(0, end));
            rest.remove_prefix(end);
        }
        QStringList units;
        for (std::size_t i = 3; i + 2 < words.size(); ++i)
            units << textOf(words[i]);
        return units.join(QLatin1Char(' '));
    }

    LineSource lines_;
    SampleFileContent& out_;
    SampleFileError& error_;
    bool unordered_ = false;
    int leftOut_ = 0;
};

} // namespace

QString SampleFileError::text() const {
    return line > 0 ? QStringLiteral("line %1: %2").arg(line).arg(message) : message;
}

bool parseSampleFile(QByteArrayView bytes, SampleFileContent& out, SampleFileError& error) {
    out = SampleFileContent();
    error = SampleFileError();
    // A rough size of one reading line, so the lists grow once (or a few times for odd files).
    const std::size_t guess = std::min<std::size_t>(std::size_t(bytes.size()) / 12, 1u << 23);
    out.index.reserve(guess);
    out.value.reserve(guess);
    const bool ok =
        Parser(Sv(bytes.data(), static_cast<std::size_t>(bytes.size())), out, error).run();
    out.index.shrink_to_fit();
    out.value.shrink_to_fit();
    if (!ok) out = SampleFileContent();
    return ok;
}

bool readSampleFile(const QString& path, SampleFileContent& out, SampleFileError& error) {
    out = SampleFileContent();
    const QFileInfo info(path);
    if (info.isFile() && info.size() > kSampleFileMaxBytes) {
        error = {0, QStringLiteral("the file is too large for a sample data file (%1 MB)")
                        .arg(info.size() >> 20)};
        return false;
    }
    QByteArray bytes;
    int number = 0;
    if (!readFileCapped(path, kSampleFileMaxBytes, bytes, &number)) {
        error = {0, number == 53 ? QStringLiteral("the file does not exist")
                                 : QStringLiteral("the file cannot be read")};
        return false;
    }
    return parseSampleFile(bytes, out, error);
}

double integrationValue(const QString& text) {
    const QByteArray bytes = text.trimmed().toLatin1();
    double v = 0;
    if (!readingValue(Sv(bytes.constData(), static_cast<std::size_t>(bytes.size())), v)) return 0;
    return v > 0 ? v : 0;
}

} // namespace torv
