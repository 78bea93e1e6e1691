// Element extraction, the raw-answer text and the shared error-code display.

#include "link/elements.h"
#include "support/fake_platform.h"

#include "base/runtime_error.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace torv;
using torv::test::FakePlatform;
using torv::test::ProgramEnded;

namespace {

const QString kStatus = QStringLiteral(
    "HTTP/1.0 200 OK\r\nContent-Type: text/xml\r\n\r\n<GetRTStatus><WEIGHT>12.345</WEIGHT>"
    "<A2D>17</A2D><UNIT>KG</UNIT><ERROR_CODE>0</ERROR_CODE>"
    "<ERROR_DESCRIPTION>OK</ERROR_DESCRIPTION></GetRTStatus>");

class ElementsTest : public ::testing::Test {
protected:
    bool get(const QString& xml, const QString& tag, QString& value) {
        return Get_XML_Element_Data(platform, xml, tag, value);
    }
    FakePlatform platform;
};

TEST_F(ElementsTest, FindsValuesBetweenTheFirstOpeningAndClosingTags) {
    QString value;
    ASSERT_TRUE(get(kStatus, QStringLiteral("<A2D>"), value));
    EXPECT_EQ(value, "17");
    ASSERT_TRUE(get(kStatus, QStringLiteral("<WEIGHT>"), value));
    EXPECT_EQ(value, "12.345");

    // Spaces and line breaks are part of the value; the first closing tag ends it.
    ASSERT_TRUE(get(QStringLiteral("<U> k g\r\n</U>x</U>"), QStringLiteral("<U>"), value));
    EXPECT_EQ(value, " k g\r\n");
    // The first opening tag counts.
    ASSERT_TRUE(get(QStringLiteral("<W1>a</W1><W1>b</W1>"), QStringLiteral("<W1>"), value));
    EXPECT_EQ(value, "a");
    // An empty element is found and empty.
    value = QStringLiteral("before");
    ASSERT_TRUE(get(QStringLiteral("<A2D></A2D>"), QStringLiteral("<A2D>"), value));
    EXPECT_TRUE(value.isEmpty());
    EXPECT_TRUE(platform.dialogs.empty());
}

TEST_F(ElementsTest, MissingTagsLeaveTheValueUnchanged) {
    QString value = QStringLiteral("old");
    EXPECT_FALSE(get(QStringLiteral("<A2D>17"), QStringLiteral("<A2D>"), value));
    EXPECT_FALSE(get(kStatus, QStringLiteral("<a2d>"), value)); // case-sensitive
    EXPECT_FALSE(get(kStatus, QStringLiteral("<OUT_STATUS>"), value));
    EXPECT_FALSE(get(QString(), QStringLiteral("<A2D>"), value));
    // "<A2D" followed by something else is not the opening tag.
    EXPECT_FALSE(get(QStringLiteral("<A2D >5</A2D>"), QStringLiteral("<A2D>"), value));
    EXPECT_EQ(value, "old");
}

TEST_F(ElementsTest, ClosingTagBeforeOpeningTagIsAnInvalidCall) {
    QString value = QStringLiteral("old");
    try {
        get(QStringLiteral("</W0><W0>5</W0>"), QStringLiteral("<W0>"), value);
        FAIL() << "no error";
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number(), RuntimeError::InvalidCall);
    }
    EXPECT_EQ(value, "old");
}

TEST_F(ElementsTest, MalformedTagNamesThePreviousValueAndEndsTheProgram) {
    for (const QString& tag : {QStringLiteral("A2D>"), QStringLiteral("<A2D"),
                               QStringLiteral("A2D"), QString(), QStringLiteral("<")}) {
        platform.dialogs.clear();
        QString value = QStringLiteral("12.5");
        EXPECT_THROW(get(kStatus, tag, value), ProgramEnded) << tag.toStdString();
        ASSERT_EQ(platform.dialogs.size(), 1u);
        EXPECT_EQ(platform.lastMessage(),
                  "Invalid XML element:12.5\r\n At least one of '<','>' is absent ");
    }
    EXPECT_EQ(platform.programEndings, 5);
}

TEST_F(ElementsTest, AnswersLongerThan32767CharactersOverflow) {
    QString xml = QStringLiteral("<A2D>1</A2D>");
    xml += QString(32767 - xml.size(), QLatin1Char('x'));
    QString value;
    ASSERT_TRUE(get(xml, QStringLiteral("<A2D>"), value)); // exactly 32767: fine
    xml += QLatin1Char('x');
    try {
        get(xml, QStringLiteral("<A2D>"), value);
        FAIL() << "no overflow";
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number(), RuntimeError::Overflow);
    }
}

TEST(RawAnswerText, PutsEachTagOnItsOwnLine) {
    EXPECT_EQ(rawAnswerText(QStringLiteral("<R><A>1</A><B></B></R>")),
              "<R>\r\n<A>1</A>\r\n<B>\r\n</B>\r\n</R>");
    EXPECT_EQ(rawAnswerText(QStringLiteral("HTTP/1.0 200 OK\r\n\r\n<R>x</R>")),
              "HTTP/1.0 200 OK\r\n\r\n<R>x</R>");
    EXPECT_EQ(rawAnswerText(QStringLiteral("><><")), ">\r\n<>\r\n<");
}

