#include "files/start_file.h"

#include "support/fake_platform.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

using namespace torv;
using torv::test::FakePlatform;
using torv::test::ProgramEnded;

namespace {

const QString kName = "Start.dat";
const QString kNotFound = "File not found.\rThe file will create with default parameters. Run "
                          "this application again, please.";
const QString kBadStructure = "Bad file structure. Last string not Orvel";
const QString kBadStatus = "Channel status must be 0 or 1 only\nThe file Start.dat is "
                           "destroyed!!!\nIt will be created automatically with default "
                           "parameteres";
const QString kPastEnd = "Input past end of file or Bad structure of the file: Start.dat";
const QString kClosedRead = "Error !!!52  Bad file name or number";

const QByteArray kDefault = "StartDataFile for Orvel\r\n"
                            "Card_Name:, QX, 1234568, VANT\r\n"
                            "1_channel_active_status, 0\r\n"
                            "2_channel_active_status, 0\r\n"
                            "3_channel_active_status, 0\r\n"
                            "4_channel_active_status, 0\r\n"
                            "TxtNumberOfPoints, 500 \r\n"
                            "txtSampling, 50\r\n"
                            "txtProcentMinMax, 10 \r\n"
                            "txtMinMaxMiss , 1\r\n"
                            "txtMnMxTime, 3\r\n"
                            "txtBandRadius, 3\r\n"
                            "txtRound, 3\r\n"
                            "txtTimeDivision, 6\r\n"
                            "OptValueType, 2\r\n"
                            "Orvel\r\n";

// Every value of the record on one line, to compare whole records at once.
QString summary(const GraphParameters& p) {
    QStringList v = {p.leftCardName, QString::number(p.cardNumber), p.rightCardName, "|"};
    for (auto status : p.channelStatus)
        v << QString::number(status);
    v << "|";
    for (double x : {double(p.numberOfPoints), double(p.sampling), double(p.percent),
                     double(p.minMaxMiss), double(p.minMaxTime), double(p.bandRadius),
                     double(p.round), double(p.timeDivision), double(p.valueType)})
        v << QString::number(x);
    return v.join(' ');
}
const QString kTail = "500 50 10 1 3 3 3 6 2"; // the default numbers
const QString kDefaultSummary = "QX 1234568 VANT | 0 0 0 0 | " + kTail;

// The default file with line `n` (1-based) replaced.
QByteArray withLine(int n, const QByteArray& text) {
    QList<QByteArray> lines = kDefault.split('\n');
    lines[n - 1] = text + '\r';
    return lines.join('\n');
}

class StartFileTest : public torv::test::InTempFolder {
protected:
    // Loads the file; true when the program went on, false when it ended.
    bool load() {
        try {
            LoadStartFile(p, kName, params);
        } catch (const ProgramEnded&) {
            return false;
        }
        return true;
    }
    FakePlatform p;
    GraphParameters params;
};

} // namespace

TEST_F(StartFileTest, MissingFileIsCreatedWithTheDefaultsAndRead) {
    ASSERT_TRUE(load());
    EXPECT_EQ(p.messages(), QStringList{kNotFound});
    EXPECT_EQ(get(kName), kDefault);
    EXPECT_EQ(summary(params), kDefaultSummary);
}

