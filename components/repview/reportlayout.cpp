#include "components/repview/reportlayout.h"

#include <QFile>
#include <QFileInfo>
#include <QFontMetricsF>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QTextBoundaryFinder>

namespace corvane {

namespace {

constexpr double kNormalPoints = 9.0;
constexpr double kCondensedPoints = 7.0;
constexpr double kFreeLinePoints = 11.0;

bool multiLine(const ReportCell& cell)
{
    return cell.has(ReportCell::Wrap) || cell.text.contains(QLatin1Char('\n'));
}

Qt::Alignment alignmentOf(const ReportCell& cell)
{
    switch (cell.align) {
    case ReportCell::Centre: return Qt::AlignHCenter;
    case ReportCell::Right: return Qt::AlignRight;
    case ReportCell::Left: break;
    }
    return Qt::AlignLeft;
}

} // namespace

ReportLayout::ReportLayout(const ReportDocument& document) : document_(document) {}

QPageLayout ReportLayout::defaultPageLayout(bool landscape)
{
    return QPageLayout(QPageSize(QPageSize::A4), landscape ? QPageLayout::Landscape : QPageLayout::Portrait,
                       QMarginsF(12, 12, 12, 12), QPageLayout::Millimeter);
}

QFont ReportLayout::fontFor(const ReportLine& line, const ReportCell& cell) const
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPointSizeF(!line.inTable ? kFreeLinePoints : line.condensed ? kCondensedPoints : kNormalPoints);
    font.setBold(cell.has(ReportCell::Bold));
    font.setItalic(cell.has(ReportCell::Italic));
    return font;
}

QVector<double> ReportLayout::cellWidths(const ReportLine& line) const
{
    const int n = int(line.cells.size());
    QVector<double> widths(n, 0.0);
    if (n == 0)
        return widths;
    if (!line.inTable && n == 1) {
        widths[0] = paper_.width();
        return widths;
    }
    double sum = 0;
    for (const ReportCell& cell : line.cells)
        sum += qMax(0, cell.width);
    const double total = (line.inTable && document_.tableWidth > 0) ? qMax(double(document_.tableWidth), sum) : sum;
    for (int i = 0; i < n; ++i)
        widths[i] = total > 0 ? paper_.width() * qMax(0, line.cells.at(i).width) / total : paper_.width() / n;
    return line.inTable && !minimums_.isEmpty() ? widenToMinimums(widths) : widths;
}

// Columns narrower than their widest unbreakable word take it from the others,
// in proportion to the widths the caller gave; the table keeps its width.
QVector<double> ReportLayout::widenToMinimums(const QVector<double>& widths) const
{
    const int n = int(widths.size());
    double room = 0;
    for (double w : widths)
        room += w;
    QVector<bool> pinned(n, false);
    for (int pass = 0; pass <= n; ++pass) {
        double pinnedSum = 0, freeWeight = 0;
        for (int i = 0; i < n; ++i) {
            if (pinned[i])
                pinnedSum += minimums_.value(i);
            else
                freeWeight += widths.at(i);
        }
        if (pinnedSum >= room || freeWeight <= 0)
            break;
        const double scale = (room - pinnedSum) / freeWeight;
        bool changed = false;
        for (int i = 0; i < n; ++i) {
            if (!pinned[i] && widths.at(i) * scale < minimums_.value(i)) {
                pinned[i] = true;
                changed = true;
            }
        }
        if (!changed) {
            QVector<double> fitted = widths;
            for (int i = 0; i < n; ++i)
                fitted[i] = pinned[i] ? minimums_.value(i) : widths.at(i) * scale;
            return fitted;
        }
    }
    // Even the words do not fit: shrink them all alike.
    double wanted = 0;
    for (int i = 0; i < n; ++i)
        wanted += qMax(minimums_.value(i), 1.0);
    QVector<double> fitted = widths;
    for (int i = 0; i < n; ++i)
        fitted[i] = room * qMax(minimums_.value(i), 1.0) / wanted;
    return fitted;
}

