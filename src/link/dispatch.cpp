#include "dispatch.h"

#include "base/platform.h"
#include "catalogue.h"

namespace torv {

void dispatchAnswer(Platform& platform, const QString& functionName, const QString& answer,
                    AnswerHandlers& handlers) {
    if (functionName == fn::GetFastSampling)
        handlers.DataArrival_FastSampling(answer);
    else if (functionName == fn::GetRTStatus)
        handlers.DataArrival_GetRTStatus(answer);
    else if (functionName == fn::SetOutput)
        handlers.DataArrival_SetOutput(answer);
    else if (functionName == fn::SetD2A)
        handlers.DataArrival_SetD2A(answer);
    else if (functionName == fn::GetSetpoints)
        handlers.DataArrival_GetSetpoints(answer);
    else if (functionName == fn::SetSetpoints)
        handlers.DataArrival_SetSetpoints(answer);
    else if (functionName == fn::StartSample)
        handlers.DataArrival_StartSample(answer);
    else if (functionName == fn::StopSample)
        handlers.DataArrival_StopSample(answer);
    else if (functionName == fn::SetIntegration)
        handlers.DataArrival_SetIntegration(answer);
    else
        platform.messageBox(QStringLiteral("Unknown Function ") + functionName);
}

} // namespace torv
