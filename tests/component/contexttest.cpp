#include "component/clsmain.h"
#include "core/errorlog.h"
#include "core/modbase.h"
#include "core/objectregistry.h"
#include "core/prompter.h"
#include "core/reportviewer.h"
#include "core/resumenext.h"
#include "support/testlog.h"
#include "support/testmain.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>
#include <sys/wait.h>
#include <unistd.h>

using namespace corvane;

namespace {

const QDateTime kNow(QDate(2026, 11, 21), QTime(9, 5, 7));

[[noreturn]] void fail(long number, const QString& description)
{
    throw Failure(number, QStringLiteral("TestSource"), description);
}

struct FakeViewer : ReportViewer {
    int calls = 0;
    QString lastText;
    void WriteToReport(QVector<QVariant>&, QVector<qint16>&, QVector<qint32>&, QStringList& texts1, QStringList&,
                       bool& flag, QString& text1, QString&, QString&, QString&) override
    {
        ++calls;
        lastText = text1;
        texts1 << QStringLiteral("seen");
        flag = true;
    }
};

} // namespace

// The shared context, the log and the resume-next guard.
class ContextTest : public QObject {
    Q_OBJECT

    QTemporaryDir dir_;

private slots:
    void init()
    {
        resetModbase();
        modbase().AppPath = dir_.path();
        modbase().clock = [] { return kNow; };
        QFile::remove(logFilePath());
    }

    void guardRunsLaterStatementsAfterAFailure()
    {
        // GIVEN a procedure of four statements whose second and fourth fail
        QStringList ran;
        ResumeNext guard(QStringLiteral("CLSMAIN"), QStringLiteral("CONVERTDATE"));
        // WHEN it runs through the guard
        guard([&] { ran << "1"; });
        guard([&] { fail(13, QStringLiteral("Type mismatch")); ran << "2"; });
        guard([&] { ran << "3"; });
        guard([&] { fail(9, QStringLiteral("Subscript out of range")); });
        // THEN every statement after a failure still ran, with one line per failure
        QCOMPARE(ran, (QStringList{"1", "3"}));
        QCOMPARE(guard.failures(), 2);
        QCOMPARE(test::logContexts(), (QStringList{"CLSMAIN\tCONVERTDATE", "CLSMAIN\tCONVERTDATE"}));
        QVERIFY(!modbase().currentError.has_value());
    }

    void aLogLineHasSixTabSeparatedItems_data()
    {
        QTest::addColumn<long>("number");
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("description");
        QTest::addColumn<QString>("logged"); // number, source and description as the line holds them
        QTest::newRow("plain") << 13L << "TestSource" << "Type mismatch" << "13\tTestSource\tType mismatch";
        QTest::newRow("negative") << -2147217900L << "TestSource" << "Syntax error" << "-2147217900\tTestSource\tSyntax error";
        QTest::newRow("another exception: an invalid call") << 0L << "" << "index" << "5\tCorvane\tindex";
        // A tab would add an item and a line break would split the line: both become blanks.
        QTest::newRow("tab in the description") << 1064L << "MySQL" << "a\tb" << "1064\tMySQL\ta b";
        QTest::newRow("line breaks") << 1064L << "MySQL" << "one\r\ntwo\nthree" << "1064\tMySQL\tone  two three";
        QTest::newRow("tab in the source") << 1064L << "My\tSQL" << "x" << "1064\tMy SQL\tx";
        QTest::newRow("tabs only") << 1064L << "\t" << "\t\t" << "1064\t \t  ";
    }

    void aLogLineHasSixTabSeparatedItems()
    {
        QFETCH(long, number);
        QFETCH(QString, source);
        QFETCH(QString, description);
        QFETCH(QString, logged);
        ResumeNext guard(QStringLiteral("MODBASE"), QStringLiteral("MULTISPCJS1"));
        guard([&] {
            if (!number)
                throw std::out_of_range(description.toStdString());
            throw Failure(number, source, description);
        });
        QCOMPARE(test::logLines(), QStringList{"21/11/2026 09:05:07\t" + logged + "\tMODBASE\tMULTISPCJS1"});
        // The message for the user keeps the description as it was.
        QCOMPARE(lastLoggedDescription(), description);
        QCOMPARE(logNote(), QStringLiteral("logged in ") + logFilePath());
    }

    void nothingPendingWritesNothing()
    {
        LogError();
        modbase().currentError = Failure(0, QString(), QString());
        LogError();
        ResumeNext guard(QStringLiteral("CLSMAIN"), QStringLiteral("X"));
        guard([] {});
        QVERIFY(!QFile::exists(logFilePath()));
    }

    void silentGuardSkipsWithoutLogging()
    {
        auto guard = silentGuard();
        bool after = false;
        guard([] { fail(5, QStringLiteral("Invalid procedure call")); });
        guard([&] { after = true; });
        QVERIFY(after);
        QCOMPARE(guard.failures(), 1);
        QVERIFY(!QFile::exists(logFilePath()));
    }

    void unwritableLogIsIgnored()
    {
        modbase().AppPath = dir_.path() + QStringLiteral("/missing/folder");
        ResumeNext guard(QStringLiteral("CLSMAIN"), QStringLiteral("X"));
        bool after = false;
        guard([] { fail(5, QStringLiteral("x")); });
        guard([&] { after = true; });
        QVERIFY(after);
        QVERIFY(lastLogWriteError().contains(QStringLiteral("missing/folder")));
    }

