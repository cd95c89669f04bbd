#include "component/clsmain.h"
#include "core/modbase.h"
#include "core/statelist.h"
#include "support/files.h"
#include "support/testlog.h"
#include "support/testmain.h"

#include <QComboBox>
#include <QDir>
#include <QListWidget>
#include <QTemporaryDir>
#include <unistd.h>

using namespace corvane;

class StateListTest : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> app_;

private slots:
    void init()
    {
        app_ = std::make_unique<QTemporaryDir>();
        resetModbase();
        modbase().AppPath = app_->path();
    }

    void delimitedItems_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("items");

        QTest::newRow("two on a line") << "Andhra Pradesh, Assam" << QStringList{"ANDHRA PRADESH", "ASSAM"};
        QTest::newRow("one per line") << "Goa\nKerala\n" << QStringList{"GOA", "KERALA"};
        QTest::newRow("quotes removed") << "\"Tamil Nadu\",Kerala" << QStringList{"TAMIL NADU", "KERALA"};
        QTest::newRow("comma inside quotes") << "\"Daman, Diu\"\nGoa" << QStringList{"DAMAN, DIU", "GOA"};
        QTest::newRow("text after the closing quote") << "\"Goa\" junk, Kerala" << QStringList{"GOA", "KERALA"};
        QTest::newRow("open quote ends with its line") << "\"Goa\nKerala" << QStringList{"GOA", "KERALA"};
        QTest::newRow("blank lines") << "Goa\n\n   \nKerala\n\n" << QStringList{"GOA", "KERALA"};
        QTest::newRow("CRLF") << "Goa\r\nKerala\r\n" << QStringList{"GOA", "KERALA"};
        QTest::newRow("CR only") << "Goa\rKerala" << QStringList{"GOA", "KERALA"};
        QTest::newRow("blanks and tabs around") << "\t  goa  ,\t kerala \t" << QStringList{"GOA", "KERALA"};
        QTest::newRow("empty items") << ",,\"\",Goa," << QStringList{"GOA"};
        QTest::newRow("empty") << "" << QStringList{};
    }

    void delimitedItems()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, items);
        QCOMPARE(corvane::delimitedItems(text), items);
    }

    void theShippedFileListsStatesAndTerritories()
    {
        // GIVEN the state file the application ships
        QDir().mkpath(app_->path() + QStringLiteral("/Data"));
        QVERIFY(QFile::copy(qEnvironmentVariable("CORVANE_SOURCE_DIR") + QStringLiteral("/data/Data/StateCodes.txt"),
                            stateListPath()));
        QComboBox combo;
        combo.addItems({QStringLiteral("stale"), QStringLiteral("entries")});

        // WHEN the host fills its combo box
        ClsMain().LoadStateList(&combo);

        // THEN it holds the 28 states and 8 union territories, in capitals, in file order
        QCOMPARE(combo.count(), 36);
        QCOMPARE(combo.itemText(0), QStringLiteral("ANDAMAN AND NICOBAR ISLANDS"));
        QVERIFY(combo.findText(QStringLiteral("TAMIL NADU")) >= 0);
        QVERIFY(combo.findText(QStringLiteral("LADAKH")) >= 0);
        QVERIFY(combo.findText(QStringLiteral("stale")) < 0);
        QVERIFY(test::logLines().isEmpty());
    }

    void aFileWithBomAndQuotesIsRead()
    {
        test::writeFile(stateListPath(), "\xEF\xBB\xBF\"Andhra Pradesh\", Assam\r\n\r\nBihar\r\n");
        QCOMPARE(readStateList(), (QStringList{"ANDHRA PRADESH", "ASSAM", "BIHAR"}));
    }

    void aMissingFileLeavesTheListEmptySilently()
    {
        // GIVEN no state file (a folder of that name is not one)
        QDir().mkpath(stateListPath());
        QListWidget list;
        list.addItem(QStringLiteral("stale"));

        ClsMain().LoadStateList(&list);

        QCOMPARE(list.count(), 0);
        QVERIFY(test::logLines().isEmpty());
    }

    void anUnreadableFileIsLogged()
    {
        if (::geteuid() == 0)
            QSKIP("root reads every file");
        test::writeFile(stateListPath(), "Goa\n");
        QFile::setPermissions(stateListPath(), QFileDevice::WriteOwner);
        QComboBox combo;
        ClsMain().LoadStateList(&combo);
        QCOMPARE(combo.count(), 0);
        QCOMPARE(test::logContexts(), QStringList{QStringLiteral("CLSMAIN\tLOADSTATELIST")});
    }
};

CORVANE_TEST_CLASS(StateListTest)
#include "statelisttest.moc"
