#pragma once

#include <QString>

namespace corvane {

// "2008" -> "2008-09".
QString assessmentYearText(int year);

// A screen's caption followed by whose data it shows: the context's client
// code and name and the assessment year ("Bank Details — A001 SHARMA & CO —
// 2008-09"). Without a name on record, the code alone.
QString clientCaption(const QString& caption);

} // namespace corvane
