#include "db/clientdata.h"

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

int affected(int rows)
{
    return qMax(0, rows); // -1 when the driver cannot tell
}

// Runs `work` (returning the rows it touched) on each table with a code_no
// column, each step under the guard.
template <typename Work>
void forEachClientTable(ResumeNext& guard, Connection* connection, const QStringList& tables, ClientDataResult& result,
                        Work work)
{
    for (const QString& table : tables) {
        Recordset columns;
        bool hasCode = false;
        // A table whose columns cannot be listed is logged once and skipped.
        guard([&] {
            columns.open(QStringLiteral("Show columns from ") + sqlName(table), require(connection));
            hasCode = columns.find(QStringLiteral("field='code_no'"));
        });
        if (hasCode) {
            ++result.tables;
            guard([&] { result.rows += work(table); });
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

ClientDataResult DeleteClient(Connection* connection, const QString& cd)
{
    ResumeNext guard(QStringLiteral("CLSDATA"), QStringLiteral("DELETECLIENT"));
    ClientDataResult result;
    QStringList tables;
    guard([&] { tables = listTables(require(connection)); });
    // The detail rows carry no code_no: they are reached through their bills
    // and receipts, so they go before the main rows do.
    guard([&] {
        result.rows += affected(require(connection).execute(
            QStringLiteral("delete bill_det from bill_det, bill_main where bill_main.code_no=") + sqlQuote(cd)
            + QStringLiteral(" and bill_det.billid=bill_main.billid")));
    });
    guard([&] { require(connection).execute(QStringLiteral("flush tables")); });
    guard([&] {
        result.rows += affected(require(connection).execute(
            QStringLiteral("delete recp_det from recp_det, recp_main where recp_main.code_no=") + sqlQuote(cd)
            + QStringLiteral(" and recp_det.recpid=recp_main.recpid")));
    });
    guard([&] { require(connection).execute(QStringLiteral("flush tables")); });
    forEachClientTable(guard, connection, tables, result, [&](const QString& table) {
        return affected(require(connection).execute(QStringLiteral("delete from ") + sqlName(table)
                                                    + QStringLiteral(" where code_no=") + sqlQuote(cd)));
    });
    result.failures = guard.failures();
    return result;
}

ClientDataResult ChangeCode(Connection* connection, const QString& oldCd, const QString& newCd)
{
    ResumeNext guard(QStringLiteral("CLSDATA"), QStringLiteral("CHANGECODE"));
    ClientDataResult result;
    QStringList tables;
    guard([&] { tables = listTables(require(connection)); });
    // "binary": the upper-cased code must equal oldCd as given, also on a
    // case-insensitive collation.
    forEachClientTable(guard, connection, tables, result, [&](const QString& table) {
        return affected(require(connection).execute(QStringLiteral("Update ") + sqlName(table) + QStringLiteral(" set code_no=")
                                                    + sqlQuote(newCd) + QStringLiteral(" where ucase(code_no)=binary ")
                                                    + sqlQuote(oldCd)));
    });
    result.failures = guard.failures();
    return result;
}

} // namespace corvane
