#include "core/chooser.h"
#include "core/conversions.h"
#include "core/failure.h"
#include "core/modbase.h"
#include "core/textnumbers.h"
#include "support/testlog.h"
#include "support/testmain.h"

#include <QTemporaryDir>

using namespace corvane;

class ConversionsTest : public QObject {
    Q_OBJECT

    QTemporaryDir appDir_;

private slots:
    void init()
    {
        resetModbase();
        modbase().AppPath = appDir_.path();
        QFile::remove(logFilePath());
        // Today is in the financial year 2010-11.
        modbase().clock = [] { return QDateTime(QDate(2010, 6, 1), QTime(10, 0)); };
    }

    void convertToWord_data()
    {
        QTest::addColumn<QString>("amount");
        QTest::addColumn<QString>("words");
        QTest::addColumn<int>("logged");

        QTest::newRow("zero") << "0" << "Nil" << 0;
        QTest::newRow("one rupee") << "1" << "One Rupee Only" << 0;
        QTest::newRow("one rupee and paisa") << "1.50" << "One Rupee And Fifty Paisa Only" << 0;
        QTest::newRow("ten") << "10" << "Ten Only" << 0;
        QTest::newRow("nineteen") << "19" << "Nineteen Only" << 0;
        QTest::newRow("nineteen in every group") << "191919919"
                                                 << "Nineteen Crore Nineteen Lac Nineteen Thousand Nine Hundred Nineteen Only" << 0;
        QTest::newRow("no And inside hundreds") << "101" << "One Hundred One Only" << 0;
        QTest::newRow("half point") << "12.5" << "Twelve And Fifty Paisa Only" << 0;
        QTest::newRow("five paisa") << "250.05" << "Two Hundred Fifty And Five Paisa Only" << 0;
        QTest::newRow("third decimal dropped") << ".567" << "Fifty Six Paisa" << 0;
        QTest::newRow("point without decimals") << "12." << "Twelve Only" << 0;
        QTest::newRow("teens and tens") << "11020" << "Eleven Thousand Twenty Only" << 0;
        QTest::newRow("nineteen paisa") << "0.19" << "Nineteen Paisa" << 0;
        QTest::newRow("largest with names") << "999999999"
                                            << "Ninety Nine Crore Ninety Nine Lac Ninety Nine Thousand Nine Hundred Ninety Nine Only" << 0;
        QTest::newRow("blanks around") << "  42  " << "Forty Two Only" << 0;

        // One hundred crore and more: each higher group fails, is logged and is dropped.
        QTest::newRow("hundred crore") << "1000000000" << "Nil" << 1;
        QTest::newRow("fifth group dropped")
            << "1234567891" << "Twenty Three Crore Forty Five Lac Sixty Seven Thousand Eight Hundred Ninety One Only" << 1;
        QTest::newRow("forty digits") << QStringLiteral("1234567890").repeated(4)
                                      << "Twenty Three Crore Forty Five Lac Sixty Seven Thousand Eight Hundred Ninety Only" << 16;
        QTest::newRow("only higher groups with words fail") << "10000000000000" << "Nil" << 1;

        // Odd input gives what the steps give, without failing.
        QTest::newRow("empty") << "" << "Nil" << 0;
        QTest::newRow("negative") << "-5" << "Five Only" << 0;
        QTest::newRow("exponent") << "1e5" << "One Hundred Five Only" << 0;
        QTest::newRow("two points") << "12.3.4" << "Twelve And Thirty Paisa Only" << 0;
    }

    void convertToWord()
    {
        QFETCH(QString, amount);
        QFETCH(QString, words);
        QFETCH(int, logged);
        int dropped = -1;
        QCOMPARE(ConvertToWord(amount, &dropped), words);
        QCOMPARE(dropped, logged);
        const QStringList contexts = test::logContexts();
        QCOMPARE(contexts.size(), logged);
        for (const QString& context : contexts)
            QCOMPARE(context, QStringLiteral("CLSMAIN\tCONVERTTOWORD"));
    }

    void validPan_data()
    {
        QTest::addColumn<QString>("pan");
        QTest::addColumn<bool>("valid");

        QTest::newRow("empty") << "" << true;
        QTest::newRow("well formed") << "ABCDE1234F" << true;
        QTest::newRow("ten capitals") << "ABCDEFGHIJ" << true;
        QTest::newRow("digit last") << "ABCDE12345" << false;
        QTest::newRow("nine") << "ABCDE1234" << false;
        QTest::newRow("eleven") << "ABCDE1234FG" << false;
        QTest::newRow("small letters") << "abcde1234f" << false;
        QTest::newRow("small last") << "ABCDE1234f" << false;
        QTest::newRow("digit in letters") << "ABCD11234F" << false;
        QTest::newRow("letter in digits") << "ABCDE123AF" << false;
        QTest::newRow("blank") << "ABCDE1234 " << false;
        QTest::newRow("accented capital") << QStringLiteral("\u00C4BCDE1234F") << false;
        QTest::newRow("full-width digits") << QStringLiteral("ABCDE\uFF11\uFF12\uFF13\uFF14F") << false;
    }

