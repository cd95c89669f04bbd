#include "components/repview/reportdocument.h"

#include "core/csvwriter.h"

#include <QBuffer>

namespace corvane {

namespace {

constexpr QChar kEsc(27);
constexpr QChar kCondensedOn(15);
constexpr QChar kCondensedOff(18);

bool flagAt(const QString& flags, int index)
{
    return index < flags.size() && flags.at(index) == QLatin1Char('1');
}

} // namespace

QString ReportDocument::title() const
{
    for (const ReportLine& line : lines)
        if (!line.inTable && !line.cells.isEmpty())
            return line.cells.first().text;
    return QString();
}

void ReportDocument::writeCsv(QIODevice& out) const
{
    bool headingDone = false;
    for (const ReportLine& line : lines) {
        if (!line.inTable)
            continue;
        if (line.heading) {
            if (headingDone)
                continue;
            headingDone = true;
        }
        QStringList fields;
        for (const ReportCell& cell : line.cells)
            fields << (cell.csvText.isEmpty() ? cell.text : cell.csvText);
        out.write(csvRecord(fields).toUtf8());
    }
}

QString ReportDocument::csv() const
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    writeCsv(buffer);
    return QString::fromUtf8(buffer.data());
}

void ReportRecorder::NewReport()
{
    document_.clear();
    condensed_ = false;
    bold_ = false;
    inTable_ = false;
}

QString ReportRecorder::consume(const QString& text, bool* boldSeen)
{
    QString rest;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == kEsc) {
            if (i + 1 < text.size()) {
                const QChar code = text.at(++i);
                if (code == QLatin1Char('E'))
                    bold_ = true;
                else if (code == QLatin1Char('F'))
                    bold_ = false;
                else if (code == kCondensedOn)
                    condensed_ = true;
                else if (code == kCondensedOff)
                    condensed_ = false;
            }
        } else if (c == kCondensedOn) {
            condensed_ = true;
        } else if (c == kCondensedOff) {
            condensed_ = false;
        } else if (c.unicode() >= 32 || c == QLatin1Char('\n') || c == QLatin1Char('\t')) {
            if (bold_ && boldSeen)
                *boldSeen = true;
            rest += c;
        } else if (c == QLatin1Char('\r') && !(i + 1 < text.size() && text.at(i + 1) == QLatin1Char('\n'))) {
            rest += QLatin1Char('\n');
        }
    }
    return rest;
}

void ReportRecorder::printtext(const QString& text)
{
    bool bold = false;
    const QString rest = consume(text, &bold);
    if (rest.trimmed().isEmpty())
        return;
    ReportLine line;
    line.condensed = condensed_;
    ReportCell cell;
    cell.text = rest;
    if (bold)
        cell.flags |= ReportCell::Bold;
    line.cells << cell;
    document_.lines << line;
}

void ReportRecorder::CreateTable(qint32 columns, qint32 totalWidth)
{
    inTable_ = true;
    document_.tableColumns = columns;
    document_.tableWidth = totalWidth;
}

void ReportRecorder::WriteToReport(QVector<QVariant>& values, QVector<qint16>& shorts, QVector<qint32>& longs,
                                   QStringList& texts1, QStringList& texts2, bool& flag, QString& text1, QString& text2,
                                   QString& text3, QString& text4)
{
    ReportLine line;
    line.inTable = inTable_;
    line.pageBreak = flag;
    line.cells.reserve(values.size());
    for (int i = 0; i < values.size(); ++i) {
        ReportCell cell;
        const bool wasBold = bold_;
        bool boldSeen = false;
        cell.text = consume(values.at(i).toString(), &boldSeen);
        bold_ = wasBold && bold_; // a cell's bold sequence does not run on into the next cell
        if (i < shorts.size())
            cell.width = shorts.at(i);
        if (i < longs.size())
            cell.align = ReportCell::Align(qBound(0, int(longs.at(i)), 2));
        const QString style = texts1.value(i);
        if (boldSeen || flagAt(text4, i) || style.contains(QLatin1Char('B')))
            cell.flags |= ReportCell::Bold;
        if (style.contains(QLatin1Char('I')))
            cell.flags |= ReportCell::Italic;
        if (flagAt(text2, i))
            cell.flags |= ReportCell::Border;
        if (flagAt(text3, i))
            cell.flags |= ReportCell::Wrap;
        cell.csvText = texts2.value(i);
        if (flagAt(text1, i))
            line.heading = true;
        line.cells << cell;
    }
    line.condensed = condensed_;
    document_.lines << line;
}

void ReportRecorder::ShowReport()
{
    document_.landscape = col130_;
    if (show)
        show(document_);
    col130_ = false;
}

} // namespace corvane
