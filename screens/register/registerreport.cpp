#include "screens/register/registerreport.h"

#include "core/modbase.h"
#include "core/reportviewer.h"
#include "core/resumenext.h"

namespace corvane::registerreport {

namespace {

const QChar kEsc(27);

qint32 printAlignment(int gridAlignment)
{
    if (gridAlignment == kGridCentre)
        return 1;
    if (gridAlignment == kGridRight)
        return 2;
    return 0;
}

ReportViewer& contextViewer()
{
    if (!modbase().reportViewer)
        throw Failure(err::ObjectNotSet, kSource, QStringLiteral("Object variable or With block variable not set"));
    return *modbase().reportViewer;
}

} // namespace

Columns registerColumns()
{
    return {{90, 260, 100, 170, 110, 160}, {kGridLeft, kGridLeft, kGridLeft, kGridLeft, kGridCentre, kGridCentre}};
}

bool create(const QString& title, const Columns& columns, int rowCount, const CellText& text, ResumeNext& guard)
{
    const int n = int(columns.widths.size());
    qint32 total = 0;
    for (int w : columns.widths)
        total += w;
    QVector<QVariant> values(n);
    QVector<qint16> shorts(n, 0);
    QVector<qint32> longs(n, 0);
    QStringList texts1;
    QStringList texts2;
    for (int i = 0; i < n; ++i) {
        texts1 << QString();
        texts2 << QString();
    }
    bool flag = false;
    QString t1 = QStringLiteral("0"), t2 = t1, t3 = t1, t4 = t1;

    if (n > 0) {
        values[0] = QString(kEsc + QStringLiteral("E") + title + kEsc + QStringLiteral("F"));
        shorts[0] = 78;
        longs[0] = 1;
    }
    MultiSpcJs1(values, shorts, longs, texts1, texts2, flag, t1, t2, t3, t4);

    if (!guard([&] { contextViewer().printtext(QString(kEsc) + QChar(15) + kEsc + QStringLiteral("P")); }))
        return false;
    if (!guard([&] { contextViewer().CreateTable(n, total); }))
        return false;

    for (int i = 0; i < n; ++i) {
        shorts[i] = qint16(qMin(columns.widths.at(i), 32767));
        longs[i] = printAlignment(columns.alignments.value(i));
    }
    const QString ones(n, QLatin1Char('1'));
    const QString zeros(n, QLatin1Char('0'));
    for (int row = 0; row < rowCount; ++row) {
        for (int c = 0; c < n; ++c)
            values[c] = text(row, c);
        const bool heading = row == 0;
        t1 = heading ? ones : zeros; // the heading row, repeated on every page
        t2 = ones;                   // every cell boxed
        t3 = columns.wrap ? ones : zeros;
        t4 = heading ? ones : zeros; // headings bold
        MultiSpcJs1(values, shorts, longs, texts1, texts2, flag, t1, t2, t3, t4);
    }
    return guard([&] { contextViewer().printtext(QString(kEsc) + QChar(18) + kEsc + QStringLiteral("P")); });
}

bool show(const QString& title, const Columns& columns, int rowCount, const CellText& text, ResumeNext& guard)
{
    if (!guard([&] {
            contextViewer().setWinModeReport(true);
            contextViewer().NewReport();
        }))
        return false;
    ResumeNext building(guard.module(), QStringLiteral("CREATEREPORT"));
    if (!create(title, columns, rowCount, text, building))
        return false;
    return guard([&] { contextViewer().ShowReport(); });
}

} // namespace corvane::registerreport
