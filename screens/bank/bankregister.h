#pragma once

#include "db/recordset.h"

#include <QString>
#include <QStringList>
#include <optional>

namespace corvane {

class ResumeNext;

// The bank master register behind frmbankdet1: a record set over Bank_Master
// in code order and the statements of Add, Update and Delete. Every statement
// runs through the caller's guard, so a failure is logged under the caller's
// procedure and the rest goes on.
class BankRegister {
public:
    static constexpr int kFieldCount = 4; // bank_code_no, bank_name, branch, branch_code

    // Opens "Select * from Bank_Master order by bank_code_no" and moves to the first record.
    void open(ResumeNext& guard);
    void close();

    // True when there is no record (also when the record set could not be opened).
    bool isEmpty() const;

    // Each does nothing when empty; Previous and Next stop at the ends.
    void moveFirst(ResumeNext& guard);
    void movePrevious(ResumeNext& guard);
    void moveNext(ResumeNext& guard);
    void moveLast(ResumeNext& guard);

    // The current record's fields as text; empty texts at BOF or EOF.
    QStringList current(ResumeNext& guard) const;
    // 1-based position of the current record, 0 when none.
    int position() const;

    // The largest code plus one, as a 16-bit number; nothing (and a logged overflow) past 32767.
    std::optional<qint16> nextCode(ResumeNext& guard);

    // Why a field would not fit its column, or empty text.
    static QString tooLong(const QStringList& fields);

    // Inserts (adding) or updates the record whose code is the code in fields, flushes,
    // requeries and moves to the new record (last) or back to the same position.
    // A field its column would cut is refused: nothing is written and the
    // message is returned (empty when saved).
    QString save(bool adding, const QStringList& fields, ResumeNext& guard);

    // Deletes the current record and shows the next one, or the last when it was the last.
    void deleteCurrent(ResumeNext& guard);

private:
    Recordset rs_;
};


} // namespace corvane
