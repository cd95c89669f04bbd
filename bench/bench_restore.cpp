// Times the restoration of a generated backup archive against the same work
// done by standard tools in the same run: unzip -q of the archive, then cp -r
// of its database folder into place.
//   bench_restore [MB]     about MB of table files in the archive (default 200)
#include "components/zip/zipcomponent.h"
#include "core/modbase.h"
#include "core/progress.h"
#include "core/prompter.h"
#include "screens/backup/restorejob.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTextStream>

using namespace corvane;

namespace {

const QString kDatabase = QStringLiteral("fbtbench");
constexpr int kTables = 4;

// Rows of text much like a client table's data file: compressible, not trivially.
bool writeTableFile(const QString& path, qint64 bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    QRandomGenerator random(42);
    QByteArray block;
    qint64 written = 0;
    for (qint64 row = 1; written < bytes; ++row) {
        block += QStringLiteral("C%1|NAME OF CLIENT %2 %3|2008-04-%4|%5.25\n")
                     .arg(row % 5000)
                     .arg(row)
                     .arg(random.generate64(), 16, 16, QLatin1Char('0'))
                     .arg(row % 28 + 1, 2, 10, QLatin1Char('0'))
                     .arg(random.bounded(1000000))
                     .toLatin1();
        if (block.size() >= (1 << 20)) {
            if (file.write(block) != block.size())
                return false;
            written += block.size();
            block.clear();
        }
    }
    return file.write(block) == block.size();
}

bool run(const QString& program, const QStringList& args)
{
    QProcess p;
    p.start(program, args);
    if (!p.waitForFinished(-1) || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0) {
        QTextStream(stderr) << program << " failed: " << p.readAllStandardError() << Qt::endl;
        return false;
    }
    return true;
}

// A MySQL directory holding the old copy of the database, and an application folder.
void prepareDestination(const QString& mysql, const QString& app, qint64 bytes)
{
    QDir().mkpath(mysql + QStringLiteral("/mysql"));
    QDir().mkpath(mysql + QLatin1Char('/') + kDatabase);
    for (int t = 0; t < kTables; ++t)
        writeTableFile(QStringLiteral("%1/%2/old_%3.MYD").arg(mysql, kDatabase).arg(t), bytes / kTables / 4);
    QDir().mkpath(app);
    QFile program(app + QStringLiteral("/FBT"));
    program.open(QIODevice::WriteOnly);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    const int megabytes = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 200;
    if (megabytes <= 0) {
        QTextStream(stderr) << "usage: bench_restore [MB]" << Qt::endl;
        return 2;
    }
    QTemporaryDir dir;
    const qint64 bytes = qint64(megabytes) * 1024 * 1024;

    // The backup: table files, the exports, the settings, packed by our archiver.
    const QString staging = dir.filePath(QStringLiteral("FBTbench"));
    QDir().mkpath(staging + QStringLiteral("/SQLDATA/") + kDatabase);
    QDir().mkpath(staging + QStringLiteral("/Tables"));
    out << "generating about " << megabytes << " MB of table files" << Qt::endl;
    for (int t = 0; t < kTables; ++t)
        if (!writeTableFile(QStringLiteral("%1/SQLDATA/%2/bench_%3.MYD").arg(staging, kDatabase).arg(t), bytes / kTables)) {
            QTextStream(stderr) << "bench_restore: cannot write the table files" << Qt::endl;
            return 1;
        }
    writeTableFile(staging + QStringLiteral("/Tables/bench_0"), 1 << 20);
    writeTableFile(staging + QStringLiteral("/Confg.ini"), 1024);
    registerZipComponent();
    const QString archive = dir.filePath(QStringLiteral("FBTbench.ZIP"));
    {
        NullProgress progress;
        auto zip = CreateObject<ZipLib>(kZipLibClass);
        if (zip->ZipMyFolder(QStringLiteral("ZIPME"), QString(), archive, staging, &progress) != 0) {
            QTextStream(stderr) << "bench_restore: the archive could not be written" << Qt::endl;
            return 1;
        }
    }
    QDir(staging).removeRecursively();
    // Read once so that both runs find the archive in the page cache.
    run(QStringLiteral("cat"), {archive});

    // The standard tools.
    const QString toolsMysql = dir.filePath(QStringLiteral("tools/mysql"));
    prepareDestination(toolsMysql, dir.filePath(QStringLiteral("tools/app")), bytes);
    QDir(toolsMysql + QLatin1Char('/') + kDatabase).removeRecursively();
    const QString toolsOut = dir.filePath(QStringLiteral("tools/extract"));
    QElapsedTimer clock;
    clock.start();
    if (!run(QStringLiteral("unzip"), {QStringLiteral("-q"), archive, QStringLiteral("-d"), toolsOut})
        || !run(QStringLiteral("cp"), {QStringLiteral("-r"), toolsOut + QStringLiteral("/FBTbench/SQLDATA/") + kDatabase,
                                       toolsMysql + QLatin1Char('/') + kDatabase}))
        return 1;
    const double tools = double(clock.elapsed()) / 1000.0;

    // Ours: the old copy kept, the backup put in place, the extraction removed.
    const QString mysql = dir.filePath(QStringLiteral("ours/mysql"));
    const QString appPath = dir.filePath(QStringLiteral("ours/app"));
    prepareDestination(mysql, appPath, bytes);
    Modbase& m = modbase();
    m.AppPath = appPath;
    m.vTmpPath = dir.filePath(QStringLiteral("ours/tmp/"));
    QDir().mkpath(m.vTmpPath);
    auto prompter = std::make_shared<ScriptedPrompter>();
    m.prompter = prompter;
    NullProgress progress;
    backup::RestoreJob job(nullptr, *prompter, progress);
    backup::RestoreJob::Choice choice;
    choice.archive = archive;
    choice.mysqlDirectory = mysql;
    choice.dataDirectory = appPath;
    clock.restart();
    const bool listed = job.proceed(choice);
    const auto outcome = listed ? job.restore() : backup::RestoreJob::Outcome::Refused;
    const double ours = double(clock.elapsed()) / 1000.0;
    if (outcome != backup::RestoreJob::Outcome::Restored) {
        QTextStream(stderr) << "bench_restore: " << prompter->texts().join(QLatin1Char(' ')) << Qt::endl;
        return 1;
    }
    out << QStringLiteral("archive:               %1 MB\n").arg(double(QFileInfo(archive).size()) / 1048576.0, 0, 'f', 1)
        << QStringLiteral("unzip -q + cp -r:      %1 s\n").arg(tools, 0, 'f', 2)
        << QStringLiteral("restore:               %1 s\n").arg(ours, 0, 'f', 2)
        << QStringLiteral("ratio:                 %1 (restore / tools; at most 1.0 wanted)\n").arg(ours / tools, 0, 'f', 2)
        << Qt::flush;
    return 0;
}
