#include "elements.h"

#include "base/platform.h"
#include "base/runtime_error.h"

#include <QFile>

#include <algorithm>
#include <vector>

namespace torv {

namespace {
constexpr qsizetype kMaxPosition = 32767; // positions and lengths are 16-bit

// The first position of every tag of one answer. A handler reads ten elements or more from
// the same answer; searching the whole text twice for each of them cost more than all the
// rest of the handler. The index is built in one pass and answers "first occurrence of this
// tag" exactly as a plain search from the start of the text would, for every tag that has no
// ">" before its end and is not longer than kMaxIndexedTag. Other tags are searched plainly.
constexpr qsizetype kMaxIndexedTag = 64;

class TagIndex {
public:
    // The index of `text`, rebuilt only when another answer is asked about. The cache holds
    // a copy of the string, so its buffer cannot be freed or changed while it is cached: the
    // same buffer always means the same text.
    static const TagIndex& of(const QString& text) {
        thread_local TagIndex cache;
        if (!cache.valid_ || cache.text_.constData() != text.constData() ||
            cache.text_.size() != text.size())
            cache.build(text);
        return cache;
    }

    // First position of `prefix` + `rest` (together a tag "<...>") in the text, -1 when absent.
    qsizetype find(QStringView prefix, QStringView rest) const {
        const qsizetype size = prefix.size() + rest.size();
        if (!indexable(prefix, rest)) {
            QString tag = prefix.toString();
            tag.append(rest);
            return QStringView(text_).indexOf(tag);
        }
        const QStringView t(text_);
        for (const Tag& tag : tags_) { // in order of position: the first match is the first
            if (tag.size != size) continue;
            if (t.mid(tag.pos, prefix.size()) == prefix &&
                t.mid(tag.pos + prefix.size(), rest.size()) == rest)
                return tag.pos;
        }
        return -1;
    }

private:
    struct Tag {
        qsizetype pos;
        qsizetype size;
    };

    // A tag "<...>" of at most kMaxIndexedTag characters with no ">" before its end.
    static bool indexable(QStringView prefix, QStringView rest) {
        const qsizetype size = prefix.size() + rest.size();
        if (size < 2 || size > kMaxIndexedTag) return false;
        auto at = [&](qsizetype i) {
            return i < prefix.size() ? prefix[i] : rest[i - prefix.size()];
        };
        if (at(0) != QLatin1Char('<') || at(size - 1) != QLatin1Char('>')) return false;
        for (qsizetype i = 0; i < size - 1; ++i)
            if (at(i) == QLatin1Char('>')) return false;
        return true;
    }

    // Every "<" with the next ">" after it makes one tag, in order of position.
    void build(const QString& text) {
        text_ = text;
        valid_ = true;
        tags_.clear();
        open_.clear();
        const QStringView t(text_);
        for (qsizetype i = 0; i < t.size(); ++i) {
            const QChar c = t[i];
            if (c == QLatin1Char('<')) {
                open_.push_back(i);
            } else if (c == QLatin1Char('>')) {
                for (const qsizetype at : open_)
                    if (i - at + 1 <= kMaxIndexedTag) tags_.push_back({at, i - at + 1});
                open_.clear();
            }
        }
    }

    QString text_;
    bool valid_ = false;
    std::vector<Tag> tags_;
    std::vector<qsizetype> open_;
};

} // namespace

bool Get_XML_Element_Data(Platform& platform, const QString& strXML, const QString& strElementStart,
                          QString& strElementData) {
    if (!strElementStart.startsWith(QLatin1Char('<')) ||
        !strElementStart.endsWith(QLatin1Char('>'))) {
        // Names the output's previous content, not the bad tag.
        platform.messageBox(QStringLiteral("Invalid XML element:") + strElementData +
                            QStringLiteral("\r\n At least one of '<','>' is absent "));
        platform.endProgram();
    }
    if (strXML.size() > kMaxPosition) raiseOverflow();

    const TagIndex& index = TagIndex::of(strXML);
    const qsizetype p1 = index.find({}, strElementStart);
    if (p1 < 0) return false;
    // The closing tag: "</" and the opening tag without its "<".
    const qsizetype p2 = index.find(u"</", QStringView(strElementStart).mid(1));
    if (p2 < 0) return false;

    const qsizetype length = p2 - p1 - strElementStart.size();
    // A closing tag ahead of the opening one: the run-time's Mid refuses a negative length.
    if (length < 0) throw RuntimeError(RuntimeError::InvalidCall);
    strElementData = strXML.mid(p1 + strElementStart.size(), length);
    return true;
}

std::optional<QStringView> elementText(QStringView xml, QStringView openTag) {
    if (openTag.size() < 2) return std::nullopt;
    const qsizetype open = xml.indexOf(openTag);
    if (open < 0) return std::nullopt;
    const qsizetype from = open + openTag.size();
    // "</" + the tag without its "<"; the closing tag is searched in two pieces to build
    // nothing.
    const QStringView name = openTag.mid(1);
    for (qsizetype at = xml.indexOf(QLatin1String("</"), from); at >= 0;
         at = xml.indexOf(QLatin1String("</"), at + 1))
        if (xml.mid(at + 2, name.size()) == name) return xml.mid(from, at - from);
    return std::nullopt;
}

QString rawAnswerText(const QString& response) {
    QString text = response;
    text.replace(QLatin1String("><"), QLatin1String(">\r\n<"));
    return text;
}

void XML_Response(const QString& sXML_Response_FileName, const QString& sXML_Response_String) {
    QFile file(sXML_Response_FileName + QStringLiteral(".rsp"));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw RuntimeError(75); // Path/File access error
    const QByteArray line = sXML_Response_String.toLatin1() + "\r\n";
    if (file.write(line) != line.size()) throw RuntimeError(61); // Disk full
    if (!file.flush()) throw RuntimeError(61);
}

} // namespace torv
