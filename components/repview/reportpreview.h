#pragma once

#include "components/repview/reportdocument.h"
#include "components/repview/reportlayout.h"

#include <QPrintPreviewDialog>

class QAction;
class QPrinter;

namespace corvane {

// The print preview of a report: the platform's preview (zoom, page set-up,
// print) with two more actions, Export PDF and Export CSV.
class ReportPreview : public QPrintPreviewDialog {
    Q_OBJECT
public:
    explicit ReportPreview(const ReportDocument& document, QWidget* parent = nullptr);
    ~ReportPreview() override;

    int pageCount() const { return layout_.pageCount(); }

    // The file chosen through the context's chooser; false when nothing was written.
    bool exportPdf();
    bool exportCsv();

private:
    void paint(QPrinter* printer);
    QString suggestedName(const QString& suffix) const;

    ReportDocument document_;
    ReportLayout layout_;
    QAction* actExportPdf_ = nullptr;
    QAction* actExportCsv_ = nullptr;
};

} // namespace corvane
