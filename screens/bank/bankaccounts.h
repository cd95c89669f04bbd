#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

namespace corvane {

class ResumeNext;

// One account as the entry frame of frmbankdet holds it.
struct BankAccountEntry {
    QString bankName;
    QString address;
    QString micr;
    QString accountType; // "SAVINGS", "CURRENT" or empty
    QString accountNo;
    bool ecs = false;
    bool isDefault = false;

    // The seven grid cells, in the grid's (and the table's) column order.
    QStringList cells() const;
    static BankAccountEntry fromCells(const QStringList& cells);
};

// A client's bank accounts for a year, as the grid of frmbankdet shows them:
// row n is the account with SrNo n + 1. Loaded from FBT_BankDet (or, after the
// question, from the year before) and written back whole by save().
class BankAccounts {
public:
    enum Column { BankName, Address, Micr, AccountType, AccountNo, Ecs, Default, ColumnCount };
    static const QStringList& headings();

    // MICR codes are empty or nine characters; only the length is tested.
    static bool micrLengthOk(const QString& micr) { return micr.isEmpty() || micr.size() == 9; }

    // The accounts of the context's client and year; when there are none, asks
    // whether to import the previous year's and, on Yes, takes those (nothing is
    // written until the next save).
    void load(ResumeNext& guard);

    const QVector<QStringList>& rows() const { return rows_; }
    int count() const { return int(rows_.size()); }
    bool importedFromPreviousYear() const { return imported_; }

    // Puts an entry into row (-1 adds a row at the end) and returns the row.
    // A default entry makes every other row not the default.
    int put(int row, const BankAccountEntry& entry);
    void remove(int row);

    // With no default account, the last account becomes the default.
    void ensureDefault();

    // Why a cell of an account (cells in grid order) would not fit its column, or empty text.
    static QString tooLong(const QStringList& cells);

    // SAVEGRID: ensures a default, deletes the client's year, flushes, inserts
    // one row per account in order (SrNo 1, 2, …) and flushes again. When a
    // cell would not fit its column nothing is deleted or written, and the
    // message is returned (empty when saved).
    QString save(ResumeNext& guard);

private:
    QVector<QStringList> fetch(int year, ResumeNext& guard) const;

    QVector<QStringList> rows_;
    bool imported_ = false;
};

} // namespace corvane
