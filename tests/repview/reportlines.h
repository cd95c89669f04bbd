#pragma once

#include "components/repview/reportdocument.h"

#include <QStringList>

namespace corvane::test {

inline const QChar kEsc(27);

// One line through the viewer, as a report screen writes it.
inline void line(ReportViewer& viewer, const QStringList& cells, const QString& headingFlags, const QVector<qint16>& widths = {},
                 const QVector<qint32>& aligns = {}, bool pageBreak = false, const QString& wrap = QString())
{
    QVector<QVariant> values;
    for (const QString& c : cells)
        values << c;
    QVector<qint16> shorts = widths.isEmpty() ? QVector<qint16>(cells.size(), 100) : widths;
    QVector<qint32> longs = aligns.isEmpty() ? QVector<qint32>(cells.size(), 0) : aligns;
    QStringList texts1, texts2;
    QString t1 = headingFlags, t2 = QString(cells.size(), QLatin1Char('1')), t3 = wrap, t4 = headingFlags;
    viewer.WriteToReport(values, shorts, longs, texts1, texts2, pageBreak, t1, t2, t3, t4);
}

// A bold title, then in condensed print a table of Code, Name ("Client, N") and a right-aligned Amount.
inline void table(ReportViewer& viewer, int rows, const QString& title = QStringLiteral("Title"))
{
    viewer.NewReport();
    QVector<QVariant> values{kEsc + QStringLiteral("E") + title + kEsc + QStringLiteral("F")};
    QVector<qint16> shorts{78};
    QVector<qint32> longs{1};
    QStringList a, b;
    bool flag = false;
    QString zero = QStringLiteral("0"), z2 = zero, z3 = zero, z4 = zero;
    viewer.WriteToReport(values, shorts, longs, a, b, flag, zero, z2, z3, z4);
    viewer.printtext(QString(kEsc) + QChar(15) + kEsc + QStringLiteral("P"));
    viewer.CreateTable(3, 300);
    line(viewer, {"Code", "Name", "Amount"}, QStringLiteral("111"));
    for (int i = 1; i <= rows; ++i)
        line(viewer, {QStringLiteral("C%1").arg(i), QStringLiteral("Client, %1").arg(i), QString::number(i * 10)},
             QStringLiteral("000"), {}, {0, 0, 2});
    viewer.printtext(QString(kEsc) + QChar(18) + kEsc + QStringLiteral("P"));
}

} // namespace corvane::test
