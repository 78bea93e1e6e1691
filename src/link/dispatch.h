#pragma once

#include <QString>

namespace torv {

class Platform;

// The answer handlers, one per function that has one. The panel implements them; each
// reads the answer from the request state and usually ends by issuing the next request.
class AnswerHandlers {
public:
    virtual ~AnswerHandlers() = default;
    virtual void DataArrival_FastSampling() = 0;
    virtual void DataArrival_GetRTStatus() = 0;
    virtual void DataArrival_SetOutput() = 0;
    virtual void DataArrival_SetD2A() = 0;
    virtual void DataArrival_GetSetpoints() = 0;
    virtual void DataArrival_SetSetpoints() = 0;
    virtual void DataArrival_StartSample() = 0;
    virtual void DataArrival_StopSample() = 0;
    virtual void DataArrival_SetIntegration() = 0;
};

// Routes a complete answer by function name (exact, case-sensitive). Any other name,
// the channel switches included, only shows "Unknown Function " + name; their answers are
// read by the stop-sampling handler instead.
void dispatchAnswer(Platform& platform, const QString& functionName, AnswerHandlers& handlers);

} // namespace torv
