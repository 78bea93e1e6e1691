// Real-time status: what each status answer does to the panel, and polling on the fake card.

#include "base/colors.h"
#include "link/catalogue.h"
#include "panel_fixture.h"

#include <QFile>

using namespace torv;
using namespace torv::test;

namespace {

class StatusTest : public PanelTest {
protected:
    StatusTest() { layOut(); }

    // Hands the panel one complete status answer, as the transport does; elements are given
    // as "NAME=value" pairs.
    void answer(const QStringList& elements) {
        QString inner;
        for (const QString& e : elements)
            inner += QStringLiteral("<%1>%2</%1>").arg(e.section('=', 0, 0), e.section('=', 1));
        click([&] {
            panel.DataArrival_GetRTStatus("HTTP/1.0 200 OK\r\n\r\n<GetRTStatus>" + inner +
                                          "</GetRTStatus>");
        });
    }
    QString weight() const { return captionsOf({&f.lblWeight, &f.lblWT_BRUTTO}); }
};

} // namespace

TEST_F(StatusTest, OverloadIsDecidedByTheConverterCountOnly) {
    answer({"A2D=130000", "WEIGHT=5000"});
    EXPECT_EQ(weight(), "Weight:|5000.000");
    EXPECT_TRUE(f.chkTare.visible);

    answer({"A2D=130001", "WEIGHT=1.000"});
    EXPECT_EQ(weight(), "Error|OVERFLOW");
    EXPECT_EQ(f.lblWT_BRUTTO.foreColor, color::Red);
    EXPECT_EQ(f.lblWT_BRUTTO.fontSize, 12);
    EXPECT_FALSE(f.chkTare.visible);
    EXPECT_EQ(panel.data().rtReadingCount, 1); // the overloaded reading is not stored

    answer({"WEIGHT=2.000"}); // without an A2D element the previous count still decides
    EXPECT_EQ(f.lblWT_BRUTTO.caption, "OVERFLOW");
    answer({"A2D=100", "WEIGHT=2.000"});
    EXPECT_EQ(weight(), "Weight:|2.000");
    EXPECT_EQ(f.lblWT_BRUTTO.foreColor, color::Black);
    EXPECT_EQ(f.lblWT_BRUTTO.fontSize, f.lblTareData.fontSize);
}

TEST_F(StatusTest, TareIsSubtractedAndGivenBack) {
    auto tare = [&] { return captionsOf({&f.chkTare, &f.lblTareData, &f.lblWT_BRUTTO}); };
    answer({"A2D=1", "WEIGHT=12.5"});
    setValue(f.chkTare, 1);
    EXPECT_EQ(tare(), "Tare On|12.500|0");
    answer({"WEIGHT=12.5"}); // weight equal to the tare
    EXPECT_EQ(f.lblWT_BRUTTO.caption, "0.000");
    answer({"WEIGHT=15.25"});
    EXPECT_EQ(f.lblWT_BRUTTO.caption, "2.750");
    setValue(f.chkTare, 0);
    EXPECT_EQ(tare(), "Tare Off|0|15.250");
}

TEST_F(StatusTest, EveryElementReachesItsDisplay) {
    answer({"A2D=4711", "WEIGHT=1.2345", "INTEGRATION=16", "MAXIMUM_LOAD=3000.50", "UNIT=GRAM",
            "ERROR_CODE=00", "ERROR_DESCRIPTION=warm-up"});
    // "0.000" rounds half to even in binary; only the exact code "0" is no error.
    EXPECT_EQ(captionsOf({&f.lblA2D_Data, &f.lblWT_BRUTTO, &f.txtIntegration, &f.LbLMaxWGTdata,
                          &f.lblUnitNameWGT, &f.lblUnitNameTare, &f.lblErrNumer, &f.lblErrDescr}),
              "4711|1.234|16|3000.5|g|g|00|warm-up");
    EXPECT_TRUE(f.CmdShowGraph.enabled);
    EXPECT_EQ(f.lblErrNumer.foreColor, color::Red);

    answer({"ERROR_CODE=0"});
    EXPECT_EQ(f.lblErrNumer.foreColor, color::Black);
    EXPECT_EQ(f.lblErrDescr.caption, "warm-up"); // missing element: unchanged

    // An answer without a weight still counts, but stores nothing and shows the old weight.
    answer({"A2D=10"});
    EXPECT_EQ(panel.counters().lngReadings, 3);
    EXPECT_EQ(f.lblTotalReadingsD.caption, "3");
    EXPECT_EQ(f.lblWT_BRUTTO.caption, "1.234");
    EXPECT_EQ(panel.data().rtReadingCount, 1);
    EXPECT_EQ(panel.data().readings, (std::vector<QString>{"", "1.2345"})); // kept from 1 on
}

TEST_F(StatusTest, WeightButtonStartsPollingThatRepeatsOnTheCard) {
    f.txtLastReadingNumberD.caption = "-4";
    click([&] { panel.cmdWeight_Click(); });
    EXPECT_EQ(f.txtLastReadingNumberD.caption, "10");
    EXPECT_EQ(panel.counters().iBlockSize, 10);
    EXPECT_EQ(enabledOf({&f.cmdWeight, &f.cmdStopSample, &f.cmdStart_Sample}), "010");
    EXPECT_EQ(visibleOf({&f.lblInpNum[1], &f.lblShowInpStatus}), "10");

    ASSERT_TRUE(runUntil([&] { return panel.counters().lngReadings >= 5; }));
    EXPECT_EQ(captionsOf({&f.lblWT_BRUTTO, &f.lblUnitNameWGT}), "12.345|kg");
    for (const CardRequest& r : card.requests)
        EXPECT_EQ(r.function + " " + r.body, "GetRTStatus ID=4");
    // The marker of a running poll: green while a status request is outstanding.
    EXPECT_TRUE(runUntil([&] { return f.cmdWeight.backColor == color::Green; }, 50));
}

// Stopping writes the run's readings; a later run that never got a reading leaves that file
// as it was (it must not write the old readings again under a new start time).
TEST_F(StatusTest, RunWithoutReadingsLeavesTheLastFileAlone) {
    click([&] { panel.cmdWeight_Click(); });
    ASSERT_TRUE(runUntil([&] { return panel.counters().lngReadings >= 3; }));
    click([&] { panel.cmdStopSample_Click(); });
    QFile file(f.txtHistFileName.caption);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray first = file.readAll();
    file.close();
    EXPECT_TRUE(first.contains(" 1  12.345\r\n"));

    card.respond = [](const CardRequest&) { return QString(); };
    p.nowText = "2/20/2004 8:00:00 AM";
    click([&] { panel.cmdWeight_Click(); });
    ASSERT_TRUE(runUntil([&] { return !p.dialogs.empty(); }, 20000));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), first);
}
