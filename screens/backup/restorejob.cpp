#include "screens/backup/restorejob.h"

#include "components/zip/ziplib.h"
#include "core/errorlog.h"
#include "core/failure.h"
#include "core/freespace.h"
#include "core/modbase.h"
#include "core/objectregistry.h"
#include "core/progress.h"
#include "core/prompter.h"
#include "core/resumenext.h"
#include "db/connection.h"
#include "db/privateserver.h"
#include "screens/backup/restorecandidates.h"
#include "screens/backup/restorecheck.h"
#include "screens/backup/restoresteps.h"

#include <QDir>
#include <QDirIterator>
#include <QMap>
#include <QFileInfo>
#include <QLocale>

#include <sys/stat.h>

namespace corvane::backup {

namespace {

const QString kForm = QStringLiteral("frmrestoration");
const QString kRestoreProc = QStringLiteral("CMDRESTORE_CLICK");
const QString kRestored = QStringLiteral("Restored.");
const QString kAborted = QStringLiteral("Aborted by User.");

struct StepText {
    const char* leadIn;
    const char* ignored;
};

// Indexed by RestoreJob::Step.
const StepText kSteps[] = {
    {"Error While Backing Up Existing Folder [ ", "Backing Up Folder Error Ignored by User."},
    {"Error While Deleting Existing Folder [ ", "Deleting Folder Error Ignored by User."},
    {"Error While Restoring Folder [ ", "Restroing Folder Error Ignored by User."},
    {"Error While Backing Up Existing File [ ", "Backing Up File Error Ignored by User."},
    {"Error While Deleting Existing File [ ", "Deleting File Error Ignored by User."},
    {"Error While Restoring File [ ", "Restroing File Error Ignored by User."},
};

bool isThere(const QString& path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

// The subfolders in name order, without the server's own and the test database.
QStringList databaseFolders(const QString& folder)
{
    QStringList out;
    for (const QString& f : QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name)) {
        const QString upper = f.toUpper();
        if (upper != QLatin1String("MYSQL") && upper != QLatin1String("TEST"))
            out << f;
    }
    return out;
}

// The subfolder of that name in any case, empty when there is none.
QString subfolder(const QString& folder, const QString& name)
{
    for (const QString& f : QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name))
        if (f.compare(name, Qt::CaseInsensitive) == 0)
            return QDir(folder).filePath(f);
    return QString();
}

// Bytes of a file, or of every file below a folder.
qint64 sizeOf(const QString& path)
{
    const QFileInfo info(path);
    if (!info.isDir() || info.isSymLink())
        return info.size();
    qint64 total = 0;
    QDirIterator it(path, QDir::Files | QDir::Hidden | QDir::System | QDir::NoSymLinks, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        total += it.fileInfo().size();
    }
    return total;
}

// The device of path, or of its nearest folder that exists.
dev_t deviceOf(const QString& path)
{
    struct stat st{};
    return ::stat(QFile::encodeName(nearestExisting(path)).constData(), &st) == 0 ? st.st_dev : 0;
}

// Why the items would not fit where they go, or empty text. A source moved
// within its own disk needs no room; every other is copied.
QString spaceProblem(const QList<RestoreItem>& items, bool mayMove)
{
    QMap<dev_t, QPair<QString, qint64>> needed;
    for (const RestoreItem& item : items) {
        const dev_t target = deviceOf(item.destination);
        if (mayMove && target == deviceOf(item.source))
            continue;
        auto& entry = needed[target];
        if (entry.first.isEmpty())
            entry.first = QFileInfo(item.destination).absolutePath();
        entry.second += sizeOf(item.source);
    }
    try {
        for (const auto& [folder, bytes] : needed)
            requireFreeSpace(folder, bytes, QStringLiteral("the restoration"));
    } catch (const Failure& failure) {
        return failure.description();
    }
    return QString();
}

} // namespace

// Stops the private server whose data folder the database rows go into,
// before the first of them, and starts it again after the last, or when the
// restoration ends early in any way.
class RestoreJob::ServerPause {
public:
    ServerPause(Connection* connection, const QString& mysqlDirectory, const QStringList& applicationFolders)
        : connection_(connection)
    {
        for (const QString& app : applicationFolders)
            if (!app.isEmpty() && samePlace(PrivateServer(app).dataDir(), mysqlDirectory)) {
                app_ = app;
                break;
            }
    }
    ~ServerPause()
    {
        ResumeNext guard(kForm, kRestoreProc);
        guard([&] { resume(); });
    }

    bool applies() const { return !app_.isEmpty(); }
    bool restarted() const { return restarted_; }

