#include "components/bankinfo/bankinfocomponent.h"
#include "components/bankinfo/lookupdialog.h"
#include "components/bankinfo/lookupimport.h"
#include "component/components.h"
#include "core/errorlog.h"
#include "core/modbase.h"
#include "core/progress.h"
#include "support/testdatabase.h"
#include "support/testlog.h"
#include "support/testmain.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QTableWidget>
#include <QTimer>
#include <functional>

using namespace corvane;
using namespace corvane::bankinfo;
using namespace corvane::test;

namespace {

QString demoFile(const QString& name)
{
    return qEnvironmentVariable("CORVANE_SOURCE_DIR") + QStringLiteral("/data/demo/") + name;
}

// What the user saw in the chooser before acting.
struct Seen {
    QString title;
    QString filter;
    int rows = -1;
    QString info;
};

} // namespace

class BankInfoComponentTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestDatabase> db;

    void loadDemo()
    {
        NullProgress quiet;
        importFile(**db, Kind::Banks, demoFile(QStringLiteral("DEMO-bank-branches.csv")), quiet);
        importFile(**db, Kind::Micr, demoFile(QStringLiteral("DEMO-bank-branches.csv")), quiet);
        importFile(**db, Kind::Ao, demoFile(QStringLiteral("DEMO-ao-codes.csv")), quiet);
    }
    std::shared_ptr<BankInfoComponent> component()
    {
        auto info = std::make_shared<BankInfoComponent>();
        QString appPath = db->appPath();
        std::shared_ptr<Connection> connection = db->connection();
        QString logFile = QStringLiteral("FBTLogger.log");
        float x = 1.0f, y = 1.0f, fs = 1.0f;
        info->InitMe(appPath, connection, logFile, x, y, fs);
        return info;
    }
    // Runs the user's part once the chooser is up; the typed text goes to the filter box.
    void whenShown(Seen& seen, const QString& typed, const QList<int>& keys)
    {
        QTimer::singleShot(0, this, [&seen, typed, keys] {
            auto* dialog = qobject_cast<LookupDialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            auto* filter = dialog->findChild<QLineEdit*>(QStringLiteral("txtfilter"));
            seen.title = dialog->windowTitle();
            seen.filter = filter->text();
            if (!typed.isEmpty())
                QTest::keyClicks(filter, typed);
            for (int key : keys)
                QTest::keyClick(filter, Qt::Key(key));
            if (dialog->isVisible()) {
                dialog->refresh();
                seen.rows = dialog->findChild<QTableWidget*>(QStringLiteral("lstrows"))->rowCount();
                seen.info = dialog->findChild<QLabel*>(QStringLiteral("lblinfo"))->text();
                QTest::keyClick(filter, Qt::Key_Escape);
            }
        });
    }

