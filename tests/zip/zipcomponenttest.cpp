#include "components/zip/deflateahead.h"
#include "components/zip/ziplib.h"
#include "components/zip/zipengine.h"
#include "component/components.h"
#include "core/modbase.h"
#include "core/progress.h"
#include "support/files.h"
#include "support/rawarchive.h"
#include "support/testlog.h"
#include "support/testmain.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

using namespace corvane;
using namespace corvane::test;
using corvane::test::logContexts;
using corvane::test::logLines;

namespace {

class RecordingProgress : public Progress {
public:
    void setRange(int, int maximum) override { max = maximum; }
    void setValue(int value) override { values << value; }
    void setText(const QString&) override {}
    int max = 0;
    QList<int> values;
};

} // namespace

Q_DECLARE_METATYPE(corvane::test::RawEntry)

class ZipComponentTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir work_;
    std::shared_ptr<ZipLib> zip_;

    QString path(const QString& name) const { return work_.filePath(name); }

    // A staging-like tree with nested folders, a UTF-8 name, an empty file and an empty folder.
    QString makeTree(const QString& name)
    {
        const QString root = path(name);
        writeFile(root + "/SQLDATA/fbt/CL_MASTER.MYD", QByteArray(200000, 'x') + "end");
        writeFile(root + "/SQLDATA/fbt/CL_MASTER.frm", QByteArray("\x00\x01\x02\xff", 4));
        writeFile(root + QString::fromUtf8("/Tables/Käse ✓"), "code_no\tname\n1\tA\n");
        writeFile(root + "/Confg.ini", "");
        QDir().mkpath(root + "/Empty");
        return root;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(work_.isValid());
        registerDefaultComponents();
        modbase().AppPath = work_.path();
    }

    void init()
    {
        QFile::remove(logFilePath());
        zip_ = CreateObject<ZipLib>(kZipLibClass);
        QVERIFY(zip_);
    }

    void roundTripKeepsBytesNamesAndTimes()
    {
        const QString root = makeTree("FBT05-Mar-26");
        const QDateTime stamp(QDate(2026, 3, 5), QTime(10, 20, 30));
        {
            QFile f(root + "/Confg.ini");
            QVERIFY(f.open(QIODevice::ReadWrite));
            QVERIFY(f.setFileTime(stamp, QFileDevice::FileModificationTime));
        }
        const QString archive = path("FBT05-Mar-26.ZIP");
        RecordingProgress progress;
        QCOMPARE(zip_->ZipMyFolder("ZIPME", logFilePath(), archive, root, &progress), 0L);
        QCOMPARE(progress.values.last(), progress.max);
        QVERIFY(!QFileInfo::exists(path(".FBT05-Mar-26.ZIP.part")));

        const QString out = path("out");
        QCOMPARE(zip_->UnZipMyFolder("UNZIPME", logFilePath(), archive, out), 0L);
        const QString back = out + "/FBT05-Mar-26";
        QCOMPARE(treeOf(back), treeOf(root));
        for (const QString& rel : treeOf(root))
            if (QFileInfo(root + '/' + rel).isFile())
                QCOMPARE(readFile(back + '/' + rel), readFile(root + '/' + rel));
        QCOMPARE(QFileInfo(back + "/Confg.ini").lastModified(), stamp);
        QVERIFY(logLines().isEmpty());

        if (!QStandardPaths::findExecutable("unzip").isEmpty()) {
            QProcess unzip;
            unzip.start("unzip", {"-tq", archive});
            QVERIFY(unzip.waitForFinished());
            QCOMPARE(unzip.exitCode(), 0);
        }
    }

    void failureLeavesNothingUnderTheName_data()
    {
        QTest::addColumn<bool>("oldArchive");
        QTest::newRow("no archive before") << false;
        QTest::newRow("an older archive stays as it was") << true;
    }
    void failureLeavesNothingUnderTheName()
    {
        QFETCH(bool, oldArchive);
        const QString archive = path("missing.ZIP");
        QFile::remove(archive);
        if (oldArchive)
            writeFile(archive, "old");
        QVERIFY(zip_->ZipMyFolder("ZIPME", logFilePath(), archive, path("no-such-folder"), nullptr) != 0);
        QCOMPARE(QFileInfo::exists(archive), oldArchive);
        if (oldArchive)
            QCOMPARE(readFile(archive), QByteArray("old"));
        QCOMPARE(logContexts(), QStringList{"ORVZipLib\tZIPME"});
    }

    void cancelLeavesNoArchive()
    {
        const QString root = makeTree("cancelled");
        const QString archive = path("cancelled.ZIP");
        QVERIFY(zip_->ZipMyFolder("ZIPME", logFilePath(), archive, root, nullptr, [] { return true; }) != 0);
        QVERIFY(!QFileInfo::exists(archive));
        QCOMPARE(QDir(work_.path()).entryList({"*.part"}, QDir::Hidden | QDir::Files), QStringList());
    }

    // Which names are refused is entryNameRules'; here, that a refused entry writes nothing.
    void hostileArchiveWritesNothingOutside_data()
    {
        QTest::addColumn<QList<RawEntry>>("entries");
        QTest::newRow("dot-dot") << QList<RawEntry>{{"../x", "evil"}};
        QTest::newRow("symbolic link then a file through it")
            << QList<RawEntry>{{"link", "..", S_IFLNK | 0777}, {"link/x", "evil"}};
        QTest::newRow("device file") << QList<RawEntry>{{"dev", "", S_IFCHR | 0644}};
        QTest::newRow("good entries before a bad one") << QList<RawEntry>{{"good", "fine"}, {"../x", "evil"}};
    }
    void hostileArchiveWritesNothingOutside()
    {
        QFETCH(QList<RawEntry>, entries);
        QTemporaryDir area;
        const QString archive = area.filePath("hostile.zip");
        writeRawArchive(archive, entries);
        const QString target = area.filePath("inner/extract");
        QVERIFY(QDir().mkpath(target));

        QVERIFY(zip_->UnZipMyFolder("UNZIPME", logFilePath(), archive, target) != 0);
        QCOMPARE(treeOf(area.path()), (QStringList{"hostile.zip", "inner", "inner/extract"}));
        QCOMPARE(logContexts(), QStringList{"ORVZipLib\tUNZIPME"});
        QVERIFY(logLines().first().contains("refused"));
    }

    void linkAlreadyInTheFolderIsNotFollowed_data()
    {
        QTest::addColumn<QByteArray>("entry");
        QTest::newRow("file through the link") << QByteArray("link/x");
        QTest::newRow("file named as the link") << QByteArray("link");
    }
    void linkAlreadyInTheFolderIsNotFollowed()
    {
        QFETCH(QByteArray, entry);
        QTemporaryDir area;
        const QString outside = area.filePath("outside");
        QVERIFY(QDir().mkpath(outside));
        writeFile(outside + "/keep", "kept");
        const QString target = area.filePath("extract");
        QVERIFY(QDir().mkpath(target));
        QVERIFY(QFile::link(entry == "link" ? outside + "/keep" : outside, target + "/link"));
        const QString archive = area.filePath("a.zip");
        writeRawArchive(archive, {{entry, "evil"}});

        const long result = zip_->UnZipMyFolder("UNZIPME", logFilePath(), archive, target);
        QCOMPARE(treeOf(outside), QStringList{"keep"});
        QCOMPARE(readFile(outside + "/keep"), QByteArray("kept"));
        if (entry == "link/x") {
            QVERIFY(result != 0);
            QCOMPARE(logContexts(), QStringList{"ORVZipLib\tUNZIPME"});
        } else {
            // The link itself is replaced by a plain file; its target is untouched.
            QCOMPARE(result, 0L);
            QVERIFY(!QFileInfo(target + "/link").isSymLink());
            QCOMPARE(readFile(target + "/link"), QByteArray("evil"));
        }
    }

    void damagedArchiveIsRefused_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::newRow("a byte of the data flipped") << "flip";
        QTest::newRow("cut in half") << "truncate";
        QTest::newRow("not an archive") << "text";
    }
    void damagedArchiveIsRefused()
    {
        QFETCH(QString, damage);
        QTemporaryDir area;
        const QString archive = area.filePath("a.zip");
        const QByteArray data(5000, 'a');
        writeRawArchive(archive, {{"file", data}});
        QByteArray bytes = readFile(archive);
        if (damage == "flip") {
            const qsizetype at = bytes.indexOf(QByteArray(100, 'a'));
            QVERIFY(at > 0);
            bytes[at + 50] = 'b';
        } else if (damage == "truncate") {
            bytes.truncate(bytes.size() / 2);
        } else {
            bytes = "this is not a zip file";
        }
        writeFile(archive, bytes);
        const QString target = area.filePath("extract");
        QVERIFY(zip_->UnZipMyFolder("UNZIPME", logFilePath(), archive, target) != 0);
        QCOMPARE(logContexts(), QStringList{"ORVZipLib\tUNZIPME"});
    }

    void entryNameRules_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<bool>("refused");
        QTest::newRow("plain") << QByteArray("a/b/c") << false;
        QTest::newRow("folder entry") << QByteArray("a/") << false;
        QTest::newRow("dot part") << QByteArray("./a") << false;
        QTest::newRow("dots inside a name") << QByteArray("a..b/..c") << false;
        QTest::newRow("empty") << QByteArray("") << true;
        QTest::newRow("only separators") << QByteArray("//") << true;
        QTest::newRow("leading dot-dot") << QByteArray("../a") << true;
        QTest::newRow("trailing dot-dot") << QByteArray("a/..") << true;
        QTest::newRow("absolute") << QByteArray("/etc/x") << true;
        QTest::newRow("backslash absolute") << QByteArray("\\x") << true;
        QTest::newRow("backslash dot-dot") << QByteArray("a\\..\\..\\x") << true;
        QTest::newRow("drive") << QByteArray("C:x") << true;
    }
    void entryNameRules()
    {
        QFETCH(QByteArray, name);
        QFETCH(bool, refused);
        QCOMPARE(!zip::refusedEntryReason(name).isEmpty(), refused);
    }

    // A file deflated ahead is packed from that data only while it is the
    // same file as then; otherwise it is deflated again.
    void filesDeflatedAheadAreTakenOnlyWhenUnchanged_data()
    {
        QTest::addColumn<QString>("change");
        QTest::newRow("unchanged") << "none";
        QTest::newRow("rewritten after, same size") << "rewritten";
        QTest::newRow("replaced by another file") << "replaced";
        QTest::newRow("missing when queued") << "missing";
    }
    void filesDeflatedAheadAreTakenOnlyWhenUnchanged()
    {
        QFETCH(QString, change);
        const QString root = makeTree("ahead-" + change);
        const QString file = root + "/SQLDATA/fbt/CL_MASTER.MYD";
        const QByteArray now = QByteArray(200000, 'y') + "new";
        if (change == "missing")
            QVERIFY(QFile::remove(file));
        const QString archive = path("ahead-" + change + ".ZIP");
        {
            zip::DeflateAhead ahead(work_.path());
            ahead.add(file);
            ahead.add(root + "/Tables/" + QString::fromUtf8("Käse ✓"));
            QVERIFY(ahead.waitIdle(60000));
            if (change == "rewritten") {
                QFile f(file);
                QVERIFY(f.open(QIODevice::ReadWrite));
                QCOMPARE(f.write(now), now.size());
                QVERIFY(f.setFileTime(QDateTime::currentDateTime().addSecs(60), QFileDevice::FileModificationTime));
            } else if (change == "replaced") {
                QVERIFY(QFile::remove(file));
                writeFile(file, now);
            } else if (change == "missing") {
                writeFile(file, now);
            }
            QCOMPARE(zip_->ZipMyFolder("ZIPME", logFilePath(), archive, root, nullptr, nullptr, &ahead), 0L);
        }
        const QString out = path("out-ahead-" + change);
        QCOMPARE(zip_->UnZipMyFolder("UNZIPME", logFilePath(), archive, out), 0L);
        const QString back = out + "/ahead-" + change;
        QCOMPARE(treeOf(back), treeOf(root));
        for (const QString& rel : treeOf(root))
            if (QFileInfo(root + '/' + rel).isFile())
                QCOMPARE(readFile(back + '/' + rel), readFile(root + '/' + rel));
        QCOMPARE(readFile(back + "/SQLDATA/fbt/CL_MASTER.MYD"), change == "none" ? QByteArray(200000, 'x') + "end" : now);
        // The scratch files had no names.
        QCOMPARE(QDir(work_.path()).entryList({".deflate-*", "*.part"}, QDir::Hidden | QDir::Files), QStringList());
    }
};

CORVANE_TEST_CLASS(ZipComponentTest)
#include "zipcomponenttest.moc"
