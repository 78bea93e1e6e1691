#pragma once

#include <QString>

namespace torv {

// The run-time's Format for the patterns the panel uses: "0.000", "0.0000", "0.00000",
// "###0.0" (fixed decimals, the locale's separator) and "@@@@@@" (text right-aligned in
// as many places as there are "@").
QString Format(double value, const QString& pattern);
QString Format(const QString& text, const QString& pattern);

} // namespace torv
