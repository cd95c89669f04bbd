// The check of every table of the shared generated database by the check and
// repair job against the same statements sent by the mariadb client.
//   bench_check
#include "bench/benchdata.h"
#include "bench/benchsupport.h"
#include "core/failure.h"
#include "core/progress.h"
#include "core/resumenext.h"
#include "db/connection.h"
#include "db/sqltext.h"
#include "screens/repair/checkrepairjob.h"

#include <QCoreApplication>
#include <QProcess>

using namespace corvane;

namespace {

// The same statements the job sends, through the mariadb client.
void client(const bench::BenchServer& server, const QStringList& tables)
{
    QString script;
    for (const QString& table : tables)
        script += QStringLiteral("Check Table ") + sqlName(table) + QStringLiteral(" Extended;\n");
    script += QStringLiteral("Flush Tables;\n");
    QProcess mariadb;
    mariadb.start(QStringLiteral("mariadb"), QStringList{QStringLiteral("--batch")} + server.clientArguments());
    mariadb.write(script.toUtf8());
    mariadb.closeWriteChannel();
    if (!mariadb.waitForFinished(-1) || mariadb.exitCode() != 0)
        throw Failure(1, QStringLiteral("bench"), QStringLiteral("mariadb failed: ") + QString::fromLocal8Bit(mariadb.readAllStandardError()));
    const QString output = QString::fromUtf8(mariadb.readAllStandardOutput());
    if (output.count(QStringLiteral("\tOK")) != tables.size())
        throw Failure(1, QStringLiteral("bench"), QStringLiteral("the client's check found problems:\n") + output);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    return bench::guarded(QStringLiteral("bench_check"), [] {
        bench::BenchServer server(bench::kSharedDatabase);
        auto connection = server.connect();
        bench::makeDatabase(*connection, bench::sharedDatabaseMegabytes(), bench::note);

        NullProgress quiet;
        CheckRepairJob job(connection.get(), quiet);
        ResumeNext guard(QStringLiteral("BENCH"), QStringLiteral("TABLES"));
        const QStringList tables = job.tables(guard);
        const auto [oursSeconds, clientSeconds] = bench::alternate(
            bench::repetitions(),
            [&] {
                const auto problems = job.check(tables);
                if (!problems.isEmpty())
                    throw Failure(1, QStringLiteral("bench"), QStringLiteral("the job found problems in ") + problems.first().table);
            },
            [&] { client(server, tables); });
        bench::report(QStringLiteral("check"),
                      QStringLiteral("check of %1 tables, %2 MB").arg(tables.size()).arg(bench::databaseBytes(*connection) / 1048576),
                      oursSeconds, clientSeconds, bench::peakMemoryMb(), QStringLiteral("ratio <= 1.1"));
    });
}
