#include "core/reportviewer.h"

#include "core/modbase.h"
#include "core/resumenext.h"

namespace corvane {

void MultiSpcJs1(QVector<QVariant>& values, QVector<qint16>& shorts, QVector<qint32>& longs,
                 QStringList& texts1, QStringList& texts2, bool& flag, QString& text1, QString& text2,
                 QString& text3, QString& text4)
{
    ResumeNext guard(QStringLiteral("MODBASE"), QStringLiteral("MULTISPCJS1"));
    guard([&] {
        auto viewer = modbase().reportViewer;
        if (!viewer)
            throw Failure(err::ObjectNotSet, kSource, QStringLiteral("Object variable or With block variable not set"));
        viewer->WriteToReport(values, shorts, longs, texts1, texts2, flag, text1, text2, text3, text4);
    });
}

} // namespace corvane
