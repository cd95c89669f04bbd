#include "screens/bank/clientcaption.h"

#include "core/modbase.h"
#include "core/resumenext.h"
#include "db/recordset.h"
#include "db/sqltext.h"
#include "db/contextconnection.h"

namespace corvane {

QString assessmentYearText(int year)
{
    return QStringLiteral("%1-%2").arg(year).arg((year + 1) % 100, 2, 10, QLatin1Char('0'));
}

QString clientCaption(const QString& caption)
{
    const Modbase& m = modbase();
    QString name;
    // Only a caption: a failing read leaves the name out and is not logged.
    auto guard = silentGuard();
    guard([&] {
        Recordset rs;
        rs.open(QStringLiteral("select Name from FBT_Info where code_no=") + sqlQuote(m.Code), contextConnection());
        if (!rs.eof())
            name = rs.text(0).trimmed();
    });
    QString client = m.Code;
    if (!name.isEmpty())
        client += QLatin1Char(' ') + name;
    return caption + QStringLiteral(" \u2014 ") + client + QStringLiteral(" \u2014 ") + assessmentYearText(m.TYear);
}

} // namespace corvane
