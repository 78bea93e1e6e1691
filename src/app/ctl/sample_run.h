#pragma once

// `torvctl sample`: one fast-sampling session, run as the panel runs it (a status read for the
// integration and unit, StartSample, GetFastSampling until the card ends the session with
// error code 200 after StopSample), written to the same sample data file.

#include "files/sample_file.h"
#include "session.h"

#include <QElapsedTimer>
#include <QObject>

namespace torv::ctl {

struct SampleOptions {
    double seconds = 0;  // stop after this long (0: not by time)
    qint64 readings = 0; // stop once this many readings are in (0: not by count)
    QString path = QStringLiteral("All_data.txt");
};

class SampleRun : public QObject {
public:
    SampleRun(Session& session, SampleOptions options);
    void start();
    // First time: stop the session (the readings still on the card are fetched); second
    // time: save what came and end.
    void interrupt();

private:
    void onStatus(const client::Reply& reply, const client::StatusRecord& status);
    void onStarted(const client::Reply& reply);
    void fetch();
    void onBlock(const client::Reply& reply);
    void takeBlock(const QString& answer, Int32 value3);
    void requestStop();
    void progress(bool last);
    void end(int status); // saves when blocks were taken, then leaves the event loop

    Session& session_;
    SampleOptions options_;
    client::CardClient& card_;
    std::unique_ptr<SampleData> data_;
    TrailerInfo trailer_;
    QElapsedTimer clock_;     // from the StartSample request
    qint64 stopAskedMs_ = -1; // when StopSample went out
    bool stopRequested_ = false, stopEnabled_ = false, ended_ = false, interrupted_ = false;
    bool terminal_ = false, errorShown_ = false;
    qint64 lastReadingMs_ = 0; // when a block last brought readings
    Int32 position_ = 0, blockNumber_ = 0, blocksAnswered_ = 0, blocksAfterStop_ = 0;
    qint64 parsedReadings_ = 0, errorReadings_ = 0, abnormal_ = 0, lastProgressMs_ = -1000;
    int formFaults_ = 0, stopRefusals_ = 0;
};

} // namespace torv::ctl
