// The real torvctl program against the card simulator (torv-sim) and the misbehaving card
// (bad_card.py): request bytes, formats, exit statuses, logs, interrupts, sample files.

#include "files/config_file.h"
#include "files/sample_reader.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>
#include <memory>
#include <signal.h>

namespace {

struct Result {
    int status = -1;
    QString out, err;
    qint64 ms = 0;
};

// A server program on a free loopback port: torv-sim (which says its port) or bad_card.py
// (which is given one).
class Card {
public:
    explicit Card(QStringList simOptions = {}) {
        process_.start(QStringLiteral(TORV_SIM_PATH), QStringList{"--port", "0"} + simOptions);
        QElapsedTimer t;
        t.start();
        static const QRegularExpression listening("listening on 127\\.0\\.0\\.1:(\\d+)");
        process_.setReadChannel(QProcess::StandardError);
        while (port == 0 && t.elapsed() < 5000) {
            process_.waitForReadyRead(100);
            log_ += process_.readAllStandardError();
            const auto m = listening.match(QString::fromLocal8Bit(log_));
            if (m.hasMatch()) port = m.captured(1).toUShort();
        }
    }
    static std::unique_ptr<Card> bad(const QString& mode) {
        auto card = std::make_unique<Card>(nullptr);
        card->port = freePort();
        card->process_.start(QStringLiteral("python3"),
                             {QStringLiteral(BAD_CARD_PATH), mode, "--port",
                              QString::number(card->port), "--seconds", "60"});
        for (int i = 0; i < 100; ++i) { // until it listens
            QTcpSocket probe;
            probe.connectToHost(QStringLiteral("127.0.0.1"), card->port);
            if (probe.waitForConnected(100)) break;
            QThread::msleep(50);
        }
        return card;
    }
    explicit Card(std::nullptr_t) {}
    ~Card() {
        process_.kill();
        process_.waitForFinished(2000);
    }
    QString address() const { return QStringLiteral("127.0.0.1:%1").arg(port); }
    // The simulator's log: one line per request, "FUNCTION [Content-Length] BODY -> ...".
    QString log() {
        QCoreApplication::processEvents();
        log_ += process_.readAllStandardError();
        return QString::fromLocal8Bit(log_);
    }
    void kill() { process_.kill(); }
    quint16 port = 0;

private:
    static quint16 freePort() {
        QTcpServer s;
        s.listen(QHostAddress::LocalHost, 0);
        return s.serverPort();
    }
    QProcess process_;
    QByteArray log_;
};

Result torvctl(const QStringList& args, const QString& folder = QDir::tempPath()) {
    QProcess p;
    p.setWorkingDirectory(folder);
    QElapsedTimer t;
    t.start();
    p.start(QStringLiteral(TORVCTL_PATH), args);
    p.waitForFinished(30000);
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1,
            QString::fromUtf8(p.readAllStandardOutput()),
            QString::fromUtf8(p.readAllStandardError()), t.elapsed()};
}

class Torvctl : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(sim.port, 0);
        ASSERT_TRUE(folder.isValid());
    }
    QStringList at(const QStringList& args) { return QStringList{"-a", sim.address()} + args; }
    Card sim{{"--integration", "1"}};
    QTemporaryDir folder;
};

TEST_F(Torvctl, EveryCommandSendsThePanelsRequests) {
    struct Case {
        QStringList args;
        QStringList requests; // in the simulator's log, in this order
    } cases[] = {
        {{"status"}, {"GetRTStatus [4] ID=4"}},
        {{"outputs", "--word", "65535"}, {"SetOutput [18] ID=4&OUT_STATUS=-1"}},
        {{"outputs", "on", "1", "off", "2"},
         {"GetRTStatus [4] ID=4", "SetOutput [18] ID=4&OUT_STATUS=-2"}}, // from 65535
        {{"setpoints"}, {"GetSetpoints [4] ID=1"}},
        {{"setpoints", "100", "-1", "2.5", "-1"},
         {"GetRTStatus [4]",
          "SetSetpoints [62] ID=1&SETPOINT_1=100&SETPOINT_2=-1&SETPOINT_3=2.5&SETPOINT_4=-1",
          "GetSetpoints [4] ID=1"}},
        {{"d2a", "0x80"}, {"SetD2A [12] ID=1&D2A=128"}},
        {{"integration", "16"}, {"SetIntegration [19] ID=1&INTEGRATION=16"}},
        {{"channel", "2"}, {"ch2_switch [4] ID=4"}},
        {{"channel", "1"}, {"ch1_switch [4] ID=4"}},
        {{"sample", "--readings", "20", "-o", folder.filePath("s.txt")},
         {"GetRTStatus [4] ID=4", "StartSample [0] ->", "GetFastSampling [4] ID=4",
          "StopSample [0] ->", "GetFastSampling [4] ID=4 -> 200"}},
    };
    for (const Case& c : cases) {
        const qsizetype from = sim.log().size();
        const Result r = torvctl(at(c.args));
        EXPECT_EQ(r.status, 0) << c.args.join(' ').toStdString() << r.err.toStdString();
        const QString log = sim.log().mid(from);
        qsizetype pos = 0;
        for (const QString& request : c.requests) {
            const qsizetype found = log.indexOf(request, pos);
            EXPECT_GE(found, 0) << c.args.join(' ').toStdString() << ": no "
                                << request.toStdString() << " in\n"
                                << log.toStdString();
            if (found >= 0) pos = found;
        }
    }
}