    void stop()
    {
        if (!applies() || stopped_)
            return;
        stopped_ = true;
        PrivateServer server(app_);
        wasRunning_ = server.runningPid() != 0;
        if (!wasRunning_)
            return;
        reopen_ = connection_ && connection_->isOpen();
        if (reopen_)
            connection_->close();
        server.stop();
    }

    void resume()
    {
        if (!stopped_)
            return;
        stopped_ = false;
        if (!wasRunning_)
            return;
        PrivateServer(app_).start();
        restarted_ = true;
        if (reopen_)
            connection_->open(connection_->settings());
    }

private:
    Connection* connection_;
    QString app_;
    bool stopped_ = false;
    bool wasRunning_ = false;
    bool reopen_ = false;
    bool restarted_ = false;
};

RestoreJob::RestoreJob(Connection* connection, Prompter& prompter, Progress& progress)
    : connection_(connection), prompter_(prompter), progress_(progress)
{
}

RestoreJob::~RestoreJob() = default;

void RestoreJob::inform(const QString& text)
{
    lastMessage_ = text;
    prompter_.inform(text, Prompter::Icon::Information);
}

bool RestoreJob::refuse(const QString& message, Field field)
{
    if (!message.isEmpty())
        inform(message);
    failedField_ = field;
    return false;
}

QString RestoreJob::keepingFolderFor(const QString& dataDirectory, const QDate& date, const QLocale& locale)
{
    const QString base = withTrailingSlash(dataDirectory) + QStringLiteral("Restore_")
        + locale.toString(date, QStringLiteral("dd-MMM-yy")) + QLatin1Char('#');
    for (int n = 1; n <= 10; ++n)
        if (!isThere(base + QString::number(n)))
            return base + QString::number(n);
    return base + QStringLiteral("11");
}

QList<RestoreItem> RestoreJob::manualRows(const QString& databasesFolder, const QString& dataFolder,
                                          const QString& mysqlDirectory, const QString& dataDirectory)
{
    QList<RestoreItem> items;
    const QString mysql = withTrailingSlash(mysqlDirectory);
    const QString data = withTrailingSlash(dataDirectory);
    if (!databasesFolder.isEmpty()) {
        const QString folder = QDir::cleanPath(databasesFolder);
        const QString name = QFileInfo(folder).fileName();
        const QString upper = name.toUpper();
        QString parent;
        if (upper == QLatin1String("FBT"))
            items.append({folder, mysql + name, RestoreItem::Kind::Database});
        else if (upper == QLatin1String("DATA"))
            parent = folder;
        else if (upper == QLatin1String("MYSQL"))
            parent = subfolder(folder, QStringLiteral("Data"));
        if (!parent.isEmpty())
            for (const QString& db : databaseFolders(parent))
                items.append({QDir(parent).filePath(db), mysql + db, RestoreItem::Kind::Database});
    }
    if (!dataFolder.isEmpty()) {
        QString parent = QDir::cleanPath(dataFolder);
        if (QFileInfo(parent).fileName().toUpper() == QLatin1String("ORVSOFTWORKS"))
            parent = subfolder(parent, QStringLiteral("FBT"));
        if (!parent.isEmpty())
            for (const QString& f : QDir(parent).entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name))
                items.append({QDir(parent).filePath(f), data + f, RestoreItem::Kind::Folder});
    }
    return items;
}

bool RestoreJob::checkBackupSource(const Choice& choice)
{
    if (choice.mode == Mode::Zip) {
        if (choice.archive.isEmpty())
            return refuse(QStringLiteral("Please Select a Backup File."), Field::BackupFile);
        if (!QFileInfo(choice.archive).isFile())
            return refuse(QStringLiteral("Backup File does not Exists."), Field::BackupFile);
        return true;
    }
    auto folder = [&](const QString& path, const QString& question, const QString& missing, Field field) {
        if (path.isEmpty()) {
            const auto answer = prompter_.ask(question, Prompter::Buttons::YesNo, Prompter::Icon::Question, Prompter::Answer::No);
            return answer == Prompter::Answer::Yes || refuse(QString(), field);
        }
        return QFileInfo(path).isDir() || refuse(missing, field);
    };
    return folder(choice.databasesFolder,
                  QStringLiteral("Do you want to Continue without Selecting MySql Database Directory? Database will not be Restored."),
                  QStringLiteral("MySql Database Directory does not Exists."), Field::DatabasesFolder)
        && folder(choice.dataFolder,
                  QStringLiteral("Do you want to Continue without Selecting Data Directory? Data Folders will not be Restored."),
                  QStringLiteral("Data Directory does not Exists."), Field::DataFolder);
}

