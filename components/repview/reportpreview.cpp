#include "components/repview/reportpreview.h"

#include "core/chooser.h"
#include "core/prompter.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QPainter>
#include <QPrinter>
#include <QProgressDialog>
#include <QRegularExpression>
#include <QSaveFile>
#include <QToolBar>

namespace corvane {

namespace {

// Above this many pages the painting shows its progress.
constexpr int kProgressPages = 20;

} // namespace

ReportPreview::ReportPreview(const ReportDocument& document, QWidget* parent)
    : QPrintPreviewDialog(parent), document_(document), layout_(document_)
{
    setObjectName(QStringLiteral("frmpreview"));
    const QString title = document_.title().simplified();
    setWindowTitle(title.isEmpty() ? QStringLiteral("Print Preview") : QStringLiteral("Print Preview - ") + title);
    printer()->setPageLayout(ReportLayout::defaultPageLayout(document_.landscape));
    printer()->setDocName(title);
    connect(this, &QPrintPreviewDialog::paintRequested, this, &ReportPreview::paint);

    if (auto* toolbar = findChild<QToolBar*>()) {
        toolbar->addSeparator();
        actExportPdf_ = toolbar->addAction(QStringLiteral("Export PDF"));
        actExportPdf_->setObjectName(QStringLiteral("actExportPdf"));
        actExportCsv_ = toolbar->addAction(QStringLiteral("Export CSV"));
        actExportCsv_->setObjectName(QStringLiteral("actExportCsv"));
        connect(actExportPdf_, &QAction::triggered, this, &ReportPreview::exportPdf);
        connect(actExportCsv_, &QAction::triggered, this, &ReportPreview::exportCsv);
    }
    resize(900, 700);
}

ReportPreview::~ReportPreview() = default;

void ReportPreview::paint(QPrinter* target)
{
    const int pages = layout_.paginate(*target, target->pageLayout());
    QPainter painter(target);
    // The pages are painted when the preview first shows, before it is on
    // screen: a long report shows its progress over the window that asked for it.
    std::unique_ptr<QProgressDialog> progress;
    if (pages > kProgressPages) {
        progress = std::make_unique<QProgressDialog>(QStringLiteral("Laying out %1 pages…").arg(pages), QString(), 0,
                                                     pages, isVisible() ? this : parentWidget());
        progress->setWindowModality(Qt::ApplicationModal);
        progress->setMinimumDuration(300);
    }
    layout_.print(*target, painter, [&](int done, int) {
        if (progress)
            progress->setValue(done);
        return true;
    });
}

QString ReportPreview::suggestedName(const QString& suffix) const
{
    QString name = document_.title().simplified();
    name.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9()._-]+")), QStringLiteral(" "));
    name = name.simplified();
    if (name.isEmpty())
        name = QStringLiteral("report");
    return QDir::home().filePath(name + suffix);
}

bool ReportPreview::exportPdf()
{
    const QString path = chooser().chooseSaveFile(QStringLiteral("Export PDF"), suggestedName(QStringLiteral(".pdf")),
                                                  QStringLiteral("PDF files (*.pdf)"));
    if (path.isEmpty())
        return false;
    QString error;
    if (!ReportLayout::writePdf(document_, path, &error)) {
        prompter().inform(QStringLiteral("The report could not be exported: ") + error, Prompter::Icon::Exclamation);
        return false;
    }
    return true;
}

bool ReportPreview::exportCsv()
{
    const QString path = chooser().chooseSaveFile(QStringLiteral("Export CSV"), suggestedName(QStringLiteral(".csv")),
                                                  QStringLiteral("CSV files (*.csv)"));
    if (path.isEmpty())
        return false;
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        document_.writeCsv(file);
        if (file.commit())
            return true;
    }
    prompter().inform(QStringLiteral("The report could not be exported: ") + file.errorString(),
                      Prompter::Icon::Exclamation);
    return false;
}

} // namespace corvane