TEST_F(Torvctl, EveryFormatCarriesEveryField) {
    const Result csv = torvctl(at({"status", "--format", "csv"}));
    const QStringList lines = csv.out.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 2) << csv.out.toStdString();
    EXPECT_EQ(lines[0], "time,card,weight,unit,a2d,outputs,inputs,integration,max_load,"
                        "setpoint_status,error_code");
    EXPECT_TRUE(QRegularExpression("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z," +
                                   QRegularExpression::escape(sim.address()) +
                                   ",12\\.345,kg,\\d+,16383,\\d+,1,3000,0,0$")
                    .match(lines[1])
                    .hasMatch())
        << lines[1].toStdString();

    const Result jsonl = torvctl(at({"status", "--format", "jsonl"}));
    const QJsonObject o = QJsonDocument::fromJson(jsonl.out.toUtf8()).object();
    EXPECT_EQ(o.keys().size(), 11);
    EXPECT_EQ(o["weight"].toDouble(), 12.345);
    EXPECT_EQ(o["outputs"].toInt(), 16383);
    EXPECT_EQ(o["max_load"].toDouble(), 3000);
    EXPECT_EQ(o["unit"].toString(), "kg");
    EXPECT_EQ(o["error_code"].toString(), "0");
    EXPECT_EQ(o["card"].toString(), sim.address());

    const Result influx = torvctl(at({"status", "--format", "influx"}));
    EXPECT_TRUE(QRegularExpression("^torv,card=127\\.0\\.0\\.1:\\d+ weight=12\\.345,unit=\"kg\","
                                   "a2d=\\d+i,outputs=16383i,inputs=\\d+i,integration=1i,"
                                   "max_load=3000,setpoint_status=0i,error_code=\"0\" \\d{19}\n$")
                    .match(influx.out)
                    .hasMatch())
        << influx.out.toStdString();

    const Result plain = torvctl(at({"status"}));
    EXPECT_TRUE(plain.out.contains(QRegularExpression(sim.address() + " +12\\.345 kg ")))
        << plain.out.toStdString();
}

TEST_F(Torvctl, ExitStatusNamesWhatHappened) {
    auto silent = Card::bad("silent");
    auto garbage = Card::bad("garbage");
    Card refusing(nullptr);
    refusing.port = [] {
        QTcpServer s;
        s.listen(QHostAddress::LocalHost, 0);
        return s.serverPort();
    }();
    Card cardError({"--fault", "error-code", "--error-code", "7"});
    struct Case {
        QStringList args;
        int status;
        const char* words; // on standard error
    } cases[] = {
        {{"-a", refusing.address(), "status"}, 3, "refused"},
        {{"-a", silent->address(), "--timeout", "500", "status"}, 3, "silent"},
        {{"-a", garbage->address(), "status"}, 4, "malformed"},
        {{"-a", cardError.address(), "d2a", "5"}, 1, "card error 7"},
        {{"-a", sim.address(), "-a", refusing.address(), "status"}, 3, "refused"},
        {{"-a", sim.address(), "d2a", "256"}, 2, "0..255"},
        {{"-a", sim.address(), "integration", "10"}, 2, "2 4 8 12 16 32 64 128 256"},
        {{"-a", sim.address(), "outputs", "on", "15"}, 2, "1..14"},
        {{"-a", sim.address(), "setpoints", "1", "x", "3", "4"}, 2, "set point 2"},
        {{"-a", sim.address(), "status", "--format", "xml"}, 2, "plain, csv, jsonl or influx"},
        {{"-a", "host:99999", "status"}, 2, "host:99999"},
        {{"-a", sim.address(), "sample"}, 2, "--seconds S or --readings N"},
        {{"frobnicate"}, 2, "unknown command"},
        {{"status"}, 2, "no card address"},
    };
    const qsizetype before = sim.log().size();
    for (const Case& c : cases) {
        const Result r = torvctl(c.args, folder.path());
        const std::string what = c.args.join(' ').toStdString() + ": " + r.err.toStdString();
        EXPECT_EQ(r.status, c.status) << what;
        EXPECT_TRUE(r.err.contains(c.words)) << what;
        EXPECT_LT(r.ms, 1500) << what;
    }
    // Bad usage sends nothing: the simulator saw only the one good status read.
    EXPECT_EQ(sim.log().mid(before).count(" -> "), 1) << sim.log().mid(before).toStdString();
}

