#pragma once

#include "components/repview/reportdocument.h"

#include <QFont>
#include <QPageLayout>
#include <QRectF>
#include <QVector>
#include <functional>

class QPagedPaintDevice;
class QPaintDevice;
class QPainter;

namespace corvane {

// Lays a report out on pages, without widgets, for any paint device: the
// preview's printer, a real printer or a PDF file. The table's heading row
// comes again at the top of every page; every page carries "Page n of m".
class ReportLayout {
public:
    explicit ReportLayout(const ReportDocument& document);

    // A4 with 12 mm margins, portrait or landscape.
    static QPageLayout defaultPageLayout(bool landscape);

    // Breaks the report into pages for the device's resolution; returns the page count.
    int paginate(const QPaintDevice& device, const QPageLayout& layout);
    int pageCount() const { return int(pages_.size()); }

    void paintPage(QPainter& painter, int page) const;
    // Paints every page on a painter opened on the device; progress(done, total)
    // returning false stops early. Returns the number of pages painted.
    int print(QPagedPaintDevice& device, QPainter& painter, const std::function<bool(int, int)>& progress = {}) const;

    // Writes the report as a PDF file; false with the reason when the file cannot be written.
    static bool writePdf(const ReportDocument& document, const QString& path, QString* error = nullptr);

private:
    struct Page {
        int first = 0;       // first line on the page
        int end = 0;         // one past the last line
        int heading = -1;    // the heading line repeated at the top, or -1
    };
    QFont fontFor(const ReportLine& line, const ReportCell& cell) const;
    double lineHeight(const ReportLine& line) const;
    double paintLine(QPainter& painter, const ReportLine& line, double y) const;
    QVector<double> cellWidths(const ReportLine& line) const;
    QVector<double> widenToMinimums(const QVector<double>& widths) const;
    double widestWord(const ReportLine& line, const ReportCell& cell) const;

    const ReportDocument& document_;
    QVector<Page> pages_;
    QVector<double> heights_;
    QVector<double> minimums_; // per table column: its widest unbreakable word, wrapped columns only
    const QPaintDevice* device_ = nullptr;
    QRectF paper_;       // the printable rectangle in device pixels
    double footer_ = 0;  // room kept for the page number
    double padding_ = 0;
};

} // namespace corvane
