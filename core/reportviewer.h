#pragma once

#include "core/objectregistry.h"

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

namespace corvane {

inline const QString kReportViewerClass = QStringLiteral("Quillview.RepView");

// The report viewer that the report screens hand their content to, member
// by member in this order: the two properties, NewReport, printtext and
// CreateTable, one WriteToReport per line, ShowReport. The meaning of the
// arguments is the viewer's own (see components/repview/reportdocument.h).
class ReportViewer : public Component {
public:
    // A viewer that has no use for a member leaves its default.
    // Graphic output (the default) rather than plain printer text.
    virtual void setWinModeReport(bool) {}
    virtual bool WinModeReport() const { return true; }
    // The next report is a wide one (130 condensed columns).
    virtual void setsetcol130(bool) {}
    virtual bool setcol130() const { return false; }

    virtual void NewReport() {}
    // Raw text into the report stream: printer control sequences or a line of text.
    virtual void printtext(const QString&) {}
    // Opens the table that the following lines go into.
    virtual void CreateTable(qint32 /*columns*/, qint32 /*totalWidth*/) {}
    virtual void WriteToReport(QVector<QVariant>& values, QVector<qint16>& shorts, QVector<qint32>& longs,
                               QStringList& texts1, QStringList& texts2, bool& flag, QString& text1,
                               QString& text2, QString& text3, QString& text4) = 0;
    // Shows the finished report.
    virtual void ShowReport() {}
};

// Hands the ten arguments to the viewer created at start-up; logged as MODBASE / MULTISPCJS1.
void MultiSpcJs1(QVector<QVariant>& values, QVector<qint16>& shorts, QVector<qint32>& longs,
                 QStringList& texts1, QStringList& texts2, bool& flag, QString& text1, QString& text2,
                 QString& text3, QString& text4);

} // namespace corvane
