#include "screens/bank/bankregister.h"

#include "core/modbase.h"
#include "core/resumenext.h"
#include "core/textnumbers.h"
#include "db/connection.h"
#include "db/schema.h"
#include "db/sqltext.h"
#include "db/contextconnection.h"

#include <cmath>
#include <limits>

namespace corvane {

namespace {
constexpr long kOverflow = 6;
}

void BankRegister::open(ResumeNext& guard)
{
    guard([&] { rs_.open(QStringLiteral("Select * from Bank_Master order by bank_code_no"), contextConnection()); });
    if (!isEmpty())
        guard([&] { rs_.moveFirst(); });
}

void BankRegister::close()
{
    rs_.close();
}

bool BankRegister::isEmpty() const
{
    return !rs_.isOpen() || (rs_.bof() && rs_.eof());
}

void BankRegister::moveFirst(ResumeNext& guard)
{
    if (!isEmpty())
        guard([&] { rs_.moveFirst(); });
}

void BankRegister::movePrevious(ResumeNext& guard)
{
    if (isEmpty())
        return;
    guard([&] {
        rs_.movePrevious();
        if (rs_.bof())
            rs_.moveFirst();
    });
}

void BankRegister::moveNext(ResumeNext& guard)
{
    if (isEmpty())
        return;
    guard([&] {
        rs_.moveNext();
        if (rs_.eof())
            rs_.moveLast();
    });
}

void BankRegister::moveLast(ResumeNext& guard)
{
    if (!isEmpty())
        guard([&] { rs_.moveLast(); });
}

QStringList BankRegister::current(ResumeNext& guard) const
{
    QStringList fields;
    for (int i = 0; i < kFieldCount; ++i)
        fields << QString();
    if (isEmpty() || rs_.bof() || rs_.eof())
        return fields;
    guard([&] {
        for (int i = 0; i < rs_.fieldCount() && i < kFieldCount; ++i)
            fields[i] = rs_.text(i);
    });
    return fields;
}

int BankRegister::position() const
{
    return rs_.isOpen() ? rs_.absolutePosition() : 0;
}

std::optional<qint16> BankRegister::nextCode(ResumeNext& guard)
{
    double maxCode = 0;
    guard([&] {
        Recordset max;
        max.open(QStringLiteral("Select Max(bank_Code_no) as MaxCode from Bank_Master"), contextConnection());
        if (!max.bof() && !max.eof()) {
            const QVariant v = max.field(QStringLiteral("maxcode"));
            maxCode = v.isNull() ? 0 : v.toDouble();
        }
        max.close();
    });
    std::optional<qint16> code;
    guard([&] {
        const double next = std::round(maxCode) + 1;
        if (next > std::numeric_limits<qint16>::max() || next < std::numeric_limits<qint16>::min())
            throw Failure(kOverflow, kSource, QStringLiteral("Overflow"));
        code = qint16(next);
    });
    return code;
}

QString BankRegister::tooLong(const QStringList& fields)
{
    return schema::LengthCheck(QStringLiteral("Bank_Master"))(QStringLiteral("bank_name"), fields.value(1),
                                                             QStringLiteral("Bank Name"))(
               QStringLiteral("branch"), fields.value(2), QStringLiteral("Branch"))(
               QStringLiteral("branch_code"), fields.value(3), QStringLiteral("Branch Code"))
        .problem();
}

QString BankRegister::save(bool adding, const QStringList& fields, ResumeNext& guard)
{
    if (QString problem = tooLong(fields); !problem.isEmpty())
        return problem;
    const QString code = numberText(valueOf(fields.value(0)));
    int remembered = 0;
    if (adding) {
        guard([&] {
            contextConnection().execute(QStringLiteral("Insert into Bank_Master Values(") + code + QLatin1Char(',')
                                     + sqlQuote(fields.value(1)) + QLatin1Char(',') + sqlQuote(fields.value(2))
                                     + QLatin1Char(',') + sqlQuote(fields.value(3)) + QLatin1Char(')'));
        });
    } else {
        remembered = position();
        // The code box is both the new code and the key: a changed code matches no row.
        guard([&] {
            contextConnection().execute(QStringLiteral("Update Bank_Master Set bank_code_no = ") + code
                                     + QStringLiteral(",bank_name = ") + sqlQuote(fields.value(1))
                                     + QStringLiteral(",branch = ") + sqlQuote(fields.value(2))
                                     + QStringLiteral(",branch_code = ") + sqlQuote(fields.value(3))
                                     + QStringLiteral(" where bank_code_no = ") + code);
        });
    }
    guard([&] { contextConnection().execute(QStringLiteral("Flush Tables")); });
    guard([&] { rs_.requery(); });
    if (isEmpty())
        return QString();
    if (adding) {
        guard([&] { rs_.moveLast(); });
    } else {
        guard([&] {
            rs_.moveFirst();
            if (remembered > rs_.recordCount()) {
                rs_.moveLast();
                rs_.moveNext(); // past the end, as a move beyond the last record leaves it
            } else if (remembered > 0) {
                rs_.setAbsolutePosition(remembered);
            }
        });
    }
    return QString();
}

void BankRegister::deleteCurrent(ResumeNext& guard)
{
    if (isEmpty())
        return;
    guard([&] { rs_.deleteCurrent(); });
    guard([&] {
        rs_.moveNext();
        if (rs_.eof() && !(rs_.bof() && rs_.eof()))
            rs_.moveLast();
    });
}

} // namespace corvane
