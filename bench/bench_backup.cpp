// The backup of the shared generated database (1 GB; 100 MB in a quick run)
// against the same work done by standard tools one after another: cp -r of
// every database folder the backup takes (the register rows' databases are
// on the same server), a mariadb --batch export of every table, zip -qr -6.
// Its last archive stays for the restoration benchmark.
//   bench_backup
#include "bench/backupsupport.h"
#include "bench/benchdata.h"
#include "bench/benchsupport.h"
#include "core/progress.h"
#include "db/connection.h"
#include "db/sqltext.h"
#include "screens/backup/archivelayout.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QList>
#include <QPair>

#include <memory>

using namespace corvane;

namespace {

// Notes when each phase of the backup starts.
class PhaseProgress : public Progress {
public:
    PhaseProgress() { clock_.start(); }
    void setRange(int, int) override {}
    void setValue(int) override {}
    void setText(const QString& text) override
    {
        const QString phase = text.section(QLatin1Char(' '), 0, 1);
        if (phases_.isEmpty() || phases_.last().first != phase)
            phases_.append({phase, clock_.elapsed()});
    }
    void stop() { end_ = clock_.elapsed(); }
    QString summary() const
    {
        QStringList parts;
        for (int i = 0; i < phases_.size(); ++i) {
            const qint64 end = i + 1 < phases_.size() ? phases_.at(i + 1).second : end_;
            parts << QStringLiteral("%1 %2 s").arg(phases_.at(i).first).arg(double(end - phases_.at(i).second) / 1000.0, 0, 'f', 2);
        }
        return parts.join(QStringLiteral(", "));
    }

private:
    QElapsedTimer clock_;
    QList<QPair<QString, qint64>> phases_;
    qint64 end_ = 0;
};

// The same work with the standard tools, one after another.
void standardTools(const bench::BenchServer& server, const QString& dataDir, const QStringList& tables, const QString& work)
{
    const QString staging = work + QStringLiteral("/FBTstaging");
    QDir().mkpath(staging + QStringLiteral("/SQLDATA"));
    QDir().mkpath(staging + QStringLiteral("/Tables"));
    QStringList copy{QStringLiteral("-r")};
    for (const QString& folder : QDir(dataDir).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        if (backup::isBackedUpDatabase(folder, bench::kSharedDatabase))
            copy << dataDir + QLatin1Char('/') + folder;
    bench::run(QStringLiteral("cp"), copy << staging + QStringLiteral("/SQLDATA/"));
    for (const QString& table : tables)
        bench::run(QStringLiteral("mariadb"),
                   QStringList{QStringLiteral("--batch")} + server.clientArguments()
                       + QStringList{QStringLiteral("-e"), QStringLiteral("SELECT * FROM ") + sqlName(table)},
                   {}, staging + QStringLiteral("/Tables/") + table);
    bench::run(QStringLiteral("zip"), {QStringLiteral("-qr"), QStringLiteral("-6"), QStringLiteral("tools.zip"), QStringLiteral("FBTstaging")},
               work);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    return bench::guarded(QStringLiteral("bench_backup"), [] {
        bench::BenchServer server(bench::kSharedDatabase);
        auto connection = server.connect();
        const int megabytes = bench::sharedDatabaseMegabytes();
        bench::note(QStringLiteral("the %1 MB database").arg(megabytes));
        bench::makeDatabase(*connection, megabytes, bench::note);
        const QString dataDir = server.dataDirectory();
        QStringList tables;
        for (const auto& row : connection->query(QStringLiteral("SHOW TABLES")).rows)
            tables << row.value(0).toString();
        bench::prepareBackupContext(connection);

        const QString ours = bench::sharedArchiveFolder();
        const QString tools = bench::workFolder() + QStringLiteral("/tools-backup");
        std::unique_ptr<PhaseProgress> progress;
        QString archive;
        const auto [oursSeconds, toolsSeconds] = bench::alternate(
            bench::largeRepetitions(),
            [&] {
                progress = std::make_unique<PhaseProgress>();
                archive = bench::backUp(*connection, ours, *progress);
                progress->stop();
            },
            [&] { standardTools(server, dataDir, tables, tools); },
            [&] { QDir(ours).removeRecursively(); }, [&] { QDir(tools).removeRecursively(); });
        bench::note(QStringLiteral("  ours, last run: ") + progress->summary());
        bench::note(QStringLiteral("  archives: ours %1 MB, tools %2 MB")
                        .arg(double(QFileInfo(archive).size()) / 1048576.0, 0, 'f', 1)
                        .arg(double(QFileInfo(tools + QStringLiteral("/tools.zip")).size()) / 1048576.0, 0, 'f', 1));
        QDir(tools).removeRecursively();
        bench::report(QStringLiteral("backup"),
                      QStringLiteral("backup of a %1 MB generated database").arg(bench::databaseBytes(*connection) / 1048576),
                      oursSeconds, toolsSeconds, bench::peakMemoryMb(), QStringLiteral("ratio <= 1.0"));
    });
}
