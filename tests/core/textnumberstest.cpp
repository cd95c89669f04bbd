#include "core/textnumbers.h"
#include "support/testmain.h"

using namespace corvane;

// Numbers read from typed text (the bank code box among others): the number at its start, else 0.
class ValTest : public QObject {
    Q_OBJECT
private slots:
    void val_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("sql");
        QTest::newRow("digits") << "42" << "42";
        QTest::newRow("blanks around and inside") << "  1 2 " << "12";
        QTest::newRow("letters end the number") << "12AB3" << "12";
        QTest::newRow("no number") << "ABC" << "0";
        QTest::newRow("empty") << "" << "0";
        QTest::newRow("sign") << "-7" << "-7";
        QTest::newRow("decimal") << "12.5" << "12.5";
        QTest::newRow("second point ends it") << "1.2.3" << "1.2";
        QTest::newRow("exponent") << "1e3" << "1000";
        QTest::newRow("a lone e is a letter") << "5e" << "5";
        QTest::newRow("a quote cannot reach the statement") << "1' or '1'='1" << "1";
    }
    void val()
    {
        QFETCH(QString, text);
        QFETCH(QString, sql);
        QCOMPARE(numberText(valueOf(text)), sql);
    }
};

CORVANE_TEST_CLASS(ValTest)
#include "textnumberstest.moc"
