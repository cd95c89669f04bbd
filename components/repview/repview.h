#pragma once

#include "components/repview/reportdocument.h"

#include <functional>

class QDialog;

namespace corvane {

// Quillview.RepView: the report viewer the component creates at start-up.
// ShowReport opens the paged print preview of the report, modally.
class RepView : public ReportRecorder {
public:
    RepView();

    // Runs the preview dialog; tests replace it to look at the dialog without a loop.
    static std::function<int(QDialog&)>& runner();
};

} // namespace corvane
