#include "db/schema.h"

#include "db/connection.h"
#include "db/sqltext.h"

namespace corvane::schema {

namespace {

QVector<Column> flagsAndTexts(const QStringList& names, const QString& type)
{
    QVector<Column> columns;
    for (const QString& n : names)
        columns.push_back({n, type});
    return columns;
}

QVector<Table> buildTables()
{
    const QString code = QStringLiteral("VARCHAR(20)");
    const QString flag = QStringLiteral("VARCHAR(1)");
    const QString date = QStringLiteral("VARCHAR(10)");
    const QString name = QStringLiteral("VARCHAR(100)");
    const QString text = QStringLiteral("VARCHAR(60)");
    const QString shortText = QStringLiteral("VARCHAR(20)");
    const QString integer = QStringLiteral("INT");
    const QString number = QStringLiteral("DOUBLE");

    QVector<Table> tables;

    tables.push_back({QStringLiteral("Bank_Master"),
                      {{QStringLiteral("bank_code_no"), integer},
                       {QStringLiteral("bank_name"), name},
                       {QStringLiteral("branch"), name},
                       {QStringLiteral("branch_code"), shortText}},
                      {QStringLiteral("bank_code_no")}});

    tables.push_back({QStringLiteral("FBT_BankDet"),
                      {{QStringLiteral("code_no"), code},
                       {QStringLiteral("Yr"), integer},
                       {QStringLiteral("SrNo"), integer},
                       {QStringLiteral("BankName"), name},
                       {QStringLiteral("BranchAdd"), QStringLiteral("VARCHAR(200)")},
                       {QStringLiteral("MICR"), shortText},
                       {QStringLiteral("AccType"), shortText},
                       {QStringLiteral("AccNo"), QStringLiteral("VARCHAR(30)")},
                       {QStringLiteral("ECS"), flag},
                       {QStringLiteral("DefAcc"), flag}},
                      {QStringLiteral("code_no"), QStringLiteral("Yr"), QStringLiteral("SrNo")}});

    QVector<Column> addInfo{
        {QStringLiteral("Code_No"), code}, {QStringLiteral("TYear"), integer},
        {QStringLiteral("ChAdd"), flag}, {QStringLiteral("Ward"), text},
        {QStringLiteral("OldWard"), text}, {QStringLiteral("Section"), QStringLiteral("VARCHAR(2)")},
        {QStringLiteral("RevRet"), flag}, {QStringLiteral("RevRecNo"), QStringLiteral("VARCHAR(30)")},
        {QStringLiteral("RevRecDt"), date}, {QStringLiteral("NOB"), shortText},
        {QStringLiteral("Ac44AA"), flag}, {QStringLiteral("Ac44AB"), flag},
        {QStringLiteral("Dt44AB"), date}, {QStringLiteral("Ac44ABC"), flag},
        {QStringLiteral("Dt44ABC"), date}, {QStringLiteral("PEIndia"), flag},
        {QStringLiteral("DtRel1"), flag}, {QStringLiteral("DtRel2"), flag},
        {QStringLiteral("PEOut"), flag}, {QStringLiteral("EmpBoth"), flag},
        {QStringLiteral("SepBooks"), flag}, {QStringLiteral("IndiaEmp"), integer},
        {QStringLiteral("TotalEmp"), integer}, {QStringLiteral("RetDt"), date},
        {QStringLiteral("RetAckNo"), QStringLiteral("VARCHAR(30)")}, {QStringLiteral("AreaCd"), QStringLiteral("VARCHAR(10)")},
        {QStringLiteral("AoTyp"), QStringLiteral("VARCHAR(10)")}, {QStringLiteral("AoRng"), QStringLiteral("VARCHAR(10)")},
        {QStringLiteral("AoNo"), QStringLiteral("VARCHAR(10)")}, {QStringLiteral("Calc115WJ"), flag},
        {QStringLiteral("Amt115WJ"), number}, {QStringLiteral("Calc115WK"), flag},
        {QStringLiteral("Amt115WK"), number}, {QStringLiteral("Calc115WJ5"), flag},
        {QStringLiteral("Amt115WJ5"), number}, {QStringLiteral("IntDt"), date}};
    tables.push_back({QStringLiteral("FBT_AddInfo"), addInfo, {QStringLiteral("Code_No"), QStringLiteral("TYear")}});

    QVector<Column> misc{{QStringLiteral("Code_No"), code}, {QStringLiteral("TYear"), integer},
                         {QStringLiteral("RepAss"), flag}};
    for (int i = 0; i <= 8; ++i)
        misc.push_back({QStringLiteral("Var0_%1").arg(i), name});
    misc += flagsAndTexts({QStringLiteral("Opt44AA"), QStringLiteral("Opt44AB")}, flag);
    for (int i = 0; i <= 11; ++i)
        misc.push_back({QStringLiteral("Var1_%1").arg(i), name});
    misc.push_back({QStringLiteral("Var2_0"), flag});
    misc.push_back({QStringLiteral("Var2_1"), name});
    tables.push_back({QStringLiteral("FBT_MiscInf"), misc, {QStringLiteral("Code_No"), QStringLiteral("TYear")}});

    tables.push_back({QStringLiteral("FBT_Info"),
                      {{QStringLiteral("Code_No"), code},
                       {QStringLiteral("Name"), name},
                       {QStringLiteral("PAN"), QStringLiteral("VARCHAR(10)")},
                       {QStringLiteral("ClStatus"), integer},
                       {QStringLiteral("Flat"), text},
                       {QStringLiteral("Building"), text},
                       {QStringLiteral("Street"), text},
                       {QStringLiteral("Area"), text},
                       {QStringLiteral("City"), text},
                       {QStringLiteral("Pin"), QStringLiteral("VARCHAR(10)")},
                       {QStringLiteral("State"), text},
                       {QStringLiteral("STD"), QStringLiteral("VARCHAR(10)")},
                       {QStringLiteral("TelNo"), QStringLiteral("VARCHAR(30)")},
                       {QStringLiteral("DOI"), date},
                       {QStringLiteral("BusNat"), QStringLiteral("VARCHAR(200)")},
                       {QStringLiteral("EMail"), name}},
                      {QStringLiteral("Code_No")}});

    tables.push_back({QStringLiteral("FBT_Nature"),
                      {{QStringLiteral("SrNo"), integer}, {QStringLiteral("NatDesc"), name}},
                      {QStringLiteral("SrNo")}});

    tables.push_back({QStringLiteral("bill_main"),
                      {{QStringLiteral("billid"), integer},
                       {QStringLiteral("code_no"), code},
                       {QStringLiteral("billdt"), date},
                       {QStringLiteral("amount"), number},
                       {QStringLiteral("narration"), name}},
                      {QStringLiteral("billid")}});
    tables.push_back({QStringLiteral("bill_det"),
                      {{QStringLiteral("billid"), integer},
                       {QStringLiteral("srno"), integer},
                       {QStringLiteral("particulars"), name},
                       {QStringLiteral("amount"), number}},
                      {QStringLiteral("billid"), QStringLiteral("srno")}});
    tables.push_back({QStringLiteral("recp_main"),
                      {{QStringLiteral("recpid"), integer},
                       {QStringLiteral("code_no"), code},
                       {QStringLiteral("recpdt"), date},
                       {QStringLiteral("amount"), number},
                       {QStringLiteral("mode"), shortText}},
                      {QStringLiteral("recpid")}});
    tables.push_back({QStringLiteral("recp_det"),
                      {{QStringLiteral("recpid"), integer},
                       {QStringLiteral("billid"), integer},
                       {QStringLiteral("amount"), number}},
                      {QStringLiteral("recpid"), QStringLiteral("billid")}});
    return tables;
}

} // namespace

int Column::width() const
{
    static const QLatin1String varchar("VARCHAR(");
    if (!type.startsWith(varchar, Qt::CaseInsensitive) || !type.endsWith(QLatin1Char(')')))
        return 0;
    return type.mid(varchar.size()).chopped(1).toInt();
}

QStringList Table::columnNames() const
{
    QStringList names;
    for (const Column& c : columns)
        names << c.name;
    return names;
}

QString Table::createStatement() const
{
    QStringList parts;
    for (const Column& c : columns)
        parts << sqlName(c.name) + QLatin1Char(' ') + c.type + QStringLiteral(" NULL");
    if (!primaryKey.isEmpty()) {
        QStringList keys;
        for (const QString& k : primaryKey)
            keys << sqlName(k);
        parts << QStringLiteral("PRIMARY KEY (%1)").arg(keys.join(QStringLiteral(", ")));
    }
    return QStringLiteral("CREATE TABLE IF NOT EXISTS %1 (%2) ENGINE=MyISAM DEFAULT CHARSET=utf8mb4")
        .arg(sqlName(name), parts.join(QStringLiteral(", ")));
}

const QVector<Table>& hostTables()
{
    static const QVector<Table> tables = buildTables();
    return tables;
}

const Table* find(const QString& name)
{
    for (const Table& t : hostTables())
        if (t.name.compare(name, Qt::CaseInsensitive) == 0)
            return &t;
    return nullptr;
}

const Column* findColumn(const QString& table, const QString& column)
{
    const Table* t = find(table);
    if (!t)
        return nullptr;
    for (const Column& c : t->columns)
        if (c.name.compare(column, Qt::CaseInsensitive) == 0)
            return &c;
    return nullptr;
}

qsizetype storedLength(const QString& text)
{
    qsizetype n = 0;
    for (qsizetype i = 0; i < text.size(); ++i, ++n)
        if (text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate())
            ++i;
    return n;
}

LengthCheck& LengthCheck::operator()(const QString& column, const QString& value, const QString& field)
{
    if (!problem_.isEmpty())
        return *this;
    const Column* c = findColumn(table_, column);
    const int width = c ? c->width() : 0;
    const qsizetype length = storedLength(value);
    if (width > 0 && length > width) {
        column_ = c->name;
        problem_ = QStringLiteral("%1 is too long: it has %2 characters, and %3 of %4 holds at most %5. "
                                  "Shorten it; nothing was saved.")
                       .arg(field)
                       .arg(length)
                       .arg(c->name, find(table_)->name)
                       .arg(width);
    }
    return *this;
}

QStringList createMissingTables(Connection& connection)
{
    QStringList existing;
    for (const auto& row : connection.query(QStringLiteral("SHOW Tables")).rows)
        existing << row.value(0).toString().toLower();
    QStringList created;
    for (const Table& t : hostTables()) {
        if (existing.contains(t.name.toLower()))
            continue;
        connection.execute(t.createStatement());
        created << t.name;
    }
    return created;
}

} // namespace corvane::schema