TEST(TorvctlHelp, EveryCommandHasItsHelpWithoutACard) {
    for (const char* command :
         {"status", "outputs", "setpoints", "d2a", "integration", "channel", "sample"}) {
        const Result r = torvctl({command, "--help"});
        EXPECT_EQ(r.status, 0) << command;
        EXPECT_TRUE(r.out.startsWith(QStringLiteral("Usage: torvctl ")) &&
                    r.out.contains(QLatin1String(command)))
            << r.out.toStdString();
    }
}

TEST_F(Torvctl, TheAddressComesFromTheConfigurationFile) {
    torv::ClientConfig config;
    config.address = sim.address();
    QFile file(folder.filePath("TORV_NET.cfg"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(torv::configFileText(config));
    file.close();
    const Result r = torvctl({"status", "--format", "csv"}, folder.path());
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.contains(sim.address() + ",12.345"));
}

TEST_F(Torvctl, ALogIsAppendedAcrossRunsWithOneHeader) {
    const QString log = folder.filePath("log.csv");
    for (int run = 0; run < 2; ++run)
        ASSERT_EQ(
            torvctl(at({"status", "--format", "csv", "--count", "2", "--interval", "0", "-o", log}))
                .status,
            0);
    QFile f(log);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    const QStringList lines = QString::fromUtf8(f.readAll()).split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 5);
    EXPECT_TRUE(lines[0].startsWith("time,card"));
    EXPECT_EQ(lines.filter("time,card").size(), 1);
}

TEST_F(Torvctl, InterruptEndsARunWithTheClosingLines) {
    for (int sig : {SIGINT, SIGTERM}) {
        QProcess p;
        p.start(QStringLiteral(TORVCTL_PATH),
                at({"status", "--count", "0", "--interval", "20", "--format", "csv"}));
        ASSERT_TRUE(p.waitForStarted());
        ASSERT_TRUE(p.waitForReadyRead(5000));
        QThread::msleep(200);
        ::kill(static_cast<pid_t>(p.processId()), sig);
        ASSERT_TRUE(p.waitForFinished(5000));
        EXPECT_EQ(p.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(p.exitCode(), 0);
        const QString err = QString::fromUtf8(p.readAllStandardError());
        const auto m = QRegularExpression("(\\d+) requests, (\\d+) answers, 0 failures, 0\\.0% "
                                          "loss, answer time min/median/max = [\\d.]+/[\\d.]+/")
                           .match(err);
        ASSERT_TRUE(m.hasMatch()) << err.toStdString();
        const int rows = QString::fromUtf8(p.readAllStandardOutput()).count('\n') - 1;
        EXPECT_EQ(m.captured(2).toInt(), rows);
        EXPECT_GE(rows, 3);
    }
}

TEST_F(Torvctl, ASampleFileReadsBack) {
    const QString path = folder.filePath("All_data.txt");
    const Result r = torvctl(at({"sample", "--readings", "300", "-o", path}));
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    torv::SampleFileContent content;
    torv::SampleFileError error;
    ASSERT_TRUE(torv::readSampleFile(path, content, error)) << error.text().toStdString();
    ASSERT_GE(content.value.size(), 300u);
    for (std::size_t k = 0; k < content.index.size(); ++k) {
        EXPECT_EQ(content.index[k], qint64(k));
        EXPECT_EQ(content.value[k], 12.345);
    }
    EXPECT_EQ(content.trailer.samples.toLongLong() + 1, qint64(content.value.size()));
    EXPECT_EQ(content.trailer.integration, "1");
    EXPECT_EQ(content.trailer.unitsCaption, "kg");
    EXPECT_EQ(content.blocks.back().value[4] + 1, qint64(content.value.size()));
    EXPECT_TRUE(r.out.contains(QStringLiteral("%1 readings in %2 blocks")
                                   .arg(content.value.size())
                                   .arg(content.blocks.size())))
        << r.out.toStdString();
}

} // namespace