    void validPan()
    {
        QFETCH(QString, pan);
        QFETCH(bool, valid);
        QCOMPARE(ValidPan(pan), valid);
    }

    void convertDate_data()
    {
        QTest::addColumn<QString>("dt");
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("yrBefore");
        QTest::addColumn<int>("tyear");
        QTest::addColumn<QString>("result");
        QTest::addColumn<QString>("yrAfter");
        QTest::addColumn<bool>("logged");

        const QString f = QStringLiteral("dd/MM/yyyy");
        QTest::newRow("points, January") << "5.1.8" << f << "2009" << 0 << "05/01/2008" << "2009" << false;
        QTest::newRow("April takes the year before") << "15/4/8" << f << "2009" << 0 << "15/04/2008" << "2008" << false;
        QTest::newRow("the variable goes back, not to the date") << "15/4/8" << f << "2015" << 0 << "15/04/2008" << "2014" << false;
        QTest::newRow("no such day") << "31/02/2008" << f << "2009" << 0 << "" << "2009" << false;
        QTest::newRow("29 stays in the century") << "12/05/29" << f << "2009" << 0 << "12/05/2029" << "2008" << false;
        QTest::newRow("30 goes back a century") << "12/05/30" << f << "2009" << 0 << "12/05/1930" << "2008" << false;
        QTest::newRow("decade not taken from the year") << "1/1/8" << f << "2015" << 0 << "01/01/2008" << "2015" << false;
        QTest::newRow("four-digit year leaves the variable") << "5-1-2008" << f << "2011" << 0 << "05/01/2008" << "2011" << false;
        QTest::newRow("no year takes the variable") << "5/1" << f << "2009" << 0 << "05/01/2009" << "2009" << false;
        QTest::newRow("no year, April") << "5/4" << f << "2009" << 0 << "05/04/2008" << "2008" << false;
        QTest::newRow("empty variable takes TYear") << "15/4/8" << f << "" << 2009 << "15/04/2008" << "2008" << false;
        QTest::newRow("empty variable, no TYear: today") << "15/1/8" << f << "" << 0 << "15/01/2008" << "2010" << false;
        QTest::newRow("short variable") << "5/1/8" << f << "9" << 0 << "05/01/1998" << "9" << false;
        QTest::newRow("three-digit year, four digits shown") << "5/5" << f << "555" << 0 << "05/05/0554" << "554" << false;
        QTest::newRow("not a leap year") << "29/02/2009" << f << "2009" << 0 << "" << "2009" << false;
        QTest::newRow("empty") << "" << f << "2009" << 0 << "" << "2009" << false;
        QTest::newRow("month first is not read") << "12/31/2008" << f << "2009" << 0 << "" << "2009" << false;
        QTest::newRow("trailing blank") << "5/1/8 " << f << "2009" << 0 << "05/01/2008" << "2009" << false;
        QTest::newRow("dashes in the format") << "5/1/8" << "dd-MM-yyyy" << "2009" << 0 << "05-01-2008" << "2009" << false;
        QTest::newRow("short year format") << "5/1/2008" << "dd/MM/yy" << "2009" << 0 << "05/01/08" << "2009" << false;
        // The third and sixth characters are the format's: a format of another shape spoils the date.
        QTest::newRow("year first format") << "5/1/2008" << "yyyy-MM-dd" << "2009" << 0 << "" << "2009" << false;
        // A year variable that is no number becomes -1: the year -18 cannot be built, and that is logged.
        QTest::newRow("year variable not a number") << "15/4/8" << f << "abc" << 0 << "" << "-1" << true;
        QTest::newRow("format too short for its separators") << "5/1/2008" << "d/M" << "2009" << 0 << "" << "2009" << true;
    }

    void convertDate()
    {
        QFETCH(QString, dt);
        QFETCH(QString, format);
        QFETCH(QString, yrBefore);
        QFETCH(int, tyear);
        QFETCH(QString, result);
        QFETCH(QString, yrAfter);
        QFETCH(bool, logged);
        modbase().TYear = qint16(tyear);
        QString yr = yrBefore;
        QCOMPARE(ConvertDate(dt, format, yr), result);
        QCOMPARE(yr, yrAfter);
        QCOMPARE(test::logContexts(), logged ? QStringList{QStringLiteral("CLSMAIN\tCONVERTDATE")} : QStringList());
    }

    void isDayFirstDate_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("date");

