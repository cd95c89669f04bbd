#pragma once

#include "components/zip/ziplib.h"
#include "core/errorlog.h"
#include "core/objectregistry.h"
#include "core/progress.h"
#include "core/prompter.h"
#include "support/files.h"
#include "support/prompts.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>
#include <functional>
#include <memory>

namespace corvane::test {

// The day every backup and restoration of these tests happens.
inline const QDate kToday(2026, 3, 5);

// Lets the test act when a job reports a step.
class HookProgress : public NullProgress {
public:
    std::function<void(const QString&)> onText;
    void setText(const QString& text) override
    {
        if (onText)
            onText(text);
    }
};

// The file of a folder named so in any case (the server may keep table names in lower case); "" when none.
inline QString fileNamedAnyCase(const QString& folder, const QString& name)
{
    for (const QString& f : QDir(folder).entryList(QDir::Files))
        if (f.compare(name, Qt::CaseInsensitive) == 0)
            return folder + QLatin1Char('/') + f;
    return QString();
}

// A backup tree as the backup job lays it out: a database, the table
// exports, the documents (one named in upper case) and the settings.
inline void writeBackupTree(const QString& root, const QByteArray& marker = "new")
{
    writeFile(root + "/SQLDATA/fbt/a.MYD", marker + " a");
    writeFile(root + "/SQLDATA/fbt/a.frm", marker + " frm");
    writeFile(root + "/Tables/FBT_Info", marker + " rows");
    writeFile(root + "/BillNew.doc", marker + " bill");
    writeFile(root + "/RECPNEW.DOC", marker + " recp");
    writeFile(root + "/Confg.ini", "[Settings]\nmark=" + marker + "\n");
}

// Packs `folder` (its name the top entry) with the archiving component.
inline void packArchive(const QString& folder, const QString& archive)
{
    NullProgress progress;
    auto zip = CreateObject<ZipLib>(kZipLibClass);
    QCOMPARE(zip->ZipMyFolder("ZIPME", logFilePath(), archive, folder, &progress), 0L);
}

// A folder that looks like a MySQL directory ("mysql-data", its database fbt
// holding "old a"), an application folder with the program, a "tmp" folder and
// a backup of writeBackupTree packed as <name>.ZIP beside them.
struct RestoreArea {
    explicit RestoreArea(const QString& name = QStringLiteral("FBT05-Mar-26"))
        : dir(std::make_unique<QTemporaryDir>())
        , mysql(at("mysql-data"))
        , app(at("app"))
        , tmp(at("tmp"))
        , archive(at(name + ".ZIP"))
    {
        QDir().mkpath(mysql + "/mysql");
        QDir().mkpath(tmp);
        writeFile(mysql + "/fbt/a.MYD", "old a");
        writeFile(app + "/FBT", "program");
        writeBackupTree(at(name));
        packArchive(at(name), archive);
        QDir(at(name)).removeRecursively();
    }
    QString at(const QString& relative) const { return dir->filePath(relative); }

    std::unique_ptr<QTemporaryDir> dir;
    QString mysql, app, tmp, archive;
};

} // namespace corvane::test