double ReportLayout::widestWord(const ReportLine& line, const ReportCell& cell) const
{
    const QFontMetricsF metrics(fontFor(line, cell), device_);
    double widest = 0;
    for (const QString& part : cell.text.split(QLatin1Char('\n'))) {
        QTextBoundaryFinder finder(QTextBoundaryFinder::Line, part);
        qsizetype start = 0;
        for (qsizetype end = finder.toNextBoundary(); end > 0; end = finder.toNextBoundary()) {
            widest = qMax(widest, metrics.horizontalAdvance(part.mid(start, end - start).trimmed()));
            start = end;
        }
    }
    return widest;
}

double ReportLayout::lineHeight(const ReportLine& line) const
{
    double height = 0;
    QVector<double> widths;
    for (int i = 0; i < line.cells.size(); ++i) {
        const ReportCell& cell = line.cells.at(i);
        const QFontMetricsF metrics(fontFor(line, cell), device_);
        double h = metrics.height();
        if (multiLine(cell)) {
            if (widths.isEmpty())
                widths = cellWidths(line);
            const double w = qMax(1.0, widths.at(i) - 2 * padding_);
            const int flags = cell.has(ReportCell::Wrap) ? Qt::TextWordWrap : 0;
            h = metrics.boundingRect(QRectF(0, 0, w, 1e9), flags, cell.text).height();
        }
        height = qMax(height, h);
    }
    if (line.cells.isEmpty()) {
        ReportCell blank;
        height = QFontMetricsF(fontFor(line, blank), device_).height();
    }
    return height + 2 * padding_;
}

int ReportLayout::paginate(const QPaintDevice& device, const QPageLayout& layout)
{
    device_ = &device;
    // A painter on a printer or PDF writer starts at the top left of the printable area.
    paper_ = QRectF(QPointF(0, 0), QSizeF(layout.paintRectPixels(device.logicalDpiX()).size()));
    const double perPoint = device.logicalDpiY() / 72.0;
    padding_ = 2.0 * perPoint;
    footer_ = QFontMetricsF(fontFor(ReportLine{}, ReportCell{}), device_).height() + 6 * perPoint;
    const double room = paper_.height() - footer_;

    // Only wrapped cells are measured word by word: the long plain registers stay fast.
    minimums_.clear();
    for (const ReportLine& line : document_.lines) {
        if (!line.inTable)
            continue;
        for (int i = 0; i < line.cells.size(); ++i) {
            if (!line.cells.at(i).has(ReportCell::Wrap))
                continue;
            if (minimums_.size() <= i)
                minimums_.resize(i + 1, 0.0);
            minimums_[i] = qMax(minimums_.at(i), widestWord(line, line.cells.at(i)) + 2 * padding_ + 1);
        }
    }

    pages_.clear();
    heights_.clear();
    heights_.reserve(document_.lines.size());

    // Lines without multi-line cells share one height per font: measure each kind once.
    double plain[2][2][2] = {{{-1, -1}, {-1, -1}}, {{-1, -1}, {-1, -1}}};
    for (const ReportLine& line : document_.lines) {
        bool simple = !line.cells.isEmpty();
        bool bold = false;
        for (const ReportCell& cell : line.cells) {
            simple = simple && !multiLine(cell) && !cell.has(ReportCell::Italic);
            bold = bold || cell.has(ReportCell::Bold);
        }
        if (!simple) {
            heights_ << lineHeight(line);
            continue;
        }
        double& cached = plain[line.inTable][line.condensed][bold];
        if (cached < 0)
            cached = lineHeight(line);
        heights_ << cached;
    }

    Page page;
    double y = 0;
    int heading = -1;
    for (int i = 0; i < document_.lines.size(); ++i) {
        const ReportLine& line = document_.lines.at(i);
        const double h = heights_.at(i);
        const bool full = y > 0 && y + h > room;
        if (line.pageBreak || full) {
            if (i > page.first || page.heading >= 0) {
                page.end = i;
                pages_ << page;
            }
            page = Page{i, i, -1};
            y = 0;
            if (line.inTable && !line.heading && heading >= 0) {
                page.heading = heading;
                y += heights_.at(heading);
            }
        }
        if (line.inTable && line.heading)
            heading = i;
        y += h;
    }
    page.end = int(document_.lines.size());
    pages_ << page;
    return pageCount();
}

