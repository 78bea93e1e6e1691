#pragma once

#include <QString>

namespace torv {

// The outstanding request. The function name stays set after its answer: a reconnect
// sends the same request again. The "Prev" pair holds the polling request while a one-off
// command runs, so its answer handler can restore it.
struct RequestState {
    QString strFunctionName, strParameters, strPrevFunctionName, strPrevParameters;
    bool blnRepeatRequest = false;
    QString strResponse; // the complete answer
};

} // namespace torv
