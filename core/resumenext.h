#pragma once

#include "core/failure.h"

#include <QString>
#include <exception>
#include <utility>

namespace corvane {

// "On error resume next" with a handler: each statement of a procedure runs
// through the guard; a failure sets the error context to module TAB procedure,
// appends one log line and lets the procedure go on with its next statement.
//
//   ResumeNext guard("CLSMAIN", "CONVERTDATE");
//   guard([&] { ... });
//   guard([&] { ... });
class ResumeNext {
public:
    enum class Mode { Logged, Silent };

    ResumeNext(QString module, QString procedure, Mode mode = Mode::Logged)
        : module_(std::move(module)), procedure_(std::move(procedure)), mode_(mode) {}

    // Runs one statement; returns false when it failed.
    template <typename Statement>
    bool operator()(Statement&& statement)
    {
        try {
            std::forward<Statement>(statement)();
            return true;
        } catch (const Failure& failure) {
            handle(failure);
        } catch (const std::exception& e) {
            handle(Failure(err::InvalidCall, kSource, QString::fromLocal8Bit(e.what())));
        }
        return false;
    }

    int failures() const { return failures_; }
    const QString& module() const { return module_; }
    const QString& procedure() const { return procedure_; }

private:
    void handle(const Failure& failure);

    QString module_;
    QString procedure_;
    Mode mode_;
    int failures_ = 0;
};

// The same policy without a log line, for the members that skip failures silently.
inline ResumeNext silentGuard(const QString& module = QStringLiteral("CLSMAIN"))
{
    return ResumeNext(module, QString(), ResumeNext::Mode::Silent);
}

} // namespace corvane