    void twoProcessesNeverMixTheirLines()
    {
        // GIVEN two processes appending 300 long lines each to the same log at once
        const int perProcess = 300;
        const QString longText(3000, QLatin1Char('x'));
        pid_t children[2];
        for (int c = 0; c < 2; ++c) {
            children[c] = ::fork();
            if (children[c] == 0) {
                for (int i = 0; i < perProcess; ++i) {
                    ResumeNext guard(QStringLiteral("P%1").arg(c), QStringLiteral("LINE"));
                    guard([&] { fail(1000 + c, longText); });
                }
                ::_exit(0);
            }
        }
        for (pid_t child : children)
            ::waitpid(child, nullptr, 0);
        // THEN every line is whole
        const QStringList lines = test::logLines();
        QCOMPARE(lines.size(), 2 * perProcess);
        for (const QString& line : lines) {
            const QStringList items = line.split(QLatin1Char('\t'));
            QCOMPARE(items.size(), 6);
            QCOMPARE(items.at(3), longText);
        }
    }

    void twoClsMainObjectsShareOneContext()
    {
        ClsMain first;
        ClsMain second;
        first.setCode(QStringLiteral("A001"));
        first.setTYear(2008);
        first.setAppPath(QStringLiteral("/srv/fbt"));
        QCOMPARE(second.Code(), QStringLiteral("A001"));
        QCOMPARE(second.TYear(), qint16(2008));
        QCOMPARE(second.AppPath(), QStringLiteral("/srv/fbt"));
        second.setCode(QStringLiteral("B002"));
        QCOMPARE(first.Code(), QStringLiteral("B002"));
        QVERIFY(!first.CnnObj());
    }

    void restorationReturnsZeroWhenNothingWasRestored()
    {
        ClsMain cls;
        modbase().restorationFlag = 1;
        // The screen opens modally; the user leaves it at once.
        QTimer::singleShot(0, [] {
            if (QWidget* screen = QApplication::activeModalWidget())
                screen->close();
        });
        QCOMPARE(cls.Restoration(), qint16(0));
    }

    void registryCreatesReplacesAndRefuses()
    {
        auto& registry = ObjectRegistry::instance();
        const QString id = QStringLiteral("Test.Viewer");
        QVERIFY_THROWS_EXCEPTION(Failure, registry.createComponent(id));
        registry.registerClass(id, [] { return std::make_shared<FakeViewer>(); });
        QVERIFY(CreateObject<ReportViewer>(QStringLiteral("test.viewer")));
        try {
            struct Other : Component {};
            registry.registerClass(id, [] { return std::make_shared<Other>(); });
            CreateObject<ReportViewer>(id);
            QFAIL("a component of the wrong kind was accepted");
        } catch (const Failure& f) {
            QCOMPARE(f.number(), err::CannotCreateObject);
        }
        registry.unregisterClass(id);
        QVERIFY(!registry.has(id));
    }

    void multiSpcJs1HandsArgumentsToTheViewer()
    {
        QVector<QVariant> values;
        QVector<qint16> shorts;
        QVector<qint32> longs;
        QStringList texts1, texts2;
        bool flag = false;
        QString t1 = QStringLiteral("title"), t2, t3, t4;

        // Without a viewer the call fails and is logged under MODBASE.
        MultiSpcJs1(values, shorts, longs, texts1, texts2, flag, t1, t2, t3, t4);
        QCOMPARE(test::logContexts(), QStringList{QStringLiteral("MODBASE\tMULTISPCJS1")});

        auto viewer = std::make_shared<FakeViewer>();
        modbase().reportViewer = viewer;
        MultiSpcJs1(values, shorts, longs, texts1, texts2, flag, t1, t2, t3, t4);
        QCOMPARE(viewer->calls, 1);
        QCOMPARE(viewer->lastText, QStringLiteral("title"));
        // The arguments go by reference: the viewer's changes reach the caller.
        QCOMPARE(texts1, QStringList{QStringLiteral("seen")});
        QVERIFY(flag);
    }

    void scriptedPrompterAnswersInOrderAndRecords()
    {
        ScriptedPrompter p;
        p.then(Prompter::Answer::No).then(Prompter::Answer::Retry);
        QCOMPARE(p.ask(QStringLiteral("Delete?"), Prompter::Buttons::YesNo), Prompter::Answer::No);
        p.inform(QStringLiteral("Saved."));
        QCOMPARE(p.ask(QStringLiteral("Disk?"), Prompter::Buttons::AbortRetryIgnore), Prompter::Answer::Retry);
        QCOMPARE(p.ask(QStringLiteral("Again?"), Prompter::Buttons::YesNo, Prompter::Icon::Question, Prompter::Answer::No),
                 Prompter::Answer::No);
        QCOMPARE(p.texts(), (QStringList{"Delete?", "Saved.", "Disk?", "Again?"}));
        QCOMPARE(p.unanswered(), 1);
    }
};

CORVANE_TEST_CLASS(ContextTest)
#include "contexttest.moc"
