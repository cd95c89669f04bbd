#include "components/bankinfo/lookupimport.h"
#include "core/failure.h"
#include "core/progress.h"
#include "db/sqltext.h"
#include "support/statementrecorder.h"
#include "support/testdatabase.h"
#include "support/testmain.h"

#include <QBuffer>
#include <QRegularExpression>
#include <functional>
#include <utility>
#include <QTemporaryDir>

using namespace corvane;
using namespace corvane::bankinfo;
using namespace corvane::test;

namespace {

// Records the bar; runs `atHalf` once when the bar reaches the middle.
class RecordingProgress : public NullProgress {
public:
    void setRange(int minimum, int maximum) override { range = {minimum, maximum}; }
    void setValue(int value) override
    {
        values << value;
        if (atHalf && value >= 50)
            std::exchange(atHalf, nullptr)();
    }
    QPair<int, int> range;
    QList<int> values;
    std::function<void()> atHalf;
};

const QByteArray kBankHeader = "BANK,IFSC,MICR,BRANCH,ADDRESS,CITY,DISTRICT,STATE\n";
const QByteArray kAoHeader = "CITY,AREA CODE,AO TYPE,RANGE CODE,AO NUMBER,JURISDICTION\n";

// A branch list of IFSCs ABCD0<from> on, their branches named "<branch> N" (the row at refused: "REFUSED").
QByteArray branchList(int from, int count, const QString& branch, int refused = -1)
{
    QByteArray bytes = kBankHeader;
    for (int i = from; i < from + count; ++i)
        bytes += QStringLiteral("BANK %1,ABCD0%2,,%3,,CITY,,\n")
                     .arg(i % 7)
                     .arg(i, 6, 10, QLatin1Char('0'))
                     .arg(i == refused ? QStringLiteral("REFUSED") : QStringLiteral("%1 %2").arg(branch).arg(i))
                     .toLatin1();
    return bytes;
}

} // namespace

class LookupImportTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestDatabase> db;

    ImportResult load(Kind kind, QByteArray bytes, ImportOptions options = {})
    {
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        NullProgress quiet;
        return importDevice(**db, kind, buffer, quiet, options, QStringLiteral("list.csv"));
    }
    QStringList rows(const QString& sql)
    {
        QStringList out;
        for (const auto& r : (*db)->query(sql).rows) {
            QStringList cells;
            for (const QVariant& v : r)
                cells << v.toString();
            out << cells.join(QLatin1Char('|'));
        }
        return out;
    }

