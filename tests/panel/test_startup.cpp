// Start-up of the main panel: configuration, the start-up output choice, shut-down.

#include "base/colors.h"
#include "panel_fixture.h"

#include <QFile>

using namespace torv;
using namespace torv::test;

namespace {

void writeFile(const QString& name, const QByteArray& text) {
    QFile file(name);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
}

QByteArray readFile(const QString& name) {
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

TEST_F(PanelTest, StartWithoutConfigurationPollsOnceAtTheDefaultAddress) {
    panel.Form_Load();
    EXPECT_EQ(f.TxtIP.caption, FrmClient::DefaultCardAddress);
    EXPECT_EQ(f.ChkStartOutStatus.value, 0);
    EXPECT_EQ(f.ChkStartOutStatus.toolTip, "Check to turn off all outputs at power-up.");
    EXPECT_EQ(visibleOf({&f.txtRealTimeInfo, &f.cmdShowXMLData}), "01");
    ASSERT_TRUE(runUntil([&] { return card.functions().contains("GetRTStatus"); }));
    EXPECT_FALSE(card.functions().contains("SetOutput"));
    EXPECT_TRUE(p.dialogs.empty());
    EXPECT_FALSE(QFile::exists(FrmClient::ConfigFileName)); // nothing was changed, nothing saved
}

TEST_F(PanelTest, StartWithResetChosenSwitchesEveryOutputOffFirst) {
    writeFile("TORV_NET.cfg",
              "IPaddress,10.1.2.3:8081\r\nStartOutStatus, 1\r\nSetPointCheckBoxStart, 0\r\n"
              "Start_Sample_Time, 77\r\nStart_Sample_TimeOut, 3000\r\n"
              "X-mode:Samplings_or_Milisec:, 2\r\nOKA\r\n");
    sim.setOutputWord(0);
    panel.Form_Load();
    EXPECT_EQ(captionsOf({&f.TxtIP, &f.txtTimeout2}), "10.1.2.3:8081|3000");
    EXPECT_EQ(panel.link().lngTimeOut, 3000);
    EXPECT_EQ(f.OptX_mode[2].value - f.OptX_mode[1].value, 1);
    EXPECT_EQ(f.ChkStartOutStatus.value, 1);
    EXPECT_EQ(lastBody("SetOutput"), "ID=4&OUT_STATUS=16383");
    EXPECT_EQ(sim.outputWord(), 16383);
    EXPECT_EQ(p.wire.first(), "connect 10.1.2.3:8081");
}

TEST_F(PanelTest, DamagedConfigurationKeepsWhatWasReadAndTheCommandLineWins) {
    writeFile("TORV_NET.cfg", "IPaddress,10.9.9.9\r\nStartOutStatus, 0\r\n");
    panel.Form_Load();
    EXPECT_EQ(p.messages().value(0), "Ivalid structure of the file TORV_NET.cfg");
    EXPECT_EQ(f.TxtIP.caption, "10.9.9.9");

    FrmClient other{p}; // an address on the command line wins over the stored one
    other.addressOverride = "127.0.0.1:9999";
    other.Form_Load();
    EXPECT_EQ(other.f.TxtIP.caption, "127.0.0.1:9999");
    // ...and the start-up choice, saved by itself, keeps the stored address...
    setValue(other.f.ChkStartOutStatus, 1);
    EXPECT_TRUE(readFile("TORV_NET.cfg").startsWith("IPaddress,10.9.9.9\r\n"));
    // ...while "Save Config" saves the address shown, given or typed.
    other.cmdSaveConfig_Click();
    EXPECT_TRUE(readFile("TORV_NET.cfg").startsWith("IPaddress,127.0.0.1:9999\r\n"));
    other.f.TxtIP.caption = "10.0.0.7";
    other.cmdSaveConfig_Click();
    EXPECT_TRUE(readFile("TORV_NET.cfg").startsWith("IPaddress,10.0.0.7\r\n"));
}
