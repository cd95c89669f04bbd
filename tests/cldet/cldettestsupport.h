#pragma once

#include "db/connection.h"
#include "db/sqltext.h"

#include <QStringList>

namespace corvane::test {

// A client with the columns the client details report reads; the others stay null.
struct DetailsClient {
    QString code, name, pan;
    QVariant status;
    QStringList address; // flat, building, street, area, city, pin, state
    QString std, tel, doi, busNat, email;
};

inline void insertClient(Connection& c, const DetailsClient& k)
{
    QStringList values{sqlQuote(k.code), sqlQuote(k.name), sqlQuote(k.pan), sqlLiteral(k.status)};
    for (int i = 0; i < 7; ++i)
        values << sqlQuote(k.address.value(i));
    values << sqlQuote(k.std) << sqlQuote(k.tel) << sqlQuote(k.doi) << sqlQuote(k.busNat) << sqlQuote(k.email);
    c.execute(QStringLiteral("insert into FBT_Info (Code_No, Name, PAN, ClStatus, Flat, Building, Street, Area, City, "
                             "Pin, State, STD, TelNo, DOI, BusNat, EMail) values (%1)")
                  .arg(values.join(QLatin1Char(','))));
}

inline void insertNature(Connection& c, int number, const QString& description)
{
    c.execute(QStringLiteral("insert into FBT_Nature values (%1, %2)").arg(number).arg(sqlQuote(description)));
}

// Natures whose numbers run against the order of their descriptions.
inline void seedNatures(Connection& c)
{
    insertNature(c, 1, QStringLiteral("Trading"));
    insertNature(c, 2, QStringLiteral("banking"));
    insertNature(c, 3, QStringLiteral("Agriculture"));
    insertNature(c, 10, QStringLiteral("Manufacturing"));
}

} // namespace corvane::test
