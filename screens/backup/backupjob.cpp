#include "screens/backup/backupjob.h"

#include "components/zip/deflateahead.h"
#include "components/zip/ziplib.h"
#include "core/errorlog.h"
#include "core/failure.h"
#include "core/modbase.h"
#include "core/objectregistry.h"
#include "core/progress.h"
#include "core/prompter.h"
#include "core/resumenext.h"
#include "core/settings.h"
#include "db/connection.h"
#include "db/sqltext.h"
#include "screens/backup/archivelayout.h"
#include "screens/backup/destination.h"
#include "screens/backup/filecopy.h"
#include "screens/backup/tableexport.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace corvane::backup {

namespace {

const QString kForm = QStringLiteral("frmbackup");
const QString kCloseEverywhere = QStringLiteral("Close the Software on All the Machines and Retry !");

bool removeFolder(const QString& path)
{
    QDir dir(path);
    return !dir.exists() || dir.removeRecursively();
}

} // namespace

QString defaultDestination()
{
    const QString saved = GetSettingINI(QStringLiteral("Settings"), QStringLiteral("BKDir"), QString());
    if (!saved.isEmpty() && QFileInfo(saved).isDir())
        return saved;
    const QString desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
    if (!desktop.isEmpty() && QFileInfo(desktop).isDir())
        return desktop;
    return QDir::homePath();
}

QStringList pruneArchives(const QString& folder, int keep)
{
    QFileInfoList archives = QDir(folder).entryInfoList({QStringLiteral("FBT*.ZIP")}, QDir::Files, QDir::Time);
    QStringList removed;
    for (qsizetype i = keep; i < archives.size(); ++i)
        if (QFile::remove(archives.at(i).absoluteFilePath()))
            removed << archives.at(i).absoluteFilePath();
    return removed;
}

// The global read lock that keeps every table still while its files are
// copied and its rows exported; released on every path out.
class ReadLock {
public:
    explicit ReadLock(Connection& connection) : connection_(connection) {}
    ~ReadLock() { release(); }
    void acquire()
    {
        connection_.execute(QStringLiteral("FLUSH TABLES WITH READ LOCK"));
        held_ = true;
    }
    void release()
    {
        if (!held_)
            return;
        held_ = false;
        auto guard = silentGuard(kForm);
        guard([&] { connection_.execute(QStringLiteral("UNLOCK TABLES")); });
    }
    bool held() const { return held_; }

private:
    Connection& connection_;
    bool held_ = false;
};

BackupJob::BackupJob(Connection& connection, Prompter& prompter, Progress& progress)
    : connection_(connection), prompter_(prompter), progress_(progress)
{
}

BackupJob::~BackupJob() = default;

void BackupJob::deflateAhead(const QString& path)
{
    if (!ahead_) {
        // Without its scratch files the packing deflates everything itself;
        // a folder that refused them once refuses them for the rest of the run.
        if (aheadRefused_)
            return;
        auto guard = silentGuard(kForm);
        guard([&] { ahead_ = std::make_unique<zip::DeflateAhead>(QFileInfo(archivePath_).absolutePath()); });
        if (!ahead_) {
            aheadRefused_ = true;
            return;
        }
    }
    ahead_->add(path);
}

void BackupJob::inform(const QString& text)
{
    lastMessage_ = text;
    prompter_.inform(text, Prompter::Icon::Information);
}

bool BackupJob::checkDestination(const QString& destination)
{
    if (destination.isEmpty()) {
        inform(QStringLiteral("Please select a path."));
        return false;
    }
    if (!QFileInfo(destination).isDir()) {
        inform(QStringLiteral("Directory does not Exists."));
        return false;
    }
    switch (classifyPlace(destination)) {
    case PlaceKind::Network:
        inform(QStringLiteral("Backup can not be Stored Directly on Network Path."));
        return false;
    case PlaceKind::Removable:
        inform(QStringLiteral("Backup can not be Stored Directly on Removable Disk."));
        return false;
    case PlaceKind::Local:
        break;
    }
    SaveSettingINI(QStringLiteral("Settings"), QStringLiteral("BKDir"), destination);
    return true;
}

bool BackupJob::prepareNames(const QString& destination)
{
    const QString name = archiveBaseName(modbase().clock().date());
    archivePath_ = archiveFilePath(destination, name);
    auto abandon = [&](const QString& message) {
        if (!message.isEmpty())
            inform(message);
        archivePath_.clear();
        stagingPath_.clear();
        return false;
    };

    if (QFileInfo::exists(archivePath_)) {
        const auto answer = prompter_.ask(
            QStringLiteral("File [%1] already Exists. Do you want to delete it?").arg(archivePath_),
            Prompter::Buttons::YesNo, Prompter::Icon::Question, Prompter::Answer::No);
        if (answer != Prompter::Answer::Yes) {
            declined_ = true;
            return abandon(QString());
        }
        QFile::remove(archivePath_);
        if (QFileInfo::exists(archivePath_))
            return abandon(QStringLiteral("Could not Delete Existing File [%1].").arg(archivePath_));
    }

    const QString inDestination = QFileInfo(archivePath_).absolutePath() + QLatin1Char('/') + name;
    if (!QFileInfo::exists(inDestination) && QDir().mkdir(inDestination)) {
        stagingPath_ = inDestination;
        return true;
    }
    const QString inTemp = modbase().vTmpPath + name;
    if (QFileInfo::exists(inTemp) && !removeFolder(inTemp))
        return abandon(QStringLiteral("Could not Delete Existing Temporary Folder [%1].").arg(inTemp));
    if (!QDir().mkpath(inTemp))
        return abandon(QStringLiteral("Could not Create Temporary Folder (%1).").arg(inTemp));
    stagingPath_ = inTemp;
    return true;
}

