#pragma once

#include "components/zip/ziplib.h"
#include "core/errorlog.h"
#include "core/objectregistry.h"
#include "core/progress.h"
#include "core/prompter.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QtTest>
#include <functional>

namespace corvane::test {

// A scripted prompter that lets the test act while a question is open
// (the user fixing the cause before answering Retry).
class HookedPrompter : public ScriptedPrompter {
public:
    using ScriptedPrompter::ask;
    std::function<void(const Question&)> onAsk;
    Answer ask(const Question& question) override
    {
        if (onAsk)
            onAsk(question);
        return ScriptedPrompter::ask(question);
    }
};

inline void writeFile(const QString& path, const QByteArray& data)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(f.write(data), data.size());
}

inline QByteArray readFile(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// Every path under a folder, relative and sorted.
inline QStringList treeOf(const QString& folder)
{
    QStringList out;
    QDirIterator it(folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        out << QDir(folder).relativeFilePath(it.next());
    out.sort();
    return out;
}

// A backup tree as the backup job lays it out: a database, the table
// exports, a document and the settings.
inline void writeBackupTree(const QString& root, const QByteArray& marker = "new")
{
    writeFile(root + "/SQLDATA/fbt/a.MYD", marker + " a");
    writeFile(root + "/SQLDATA/fbt/a.frm", marker + " frm");
    writeFile(root + "/Tables/FBT_Info", marker + " rows");
    writeFile(root + "/BillNew.doc", marker + " bill");
    writeFile(root + "/Confg.ini", "[Settings]\nmark=" + marker + "\n");
}

// Packs `folder` (its name the top entry) with the archiving component.
inline void packArchive(const QString& folder, const QString& archive)
{
    NullProgress progress;
    auto zip = CreateObject<ZipLib>(kZipLibClass);
    QCOMPARE(zip->ZipMyFolder("ZIPME", logFilePath(), archive, folder, &progress), 0L);
}

} // namespace corvane::test
