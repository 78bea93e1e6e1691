#include "files/config_file.h"

#include "support/fake_platform.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

using namespace torv;
using torv::test::FakePlatform;
using torv::test::ProgramEnded;

namespace {

const QString kName = QStringLiteral("TORV_NET.cfg");
const QString kDefault = QStringLiteral("192.168.1.100");
const QString kInvalid = QStringLiteral("Ivalid structure of the file TORV_NET.cfg");

QByteArray lines(std::initializer_list<const char*> items) {
    QByteArray out;
    for (const char* s : items)
        out += QByteArray(s) + "\r\n";
    return out;
}

const QByteArray kGood =
    lines({"IPaddress,10.0.0.7:8080", "StartOutStatus, 1", "SetPointCheckBoxStart, 1",
           "Start_Sample_Time, 0:00:10 x", "Start_Sample_TimeOut, 7000",
           "X-mode:Samplings_or_Milisec:, 2", "OKA"});

class ConfigFileTest : public torv::test::InTempFolder {
protected:
    ClientConfig load(const QString& path = kName) {
        ClientConfig cfg;
        cfg.address = "designer";
        Load_Config_File(p, path, cfg, kDefault);
        return cfg;
    }
    FakePlatform p;
};

} // namespace

TEST_F(ConfigFileTest, SavedFileReadsBackValueByValue) {
    put(kName, kGood);
    const ClientConfig cfg = load();
    EXPECT_TRUE(p.dialogs.empty());
    EXPECT_EQ(cfg.address, "10.0.0.7:8080");
    EXPECT_EQ(cfg.startOutStatus, "1");
    EXPECT_EQ(cfg.setPointCheckBoxStart, "1");
    EXPECT_EQ(cfg.startSampleTime, "0:00:10 x");
    EXPECT_EQ(cfg.timeout, "7000");
    EXPECT_EQ(cfg.xMode, "2");
    Save_Config_File(p, kName, cfg);
    EXPECT_EQ(get(kName), kGood); // the start-sample time goes back as it was read
}

TEST_F(ConfigFileTest, LabelsAndMarkerCaseDoNotMatter) {
    put(kName, lines({"IPadres,1.2.3.4", "Start, 1", "x, 0", "y,", "z, 900", "w, 1", "oka"}));
    const ClientConfig cfg = load();
    EXPECT_TRUE(p.dialogs.empty());
    EXPECT_EQ(cfg.address, "1.2.3.4");
    EXPECT_EQ(cfg.startOutStatus, "1");
    EXPECT_EQ(cfg.startSampleTime, "");
    EXPECT_EQ(cfg.timeout, "900");
}

TEST_F(ConfigFileTest, ShortFileKeepsWhatWasRead) {
    put(kName, lines({"IPaddress,10.1.1.1", "StartOutStatus, 1"}));
    const ClientConfig cfg = load();
    EXPECT_EQ(p.messages(), QStringList{kInvalid});
    EXPECT_EQ(cfg.address, "10.1.1.1");
    EXPECT_EQ(cfg.startOutStatus, "1");
    EXPECT_EQ(cfg.setPointCheckBoxStart, "0");
    EXPECT_EQ(cfg.timeout, "5000");
    EXPECT_EQ(get(kName), lines({"IPaddress,10.1.1.1", "StartOutStatus, 1"})); // not rewritten
}

TEST_F(ConfigFileTest, WrongMarkerWarnsButKeepsValues) {
    QByteArray text = kGood;
    text.replace("OKA", "OK");
    put(kName, text);
    EXPECT_EQ(load().timeout, "7000");
    EXPECT_EQ(p.messages(), QStringList{kInvalid});
}

TEST_F(ConfigFileTest, XModeIsOneUnlessTwo) {
    const std::pair<const char*, const char*> cases[] = {
        {"7", "1"}, {"2", "2"}, {"2.0", "2"}, {"0", "1"}, {"abc", "1"}, {"1E999", "1"}, {"", "1"}};
    for (const auto& [read, expected] : cases) {
        QByteArray text = kGood;
        text.replace("Milisec:, 2", QByteArray("Milisec:, ") + read);
        put(kName, text);
        EXPECT_EQ(load().xMode, expected) << read;
    }
    EXPECT_TRUE(p.dialogs.empty());
}

TEST_F(ConfigFileTest, MissingFileGivesDefaultsQuietly) {
    ClientConfig cfg = load();
    EXPECT_EQ(cfg.address, kDefault);
    EXPECT_EQ(cfg.startOutStatus, "0");
    EXPECT_EQ(cfg.timeout, "5000");
    // A folder part, or a folder of that name, never counts as an existing file.
    QDir().mkdir("sub");
    put("sub/" + kName, kGood);
    EXPECT_EQ(load("sub/" + kName).address, kDefault);
    EXPECT_EQ(load(QDir::currentPath() + "/sub/" + kName).address, kDefault);
    QDir().mkdir(kName);
    EXPECT_EQ(load().address, kDefault);
    EXPECT_TRUE(p.dialogs.empty());
}

TEST_F(ConfigFileTest, NameComparedWithoutRegardToCase) {
    put("torv_net.CFG", kGood);
    EXPECT_EQ(load().address, "10.0.0.7:8080");
}

TEST_F(ConfigFileTest, AnyContentEndsInValuesOrTheMessage) {
    QByteArray binary;
    for (int i = 0; i < 4096; ++i)
        binary += char((i * 37) % 256);
    const QByteArray contents[] = {QByteArray(), binary, QByteArray(3 << 20, 'A'),
                                   QByteArray(3 << 20, '\n'), QByteArray(200000, ',')};
    for (const QByteArray& content : contents) {
        p.dialogs.clear();
        put(kName, content);
        const ClientConfig cfg = load();
        EXPECT_EQ(p.messages(), QStringList{kInvalid}) << content.size();
        EXPECT_TRUE(cfg.xMode == "1" || cfg.xMode == "2");
        EXPECT_LE(cfg.address.size(), 1 << 20);
    }
}

TEST_F(ConfigFileTest, EmptyTimeoutWritesNothingBehindTheBlank) {
    ClientConfig cfg;
    cfg.timeout.clear();
    Save_Config_File(p, kName, cfg);
    EXPECT_TRUE(get(kName).contains("\r\nStart_Sample_TimeOut, \r\nX-mode"));
    EXPECT_EQ(load().timeout, "");
}

TEST_F(ConfigFileTest, SaveFailureEndsTheProgramWithTheSystemMessage) {
    EXPECT_THROW(Save_Config_File(p, "missing/" + kName, ClientConfig{}), ProgramEnded);
    EXPECT_EQ(p.messages(), QStringList{"Run-time error '76': Path not found"});
    EXPECT_EQ(p.programEndings, 1);
}