private slots:
    void initTestCase() { db = std::make_unique<TestDatabase>(QStringLiteral("lookupimport"), false); }
    void cleanupTestCase() { db.reset(); }
    void init()
    {
        for (const QString& t : {QStringLiteral("MiscInf_Branch"), QStringLiteral("MiscInf_MICR"), QStringLiteral("MiscInf_AO")})
            (*db)->execute(QStringLiteral("drop table if exists ") + t);
    }

    void goodFiles_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("query");
        QTest::addColumn<QStringList>("stored");
        QTest::newRow("bank list as branches, BOM and Windows line ends")
            << int(Kind::Banks)
            << QByteArray("\xEF\xBB\xBF" "BANK,IFSC,MICR,BRANCH,ADDRESS,CITY,DISTRICT,STATE\r\n"
                          "HDFC BANK LTD,hdfc0000060,400240015,LOWER PAREL,\"KAMALA MILLS, LOWER PAREL\",MUMBAI,MUMBAI,MAHARASHTRA\r\n"
                          "\r\n"
                          "STATE BANK OF INDIA,SBIN0000300,NA,NARIMAN POINT,,MUMBAI,MUMBAI,MAHARASHTRA\r\n")
            << "select IFSC, Bank, Branch, BranchCode, MICR, Address from MiscInf_Branch order by IFSC"
            << QStringList{"HDFC0000060|HDFC BANK LTD|LOWER PAREL|000060|400240015|KAMALA MILLS, LOWER PAREL",
                           "SBIN0000300|STATE BANK OF INDIA|NARIMAN POINT|000300||"};
        QTest::newRow("columns in another order and case, unknown columns ignored, a BSR code column")
            << int(Kind::Banks)
            << QByteArray("Branch Name,Contact,ifsc_code,Bank Name,BSR Code\n"
                          "PARK STREET,033-1234,ICIC0000126,ICICI BANK LTD,0240126\n")
            << "select IFSC, Bank, Branch, BranchCode from MiscInf_Branch"
            << QStringList{"ICIC0000126|ICICI BANK LTD|PARK STREET|0240126"};
        QTest::newRow("a quoted address over two lines keeps its blanks")
            << int(Kind::Banks) << (kBankHeader + "SBI,SBIN0000001,400002001,FORT,\" 1 FORT ROAD\r\nNEAR  GATE \",MUMBAI,MUMBAI,MH\r\n")
            << "select Address from MiscInf_Branch" << QStringList{" 1 FORT ROAD\nNEAR  GATE "};
        QTest::newRow("bank list as MICR codes")
            << int(Kind::Micr)
            << (kBankHeader + "INDIAN BANK,IDIB000T910,600019045,TARAMANI,TIDEL PARK ROAD,CHENNAI,CHENNAI,TAMIL NADU\n")
            << "select MICR, Bank, Branch, Address, City, IFSC from MiscInf_MICR"
            << QStringList{"600019045|INDIAN BANK|TARAMANI|TIDEL PARK ROAD|CHENNAI|IDIB000T910"};
        QTest::newRow("Assessing Officer list, codes in capitals")
            << int(Kind::Ao)
            << (kAoHeader + "MUMBAI,mum,w,11,3,\"WARD 10(2)(1), MUMBAI\"\n")
            << "select City, AreaCode, AoType, RangeCode, AoNo, Jurisdiction from MiscInf_AO"
            << QStringList{"MUMBAI|MUM|W|11|3|WARD 10(2)(1), MUMBAI"};
    }
    void goodFiles()
    {
        QFETCH(int, kind);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, query);
        QFETCH(QStringList, stored);
        // GIVEN a list file WHEN it is imported THEN every row is stored as read, blank lines skipped
        const ImportResult r = load(Kind(kind), bytes);
        QCOMPARE(r.refused, QStringList());
        QCOMPARE(r.loaded, int(stored.size()));
        QCOMPARE(r.lines, int(stored.size()));
        QCOMPARE(rows(query), stored);
    }

    void refusedLines_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("reason");
        const int banks = int(Kind::Banks), micr = int(Kind::Micr), ao = int(Kind::Ao);
        QTest::newRow("short row") << banks << QByteArray("SBI,SBIN0000001,400002001,FORT") << "line 3: has 4 values, the first line names 8 columns";
        QTest::newRow("too many values") << banks << QByteArray("SBI,SBIN0000001,400002001,FORT,1, FORT ROAD,MUMBAI,MUMBAI,MH")
                                         << "line 3: has 9 values, more than the 8 columns of the first line (a comma in an unquoted value?)";
        QTest::newRow("unclosed quote") << banks << QByteArray("SBI,SBIN0000001,400002001,FORT,\"1 FORT ROAD,MUMBAI,MUMBAI,MH")
                                        << "line 3: a quoted value is not closed";
        QTest::newRow("escape sequence") << banks << QByteArray("SBI,SBIN0000001,400002001,FO\x1b[2JRT,,MUMBAI,MUMBAI,MH")
                                         << "line 3: BRANCH holds the control character \\x1b";
        QTest::newRow("line break outside the address") << banks << QByteArray("SBI,SBIN0000001,400002001,\"FO\nRT\",,MUMBAI,MUMBAI,MH")
                                                        << "line 3: BRANCH holds the control character \\x0a";
        QTest::newRow("no bank name") << banks << QByteArray(",SBIN0000001,400002001,FORT,,MUMBAI,MUMBAI,MH") << "line 3: BANK is empty";
        QTest::newRow("bad IFSC") << banks << QByteArray("SBI,SBIN1000001,400002001,FORT,,MUMBAI,MUMBAI,MH")
                                  << "line 3: IFSC 'SBIN1000001' is not four letters, a 0 and six letters or digits";
        QTest::newRow("eight-digit MICR") << micr << QByteArray("SBI,SBIN0000001,40000200,FORT,,MUMBAI,MUMBAI,MH") << "line 3: MICR '40000200' is not nine digits";
        QTest::newRow("too long a value") << micr << (QByteArray("SBI,SBIN0000001,400002001,") + QByteArray(101, 'F') + ",,MUMBAI,MUMBAI,MH")
                                          << "line 3: BRANCH is longer than 100 characters";
        QTest::newRow("area code of two letters") << ao << QByteArray("MUMBAI,MU,W,11,3,") << "line 3: AREA CODE 'MU' is not three letters";
        QTest::newRow("AO type a digit") << ao << QByteArray("MUMBAI,MUM,1,11,3,") << "line 3: AO TYPE '1' is not one or two letters";
        QTest::newRow("range code not a number") << ao << QByteArray("MUMBAI,MUM,W,XI,3,") << "line 3: RANGE CODE 'XI' is not a number of up to five digits";
        QTest::newRow("no AO number") << ao << QByteArray("MUMBAI,MUM,W,11,,") << "line 3: AO NUMBER is empty";
    }
    void refusedLines()
    {
        QFETCH(int, kind);
        QFETCH(QByteArray, line);
        QFETCH(QString, reason);
        // GIVEN a good line, a bad one and another good one
        const bool isAo = Kind(kind) == Kind::Ao;
        const QByteArray good1 = isAo ? "CHENNAI,CHE,C,1,1,CIRCLE 1(1)" : "HDFC BANK LTD,HDFC0000060,400240015,LOWER PAREL,,MUMBAI,MUMBAI,MH";
        const QByteArray good2 = isAo ? "CHENNAI,CHE,W,2,3,WARD 2(3)" : "HDFC BANK LTD,HDFC0000061,400240016,WORLI,,MUMBAI,MUMBAI,MH";
        // WHEN the file is imported
        const ImportResult r = load(Kind(kind), (isAo ? kAoHeader : kBankHeader) + good1 + "\n" + line + "\n" + good2 + "\n");
        // THEN the bad line alone is refused, with its number and why, and the others load
        // (but for a quote left open: it runs to the end of the file)
        const bool runsToTheEnd = QByteArray(QTest::currentDataTag()) == "unclosed quote";
        QCOMPARE(r.refused, QStringList{reason});
        QCOMPARE(r.loaded, runsToTheEnd ? 1 : 2);
        QCOMPARE(r.lines, runsToTheEnd ? 2 : 3);
    }

    void wrongColumns_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("message");
        QTest::newRow("AO list given as bank list") << int(Kind::Banks) << (kAoHeader + "MUMBAI,MUM,W,11,3,\n")
            << "list.csv cannot be read as the bank branch list: its first line (line 1) lacks the columns IFSC, BANK, BRANCH; it names CITY, AREA CODE, AO TYPE, RANGE CODE, AO NUMBER, JURISDICTION";
        QTest::newRow("no header line") << int(Kind::Micr) << QByteArray("SBI,SBIN0000001,400002001,FORT\n")
            << "list.csv cannot be read as the MICR list: its first line (line 1) lacks the columns MICR, BANK, BRANCH; it names SBI, SBIN0000001, 400002001, FORT";
        QTest::newRow("one column missing") << int(Kind::Ao) << QByteArray("\nCITY,AREA CODE,AO TYPE,RANGE CODE\n")
            << "list.csv cannot be read as the Assessing Officer list: its first line (line 2) lacks the column AO NUMBER; it names CITY, AREA CODE, AO TYPE, RANGE CODE";
        QTest::newRow("empty file") << int(Kind::Banks) << QByteArray("\r\n\r\n")
            << "list.csv is empty: its first line must name the columns IFSC, BANK, BRANCH (also read when present: BSR CODE, MICR, ADDRESS, CITY, DISTRICT, STATE)";
        QTest::newRow("every line refused: not a failure") << int(Kind::Ao) << (kAoHeader + "MUMBAI,MU,W,11,3,\n") << "";
    }
    void wrongColumns()
    {
        QFETCH(int, kind);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, message);
        // GIVEN a list already holding a row
        load(Kind::Banks, kBankHeader + "SBI,SBIN0000001,400002001,FORT,,MUMBAI,MUMBAI,MH\n");
        load(Kind::Micr, kBankHeader + "SBI,SBIN0000001,400002001,FORT,,MUMBAI,MUMBAI,MH\n");
        load(Kind::Ao, kAoHeader + "MUMBAI,MUM,W,11,3,\n");
        // WHEN a file with the wrong columns or no good line is imported, even to replace the list
        QString thrown;
        try {
            load(Kind(kind), bytes, ImportOptions{true, 1000});
        } catch (const Failure& f) {
            thrown = f.description();
        }
        // THEN it is refused as a whole with what is missing, and the list keeps its row either way
        QCOMPARE(thrown, message);
        QCOMPARE((*db)->query(QStringLiteral("select count(*) from %1").arg(tableDef(Kind(kind)).name)).rows.first().first().toInt(), 1);
    }

    void anInterruptedImport_data()
    {
        QTest::addColumn<bool>("replace");
        QTest::newRow("adding: the rows written so far stay") << false;
        QTest::newRow("replacing: the old list stays whole") << true;
    }
    void anInterruptedImport()
    {
        QFETCH(bool, replace);
        // GIVEN a list of two branches, and for a replacement the work table of an import interrupted before
        load(Kind::Banks, kBankHeader + "SBI,SBIN0000001,,FORT,,MUMBAI,,\nSBI,SBIN0000002,,WORLI,,MUMBAI,,\n");
        if (replace)
            (*db)->execute(QStringLiteral("CREATE TABLE MiscInf_Branch__import LIKE MiscInf_Branch"));
        // WHEN a large import on a connection of its own is killed by the server when half the file is read
        Connection doomed;
        doomed.open(db->settings());
        const QString id = doomed.query(QStringLiteral("select connection_id()")).rows.first().first().toString();
        QBuffer file;
        file.setData(branchList(0, 3000, QStringLiteral("BRANCH")));
        QVERIFY(file.open(QIODevice::ReadOnly));
        RecordingProgress progress;
        progress.atHalf = [&] { (*db)->execute(QStringLiteral("KILL ") + id); };
        QVERIFY_THROWS_EXCEPTION(Failure, importDevice(doomed, Kind::Banks, file, progress, ImportOptions{replace, 500}));
        // THEN a replaced list is whole, and one added to can be read with the rows written so far
        const int count = db->count(QStringLiteral("MiscInf_Branch"));
        QVERIFY2(replace ? count == 2 : count > 2, qPrintable(QString::number(count)));
        // AND the next import has the name index back in use, a sound table and no work table left
        load(Kind::Banks, kBankHeader + "SBI,SBIN0000003,,DADAR,,MUMBAI,,\n", ImportOptions{replace, 1000});
        QCOMPARE(indexState(), QStringLiteral("ByName on"));
        QCOMPARE(rows(QStringLiteral("check table MiscInf_Branch")).last().section(QLatin1Char('|'), -1), QStringLiteral("OK"));
        QCOMPARE(rows(QStringLiteral("show tables like 'miscinf\\_branch\\_\\_%'")), QStringList());
        if (replace)
            QCOMPARE(rows(QStringLiteral("select IFSC from MiscInf_Branch")), QStringList{"SBIN0000003"});
    }

    // Whether the list's name index is in use, and no table of the test's database is left locked.
    QString indexState()
    {
        QStringList state;
        for (const auto& r : (*db)->query(QStringLiteral("SHOW INDEX FROM MiscInf_Branch")).rows)
            if (r.value(2).toString() == QStringLiteral("ByName") && r.value(3).toInt() == 1)
                state << (r.value(11).toString() == QStringLiteral("disabled") ? QStringLiteral("ByName off") : QStringLiteral("ByName on"));
        for (const auto& r : (*db)->query(QStringLiteral("SHOW OPEN TABLES FROM %1 WHERE In_use > 0").arg(sqlName(db->name()))).rows)
            state << r.value(1).toString() + QStringLiteral(" in use");
        return state.join(QStringLiteral(", "));
    }

    void batches_data()
    {
        QTest::addColumn<int>("present");
        QTest::addColumn<int>("fileRows");
        QTest::addColumn<bool>("replace");
        QTest::addColumn<int>("batch");
        QTest::addColumn<int>("expected");
        // The file's rows overlap the list's from the 10th on.
        for (bool replace : {false, true}) {
            const char* how = replace ? "replacing" : "adding";
            QTest::newRow(qPrintable(QStringLiteral("%1, less than a batch").arg(how))) << 2 << 1 << replace << 2 << (replace ? 1 : 3);
            QTest::newRow(qPrintable(QStringLiteral("%1, one full batch").arg(how))) << 2 << 2 << replace << 2 << (replace ? 2 : 4);
            QTest::newRow(qPrintable(QStringLiteral("%1, one more than a batch").arg(how))) << 2 << 3 << replace << 2 << (replace ? 3 : 5);
        }
        QTest::newRow("into an empty list") << 0 << 2500 << false << 100 << 2500;
        QTest::newRow("over a large list") << 2000 << 2500 << false << 100 << 2510;
        QTest::newRow("a few rows over a large list") << 2000 << 30 << false << 100 << 2000;
        QTest::newRow("replacing a large list") << 2000 << 2500 << true << 100 << 2500;
    }
    void batches()
    {
        QFETCH(int, present);
        QFETCH(int, fileRows);
        QFETCH(bool, replace);
        QFETCH(int, batch);
        QFETCH(int, expected);
        if (present)
            load(Kind::Banks, branchList(present > 10 ? 0 : 100, present, QStringLiteral("OLD")));
        // WHEN a file is imported in batches
        StatementRecorder recorder;
        const ImportResult r = load(Kind::Banks, branchList(10, fileRows, QStringLiteral("NEW")), ImportOptions{replace, batch});
        recorder.stop();
        // THEN every row is there once, in one statement per batch, beside the old rows or in their place;
        // the file's rows have their new names, the name index finds them, nothing is left locked or behind
        QCOMPARE(r.loaded, fileRows);
        QCOMPARE(recorder.writes().filter(QRegularExpression(QStringLiteral("^insert"))).size(), (fileRows + batch - 1) / batch);
        QCOMPARE(rows(QStringLiteral("select count(*), count(distinct IFSC), sum(Branch like 'NEW %') from MiscInf_Branch")),
                 QStringList{QStringLiteral("%1|%1|%2").arg(expected).arg(fileRows)});
        QCOMPARE(indexState(), QStringLiteral("ByName on"));
        QCOMPARE(rows(QStringLiteral("select IFSC from MiscInf_Branch force index (ByName) where Bank = 'BANK 3' and Branch = 'NEW 10'")),
                 QStringList{"ABCD0000010"});
        QCOMPARE(rows(QStringLiteral("check table MiscInf_Branch")).last().section(QLatin1Char('|'), -1), QStringLiteral("OK"));
        QCOMPARE(rows(QStringLiteral("show tables like 'miscinf\\_branch\\_\\_%'")), QStringList());
    }

    void aHundredThousandRows()
    {
        // GIVEN a file of 100,000 branches and two bad lines, in a real file
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("branches.csv"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(kBankHeader);
        for (int i = 0; i < 100000; ++i) {
            file.write(QStringLiteral("BANK %1,ABCD0%2,%3,BRANCH %1,\"%1 MAIN ROAD, WARD %4\",CITY %4,DISTRICT %4,STATE %5\r\n")
                           .arg(i % 90)
                           .arg(i, 6, 10, QLatin1Char('0'))
                           .arg(100000000 + i)
                           .arg(i % 700)
                           .arg(i % 36)
                           .toLatin1());
            if (i == 500 || i == 99000)
                file.write("BANK X,NOT-AN-IFSC,,BRANCH\r\n");
        }
        file.close();
        // WHEN it is imported in batches
        RecordingProgress progress;
        const ImportResult r = importFile(**db, Kind::Banks, path, progress);
        // THEN every good row is in the table, both bad lines are named, and progress ran from 0 to 100
        QCOMPARE(r.loaded, 100000);
        QCOMPARE(r.refused, (QStringList{"line 503: has 4 values, the first line names 8 columns",
                                         "line 99004: has 4 values, the first line names 8 columns"}));
        QCOMPARE((*db)->query(QStringLiteral("select count(*), count(distinct IFSC) from MiscInf_Branch")).rows.first(),
                 (QVector<QVariant>{100000, 100000}));
        QCOMPARE(progress.range, qMakePair(0, 100));
        QCOMPARE(progress.values.first(), 0);
        QCOMPARE(progress.values.last(), 100);
        QVERIFY(progress.values.size() > 10);
        QVERIFY(std::is_sorted(progress.values.begin(), progress.values.end()));
    }

    // A batch is written while the file's next rows are read: one the server refuses stops the import there.
    void aBatchTheServerRefusesStopsTheImport_data()
    {
        QTest::addColumn<bool>("replace");
        QTest::addColumn<int>("refusedRow"); // of 1000 rows, written 100 to a statement
        QTest::newRow("adding, a middle batch") << false << 250;
        QTest::newRow("adding, the last batch") << false << 950;
        QTest::newRow("replacing, a middle batch") << true << 250;
        QTest::newRow("replacing, the last batch") << true << 950;
    }
    void aBatchTheServerRefusesStopsTheImport()
    {
        QFETCH(bool, replace);
        QFETCH(int, refusedRow);
        // GIVEN a list of two branches whose table refuses one branch name of the file
        load(Kind::Banks, kBankHeader + "SBI,SBIN0000001,,FORT,,MUMBAI,,\nSBI,SBIN0000002,,WORLI,,MUMBAI,,\n");
        (*db)->execute(QStringLiteral("ALTER TABLE MiscInf_Branch ADD CONSTRAINT refused CHECK (Branch <> 'REFUSED')"));
        // WHEN it is imported
        long number = 0;
        try {
            load(Kind::Banks, branchList(0, 1000, QStringLiteral("BRANCH"), refusedRow), ImportOptions{replace, 100});
        } catch (const Failure& f) {
            number = f.number();
        }
        // THEN the server's refusal is the failure, no row after that batch is written, and the
        // connection goes on with nothing left locked, the name index in use and no work table
        QCOMPARE(number, 4025L);
        const int batchEnd = (refusedRow / 100 + 1) * 100;
        QCOMPARE(db->count(QStringLiteral("MiscInf_Branch"), QStringLiteral("IFSC BETWEEN 'ABCD0%1' AND 'ABCD0999999'").arg(batchEnd, 6, 10, QLatin1Char('0'))), 0);
        QCOMPARE(db->count(QStringLiteral("MiscInf_Branch"), QStringLiteral("IFSC LIKE 'SBIN%'")), 2);
        if (replace)
            QCOMPARE(db->count(QStringLiteral("MiscInf_Branch")), 2);
        else
            QVERIFY(db->count(QStringLiteral("MiscInf_Branch")) >= 2 + batchEnd - 100);
        QCOMPARE(indexState(), QStringLiteral("ByName on"));
        QCOMPARE(rows(QStringLiteral("show tables like 'miscinf\\_branch\\_\\_%'")), QStringList());
    }
};

CORVANE_TEST_CLASS(LookupImportTest)
#include "lookupimporttest.moc"
