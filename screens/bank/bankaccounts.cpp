#include "screens/bank/bankaccounts.h"

#include "core/modbase.h"
#include "core/prompter.h"
#include "core/resumenext.h"
#include "db/connection.h"
#include "db/recordset.h"
#include "db/schema.h"
#include "db/sqltext.h"
#include "db/contextconnection.h"

namespace corvane {

namespace {
const QString kYes = QStringLiteral("Y");
const QString kNo = QStringLiteral("N");
constexpr int kFirstAccountField = 3; // after code_no, Yr, SrNo
}

QStringList BankAccountEntry::cells() const
{
    return {bankName, address, micr, accountType, accountNo, ecs ? kYes : kNo, isDefault ? kYes : kNo};
}

BankAccountEntry BankAccountEntry::fromCells(const QStringList& cells)
{
    BankAccountEntry e;
    e.bankName = cells.value(BankAccounts::BankName);
    e.address = cells.value(BankAccounts::Address);
    e.micr = cells.value(BankAccounts::Micr);
    e.accountType = cells.value(BankAccounts::AccountType);
    e.accountNo = cells.value(BankAccounts::AccountNo);
    e.ecs = cells.value(BankAccounts::Ecs) == kYes;
    e.isDefault = cells.value(BankAccounts::Default) == kYes;
    return e;
}

const QStringList& BankAccounts::headings()
{
    static const QStringList list{QStringLiteral("Name of Bank"), QStringLiteral("Address of Bank Branch"),
                                  QStringLiteral("MICR Code"),    QStringLiteral("Type of Account"),
                                  QStringLiteral("Account No."),  QStringLiteral("ECS"),
                                  QStringLiteral("Default")};
    return list;
}

QVector<QStringList> BankAccounts::fetch(int year, ResumeNext& guard) const
{
    QVector<QStringList> rows;
    Recordset rs;
    guard([&] {
        rs.open(QStringLiteral("select * from FBT_BankDet where code_no=") + sqlQuote(modbase().Code)
                    + QStringLiteral(" and Yr=") + QString::number(year) + QStringLiteral(" order by SrNo"),
                contextConnection());
    });
    if (!rs.isOpen())
        return rows;
    // Each cell is its own statement: one failing read leaves only that cell empty.
    bool more = false;
    guard([&] { more = !rs.eof(); });
    while (more) {
        QStringList cells;
        for (int c = 0; c < ColumnCount; ++c) {
            QString cell;
            guard([&] { cell = rs.text(kFirstAccountField + c); });
            cells << cell;
        }
        rows.push_back(cells);
        more = false;
        guard([&] {
            rs.moveNext();
            more = !rs.eof();
        });
    }
    return rows;
}

void BankAccounts::load(ResumeNext& guard)
{
    rows_.clear();
    imported_ = false;
    const int year = modbase().TYear;
    rows_ = fetch(year, guard);
    if (!rows_.isEmpty())
        return;
    QVector<QStringList> previous = fetch(year - 1, guard);
    if (previous.isEmpty())
        return;
    if (prompter().ask(QStringLiteral("Do you want to Import from Previous Year?"), Prompter::Buttons::YesNo,
                       Prompter::Icon::Question) == Prompter::Answer::Yes) {
        rows_ = std::move(previous);
        imported_ = true;
    }
}

int BankAccounts::put(int row, const BankAccountEntry& entry)
{
    if (row < 0 || row >= rows_.size()) {
        rows_.push_back(QStringList());
        row = int(rows_.size()) - 1;
    }
    if (entry.isDefault)
        for (QStringList& r : rows_)
            if (r.size() > Default)
                r[Default] = kNo;
    rows_[row] = entry.cells();
    return row;
}

void BankAccounts::remove(int row)
{
    if (row >= 0 && row < rows_.size())
        rows_.removeAt(row);
}

void BankAccounts::ensureDefault()
{
    for (const QStringList& r : rows_)
        if (r.value(Default) == kYes)
            return;
    if (!rows_.isEmpty()) {
        QStringList& last = rows_.last();
        while (last.size() < ColumnCount)
            last << QString();
        last[Default] = kYes;
    }
}

QString BankAccounts::tooLong(const QStringList& cells)
{
    static const char* const kColumns[ColumnCount] = {"BankName", "BranchAdd", "MICR", "AccType", "AccNo", "ECS", "DefAcc"};
    schema::LengthCheck check(QStringLiteral("FBT_BankDet"));
    for (int c = 0; c < ColumnCount; ++c)
        check(QString::fromLatin1(kColumns[c]), cells.value(c), headings().at(c));
    return check.problem();
}

QString BankAccounts::save(ResumeNext& guard)
{
    // Checked before the year's rows go: a refusal must leave them as they are.
    for (const QStringList& row : rows_)
        if (QString problem = tooLong(row); !problem.isEmpty())
            return problem;
    ensureDefault();
    const QString code = sqlQuote(modbase().Code);
    const QString year = QString::number(modbase().TYear);
    guard([&] {
        contextConnection().execute(QStringLiteral("delete from FBT_BankDet where code_no=") + code
                                 + QStringLiteral(" and Yr=") + year);
    });
    guard([&] { contextConnection().execute(QStringLiteral("flush tables")); });
    for (int n = 1; n <= rows_.size(); ++n) {
        QString sql = QStringLiteral("insert into FBT_BankDet Values (") + code + QLatin1Char(',') + year
            + QLatin1Char(',') + QString::number(n);
        for (int c = 0; c < ColumnCount; ++c)
            sql += QLatin1Char(',') + sqlQuote(rows_.at(n - 1).value(c));
        sql += QLatin1Char(')');
        guard([&] { contextConnection().execute(sql); });
    }
    guard([&] { contextConnection().execute(QStringLiteral("flush tables")); });
    return QString();
}

} // namespace corvane
