// Real-time status: what each status answer does to the panel, and polling on the fake card.

#include "base/colors.h"
#include "link/catalogue.h"
#include "panel_fixture.h"

using namespace torv;
using namespace torv::test;

namespace {

class StatusTest : public PanelTest {
protected:
    StatusTest() { layOut(); }

    // Hands the panel one complete status answer, as the transport does.
    void answer(const QString& inner) {
        panel.link.req.strFunctionName = fn::GetRTStatus;
        panel.link.req.strResponse = QStringLiteral("HTTP/1.0 200 OK\r\n\r\n<GetRTStatus>") +
                                     inner + QStringLiteral("</GetRTStatus>");
        click([&] { panel.DataArrival_GetRTStatus(); });
    }
    static QString el(const char* tag, const QString& v) {
        return QStringLiteral("<%1>%2</%1>").arg(QLatin1String(tag), v);
    }
};

} // namespace

TEST_F(StatusTest, OverloadIsDecidedByTheConverterCountOnly) {
    answer(el("A2D", QStringLiteral("130000")) + el("WEIGHT", QStringLiteral("5000")));
    EXPECT_EQ(f.lblWeight.caption, QStringLiteral("Weight:"));
    EXPECT_EQ(f.lblWT_BRUTTO.caption, QStringLiteral("5000.000"));
    EXPECT_TRUE(f.chkTare.visible);

    answer(el("A2D", QStringLiteral("130001")) + el("WEIGHT", QStringLiteral("1.000")));
    EXPECT_EQ(f.lblWeight.caption, QStringLiteral("Error"));
    EXPECT_EQ(f.lblWT_BRUTTO.caption, QStringLiteral("OVERFLOW"));
    EXPECT_EQ(f.lblWT_BRUTTO.foreColor, color::Red);
    EXPECT_EQ(f.lblWT_BRUTTO.fontSize, 12);
    EXPECT_FALSE(f.chkTare.visible);
    EXPECT_EQ(panel.data.rtReadingCount, 1); // the overloaded reading is not stored

    // Without an A2D element the previous count still decides.
    answer(el("WEIGHT", QStringLiteral("2.000")));
    EXPECT_EQ(f.lblWT_BRUTTO.caption, QStringLiteral("OVERFLOW"));
    answer(el("A2D", QStringLiteral("100")) + el("WEIGHT", QStringLiteral("2.000")));
    EXPECT_EQ(f.lblWT_BRUTTO.caption, QStringLiteral("2.000"));
    EXPECT_EQ(f.lblWT_BRUTTO.foreColor, color::Black);
    EXPECT_EQ(f.lblWT_BRUTTO.fontSize, f.lblTareData.fontSize);
}

TEST_F(StatusTest, TareIsSubtractedAndGivenBack) {
    answer(el("A2D", QStringLiteral("1")) + el("WEIGHT", QStringLiteral("12.5")));
    setValue(f.chkTare, 1);
    EXPECT_EQ(f.chkTare.caption, QStringLiteral("Tare On"));
    EXPECT_EQ(f.lblTareData.caption, QStringLiteral("12.500"));
    EXPECT_EQ(f.lblWT_BRUTTO.caption, QStringLiteral("0"));

    answer(el("WEIGHT", QStringLiteral("12.5"))); // weight equal to the tare
    EXPECT_EQ(f.lblWT_BRUTTO.caption, QStringLiteral("0.000"));
    answer(el("WEIGHT", QStringLiteral("15.25")));
    EXPECT_EQ(f.lblWT_BRUTTO.caption, QStringLiteral("2.750"));

    setValue(f.chkTare, 0);
    EXPECT_EQ(f.chkTare.caption, QStringLiteral("Tare Off"));
    EXPECT_EQ(f.lblWT_BRUTTO.caption, QStringLiteral("15.250"));
    EXPECT_EQ(f.lblTareData.caption, QStringLiteral("0"));
}

TEST_F(StatusTest, AnswerWithoutWeightStillCountsButStoresNothing) {
    answer(el("A2D", QStringLiteral("10")) + el("WEIGHT", QStringLiteral("1.5")));
    const QString shown = f.lblWT_BRUTTO.caption;
    answer(el("A2D", QStringLiteral("10")) + el("UNIT", QStringLiteral("kg")));
    EXPECT_EQ(panel.counters.lngReadings, 2);
    EXPECT_EQ(f.lblTotalReadingsD.caption, QStringLiteral("2"));
    EXPECT_EQ(f.lblWT_BRUTTO.caption, shown);
    EXPECT_EQ(panel.data.rtReadingCount, 1);
    ASSERT_EQ(panel.data.readings.size(), 2u);
    EXPECT_EQ(panel.data.readings[1], QStringLiteral("1.5"));
}

