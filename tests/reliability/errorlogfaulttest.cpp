#include "core/errorlog.h"
#include "core/modbase.h"
#include "core/resumenext.h"
#include "faults.h"
#include "support/testlog.h"
#include "support/testmain.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace corvane;
using namespace corvane::test;

// The error log with hostile texts and on a full disk.
class ErrorLogFaultTest : public QObject {
    Q_OBJECT

    QTemporaryDir dir_;

private slots:
    void init()
    {
        resetModbase();
        modbase().AppPath = dir_.path();
        QFile::remove(logFilePath());
    }

    void aLogLineKeepsItsSixFields_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("description");
        QTest::addColumn<QString>("logged");
        QTest::newRow("tab in the description") << "MySQL" << "a\tb" << "MySQL\ta b";
        QTest::newRow("line breaks") << "MySQL" << "one\r\ntwo\nthree" << "MySQL\tone  two three";
        QTest::newRow("tab in the source") << "My\tSQL" << "x" << "My SQL\tx";
        QTest::newRow("tabs only") << "\t" << "\t\t" << " \t  ";
    }

    void aLogLineKeepsItsSixFields()
    {
        QFETCH(QString, source);
        QFETCH(QString, description);
        QFETCH(QString, logged);
        ResumeNext guard(QStringLiteral("CLSDATA"), QStringLiteral("DELETECLIENT"));
        guard([&] { throw Failure(1064, source, description); });
        const QStringList lines = logLines();
        QCOMPARE(lines.size(), 1);
        QCOMPARE(lines.first().split(QLatin1Char('\t')).size(), 6);
        QCOMPARE(lines.first().section(QLatin1Char('\t'), 2, 3), logged);
        QCOMPARE(logContexts(), QStringList{QStringLiteral("CLSDATA\tDELETECLIENT")});
        QCOMPARE(lastLoggedDescription(), description);
        QCOMPARE(logNote(), QStringLiteral("logged in ") + logFilePath());
    }

    void aLogThatCannotBeWrittenIsSaidSo()
    {
        // GIVEN an application folder on a full disk
        FullDisk disk;
        disk.clear();
        modbase().AppPath = disk.path();
        // WHEN a failure is logged
        disk.run([] {
            ResumeNext guard(QStringLiteral("CLSMAIN"), QStringLiteral("SAVESETTININI"));
            guard([] { throw Failure(28, QStringLiteral("Corvane"), QStringLiteral("Cannot write Confg.ini")); });
        });
        // THEN the note for the user says that it could not be logged, and why
        QCOMPARE(lastLoggedDescription(), QStringLiteral("Cannot write Confg.ini"));
        QVERIFY2(logNote().startsWith(QStringLiteral("it could not be logged: cannot write ") + disk.path()), qPrintable(logNote()));
        QVERIFY2(logNote().endsWith(disk.reason()), qPrintable(logNote()));
        QCOMPARE(contents(logFilePath()), QByteArray());
    }
};

CORVANE_TEST_CLASS(ErrorLogFaultTest)
#include "errorlogfaulttest.moc"
