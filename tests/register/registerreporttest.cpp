#include "registertestsupport.h"

#include "components/repview/reportdocument.h"
#include "components/repview/reportlayout.h"
#include "core/resumenext.h"
#include "screens/register/registerreport.h"
#include "support/pdftext.h"
#include "support/testdatabase.h"
#include "support/testlog.h"
#include "support/testmain.h"

#include <QTemporaryDir>

using namespace corvane;
using namespace corvane::test;
using namespace corvane::returnregister;

class RegisterReportTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestDatabase> db;
    std::shared_ptr<ReportRecorder> viewer;
    QTemporaryDir dir;
    int shown = 0;

    bool build(const QString& title, const QVector<Row>& rows)
    {
        ResumeNext guard(QStringLiteral("Pending"), QStringLiteral("DOS_CLICK"));
        return registerreport::show(
            title, registerreport::registerColumns(), int(rows.size()) + 1,
            [&](int row, int column) {
                return row == 0 ? headings().value(column)
                                : (column == Status ? statusName(rows.at(row - 1)[Status]) : rows.at(row - 1)[column]);
            },
            guard);
    }

private slots:
    void initTestCase() { db = std::make_unique<TestDatabase>(QStringLiteral("regreport")); }
    void cleanupTestCase() { db.reset(); }
    void init()
    {
        db->startAfresh({QStringLiteral("FBT_Info"), QStringLiteral("FBT_AddInfo")});
        viewer = std::make_shared<ReportRecorder>();
        shown = 0;
        viewer->show = [this](const ReportDocument&) { ++shown; };
        modbase().reportViewer = viewer;
    }

    void emptyRegisterGivesTitleAndHeadingsOnly()
    {
        QVERIFY(build(QStringLiteral("List of Pending Returns for the Assessment Year 2008-09"), {}));
        QCOMPARE(shown, 1);
        const ReportDocument& doc = viewer->document();
        QCOMPARE(doc.lines.size(), 2);
        QCOMPARE(doc.title(), QStringLiteral("List of Pending Returns for the Assessment Year 2008-09"));
        QVERIFY(doc.lines.at(1).heading);
        QStringList cells;
        for (const ReportCell& c : doc.lines.at(1).cells)
            cells << c.text;
        QCOMPARE(cells, headings()); // six columns: the hidden ones never reach the report
        QCOMPARE(doc.tableColumns, 6);
        QCOMPARE(doc.lines.at(1).cells.at(FilingDate).align, ReportCell::Centre);
        QCOMPARE(doc.lines.at(1).cells.at(Name).align, ReportCell::Left);
        QVERIFY(doc.lines.at(1).condensed);
    }

    void pdfOfASmallRegisterHoldsTitleAndEveryRow()
    {
        insertClient(**db, QStringLiteral("A1"), QStringLiteral("Alpha Traders"), QStringLiteral("ABCDE1234F"), QStringLiteral("16"));
        insertClient(**db, QStringLiteral("B2"), QStringLiteral("Beta & Co"), QString(), QStringLiteral("14"));
        insertClient(**db, QStringLiteral("C3"), QStringLiteral("Gamma"), QStringLiteral("PQRST9876Z"), QStringLiteral("1"));
        insertFiling(**db, QStringLiteral("A1"), 2008, QStringLiteral("15/07/2008"), QStringLiteral("ACK123"), QStringLiteral("todate"));
        const QVector<Row> rows = load(**db, 2008);
        const QString title = heading(Returns::All, QStringLiteral("2008-09"), {});
        QVERIFY(build(title, rows));

        const QString path = dir.filePath(QStringLiteral("register.pdf"));
        QString error;
        QVERIFY2(ReportLayout::writePdf(viewer->document(), path, &error), qPrintable(error));
        const QString text = pdfText(path);
        QVERIFY2(!text.isNull(), "pdftotext could not read the file");
        QVERIFY(text.contains(title));
        QVERIFY(text.contains(QStringLiteral("Acknowledgement No.")));
        const QStringList lines = text.split(QLatin1Char('\n'));
        const auto lineWith = [&](const QString& code) {
            for (const QString& l : lines)
                if (l.simplified().startsWith(code + QLatin1Char(' ')))
                    return l.simplified();
            return QString();
        };
        QCOMPARE(lineWith(QStringLiteral("A1")),
                 QStringLiteral("A1 Alpha Traders ABCDE1234F Private Limited Company 15/07/2008 ACK123"));
        QCOMPARE(lineWith(QStringLiteral("B2")), QStringLiteral("B2 Beta & Co 14"));
        QCOMPARE(lineWith(QStringLiteral("C3")), QStringLiteral("C3 Gamma PQRST9876Z HUF"));
        QVERIFY(!text.contains(QStringLiteral("todate"))); // hidden columns stay out
        QVERIFY(text.contains(QStringLiteral("Page 1 of 1")));
    }

    void withoutViewerNothingIsShownAndTheFailureIsLogged()
    {
        modbase().reportViewer.reset();
        QVERIFY(!build(QStringLiteral("T"), {}));
        QCOMPARE(shown, 0);
        QVERIFY(logContexts().contains(QStringLiteral("Pending\tDOS_CLICK")));
    }
};

CORVANE_TEST_CLASS(RegisterReportTest)
#include "registerreporttest.moc"
