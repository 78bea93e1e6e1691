#pragma once

// The state of the analog output and the channel switch. Only analog_channel.cpp uses it.

#include <QString>

namespace torv {

struct AnalogChannel {
    QString LastD2AText;               // the box's text when it got the focus, or last sent
    bool channelReplyReceived = false; // the channel switch has its answer
};

} // namespace torv
