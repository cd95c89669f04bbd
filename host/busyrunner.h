#pragma once

#include <QString>
#include <functional>

class QWidget;

namespace corvane::host {

// Runs work on a thread of its own while a small window says what happens;
// the window cannot be closed, and the call returns when the work is done.
// The work reports through the function it is given (from its own thread).
void runBusy(const QString& title, const std::function<void(const std::function<void(const QString&)>&)>& work,
             QWidget* parent = nullptr);

} // namespace corvane::host
