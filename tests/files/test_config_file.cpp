#include "files/config_file.h"

#include "support/fake_platform.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

using namespace torv;
using torv::test::FakePlatform;
using torv::test::ProgramEnded;

namespace {

const QString kName = "TORV_NET.cfg";
const QString kDefault = "192.168.1.100";
const QString kInvalid = "Ivalid structure of the file TORV_NET.cfg";

const QByteArray kGood =
    "IPaddress,10.0.0.7:8080\r\nStartOutStatus, 1\r\nSetPointCheckBoxStart, 1\r\n"
    "Start_Sample_Time, 0:00:10 x\r\nStart_Sample_TimeOut, 7000\r\n"
    "X-mode:Samplings_or_Milisec:, 2\r\nOKA\r\n";

class ConfigFileTest : public torv::test::InTempFolder {
protected:
    ClientConfig load(const QString& path = kName) {
        ClientConfig cfg;
        cfg.address = "designer";
        Load_Config_File(p, path, cfg, kDefault);
        return cfg;
    }
    // The values read: address, start-up outputs, set-point box, sample time, time-out, X-mode.
    static QString values(const ClientConfig& c) {
        return QStringList{c.address,         c.startOutStatus, c.setPointCheckBoxStart,
                           c.startSampleTime, c.timeout,        c.xMode}
            .join('|');
    }
    FakePlatform p;
};

} // namespace

TEST_F(ConfigFileTest, SavedFileReadsBackValueByValue) {
    put(kName, kGood);
    const ClientConfig cfg = load();
    EXPECT_TRUE(p.dialogs.empty());
    EXPECT_EQ(values(cfg), "10.0.0.7:8080|1|1|0:00:10 x|7000|2");
    Save_Config_File(p, kName, cfg);
    EXPECT_EQ(get(kName), kGood); // the start-sample time goes back as it was read

    // Labels and the marker's case do not matter.
    put(kName, "IPadres,1.2.3.4\r\nStart, 1\r\nx, 0\r\ny,\r\nz, 900\r\nw, 1\r\noka\r\n");
    EXPECT_EQ(values(load()), "1.2.3.4|1|0||900|1");
    EXPECT_TRUE(p.dialogs.empty());

    // An empty time-out writes nothing behind the blank.
    ClientConfig empty;
    empty.timeout.clear();
    Save_Config_File(p, kName, empty);
    EXPECT_TRUE(get(kName).contains("\r\nStart_Sample_TimeOut, \r\nX-mode"));
    EXPECT_EQ(load().timeout, "");
}

TEST_F(ConfigFileTest, SaveFailureEndsTheProgramWithTheSystemMessage) {
    EXPECT_THROW(Save_Config_File(p, "missing/" + kName, ClientConfig{}), ProgramEnded);
    EXPECT_EQ(p.messages(), QStringList{"Run-time error '76': Path not found"});
    EXPECT_EQ(p.errorEndings, 1);
}

TEST_F(ConfigFileTest, BytesThatAreNotUtf8SurviveASave) {
    const QByteArray odd = "IPaddress,10.0.0.7\r\nStartOutStatus, 1\r\nSetPointCheckBoxStart, 0\r\n"
                           "Start_Sample_Time, 10:00 caf\xe9 \xff\r\nStart_Sample_TimeOut, 7000\r\n"
                           "X-mode:Samplings_or_Milisec:, 2\r\nOKA\r\n";
    put(kName, odd);
    Save_Config_File(p, kName, load());
    EXPECT_EQ(get(kName), odd);
    EXPECT_TRUE(p.dialogs.empty());
}
