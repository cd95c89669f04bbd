#include "core/failure.h"
#include "core/inifile.h"
#include "core/modbase.h"
#include "core/settings.h"
#include "support/files.h"
#include "support/testlog.h"
#include "support/testmain.h"

#include <QDir>
#include <QTemporaryDir>

using namespace corvane;
using namespace corvane::test;

class SettingsTest : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> dir_;
    QString appPath() const { return dir_->path() + QStringLiteral("/app"); }
    QString systemPath() const { return dir_->path() + QStringLiteral("/system"); }
    QString confg() const { return appPath() + QStringLiteral("/Confg.ini"); }
    QString orvConfig() const { return systemPath() + QStringLiteral("/ORVCONFIG.INI"); }

private slots:
    void init()
    {
        dir_ = std::make_unique<QTemporaryDir>();
        QDir().mkpath(appPath());
        resetModbase();
        modbase().AppPath = appPath();
        qputenv("CORVANE_SYSTEM_DIR", systemPath().toLocal8Bit());
    }

    void routing_data()
    {
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("file");

        QTest::newRow("MySql") << "MySql" << "Server" << "system";
        QTest::newRow("ScrReso") << "SCRRESO" << "Opt" << "system";
        QTest::newRow("e-mail") << "EmailSettings" << "Host" << "system";
        QTest::newRow("printer key") << "Settings" << "FontName" << "system";
        QTest::newRow("printer key, any case") << "SETTINGS" << "fontname" << "system";
        QTest::newRow("tick size") << "settings" << "TickSize" << "system";
        QTest::newRow("other key of Settings") << "Settings" << "LastClient" << "app";
        QTest::newRow("printer key elsewhere") << "Report" << "FontName" << "app";
        QTest::newRow("any other section") << "Backup" << "Folder" << "app";
    }

    void routing()
    {
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, file);
        const QString expected = file == QLatin1String("system") ? orvConfig() : confg();
        QCOMPARE(settingsFileFor(section, key), expected);

        // GIVEN the setting saved without a file name WHEN read back THEN it came from the routed file.
        QVERIFY(SaveSettingINI(section, key, QStringLiteral("v1")));
        QCOMPARE(IniFile::read(expected, section, key, QString()), QStringLiteral("v1"));
        QCOMPARE(GetSettingINI(section.toLower(), key.toUpper(), QStringLiteral("none")), QStringLiteral("v1"));

        // A named file overrides the choice completely.
        const QString own = dir_->path() + QStringLiteral("/own.ini");
        QVERIFY(SaveSettingINI(section, key, QStringLiteral("v2"), own));
        QCOMPARE(GetSettingINI(section, key, QString(), own), QStringLiteral("v2"));
        QCOMPARE(GetSettingINI(section, key, QString()), QStringLiteral("v1"));
    }

    void trailingSeparatorsAreNotDoubled()
    {
        modbase().AppPath = appPath() + QLatin1Char('/');
        qputenv("CORVANE_SYSTEM_DIR", (systemPath() + QLatin1Char('/')).toLocal8Bit());
        QCOMPARE(settingsFileFor(QStringLiteral("Backup"), QStringLiteral("Folder")), confg());
        QCOMPARE(settingsFileFor(QStringLiteral("MySql"), QStringLiteral("Server")), orvConfig());
    }

    void reading_data()
    {
        QTest::addColumn<QByteArray>("contents");
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");

        QTest::newRow("case of section and key") << QByteArray("[MySql]\nServer=db1\n") << "MYSQL" << "server" << "db1";
        QTest::newRow("blanks around") << QByteArray("  [ A ]  \n  k   =   spaced value  \n") << "A" << "k" << "spaced value";
        QTest::newRow("blanks around the names asked") << QByteArray("[A]\nk=v\n") << " A " << " k " << "v";
        QTest::newRow("double quotes") << QByteArray("[A]\nk=\"C:\\Program Files\"\n") << "A" << "k" << "C:\\Program Files";
        QTest::newRow("single quotes") << QByteArray("[A]\nk='x'\n") << "A" << "k" << "x";
        QTest::newRow("unmatched quote") << QByteArray("[A]\nk=\"x\n") << "A" << "k" << "\"x";
        QTest::newRow("empty value") << QByteArray("[A]\nk=\n") << "A" << "k" << "";
        QTest::newRow("first duplicate wins") << QByteArray("[A]\nk=first\nk=second\n") << "A" << "k" << "first";
        QTest::newRow("repeated section") << QByteArray("[A]\nx=1\n[B]\nk=b\n[a]\nk=2\n") << "A" << "k" << "2";
        QTest::newRow("comments") << QByteArray("; k=no\n[A]\n# k=no\nk=yes\n") << "A" << "k" << "yes";
        QTest::newRow("CRLF") << QByteArray("[A]\r\nk=v\r\nj=w\r\n") << "A" << "j" << "w";
        QTest::newRow("CR only") << QByteArray("[A]\rk=v\rj=w") << "A" << "j" << "w";
        QTest::newRow("byte-order mark") << QByteArray("\xEF\xBB\xBF[A]\nk=v\n") << "A" << "k" << "v";
        QTest::newRow("garbage lines") << QByteArray("[A]\n\xFF\xFE\x01garbage\n=orphan\n[broken\nk=v\n") << "A" << "k" << "v";
        QTest::newRow("ANSI text") << QByteArray("[A]\nk=Caf\xE9\n") << "A" << "k" << QStringLiteral("Caf\u00E9");
        QTest::newRow("UTF-8 text") << QByteArray("[A]\nk=Caf\xC3\xA9\n") << "A" << "k" << QStringLiteral("Caf\u00E9");
        QTest::newRow("key outside the section") << QByteArray("k=v\n[A]\n") << "A" << "k" << "<default>";
        QTest::newRow("after a NUL nothing is read") << QByteArray("[A]\nj=w\n") + QByteArray(1, '\0') + "\nk=v\n" << "A" << "k" << "<default>";
        QTest::newRow("254 characters kept") << "[A]\nk=" + QByteArray(254, 'x') + '\n' << "A" << "k" << QString(254, QLatin1Char('x'));
        QTest::newRow("longer values cut") << "[A]\nk=" + QByteArray(300, 'x') + '\n' << "A" << "k" << QString(254, QLatin1Char('x'));
        QTest::newRow("one megabyte line") << "[A]\nk=" + QByteArray(1 << 20, 'y') + "\nj=after\n" << "A" << "j" << "after";
    }

    void reading()
    {
        QFETCH(QByteArray, contents);
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, value);
        const QString file = dir_->path() + QStringLiteral("/read.ini");
        writeFile(file, contents);
        QCOMPARE(GetSettingINI(section, key, QStringLiteral("<default>"), file), value);
        QVERIFY(test::logLines().isEmpty());
    }

    void missingFileGivesTheDefaultCut()
    {
        QCOMPARE(GetSettingINI(QStringLiteral("A"), QStringLiteral("k"), QStringLiteral("dflt")), QStringLiteral("dflt"));
        QCOMPARE(GetSettingINI(QStringLiteral("A"), QStringLiteral("k"), QString(400, QLatin1Char('d'))).size(), 254);
        QVERIFY(!QFileInfo::exists(confg()));
        QVERIFY(test::logLines().isEmpty());
    }

    void editing_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QByteArray>("after");

        QTest::newRow("value replaced, the rest kept")
            << QByteArray("; head\n[A]\nk = old ; not a comment\n\n[B]\nk=2\n") << "A" << "k" << "new"
            << QByteArray("; head\n[A]\nk = new\n\n[B]\nk=2\n");
        QTest::newRow("names keep their case") << QByteArray("[main]\nTHEME=x\n") << "MAIN" << "theme" << "y"
                                              << QByteArray("[main]\nTHEME=y\n");
        QTest::newRow("new key after the section's last key")
            << QByteArray("[A]\na=1\n\n; about B\n[B]\nb=2\n") << "A" << "c" << "3"
            << QByteArray("[A]\na=1\nc=3\n\n; about B\n[B]\nb=2\n");
        QTest::newRow("new key in an empty section") << QByteArray("[A]\n[B]\n") << "A" << "k" << "v"
                                                    << QByteArray("[A]\nk=v\n[B]\n");
        QTest::newRow("new section at the end") << QByteArray("[A]\na=1\n") << "B" << "b" << "2"
                                               << QByteArray("[A]\na=1\n[B]\nb=2\n");
        QTest::newRow("new file") << QByteArray() << "A" << "k" << "v" << QByteArray("[A]\nk=v\n");
        QTest::newRow("no final newline, replaced") << QByteArray("[A]\na=1") << "A" << "a" << "2" << QByteArray("[A]\na=2");
        QTest::newRow("no final newline, new key") << QByteArray("[A]\na=1") << "A" << "b" << "2"
                                                  << QByteArray("[A]\na=1\nb=2");
        QTest::newRow("no final newline, new section") << QByteArray("[A]\na=1") << "B" << "b" << "2"
                                                      << QByteArray("[A]\na=1\n[B]\nb=2\n");
        QTest::newRow("CRLF kept") << QByteArray("[A]\r\na=1\r\n") << "A" << "b" << "2"
                                   << QByteArray("[A]\r\na=1\r\nb=2\r\n");
        QTest::newRow("CRLF new section") << QByteArray("[A]\r\na=1\r\n") << "B" << "x" << "1"
                                          << QByteArray("[A]\r\na=1\r\n[B]\r\nx=1\r\n");
        QTest::newRow("byte-order mark kept") << QByteArray("\xEF\xBB\xBF[A]\na=1\n") << "A" << "a" << "2"
                                             << QByteArray("\xEF\xBB\xBF[A]\na=2\n");
        QTest::newRow("first duplicate changed") << QByteArray("[A]\nk=first\nk=second\n") << "A" << "k" << "new"
                                                << QByteArray("[A]\nk=new\nk=second\n");
        QTest::newRow("key in a repeated section") << QByteArray("[A]\nx=1\n[B]\n[a]\nk=1\n") << "A" << "k" << "2"
                                                  << QByteArray("[A]\nx=1\n[B]\n[a]\nk=2\n");
        QTest::newRow("new key in the first of repeated sections")
            << QByteArray("[A]\nx=1\n[B]\n[a]\nk=1\n") << "A" << "n" << "3" << QByteArray("[A]\nx=1\nn=3\n[B]\n[a]\nk=1\n");
        QTest::newRow("garbage kept") << QByteArray("[A]\ngarbage line\n\x01\xFF\n=orphan\na=1\n") << "A" << "a" << "2"
                                      << QByteArray("[A]\ngarbage line\n\x01\xFF\n=orphan\na=2\n");
        QTest::newRow("unfinished section line at the end") << QByteArray("[A]\na=1\n[  \n") << "B" << "b" << "1"
                                                           << QByteArray("[A]\na=1\n[  \n[B]\nb=1\n");
        QTest::newRow("value with equals sign") << QByteArray("[A]\n") << "A" << "url" << "a=b" << QByteArray("[A]\nurl=a=b\n");
        const QByteArray megabyte = "[A]\nbig=" + QByteArray(1 << 20, 'z') + "\nk=";
        QTest::newRow("a megabyte line kept") << megabyte + "1\n" << "A" << "k" << "2" << megabyte + "2\n";
    }

    void editing()
    {
        QFETCH(QByteArray, before);
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, value);
        QFETCH(QByteArray, after);
        const QString file = dir_->path() + QStringLiteral("/edit.ini");
        if (!before.isNull())
            writeFile(file, before);
        QVERIFY(SaveSettingINI(section, key, value, file));
        QCOMPARE(readFile(file), after);
        QCOMPARE(GetSettingINI(section, key, QStringLiteral("<default>"), file), value);
        QVERIFY(test::logLines().isEmpty());
    }

    void refusedWrites_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");

        QTest::newRow("binary file") << QByteArray("[A]\nk=v\n") + QByteArray(1, '\0') + "\n" << "A" << "k" << "w";
        QTest::newRow("line break in the value") << QByteArray("[A]\n") << "A" << "k" << "two\nlines";
        QTest::newRow("equals sign in the key") << QByteArray("[A]\n") << "A" << "a=b" << "v";
        QTest::newRow("key like a comment") << QByteArray("[A]\n") << "A" << ";k" << "v";
        QTest::newRow("bracket in the section") << QByteArray("[A]\n") << "A]B" << "k" << "v";
        QTest::newRow("empty section") << QByteArray("[A]\n") << " " << "k" << "v";
        QTest::newRow("empty key") << QByteArray("[A]\n") << "A" << "" << "v";
    }

    void refusedWrites()
    {
        QFETCH(QByteArray, before);
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, value);
        const QString file = dir_->path() + QStringLiteral("/refused.ini");
        writeFile(file, before);
        QVERIFY(!SaveSettingINI(section, key, value, file));
        QCOMPARE(readFile(file), before);
        QCOMPARE(test::logContexts(), QStringList{QStringLiteral("CLSMAIN\tSAVESETTININI")});
    }

    void unwritablePlaceIsLogged()
    {
        // A file where the folder should be.
        writeFile(dir_->path() + QStringLiteral("/blocker"), "x");
        QVERIFY(!SaveSettingINI(QStringLiteral("A"), QStringLiteral("k"), QStringLiteral("v"),
                                dir_->path() + QStringLiteral("/blocker/sub.ini")));
        QVERIFY(test::logLines().value(0).contains(QStringLiteral("blocker")));
        QCOMPARE(test::logContexts(), QStringList{QStringLiteral("CLSMAIN\tSAVESETTININI")});
    }

    void lookupAgreesWithEdit_data()
    {
        QTest::addColumn<QByteArray>("contents");
        // A "[" without "]" on its line is no section, not even with the name on the next line.
        QTest::newRow("section name on the next line") << QByteArray("[\n  A]\nk=1\n");
        QTest::newRow("unfinished header") << QByteArray("[A]\n[ \nk=1\n");
        QTest::newRow("unfinished header after a byte-order mark") << QByteArray("\xEF\xBB\xBF[ \n[A]\nk=1\n");
        QTest::newRow("header with text after it") << QByteArray("[A] trailing\nk=1\n");
        QTest::newRow("tab blanks") << QByteArray("[A]\n\tk\t=\t1\t\n");
    }

    void lookupAgreesWithEdit()
    {
        QFETCH(QByteArray, contents);
        const QByteArray edited = IniFile::edit(contents, "A", "k", "2");
        QCOMPARE(IniFile::lookup(edited, "A", "k").value_or("<none>"), QByteArray("2"));
    }
};

CORVANE_TEST_CLASS(SettingsTest)
#include "settingstest.moc"
