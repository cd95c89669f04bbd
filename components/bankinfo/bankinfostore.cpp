#include "components/bankinfo/bankinfostore.h"

#include "db/connection.h"
#include "db/sqltext.h"

#include <QRegularExpression>

namespace corvane::bankinfo {

namespace {

QVector<TableDef> buildDefs()
{
    return {
        {QStringLiteral("MiscInf_Branch"),
         {{QStringLiteral("IFSC"), 11}, {QStringLiteral("Bank"), 100}, {QStringLiteral("Branch"), 100},
          {QStringLiteral("BranchCode"), 20}, {QStringLiteral("MICR"), 9}, {QStringLiteral("Address"), 300},
          {QStringLiteral("City"), 60}, {QStringLiteral("District"), 60}, {QStringLiteral("State"), 60}},
         {QStringLiteral("IFSC")},
         {QStringLiteral("Bank"), QStringLiteral("Branch"), QStringLiteral("BranchCode"), QStringLiteral("City"),
          QStringLiteral("State"), QStringLiteral("IFSC")},
         {QStringLiteral("Bank"), QStringLiteral("Branch"), QStringLiteral("Branch Code"), QStringLiteral("City"),
          QStringLiteral("State"), QStringLiteral("IFSC")},
         QStringLiteral("Bank, Branch, IFSC")},
        {QStringLiteral("MiscInf_MICR"),
         {{QStringLiteral("MICR"), 9}, {QStringLiteral("Bank"), 100}, {QStringLiteral("Branch"), 100},
          {QStringLiteral("Address"), 300}, {QStringLiteral("City"), 60}, {QStringLiteral("District"), 60},
          {QStringLiteral("State"), 60}, {QStringLiteral("IFSC"), 11}},
         {QStringLiteral("MICR")},
         {QStringLiteral("Bank"), QStringLiteral("Branch"), QStringLiteral("Address"), QStringLiteral("City"),
          QStringLiteral("MICR")},
         {QStringLiteral("Bank"), QStringLiteral("Branch"), QStringLiteral("Address"), QStringLiteral("City"),
          QStringLiteral("MICR Code")},
         QStringLiteral("Bank, Branch, MICR")},
        {QStringLiteral("MiscInf_AO"),
         {{QStringLiteral("AreaCode"), 3}, {QStringLiteral("AoType"), 2}, {QStringLiteral("RangeCode"), 5},
          {QStringLiteral("AoNo"), 5}, {QStringLiteral("City"), 60}, {QStringLiteral("Jurisdiction"), 300}},
         {QStringLiteral("AreaCode"), QStringLiteral("AoType"), QStringLiteral("RangeCode"), QStringLiteral("AoNo")},
         {QStringLiteral("City"), QStringLiteral("AreaCode"), QStringLiteral("AoType"), QStringLiteral("RangeCode"),
          QStringLiteral("AoNo"), QStringLiteral("Jurisdiction")},
         {QStringLiteral("City"), QStringLiteral("Area Code"), QStringLiteral("AO Type"), QStringLiteral("Range Code"),
          QStringLiteral("AO No."), QStringLiteral("Jurisdiction")},
         QStringLiteral("City, AreaCode, AoType, RangeCode + 0, AoNo + 0")},
    };
}

QString createStatement(const TableDef& def)
{
    QStringList parts;
    for (const Column& c : def.columns)
        parts << QStringLiteral("%1 VARCHAR(%2) NOT NULL DEFAULT ''").arg(sqlName(c.name)).arg(c.maxLength);
    QStringList keys;
    for (const QString& k : def.key)
        keys << sqlName(k);
    parts << QStringLiteral("PRIMARY KEY (%1)").arg(keys.join(QStringLiteral(", ")));
    // The choosers list by name: an index in that order lets a query stop at its limit.
    if (def.shown.startsWith(QStringLiteral("Bank")))
        parts << QStringLiteral("KEY `ByName` (`Bank`, `Branch`)");
    return QStringLiteral("CREATE TABLE IF NOT EXISTS %1 (%2) ENGINE=MyISAM DEFAULT CHARSET=utf8mb4")
        .arg(sqlName(def.name), parts.join(QStringLiteral(", ")));
}

} // namespace

std::optional<Kind> kindFromName(const QString& name)
{
    const QString n = name.trimmed().toLower();
    if (n == QStringLiteral("banks"))
        return Kind::Banks;
    if (n == QStringLiteral("micr"))
        return Kind::Micr;
    if (n == QStringLiteral("ao"))
        return Kind::Ao;
    return std::nullopt;
}

QString kindName(Kind kind)
{
    switch (kind) {
    case Kind::Banks: return QStringLiteral("banks");
    case Kind::Micr: return QStringLiteral("micr");
    case Kind::Ao: return QStringLiteral("ao");
    }
    return QString();
}

QString kindDescription(Kind kind)
{
    switch (kind) {
    case Kind::Banks: return QStringLiteral("bank branch list");
    case Kind::Micr: return QStringLiteral("MICR list");
    case Kind::Ao: return QStringLiteral("Assessing Officer list");
    }
    return QString();
}

const TableDef& tableDef(Kind kind)
{
    static const QVector<TableDef> defs = buildDefs();
    return defs.at(int(kind));
}

QString likeAnywhere(const QString& text)
{
    QString escaped;
    escaped.reserve(text.size() + 4);
    for (const QChar c : text) {
        if (c == QLatin1Char('\\') || c == QLatin1Char('%') || c == QLatin1Char('_'))
            escaped += QLatin1Char('\\');
        escaped += c;
    }
    return QLatin1Char('%') + escaped + QLatin1Char('%');
}

void BankInfoStore::ensureTables()
{
    if (ensured_)
        return;
    for (Kind kind : {Kind::Banks, Kind::Micr, Kind::Ao})
        connection_.execute(createStatement(tableDef(kind)));
    ensured_ = true;
}

int BankInfoStore::count(Kind kind)
{
    ensureTables();
    const auto result = connection_.query(QStringLiteral("SELECT COUNT(*) FROM ") + sqlName(tableDef(kind).name));
    return result.rows.isEmpty() ? 0 : result.rows.first().value(0).toInt();
}

Lookup BankInfoStore::find(Kind kind, const QString& filter, int limit)
{
    ensureTables();
    const TableDef& def = tableDef(kind);
    QStringList shown;
    for (const QString& c : def.shown)
        shown << sqlName(c);
    const QString haystack = QStringLiteral("CONCAT_WS(' ', %1)").arg(shown.join(QStringLiteral(", ")));

    static const QRegularExpression blanks(QStringLiteral("\\s+"));
    QStringList conditions;
    for (const QString& word : filter.split(blanks, Qt::SkipEmptyParts))
        conditions << haystack + QStringLiteral(" LIKE ") + sqlQuote(likeAnywhere(word));

    QString sql = QStringLiteral("SELECT %1 FROM %2").arg(shown.join(QStringLiteral(", ")), sqlName(def.name));
    if (!conditions.isEmpty())
        sql += QStringLiteral(" WHERE ") + conditions.join(QStringLiteral(" AND "));
    sql += QStringLiteral(" ORDER BY %1 LIMIT %2").arg(def.order).arg(limit + 1);

    Lookup lookup;
    lookup.headings = def.headings;
    const auto result = connection_.query(sql);
    for (const auto& row : result.rows) {
        if (lookup.rows.size() == limit) {
            lookup.more = true;
            break;
        }
        QStringList cells;
        for (const QVariant& v : row)
            cells << v.toString();
        lookup.rows.push_back(cells);
    }
    return lookup;
}

} // namespace corvane::bankinfo
