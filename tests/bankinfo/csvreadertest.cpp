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
        QTest::newRow("values are trimmed") << " A , B ,C " << QStringList{"A", "B", "C"} << false;
        QTest::newRow("empty values") << "A,,C," << QStringList{"A", "", "C", ""} << false;
        QTest::newRow("quoted comma") << "\"FORT, MUMBAI\",X" << QStringList{"FORT, MUMBAI", "X"} << false;
        QTest::newRow("doubled quote inside quotes") << "\"SAI \"\"A\"\" BANK\",X" << QStringList{"SAI \"A\" BANK", "X"} << false;
        QTest::newRow("quote inside an unquoted value stays") << "O'BRIEN,5\"" << QStringList{"O'BRIEN", "5\""} << false;
        QTest::newRow("unclosed quote") << "A,\"B,C" << QStringList{"A", "B,C"} << true;
        QTest::newRow("blanks inside quotes stay") << "\"  A  \", B" << QStringList{"  A  ", "B"} << false;
        QTest::newRow("blanks around quotes go") << "  \" A\"  ,B" << QStringList{" A", "B"} << false;
        QTest::newRow("empty quoted value") << "\"\",B" << QStringList{"", "B"} << false;
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

    void records_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QStringList>("records"); // fields joined by '|', "(blank)" for a blank line
        QTest::addColumn<QList<int>>("firstLines");
        QTest::addColumn<bool>("unclosed");       // of the last record
        QTest::newRow("byte-order mark and Windows line ends")
            << QByteArray("\xEF\xBB\xBF" "BANK,IFSC\r\nSBI,SBIN0000001\r\n")
            << QStringList{"BANK|IFSC", "SBI|SBIN0000001"} << QList<int>{1, 2} << false;
        QTest::newRow("last line without line end") << QByteArray("A,B\nC,D") << QStringList{"A|B", "C|D"} << QList<int>{1, 2} << false;
        QTest::newRow("blank lines are told apart")
            << QByteArray("A\n\n  \r\nB\n") << QStringList{"A", "(blank)", "(blank)", "B"} << QList<int>{1, 2, 3, 4} << false;
        QTest::newRow("UTF-8 names") << QByteArray("BANK\nSAHAKARI BANK \xE0\xA4\xAC\n")
                                     << QStringList{"BANK", QStringLiteral("SAHAKARI BANK \u092C")} << QList<int>{1, 2} << false;
        QTest::newRow("a Latin-1 line")
            << QByteArray("BANK\nCAF\xC9 BANK\n") << QStringList{"BANK", QStringLiteral("CAF\u00C9 BANK")} << QList<int>{1, 2} << false;
        QTest::newRow("a line break in quotes")
            << QByteArray("A,\"FORT\nMUMBAI\",C\nD,E,F\n") << QStringList{"A|FORT\nMUMBAI|C", "D|E|F"} << QList<int>{1, 3} << false;
        QTest::newRow("Windows line break in quotes")
            << QByteArray("A,\"X\r\nY\"\r\nB\r\n") << QStringList{"A|X\nY", "B"} << QList<int>{1, 3} << false;
        QTest::newRow("a quoted value over three lines, last record")
            << QByteArray("\"1\n2\n3\"") << QStringList{"1\n2\n3"} << QList<int>{1} << false;
        QTest::newRow("a quote left open to the end")
            << QByteArray("A\n\"B,C\nD,E\n") << QStringList{"A", "B,C\nD,E"} << QList<int>{1, 2} << true;
    }
    void records()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QStringList, records);
        QFETCH(QList<int>, firstLines);
        QFETCH(bool, unclosed);
        QBuffer buffer(&bytes);
        QVERIFY(buffer.open(QIODevice::ReadOnly));
        CsvReader reader(buffer);
        QStringList read;
        QList<int> lines;
        while (reader.next()) {
            read << (reader.blank() ? QStringLiteral("(blank)") : reader.fields().join(QLatin1Char('|')));
            lines << reader.firstLine();
        }
        QCOMPARE(read, records);
        QCOMPARE(lines, firstLines);
        QCOMPARE(reader.unclosedQuote(), unclosed);
        QCOMPARE(reader.lineNumber(), int(bytes.count('\n') + !bytes.endsWith('\n')));
        QCOMPARE(reader.bytesRead(), qint64(bytes.size()));
    }

    void aStrayQuoteSwallowsAtMostOneRecordLength()
    {
        QByteArray bytes("\"stray\n");
        const QByteArray line("0123456789,0123456789\n");
        while (bytes.size() < 2 * CsvReader::kMaxRecordBytes)
            bytes += line;
        QBuffer buffer(&bytes);
        QVERIFY(buffer.open(QIODevice::ReadOnly));
        CsvReader reader(buffer);
        QVERIFY(reader.next());
        QVERIFY(reader.unclosedQuote());
        QVERIFY(reader.bytesRead() <= CsvReader::kMaxRecordBytes + line.size() + 7);
        QVERIFY(reader.next());
        QCOMPARE(reader.fields(), (QStringList{"0123456789", "0123456789"}));
    }
};

CORVANE_TEST_CLASS(CsvReaderTest)
#include "csvreadertest.moc"
