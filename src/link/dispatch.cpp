#include "dispatch.h"

#include "base/platform.h"
#include "catalogue.h"

namespace torv {

void dispatchAnswer(Platform& platform, const QString& functionName, AnswerHandlers& handlers) {
    if (functionName == fn::GetFastSampling)
        handlers.DataArrival_FastSampling();
    else if (functionName == fn::GetRTStatus)
        handlers.DataArrival_GetRTStatus();
    else if (functionName == fn::SetOutput)
        handlers.DataArrival_SetOutput();
    else if (functionName == fn::SetD2A)
        handlers.DataArrival_SetD2A();
    else if (functionName == fn::GetSetpoints)
        handlers.DataArrival_GetSetpoints();
    else if (functionName == fn::SetSetpoints)
        handlers.DataArrival_SetSetpoints();
    else if (functionName == fn::StartSample)
        handlers.DataArrival_StartSample();
    else if (functionName == fn::StopSample)
        handlers.DataArrival_StopSample();
    else if (functionName == fn::SetIntegration)
        handlers.DataArrival_SetIntegration();
    else
        platform.messageBox(QStringLiteral("Unknown Function ") + functionName);
}

} // namespace torv