double ReportLayout::paintLine(QPainter& painter, const ReportLine& line, double y) const
{
    const QVector<double> widths = cellWidths(line);
    const int index = int(&line - document_.lines.constData());
    const double height = (index >= 0 && index < heights_.size()) ? heights_.at(index) : lineHeight(line);
    double x = paper_.left();
    for (int i = 0; i < line.cells.size(); ++i) {
        const ReportCell& cell = line.cells.at(i);
        const QRectF box(x, y, widths.at(i), height);
        if (line.heading)
            painter.fillRect(box, QColor(232, 232, 232));
        if (cell.has(ReportCell::Border)) {
            painter.setPen(QPen(Qt::black, 0));
            painter.drawRect(box);
        }
        const QFont font = fontFor(line, cell);
        painter.setFont(font);
        painter.setPen(Qt::black);
        const QRectF inner = box.adjusted(padding_, padding_, -padding_, -padding_);
        const Qt::Alignment align = alignmentOf(cell) | (multiLine(cell) ? Qt::AlignTop : Qt::AlignVCenter);
        if (multiLine(cell)) {
            painter.drawText(inner, int(align) | (cell.has(ReportCell::Wrap) ? Qt::TextWordWrap : 0), cell.text);
        } else {
            const QFontMetricsF metrics(font, painter.device());
            painter.drawText(inner, int(align), metrics.elidedText(cell.text, Qt::ElideRight, inner.width()));
        }
        x += widths.at(i);
    }
    return height;
}

void ReportLayout::paintPage(QPainter& painter, int page) const
{
    if (page < 0 || page >= pages_.size())
        return;
    const Page& p = pages_.at(page);
    double y = paper_.top();
    if (p.heading >= 0)
        y += paintLine(painter, document_.lines.at(p.heading), y);
    for (int i = p.first; i < p.end; ++i)
        y += paintLine(painter, document_.lines.at(i), y);

    ReportLine footerLine;
    painter.setFont(fontFor(footerLine, ReportCell{}));
    painter.setPen(Qt::black);
    const QRectF footer(paper_.left(), paper_.bottom() - footer_, paper_.width(), footer_);
    painter.drawText(footer, Qt::AlignHCenter | Qt::AlignBottom,
                     QStringLiteral("Page %1 of %2").arg(page + 1).arg(pages_.size()));
}

int ReportLayout::print(QPagedPaintDevice& device, QPainter& painter, const std::function<bool(int, int)>& progress) const
{
    int painted = 0;
    for (int page = 0; page < pages_.size(); ++page) {
        if (progress && !progress(page, int(pages_.size())))
            break;
        if (page > 0)
            device.newPage();
        paintPage(painter, page);
        ++painted;
    }
    return painted;
}

bool ReportLayout::writePdf(const ReportDocument& document, const QString& path, QString* error)
{
    {
        QFile probe(path);
        if (!probe.open(QIODevice::WriteOnly)) {
            if (error)
                *error = QStringLiteral("cannot write %1: %2").arg(path, probe.errorString());
            return false;
        }
    }
    QPdfWriter writer(path);
    writer.setResolution(300);
    writer.setCreator(QStringLiteral("Corvane"));
    writer.setTitle(document.title());
    const QPageLayout layout = defaultPageLayout(document.landscape);
    writer.setPageLayout(layout);
    ReportLayout report(document);
    report.paginate(writer, layout);
    QPainter painter;
    if (!painter.begin(&writer)) {
        if (error)
            *error = QStringLiteral("cannot write %1").arg(path);
        return false;
    }
    report.print(writer, painter);
    painter.end();
    if (QFileInfo(path).size() == 0) {
        if (error)
            *error = QStringLiteral("cannot write %1").arg(path);
        return false;
    }
    return true;
}

} // namespace corvane