BackupJob::Outcome BackupJob::run(const QString& destination)
{
    errorsOccurred_ = false;
    declined_ = false;
    aheadRefused_ = false;
    lastMessage_.clear();
    if (!checkDestination(destination) || !prepareNames(destination))
        return Outcome::Refused;
    if (started)
        started();
    loadTables();
    struct Release {
        std::unique_ptr<zip::DeflateAhead>& ahead;
        ~Release() { ahead.reset(); }
    } release{ahead_};
    if (!backUpData())
        return Outcome::Failed;
    return zipMe();
}

void BackupJob::loadTables()
{
    tables_.clear();
    ResumeNext guard(kForm, QStringLiteral("LOADTABLES"));
    guard([&] {
        for (const auto& row : connection_.query(QStringLiteral("SHOW Tables")).rows) {
            const QString table = row.value(0).toString();
            if (!isTemporaryMasterTable(table))
                tables_ << table;
        }
    });
}

void BackupJob::step(const std::function<void()>& statement)
{
    for (;;) {
        std::optional<Failure> caught;
        ResumeNext guard(kForm, QStringLiteral("BACKUPDATA"));
        const bool ok = guard([&] {
            try {
                statement();
            } catch (const Failure& f) {
                caught = f;
                throw;
            }
        });
        if (ok || !caught)
            return;
        const QString description = caught->description();
        if (description.contains(QLatin1String("Multiple")) && description.contains(QLatin1String("step"))) {
            errorsOccurred_ = true;
            return;
        }
        const auto answer = prompter_.ask(QStringLiteral("Error occured: ") + description,
                                          Prompter::Buttons::AbortRetryIgnore, Prompter::Icon::Critical,
                                          Prompter::Answer::Abort, QStringLiteral("BackUpData"));
        if (answer == Prompter::Answer::Retry)
            continue;
        if (answer == Prompter::Answer::Ignore)
            return;
        throw Abort{};
    }
}

void BackupJob::cleanUpAfterCopyFailure()
{
    // Its workers read the staging folder that goes now.
    ahead_.reset();
    if (lock_)
        lock_->release();
    removeFolder(stagingPath_);
    inform(kCloseEverywhere);
}

bool BackupJob::backUpData()
{
    ReadLock lock(connection_);
    lock_ = &lock;
    struct Forget {
        ReadLock*& lock;
        ~Forget() { lock = nullptr; }
    } forget{lock_};
    try {
        QString dataDirectory;
        step([&] {
            const auto vars = connection_.query(QStringLiteral("Show variables like 'datadir'"));
            if (!vars.rows.isEmpty())
                dataDirectory = vars.rows.first().value(1).toString();
        });
        if (dataDirectory.isEmpty()) {
            inform(QStringLiteral("MySql Directory Not Found."));
            cleanUpAfterCopyFailure();
            return false;
        }
        // The lock flushes the tables first, as the plain flush did.
        step([&] { lock.acquire(); });
        if (!copyDatabases(dataDirectory))
            return false;

        const QString app = modbase().AppPath;
        const QList<QPair<QString, QString>> documents{
            {app + QStringLiteral("/Data/BillNew.doc"), QStringLiteral("BillNew.doc")},
            {app + QStringLiteral("/Data/RecpNew.doc"), QStringLiteral("RecpNew.doc")},
            {app + QStringLiteral("/Confg.ini"), QStringLiteral("Confg.ini")}};
        for (const auto& [source, name] : documents)
            if (QFileInfo::exists(source))
                step([&] {
                    copyFileOver(source, stagingPath_ + QLatin1Char('/') + name);
                    deflateAhead(stagingPath_ + QLatin1Char('/') + name);
                });

        exportTables();
        lock.release();
        return true;
    } catch (const Abort&) {
        cleanUpAfterCopyFailure();
        return false;
    }
}

