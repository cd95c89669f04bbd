#include "core/failure.h"
#include "core/safefile.h"
#include "faults.h"
#include "support/files.h"
#include "support/testmain.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

using namespace corvane;
using namespace corvane::test;

// Replacing a file: the old file or the whole new one, never anything between.
class SafeFileTest : public QObject {
    Q_OBJECT

    std::unique_ptr<FullDisk> disk_;

private slots:
    void initTestCase() { disk_ = std::make_unique<FullDisk>(); }
    void cleanupTestCase() { disk_.reset(); }
    void init() { disk_->clear(); }

    void aFullDiskLeavesTheOldFile_data()
    {
        QTest::addColumn<QByteArray>("old");
        QTest::addColumn<int>("newSize");
        QTest::newRow("settings file") << QByteArray("[MySql]\nServer=db.example\nPassword=secret\n") << 300;
        QTest::newRow("no file before") << QByteArray() << 300;
        QTest::newRow("empty file before") << QByteArray("") << 300;
        QTest::newRow("large new contents") << QByteArray("keep me, I am older than you") << 200000;
    }

    void aFullDiskLeavesTheOldFile()
    {
        QFETCH(QByteArray, old);
        QFETCH(int, newSize);
        const QString target = disk_->path() + QStringLiteral("/Confg.ini");
        const bool existed = !old.isNull();
        if (existed)
            writeFile(target, old);
        QString message;
        long number = 0;
        disk_->run([&] {
            try {
                replaceFile(target, QByteArray(newSize, 'n'));
            } catch (const Failure& f) {
                message = f.description();
                number = f.number();
            }
        });
        QVERIFY2(message.contains(target), qPrintable(message));
        QVERIFY2(message.contains(disk_->reason()), qPrintable(message));
        QVERIFY(number != 0);
        QCOMPARE(QFileInfo::exists(target), existed);
        if (existed)
            QCOMPARE(readFile(target), old);
        // No temporary file is left behind.
        QCOMPARE(filesIn(disk_->path()), existed ? QStringList{QStringLiteral("Confg.ini")} : QStringList{});
    }

    void aStreamedWriteFailsAtTheWriteThatDoesNotFit()
    {
        const QString target = disk_->path() + QStringLiteral("/export.csv");
        writeFile(target, "old export\n");
        int written = 0;
        QString message;
        disk_->run([&] {
            try {
                SafeFile out(target);
                for (; written < 1000; ++written)
                    out.write(QByteArray(1024, 'r'));
                out.commit();
            } catch (const Failure& f) {
                message = f.description();
            }
        });
        QVERIFY(written < 1000);
        QVERIFY2(message.startsWith(QStringLiteral("Cannot write ") + target), qPrintable(message));
        QCOMPARE(readFile(target), QByteArray("old export\n"));
        QCOMPARE(filesIn(disk_->path()), QStringList{QStringLiteral("export.csv")});
    }

    void aReplacementKeepsModeAndLinks_data()
    {
        QTest::addColumn<int>("oldMode");
        QTest::addColumn<int>("asked");
        QTest::addColumn<int>("expected");
        QTest::newRow("kept 0640") << 0640 << -1 << 0640;
        QTest::newRow("asked 0600") << 0644 << 0600 << 0600;
    }

    void aReplacementKeepsModeAndLinks()
    {
        QFETCH(int, oldMode);
        QFETCH(int, asked);
        QFETCH(int, expected);
        QTemporaryDir dir;
        const QString real = dir.filePath(QStringLiteral("real.ini"));
        const QString link = dir.filePath(QStringLiteral("link.ini"));
        writeFile(real, "old");
        QVERIFY(::chmod(QFile::encodeName(real).constData(), mode_t(oldMode)) == 0);
        QVERIFY(QFile::link(real, link));

        replaceFile(link, QByteArray("new contents"), asked);

        QVERIFY(QFileInfo(link).isSymLink());
        QCOMPARE(readFile(real), QByteArray("new contents"));
        QCOMPARE(modeOf(real), expected);
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden | QDir::System).size(), 2);
    }

    void aFileNeverCommittedIsNotReplaced()
    {
        QTemporaryDir dir;
        const QString target = dir.filePath(QStringLiteral("a.txt"));
        writeFile(target, "old");
        {
            SafeFile out(target);
            out.write(QByteArray("half of the new"));
            // an exception on the writer's side leaves before commit
        }
        QCOMPARE(readFile(target), QByteArray("old"));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
    }

    void aWriterWithItsOwnPathIsCommittedToo()
    {
        QTemporaryDir dir;
        const QString target = dir.filePath(QStringLiteral("archive.zip"));
        writeFile(target, "old archive");
        SafeFile out(target, 0600);
        // A library that replaces the file at the path it was given.
        const QString other = dir.filePath(QStringLiteral("library-temp"));
        writeFile(other, "new archive");
        QVERIFY(QFile::remove(out.temporaryPath()));
        QVERIFY(QFile::rename(other, out.temporaryPath()));
        out.commit();
        QCOMPARE(readFile(target), QByteArray("new archive"));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
    }

    void aFolderThatIsMissingIsNamed()
    {
        QTemporaryDir dir;
        const QString target = dir.filePath(QStringLiteral("missing/x.ini"));
        try {
            replaceFile(target, "x");
            QFAIL("no failure");
        } catch (const Failure& f) {
            QVERIFY(f.description().contains(target));
            QVERIFY(f.description().contains(QStringLiteral("No such file or directory")));
        }
    }
};

CORVANE_TEST_CLASS(SafeFileTest)
#include "safefiletest.moc"
