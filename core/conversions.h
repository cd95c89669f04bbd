#pragma once

#include <QString>

namespace corvane {

// Amounts in words in the Indian numbering system; logged under CLSMAIN.
QString ConvertToWord(const QString& myNumber);
QString ConvertHundreds(const QString& h);
QString ConvertTens(const QString& t);
QString ConvertDigit(const QString& d);

// Whether the text has the form of a permanent account number.
bool ValidPan(const QString& pan);

// Normalises a typed date; yr is the caller's year variable and may be changed.
QString ConvertDate(const QString& dt, const QString& dtFrm, QString& yr);

// A folder picked through the installed chooser, empty on cancel.
QString GetDirPath();

} // namespace corvane
