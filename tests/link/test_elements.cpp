// Element extraction, the raw-answer text and the shared error-code display. The outcomes on
// arbitrary input (malformed tags, closing before opening) are covered by test_fuzz.

#include "link/elements.h"
#include "support/fake_platform.h"

#include "base/runtime_error.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace torv;
using torv::test::FakePlatform;

namespace {

class ElementsTest : public ::testing::Test {
protected:
    // The value found, or "<missing>" when the extractor says false (the value must then be
    // unchanged).
    QString get(const QString& xml, const QString& tag) {
        QString value = "old";
        if (Get_XML_Element_Data(platform, xml, tag, value)) return value;
        return value == "old" ? "<missing>" : "<changed>";
    }
    FakePlatform platform;
};

TEST_F(ElementsTest, ValueRunsFromTheFirstOpeningToTheFirstClosingTag) {
    const QString status = "HTTP/1.0 200 OK\r\n\r\n<GetRTStatus><WEIGHT>12.345</WEIGHT><A2D>17"
                           "</A2D><ERROR_CODE>0</ERROR_CODE></GetRTStatus>";
    const char* rows[][3] = {
        {"<A2D>", "17", nullptr},
        {"<WEIGHT>", "12.345", nullptr},
        {"<a2d>", "<missing>", nullptr}, // case-sensitive
        {"<OUT_STATUS>", "<missing>", nullptr},
        // Spaces and line breaks are part of the value; the first closing tag ends it.
        {"<U>", " k g\r\n", "<U> k g\r\n</U>x</U>"},
        {"<W1>", "a", "<W1>a</W1><W1>b</W1>"}, // the first opening tag counts
        {"<A2D>", "", "<A2D></A2D>"},
        {"<A2D>", "<missing>", "<A2D>17"},
        {"<A2D>", "<missing>", ""},
        {"<A2D>", "<missing>", "<A2D >5</A2D>"}, // "<A2D" and something else
        {"<B>", "x", "<<B>x</B>"}};
    for (const auto& [tag, expected, xml] : rows)
        EXPECT_EQ(get(xml ? QString(xml) : status, tag), expected)
            << tag << " in " << (xml ? xml : "the status answer");
    EXPECT_TRUE(platform.dialogs.empty());

    // Exactly 32767 characters are read; one more overflows.
    QString big = "<A2D>1</A2D>";
    big += QString(32767 - big.size(), QLatin1Char('x'));
    EXPECT_EQ(get(big, "<A2D>"), "1");
    try {
        get(big + "x", "<A2D>");
        FAIL() << "no overflow";
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number(), RuntimeError::Overflow);
    }
}

} // namespace