private slots:
    void initTestCase()
    {
        db = std::make_unique<TestDatabase>(QStringLiteral("bankinfo"), false);
        loadDemo();
    }
    void cleanupTestCase() { db.reset(); }
    void init() { QFile::remove(logFilePath()); }

    void find_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QStringList>("firstColumns"); // the first two shown columns of each row
        QTest::newRow("every word, in any order and case")
            << int(Kind::Banks) << "mumbai hdfc" << QStringList{"HDFC BANK LTD|ANDHERI EAST", "HDFC BANK LTD|LOWER PAREL"};
        QTest::newRow("words match across columns")
            << int(Kind::Micr) << "indian adyar" << QStringList{"INDIAN BANK|ADYAR"};
        QTest::newRow("a percent sign is only a percent sign") << int(Kind::Banks) << "50%" << QStringList{};
        QTest::newRow("an underscore is only an underscore") << int(Kind::Micr) << "_" << QStringList{};
        QTest::newRow("a quote is only a quote") << int(Kind::Ao) << "' or 1=1 --" << QStringList{};
        QTest::newRow("Assessing Officers of a city in code order")
            << int(Kind::Ao) << "chennai" << QStringList{"CHENNAI|CHE", "CHENNAI|CHE", "CHENNAI|CHE"};
    }
    void find()
    {
        QFETCH(int, kind);
        QFETCH(QString, filter);
        QFETCH(QStringList, firstColumns);
        const Lookup lookup = BankInfoStore(**db).find(Kind(kind), filter);
        QStringList got;
        for (const QStringList& row : lookup.rows)
            got << row.mid(0, 2).join(QLatin1Char('|'));
        QCOMPARE(got, firstColumns);
        QVERIFY(!lookup.more);
        QCOMPARE(lookup.headings, tableDef(Kind(kind)).headings);
    }

    void findStopsAtTheLimit()
    {
        const Lookup lookup = BankInfoStore(**db).find(Kind::Banks, QString(), 5);
        QCOMPARE(lookup.rows.size(), 5);
        QVERIFY(lookup.more);
        QCOMPARE(BankInfoStore(**db).find(Kind::Banks, QString(), 30).more, false);
    }

    void choosers_data()
    {
        QTest::addColumn<QString>("call");       // which Get… and its text
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QList<int>>("keys");
        QTest::addColumn<QString>("filterShown");
        QTest::addColumn<QStringList>("result");
        const QList<int> enter{Qt::Key_Return};
        QTest::newRow("branch: type to filter, Enter chooses")
            << "GetBSRCode:" << "hdfc chennai" << enter << ""
            << QStringList{"HDFC BANK LTD", "TARAMANI", "090282"};
        QTest::newRow("branch: arrows move through the rows")
            << "GetBSRCode:" << "hdfc mumbai" << QList<int>{Qt::Key_Down, Qt::Key_Down, Qt::Key_Up, Qt::Key_Down, Qt::Key_Return} << ""
            << QStringList{"HDFC BANK LTD", "LOWER PAREL", "090060"};
        QTest::newRow("branch: Escape gives nothing")
            << "GetBSRCode:" << "hdfc" << QList<int>{Qt::Key_Escape} << "" << QStringList{"", "", ""};
        QTest::newRow("MICR: filtered by the bank given, three groups")
            << "GetMICR:HDFC BANK LTD" << "" << enter << "HDFC BANK LTD"
            << QStringList{"HDFC BANK LTD", "MAROL, ANDHERI KURLA ROAD", "400", "240", "027"};
        QTest::newRow("MICR: the filter can be changed")
            << "GetMICR:HDFC BANK LTD" << " parel" << enter << "HDFC BANK LTD"
            << QStringList{"HDFC BANK LTD", "KAMALA MILLS COMPOUND, SENAPATI BAPAT MARG, LOWER PAREL", "400", "240", "015"};
        QTest::newRow("AO: filtered by the city, eight elements")
            << "GetPANTANAoCode:MUMBAI" << "" << QList<int>{Qt::Key_Down, Qt::Key_Down, Qt::Key_Return} << "MUMBAI"
            << QStringList{"MUMBAI", "MUM", "W", "11", "3", "WARD 10(2)(1), MUMBAI", "", ""};
        QTest::newRow("AO: Escape leaves element 0 empty")
            << "GetPANTANAoCode:MUMBAI" << "" << QList<int>{Qt::Key_Escape} << "MUMBAI"
            << QStringList{"", "", "", "", "", "", "", ""};
        QTest::newRow("AO: without the city filter the list starts whole")
            << "GetPANTANAoCode!:MUMBAI" << "ghaziabad ward" << enter << ""
            << QStringList{"GHAZIABAD", "GZB", "W", "1", "2", "WARD 1(2), GHAZIABAD", "", ""};
        QTest::newRow("Enter with nothing matching chooses nothing")
            << "GetBSRCode:" << "no such bank" << enter << "" << QStringList{"", "", ""};
    }
    void choosers()
    {
        QFETCH(QString, call);
        QFETCH(QString, typed);
        QFETCH(QList<int>, keys);
        QFETCH(QString, filterShown);
        QFETCH(QStringList, result);
        // GIVEN the demo lists, and a user who types and presses keys in the chooser
        auto info = component();
        Seen seen;
        whenShown(seen, typed, keys);
        // WHEN the component is asked
        const QString method = call.section(QLatin1Char(':'), 0, 0);
        const QString text = call.section(QLatin1Char(':'), 1);
        QStringList answer{QStringLiteral("stale")};
        if (method == QStringLiteral("GetBSRCode"))
            info->GetBSRCode(text, answer);
        else if (method == QStringLiteral("GetMICR"))
            info->GetMICR(text, answer);
        else
            info->GetPANTANAoCode(text, method == QStringLiteral("GetPANTANAoCode"), answer);
        // THEN the chooser started with the given filter, and the array holds the choice or nothing
        QCOMPARE(seen.filter, filterShown);
        QCOMPARE(answer, result);
        QCOMPARE(logLines(), QStringList());
    }

    void typingInTheListGoesToTheFilter()
    {
        auto info = component();
        QString filterText;
        QTimer::singleShot(0, this, [&] {
            auto* dialog = QApplication::activeModalWidget();
            auto* list = dialog->findChild<QTableWidget*>(QStringLiteral("lstrows"));
            list->setFocus();
            QTest::keyClicks(list, QStringLiteral("adyar"));
            filterText = dialog->findChild<QLineEdit*>(QStringLiteral("txtfilter"))->text();
            QTest::keyClick(list, Qt::Key_Return);
        });
        QStringList answer;
        info->GetMICR(QString(), answer);
        QCOMPARE(filterText, QStringLiteral("adyar"));
        QCOMPARE(answer.value(4), QStringLiteral("052"));
    }

    void anEmptyListSaysHowToLoadIt()
    {
        // GIVEN a database without the component's tables, which counting a list makes
        for (const QString& t : {QStringLiteral("MiscInf_Branch"), QStringLiteral("MiscInf_MICR"), QStringLiteral("MiscInf_AO")})
            (*db)->execute(QStringLiteral("drop table if exists ") + t);
        QCOMPARE(BankInfoStore(**db).count(Kind::Micr), 0);
        QCOMPARE((*db)->query(QStringLiteral("show tables like 'MiscInf%'")).rows.size(), 3);
        auto info = component();
        Seen seen;
        whenShown(seen, QString(), {});
        // WHEN a branch is asked for
        QStringList answer;
        info->GetBSRCode(QString(), answer);
        // THEN the chooser says how to fill the list, and nothing is chosen
        QCOMPARE(seen.rows, 0);
        QCOMPARE(seen.info, QStringLiteral("The bank branch list is empty: load it with \"corvane lookup import banks FILE\"."));
        QCOMPARE(answer, (QStringList{"", "", ""}));
        loadDemo();
    }

    void withoutInitMeTheCallIsLogged()
    {
        BankInfoComponent info;
        QStringList answer;
        info.GetMICR(QStringLiteral("SBI"), answer);
        QCOMPARE(answer, (QStringList{"", "", "", "", ""}));
        QCOMPARE(logContexts(), QStringList{QStringLiteral("ORVMISCINF\tGETMICR")});
    }

    void theRegistryCreatesIt()
    {
        registerDefaultComponents();
        QVERIFY(CreateObject<BankInfo>(kBankInfoClass) != nullptr);
    }
};

CORVANE_TEST_CLASS(BankInfoComponentTest)
#include "bankinfocomponenttest.moc"
