// The main window offscreen: it builds, renders the model, routes clicks and keys to the
// panel, and repaints only what changed.

#include "panel/frm_client.h"
#include "support/fake_card.h"
#include "support/fake_platform.h"
#include "ui/frm_client_window.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTest>
#include <algorithm>
#include <gtest/gtest.h>

using namespace torv;
using namespace torv::test;

namespace {

class WindowTest : public ::testing::Test {
protected:
    WindowTest() {
        panel.f.TxtIP.caption = "10.0.0.2";
        panel.layOutFrames();
    }
    template <typename T = QWidget> T* widget(const QString& name) {
        auto* w = window.findChild<T*>(name);
        EXPECT_NE(w, nullptr) << qPrintable(name);
        return w;
    }

    FakePlatform p;
    FakeCard card{p};
    FrmClient panel{p};
    FrmClientWindow window{panel};
};

} // namespace

// Assistive technology finds each control by its name and reads its caption (a text box, the
// caption of its label); the tab order follows the layout.
TEST_F(WindowTest, EveryControlIsNamedAndCaptionedForAssistiveTechnology) {
    int controls = 0;
    panel.f.forEach([&](Control& c) {
        ++controls;
        QWidget* w = window.findChild<QWidget*>(c.name);
        ASSERT_NE(w, nullptr) << qPrintable(c.name);
        EXPECT_EQ(w->accessibleName(), c.name);
    });
    EXPECT_GT(controls, 100);
    window.refresh();
    const std::pair<const char*, const char*> described[] = {{"TxtIP", "Card IP address"},
                                                             {"cmdWeight", "Weight  I/O"},
                                                             {"chkTare", "Tare Off"},
                                                             {"cmdChan_1", "Channel 1"},
                                                             {"lblTxtIP", "Card IP address"}};
    for (const auto& [name, text] : described) {
        QAccessibleInterface* a = QAccessible::queryAccessibleInterface(widget(name));
        ASSERT_NE(a, nullptr) << name;
        EXPECT_EQ(a->text(QAccessible::Name), name);
        EXPECT_EQ(a->text(QAccessible::Description), text) << name;
    }
    QWidget* next = widget("TxtIP")->nextInFocusChain();
    while (next && !(next->focusPolicy() & Qt::TabFocus))
        next = next->nextInFocusChain();
    EXPECT_EQ(next, widget("txtTimeout2"));
}

TEST_F(WindowTest, RawAnswersKeepTheirScrollAndTheKeptFileIsNamed) {
    panel.cmdShowXMLData_Click();
    window.resize(1240, 680);
    window.show();
    window.refresh();
    auto* raw = widget<QPlainTextEdit>("txtRealTimeInfo");
    QString answer;
    for (int i = 0; i < 60; ++i)
        answer += QStringLiteral("<LINE%1>%1</LINE%1>\n").arg(i);
    panel.f.txtRealTimeInfo.caption = answer;
    window.refresh();
    QScrollBar* bar = raw->verticalScrollBar();
    ASSERT_GT(bar->maximum(), 20);
    bar->setValue(20);
    panel.f.txtRealTimeInfo.caption = answer + "<NEXT/>";
    window.refresh();
    EXPECT_EQ(raw->toPlainText().right(7), "<NEXT/>");
    EXPECT_EQ(bar->value(), 20);

    panel.keptDataFile = {"/data/All_data-kept-20261124-195803.txt", {}};
    window.refresh();
    EXPECT_EQ(widget<QLabel>("keptDataFile")->text(),
              "Previous file kept as All_data-kept-20261124-195803.txt");
}

TEST_F(WindowTest, ClickingWeightShowsTheCardsWeight) {
    window.show();
    auto* weight = widget<QPushButton>("cmdWeight");
    ASSERT_NE(weight, nullptr);
    EXPECT_EQ(weight->text(), " Weight  I/O");
    QTest::mouseClick(weight, Qt::LeftButton);
    for (int i = 0; i < 200 && panel.counters().lngReadings < 3; ++i)
        p.advance(1);
    ASSERT_GE(panel.counters().lngReadings, 3);
    // The repaint is coalesced onto a short timer; let it run (a loaded machine may take a while).
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return widget<QLabel>("lblWT_BRUTTO")->text() == panel.f.lblWT_BRUTTO.caption; },
        2000));
    EXPECT_EQ(panel.f.lblWT_BRUTTO.caption, "12.345");
    EXPECT_EQ(widget<QLabel>("lblUnitNameWGT")->text(), "kg");
    EXPECT_FALSE(weight->isEnabled());
    EXPECT_TRUE(widget("cmdStopSample")->isEnabled());
}

TEST_F(WindowTest, ClicksAndTypedTextReachTheModel) {
    window.show();
    panel.f.lblWT_BRUTTO.caption = "7.000";
    window.refresh();
    auto* tare = widget<QCheckBox>("chkTare");
    ASSERT_NE(tare, nullptr);
    QTest::mouseClick(tare, Qt::LeftButton, {}, QPoint(5, tare->height() / 2));
    EXPECT_EQ(panel.f.chkTare.value, 1);
    EXPECT_EQ(panel.f.chkTare.caption, "Tare On");
    EXPECT_EQ(panel.f.lblTareData.caption, "7.000");
    window.refresh();
    EXPECT_EQ(tare->text(), "Tare On");

    auto* ip = widget<QLineEdit>("TxtIP");
    ASSERT_NE(ip, nullptr);
    ip->setEnabled(true);
    ip->clear();
    QTest::keyClicks(ip, "127.0.0.1:8081");
    EXPECT_EQ(panel.f.TxtIP.caption, "127.0.0.1:8081");
}