bool BackupJob::copyDatabases(const QString& dataDirectory)
{
    const QString defaultDatabase = connection_.databaseName();
    const QDir data(dataDirectory);
    const QStringList folders = data.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Unsorted);
    QStringList selected;
    for (const QString& f : folders)
        if (isBackedUpDatabase(f, defaultDatabase))
            selected << f;

    const QDir::Filters fileFilter = QDir::Files | QDir::Hidden | QDir::System;
    int total = 0;
    for (const QString& f : selected)
        total += int(QDir(data.filePath(f)).entryList(fileFilter).size());
    progress_.setRange(0, total);
    progress_.setValue(0);
    progress_.setText(QStringLiteral("Copying Databases"));

    const QString sqlData = stagingPath_ + QStringLiteral("/SQLDATA");
    step([&] {
        if (!QDir().mkpath(sqlData))
            throw Failure(75, kSource, QStringLiteral("Path/File access error: %1").arg(sqlData));
    });
    int done = 0;
    for (const QString& f : selected) {
        const QDir source(data.filePath(f));
        const QString target = sqlData + QLatin1Char('/') + f;
        QDir().mkpath(target);
        int skipped = 0;
        const QStringList files = source.entryList(fileFilter, QDir::Unsorted);
        for (const QString& file : files) {
            progress_.setValue(++done);
            if (isCancelled())
                throw Abort{};
            if (isTemporaryMasterFile(file)) {
                ++skipped;
                continue;
            }
            try {
                copyFileOver(source.filePath(file), target + QLatin1Char('/') + file);
                deflateAhead(target + QLatin1Char('/') + file);
            } catch (const Failure& failure) {
                ResumeNext guard(kForm, QStringLiteral("BACKUPDATA"));
                guard([&] { throw failure; });
                inform(QStringLiteral("Error Occured : %1\n\nwhile copying File [%2/%3].")
                           .arg(failure.description(), source.absolutePath(), file));
                cleanUpAfterCopyFailure();
                return false;
            }
        }
        const int copied = int(QDir(target).entryList(fileFilter).size());
        if (copied + skipped != int(files.size())) {
            inform(QStringLiteral("Folder [%1] could not Copied.").arg(source.absolutePath()));
            cleanUpAfterCopyFailure();
            return false;
        }
    }
    const QString ownCopy = sqlData + QLatin1Char('/') + defaultDatabase;
    if (!QFileInfo(ownCopy).isDir()) {
        inform(QStringLiteral("Failed to Copy [%1].").arg(ownCopy));
        cleanUpAfterCopyFailure();
        return false;
    }
    return true;
}

void BackupJob::exportTables()
{
    const QString folder = stagingPath_ + QStringLiteral("/Tables");
    progress_.setRange(0, int(tables_.size()));
    progress_.setValue(0);
    step([&] {
        if (!QDir().mkpath(folder))
            throw Failure(75, kSource, QStringLiteral("Path/File access error: %1").arg(folder));
    });
    for (int i = 0; i < tables_.size(); ++i) {
        if (isCancelled())
            throw Abort{};
        exportOne(tables_.at(i), i + 1);
        progress_.setValue(i + 1);
    }
}

void BackupJob::exportOne(const QString& table, int position)
{
    progress_.setText(QStringLiteral("Copying Table %1(%2 of %3)").arg(table).arg(position).arg(tables_.size()));
    const QString file = stagingPath_ + QStringLiteral("/Tables/") + table;
    try {
        exportTable(connection_, table, file);
        deflateAhead(file);
        return;
    } catch (const Failure&) {
        // A table that does not open is repaired once. Repairing writes, so
        // the read lock gives way for it and is taken again after.
    }
    const bool relock = lock_ && lock_->held();
    if (relock)
        lock_->release();
    step([&] { connection_.execute(QStringLiteral("Flush Tables")); });
    step([&] { connection_.execute(QStringLiteral("Repair Table %1 Extended").arg(sqlName(table))); });
    step([&] { connection_.execute(QStringLiteral("Flush Tables")); });
    if (relock)
        step([&] { lock_->acquire(); });
    step([&] {
        exportTable(connection_, table, file);
        deflateAhead(file);
    });
}

BackupJob::Outcome BackupJob::zipMe()
{
    progress_.setText(QStringLiteral("Compressing Backup....."));
    long result = -1;
    {
        std::shared_ptr<ZipLib> zip;
        ResumeNext guard(kForm, QStringLiteral("ZIPME"));
        guard([&] { zip = CreateObject<ZipLib>(kZipLibClass); });
        if (!zip)
            inform(QStringLiteral("Can't Create Object of ORV Zip Library."));
        else
            result = zip->ZipMyFolder(QStringLiteral("ZIPME"), logFilePath(), archivePath_, stagingPath_, &progress_,
                                      cancelled, ahead_.get());
    }

    Outcome outcome;
    if (result == 0 && QFileInfo::exists(archivePath_)) {
        progress_.setValue(1000);
        progress_.setText(QStringLiteral("Deleting Temporary Folder....."));
        if (!removeFolder(stagingPath_))
            removeFolder(stagingPath_);
        inform(QStringLiteral("Backup Completed."));
        outcome = Outcome::Completed;
    } else {
        QFile::remove(archivePath_);
        inform(QStringLiteral("Backup could not be Compressed in Zip File Format. You can Keep Folder [%1] as Backup.")
                   .arg(stagingPath_));
        outcome = Outcome::NotCompressed;
    }
    if (errorsOccurred_) {
        const QString outcomeText = lastMessage_;
        prompter_.inform(QStringLiteral("Some errors occured while backing up data. Backup file may be corrupted."),
                         Prompter::Icon::Exclamation);
        lastMessage_ = outcomeText;
    }
    return outcome;
}

} // namespace corvane::backup