        QTest::newRow("full") << "05/01/2008" << true;
        QTest::newRow("mixed separators") << "5/1-08" << true;
        QTest::newRow("leap day") << "29/02/2008" << true;
        QTest::newRow("no leap day") << "29/02/2009" << false;
        QTest::newRow("day and month") << "1/2" << true;
        QTest::newRow("blanks around") << " 5/1/2008 " << true;
        QTest::newRow("month 13") << "13/13/2008" << false;
        QTest::newRow("day 0") << "0/1/2008" << false;
        QTest::newRow("year first") << "2008/01/05" << false;
        QTest::newRow("points") << "05.01.2008" << false;
        QTest::newRow("four parts") << "5/1/8/9" << false;
        QTest::newRow("empty part") << "5//2008" << false;
        QTest::newRow("letters") << "a/1/2008" << false;
        QTest::newRow("three-digit year before 100") << "5/1/099" << false;
        QTest::newRow("00 is 2000: a leap day") << "29/2/00" << true;
        QTest::newRow("three-digit year") << "5/1/999" << true;
        QTest::newRow("five-digit year") << "5/1/10000" << false;
        QTest::newRow("lone number") << "5" << false;
    }

    void isDayFirstDate()
    {
        QFETCH(QString, text);
        QFETCH(bool, date);
        QCOMPARE(corvane::isDayFirstDate(text, 2010), date);
    }

    void dateSerial_data()
    {
        QTest::addColumn<double>("year");
        QTest::addColumn<double>("month");
        QTest::addColumn<double>("day");
        QTest::addColumn<QDate>("date");

        QTest::newRow("day overflows") << 2008.0 << 2.0 << 31.0 << QDate(2008, 3, 2);
        QTest::newRow("month overflows") << 2008.0 << 13.0 << 1.0 << QDate(2009, 1, 1);
        QTest::newRow("month 0") << 2008.0 << 0.0 << 1.0 << QDate(2007, 12, 1);
        QTest::newRow("day 0") << 2008.0 << 3.0 << 0.0 << QDate(2008, 2, 29);
        QTest::newRow("year 0") << 0.0 << 1.0 << 5.0 << QDate(2000, 1, 5);
        QTest::newRow("year 29") << 29.0 << 1.0 << 1.0 << QDate(2029, 1, 1);
        QTest::newRow("year 30") << 30.0 << 1.0 << 1.0 << QDate(1930, 1, 1);
        QTest::newRow("year 99") << 99.0 << 12.0 << 31.0 << QDate(1999, 12, 31);
        QTest::newRow("year 100") << 100.0 << 1.0 << 1.0 << QDate(100, 1, 1);
        QTest::newRow("year -18") << -18.0 << 1.0 << 1.0 << QDate();
        QTest::newRow("year 99999") << 99999.0 << 1.0 << 1.0 << QDate();
        QTest::newRow("past 9999") << 9999.0 << 13.0 << 1.0 << QDate();
    }

    void dateSerial()
    {
        QFETCH(double, year);
        QFETCH(double, month);
        QFETCH(double, day);
        QFETCH(QDate, date);
        if (date.isValid())
            QCOMPARE(corvane::dateSerial(year, month, day), date);
        else
            QVERIFY_THROWS_EXCEPTION(Failure, corvane::dateSerial(year, month, day));
    }

    void formatDate_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("text");

        QTest::newRow("screens") << "dd/MM/yyyy" << "05/01/2008";
        QTest::newRow("short") << "d/m/yy" << "5/1/08";
        QTest::newRow("names") << "dddd, d mmmm yyyy" << "Saturday, 5 January 2008";
        QTest::newRow("short names") << "ddd MMM" << "Sat Jan";
        QTest::newRow("literal text") << "\"on\" dd \\d" << "on 05 d";
    }

    void formatDate()
    {
        QFETCH(QString, format);
        QFETCH(QString, text);
        QCOMPARE(corvane::formatDate(QDate(2008, 1, 5), format), text);
    }

    // Numbers read from typed text (the bank code box among others): the number at its start, else 0.
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

    void getDirPath_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("path");

        QTest::newRow("chosen") << "/home/clerk/backups" << "/home/clerk/backups";
        QTest::newRow("cancelled") << "" << "";
        QTest::newRow("cut at NUL") << QStringLiteral("/srv/a") + QChar(0) + QStringLiteral("junk") << "/srv/a";
    }

    void getDirPath()
    {
        QFETCH(QString, answer);
        QFETCH(QString, path);
        auto chooser = std::make_shared<ScriptedChooser>();
        chooser->then(answer);
        modbase().chooser = chooser;
        modbase().vTmpPath = QStringLiteral("/tmp/corvane/");
        QCOMPARE(GetDirPath(), path);
        QCOMPARE(chooser->titles(), QStringList{QStringLiteral("/tm")});
        QVERIFY(test::logLines().isEmpty());
    }
};

CORVANE_TEST_CLASS(ConversionsTest)
#include "conversionstest.moc"
