// The element extractor on any answer and any tag, against a plain search from the start of
// the answer (what its tag index must answer exactly), and the raw-answer view.
//
// Input: the tag's inner text (a piece), then the answer (Latin-1).

#include "base/runtime_error.h"
#include "fuzz_support.h"
#include "link/elements.h"

using namespace torv;

namespace {

// The element as a plain search finds it: -2 for the negative length, -1 when absent.
qsizetype plainFind(const QString& xml, const QString& tag, QString& value) {
    const qsizetype p1 = xml.indexOf(tag);
    if (p1 < 0) return -1;
    const qsizetype p2 = xml.indexOf(QStringLiteral("</") + tag.mid(1));
    if (p2 < 0) return -1;
    const qsizetype length = p2 - p1 - tag.size();
    if (length < 0) return -2;
    value = xml.mid(p1 + tag.size(), length);
    return p1;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input in(data, size);
    const QString tag = QLatin1Char('<') + QString::fromLatin1(in.piece()) + QLatin1Char('>');
    const QString xml = QString::fromLatin1(in.rest());
    if (xml.size() > 32767) return 0; // positions are 16-bit: an overflow, by design
    fuzz::Platform platform;

    // Twice: the second call answers from the index built by the first.
    for (int round = 0; round < 2; ++round) {
        QString value = QStringLiteral("unchanged"), expected = value;
        const qsizetype plain = plainFind(xml, tag, expected);
        int error = 0;
        bool found = false;
        try {
            found = Get_XML_Element_Data(platform, xml, tag, value);
        } catch (const RuntimeError& e) {
            error = e.number();
        }
        if (plain == -2) {
            fuzz::check(error == RuntimeError::InvalidCall, "no error for a closing tag first",
                        tag);
        } else {
            fuzz::check(error == 0, "an error where a plain search finds none", tag);
            fuzz::check(found == (plain >= 0), "found differs from a plain search", tag);
            fuzz::check(value == expected, "the value differs from a plain search",
                        tag + QStringLiteral(" -> ") + value);
        }
    }
    fuzz::check(platform.dialogs.empty(), "a box for a well-formed tag");
    const QString raw = rawAnswerText(xml);
    fuzz::check(raw.size() >= xml.size(), "the raw-answer view lost text");
    return 0;
}
