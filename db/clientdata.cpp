#include "db/clientdata.h"

#include "core/resumenext.h"
#include "db/connection.h"
#include "db/recordset.h"
#include "db/schema.h"
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

// Rows of exactly this code: the stored code in capitals equals cd byte for
// byte, not as the case- and accent-insensitive collation compares (which
// takes "Ä001" and "A001 " for A001 and every emoji for every other).
QString sameCode(const QString& column, const QString& cd)
{
    return QStringLiteral("ucase(") + column + QStringLiteral(")=binary ") + sqlQuote(cd);
}

// Why newCd cannot be stored in every code_no column, or empty text.
QString tooLong(Connection& connection, const QString& newCd)
{
    Recordset columns;
    columns.open(QStringLiteral("select table_name, character_maximum_length from information_schema.columns "
                                "where table_schema=database() and column_name='code_no' "
                                "and character_maximum_length is not null order by 2, 1"),
                 connection);
    QString problem;
    const qsizetype length = schema::storedLength(newCd);
    if (!columns.eof() && length > columns.field(1).toLongLong())
        problem = QStringLiteral("The new client code %1 has %2 characters; code_no of %3 holds at most %4")
                      .arg(newCd)
                      .arg(length)
                      .arg(columns.text(0), columns.text(1));
    columns.close();
    return problem;
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
            QStringLiteral("delete bill_det from bill_det, bill_main where ") + sameCode(QStringLiteral("bill_main.code_no"), cd)
            + QStringLiteral(" and bill_det.billid=bill_main.billid")));
    });
    guard([&] { require(connection).execute(QStringLiteral("flush tables")); });
    guard([&] {
        result.rows += affected(require(connection).execute(
            QStringLiteral("delete recp_det from recp_det, recp_main where ") + sameCode(QStringLiteral("recp_main.code_no"), cd)
            + QStringLiteral(" and recp_det.recpid=recp_main.recpid")));
    });
    guard([&] { require(connection).execute(QStringLiteral("flush tables")); });
    forEachClientTable(guard, connection, tables, result, [&](const QString& table) {
        return affected(require(connection).execute(QStringLiteral("delete from ") + sqlName(table) + QStringLiteral(" where ")
                                                    + sameCode(QStringLiteral("code_no"), cd)));
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
    // A code that some table would cut is refused before any table changes.
    if (!tables.isEmpty()) {
        guard([&] {
            result.refusal = tooLong(require(connection), newCd);
            if (!result.refusal.isEmpty())
                throw Failure(err::InvalidCall, kSource, result.refusal);
        });
    }
    if (!result.refusal.isEmpty()) {
        result.failures = guard.failures();
        return result;
    }
    forEachClientTable(guard, connection, tables, result, [&](const QString& table) {
        return affected(require(connection).execute(QStringLiteral("Update ") + sqlName(table) + QStringLiteral(" set code_no=")
                                                    + sqlQuote(newCd) + QStringLiteral(" where ")
                                                    + sameCode(QStringLiteral("code_no"), oldCd)));
    });
    result.failures = guard.failures();
    return result;
}

} // namespace corvane
