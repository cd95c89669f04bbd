#include "hostfixture.h"
#include "widgets.h"

#include "host/clientdialog.h"
#include "host/clientservice.h"
#include "host/mainwindow.h"
#include "support/files.h"
#include "support/testmain.h"

#include <QLabel>

using namespace corvane;
using namespace corvane::host;
using namespace corvane::test;

namespace {

// The values of every FBT_Info column of a client, in table order.
QStringList infoRow(const TestDatabase& db, const QString& code)
{
    const auto rows = db->query(QStringLiteral("Select * from FBT_Info where Code_No='%1'").arg(code)).rows;
    QStringList values;
    if (!rows.isEmpty())
        for (const QVariant& v : rows.first())
            values << (v.isNull() ? QStringLiteral("NULL") : v.toString());
    return values;
}

QString natureText(const TestDatabase& db, int srNo)
{
    return db.scalar(QStringLiteral("Select NatDesc from FBT_Nature where SrNo=%1").arg(srNo));
}

void tick(QWidget& dialog, const QString& description)
{
    auto* list = child<QListWidget>(dialog, QStringLiteral("lstnature"));
    const auto items = list->findItems(description, Qt::MatchExactly);
    QVERIFY(!items.isEmpty());
    items.first()->setCheckState(Qt::Checked);
}

// Fills the dialog with a complete client.
void fillComplete(QWidget& dialog, const TestDatabase& db)
{
    typeInto(dialog, "txtcode", "g007");
    typeInto(dialog, "txtname", "GANGA EXPORTS");
    typeInto(dialog, "txtpan", "aagfg1234h");
    auto* status = child<QComboBox>(dialog, "cbostatus");
    status->setCurrentIndex(status->findText("Partnership Firm"));
    typeInto(dialog, "txtdoi", "5.6.1999");
    typeInto(dialog, "txtflat", "14");
    typeInto(dialog, "txtbuilding", "GANGA NIWAS");
    typeInto(dialog, "txtstreet", "MG ROAD");
    typeInto(dialog, "txtarea", "CIVIL LINES");
    typeInto(dialog, "txtcity", "KANPUR");
    typeInto(dialog, "txtpin", "208001");
    child<QComboBox>(dialog, "cbostate")->setEditText("Uttar Pradesh");
    typeInto(dialog, "txtstd", "0512");
    typeInto(dialog, "txttelno", "2301234");
    typeInto(dialog, "txtemail", "accounts@ganga.example");
    tick(dialog, natureText(db, 5));
    tick(dialog, natureText(db, 2));
}

} // namespace

// Adding, changing, recoding and deleting clients through the client master.
class ClientMasterTest : public QObject {
    Q_OBJECT

private slots:
    void addedClientIsStoredWholeAndListed()
    {
        // GIVEN the main window on a database without clients
        HostFixture f(QStringLiteral("cm_add"));
        QVERIFY(f.session->start());
        MainWindow window(f.cls, *f.session);
        bool accepted = false;
        window.setDialogRunner([&](QDialog& dialog) {
            fillComplete(dialog, f.db);
            click(dialog, "cmdsave");
            accepted = dialog.result() == QDialog::Accepted;
            return dialog.result();
        });
        // WHEN a client is added through Masters / New Client
        child<QAction>(window, "mnunewclient")->trigger();
        // THEN every column is stored in its stored form
        QVERIFY(accepted);
        QCOMPARE(f.answers->texts(), QStringList());
        QCOMPARE(infoRow(f.db, "G007"),
                 (QStringList{"G007", "GANGA EXPORTS", "AAGFG1234H", "3", "14", "GANGA NIWAS", "MG ROAD", "CIVIL LINES",
                              "KANPUR", "208001", "UTTAR PRADESH", "0512", "2301234", "05/06/1999", "2,5",
                              "accounts@ganga.example"}));
        // AND it is listed, chosen, and named in the status bar
        QCOMPARE(visibleCodes(window), QStringList{"G007"});
        QCOMPARE(f.cls.Code(), QStringLiteral("G007"));
        QVERIFY(child<QLabel>(window, "lblclient")->text().contains("GANGA EXPORTS"));
    }

