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
    EXPECT_EQ(f.ChkStartOutStatus.toolTip,
              QStringLiteral("Check to turn off all outputs at power-up."));
    EXPECT_FALSE(f.txtRealTimeInfo.visible);
    EXPECT_TRUE(f.cmdShowXMLData.visible);
    EXPECT_EQ(panel.OutputMask[14], 8192);
    ASSERT_TRUE(runUntil([&] { return card.functions().contains(QStringLiteral("GetRTStatus")); }));
    EXPECT_FALSE(card.functions().contains(QStringLiteral("SetOutput")));
    EXPECT_TRUE(p.dialogs.empty());
    EXPECT_FALSE(QFile::exists(FrmClient::ConfigFileName)); // nothing was changed, nothing saved
}

TEST_F(PanelTest, StartWithResetChosenSwitchesEveryOutputOffFirst) {
    writeFile(QStringLiteral("TORV_NET.cfg"),
              "IPaddress,10.1.2.3:8081\r\nStartOutStatus, 1\r\nSetPointCheckBoxStart, 0\r\n"
              "Start_Sample_Time, 77\r\nStart_Sample_TimeOut, 3000\r\n"
              "X-mode:Samplings_or_Milisec:, 2\r\nOKA\r\n");
    state.outStatus = QStringLiteral("0");
    panel.Form_Load();
    EXPECT_EQ(f.TxtIP.caption, QStringLiteral("10.1.2.3:8081"));
    EXPECT_EQ(f.txtTimeout2.caption, QStringLiteral("3000"));
    EXPECT_EQ(panel.link.lngTimeOut, 3000);
    EXPECT_EQ(f.OptX_mode[2].value, 1);
    EXPECT_EQ(f.OptX_mode[1].value, 0);
    EXPECT_EQ(f.ChkStartOutStatus.value, 1);
    const QStringList fns = card.functions();
    ASSERT_TRUE(fns.contains(QStringLiteral("SetOutput")));
    EXPECT_EQ(card.requests[fns.indexOf(QStringLiteral("SetOutput"))].body,
              QStringLiteral("ID=4&OUT_STATUS=16383"));
    EXPECT_EQ(state.outStatus, QStringLiteral("16383"));
    EXPECT_EQ(p.wire.first(), QStringLiteral("connect 10.1.2.3:8081"));
    // Checking the box at start-up fired its click, which saved the file again.
    const QByteArray saved = readFile(QStringLiteral("TORV_NET.cfg"));
    EXPECT_TRUE(saved.contains("Start_Sample_Time, 77\r\n"));
    EXPECT_TRUE(saved.contains("X-mode:Samplings_or_Milisec:, 2\r\n"));
}

TEST_F(PanelTest, StartUpChoiceIsSavedAtOnceWhenChanged) {
    panel.Form_Load();
    f.TxtIP.caption = QStringLiteral("10.0.0.9");
    setValue(f.ChkStartOutStatus, 1);
    EXPECT_TRUE(f.ChkStartOutStatus.toolTip.isEmpty());
    EXPECT_TRUE(readFile(QStringLiteral("TORV_NET.cfg"))
                    .startsWith("IPaddress,10.0.0.9\r\nStartOutStatus, 1\r\n"));
    setValue(f.ChkStartOutStatus, 0);
    EXPECT_EQ(f.ChkStartOutStatus.toolTip,
              QStringLiteral("Check to turn off all outputs at power-up."));
}

TEST_F(PanelTest, DamagedConfigurationKeepsWhatWasReadAndSaysSo) {
    writeFile(QStringLiteral("TORV_NET.cfg"), "IPaddress,10.9.9.9\r\nStartOutStatus, 0\r\n");
    panel.Form_Load();
    ASSERT_FALSE(p.dialogs.empty());
    EXPECT_EQ(p.dialogs[0].text, QStringLiteral("Ivalid structure of the file TORV_NET.cfg"));
    EXPECT_EQ(f.TxtIP.caption, QStringLiteral("10.9.9.9"));
}

TEST_F(PanelTest, CommandLineAddressWinsOverTheStoredOne) {
    writeFile(QStringLiteral("TORV_NET.cfg"),
              "IPaddress,10.1.2.3\r\nStartOutStatus, 0\r\nSetPointCheckBoxStart, 0\r\n"
              "Start_Sample_Time, \r\nStart_Sample_TimeOut, 5000\r\nX-mode:Samplings_or_Milisec:, "
              "1\r\nOKA\r\n");
    panel.addressOverride = QStringLiteral("127.0.0.1:9999");
    panel.Form_Load();
    EXPECT_EQ(f.TxtIP.caption, QStringLiteral("127.0.0.1:9999"));
}

TEST_F(PanelTest, RawAnswerViewSwitchesWithTheLogo) {
    panel.SetXML_Data(true);
    EXPECT_TRUE(f.txtRealTimeInfo.visible);
    EXPECT_TRUE(f.FraErrorStatus.visible);
    EXPECT_TRUE(f.cmdQuitXML.visible);
    EXPECT_FALSE(f.ImaOKA_Logo.visible);
    EXPECT_FALSE(f.cmdShowXMLData.visible);
    panel.cmdQuitXML_Click();
    EXPECT_FALSE(f.lblXML_Data.visible);
    EXPECT_TRUE(f.ImaOKA_Logo.visible);
}

TEST_F(PanelTest, ShutDownClosesTheViewersListedByTheViewer) {
    p.folder = dir_.path();
    writeFile(dir_.path() + QStringLiteral("/hWndListTrendlog"), "4242\r\n77\r\njunk\r\n");
    panel.Form_Unload();
    EXPECT_EQ(p.closedWindows, (std::vector<std::int64_t>{4242, 77}));
}
