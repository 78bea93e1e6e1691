#pragma once

// A window and answer handlers that record what the transport does to them.

#include "link/dispatch.h"
#include "link/link_view.h"

#include <QString>
#include <QStringList>
#include <functional>

namespace torv::test {

class RecordingView : public LinkView {
public:
    QString host = QStringLiteral("10.0.0.5");
    QStringList statuses;    // every caption of lblCommStatusData, in order
    QStringList requests;    // function names passed to requestSent
    QStringList rawAnswers;  // texts shown in the raw-answer box
    int noAnswerReports = 0; // ServerNoAnswer calls
    std::function<void()> onServerNoAnswer;

    QString hostText() override { return host; }
    void setCommStatus(const QString& caption) override { statuses << caption; }
    void requestSent(const QString& functionName) override { requests << functionName; }
    void showRawAnswer(const QString& text) override { rawAnswers << text; }
    void ServerNoAnswer() override {
        ++noAnswerReports;
        if (onServerNoAnswer) onServerNoAnswer();
    }
};

class RecordingHandlers : public AnswerHandlers {
public:
    QStringList calls; // handler names in call order
    std::function<void(const QString&)> onAnswer;

    void DataArrival_FastSampling() override { record(QStringLiteral("FastSampling")); }
    void DataArrival_GetRTStatus() override { record(QStringLiteral("GetRTStatus")); }
    void DataArrival_SetOutput() override { record(QStringLiteral("SetOutput")); }
    void DataArrival_SetD2A() override { record(QStringLiteral("SetD2A")); }
    void DataArrival_GetSetpoints() override { record(QStringLiteral("GetSetpoints")); }
    void DataArrival_SetSetpoints() override { record(QStringLiteral("SetSetpoints")); }
    void DataArrival_StartSample() override { record(QStringLiteral("StartSample")); }
    void DataArrival_StopSample() override { record(QStringLiteral("StopSample")); }
    void DataArrival_SetIntegration() override { record(QStringLiteral("SetIntegration")); }

private:
    void record(const QString& name) {
        calls << name;
        if (onAnswer) onAnswer(name);
    }
};

} // namespace torv::test
