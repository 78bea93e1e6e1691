#pragma once

// Numeric text as the panel reads it: the run-time's numeric test, the locale-tolerant
// IsNumber, the prefix parser Val, StrToDbl and the plain decimal text of a number.

#include <QChar>
#include <QString>

namespace torv {

class Platform;

// The decimal separator of the user's locale: the second character of the text of 1.5.
QChar decimalSeparator();
void setDecimalSeparator(QChar sep);
// Takes the separator from the text the locale gives the number 1.5 ("1.5" or "1,5").
void setDecimalSeparatorFromSample(const QString& textOfOnePointFive);

// The run-time's numeric test: trimmed text of an optional sign, digits with at most one
// `sep` decimal separator, an optional exponent (E or D), or the hexadecimal "&H" form.
// Empty text is not numeric.
bool isNumeric(const QString& text, QChar sep);
bool isNumeric(const QString& text);
// The value of numeric text (false when not numeric; also false when it does not fit a double).
bool numericValue(const QString& text, QChar sep, double& value);

// A reading of the card is a number when it is numeric written with "." or with the locale's
// separator; its value then.
bool isReadingNumber(const QString& text);
bool readingValue(const QString& text, double& value);

// True when `text` is numeric in the user's locale after whichever of "." and "," is not
// the locale's separator has been replaced by "?".
bool IsNumber(const QString& text);
bool IsNumber(const QString& text, QChar sep);

// The numeric prefix of the text: leading blanks skipped, "." is always the decimal point,
// "&H" hexadecimal accepted; text without a numeric prefix is 0. Too large raises error 6.
double Val(const QString& text);

// The panel's text-to-number conversion (see the module notes in numeric.cpp).
// With a separator other than "." a text that is not numeric asks
// "Not Number. Yes - continue. ": No ends the program, Yes returns 0.
double StrToDbl(Platform& platform, const QString& text);
double StrToDbl(Platform& platform, const QString& text, QChar sep);

// The plain decimal text of a number as the run-time writes it (CStr / Str without the
// leading blank): up to 15 significant digits, locale separator, "1E+15" for large values.
QString numberText(double value);
QString numberText(double value, QChar sep);

} // namespace torv
