#include "components/bankinfo/csvreader.h"
#include "support/testmain.h"

#include <QBuffer>

using namespace corvane::bankinfo;

class CsvReaderTest : public QObject {
    Q_OBJECT
private slots:
    void split_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QStringList>("fields");
        QTest::addColumn<bool>("unclosed");
        QTest::newRow("plain") << "A,B,C" << QStringList{"A", "B", "C"} << false;
        QTest::newRow("values are trimmed") << " A , B ,C " << QStringList{"A", "B", "C"} << false;
        QTest::newRow("empty values") << "A,,C," << QStringList{"A", "", "C", ""} << false;
        QTest::newRow("quoted comma") << "\"FORT, MUMBAI\",X" << QStringList{"FORT, MUMBAI", "X"} << false;
        QTest::newRow("doubled quote inside quotes") << "\"SAI \"\"A\"\" BANK\",X" << QStringList{"SAI \"A\" BANK", "X"} << false;
        QTest::newRow("blank before the opening quote") << "A,  \"B,C\"" << QStringList{"A", "B,C"} << false;
        QTest::newRow("quote inside an unquoted value stays") << "O'BRIEN,5\"" << QStringList{"O'BRIEN", "5\""} << false;
        QTest::newRow("unclosed quote") << "A,\"B,C" << QStringList{"A", "B,C"} << true;
    }
    void split()
    {
        QFETCH(QString, line);
        QFETCH(QStringList, fields);
        QFETCH(bool, unclosed);
        bool open = false;
        QCOMPARE(CsvReader::split(line, &open), fields);
        QCOMPARE(open, unclosed);
    }

    void lines_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QStringList>("lines"); // fields joined by '|', "(blank)" for a blank line
        QTest::newRow("byte-order mark and Windows line ends")
            << QByteArray("\xEF\xBB\xBF" "BANK,IFSC\r\nSBI,SBIN0000001\r\n")
            << QStringList{"BANK|IFSC", "SBI|SBIN0000001"};
        QTest::newRow("last line without line end") << QByteArray("A,B\nC,D") << QStringList{"A|B", "C|D"};
        QTest::newRow("blank lines are told apart") << QByteArray("A\n\n  \r\nB\n") << QStringList{"A", "(blank)", "(blank)", "B"};
        QTest::newRow("UTF-8 names") << QByteArray("BANK\nSAHAKARI BANK \xE0\xA4\xAC\n")
                                     << QStringList{"BANK", QStringLiteral("SAHAKARI BANK \u092C")};
        QTest::newRow("a Latin-1 line") << QByteArray("BANK\nCAF\xC9 BANK\n") << QStringList{"BANK", QStringLiteral("CAF\u00C9 BANK")};
    }
    void lines()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QStringList, lines);
        QBuffer buffer(&bytes);
        QVERIFY(buffer.open(QIODevice::ReadOnly));
        CsvReader reader(buffer);
        QStringList read;
        while (reader.next())
            read << (reader.blank() ? QStringLiteral("(blank)") : reader.fields().join(QLatin1Char('|')));
        QCOMPARE(read, lines);
        QCOMPARE(reader.lineNumber(), int(lines.size()));
        QCOMPARE(reader.bytesRead(), qint64(bytes.size()));
    }
};

CORVANE_TEST_CLASS(CsvReaderTest)
#include "csvreadertest.moc"
