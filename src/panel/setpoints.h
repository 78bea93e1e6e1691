#pragma once

// The state of the set points: the card's maximum load that bounds them, what was last sent,
// whether the card's values have arrived, and the text of the box being edited.

#include "base/integers.h"

#include <QString>

namespace torv {

struct SetPoints {
    double MaximumLoad = 0;                // the card's <MAXIMUM_LOAD>
    BoundedArray<Int16, 0, 3> SpSendState; // per set point: its value was just sent
    bool SetpointsArrived = false;         // the card's set points have been read
    QString SetPointEditText;              // a set-point box's text when it got the focus
};

} // namespace torv