bool RestoreJob::proceed(const Choice& choice)
{
    failedField_ = Field::None;
    lastMessage_.clear();
    if (!checkBackupSource(choice))
        return false;
    if (choice.mysqlDirectory.isEmpty())
        return refuse(QStringLiteral("Please Specify MySql Directory."), Field::MysqlDirectory);
    if (!isMysqlDirectory(choice.mysqlDirectory))
        return refuse(QStringLiteral("[%1] not a Valid MySql Directory.").arg(choice.mysqlDirectory), Field::MysqlDirectory);
    if (choice.dataDirectory.isEmpty())
        return refuse(QStringLiteral("Please Specify Data Directory."), Field::DataDirectory);
    if (!isDataDirectory(choice.dataDirectory))
        return refuse(QStringLiteral("[%1] not a Valid Data Directory.").arg(choice.dataDirectory), Field::DataDirectory);

    removeExtraction();
    rows_.clear();
    choice_ = choice;
    QList<RestoreItem> items;
    if (choice.mode == Mode::Zip) {
        if (!extract(choice.archive))
            return false;
        const QString root = findBackupRoot(extraction_);
        if (root.isEmpty())
            return refuse(QStringLiteral("No Folder Found."), Field::BackupFile);
        items = classifyBackupRoot(root, choice.mysqlDirectory, choice.dataDirectory);
    } else {
        items = manualRows(choice.databasesFolder, choice.dataFolder, choice.mysqlDirectory, choice.dataDirectory);
    }
    for (const RestoreItem& item : items)
        rows_.append(Row{item, QString()});
    return true;
}

bool RestoreJob::extract(const QString& archive)
{
    const QString folder = extractionFolder(modbase().vTmpPath, QFileInfo(archive).fileName());
    if (isThere(folder) && !forceRemove(folder))
        return refuse(QStringLiteral("Couldn't Delete Existing Temporary Folder [%1].").arg(folder), Field::BackupFile);
    extraction_ = folder;
    if (stage)
        stage(QStringLiteral("Extracting Backup File..."));
    long result = -1;
    {
        std::shared_ptr<ZipLib> zip;
        ResumeNext guard(kForm, QStringLiteral("UNZIPME"));
        guard([&] { zip = CreateObject<ZipLib>(kZipLibClass); });
        if (!zip)
            inform(QStringLiteral("Can't Create Object of ORV Unzip Library."));
        else
            result = zip->UnZipMyFolder(QStringLiteral("UNZIPME"), logFilePath(), archive, folder);
    }
    if (stage)
        stage(QString());
    if (result != 0 || !QFileInfo(folder).isDir())
        return refuse(QStringLiteral("Could not Extract the Backup File."), Field::BackupFile);
    return true;
}

void RestoreJob::removeExtraction()
{
    if (extraction_.isEmpty())
        return;
    ResumeNext guard(kForm, QStringLiteral("FORM_UNLOAD"));
    guard([&] {
        if (!forceRemove(extraction_))
            throw Failure(err::PathNotFound, kSource, QStringLiteral("%1: the folder could not be deleted").arg(extraction_));
    });
    extraction_.clear();
}

void RestoreJob::flushTables(const QString& procedure)
{
    if (!connection_ || !connection_->isOpen())
        return;
    ResumeNext guard(kForm, procedure);
    guard([&] { connection_->execute(QStringLiteral("Flush Tables")); });
}

void RestoreJob::runStep(int index, Step step, const QString& path, const std::function<void()>& work)
{
    const StepText& text = kSteps[int(step)];
    for (;;) {
        ResumeNext guard(kForm, kRestoreProc);
        if (guard(work))
            return;
        const auto answer = prompter_.ask(QLatin1String(text.leadIn) + path
                                              + QStringLiteral(" ]. It is advised to Contact Your Vendor before Proceeding."),
                                          Prompter::Buttons::AbortRetryIgnore, Prompter::Icon::Question,
                                          Prompter::Answer::Abort);
        if (answer == Prompter::Answer::Retry)
            continue;
        if (answer == Prompter::Answer::Ignore) {
            rows_[index].status = QLatin1String(text.ignored);
            errorsIgnored_ = true;
            if (rowChanged)
                rowChanged(index);
            return;
        }
        rows_[index].status = kAborted;
        aborted_ = true;
        if (rowChanged)
            rowChanged(index);
        throw Abort{};
    }
}

