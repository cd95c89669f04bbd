#pragma once

#include <QString>
#include <optional>

namespace corvane {

// The run-time's text and number conversions that the conversions rely on,
// with the same results for odd input.

// The number at the start of the text: blanks, tabs and line feeds anywhere
// are ignored; an optional sign, digits, a point, digits and an exponent
// (E or D) are read up to the first character that does not fit; 0 when none.
double vbVal(const QString& text);

// Leading and trailing spaces removed (tabs stay).
QString vbTrim(const QString& text);

// A number as text: whole numbers without a point, others in the shortest form.
QString vbStr(double value);

// A text converted to a 16-bit integer, rounding half to even; nothing when
// the text is not a number or out of range.
std::optional<qint16> vbCInt(const QString& text);

} // namespace corvane
