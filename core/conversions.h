#pragma once

#include <QDate>
#include <QString>

namespace corvane {

// Amounts in words in the Indian numbering system (crore, lac, thousand,
// hundred; rupee and paisa); logged under CLSMAIN / CONVERTTOWORD. Groups
// from one hundred crore up have no place name: each such group is logged and
// dropped, the lower groups remain; failedGroups (when given) counts them.
QString ConvertToWord(const QString& myNumber, int* failedGroups = nullptr);
QString ConvertHundreds(const QString& h);
QString ConvertTens(const QString& t);
QString ConvertDigit(const QString& d);

// Whether the text has the form of a permanent account number (AAAAA9999A);
// the empty text and ten capital letters pass too.
bool ValidPan(const QString& pan);

// Normalises a typed date to dtFrm; empty text when it is no date. yr is the
// caller's year variable: it may be filled in and changed (see convertdate.cpp).
// Logged under CLSMAIN / CONVERTDATE.
QString ConvertDate(const QString& dt, const QString& dtFrm, QString& yr);

// The date test of ConvertDate: two or three groups of digits separated by
// "/" or "-", read day first (a missing year is the current one, a year of one
// or two digits falls in 1930-2029), blanks around allowed.
bool isDayFirstDate(const QString& text, int currentYear);

// The date of year, month and day where month and day may overflow into the
// following months and years (years 0-99 are 2000-2029 and 1930-1999).
// Throws Failure outside the years 100 to 9999.
QDate dateSerial(double year, double month, double day);

// A date in the host's format notation: d dd ddd dddd, m mm mmm mmmm
// (M alike), y (day of the year) yy yyyy, q, w, ww, h n s, "/" and literal text
// in quotes or after a backslash.
QString formatDate(const QDate& date, const QString& format);

// A folder picked through the installed chooser, titled with the first three
// characters of vTmpPath; empty on cancel. Silent on failure.
QString GetDirPath();

} // namespace corvane
