// Times a backup of a generated MyISAM database against the same work done by
// standard tools one after another in the same run: cp -r of the database
// folder, a mariadb --batch export of every table, zip -qr -6 of the result.
//   bench_backup [MB]                          a private server in a temporary folder (default 50 MB)
//   CORVANE_BENCH_SOCKET=PATH bench_backup [MB]   a running server (user root)
#include "components/zip/zipcomponent.h"
#include "core/modbase.h"
#include "core/progress.h"
#include "core/prompter.h"
#include "db/connection.h"
#include "db/privateserver.h"
#include "db/sqltext.h"
#include "screens/backup/backupjob.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>
#include <sys/resource.h>

using namespace corvane;

namespace {

const QString kDatabase = QStringLiteral("fbtbench");
constexpr int kTables = 4;

// About `megabytes` of rows spread over a few tables of the kinds the host has.
void generate(Connection& c, int megabytes, QTextStream& out)
{
    // A row of these tables takes about 200 bytes in the data file.
    const qint64 rowsPerTable = qint64(megabytes) * 1024 * 1024 / 200 / kTables;
    for (int t = 0; t < kTables; ++t) {
        const QString table = sqlName(QStringLiteral("bench_%1").arg(t));
        c.execute(QStringLiteral("DROP TABLE IF EXISTS %1").arg(table));
        c.execute(QStringLiteral("CREATE TABLE %1 (id int PRIMARY KEY, code_no varchar(20), name varchar(100),"
                                 " dt date, stamp datetime, amount double, note varchar(60)) ENGINE=MyISAM")
                      .arg(table));
        for (qint64 done = 0; done < rowsPerTable;) {
            const qint64 n = std::min<qint64>(500000, rowsPerTable - done);
            c.execute(QStringLiteral("INSERT INTO %1 SELECT seq, CONCAT('C', seq MOD 5000), CONCAT('NAME OF CLIENT ', seq, "
                                     "' ', MD5(seq)), DATE('2008-04-01') + INTERVAL (seq MOD 365) DAY, "
                                     "TIMESTAMP('2008-04-01 10:00:00') + INTERVAL seq SECOND, seq * 1.25, "
                                     "IF(seq MOD 7 = 0, NULL, CONCAT('note ', SHA1(seq))) FROM seq_%2_to_%3")
                          .arg(table)
                          .arg(done + 1)
                          .arg(done + n));
            done += n;
        }
        out << "  " << table << ": " << rowsPerTable << " rows" << Qt::endl;
    }
    c.execute(QStringLiteral("FLUSH TABLES"));
}

bool run(const QString& program, const QStringList& args, const QString& outputFile = QString())
{
    QProcess p;
    if (!outputFile.isEmpty())
        p.setStandardOutputFile(outputFile);
    p.start(program, args);
    if (!p.waitForFinished(-1) || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0) {
        QTextStream(stderr) << program << " failed: " << p.readAllStandardError() << Qt::endl;
        return false;
    }
    return true;
}

// The same work with the standard tools, one after another.
double standardTools(const QString& dataDir, const QString& socket, const QString& work, QString& steps)
{
    const QString staging = work + QStringLiteral("/tools/FBTstaging");
    QDir().mkpath(staging + QStringLiteral("/SQLDATA"));
    QDir().mkpath(staging + QStringLiteral("/Tables"));
    QElapsedTimer clock;
    clock.start();
    if (!run(QStringLiteral("cp"), {QStringLiteral("-r"), dataDir + QLatin1Char('/') + kDatabase, staging + QStringLiteral("/SQLDATA/")}))
        return -1;
    const qint64 copied = clock.elapsed();
    for (int t = 0; t < kTables; ++t) {
        const QString table = QStringLiteral("bench_%1").arg(t);
        if (!run(QStringLiteral("mariadb"),
                 {QStringLiteral("--batch"), QStringLiteral("-S"), socket, QStringLiteral("-u"), QStringLiteral("root"), kDatabase,
                  QStringLiteral("-e"), QStringLiteral("SELECT * FROM ") + table},
                 staging + QStringLiteral("/Tables/") + table))
            return -1;
    }
    const qint64 exported = clock.elapsed();
    QProcess zip;
    zip.setWorkingDirectory(work + QStringLiteral("/tools"));
    zip.start(QStringLiteral("zip"), {QStringLiteral("-qr"), QStringLiteral("-6"), QStringLiteral("tools.zip"), QStringLiteral("FBTstaging")});
    if (!zip.waitForFinished(-1) || zip.exitCode() != 0)
        return -1;
    const qint64 zipped = clock.elapsed();
    steps = QStringLiteral("  cp -r                 : %1 s\n  mariadb --batch       : %2 s\n  zip -qr -6            : %3 s\n")
                .arg(double(copied) / 1000.0, 0, 'f', 2)
                .arg(double(exported - copied) / 1000.0, 0, 'f', 2)
                .arg(double(zipped - exported) / 1000.0, 0, 'f', 2);
    return double(zipped) / 1000.0;
}

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
    QString report(qint64 total) const
    {
        QString out;
        for (int i = 0; i < phases_.size(); ++i) {
            const qint64 end = i + 1 < phases_.size() ? phases_.at(i + 1).second : total;
            out += QStringLiteral("  %1: %2 s\n").arg(phases_.at(i).first, -22).arg(double(end - phases_.at(i).second) / 1000.0, 0, 'f', 2);
        }
        return out;
    }

private:
    QElapsedTimer clock_;
    QList<QPair<QString, qint64>> phases_;
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    const int megabytes = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 50;
    if (megabytes <= 0) {
        QTextStream(stderr) << "usage: bench_backup [MB]" << Qt::endl;
        return 2;
    }

