#include "reportlines.h"

#include "components/repview/reportlayout.h"
#include "support/pdftext.h"
#include "support/testmain.h"

#include <QPdfWriter>
#include <QTemporaryDir>

using namespace corvane;
using namespace corvane::test;


class ReportDocumentTest : public QObject {
    Q_OBJECT

    QTemporaryDir dir;

private slots:
    void printerSequencesBecomeFormatting()
    {
        ReportRecorder viewer;
        table(viewer, 2, QStringLiteral("List of All Clients"));
        const ReportDocument& doc = viewer.document();
        QCOMPARE(doc.lines.size(), 4);
        const ReportLine& title = doc.lines.at(0);
        QVERIFY(!title.inTable);
        QVERIFY(!title.condensed);
        QCOMPARE(title.cells.first().text, QStringLiteral("List of All Clients")); // no escape characters left
        QVERIFY(title.cells.first().has(ReportCell::Bold));
        QCOMPARE(title.cells.first().align, ReportCell::Centre);
        QCOMPARE(doc.title(), QStringLiteral("List of All Clients"));
        const ReportLine& heading = doc.lines.at(1);
        QVERIFY(heading.inTable && heading.heading && heading.condensed);
        QVERIFY(heading.cells.at(0).has(ReportCell::Bold));
        const ReportLine& data = doc.lines.at(2);
        QVERIFY(data.inTable && !data.heading && data.condensed);
        QVERIFY(!data.cells.at(0).has(ReportCell::Bold));
        QVERIFY(data.cells.at(0).has(ReportCell::Border));
        QCOMPARE(data.cells.at(2).align, ReportCell::Right);
        QCOMPARE(doc.tableColumns, 3);
        QCOMPARE(doc.tableWidth, 300);
        // Condensed print ends after the table.
        viewer.printtext(QStringLiteral("After"));
        QVERIFY(!viewer.document().lines.last().condensed);
        // A new report starts empty and uncondensed.
        viewer.NewReport();
        QVERIFY(viewer.document().lines.isEmpty());
    }

    void boldSequenceStaysInItsCell()
    {
        ReportRecorder viewer;
        viewer.NewReport();
        viewer.CreateTable(2, 0);
        line(viewer, {kEsc + QStringLiteral("E") + QStringLiteral("Bold"), QStringLiteral("Plain")}, QStringLiteral("00"));
        const ReportLine& l = viewer.document().lines.first();
        QVERIFY(l.cells.at(0).has(ReportCell::Bold));
        QVERIFY(!l.cells.at(1).has(ReportCell::Bold));
        QCOMPARE(l.cells.at(0).text, QStringLiteral("Bold"));
    }

    void wrappedColumnKeepsItsWordsWhole()
    {
        // GIVEN a wrapped table whose caller gave the PAN a sliver beside a very wide address
        ReportRecorder viewer;
        viewer.NewReport();
        viewer.CreateTable(3, 0);
        const QString address = QStringLiteral("UNIT 4, KAMALA MILLS COMPOUND, LOWER PAREL, ").repeated(5);
        line(viewer, {"Code", "PAN", "Address"}, QStringLiteral("111"), {40, 10, 900}, {}, false, QStringLiteral("111"));
        line(viewer, {"A001", "AABCA1234K", address}, QStringLiteral("000"), {40, 10, 900}, {}, false, QStringLiteral("111"));
        // WHEN it is written as PDF
        const QString path = dir.filePath(QStringLiteral("wrapped.pdf"));
        QVERIFY(ReportLayout::writePdf(viewer.document(), path));
        // THEN the PAN ends before the address on its line begins
        const QVector<test::PdfWord> words = test::pdfWords(path);
        const auto pan = std::find_if(words.begin(), words.end(), [](const auto& w) { return w.text == "AABCA1234K"; });
        QVERIFY(pan != words.end());
        const auto next = std::find_if(words.begin(), words.end(),
                                       [&](const auto& w) { return w.text == "UNIT" && qAbs(w.top - pan->top) < 1; });
        QVERIFY(next != words.end());
        QVERIFY2(pan->right <= next->left, qPrintable(QStringLiteral("%1 > %2").arg(pan->right).arg(next->left)));
    }

