#include "cli/command.h"

#include "db/clientdata.h"
#include "core/errorlog.h"

namespace corvane::cli {

namespace {

// The summary goes to standard error: the commands print nothing on standard output.
int report(Invocation& inv, const ClientDataResult& result, const QString& done)
{
    inv.err << done << ": " << result.rows << " row" << (result.rows == 1 ? "" : "s") << " in " << result.tables
            << " table" << (result.tables == 1 ? "" : "s") << " with code_no" << Qt::endl;
    if (result.failures == 0)
        return 0;
    inv.err << "corvane: " << result.failures << " statement" << (result.failures == 1 ? "" : "s")
            << " failed and were skipped (logged in " << logFilePath() << ")" << Qt::endl;
    return 1;
}

QString code(const Invocation& inv, int index, const QString& name)
{
    const QString value = inv.word(index, name);
    if (value.trimmed().isEmpty())
        throw UsageError(QStringLiteral("%1 is empty").arg(name).toStdString());
    return value;
}

int runClient(Invocation& inv)
{
    const QString action = inv.word(0, QStringLiteral("delete or rename"));
    if (action == QStringLiteral("delete")) {
        inv.expectWords(2, 2);
        const QString cd = code(inv, 1, QStringLiteral("CODE"));
        auto connection = inv.connect();
        return report(inv, DeleteClient(connection.get(), cd), QStringLiteral("client %1 deleted").arg(cd));
    }
    if (action == QStringLiteral("rename")) {
        inv.expectWords(3, 3);
        const QString oldCd = code(inv, 1, QStringLiteral("OLD"));
        const QString newCd = code(inv, 2, QStringLiteral("NEW"));
        auto connection = inv.connect();
        const ClientDataResult result = ChangeCode(connection.get(), oldCd, newCd);
        const int status = report(inv, result, QStringLiteral("client %1 renamed to %2").arg(oldCd, newCd));
        if (result.rows == 0 && oldCd != oldCd.toUpper())
            inv.err << "corvane: OLD is compared with the stored codes in capitals: give it in capitals ("
                    << oldCd.toUpper() << ")" << Qt::endl;
        return status;
    }
    throw UsageError(QStringLiteral("unknown action %1: use delete or rename").arg(action).toStdString());
}

const CommandRegistration registration({
    QStringLiteral("client"),
    QStringLiteral("delete a client, or change a client's code, in every table"),
    QStringLiteral("Usage: corvane [global options] client delete CODE\n"
                   "       corvane [global options] client rename OLD NEW\n"
                   "\n"
                   "Works on every table of the database that has a code_no column, including\n"
                   "tables added later, in the order the server lists them.\n"
                   "  delete   removes every row of client CODE; the details of its bills and\n"
                   "           receipts (bill_det, recp_det) go first\n"
                   "  rename   sets code_no to NEW where the stored code in capitals equals OLD\n"
                   "           exactly as given (so give OLD in capitals); NEW is not checked\n"
                   "           for being in use\n"
                   "\n"
                   "There is no transaction: a statement that fails is logged and skipped, the\n"
                   "work goes on, and the exit status is 1. A summary goes to standard error.\n"),
    {},
    {},
    runClient,
});

} // namespace
} // namespace corvane::cli
