#include "components/repview/reportpreview.h"
#include "components/repview/repview.h"
#include "core/chooser.h"
#include "component/components.h"
#include "core/modbase.h"
#include "core/objectregistry.h"
#include "core/prompter.h"
#include "support/files.h"
#include "support/pdftext.h"
#include "support/testmain.h"

#include <QAction>
#include <QFile>
#include <QTemporaryDir>

using namespace corvane;

class ReportPreviewTest : public QObject {
    Q_OBJECT

    QTemporaryDir dir;
    std::shared_ptr<ScriptedChooser> files;
    std::shared_ptr<ScriptedPrompter> prompts;

    static void fill(ReportViewer& viewer, int rows)
    {
        viewer.NewReport();
        QVector<QVariant> values{QStringLiteral("Report Title")};
        QVector<qint16> shorts{78};
        QVector<qint32> longs{1};
        QStringList t1, t2;
        bool flag = false;
        QString a = QStringLiteral("0"), b = a, c = a, d = a;
        viewer.WriteToReport(values, shorts, longs, t1, t2, flag, a, b, c, d);
        viewer.CreateTable(2, 0);
        for (int i = 0; i <= rows; ++i) {
            values = {i == 0 ? QStringLiteral("Code") : QStringLiteral("C%1").arg(i),
                      i == 0 ? QStringLiteral("Name") : QStringLiteral("Name, %1").arg(i)};
            shorts = {100, 200};
            longs = {0, 0};
            a = i == 0 ? QStringLiteral("11") : QStringLiteral("00");
            b = QStringLiteral("11");
            c = QStringLiteral("00");
            d = a;
            viewer.WriteToReport(values, shorts, longs, t1, t2, flag, a, b, c, d);
        }
    }

private slots:
    void init()
    {
        files = std::make_shared<ScriptedChooser>();
        prompts = std::make_shared<ScriptedPrompter>();
        modbase().chooser = files;
        modbase().prompter = prompts;
    }

    void viewerIsCreatedByItsClassIdentifier()
    {
        registerDefaultComponents();
        auto viewer = CreateObject<ReportViewer>(kReportViewerClass);
        QVERIFY(std::dynamic_pointer_cast<RepView>(viewer));
        // ShowReport opens the preview with the report's pages
        int pages = 0;
        QString title;
        RepView::runner() = [&](QDialog& dialog) {
            auto& preview = static_cast<ReportPreview&>(dialog);
            preview.show(); // paints the pages
            pages = preview.pageCount();
            title = preview.windowTitle();
            return 0;
        };
        fill(*viewer, 120);
        viewer->ShowReport();
        RepView::runner() = [](QDialog& dialog) { return dialog.exec(); };
        QVERIFY(pages >= 2);
        QCOMPARE(title, QStringLiteral("Print Preview - Report Title"));
    }

    void exports()
    {
        ReportRecorder recorder;
        fill(recorder, 3);
        ReportPreview preview(recorder.document());
        QVERIFY(preview.findChild<QAction*>(QStringLiteral("actExportPdf")));
        QVERIFY(preview.findChild<QAction*>(QStringLiteral("actExportCsv")));

        const QString csv = dir.filePath(QStringLiteral("r.csv"));
        files->then(csv);
        preview.findChild<QAction*>(QStringLiteral("actExportCsv"))->trigger();
        QCOMPARE(test::readFile(csv), QByteArray("Code,Name\r\nC1,\"Name, 1\"\r\nC2,\"Name, 2\"\r\nC3,\"Name, 3\"\r\n"));

        const QString pdf = dir.filePath(QStringLiteral("r.pdf"));
        files->then(pdf);
        preview.findChild<QAction*>(QStringLiteral("actExportPdf"))->trigger();
        QVERIFY(test::pdfText(pdf).contains(QStringLiteral("Report Title")));

        // cancelled: nothing written, nothing said
        files->then(QString());
        QVERIFY(!preview.exportCsv());
        // a folder that does not exist: the user is told
        files->then(QStringLiteral("/nonexistent-dir/r.csv"));
        QVERIFY(!preview.exportCsv());
        files->then(QStringLiteral("/nonexistent-dir/r.pdf"));
        QVERIFY(!preview.exportPdf());
        QCOMPARE(prompts->texts().size(), 2);
        QVERIFY(prompts->texts().first().startsWith(QStringLiteral("The report could not be exported: ")));
    }
};

CORVANE_TEST_CLASS(ReportPreviewTest)
#include "reportpreviewtest.moc"