    QTemporaryDir dir;
    ConnectionSettings settings;
    settings.privateServer = false;
    settings.user = QStringLiteral("root");
    settings.database = kDatabase;
    settings.socket = qEnvironmentVariable("CORVANE_BENCH_SOCKET");
    std::unique_ptr<PrivateServer> server;
    if (settings.socket.isEmpty()) {
        server = std::make_unique<PrivateServer>(dir.filePath(QStringLiteral("app")));
        server->start([&](const QString& text) { out << text << Qt::endl; });
        settings.socket = server->socketPath();
    }

    int status = 0;
    try {
        auto connection = std::make_shared<Connection>();
        connection->open(settings, true);
        out << "generating about " << megabytes << " MB of MyISAM rows" << Qt::endl;
        generate(*connection, megabytes, out);
        QString dataDir = connection->query(QStringLiteral("SELECT @@datadir")).rows.first().first().toString();
        if (dataDir.endsWith(QLatin1Char('/')))
            dataDir.chop(1);

        QString toolSteps;
        const double tools = standardTools(dataDir, settings.socket, dir.path(), toolSteps);
        if (tools < 0)
            throw std::runtime_error("the standard tools failed");

        registerZipComponent();
        Modbase& m = modbase();
        m.AppPath = dir.filePath(QStringLiteral("app"));
        QDir().mkpath(m.AppPath);
        m.vTmpPath = dir.path() + QLatin1Char('/');
        m.CnnObj = connection;
        auto prompter = std::make_shared<ScriptedPrompter>();
        m.prompter = prompter;
        const QString dest = dir.filePath(QStringLiteral("ours"));
        QDir().mkpath(dest);
        PhaseProgress progress;
        backup::BackupJob job(*connection, *prompter, progress);
        QElapsedTimer clock;
        clock.start();
        const auto outcome = job.run(dest);
        const double ours = double(clock.elapsed()) / 1000.0;
        if (outcome != backup::BackupJob::Outcome::Completed)
            throw std::runtime_error(prompter->texts().join(QLatin1Char(' ')).toStdString());

        struct rusage usage {};
        getrusage(RUSAGE_SELF, &usage);
        const qint64 ourZip = QFileInfo(job.archivePath()).size();
        const qint64 toolsZip = QFileInfo(dir.path() + QStringLiteral("/tools/tools.zip")).size();
        out << QStringLiteral("standard tools: %1 s (archive %2 MB)\n").arg(tools, 0, 'f', 2).arg(double(toolsZip) / 1048576.0, 0, 'f', 1)
            << toolSteps
            << QStringLiteral("backup:         %1 s (archive %2 MB)\n").arg(ours, 0, 'f', 2).arg(double(ourZip) / 1048576.0, 0, 'f', 1)
            << progress.report(qint64(ours * 1000.0))
            << QStringLiteral("ratio:          %1 (backup / tools; at most 1.0 wanted)\n").arg(ours / tools, 0, 'f', 2)
            << QStringLiteral("peak memory:    %1 MB (this process; under 200 MB wanted)\n").arg(double(usage.ru_maxrss) / 1024.0, 0, 'f', 1)
            << Qt::flush;
    } catch (const std::exception& e) {
        QTextStream(stderr) << "bench_backup: " << e.what() << Qt::endl;
        status = 1;
    }
    modbase().CnnObj.reset();
    if (server)
        server->stop();
    return status;
}
