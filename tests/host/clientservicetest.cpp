#include "hostfixture.h"

#include "host/clientservice.h"
#include "support/statementrecorder.h"
#include "support/testmain.h"

#include <QtTest>

using namespace corvane;
using namespace corvane::host;
using namespace corvane::test;

// The client master's checks and writes on the service the dialog calls.
class ClientServiceTest : public QObject {
    Q_OBJECT

private slots:
    void add_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("message"); // empty: stored
        QTest::addColumn<int>("focus");       // ClientOutcome::Field
        using F = ClientOutcome::Field;
        QTest::newRow("complete: stored") << "" << "" << "" << int(F::None);
        QTest::newRow("code of 20") << "code" << QString(20, 'G') << "" << int(F::None);
        QTest::newRow("code of 21") << "code" << QString(21, 'G') << "A client code has at most 20 characters." << int(F::Code);
        QTest::newRow("empty code") << "code" << " " << "Enter the client's code." << int(F::Code);
        QTest::newRow("code of a client") << "code" << "a001" << "The code A001 is already used by ANAND TEXTILE MILLS PVT LTD." << int(F::Code);
        QTest::newRow("code left in another table") << "code" << "z999" << "The code Z999 is still used in the table FBT_AddInfo: choose another code." << int(F::Code);
        QTest::newRow("code with a quote") << "code" << "G'7" << "A client code cannot contain quotes, commas or back slashes." << int(F::Code);
        QTest::newRow("code with a comma") << "code" << "G,7" << "A client code cannot contain quotes, commas or back slashes." << int(F::Code);
        QTest::newRow("empty name") << "name" << "   " << "Enter the client's name." << int(F::Name);
        QTest::newRow("PAN of ten characters") << "pan" << "ABCDE12345" << "ABCDE12345 is not a valid PAN: five letters, four digits and a letter, such as AABCA1234K." << int(F::Pan);
        QTest::newRow("no such day") << "doi" << "31/02/2008" << "31/02/2008 is not a valid date: type it as dd/mm/yyyy." << int(F::Doi);
        QTest::newRow("PIN of five digits") << "pin" << "20800" << "A PIN code has six digits." << int(F::Pin);
        QTest::newRow("PIN of seven digits") << "pin" << "2080011" << "A PIN code has six digits." << int(F::Pin);
        QTest::newRow("no e-mail") << "email" << "accounts.ganga" << "accounts.ganga is not an e-mail address." << int(F::EMail);
        QTest::newRow("name of 101") << "name" << QString(101, 'N') << "Name is too long" << int(F::Name);
    }
    void add()
    {
        QFETCH(QString, field);
        QFETCH(QString, value);
        QFETCH(QString, message);
        QFETCH(int, focus);
        HostFixture f(QStringLiteral("cs_add"), true, true);
        QVERIFY(f.session->start());
        f.db->execute("Insert into FBT_AddInfo (Code_No, TYear) Values ('Z999', 2008)");
        ClientRecord r; // a new client with what it needs; the dialog's test stores every field
        r.code = QStringLiteral(" g007 ");
        r.name = QStringLiteral("GANGA EXPORTS");
        r.pan = QStringLiteral("aagfg1234h");
        QString* entry = field == "code" ? &r.code : field == "name" ? &r.name : field == "pan" ? &r.pan
                       : field == "doi" ? &r.doi : field == "pin" ? &r.pin : &r.email;
        if (!field.isEmpty())
            *entry = value;
        ClientService service(f.cls);
        StatementRecorder recorder;
        const ClientOutcome outcome = service.add(r);
        recorder.stop();
        // A refusal names the fault and its field and writes nothing (the server may keep table names in small letters).
        QCOMPARE(outcome.ok, message.isEmpty());
        QCOMPARE(outcome.message.left(message.size()).toLower(), message.toLower());
        QCOMPARE(int(outcome.field), focus);
        QCOMPARE(recorder.sequence(), (message.isEmpty() ? QStringList{"insert fbt_info", "flush"} : QStringList()));
        QCOMPARE(f.db.count("FBT_Info"), message.isEmpty() ? 7 : 6);
    }

    void updateAndRemove_data()
    {
        QTest::addColumn<QString>("code"); // the new code; empty: the client is deleted
        QTest::addColumn<QString>("message");
        QTest::newRow("unchanged: stored again as it was") << "A001" << "";
        QTest::newRow("a new code: every row moves") << "a100" << "";
        QTest::newRow("the code of another client: refused") << "B002" << "The code B002 is already used by BHARAT LOGISTICS.";
        QTest::newRow("deleted: every row goes") << "" << "";
    }
    void updateAndRemove()
    {
        QFETCH(QString, code);
        QFETCH(QString, message);
        // GIVEN A001 with rows in every table
        HostFixture f(QStringLiteral("cs_update"), true, true);
        f.db->execute("Insert into FBT_MiscInf (Code_No, TYear, RepAss) values ('A001', 2008, '0')");
        QVERIFY(f.session->start());
        QMap<QString, QPair<int, int>> before; // rows under A001 and under the new code
        for (const QString& table : f.clientTables())
            before[table] = {f.rowsOf(table, "A001"), f.rowsOf(table, code)};
        const QString row = QStringLiteral("Select concat_ws('|', Name, PAN, ClStatus, City, DOI, BusNat) from FBT_Info where Code_No=");
        const QString stored = f.db.scalar(row + "'A001'");
        ClientService service(f.cls);
        ClientRecord r = *service.load("A001");
        r.code = code;
        StatementRecorder recorder;
        const ClientOutcome outcome = code.isEmpty() ? service.remove("A001") : service.update("A001", r);
        recorder.stop();
        // THEN a refusal writes nothing, and every write is flushed
        QCOMPARE(outcome.message, message);
        QCOMPARE(recorder.unflushedWrites(), QStringList());
        QCOMPARE(recorder.writes().isEmpty(), !message.isEmpty());
        const bool moved = message.isEmpty() && code != QLatin1String("A001");
        QCOMPARE(f.db.scalar(row + QStringLiteral("'%1'").arg(moved ? code.toUpper() : QStringLiteral("A001"))), code.isEmpty() ? QString() : stored);
        for (const QString& table : f.clientTables())
            QCOMPARE(qMakePair(f.rowsOf(table, "A001"), f.rowsOf(table, code)), moved ? qMakePair(0, code.isEmpty() ? 0 : before[table].first) : before[table]);
    }
};

CORVANE_TEST_CLASS(ClientServiceTest)
#include "clientservicetest.moc"
