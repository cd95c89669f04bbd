#pragma once

#include "core/reportviewer.h"

#include <QIODevice>
#include <QString>
#include <QVector>
#include <functional>

namespace corvane {

// What a report is made of once its calls have been read: free lines (the
// title) and the rows of one table, each cell with its text and formatting.
//
// The protocol of the viewer, Quillview.RepView:
//   WinModeReport    true: graphic pages (the only output there is; kept for the callers)
//   setcol130        true: the next report is wide and goes on landscape pages
//                    (cleared again once the report has been shown)
//   NewReport        empties the report
//   printtext(t)     printer sequences: ESC "E"/"F" bold on/off, character 15
//                    condensed on, character 18 condensed off (ESC "P" and other
//                    ESC pairs are ignored); other text is a free line of its own
//   CreateTable(n, w) opens the table: n columns, w the total of the callers'
//                    column widths (0: the sum of each line's widths)
//   WriteToReport    one line, cell by cell:
//     values[i]   the cell's text; ESC "E"/"F" inside make the cell bold
//     shorts[i]   the cell's width in the caller's units (a grid's widths),
//                 scaled so that the table fills the page; a line outside the
//                 table spans the page
//     longs[i]    alignment: 0 left, 1 centred, 2 right
//     texts1[i]   style letters: "B" bold, "I" italic (may be missing)
//     texts2[i]   the cell's text in CSV exports when it differs (may be missing)
//     flag        start a new page before this line
//     text1       heading flags, a character per cell: a line with a "1" is the
//                 table's heading row, printed again at the top of every page
//     text2       border flags: "1" draws the cell's box
//     text3       wrap flags: "1" lets the text take several lines
//     text4       bold flags: "1" prints the cell bold
//   ShowReport       shows the pages (preview, print, PDF and CSV export)
struct ReportCell {
    enum Align : quint8 { Left = 0, Centre = 1, Right = 2 };
    enum Flag : quint8 { Bold = 1, Italic = 2, Border = 4, Wrap = 8 };
    QString text;
    QString csvText; // empty: text
    qint32 width = 0;
    Align align = Left;
    quint8 flags = 0;

    bool has(Flag f) const { return flags & f; }
};

struct ReportLine {
    QVector<ReportCell> cells;
    bool inTable = false;
    bool heading = false;
    bool condensed = false;
    bool pageBreak = false;
};

struct ReportDocument {
    QVector<ReportLine> lines;
    qint32 tableColumns = 0;
    qint32 tableWidth = 0;
    bool landscape = false;

    void clear() { *this = ReportDocument{}; }
    // The text of the first free line (the report's title), or empty.
    QString title() const;
    // The table's rows as CSV (RFC 4180: CRLF line ends, quotes doubled): the
    // first heading row, then every data row.
    void writeCsv(QIODevice& out) const;
    QString csv() const;
};

// Reads the viewer's calls into a document; ShowReport hands the document to
// the show function (the preview on screen; nothing on the command line).
class ReportRecorder : public ReportViewer {
public:
    void setWinModeReport(bool on) override { winMode_ = on; }
    bool WinModeReport() const override { return winMode_; }
    void setsetcol130(bool on) override { col130_ = on; }
    bool setcol130() const override { return col130_; }

    void NewReport() override;
    void printtext(const QString& text) override;
    void CreateTable(qint32 columns, qint32 totalWidth) override;
    void WriteToReport(QVector<QVariant>& values, QVector<qint16>& shorts, QVector<qint32>& longs, QStringList& texts1,
                       QStringList& texts2, bool& flag, QString& text1, QString& text2, QString& text3,
                       QString& text4) override;
    void ShowReport() override;

    const ReportDocument& document() const { return document_; }
    std::function<void(const ReportDocument&)> show;

private:
    // Applies printer sequences; returns the printable rest.
    QString consume(const QString& text, bool* boldSeen);

    ReportDocument document_;
    bool winMode_ = true;
    bool col130_ = false;
    bool condensed_ = false;
    bool bold_ = false;
    bool inTable_ = false;
};

} // namespace corvane
