#pragma once

// A checker of the Prometheus text exposition format, line by line: comments are HELP or TYPE
// lines of a valid metric name; every sample has a valid name (of a family declared before
// it), labels with valid names and correctly escaped values, and a value that is a number,
// NaN or an infinity; the text ends with a line feed and holds no empty line.

#include <QByteArray>
#include <QByteArrayList>
#include <QSet>
#include <QString>

namespace torv::fuzz {

namespace exposition {

inline bool nameStart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':';
}
inline bool nameChar(char c) {
    return nameStart(c) || (c >= '0' && c <= '9');
}
// The metric name at `at`; its length, 0 when there is none.
inline qsizetype nameAt(const QByteArray& s, qsizetype at, bool label = false) {
    qsizetype i = at;
    if (i >= s.size() || !nameStart(s[i]) || (label && s[i] == ':')) return 0;
    while (i < s.size() && nameChar(s[i]) && !(label && s[i] == ':'))
        ++i;
    return i - at;
}
inline bool numberText(const QByteArray& v) {
    if (v == "NaN" || v == "+Inf" || v == "-Inf" || v == "Inf") return true;
    bool ok = false;
    v.toDouble(&ok);
    return ok;
}

} // namespace exposition

// Empty when `text` is valid exposition text; else the first fault and its line.
inline QString expositionFault(const QByteArray& text) {
    using namespace exposition;
    if (text.isEmpty()) return {};
    if (!text.endsWith('\n')) return QStringLiteral("the text does not end with a line feed");
    QSet<QByteArray> families;
    const QByteArrayList lines = text.chopped(1).split('\n');
    for (const QByteArray& line : lines) {
        const QString shown = QString::fromUtf8(line.left(200));
        if (line.isEmpty()) return QStringLiteral("an empty line");
        if (line.startsWith('#')) {
            const bool help = line.startsWith("# HELP "), type = line.startsWith("# TYPE ");
            if (!help && !type) continue; // other comments are allowed
            const qsizetype n = nameAt(line, 7);
            if (n == 0) return QStringLiteral("a comment without a metric name: ") + shown;
            if (type) {
                const QByteArray kind = line.mid(7 + n);
                if (kind != " gauge" && kind != " counter" && kind != " histogram" &&
                    kind != " summary" && kind != " untyped")
                    return QStringLiteral("an unknown type: ") + shown;
                families.insert(line.mid(7, n));
            }
            continue;
        }
        const qsizetype n = nameAt(line, 0);
        if (n == 0) return QStringLiteral("a sample without a metric name: ") + shown;
        QByteArray name = line.left(n);
        bool declared = families.contains(name);
        for (const char* suffix : {"_bucket", "_sum", "_count", "_total"})
            if (!declared && name.endsWith(suffix))
                declared = families.contains(name.chopped(qstrlen(suffix)));
        if (!declared) return QStringLiteral("a sample of an undeclared family: ") + shown;
        qsizetype i = n;
        if (i < line.size() && line[i] == '{') {
            ++i;
            while (i < line.size() && line[i] != '}') {
                const qsizetype ln = nameAt(line, i, true);
                if (ln == 0) return QStringLiteral("a bad label name: ") + shown;
                i += ln;
                if (line.mid(i, 2) != "=\"") return QStringLiteral("a label without =\": ") + shown;
                i += 2;
                while (i < line.size() && line[i] != '"') {
                    if (line[i] == '\\') {
                        if (i + 1 >= line.size() || !QByteArray("\\\"n").contains(line[i + 1]))
                            return QStringLiteral("a bad escape in a label value: ") + shown;
                        ++i;
                    }
                    ++i;
                }
                if (i >= line.size()) return QStringLiteral("an unclosed label value: ") + shown;
                ++i; // the closing quote
                if (i < line.size() && line[i] == ',') ++i;
            }
            if (i >= line.size()) return QStringLiteral("unclosed labels: ") + shown;
            ++i; // "}"
        }
        if (i >= line.size() || line[i] != ' ') return QStringLiteral("no value: ") + shown;
        const QByteArrayList rest = line.mid(i + 1).split(' ');
        if (rest.size() > 2 || !numberText(rest[0]))
            return QStringLiteral("a value that is no number: ") + shown;
        if (rest.size() == 2) {
            bool ok = false;
            rest[1].toLongLong(&ok);
            if (!ok) return QStringLiteral("a bad timestamp: ") + shown;
        }
    }
    return {};
}

} // namespace torv::fuzz
