#include "screens/addinfo/addinforecord.h"

#include "core/modbase.h"
#include "core/resumenext.h"
#include "core/textnumbers.h"
#include "db/connection.h"
#include "db/recordset.h"
#include "db/schema.h"
#include "db/sqltext.h"


namespace corvane {

namespace {

constexpr int kSections = 4;
constexpr int kNoLimit = 32767; // a line edit's own limit

Connection& connection()
{
    Connection* c = modbase().CnnObj.get();
    if (!c)
        throw Failure(err::ObjectNotSet, kSource, QStringLiteral("Object variable or With block variable not set"));
    return *c;
}

QString flag(bool ticked)
{
    return ticked ? QStringLiteral("1") : QStringLiteral("0");
}

// ",'value'" for a text column.
QString text(const QString& value)
{
    return QLatin1Char(',') + sqlQuote(value);
}

// ",value" for a number column.
QString number(double value)
{
    return QLatin1Char(',') + sqlLiteral(value);
}

// "name='value'" and "name=value" of the update.
QString setText(const QString& name, const QString& value)
{
    return name + QLatin1Char('=') + sqlQuote(value);
}

QString setNumber(const QString& name, double value)
{
    return name + QLatin1Char('=') + sqlLiteral(value);
}

// A check box takes the numeric value of its flag column; null leaves it.
void readFlag(const Recordset& rs, const char* column, bool& box)
{
    const QVariant v = rs.field(QString::fromLatin1(column));
    if (!v.isNull())
        box = valueOf(v.toString()) != 0;
}

void readText(const Recordset& rs, const char* column, QString& box)
{
    box = rs.text(QString::fromLatin1(column));
}

// A null amount leaves its box as it is.
void readNumber(const Recordset& rs, const char* column, QString& box)
{
    const QVariant v = rs.field(QString::fromLatin1(column));
    if (!v.isNull())
        box = numberText(valueOf(v.toString()));
}

} // namespace

AddInfoRecord::AddInfoRecord(AddInfoEdition edition, QString formName)
    : edition_(edition), formName_(std::move(formName))
{
}

int AddInfoRecord::boxLength(const QString& table, const QString& column)
{
    const schema::Column* c = schema::findColumn(table, column);
    if (!c)
        return kNoLimit;
    if (c->width() > 0)
        return c->width();
    const QString type = c->type.toUpper();
    if (type == QLatin1String("INT"))
        return 9;
    if (type == QLatin1String("DOUBLE"))
        return 15;
    return kNoLimit;
}

QString AddInfoRecord::tooLong() const
{
    const AddInfoValues& v = values;
    const bool first = edition_ == AddInfoEdition::First;
    schema::LengthCheck addInfo(QStringLiteral("FBT_AddInfo"));
    addInfo(QStringLiteral("Ward"), v.ward, QStringLiteral("Ward"));
    if (first)
        addInfo(QStringLiteral("OldWard"), v.oldWard, QStringLiteral("Old Ward"));
    if (v.revRet)
        addInfo(QStringLiteral("RevRecNo"), v.revRecNo, QStringLiteral("Receipt No. of the Return Being Revised"))(
            QStringLiteral("RevRecDt"), v.revRecDt, QStringLiteral("Filing Date of the Return Being Revised"));
    if (first && v.ac44AB)
        addInfo(QStringLiteral("Dt44AB"), v.dt44AB, QStringLiteral("Date of the 44AB Report"));
    if (first && v.ac44ABC)
        addInfo(QStringLiteral("Dt44ABC"), v.dt44ABC, QStringLiteral("Date of the 44ABC Report"));
    addInfo(QStringLiteral("AreaCd"), v.areaCd, QStringLiteral("Area Code"))(QStringLiteral("AoTyp"), v.aoTyp,
                                                                               QStringLiteral("AO Type"))(
        QStringLiteral("AoRng"), v.aoRng, QStringLiteral("Range Code"))(QStringLiteral("AoNo"), v.aoNo,
                                                                         QStringLiteral("AO Number"));
    if (v.intUpto)
        addInfo(QStringLiteral("IntDt"), v.intDt, QStringLiteral("Interest Date"));
    if (!addInfo.ok() || first)
        return addInfo.problem();

    schema::LengthCheck miscInf(QStringLiteral("FBT_MiscInf"));
    for (int i = 0; i < MiscInfValues::kRepFields; ++i)
        miscInf(QStringLiteral("Var0_%1").arg(i), misc.rep[std::size_t(i)],
                QStringLiteral("Representative Assessee, entry %1").arg(i + 1));
    for (int i = 0; i < MiscInfValues::kAuditorFields; ++i)
        miscInf(QStringLiteral("Var1_%1").arg(i), misc.auditor[std::size_t(i)], QStringLiteral("Auditor, entry %1").arg(i + 1));
    miscInf(QStringLiteral("Var2_1"), misc.oldName, QStringLiteral("Old Name"));
    return miscInf.problem();
}

QString AddInfoRecord::nobText() const
{
    QString nob;
    for (int i = 0; i < int(values.nob.size()); ++i)
        if (values.nob[std::size_t(i)])
            nob += QString::number(i + 1);
    return nob;
}

QString AddInfoRecord::selectStatement(bool fromPrevious) const
{
    const Modbase& m = modbase();
    return QStringLiteral("select * from FBT_AddInfo where code_no=") + sqlQuote(m.Code) + QStringLiteral(" and tyear=")
        + sqlLiteral(int(m.TYear) - (fromPrevious ? 1 : 0));
}

QString AddInfoRecord::miscSelectStatement(bool fromPrevious) const
{
    const Modbase& m = modbase();
    return QStringLiteral("select * from FBT_MiscInf where code_no=") + sqlQuote(m.Code) + QStringLiteral(" and tyear=")
        + sqlLiteral(int(m.TYear) - (fromPrevious ? 1 : 0));
}

bool AddInfoRecord::READDATA(bool fromPrevious)
{
    ResumeNext guard(formName_, QStringLiteral("READDATA"));
    bool found = false;
    Recordset rs;
    guard([&] { rs.open(selectStatement(fromPrevious), connection()); });
    guard([&] { found = rs.isOpen() && !rs.eof(); });
    if (found) {
        if (!fromPrevious)
            marker = QStringLiteral("1");
        // Each field is its own statement: one failing read skips only that field.
        AddInfoValues& v = values;
        guard([&] { readFlag(rs, "ChAdd", v.chAdd); });
        guard([&] { readText(rs, "Ward", v.ward); });
        guard([&] { readText(rs, "OldWard", v.oldWard); });
        guard([&] {
            const int section = int(valueOf(rs.text(QStringLiteral("Section"))));
            v.section = section >= 1 && section <= kSections ? section : 0;
        });
        guard([&] { readFlag(rs, "RevRet", v.revRet); });
        guard([&] { readText(rs, "RevRecNo", v.revRecNo); });
        guard([&] { readText(rs, "RevRecDt", v.revRecDt); });
        guard([&] {
            const QString nob = rs.text(QStringLiteral("NOB"));
            for (int i = 0; i < int(v.nob.size()); ++i)
                v.nob[std::size_t(i)] = nob.contains(QString::number(i + 1));
        });
        guard([&] { readFlag(rs, "Ac44AA", v.ac44AA); });
        guard([&] { readFlag(rs, "Ac44AB", v.ac44AB); });
        guard([&] { readText(rs, "Dt44AB", v.dt44AB); });
        guard([&] { readFlag(rs, "Ac44ABC", v.ac44ABC); });
        guard([&] { readText(rs, "Dt44ABC", v.dt44ABC); });
        guard([&] { readFlag(rs, "PEIndia", v.peIndia); });
        guard([&] { readFlag(rs, "DtRel1", v.dtRel1); });
        guard([&] { readFlag(rs, "DtRel2", v.dtRel2); });
        guard([&] { readFlag(rs, "PEOut", v.peOut); });
        guard([&] { readFlag(rs, "EmpBoth", v.empBoth); });
        guard([&] { readFlag(rs, "SepBooks", v.sepBooks); });
        guard([&] { readNumber(rs, "IndiaEmp", v.indiaEmp); });
        guard([&] { readNumber(rs, "TotalEmp", v.totalEmp); });
        guard([&] { readText(rs, "AreaCd", v.areaCd); });
        guard([&] { readText(rs, "AoTyp", v.aoTyp); });
        guard([&] { readText(rs, "AoRng", v.aoRng); });
        guard([&] { readText(rs, "AoNo", v.aoNo); });
        guard([&] { readFlag(rs, "Calc115WJ", v.calc115WJ); });
        guard([&] { readNumber(rs, "Amt115WJ", v.amt115WJ); });
        guard([&] { readFlag(rs, "Calc115WK", v.calc115WK); });
        guard([&] { readNumber(rs, "Amt115WK", v.amt115WK); });
        guard([&] { readFlag(rs, "Calc115WJ5", v.calc115WJ5); });
        guard([&] { readNumber(rs, "Amt115WJ5", v.amt115WJ5); });
        guard([&] {
            const QString intDt = rs.text(QStringLiteral("IntDt"));
            v.intUpto = !intDt.isEmpty();
            if (intDt != QLatin1String("todate"))
                v.intDt = intDt;
        });
    }
    guard([&] { rs.close(); });

    if (edition_ == AddInfoEdition::Second) {
        guard([&] { rs.open(miscSelectStatement(fromPrevious), connection()); });
        bool miscFound = false;
        guard([&] { miscFound = rs.isOpen() && !rs.eof(); });
        if (miscFound) {
            MiscInfValues& m = misc;
            guard([&] { readFlag(rs, "RepAss", m.repAss); });
            for (int i = 0; i < MiscInfValues::kRepFields; ++i)
                guard([&] { m.rep[std::size_t(i)] = rs.text(QStringLiteral("Var0_%1").arg(i)); });
            guard([&] { readFlag(rs, "Opt44AA", m.opt44AA); });
            guard([&] { readFlag(rs, "Opt44AB", m.opt44AB); });
            for (int i = 0; i < MiscInfValues::kAuditorFields; ++i)
                guard([&] { m.auditor[std::size_t(i)] = rs.text(QStringLiteral("Var1_%1").arg(i)); });
            guard([&] { readFlag(rs, "Var2_0", m.nameChanged); });
            guard([&] { readText(rs, "Var2_1", m.oldName); });
        }
        guard([&] { rs.close(); });
    }
    return found;
}

QString AddInfoRecord::keyTail() const
{
    const Modbase& m = modbase();
    return QStringLiteral(" where code_no=") + sqlQuote(m.Code) + QStringLiteral(" and tyear=") + sqlLiteral(int(m.TYear));
}

QString AddInfoRecord::insertStatement() const
{
    const Modbase& m = modbase();
    const AddInfoValues& v = values;
    const bool first = edition_ == AddInfoEdition::First;
    const QString none;
    const QString totalEmp = v.empBoth ? v.totalEmp : v.indiaEmp;

    QString sql = QStringLiteral("insert into FBT_AddInfo values(") + sqlQuote(m.Code) + QLatin1Char(',') + sqlLiteral(int(m.TYear));
    sql += text(first ? flag(v.chAdd) : QStringLiteral("0"));
    sql += text(v.ward);
    sql += text(first ? v.oldWard : none);
    sql += text(QString::number(v.section));
    sql += text(flag(v.revRet));
    sql += text(v.revRet ? v.revRecNo : none);
    sql += text(v.revRet ? v.revRecDt : none);
    if (first) {
        sql += text(nobText());
        sql += text(flag(v.ac44AA));
        sql += text(flag(v.ac44AB));
        sql += text(v.ac44AB ? v.dt44AB : none);
        sql += text(flag(v.ac44ABC));
        sql += text(v.ac44ABC ? v.dt44ABC : none);
    } else {
        for (int i = 0; i < 6; ++i)
            sql += text(none);
    }
    sql += text(flag(v.peIndia));
    sql += text(first ? flag(v.dtRel1) : none);
    sql += text(first ? flag(v.dtRel2) : none);
    sql += text(first ? flag(v.peOut) : none);
    sql += text(flag(v.empBoth));
    sql += text(flag(v.sepBooks));
    sql += number(valueOf(v.indiaEmp));
    sql += number(valueOf(totalEmp));
    sql += text(none); // RetDt and RetAckNo belong to the return register
    sql += text(none);
    sql += text(v.areaCd);
    sql += text(v.aoTyp);
    sql += text(v.aoRng);
    sql += text(v.aoNo);
    sql += text(flag(v.calc115WJ));
    sql += number(v.calc115WJ ? valueOf(v.amt115WJ) : 0);
    sql += text(flag(v.calc115WK));
    sql += number(v.calc115WK ? valueOf(v.amt115WK) : 0);
    if (first) {
        sql += QStringLiteral(",'1',0");
    } else {
        sql += text(flag(v.calc115WJ5));
        sql += number(v.calc115WJ5 ? valueOf(v.amt115WJ5) : 0);
    }
    sql += text(!v.intUpto ? none : v.intDt.isEmpty() ? QStringLiteral("todate") : v.intDt);
    sql += QLatin1Char(')');
    return sql;
}

QString AddInfoRecord::updateStatement() const
{
    const AddInfoValues& v = values;
    const QString none;
    const QString totalEmp = v.empBoth ? v.totalEmp : v.indiaEmp;
    const QString intDt = !v.intUpto ? none : v.intDt.isEmpty() ? QStringLiteral("todate") : v.intDt;
    QStringList sets;
    if (edition_ == AddInfoEdition::First) {
        sets << setText(QStringLiteral("ChAdd"), flag(v.chAdd)) << setText(QStringLiteral("Ward"), v.ward)
             << setText(QStringLiteral("OldWard"), v.oldWard) << setText(QStringLiteral("Section"), QString::number(v.section))
             << setText(QStringLiteral("RevRet"), flag(v.revRet))
             << setText(QStringLiteral("RevRecNo"), v.revRet ? v.revRecNo : none)
             << setText(QStringLiteral("RevRecDt"), v.revRet ? v.revRecDt : none)
             << setText(QStringLiteral("NOB"), nobText()) << setText(QStringLiteral("Ac44AA"), flag(v.ac44AA))
             << setText(QStringLiteral("Ac44AB"), flag(v.ac44AB))
             << setText(QStringLiteral("Dt44AB"), v.ac44AB ? v.dt44AB : none)
             << setText(QStringLiteral("Ac44ABC"), flag(v.ac44ABC))
             << setText(QStringLiteral("Dt44ABC"), v.ac44ABC ? v.dt44ABC : none)
             << setText(QStringLiteral("PEIndia"), flag(v.peIndia)) << setText(QStringLiteral("DtRel1"), flag(v.dtRel1))
             << setText(QStringLiteral("DtRel2"), flag(v.dtRel2)) << setText(QStringLiteral("PEOut"), flag(v.peOut))
             << setText(QStringLiteral("EmpBoth"), flag(v.empBoth)) << setText(QStringLiteral("SepBooks"), flag(v.sepBooks))
             << setNumber(QStringLiteral("IndiaEmp"), valueOf(v.indiaEmp))
             << setNumber(QStringLiteral("TotalEmp"), valueOf(totalEmp))
             << setText(QStringLiteral("AreaCd"), v.areaCd) << setText(QStringLiteral("AoTyp"), v.aoTyp)
             << setText(QStringLiteral("AoRng"), v.aoRng) << setText(QStringLiteral("AoNo"), v.aoNo)
             << setText(QStringLiteral("Calc115WJ"), flag(v.calc115WJ))
             << setNumber(QStringLiteral("Amt115WJ"), v.calc115WJ ? valueOf(v.amt115WJ) : 0)
             << setText(QStringLiteral("Calc115WK"), flag(v.calc115WK))
             << setNumber(QStringLiteral("Amt115WK"), v.calc115WK ? valueOf(v.amt115WK) : 0)
             << setText(QStringLiteral("IntDt"), intDt);
    } else {
        sets << setText(QStringLiteral("Ward"), v.ward) << setText(QStringLiteral("Section"), QString::number(v.section))
             << setText(QStringLiteral("RevRet"), flag(v.revRet))
             << setText(QStringLiteral("RevRecNo"), v.revRet ? v.revRecNo : none)
             << setText(QStringLiteral("RevRecDt"), v.revRet ? v.revRecDt : none)
             << setText(QStringLiteral("PEIndia"), flag(v.peIndia)) << setText(QStringLiteral("EmpBoth"), flag(v.empBoth))
             << setText(QStringLiteral("SepBooks"), flag(v.sepBooks))
             << setNumber(QStringLiteral("IndiaEmp"), valueOf(v.indiaEmp))
             << setNumber(QStringLiteral("TotalEmp"), valueOf(totalEmp))
             << setText(QStringLiteral("AreaCd"), v.areaCd) << setText(QStringLiteral("AoTyp"), v.aoTyp)
             << setText(QStringLiteral("AoRng"), v.aoRng) << setText(QStringLiteral("AoNo"), v.aoNo)
             << setText(QStringLiteral("Calc115WJ"), flag(v.calc115WJ))
             << setNumber(QStringLiteral("Amt115WJ"), v.calc115WJ ? valueOf(v.amt115WJ) : 0)
             << setText(QStringLiteral("Calc115WJ5"), flag(v.calc115WJ5))
             << setNumber(QStringLiteral("Amt115WJ5"), v.calc115WJ5 ? valueOf(v.amt115WJ5) : 0)
             << setText(QStringLiteral("Calc115WK"), flag(v.calc115WK))
             << setNumber(QStringLiteral("Amt115WK"), v.calc115WK ? valueOf(v.amt115WK) : 0)
             << setText(QStringLiteral("IntDt"), intDt);
    }
    return QStringLiteral("Update FBT_AddInfo Set ") + sets.join(QLatin1Char(',')) + keyTail();
}

QString AddInfoRecord::miscDeleteStatement() const
{
    const Modbase& m = modbase();
    return QStringLiteral("Delete from FBT_MiscInf Where Code_No=") + sqlQuote(m.Code) + QStringLiteral(" and Tyear=")
        + sqlLiteral(int(m.TYear));
}

QString AddInfoRecord::miscInsertStatement() const
{
    const Modbase& m = modbase();
    QString sql = QStringLiteral("Insert into FBT_MiscInf Values (") + sqlQuote(m.Code) + QLatin1Char(',') + sqlLiteral(int(m.TYear));
    sql += text(flag(misc.repAss));
    for (const QString& field : misc.rep)
        sql += text(field);
    sql += text(flag(misc.opt44AA));
    sql += text(flag(misc.opt44AB));
    for (const QString& field : misc.auditor)
        sql += text(field);
    sql += text(flag(misc.nameChanged));
    sql += text(misc.oldName);
    sql += QLatin1Char(')');
    return sql;
}

AddInfoRecord::SaveResult AddInfoRecord::SAVEDATA()
{
    if (edition_ == AddInfoEdition::First && nobText().isEmpty())
        return SaveResult::NoNatureOfBusiness;
    if (!tooLong().isEmpty())
        return SaveResult::TooLong;

    ResumeNext guard(formName_, QStringLiteral("SAVEDATA"));
    const bool inserting = marker.isEmpty();
    if (guard([&] { connection().execute(inserting ? insertStatement() : updateStatement()); }) && inserting)
        marker = QStringLiteral("1"); // a second save updates the row the first one made
    guard([&] { connection().execute(QStringLiteral("flush tables")); });
    if (edition_ == AddInfoEdition::Second) {
        // The row has no marker of its own: it is always written afresh.
        guard([&] { connection().execute(miscDeleteStatement()); });
        guard([&] { connection().execute(QStringLiteral("Flush Tables")); });
        guard([&] { connection().execute(miscInsertStatement()); });
        guard([&] { connection().execute(QStringLiteral("Flush Tables")); });
    }
    return SaveResult::Saved;
}

} // namespace corvane
