#include "elements.h"

#include "base/platform.h"
#include "base/runtime_error.h"

#include <QFile>
#include <QHash>

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

    // First position of `tag` ("<...>") in the text, -1 when absent.
    qsizetype find(QStringView tag) const {
        if (tag.size() > kMaxIndexedTag || tag.size() < 2 || tag.front() != QLatin1Char('<') ||
            tag.back() != QLatin1Char('>') || tag.first(tag.size() - 1).contains(QLatin1Char('>')))
            return QStringView(text_).indexOf(tag);
        const auto it = first_.constFind(tag);
        return it == first_.constEnd() ? -1 : it.value();
    }

private:
    void build(const QString& text) {
        text_ = text;
        valid_ = true;
        first_.clear();
        const QStringView t(text_);
        qsizetype nextGt = -1;
        // Walk backwards so that the next ">" after each "<" is known; keep the first
        // position of each tag by letting earlier occurrences overwrite later ones.
        for (qsizetype i = t.size() - 1; i >= 0; --i) {
            const QChar c = t[i];
            if (c == QLatin1Char('>')) {
                nextGt = i;
            } else if (c == QLatin1Char('<') && nextGt > i && nextGt - i + 1 <= kMaxIndexedTag) {
                first_.insert(t.mid(i, nextGt - i + 1), i);
            }
        }
    }

    QString text_;
    bool valid_ = false;
    QHash<QStringView, qsizetype> first_;
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
    const qsizetype p1 = index.find(strElementStart);
    if (p1 < 0) return false;
    const QString closing = QStringLiteral("</") + strElementStart.mid(1);
    const qsizetype p2 = index.find(closing);
    if (p2 < 0) return false;

    const qsizetype length = p2 - p1 - strElementStart.size();
    // A closing tag ahead of the opening one: the run-time's Mid refuses a negative length.
    if (length < 0) throw RuntimeError(RuntimeError::InvalidCall);
    strElementData = strXML.mid(p1 + strElementStart.size(), length);
    return true;
}

QString rawAnswerText(const QString& response) {
    QString text = response;
    text.replace(QLatin1String("><"), QLatin1String(">\r\n<"));
    return text;
}

bool showErrorElements(Platform& platform, const QString& answer, QString& codeText,
                       color::Color& codeFore, QString& descrText, color::Color& descrFore) {
    QString value;
    const bool haveCode =
        Get_XML_Element_Data(platform, answer, QStringLiteral("<ERROR_CODE>"), value);
    if (haveCode) {
        const color::Color fore = value == QLatin1String("0") ? color::Black : color::Red;
        codeFore = fore;
        descrFore = fore;
        codeText = value;
    }
    if (Get_XML_Element_Data(platform, answer, QStringLiteral("<ERROR_DESCRIPTION>"), value))
        descrText = value;
    return haveCode;
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