TEST_F(ElementsTest, ErrorDisplayColoursAnythingButExactlyZeroRed) {
    struct Case {
        const char* code;
        color::Color fore;
    };
    for (const Case& c : {Case{"0", color::Black}, Case{"00", color::Red}, Case{"200", color::Red},
                          Case{" 0", color::Red}, Case{"", color::Red}}) {
        QString code = QStringLiteral("x"), descr = QStringLiteral("y");
        color::Color codeFore = color::Blue, descrFore = color::Blue;
        const QString answer =
            QStringLiteral("<R><ERROR_CODE>") + QLatin1String(c.code) +
            QStringLiteral("</ERROR_CODE><ERROR_DESCRIPTION>d</ERROR_DESCRIPTION></R>");
        EXPECT_TRUE(showErrorElements(platform, answer, code, codeFore, descr, descrFore));
        EXPECT_EQ(code, QLatin1String(c.code));
        EXPECT_EQ(descr, "d");
        EXPECT_EQ(codeFore, c.fore) << c.code;
        EXPECT_EQ(descrFore, c.fore) << c.code;
    }
}

TEST_F(ElementsTest, ErrorDisplayKeepsWhatAMissingElementWouldHaveSet) {
    QString code = QStringLiteral("7"), descr = QStringLiteral("old");
    color::Color codeFore = color::Blue, descrFore = color::Blue;
    EXPECT_FALSE(showErrorElements(
        platform, QStringLiteral("<R><ERROR_DESCRIPTION>new</ERROR_DESCRIPTION></R>"), code,
        codeFore, descr, descrFore));
    EXPECT_EQ(code, "7");
    EXPECT_EQ(codeFore, color::Blue);
    EXPECT_EQ(descrFore, color::Blue);
    EXPECT_EQ(descr, "new");

    EXPECT_TRUE(showErrorElements(platform, QStringLiteral("<R><ERROR_CODE>0</ERROR_CODE></R>"),
                                  code, codeFore, descr, descrFore));
    EXPECT_EQ(code, "0");
    EXPECT_EQ(descr, "new");
    EXPECT_EQ(descrFore, color::Black);
}

TEST(XmlResponse, ReplacesTheRspFileWithTheAnswerAndALineBreak) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString base = dir.filePath(QStringLiteral("answer"));
    XML_Response(base, QStringLiteral("<R>first, longer answer</R>"));
    XML_Response(base, QStringLiteral("<R>2</R>"));
    QFile f(base + QStringLiteral(".rsp"));
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    EXPECT_EQ(f.readAll(), QByteArray("<R>2</R>\r\n"));

    try {
        XML_Response(dir.filePath(QStringLiteral("missing/answer")), QStringLiteral("x"));
        FAIL() << "no error";
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number(), 75);
    }
}

} // namespace

// The extractor remembers the tags of the answer it last read; a text changed in place, or
// another text, must never be answered from that memory.
TEST(ElementIndexTest, ChangedOrOtherTextIsReadAfresh) {
    torv::test::FakePlatform p;
    QString answer = QStringLiteral("<A2D>17</A2D><UNIT>KG</UNIT>");
    QString v;
    ASSERT_TRUE(torv::Get_XML_Element_Data(p, answer, QStringLiteral("<A2D>"), v));
    EXPECT_EQ(v, QStringLiteral("17"));
    answer.replace(QStringLiteral("17"), QStringLiteral("4711")); // in place, same object
    ASSERT_TRUE(torv::Get_XML_Element_Data(p, answer, QStringLiteral("<A2D>"), v));
    EXPECT_EQ(v, QStringLiteral("4711"));
    answer.append(QStringLiteral("<W0>1</W0>"));
    ASSERT_TRUE(torv::Get_XML_Element_Data(p, answer, QStringLiteral("<W0>"), v));
    EXPECT_EQ(v, QStringLiteral("1"));
    const QString other = QStringLiteral("<UNIT>LB</UNIT>");
    ASSERT_TRUE(torv::Get_XML_Element_Data(p, other, QStringLiteral("<UNIT>"), v));
    EXPECT_EQ(v, QStringLiteral("LB"));
    EXPECT_FALSE(torv::Get_XML_Element_Data(p, other, QStringLiteral("<A2D>"), v));
    // A tag longer than the remembered ones, and one inside another tag's brackets.
    const QString longTag =
        QStringLiteral("<") + QString(80, QLatin1Char('X')) + QStringLiteral(">");
    const QString withLong = longTag + QStringLiteral("v") + QStringLiteral("</") + longTag.mid(1);
    ASSERT_TRUE(torv::Get_XML_Element_Data(p, withLong, longTag, v));
    EXPECT_EQ(v, QStringLiteral("v"));
    ASSERT_TRUE(
        torv::Get_XML_Element_Data(p, QStringLiteral("<<B>x</B>"), QStringLiteral("<B>"), v));
    EXPECT_EQ(v, QStringLiteral("x"));
}
