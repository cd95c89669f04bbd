#pragma once

#include "core/failure.h"
#include "core/resumenext.h"

#include <QString>
#include <exception>

namespace corvane::host {

// Module name of the host's lines in FBTLogger.log.
inline const QString kHostModule = QStringLiteral("FBT");

// Runs work and returns why it failed, or empty text. Used where a failure
// must reach the user as a message; with a procedure name it is logged too.
template <typename Work>
QString failureText(Work&& work, const QString& procedure = QString())
{
    QString reason;
    ResumeNext guard(kHostModule, procedure, procedure.isEmpty() ? ResumeNext::Mode::Silent : ResumeNext::Mode::Logged);
    guard([&] {
        try {
            work();
        } catch (const Failure& f) {
            reason = f.description().isEmpty() ? QStringLiteral("error %1").arg(f.number()) : f.description();
            throw;
        } catch (const std::exception& e) {
            reason = QString::fromLocal8Bit(e.what());
            throw;
        }
    });
    return reason;
}

} // namespace corvane::host
