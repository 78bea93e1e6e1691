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
    QStringList calls;   // handler names in call order
    QStringList answers; // the answer each was given
    std::function<void(const QString&)> onAnswer;

    void DataArrival_FastSampling(const QString& a) override {
        record(QStringLiteral("FastSampling"), a);
    }
    void DataArrival_GetRTStatus(const QString& a) override {
        record(QStringLiteral("GetRTStatus"), a);
    }
    void DataArrival_SetOutput(const QString& a) override {
        record(QStringLiteral("SetOutput"), a);
    }
    void DataArrival_SetD2A(const QString& a) override { record(QStringLiteral("SetD2A"), a); }
    void DataArrival_GetSetpoints(const QString& a) override {
        record(QStringLiteral("GetSetpoints"), a);
    }
    void DataArrival_SetSetpoints(const QString& a) override {
        record(QStringLiteral("SetSetpoints"), a);
    }
    void DataArrival_StartSample(const QString& a) override {
        record(QStringLiteral("StartSample"), a);
    }
    void DataArrival_StopSample(const QString& a) override {
        record(QStringLiteral("StopSample"), a);
    }
    void DataArrival_SetIntegration(const QString& a) override {
        record(QStringLiteral("SetIntegration"), a);
    }

private:
    void record(const QString& name, const QString& answer) {
        calls << name;
        answers << answer;
        if (onAnswer) onAnswer(name);
    }
};

} // namespace torv::test
