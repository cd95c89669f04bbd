#pragma once

#include <QDate>
#include <QList>
#include <QString>

namespace corvane::host {

// The first assessment year of Fringe Benefit Tax.
constexpr int kFirstAssessmentYear = 2006;

// 2006 -> "2006-07", as the register shows it.
QString assessmentYearLabel(int year);

// The year of the assessment year in progress on a day: from April on the
// next calendar year (returns filed in 2008-09 belong to 2008).
int currentAssessmentYear(const QDate& today);

// kFirstAssessmentYear up to lastYear.
QList<int> assessmentYears(int lastYear);

} // namespace corvane::host
