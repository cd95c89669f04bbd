#pragma once

class QWidget;

namespace corvane {

// Opens the client bank accounts screen for the context's client and year, modally.
void ShowBankDetails(QWidget* owner);

} // namespace corvane
