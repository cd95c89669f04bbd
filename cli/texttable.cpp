#include "cli/texttable.h"

#include <algorithm>

namespace corvane::cli {

namespace {

QStringList linesOf(const QString& cell)
{
    return QString(cell).remove(QLatin1Char('\r')).split(QLatin1Char('\n'));
}

} // namespace

QString textTable(const QStringList& headings, const QVector<QStringList>& rows)
{
    const int columns = int(headings.size());
    QVector<int> widths(columns, 0);
    auto measure = [&](const QStringList& row) {
        for (int c = 0; c < columns; ++c)
            for (const QString& line : linesOf(row.value(c)))
                widths[c] = std::max(widths[c], int(line.size()));
    };
    measure(headings);
    for (const QStringList& row : rows)
        measure(row);

    QString text;
    auto put = [&](const QStringList& row) {
        QVector<QStringList> cells;
        qsizetype height = 1;
        for (int c = 0; c < columns; ++c) {
            cells << linesOf(row.value(c));
            height = std::max(height, cells.back().size());
        }
        for (qsizetype l = 0; l < height; ++l) {
            QString line;
            for (int c = 0; c < columns; ++c) {
                const QString part = cells[c].value(l);
                line += c + 1 < columns ? part.leftJustified(widths[c] + 2) : part;
            }
            while (line.endsWith(QLatin1Char(' ')))
                line.chop(1);
            text += line + QLatin1Char('\n');
        }
    };
    put(headings);
    QString rule;
    for (int c = 0; c < columns; ++c)
        rule += QString(widths[c], QLatin1Char('-')) + (c + 1 < columns ? QStringLiteral("  ") : QString());
    text += rule + QLatin1Char('\n');
    for (const QStringList& row : rows)
        put(row);
    return text;
}

} // namespace corvane::cli