TEST_F(StartFileTest, DamagedFilesGiveTheirMessagesAndLeaveAValidFile) {
    QStringList channel3 = {kBadStatus};
    for (int i = 0; i < 10; ++i) // nine labelled lines and the marker read from the closed file
        channel3 << kClosedRead;
    channel3 << kBadStructure;

    const QByteArray cutAfter10 = kDefault.left(kDefault.indexOf("txtMnMxTime"));
    const QByteArray noMarker = kDefault.left(kDefault.lastIndexOf("Orvel\r\n"));
    const QByteArray wrongCase = QByteArray(kDefault).replace("\r\nOrvel", "\r\norvel");
    const QString overflow = "Error !!!6  Overflow", mismatch = "Error !!!13  Type mismatch";
    const QString kept = kDefaultSummary, channel1 = "QX 1234568 VANT | 0 1 0 0 | " + kTail,
                  points7 = "QX 1234568 VANT | 0 0 0 0 | 7" + kTail.mid(3);
    const struct {
        const char* name;
        QByteArray content;
        QStringList messages;
        bool goesOn;
        QString values; // what the load leaves, empty: the file is repaired, the defaults read
    } cases[] = {
        {"marker in the wrong case", wrongCase, {kBadStructure}, true, {}},
        {"status 2 on line 4", withLine(4, "2_channel_active_status, 2"), {kBadStatus}, true, {}},
        {"channel 1 active", withLine(4, "x, 1"), {}, true, channel1},
        {"status 2 on line 6", withLine(6, "4_channel_active_status, 2"), channel3, true, {}},
        {"cut off after line 10", cutAfter10, {kPastEnd}, false, {}},
        {"empty", QByteArray(), {kPastEnd}, false, {}},
        {"no marker line", noMarker, {kPastEnd}, false, {}},
        {"sampling beyond 16 bits", withLine(8, "txtSampling, 70000"), {overflow}, true, kept},
        {"a status below a byte", withLine(3, "s, -1"), {overflow}, true, kept},
        {"letters for points", withLine(7, "TxtNumberOfPoints, many"), {mismatch}, true, points7},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        put(kName, c.content);
        p.dialogs.clear();
        params = GraphParameters{};
        params.numberOfPoints = 7; // what an earlier read left: a repaired file replaces it
        const bool goesOn = load();
        EXPECT_EQ(p.messages(), c.messages);
        EXPECT_EQ(goesOn, c.goesOn);
        const bool repaired = c.values.isEmpty();
        if (repaired) {
            EXPECT_EQ(get(kName), kDefault);
            if (goesOn) {
                EXPECT_EQ(summary(params), kDefaultSummary);
            }
        } else {
            EXPECT_EQ(get(kName), c.content); // the file stays as it was
            // A value that failed keeps what was there before.
            EXPECT_EQ(summary(params), c.values);
        }
    }
}

TEST_F(StartFileTest, SavedFileHasItsOwnLayoutAndReadsBack) {
    // Card name, points, sampling, percent, miss, time, band, round, division, first type.
    StartEntries e{"AB",    "42", "TANK1", "1000", "20", "15",        "0",
                   "20000", "7",  "4",     "10",   true, {1, 0, 0, 1}};
    GraphParameters saved;
    SaveConfig(p, kName, e, saved);
    EXPECT_EQ(get(kName), "StartDataFile for Orvel\r\n"
                          "Card_name:, AB,  42 , TANK1\r\n"
                          "1_channel_active_status,  1 \r\n"
                          "2_channel_active_status,  0 \r\n"
                          "3_channel_active_status,  0 \r\n"
                          "4_channel_active_status,  1 \r\n"
                          "TxtNumberOfPoints,   1000 \r\n"
                          "txtSampling,  20 \r\n"
                          "txtProcentMinMax,   15 \r\n"
                          "txtMinMaxMiss , 0 \r\n"
                          "txtMnMxTime,  20000 \r\n"
                          "txtBandRadius,  7 \r\n"
                          "txtRound,  4 \r\n"
                          "txtTimeDivision,  10 \r\n"
                          "optValueType,  1 \r\n"
                          "Orvel\r\n");
    ASSERT_TRUE(load());
    EXPECT_TRUE(p.dialogs.empty());
    EXPECT_EQ(summary(params), "AB 42 TANK1 | 1 0 0 1 | 1000 20 15 0 20000 7 4 10 1");
    EXPECT_EQ(summary(params), summary(saved));

    // A fraction is written with the single's digits and "." as its decimal point.
    e.percent = "10.1";
    SaveConfig(p, kName, e, saved);
    EXPECT_TRUE(get(kName).contains("\r\ntxtProcentMinMax,   10.1 \r\n"));
    ASSERT_TRUE(load());
    EXPECT_EQ(params.percent, 10.1f);
}
