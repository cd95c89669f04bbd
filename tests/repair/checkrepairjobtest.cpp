#include "tabledamage.h"

#include "core/errorlog.h"
#include "core/progress.h"
#include "core/resumenext.h"
#include "screens/repair/checkrepairjob.h"
#include "support/statementrecorder.h"
#include "support/testdatabase.h"
#include "support/testlog.h"
#include "support/testmain.h"

using namespace corvane;
using namespace corvane::test;

namespace {

// Every step the job reports, as "range a-b", "value n" and the texts.
class RecordingProgress : public Progress {
public:
    void setRange(int minimum, int maximum) override { steps << QStringLiteral("range %1-%2").arg(minimum).arg(maximum); }
    void setValue(int value) override { steps << QStringLiteral("value %1").arg(value); }
    void setText(const QString& text) override { steps << text; }
    QStringList steps;
};

QStringList reports(const QList<TableProblem>& problems)
{
    QStringList texts;
    for (const TableProblem& p : problems)
        texts << p.table + QLatin1Char('|') + p.type + QLatin1Char('|') + p.report;
    return texts;
}

} // namespace

// The job against tables whose files were really damaged on the test server.
class CheckRepairJobTest : public QObject, DamageBench {
    Q_OBJECT

    RecordingProgress progress;

    QStringList allTables()
    {
        ResumeNext guard(QStringLiteral("TEST"), QStringLiteral("TABLES"));
        return CheckRepairJob(db->connection().get(), progress).tables(guard);
    }

private slots:
    void initTestCase() { openBench(QStringLiteral("checkjob")); }
    void cleanupTestCase() { closeBench(); }
    void init()
    {
        files->dropAll();
        db->startAfresh({});
        progress.steps.clear();
    }

    void damagedTableIsFoundAndRepaired_data()
    {
        QTest::addColumn<Damage>("damage");
        QTest::addColumn<QString>("found");   // a report of the first check
        QTest::addColumn<int>("rowsAfter");  // -1: the table stays broken
        QTest::addColumn<QString>("note");   // what the repair said, "" for nothing beyond OK

        QTest::newRow("index file deleted: rebuilt from the definition, rows back")
            << Damage::IndexDeleted << "Error|Can't find file: './%1/order.MYI'" << TableFiles::kRows
            << "warning|Number of rows changed from 0 to 1000";
        QTest::newRow("index header damaged: repaired, rows back")
            << Damage::IndexHeader << "warning|Table is marked as crashed and last repair failed" << TableFiles::kRows
            << "warning|Number of rows changed from -1 to 1000";
        QTest::newRow("data file cut mid-row: only the cut row is lost, and the repair says so")
            << Damage::DataTruncated << "error|Size of datafile is: " << TableFiles::kRowsBeforeCut
            << "warning|Number of rows changed from 1000 to 400";
        QTest::newRow("marked crashed: repaired, nothing lost")
            << Damage::MarkedCrashed << "warning|Table is marked as crashed" << TableFiles::kRows << "";
        QTest::newRow("data file deleted: stays broken")
            << Damage::DataDeleted << "Error|File './%1/order.MYD' not found" << -1 << "";
    }
    void damagedTableIsFoundAndRepaired()
    {
        QFETCH(Damage, damage);
        QFETCH(QString, found);
        QFETCH(int, rowsAfter);
        QFETCH(QString, note);
        // GIVEN a healthy table on each side of a damaged one (a reserved word, so it needs its back quotes)
        files->create(QStringLiteral("alpha"), 10);
        files->create(QStringLiteral("order"));
        files->create(QStringLiteral("zulu"), 10);
        files->damage(QStringLiteral("order"), damage);
        CheckRepairJob job(db->connection().get(), progress);

        // WHEN every table is checked
        const QStringList tables = allTables();
        QCOMPARE(tables, (QStringList{"alpha", "order", "zulu"}));
        const QList<TableProblem> problems = job.check(tables);

        // THEN only the damaged table has problems, and one of them is the expected report
        QVERIFY(!problems.isEmpty());
        for (const TableProblem& p : problems)
            QCOMPARE(p.table, QStringLiteral("order"));
        const QString expected = QStringLiteral("order|") + QString(found).replace(QStringLiteral("%1"), db->name());
        const QStringList texts = reports(problems);
        QVERIFY2(std::any_of(texts.begin(), texts.end(), [&](const QString& t) { return t.startsWith(expected, Qt::CaseInsensitive); }),
                 qPrintable(texts.join(QLatin1Char('\n'))));

        // WHEN the problems are repaired and the tables checked again
        progress.steps.clear();
        const QList<TableProblem> notes = job.repair(problems);
        const QList<TableProblem> second = job.check(tables);

        // THEN the table is whole again with its rows (at most the damaged row lost), or still listed
        QCOMPARE(progress.steps.mid(0, 5), (QStringList{"Repairing Tables ...", "range 0-1", "value 0", "value 1",
                                                       "Repairing Table ... (order)"}));
        if (rowsAfter < 0) {
            QVERIFY(!second.isEmpty());
            QCOMPARE(second.first().table, QStringLiteral("order"));
        } else {
            QCOMPARE(reports(second), QStringList());
            QCOMPARE(files->count(QStringLiteral("order")), rowsAfter);
            QCOMPARE(files->count(QStringLiteral("alpha")), 10);
            const QStringList said = reports(notes);
            if (note.isEmpty())
                QCOMPARE(said, QStringList());
            else
                QVERIFY2(said.contains(QStringLiteral("order|") + note, Qt::CaseInsensitive), qPrintable(said.join(QLatin1Char('\n'))));
        }
        // and no statement failed
        QCOMPARE(logLines(), QStringList());
    }