TEST_F(StatusTest, EveryElementReachesItsDisplay) {
    answer(el("A2D", QStringLiteral("4711")) + el("WEIGHT", QStringLiteral("1.2345")) +
           el("INTEGRATION", QStringLiteral("16")) + el("MAXIMUM_LOAD", QStringLiteral("3000.50")) +
           el("UNIT", QStringLiteral("GRAM")) + el("ERROR_CODE", QStringLiteral("00")) +
           el("ERROR_DESCRIPTION", QStringLiteral("warm-up")));
    EXPECT_EQ(f.lblA2D_Data.caption, QStringLiteral("4711"));
    EXPECT_EQ(f.lblWT_BRUTTO.caption, QStringLiteral("1.234")); // "0.000", half to even in binary
    EXPECT_EQ(f.txtIntegration.caption, QStringLiteral("16"));
    EXPECT_EQ(panel.CurrentIntegration, 16);
    EXPECT_TRUE(f.CmdShowGraph.enabled);
    EXPECT_EQ(f.LbLMaxWGTdata.caption, QStringLiteral("3000.5"));
    EXPECT_DOUBLE_EQ(panel.MaximumLoad, 3000.5);
    EXPECT_EQ(f.lblUnitNameWGT.caption, QStringLiteral("g"));
    EXPECT_EQ(f.lblUnitNameTare.caption, QStringLiteral("g"));
    EXPECT_EQ(f.lblErrNumer.caption, QStringLiteral("00"));
    EXPECT_EQ(f.lblErrNumer.foreColor, color::Red); // only the exact "0" is no error
    EXPECT_EQ(f.lblErrDescr.caption, QStringLiteral("warm-up"));

    answer(el("UNIT", QStringLiteral("Newton")) + el("ERROR_CODE", QStringLiteral("0")));
    EXPECT_EQ(f.lblUnitNameWGT.caption, QStringLiteral("Newton"));
    EXPECT_EQ(f.lblErrNumer.foreColor, color::Black);
    EXPECT_EQ(f.lblErrDescr.caption, QStringLiteral("warm-up")); // missing element: unchanged
}

TEST_F(StatusTest, BadStatusWordIsReportedOnceAndTheNextAnswerWorks) {
    answer(el("OUT_STATUS", QStringLiteral("40000")));
    ASSERT_EQ(p.dialogs.size(), 1u);
    EXPECT_EQ(p.dialogs[0].text, QStringLiteral("Run-time error '6': Overflow"));
    answer(el("IN_STATUS", QStringLiteral("abc")));
    ASSERT_EQ(p.dialogs.size(), 2u);
    EXPECT_EQ(p.dialogs[1].text, QStringLiteral("Run-time error '13': Type mismatch"));
    answer(el("OUT_STATUS", QStringLiteral("0")) + el("WEIGHT", QStringLiteral("3")));
    EXPECT_EQ(p.dialogs.size(), 2u);
    EXPECT_EQ(panel.OutStatus, 0);
    EXPECT_EQ(f.lblWT_BRUTTO.caption, QStringLiteral("3.000"));
}

TEST_F(StatusTest, WeightButtonStartsPollingThatRepeatsOnTheCard) {
    f.txtLastReadingNumberD.caption = QStringLiteral("-4");
    click([&] { panel.cmdWeight_Click(); });
    EXPECT_EQ(f.txtLastReadingNumberD.caption, QStringLiteral("10"));
    EXPECT_EQ(panel.counters.iBlockSize, 10);
    EXPECT_FALSE(f.cmdWeight.enabled);
    EXPECT_TRUE(f.cmdStopSample.enabled);
    EXPECT_FALSE(f.cmdStart_Sample.enabled);
    EXPECT_TRUE(f.lblInpNum[1].visible);
    EXPECT_FALSE(f.lblShowInpStatus.visible);

    ASSERT_TRUE(runUntil([&] { return panel.counters.lngReadings >= 5; }));
    EXPECT_EQ(f.lblWT_BRUTTO.caption, QStringLiteral("12.345"));
    EXPECT_EQ(f.lblUnitNameWGT.caption, QStringLiteral("kg"));
    for (const CardRequest& r : card.requests) {
        EXPECT_EQ(r.function, QStringLiteral("GetRTStatus"));
        EXPECT_EQ(r.body, QStringLiteral("ID=4"));
        EXPECT_EQ(r.contentLength, 4);
    }
    // The marker of a running poll: green while a status request is outstanding.
    runUntil([&] { return f.cmdWeight.backColor == color::Green; }, 50);
    EXPECT_EQ(f.cmdWeight.backColor, color::Green);

    // A second press while polling changes nothing but the fast-sample button.
    const int before = p.socketsCreated;
    click([&] { panel.cmdWeight_Click(); });
    EXPECT_EQ(p.socketsCreated, before);
}

TEST_F(StatusTest, BlockSizeAbove32OverflowsTheCurrentFrequency) {
    f.txtLastReadingNumberD.caption = QStringLiteral("33");
    click([&] { panel.cmdWeight_Click(); });
    runUntil([&] { return !p.dialogs.empty(); }, 200);
    ASSERT_FALSE(p.dialogs.empty());
    EXPECT_EQ(p.dialogs[0].text, QStringLiteral("Run-time error '6': Overflow"));
}

TEST_F(StatusTest, SilentCardIsReportedOnceAndPollingStops) {
    card.respond = [](const CardRequest&) { return QString(); };
    click([&] { panel.cmdWeight_Click(); });
    ASSERT_TRUE(runUntil([&] { return !p.dialogs.empty(); }, 20000));
    p.advance(20000);
    ASSERT_EQ(p.dialogs.size(), 1u);
    EXPECT_EQ(p.dialogs[0].text,
              QStringLiteral("Server does not answer! Possibly IP-address is incorrect.\n"
                             "Be sure the Server is running and try again, please! "));
    EXPECT_EQ(f.lblCommStatusData.caption, QStringLiteral("Not Connected"));
    EXPECT_EQ(f.cmdWeight.backColor, color::ButtonFace);
    EXPECT_TRUE(f.cmdWeight.enabled);
    EXPECT_TRUE(f.cmdStart_Sample.enabled);
    EXPECT_FALSE(f.cmdStopSample.enabled);
}
