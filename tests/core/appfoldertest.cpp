#include "core/appfolder.h"
#include "support/files.h"
#include "support/testmain.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace corvane;
using namespace corvane::test;

class AppFolderTest : public QObject {
    Q_OBJECT

private slots:
    void choice_data()
    {
        QTest::addColumn<QString>("asked");
        QTest::addColumn<bool>("programWritable");
        QTest::addColumn<QString>("xdgDataHome");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<bool>("perUser");
        // The portable folder: the program's own, when it can be written.
        QTest::newRow("writable program folder") << "" << true << "" << "/opt/fbt" << false;
        QTest::newRow("writable, XDG set") << "" << true << "/x/data" << "/opt/fbt" << false;
        // Installed for everybody: each user gets a folder of their own.
        QTest::newRow("unwritable, no XDG") << "" << false << "" << "/home/asha/.local/share/orv-softworks/FBT" << true;
        QTest::newRow("unwritable, XDG set") << "" << false << "/x/data" << "/x/data/orv-softworks/FBT" << true;
        QTest::newRow("unwritable, XDG relative") << "" << false << "data" << "/home/asha/.local/share/orv-softworks/FBT" << true;
        // Asked for: taken as given, whatever can be written.
        QTest::newRow("asked, unwritable program") << "/srv/office/" << false << "/x/data" << "/srv/office/" << false;
        QTest::newRow("asked, writable program") << "/srv/office" << true << "" << "/srv/office" << false;
    }

    void choice()
    {
        QFETCH(QString, asked);
        QFETCH(bool, programWritable);
        QFETCH(QString, xdgDataHome);
        QFETCH(QString, expected);
        QFETCH(bool, perUser);
        AppFolderInputs in;
        in.asked = asked;
        in.programDir = QStringLiteral("/opt/fbt/");
        in.xdgDataHome = xdgDataHome;
        in.home = QStringLiteral("/home/asha");
        QStringList asks;
        in.canWrite = [&](const QString& path) {
            asks << path;
            return programWritable;
        };
        const AppFolder folder = chooseAppFolder(in);
        QCOMPARE(folder.path, expected);
        QCOMPARE(folder.perUser, perUser);
        // Only the program's folder decides; an asked-for folder is never second-guessed.
        QCOMPARE(asks, asked.isEmpty() ? QStringList{"/opt/fbt"} : QStringList());
    }

    void perUserFolderIsARealApplicationFolder()
    {
        // GIVEN an installed program folder with its Data files, and a fresh home
        QTemporaryDir program, home;
        writeFile(program.path() + "/FBT", "");
        for (const QString& name : {QStringLiteral("/Data/StateCodes.txt"), QStringLiteral("/Data/sub/x.txt")})
            writeFile(program.path() + name, "Goa\n");
        const QString folder = home.path() + "/.local/share/orv-softworks/FBT";
        // WHEN it is prepared twice, the user having changed a data file in between
        QCOMPARE(preparePerUserFolder(folder, program.path()), QString());
        writeFile(folder + "/Data/StateCodes.txt", "Goa, Kerala\n");
        QCOMPARE(preparePerUserFolder(folder, program.path()), QString());
        // THEN it holds the link to the program and the data files, with the user's change kept
        QCOMPARE(QFileInfo(folder + "/FBT").symLinkTarget(), QFileInfo(program.path() + "/FBT").absoluteFilePath());
        QVERIFY(QFileInfo::exists(folder + "/Data/sub/x.txt"));
        QCOMPARE(readFile(folder + "/Data/StateCodes.txt"), QByteArray("Goa, Kerala\n"));
    }

    void linkFollowsAMovedInstallation()
    {
        // GIVEN a per-user folder whose link points at a program that is gone
        QTemporaryDir program, home;
        const QString folder = home.path() + "/FBT";
        QDir().mkpath(folder);
        QVERIFY(QFile::link("/nonexistent/FBT", folder + "/FBT"));
        // WHEN it is prepared for the program where it is now
        QCOMPARE(preparePerUserFolder(folder, program.path()), QString());
        // THEN the link points there
        QCOMPARE(QFileInfo(folder + "/FBT").symLinkTarget(), program.path() + "/FBT");
    }

    void unusableFolderSaysWhy()
    {
        // GIVEN a per-user folder under a plain file
        QTemporaryDir home;
        writeFile(home.path() + "/file", "");
        // WHEN it is prepared, THEN the message names the folder
        const QString failed = preparePerUserFolder(home.path() + "/file/FBT", home.path());
        QVERIFY2(failed.contains(home.path() + "/file/FBT"), qPrintable(failed));
    }
};

CORVANE_TEST_CLASS(AppFolderTest)
#include "appfoldertest.moc"