    void allTablesOk_data()
    {
        QTest::addColumn<QStringList>("tables");
        QTest::newRow("no table at all") << QStringList{};
        QTest::newRow("one empty table") << QStringList{"empty"};
        QTest::newRow("names that need their back quotes") << QStringList{"select", "two words", "with`quote"};
    }
    void allTablesOk()
    {
        QFETCH(QStringList, tables);
        // GIVEN healthy tables
        for (const QString& t : tables)
            files->create(t, t == QLatin1String("empty") ? 0 : 5);
        CheckRepairJob job(db->connection().get(), progress);
        // WHEN they are checked
        const QList<TableProblem> problems = job.check(allTables());
        // THEN nothing is found, each was checked in turn, and nothing was logged
        QCOMPARE(reports(problems), QStringList());
        QStringList expected{"Checking Tables ...", QStringLiteral("range 0-%1").arg(tables.size()), "value 0"};
        QStringList sorted = tables;
        sorted.sort();
        for (int i = 0; i < sorted.size(); ++i)
            expected << QStringLiteral("value %1").arg(i + 1) << QStringLiteral("Checking Table ... (%1)").arg(sorted.at(i));
        QCOMPARE(progress.steps, expected);
        QCOMPARE(logLines(), QStringList());
        // and repairing nothing does nothing
        QCOMPARE(reports(job.repair({})), QStringList());
    }

    void tableGoneSinceListedIsAProblem()
    {
        // GIVEN a table name that no longer exists
        CheckRepairJob job(db->connection().get(), progress);
        // WHEN it is checked
        const QList<TableProblem> problems = job.check({QStringLiteral("gone")});
        // THEN the server's report is the problem
        QVERIFY(!problems.isEmpty());
        QCOMPARE(problems.first().table, QStringLiteral("gone"));
        QVERIFY2(problems.first().report.contains(QStringLiteral("doesn't exist")), qPrintable(problems.first().report));
        QCOMPARE(logLines(), QStringList());
    }

    void statementsThatCannotRunAreLoggedAndTheLoopGoesOn()
    {
        // GIVEN no connection
        CheckRepairJob job(nullptr, progress);
        ResumeNext guard(CheckRepairJob::kModule, QStringLiteral("FORM_LOAD"));
        // WHEN the tables are listed, checked and repaired
        QCOMPARE(job.tables(guard), QStringList());
        const QList<TableProblem> problems = job.check({QStringLiteral("a"), QStringLiteral("b")});
        // THEN each table is a failed check, and each statement is logged under the screen's name
        QCOMPARE(reports(problems), (QStringList{"a|N/A|Failed to Check Table", "b|N/A|Failed to Check Table"}));
        QCOMPARE(logContexts(), (QStringList{"frmchkrep\tFORM_LOAD", "frmchkrep\tCHECKTABLES", "frmchkrep\tCHECKTABLES",
                                             "frmchkrep\tCHECKTABLES"}));
        QFile::remove(logFilePath());
        job.repair({{QStringLiteral("a"), QStringLiteral("Can't find file: 'a.MYI'"), QStringLiteral("Error")},
                    {QStringLiteral("b"), CheckRepairJob::kFailedReport, CheckRepairJob::kFailedType}});
        QCOMPARE(logContexts(), (QStringList{"frmchkrep\tREPAIRUSEFRM", "frmchkrep\tREPAIRTABLES", "frmchkrep\tREPAIRTABLES",
                                             "frmchkrep\tREPAIRTABLES", "frmchkrep\tREPAIRTABLES"}));
    }

    void eachTableIsRepairedOnce()
    {
        // GIVEN two damaged tables, the first with several reports
        files->create(QStringLiteral("first"));
        files->create(QStringLiteral("second"));
        files->damage(QStringLiteral("first"), Damage::IndexHeader);
        files->damage(QStringLiteral("second"), Damage::MarkedCrashed);
        CheckRepairJob job(db->connection().get(), progress);
        const QList<TableProblem> problems = job.check(allTables());
        QVERIFY(problems.size() > 2);
        // WHEN they are repaired
        progress.steps.clear();
        StatementRecorder recorder;
        job.repair(problems);
        recorder.stop();
        // THEN each table is worked on once, in the order of the problems, and none repaired twice
        QStringList repairs = recorder.writes();
        QVERIFY(repairs.contains(QStringLiteral("repair first")));
        QCOMPARE(repairs.removeDuplicates(), 0);
        QCOMPARE(progress.steps.filter(QStringLiteral("Repairing")),
                 (QStringList{"Repairing Tables ...", "Repairing Table ... (first)", "Repairing Table ... (second)"}));
        QVERIFY(progress.steps.contains(QStringLiteral("range 0-2")));
        QCOMPARE(reports(job.check(allTables())), QStringList());
    }
};

CORVANE_TEST_CLASS(CheckRepairJobTest)

#include "checkrepairjobtest.moc"
