#include "db/schema.h"

#include "db/connection.h"
#include "db/sqltext.h"

#include <QFile>
#include <QStringList>

namespace corvane::schema {

namespace {

QString values(const QVariantList& row)
{
    QStringList parts;
    for (const QVariant& v : row)
        parts << sqlLiteral(v);
    return parts.join(QLatin1Char(','));
}

int insertRows(Connection& c, const QString& table, const QList<QVariantList>& rows)
{
    for (const QVariantList& row : rows)
        c.execute(QStringLiteral("INSERT IGNORE INTO %1 VALUES (%2)").arg(sqlName(table), values(row)));
    return int(rows.size());
}

QVariantList addInfoRow(const QString& code, int year, const QString& ward, const QString& nob,
                        const QString& retDt, const QString& ackNo, const QString& intDt)
{
    // Code_No … IntDt in table order.
    return {code, year, QStringLiteral("0"), ward, QString(), QStringLiteral("1"), QStringLiteral("0"), QString(),
            QString(), nob, QStringLiteral("1"), QStringLiteral("1"), QStringLiteral("30/09/%1").arg(year),
            QStringLiteral("0"), QString(), QStringLiteral("1"), QStringLiteral("0"), QStringLiteral("0"),
            QStringLiteral("0"), QStringLiteral("0"), QStringLiteral("0"), 42, 42, retDt, ackNo,
            QStringLiteral("MUM"), QStringLiteral("W"), QStringLiteral("11"), QStringLiteral("3"),
            QStringLiteral("0"), 0.0, QStringLiteral("0"), 0.0, QStringLiteral("0"), 0.0, intDt};
}

} // namespace

int fillNatures(Connection& connection)
{
    const auto count = connection.query(QStringLiteral("SELECT COUNT(*) FROM FBT_Nature"));
    if (!count.rows.isEmpty() && count.rows.first().value(0).toInt() > 0)
        return 0;
    QFile file(QStringLiteral(":/corvane/natures.txt"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    int n = 0;
    for (const QByteArray& line : file.readAll().split('\n')) {
        const QString text = QString::fromUtf8(line).trimmed();
        if (text.isEmpty())
            continue;
        ++n;
        connection.execute(QStringLiteral("INSERT INTO FBT_Nature VALUES (%1, %2)").arg(n).arg(sqlQuote(text)));
    }
    return n;
}

int loadDemoData(Connection& c)
{
    const auto count = c.query(QStringLiteral("SELECT COUNT(*) FROM FBT_Info"));
    if (!count.rows.isEmpty() && count.rows.first().value(0).toInt() > 0)
        return 0;
    int n = 0;
    n += insertRows(c, QStringLiteral("FBT_Info"), {
        {QStringLiteral("A001"), QStringLiteral("ANAND TEXTILE MILLS PVT LTD"), QStringLiteral("AABCA1234K"), 16,
         QStringLiteral("UNIT 4"), QStringLiteral("KAMALA MILLS COMPOUND"), QStringLiteral("SENAPATI BAPAT MARG"),
         QStringLiteral("LOWER PAREL"), QStringLiteral("MUMBAI"), QStringLiteral("400013"), QStringLiteral("MAHARASHTRA"),
         QStringLiteral("022"), QStringLiteral("24931122"), QStringLiteral("12/06/1987"), QStringLiteral("1,11"),
         QStringLiteral("accounts@anandtextile.example")},
        {QStringLiteral("B002"), QStringLiteral("BHARAT LOGISTICS"), QStringLiteral("AAEFB5678L"), 3,
         QStringLiteral("12"), QStringLiteral("TRANSPORT NAGAR"), QStringLiteral("GT ROAD"), QStringLiteral("SAHIBABAD"),
         QStringLiteral("GHAZIABAD"), QStringLiteral("201010"), QStringLiteral("UTTAR PRADESH"), QStringLiteral("0120"),
         QStringLiteral("2771234"), QStringLiteral("01/04/1999"), QStringLiteral("6"), QString()},
        {QStringLiteral("C003"), QStringLiteral("CHENNAI SOFTWARE SOLUTIONS LTD"), QStringLiteral("AACCC9012M"), 15,
         QStringLiteral("8TH FLOOR"), QStringLiteral("TIDEL PARK"), QStringLiteral("RAJIV GANDHI SALAI"),
         QStringLiteral("TARAMANI"), QStringLiteral("CHENNAI"), QStringLiteral("600113"), QStringLiteral("TAMIL NADU"),
         QStringLiteral("044"), QStringLiteral("22540000"), QStringLiteral("23/11/2001"), QStringLiteral("7,9"),
         QStringLiteral("finance@chennaisoft.example")},
        {QStringLiteral("D004"), QStringLiteral("DESAI AND ASSOCIATES"), QStringLiteral("AAGFD3456N"), 3,
         QStringLiteral("301"), QStringLiteral("SHIVAM COMPLEX"), QStringLiteral("C G ROAD"), QStringLiteral("NAVRANGPURA"),
         QStringLiteral("AHMEDABAD"), QStringLiteral("380009"), QStringLiteral("GUJARAT"), QStringLiteral("079"),
         QStringLiteral("26441234"), QStringLiteral("15/07/2004"), QStringLiteral("9"), QString()},
        {QStringLiteral("E005"), QStringLiteral("EASTERN HOTELS CO-OPERATIVE SOCIETY"), QStringLiteral("AAAAE7890P"), 17,
         QStringLiteral("2"), QStringLiteral("PARK MANSIONS"), QStringLiteral("PARK STREET"), QString(),
         QStringLiteral("KOLKATA"), QStringLiteral("700016"), QStringLiteral("WEST BENGAL"), QStringLiteral("033"),
         QStringLiteral("22291234"), QStringLiteral("05/01/1995"), QStringLiteral("5"), QString()},
        {QStringLiteral("F006"), QStringLiteral("FORTUNE PHARMA LTD"), QStringLiteral("AABCF2345Q"), 15,
         QStringLiteral("PLOT 45"), QString(), QStringLiteral("PHASE II"), QStringLiteral("IDA JEEDIMETLA"),
         QStringLiteral("HYDERABAD"), QStringLiteral("500055"), QStringLiteral("TELANGANA"), QStringLiteral("040"),
         QStringLiteral("23091234"), QStringLiteral("18/02/1991"), QStringLiteral("1,10"),
         QStringLiteral("tax@fortunepharma.example")},
    });
    n += insertRows(c, QStringLiteral("Bank_Master"), {
        {1, QStringLiteral("STATE BANK OF INDIA"), QStringLiteral("NARIMAN POINT"), QStringLiteral("00300")},
        {2, QStringLiteral("HDFC BANK LTD"), QStringLiteral("LOWER PAREL"), QStringLiteral("00060")},
        {3, QStringLiteral("PUNJAB NATIONAL BANK"), QStringLiteral("CONNAUGHT PLACE"), QStringLiteral("0153")},
        {4, QStringLiteral("INDIAN BANK"), QStringLiteral("TARAMANI"), QStringLiteral("00910")},
        {5, QStringLiteral("BANK OF BARODA"), QStringLiteral("NAVRANGPURA"), QStringLiteral("NAVRAN")},
        {6, QStringLiteral("ICICI BANK LTD"), QStringLiteral("PARK STREET"), QStringLiteral("000126")},
    });
    n += insertRows(c, QStringLiteral("FBT_BankDet"), {
        {QStringLiteral("A001"), 2008, 1, QStringLiteral("HDFC BANK LTD"), QStringLiteral("LOWER PAREL, MUMBAI"),
         QStringLiteral("400240015"), QStringLiteral("CURRENT"), QStringLiteral("00602320001234"), QStringLiteral("Y"), QStringLiteral("Y")},
        {QStringLiteral("A001"), 2008, 2, QStringLiteral("STATE BANK OF INDIA"), QStringLiteral("NARIMAN POINT, MUMBAI"),
         QStringLiteral("400002003"), QStringLiteral("SAVINGS"), QStringLiteral("10987654321"), QStringLiteral("N"), QStringLiteral("N")},
        {QStringLiteral("C003"), 2007, 1, QStringLiteral("INDIAN BANK"), QStringLiteral("TARAMANI, CHENNAI"),
         QStringLiteral("600019045"), QStringLiteral("CURRENT"), QStringLiteral("6012345678"), QStringLiteral("Y"), QStringLiteral("Y")},
    });
    n += insertRows(c, QStringLiteral("FBT_AddInfo"), {
        addInfoRow(QStringLiteral("A001"), 2007, QStringLiteral("10(2)(1)"), QStringLiteral("1"),
                   QStringLiteral("28/10/2007"), QStringLiteral("071028001234"), QStringLiteral("todate")),
        addInfoRow(QStringLiteral("A001"), 2008, QStringLiteral("10(2)(1)"), QStringLiteral("1"),
                   QString(), QString(), QString()),
        addInfoRow(QStringLiteral("C003"), 2008, QStringLiteral("CIRCLE 1(1)"), QStringLiteral("7"),
                   QStringLiteral("30/09/2008"), QStringLiteral("080930004567"), QStringLiteral("30/09/2008")),
    });
    n += insertRows(c, QStringLiteral("bill_main"), {
        {1, QStringLiteral("A001"), QStringLiteral("15/05/2008"), 15000.0, QStringLiteral("FBT RETURN AY 2008-09")},
        {2, QStringLiteral("C003"), QStringLiteral("20/05/2008"), 12500.0, QStringLiteral("FBT RETURN AY 2008-09")},
    });
    n += insertRows(c, QStringLiteral("bill_det"), {
        {1, 1, QStringLiteral("PREPARATION OF FBT RETURN"), 12000.0},
        {1, 2, QStringLiteral("OUT OF POCKET EXPENSES"), 3000.0},
        {2, 1, QStringLiteral("PREPARATION OF FBT RETURN"), 12500.0},
    });
    n += insertRows(c, QStringLiteral("recp_main"), {
        {1, QStringLiteral("A001"), QStringLiteral("02/06/2008"), 15000.0, QStringLiteral("CHEQUE")},
    });
    n += insertRows(c, QStringLiteral("recp_det"), {{1, 1, 15000.0}});
    return n;
}

} // namespace corvane::schema
