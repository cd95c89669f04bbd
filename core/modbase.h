#pragma once

#include "core/failure.h"

#include <QDateTime>
#include <QString>
#include <functional>
#include <memory>
#include <optional>

namespace corvane {

class Connection;     // db layer; the context only keeps it
class Prompter;
class Chooser;
class ReportViewer;
class Progress;

// The component context shared by every ClsMain object and every screen.
struct Modbase {
    QString Code;
    qint16 TYear = 0;
    qint16 status = 0;
    QString Cap;
    QString AppPath;
    std::shared_ptr<Connection> CnnObj;
    QString vTmpPath;

    qint32 vDefScreenX = 0;
    qint32 vDefScreenY = 0;
    qint16 vDefScreenFS = 0;
    float vScreenRatX = 1.0f;
    float vScreenRatY = 1.0f;
    float vScreenRatFS = 1.0f;

    // Module name, a tab, and the procedure name, set by a handler before it logs.
    QString ErrContext;
    // The error a handler is dealing with; empty when none is pending.
    std::optional<Failure> currentError;

    qint16 restorationFlag = 0;

    std::shared_ptr<ReportViewer> reportViewer;

    // How the component talks to its user; the application, the CLI and the
    // tests each install their own.
    std::shared_ptr<Prompter> prompter;
    std::shared_ptr<Chooser> chooser;

    // Today's date and time; tests replace it.
    std::function<QDateTime()> clock = [] { return QDateTime::currentDateTime(); };
};

Modbase& modbase();

// Restores a freshly constructed context (for tests and for a host that starts over).
void resetModbase();

} // namespace corvane