    void headingRepeatsOnEveryPage()
    {
        ReportRecorder viewer;
        table(viewer, 400);
        QPdfWriter writer(dir.filePath(QStringLiteral("probe.pdf")));
        writer.setResolution(300);
        ReportLayout layout(viewer.document());
        const int pages = layout.paginate(writer, ReportLayout::defaultPageLayout(false));
        QVERIFY2(pages > 2, qPrintable(QString::number(pages)));

        const QString path = dir.filePath(QStringLiteral("long.pdf"));
        QVERIFY(ReportLayout::writePdf(viewer.document(), path));
        const QStringList pageTexts = test::pdfText(path).split(QChar(12), Qt::SkipEmptyParts);
        QCOMPARE(pageTexts.size(), pages);
        QVERIFY(pageTexts.first().contains(QStringLiteral("Title")));
        for (int p = 0; p < pages; ++p) {
            QVERIFY2(pageTexts.at(p).contains(QStringLiteral("Code")), qPrintable(QString::number(p)));
            QVERIFY(pageTexts.at(p).contains(QStringLiteral("Page %1 of %2").arg(p + 1).arg(pages)));
        }
        QVERIFY(!pageTexts.at(1).contains(QStringLiteral("Title")));
        // every row once, in order
        const QString all = pageTexts.join(QString());
        int from = 0;
        for (int i = 1; i <= 400; ++i) {
            const int at = int(all.indexOf(QStringLiteral("Client, %1 ").arg(i), from));
            QVERIFY2(at >= 0, qPrintable(QStringLiteral("Client, %1").arg(i)));
            from = at;
        }
    }

    void pageBreakFlagStartsAPage()
    {
        ReportRecorder viewer;
        viewer.NewReport();
        viewer.CreateTable(1, 0);
        line(viewer, {"H"}, QStringLiteral("1"));
        line(viewer, {"one"}, QStringLiteral("0"));
        line(viewer, {"two"}, QStringLiteral("0"), {}, {}, true);
        QPdfWriter writer(dir.filePath(QStringLiteral("break.pdf")));
        ReportLayout layout(viewer.document());
        QCOMPARE(layout.paginate(writer, ReportLayout::defaultPageLayout(false)), 2);
    }

    void wrappedCellsMakeTallerRows()
    {
        QPdfWriter writer(dir.filePath(QStringLiteral("wrap.pdf")));
        QString firstCell;
        // The pages of 60 rows whose first cell is this.
        auto pages = [&](const QString& cell) {
            ReportRecorder viewer;
            viewer.NewReport();
            viewer.CreateTable(2, 0);
            line(viewer, {"Nature", "Other"}, QStringLiteral("11"));
            for (int i = 0; i < 60; ++i)
                line(viewer, {cell, QStringLiteral("x")}, QStringLiteral("00"));
            firstCell = viewer.document().lines.at(1).cells.at(0).text;
            return ReportLayout(viewer.document()).paginate(writer, ReportLayout::defaultPageLayout(false));
        };
        const int tall = pages(QStringLiteral("Trading\r\nManufacturing\r\nServices"));
        QVERIFY(firstCell.contains(QLatin1Char('\n')));
        QVERIFY(tall > pages(QStringLiteral("Trading")));
    }

    void wideReportIsLandscapeOnce()
    {
        ReportRecorder viewer;
        bool landscape = false;
        viewer.show = [&](const ReportDocument& doc) { landscape = doc.landscape; };
        viewer.setsetcol130(true);
        viewer.NewReport();
        viewer.ShowReport();
        QVERIFY(landscape);
        viewer.NewReport();
        viewer.ShowReport();
        QVERIFY(!landscape);
    }
};

CORVANE_TEST_CLASS(ReportDocumentTest)
#include "reportdocumenttest.moc"
