#pragma once

#include "core/objectregistry.h"

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

namespace corvane {

inline const QString kReportViewerClass = QStringLiteral("Quillview.RepView");

// The report viewer that the report screens hand their content to. The
// meaning of the ten arguments is the viewer's own (see components/repview).
class ReportViewer : public Component {
public:
    virtual void WriteToReport(QVector<QVariant>& values, QVector<qint16>& shorts, QVector<qint32>& longs,
                               QStringList& texts1, QStringList& texts2, bool& flag, QString& text1,
                               QString& text2, QString& text3, QString& text4) = 0;
};

// Hands the ten arguments to the viewer created at start-up; logged as MODBASE / MULTISPCJS1.
void MultiSpcJs1(QVector<QVariant>& values, QVector<qint16>& shorts, QVector<qint32>& longs,
                 QStringList& texts1, QStringList& texts2, bool& flag, QString& text1, QString& text2,
                 QString& text3, QString& text4);

} // namespace corvane
