#include "messages.h"

#include "platform.h"

namespace torv {

QString padMessageWide(Platform& platform, const QString& text) {
    const int reference = platform.messageReferenceWidth();
    QString padded = text;
    // A text that does not grow when padded (an empty font) must not loop for ever.
    for (int round = 0; round < 400 && platform.textWidth(padded) < reference; ++round)
        padded = QLatin1Char(' ') + padded + QLatin1Char(' ');
    return padded;
}

void ShowMessageWide(Platform& platform, const QString& text) {
    platform.messageBox(padMessageWide(platform, text));
}

} // namespace torv
