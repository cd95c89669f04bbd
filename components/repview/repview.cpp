#include "components/repview/repview.h"

#include "components/repview/reportpreview.h"

#include <QApplication>

namespace corvane {

RepView::RepView()
{
    show = [](const ReportDocument& document) {
        // Over the window that asked for the report.
        ReportPreview preview(document, QApplication::activeWindow());
        runner()(preview);
    };
}

std::function<int(QDialog&)>& RepView::runner()
{
    static std::function<int(QDialog&)> run = [](QDialog& dialog) { return dialog.exec(); };
    return run;
}

} // namespace corvane
