// The restoration of the backup benchmark's archive of the shared database
// (made here when missing) against the same work done by standard tools:
// unzip -q of the archive, then cp -r of its database folder into place.
//   bench_restore
#include "bench/backupsupport.h"
#include "bench/benchdata.h"
#include "bench/benchsupport.h"
#include "components/zip/zipcomponent.h"
#include "core/failure.h"
#include "core/modbase.h"
#include "core/progress.h"
#include "core/prompter.h"
#include "screens/backup/restorejob.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

using namespace corvane;

namespace {

// A MySQL directory holding an older copy of the database, and an application folder.
void prepareDestination(const QString& root, bool withOldCopy)
{
    QDir(root).removeRecursively();
    const QString database = root + QStringLiteral("/mysql/") + bench::kSharedDatabase;
    QDir().mkpath(root + QStringLiteral("/mysql/mysql"));
    QDir().mkpath(root + QStringLiteral("/app"));
    QDir().mkpath(root + QStringLiteral("/tmp"));
    QFile(root + QStringLiteral("/app/FBT")).open(QIODevice::WriteOnly);
    if (!withOldCopy)
        return;
    QDir().mkpath(database);
    for (const char* table : {"fbt_info", "fbt_addinfo", "bill_main"})
        for (const char* ext : {".MYD", ".MYI", ".frm"}) {
            QFile file(database + QLatin1Char('/') + QLatin1String(table) + QLatin1String(ext));
            file.open(QIODevice::WriteOnly);
            file.write(QByteArray(64 * 1024, 'x'));
        }
}

// The database folder inside the extracted archive.
QString extractedDatabase(const QString& extraction)
{
    QDirIterator it(extraction, {bench::kSharedDatabase}, QDir::Dirs, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        if (QFileInfo(path).dir().dirName() == QStringLiteral("SQLDATA"))
            return path;
    }
    throw Failure(1, QStringLiteral("bench"), QStringLiteral("no database folder in the extracted archive"));
}

void restore(const QString& archive, const QString& root)
{
    Modbase& m = modbase();
    m.AppPath = root + QStringLiteral("/app");
    m.vTmpPath = root + QStringLiteral("/tmp/");
    auto prompter = std::make_shared<ScriptedPrompter>();
    m.prompter = prompter;
    NullProgress progress;
    backup::RestoreJob job(nullptr, *prompter, progress);
    backup::RestoreJob::Choice choice;
    choice.archive = archive;
    choice.mysqlDirectory = root + QStringLiteral("/mysql");
    choice.dataDirectory = m.AppPath;
    const bool listed = job.proceed(choice);
    if (!listed || job.restore() != backup::RestoreJob::Outcome::Restored)
        throw Failure(1, QStringLiteral("bench"), QStringLiteral("the restoration failed: ") + prompter->texts().join(QLatin1Char(' ')));
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    return bench::guarded(QStringLiteral("bench_restore"), [] {
        registerZipComponent();
        QString archive;
        {
            bench::BenchServer server(bench::kSharedDatabase);
            archive = bench::sharedArchive(server);
        }
        // Read once so that both sides find the archive in the page cache.
        bench::run(QStringLiteral("cat"), {archive}, {}, QStringLiteral("/dev/null"));
        const QString ours = bench::workFolder() + QStringLiteral("/restore-ours");
        const QString tools = bench::workFolder() + QStringLiteral("/restore-tools");
        const auto [oursSeconds, toolsSeconds] = bench::alternate(
            bench::repetitions(), [&] { restore(archive, ours); },
            [&] {
                const QString extraction = tools + QStringLiteral("/extract");
                bench::run(QStringLiteral("unzip"), {QStringLiteral("-q"), archive, QStringLiteral("-d"), extraction});
                bench::run(QStringLiteral("cp"), {QStringLiteral("-r"), extractedDatabase(extraction),
                                                  tools + QStringLiteral("/mysql/") + bench::kSharedDatabase});
            },
            [&] { prepareDestination(ours, true); }, [&] { prepareDestination(tools, false); });
        QDir(ours).removeRecursively();
        QDir(tools).removeRecursively();
        bench::report(QStringLiteral("restore"),
                      QStringLiteral("restore of that archive (%1 MB)").arg(QFileInfo(archive).size() / 1048576),
                      oursSeconds, toolsSeconds, bench::peakMemoryMb(), QStringLiteral("ratio <= 1.0"));
    });
}
