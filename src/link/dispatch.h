#pragma once

#include <QString>

namespace torv {

class Platform;

// The answer handlers, one per function that has one. The panel implements them; each is
// given the complete answer and usually ends by issuing the next request.
class AnswerHandlers {
public:
    virtual ~AnswerHandlers() = default;
    virtual void DataArrival_FastSampling(const QString& answer) = 0;
    virtual void DataArrival_GetRTStatus(const QString& answer) = 0;
    virtual void DataArrival_SetOutput(const QString& answer) = 0;
    virtual void DataArrival_SetD2A(const QString& answer) = 0;
    virtual void DataArrival_GetSetpoints(const QString& answer) = 0;
    virtual void DataArrival_SetSetpoints(const QString& answer) = 0;
    virtual void DataArrival_StartSample(const QString& answer) = 0;
    virtual void DataArrival_StopSample(const QString& answer) = 0;
    virtual void DataArrival_SetIntegration(const QString& answer) = 0;
};

// Routes a complete answer by function name (exact, case-sensitive). Any other name,
// the channel switches included, only shows "Unknown Function " + name; their answers are
// read by the stop-sampling handler instead.
void dispatchAnswer(Platform& platform, const QString& functionName, const QString& answer,
                    AnswerHandlers& handlers);

} // namespace torv
