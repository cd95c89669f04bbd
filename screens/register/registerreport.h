#pragma once

#include <QString>
#include <QVector>
#include <functional>

namespace corvane {

class ResumeNext;

// The register handed to the report viewer: a bold title line, condensed
// print, the table of the visible columns (row 0 the headings), condensed off.
namespace registerreport {

// The grid's alignment values: 4 centred, 7 right-aligned, others left.
constexpr int kGridLeft = 1;
constexpr int kGridCentre = 4;
constexpr int kGridRight = 7;

struct Columns {
    QVector<int> widths;       // one per visible column
    QVector<int> alignments;   // grid alignment values
    bool wrap = false;         // cells may take several lines
};

// The widths and alignments of the register's six columns on a fresh grid.
Columns registerColumns();

// Row 0 is the heading row; text(row, column) gives a cell.
using CellText = std::function<QString(int row, int column)>;

// Both work on the viewer of the context, the one MultiSpcJs1 writes to.

// Builds the report ("CREATEREPORT"); false when a step failed (logged
// through the guard), and the building stopped there.
bool create(const QString& title, const Columns& columns, int rowCount, const CellText& text, ResumeNext& guard);

// The viewer's whole sequence: WinModeReport, NewReport, the report, ShowReport
// (not shown when building failed).
bool show(const QString& title, const Columns& columns, int rowCount, const CellText& text, ResumeNext& guard);

} // namespace registerreport
} // namespace corvane
