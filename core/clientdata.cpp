#include "core/clientdata.h"

#include "core/resumenext.h"
#include "db/connection.h"
#include "db/recordset.h"
#include "db/sqltext.h"

namespace corvane {

namespace {

Connection& require(Connection* connection)
{
    if (!connection)
        throw Failure(err::ObjectNotSet, kSource, QStringLiteral("Object variable or With block variable not set"));
    return *connection;
}

// Runs `work` on each table with a code_no column, each step under the guard.
template <typename Work>
void forEachClientTable(ResumeNext& guard, Connection* connection, const QStringList& tables, Work work)
{
    for (const QString& table : tables) {
        Recordset columns;
        bool hasCode = false;
        guard([&] { columns.open(QStringLiteral("Show columns from ") + sqlName(table), require(connection)); });
        guard([&] { hasCode = columns.find(QStringLiteral("field='code_no'")); });
        if (hasCode) {
            guard([&] { work(table); });
            guard([&] { require(connection).execute(QStringLiteral("Flush Tables")); });
        }
        columns.close();
    }
}

} // namespace

QStringList listTables(Connection& connection)
{
    QStringList tables;
    Recordset rs;
    rs.open(QStringLiteral("SHOW Tables"), connection);
    while (!rs.eof()) {
        tables << rs.text(0);
        rs.moveNext();
    }
    rs.close();
    return tables;
}

void DeleteClient(Connection* connection, const QString& cd)
{
    ResumeNext guard(QStringLiteral("CLSDATA"), QStringLiteral("DELETECLIENT"));
    QStringList tables;
    guard([&] { tables = listTables(require(connection)); });
    guard([&] {
        require(connection).execute(QStringLiteral("delete bill_det from bill_det, bill_main where bill_main.code_no=")
                                    + sqlQuote(cd) + QStringLiteral(" and bill_det.billid=bill_main.billid"));
    });
    guard([&] { require(connection).execute(QStringLiteral("flush tables")); });
    guard([&] {
        require(connection).execute(QStringLiteral("delete recp_det from recp_det, recp_main where recp_main.code_no=")
                                    + sqlQuote(cd) + QStringLiteral(" and recp_det.recpid=recp_main.recpid"));
    });
    guard([&] { require(connection).execute(QStringLiteral("flush tables")); });
    forEachClientTable(guard, connection, tables, [&](const QString& table) {
        require(connection).execute(QStringLiteral("delete from ") + sqlName(table) + QStringLiteral(" where code_no=") + sqlQuote(cd));
    });
}

void ChangeCode(Connection* connection, const QString& oldCd, const QString& newCd)
{
    ResumeNext guard(QStringLiteral("CLSDATA"), QStringLiteral("CHANGECODE"));
    QStringList tables;
    guard([&] { tables = listTables(require(connection)); });
    forEachClientTable(guard, connection, tables, [&](const QString& table) {
        require(connection).execute(QStringLiteral("Update ") + sqlName(table) + QStringLiteral(" set code_no=") + sqlQuote(newCd)
                                    + QStringLiteral(" where ucase(code_no)=binary ") + sqlQuote(oldCd));
    });
}

} // namespace corvane
