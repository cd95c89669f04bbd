#include "reportlines.h"

#include "components/repview/reportpreview.h"
#include "components/repview/repview.h"
#include "core/chooser.h"
#include "component/components.h"
#include "core/modbase.h"
#include "core/objectregistry.h"
#include "core/prompter.h"
#include "support/files.h"
#include "support/formdriver.h"
#include "support/pdftext.h"
#include "support/testmain.h"

#include <QAction>
#include <QTemporaryDir>

using namespace corvane;
using namespace corvane::test;

class ReportPreviewTest : public QObject {
    Q_OBJECT

    QTemporaryDir dir;
    std::shared_ptr<ScriptedChooser> files;
    std::shared_ptr<ScriptedPrompter> prompts;

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
        table(*viewer, 120, QStringLiteral("Report Title"));
        viewer->ShowReport();
        RepView::runner() = [](QDialog& dialog) { return dialog.exec(); };
        QVERIFY(pages >= 2);
        QCOMPARE(title, QStringLiteral("Print Preview - Report Title"));
    }

    void exports()
    {
        ReportRecorder recorder;
        table(recorder, 3, QStringLiteral("Report Title"));
        ReportPreview preview(recorder.document());
        const QString csv = dir.filePath(QStringLiteral("r.csv"));
        files->then(csv);
        child<QAction>(preview, "actExportCsv")->trigger();
        QCOMPARE(test::readFile(csv), QByteArray("Code,Name,Amount\r\nC1,\"Client, 1\",10\r\nC2,\"Client, 2\",20\r\nC3,\"Client, 3\",30\r\n"));

        const QString pdf = dir.filePath(QStringLiteral("r.pdf"));
        files->then(pdf);
        child<QAction>(preview, "actExportPdf")->trigger();
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
        QVERIFY(prompts->texts().last().contains(QStringLiteral("/nonexistent-dir/r.pdf")));
    }
};

CORVANE_TEST_CLASS(ReportPreviewTest)
#include "reportpreviewtest.moc"
