#include "components/bankinfo/lookupdialog.h"
#include "support/testmain.h"

#include <QScrollBar>
#include <QTableWidget>
#include <QtTest>

using namespace corvane;

// The columns of a lookup: sized to what they hold, the searched (first)
// column always in sight.
class LookupDialogTest : public QObject {
    Q_OBJECT

    static bankinfo::Lookup rows(const QString& bank, const QString& address)
    {
        bankinfo::Lookup lookup;
        lookup.headings = {QStringLiteral("Bank"), QStringLiteral("Address"), QStringLiteral("City")};
        lookup.rows = {{bank, address, QStringLiteral("MUMBAI")}, {QStringLiteral("SBI"), QStringLiteral("FORT"), QStringLiteral("PUNE")}};
        return lookup;
    }

private slots:
    void columns_data()
    {
        QTest::addColumn<QString>("bank");
        QTest::addColumn<QString>("address");
        QTest::addColumn<bool>("addressCut");
        QTest::newRow("short rows: every column shows all") << "STATE BANK OF INDIA" << "NARIMAN POINT" << false;
        QTest::newRow("a long address is cut, not the bank")
            << "STATE BANK OF INDIA" << QString(QStringLiteral("MITTAL TOWER, NARIMAN POINT, ")).repeated(8) << true;
    }

    void columns()
    {
        QFETCH(QString, bank);
        QFETCH(QString, address);
        QFETCH(bool, addressCut);
        // GIVEN a lookup whose rows are these
        LookupDialog dialog(QStringLiteral("MICR Codes"), QString(), [&](const QString&) { return rows(bank, address); },
                            QString());
        dialog.show();
        auto* list = dialog.findChild<QTableWidget*>(QStringLiteral("lstrows"));
        QVERIFY(list);
        // THEN the searched column is wide enough for its text and in sight
        QVERIFY(list->columnWidth(0) >= list->fontMetrics().horizontalAdvance(bank));
        QCOMPARE(list->horizontalScrollBar()->value(), 0);
        QVERIFY(list->columnViewportPosition(0) + list->columnWidth(0) <= list->viewport()->width());
        // and a cell cut short still tells all in its tip
        QCOMPARE(list->columnWidth(1) < list->fontMetrics().horizontalAdvance(address), addressCut);
        QCOMPARE(list->item(0, 1)->toolTip(), address);
    }
};

CORVANE_TEST_CLASS(LookupDialogTest)

#include "lookupdialogtest.moc"
