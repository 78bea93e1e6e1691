#pragma once

#include <QString>

namespace torv {

class Platform;

// The panel's OK message: pads the text with one more space on each side per round until
// it is at least as wide as the reference label, then shows it.
QString padMessageWide(Platform& platform, const QString& text);
void ShowMessageWide(Platform& platform, const QString& text);

} // namespace torv