void RestoreJob::restoreRow(int index, bool mayMove)
{
    const RestoreItem& item = rows_.at(index).item;
    const bool folder = item.kind != RestoreItem::Kind::File;
    const QString name = QFileInfo(item.destination).fileName();
    const QString keptAs = keepingFolder_
        + (item.kind == RestoreItem::Kind::Database ? QStringLiteral("/SQLDATA/") : QStringLiteral("/")) + name;
    progress_.setText((folder ? QStringLiteral("Copying Folder [%1]...") : QStringLiteral("Copying File [%1]...")).arg(item.source));
    const QString before = rows_.at(index).status;

    runStep(index, folder ? Step::KeepFolder : Step::KeepFile, item.destination, [&] {
        if (isThere(item.destination))
            keepExisting(item.destination, keptAs);
    });
    runStep(index, folder ? Step::DeleteFolder : Step::DeleteFile, item.destination,
            [&] { removeExisting(item.destination); });
    runStep(index, folder ? Step::RestoreFolder : Step::RestoreFile, item.source,
            [&] { putInPlace(item.source, item.destination, mayMove); });
    if (rows_.at(index).status == before) {
        rows_[index].status = kRestored;
        if (rowChanged)
            rowChanged(index);
    }
}

RestoreJob::Outcome RestoreJob::restore()
{
    lastMessage_.clear();
    errorsIgnored_ = false;
    aborted_ = false;
    completed_ = false;
    serverProblems_.clear();
    for (Row& row : rows_)
        row.status.clear();

    for (const Row& row : rows_) {
        const RestoreItem& item = row.item;
        if (QDir::cleanPath(item.source).toUpper() == QDir::cleanPath(item.destination).toUpper()
            || samePlace(item.source, item.destination)) {
            inform(QStringLiteral("Source Path and Destination Path can not be Same."));
            return Outcome::Refused;
        }
    }

    {
        QList<RestoreItem> items;
        for (const Row& row : rows_)
            items << row.item;
        if (const QString problem = spaceProblem(items, choice_.mode == Mode::Zip); !problem.isEmpty()) {
            inform(problem);
            return Outcome::Refused;
        }
    }

    keepingFolder_ = keepingFolderFor(choice_.dataDirectory, modbase().clock().date());
    if (isThere(keepingFolder_))
        forceRemove(keepingFolder_);
    if (!QDir().mkpath(keepingFolder_ + QStringLiteral("/SQLDATA"))) {
        inform(QStringLiteral("Could not Create Backup Directory. [%1]").arg(keepingFolder_));
        keepingFolder_.clear();
        return Outcome::Refused;
    }

    flushTables(kRestoreProc);
    completed_ = true;
    const bool mayMove = choice_.mode == Mode::Zip;
    int lastDatabase = -1;
    for (int i = 0; i < rows_.size(); ++i)
        if (rows_.at(i).item.kind == RestoreItem::Kind::Database)
            lastDatabase = i;

    progress_.setRange(0, int(rows_.size()));
    progress_.setValue(0);
    bool restarted = false;
    {
        ServerPause server(connection_, choice_.mysqlDirectory, {modbase().AppPath, choice_.dataDirectory});
        auto serverStep = [&](const std::function<void()>& work) {
            ResumeNext guard(kForm, kRestoreProc);
            guard([&] {
                try {
                    work();
                } catch (const Failure& failure) {
                    serverProblems_ << failure.description();
                    throw;
                }
            });
        };
        try {
            for (int i = 0; i < rows_.size(); ++i) {
                if (stage)
                    stage(QStringLiteral("Restoring %1 of %2").arg(i + 1).arg(rows_.size()));
                if (rowChanged)
                    rowChanged(i);
                if (rows_.at(i).item.kind == RestoreItem::Kind::Database)
                    serverStep([&] { server.stop(); });
                restoreRow(i, mayMove);
                if (i == lastDatabase)
                    serverStep([&] { server.resume(); });
                progress_.setValue(i + 1);
            }
        } catch (const Abort&) {
        }
        serverStep([&] { server.resume(); });
        restarted = server.restarted();
        if (!server.applies())
            flushTables(kRestoreProc);
    }
    if (stage)
        stage(QString());

    if (restarted && connection_ && connection_->isOpen()) {
        ResumeNext guard(kForm, QStringLiteral("CHECKTABLES"));
        guard([&] {
            for (const QString& problem : checkRestoredTables(*connection_, progress_))
                serverProblems_ << problem;
        });
    }

    Outcome outcome;
    if (!errorsIgnored_) {
        removeExtraction();
        inform(QStringLiteral("Data Restored.\nExisting Data has been Kept as Backup in [%1].").arg(keepingFolder_));
        outcome = Outcome::Restored;
    } else {
        inform(QStringLiteral("Some Errors Ignored during Restoration. Please Retry or Contact your Vendor."));
        outcome = Outcome::ErrorsIgnored;
    }
    if (!serverProblems_.isEmpty()) {
        const QString closing = lastMessage_;
        prompter_.inform(QStringLiteral("The restored database needs attention:\n%1\n\nUse Check and Repair Data before working on it.")
                             .arg(serverProblems_.join(QLatin1Char('\n'))),
                         Prompter::Icon::Exclamation);
        lastMessage_ = closing;
    }
    return outcome;
}

} // namespace corvane::backup
