#pragma once

#include <QString>
#include <optional>

namespace corvane {

// Reading numbers out of typed text the way the screens always have, so that
// odd input (blanks, letters, signs, exponents) gives the same results.

// The number at the start of the text: blanks, tabs and line feeds anywhere
// are ignored; an optional sign, digits, a point, digits and an exponent
// (E or D) are read up to the first character that does not fit; 0 when none.
double valueOf(const QString& text);

// Leading and trailing spaces removed (tabs stay).
QString trimSpaces(const QString& text);

// A number as text: whole numbers without a point, others in the shortest form.
QString numberText(double value);

// A text converted to a 16-bit integer, rounding half to even; nothing when
// the text is not a number or out of range.
std::optional<qint16> toInt16(const QString& text);

} // namespace corvane