    // One row per field the cursor goes to; the checks themselves are the client service's test.
    void badEntriesAreRefusedWithAMessage_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("focus");
        QTest::newRow("empty name") << "txtname" << "   " << "Enter the client's name." << "txtname";
        QTest::newRow("PAN of ten characters") << "txtpan" << "ABCDE12345" << "ABCDE12345 is not a valid PAN: five letters, four digits and a letter, such as AABCA1234K." << "txtpan";
        QTest::newRow("no such day") << "txtdoi" << "31/02/2008" << "31/02/2008 is not a valid date: type it as dd/mm/yyyy." << "txtdoi";
        QTest::newRow("short PIN") << "txtpin" << "2080" << "A PIN code has six digits." << "txtpin";
        QTest::newRow("no e-mail") << "txtemail" << "accounts.ganga" << "accounts.ganga is not an e-mail address." << "txtemail";
        // 17 natures and 70 more of three digits, all ticked: "1,2,…,17,100,…,169"
        QTest::newRow("every nature of a long list") << "lstnature" << "" << "Nature of Business is too long: it has 321 characters, and BusNat of FBT_Info holds at most 200. Shorten it; nothing was saved." << "lstnature";
    }

    void badEntriesAreRefusedWithAMessage()
    {
        QFETCH(QString, field);
        QFETCH(QString, value);
        QFETCH(QString, message);
        QFETCH(QString, focus);
        // GIVEN the demo clients
        HostFixture f(QStringLiteral("cm_refuse"), true, true);
        QVERIFY(f.session->start());
        const bool natures = field == QLatin1String("lstnature");
        for (int n = 100; natures && n < 170; ++n)
            f.db->execute(QStringLiteral("Insert into FBT_Nature Values (%1, 'NATURE %1')").arg(n));
        ClientService service(f.cls);
        ClientDialog dialog(f.cls, service, QString());
        dialog.show();
        // WHEN a complete client is entered with one bad entry and saved
        fillComplete(dialog, f.db);
        if (natures) {
            auto* list = child<QListWidget>(dialog, "lstnature");
            for (int i = 0; i < list->count(); ++i)
                list->item(i)->setCheckState(Qt::Checked);
        } else {
            typeInto(dialog, field, value);
        }
        click(dialog, "cmdsave");
        // THEN the message names the fault, the cursor is in its box, and nothing is stored
        QCOMPARE(f.answers->texts(), QStringList{message});
        QVERIFY(dialog.isVisible());
        QCOMPARE(dialog.focusWidget()->objectName(), focus);
        QCOMPARE(f.db.count("FBT_Info"), 6);
    }

    void editShowsTheStoredClient()
    {
        // GIVEN a client with two natures, a state outside the state file's list and a status the list does not name
        HostFixture f(QStringLiteral("cm_edit"), true, true);
        QVERIFY(f.session->start());
        writeFile(f.db.appPath() + "/Data/StateCodes.txt", "Andhra Pradesh, Assam\r\n\"Gujarat\"\r\n");
        f.db->execute("Update FBT_Info set ClStatus=7, State='LAKSHADWEEP' where Code_No='A001'");
        ClientService service(f.cls);
        // WHEN it is opened in the client master and saved unchanged
        ClientDialog dialog(f.cls, service, "A001");
        QCOMPARE(child<QLineEdit>(dialog, "txtname")->text(), QStringLiteral("ANAND TEXTILE MILLS PVT LTD"));
        QCOMPARE(child<QComboBox>(dialog, "cbostatus")->currentText(), QStringLiteral("7"));
        auto* states = child<QComboBox>(dialog, "cbostate");
        QCOMPARE(states->currentText(), QStringLiteral("LAKSHADWEEP"));
        QStringList offered; // the file's states in capitals after an empty choice, then the stored one
        for (int i = 0; i < states->count(); ++i)
            offered << states->itemText(i);
        QCOMPARE(offered, (QStringList{"", "ANDHRA PRADESH", "ASSAM", "GUJARAT", "LAKSHADWEEP"}));
        QStringList ticked;
        auto* natures = child<QListWidget>(dialog, "lstnature");
        for (int i = 0; i < natures->count(); ++i)
            if (natures->item(i)->checkState() == Qt::Checked)
                ticked << natures->item(i)->text();
        QCOMPARE(ticked, (QStringList{natureText(f.db, 1), natureText(f.db, 11)}));
        const QStringList before = infoRow(f.db, "A001");
        click(dialog, "cmdsave");
        // THEN nothing of it changes
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(infoRow(f.db, "A001"), before);
    }

    // Which rows move is the client service's test; here the question and what the screens do after it.
    void codeChangeAsksFirst_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::newRow("Yes: changed, the window follows") << true;
        QTest::newRow("No: the dialog stays on the code") << false;
    }
    void codeChangeAsksFirst()
    {
        QFETCH(bool, yes);
        // GIVEN the demo clients, A001 chosen
        HostFixture f(QStringLiteral("cm_recode"), true, true);
        QVERIFY(f.session->start());
        MainWindow window(f.cls, *f.session);
        QString focus;
        window.setDialogRunner([&](QDialog& dialog) {
            dialog.show();
            typeInto(dialog, "txtcode", "A100");
            typeInto(dialog, "txtname", "ANAND TEXTILES LTD");
            click(dialog, "cmdsave");
            focus = dialog.isVisible() ? dialog.focusWidget()->objectName() : QString();
            return dialog.result();
        });
        f.answers->then(yes ? Prompter::Answer::Yes : Prompter::Answer::No);
        // WHEN its code is changed to A100 in the client master and the question answered
        child<QAction>(window, "mnueditclient")->trigger();
        // THEN Yes stores the client under A100, which the window follows; No leaves the dialog on the code
        QCOMPARE(f.answers->texts(), QStringList{"Change the code of ANAND TEXTILES LTD from A001 to A100 in every table?"});
        QCOMPARE(f.db.scalar("Select Name from FBT_Info where Code_No='A100'"), yes ? QStringLiteral("ANAND TEXTILES LTD") : QString());
        QCOMPARE(f.rowsOf("FBT_Info", "A001"), yes ? 0 : 1);
        QCOMPARE(window.currentCode(), yes ? QStringLiteral("A100") : QStringLiteral("A001"));
        QCOMPARE(focus, yes ? QString() : QStringLiteral("txtcode"));
    }

    void deleteAsksThenRemovesTheClient_data()
    {
        QTest::addColumn<QString>("route");
        QTest::newRow("from the menu") << "menu";
        QTest::newRow("from the client master") << "dialog";
    }

    void deleteAsksThenRemovesTheClient()
    {
        QFETCH(QString, route);
        // GIVEN a client with rows in every table
        HostFixture f(QStringLiteral("cm_delete"), true, true);
        QVERIFY(f.session->start());
        MainWindow window(f.cls, *f.session);
        window.setDialogRunner([&](QDialog& dialog) {
            click(dialog, "cmddelete");
            return dialog.result();
        });
        QCOMPARE(window.currentCode(), QStringLiteral("A001"));
        const auto remove = [&] {
            child<QAction>(window, route == "menu" ? "mnudeleteclient" : "mnueditclient")->trigger();
        };
        // WHEN the deletion is asked for and the question answered No
        f.answers->then(Prompter::Answer::No);
        remove();
        // THEN everything stays
        QCOMPARE(f.answers->texts().size(), 1);
        QVERIFY(f.answers->texts().first().startsWith("Delete the client A001 ANAND TEXTILE MILLS PVT LTD"));
        QCOMPARE(f.rowsOf("FBT_Info", "A001"), 1);
        // WHEN it is asked for again and answered Yes
        f.answers->then(Prompter::Answer::Yes);
        remove();
        // THEN the client is gone and the list no longer shows it
        QCOMPARE(f.rowsOf("FBT_Info", "A001"), 0);
        QCOMPARE(visibleCodes(window), (QStringList{"B002", "C003", "D004", "E005", "F006"}));
    }
};

CORVANE_TEST_CLASS(ClientMasterTest)
#include "clientmastertest.moc"
