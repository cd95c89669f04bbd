#include "host/assessmentyears.h"

namespace corvane::host {

QString assessmentYearLabel(int year)
{
    return QStringLiteral("%1-%2").arg(year).arg((year + 1) % 100, 2, 10, QLatin1Char('0'));
}

int currentAssessmentYear(const QDate& today)
{
    return today.month() >= 4 ? today.year() + 1 : today.year();
}

QList<int> assessmentYears(int lastYear)
{
    QList<int> years;
    for (int y = kFirstAssessmentYear; y <= lastYear; ++y)
        years << y;
    return years;
}

} // namespace corvane::host
