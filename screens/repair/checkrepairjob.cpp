#include "screens/repair/checkrepairjob.h"

#include "core/failure.h"
#include "core/progress.h"
#include "core/resumenext.h"
#include "db/connection.h"
#include "db/sqltext.h"

#include <QSet>

namespace corvane {

namespace {

// The columns of a check or repair result: Table, Op, Msg_type, Msg_text.
constexpr int kTypeColumn = 2;
constexpr int kReportColumn = 3;

QString cell(const QVector<QVariant>& row, int column)
{
    return column < row.size() ? row.at(column).toString() : QString();
}

bool isOk(const QString& report)
{
    return report.toUpper() == QLatin1String("OK");
}

QString checkStatement(const QString& table)
{
    return QStringLiteral("Check Table ") + sqlName(table) + QStringLiteral(" Extended");
}

// What a repair said beyond its status and its errors (the second check
// reports what is still wrong): rows it had to drop, blocks it skipped.
void collectNotes(const QString& table, const Connection::Result& result, QList<TableProblem>& notes)
{
    for (const auto& row : result.rows) {
        const QString type = cell(row, kTypeColumn);
        if (type.compare(QLatin1String("status"), Qt::CaseInsensitive) != 0
            && type.compare(QLatin1String("error"), Qt::CaseInsensitive) != 0)
            notes.append({table, cell(row, kReportColumn), type});
    }
}

} // namespace

CheckRepairJob::CheckRepairJob(Connection* connection, Progress& progress, QString module)
    : connection_(connection), progress_(progress), module_(std::move(module))
{
}

Connection& CheckRepairJob::connection() const
{
    if (!connection_)
        throw Failure(err::ObjectNotSet, kSource, QStringLiteral("Object variable or With block variable not set"));
    return *connection_;
}

bool CheckRepairJob::namesIndexFile(const QString& report)
{
    return report.toUpper().contains(QLatin1String(".MYI"));
}

QStringList CheckRepairJob::tables(ResumeNext& guard)
{
    QStringList names;
    guard([&] {
        for (const auto& row : connection().query(QStringLiteral("SHOW Tables")).rows)
            names << cell(row, 0);
    });
    return names;
}

QList<TableProblem> CheckRepairJob::check(const QStringList& tables)
{
    ResumeNext guard(module_, QStringLiteral("CHECKTABLES"));
    QList<TableProblem> problems;
    progress_.setText(QStringLiteral("Checking Tables ..."));
    progress_.setRange(0, int(tables.size()));
    progress_.setValue(0);
    for (int i = 0; i < tables.size(); ++i) {
        const QString& table = tables.at(i);
        progress_.setValue(i + 1);
        progress_.setText(QStringLiteral("Checking Table ... (") + table + QLatin1Char(')'));
        Connection::Result result;
        if (!guard([&] { result = connection().query(checkStatement(table)); }) || !result.hasResult) {
            problems.append({table, kFailedReport, kFailedType});
            continue;
        }
        for (const auto& row : result.rows) {
            const QString report = cell(row, kReportColumn);
            if (!isOk(report))
                problems.append({table, report, cell(row, kTypeColumn)});
        }
    }
    guard([&] { connection().execute(QStringLiteral("Flush Tables")); });
    return problems;
}

QList<TableProblem> CheckRepairJob::repair(const QList<TableProblem>& problems)
{
    ResumeNext guard(module_, QStringLiteral("REPAIRTABLES"));
    // Each table once, in the order of its first problem: repairing it again
    // for its second report would only check it again.
    QStringList tables;
    QSet<QString> indexLost;
    for (const TableProblem& problem : problems) {
        if (!tables.contains(problem.table))
            tables << problem.table;
        if (namesIndexFile(problem.report))
            indexLost.insert(problem.table);
    }

    QList<TableProblem> notes;
    progress_.setText(QStringLiteral("Repairing Tables ..."));
    progress_.setRange(0, int(tables.size()));
    progress_.setValue(0);
    for (int i = 0; i < tables.size(); ++i) {
        const QString& table = tables.at(i);
        progress_.setValue(i + 1);
        progress_.setText(QStringLiteral("Repairing Table ... (") + table + QLatin1Char(')'));
        if (indexLost.contains(table)) {
            ResumeNext useFrm(module_, QStringLiteral("REPAIRUSEFRM"));
            useFrm([&] {
                collectNotes(table, connection().query(QStringLiteral("Repair Table ") + sqlName(table) + QStringLiteral(" USE_FRM")), notes);
            });
        }
        QString last;
        guard([&] {
            const auto result = connection().query(checkStatement(table));
            if (!result.rows.isEmpty())
                last = cell(result.rows.last(), kReportColumn);
        });
        if (isOk(last))
            continue;
        guard([&] {
            collectNotes(table, connection().query(QStringLiteral("Repair Table ") + sqlName(table) + QStringLiteral(" Extended")), notes);
        });
    }
    return notes;
}

} // namespace corvane
