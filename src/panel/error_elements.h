#pragma once

// The message-status labels every answer shares: its error code and description.

#include "base/colors.h"

#include <QString>

namespace torv {

class Platform;

// "<ERROR_CODE>" found: both fore colours red (255) unless the value is exactly "0" (then
// black), codeText = the value. "<ERROR_DESCRIPTION>" found: descrText = the value. A
// missing element leaves its outputs as they were. Returns whether "<ERROR_CODE>" was found.
bool showErrorElements(Platform& platform, const QString& answer, QString& codeText,
                       color::Color& codeFore, QString& descrText, color::Color& descrFore);

} // namespace torv
