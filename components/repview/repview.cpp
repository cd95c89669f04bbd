#include "components/repview/repview.h"

#include "components/repview/reportpreview.h"

namespace corvane {

RepView::RepView()
{
    show = [](const ReportDocument& document) {
        ReportPreview preview(document);
        runner()(preview);
    };
}

std::function<int(QDialog&)>& RepView::runner()
{
    static std::function<int(QDialog&)> run = [](QDialog& dialog) { return dialog.exec(); };
    return run;
}

} // namespace corvane
