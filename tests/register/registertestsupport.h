#pragma once

#include "core/modbase.h"
#include "core/prompter.h"
#include "db/connection.h"
#include "db/sqltext.h"
#include "screens/register/filingsave.h"
#include "support/prompts.h"
#include "support/testdatabase.h"

#include <QStringList>
#include <memory>

namespace corvane::test {

// A client of FBT_Info with code, name, PAN and status (null when status is empty).
inline void insertClient(Connection& c, const QString& code, const QString& name, const QString& pan = QString(),
                         const QString& status = QStringLiteral("0"))
{
    c.execute(QStringLiteral("insert into FBT_Info (Code_No, Name, PAN, ClStatus) values (%1, %2, %3, %4)")
                  .arg(sqlQuote(code), sqlQuote(name), sqlQuote(pan), status.isEmpty() ? QStringLiteral("null") : status));
}

// The client's FBT_AddInfo row of a year, written as the register writes a new one, then its interest date.
inline void insertFiling(Connection& c, const QString& code, int year, const QString& date, const QString& number,
                         const QString& intDt = QString())
{
    c.execute(filing::insertStatement(code, year, date, number));
    c.execute(QStringLiteral("update FBT_AddInfo set IntDt=%1 where Code_No=%2 and TYear=%3")
                  .arg(sqlQuote(intDt), sqlQuote(code))
                  .arg(year));
}

// A column of the client's FBT_AddInfo row of a year.
inline QString stored(const TestDatabase& db, const QString& code, const QString& column, int year = 2008)
{
    return db.scalar(QStringLiteral("select %1 from FBT_AddInfo where Code_No=%2 and TYear=%3").arg(column, sqlQuote(code)).arg(year));
}

} // namespace corvane::test
