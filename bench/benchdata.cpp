#include "bench/benchdata.h"

#include "db/connection.h"
#include "db/schema.h"
#include "db/sqltext.h"

#include <QFile>
#include <QStringList>

#include <array>

namespace corvane::bench {

namespace {

constexpr quint64 kSeed = 20080401;

// splitmix64: small, fast and the same on every machine.
class Random {
public:
    Random(quint64 stream, quint64 index) : state_(kSeed ^ (stream * 0x9E3779B97F4A7C15ULL) ^ (index * 0xBF58476D1CE4E5B9ULL)) {}
    quint64 next()
    {
        quint64 z = (state_ += 0x9E3779B97F4A7C15ULL);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }
    int below(int n) { return int(next() % quint64(n)); }
    bool chance(int percent) { return below(100) < percent; }
    template <size_t N>
    QLatin1String pick(const std::array<const char*, N>& from)
    {
        return QLatin1String(from[size_t(below(int(N)))]);
    }
    QString digits(int count)
    {
        QString s;
        for (int i = 0; i < count; ++i)
            s += QChar(u'0' + below(10));
        return s;
    }
    QChar letter() { return QChar(u'A' + below(26)); }

private:
    quint64 state_;
};

const std::array<const char*, 32> kFirstNames{
    "RAJESH", "SURESH", "ANIL", "SUNIL", "PRAKASH", "VIJAY", "RAMESH", "MAHESH", "SANJAY", "AJAY", "DEEPAK",
    "ASHOK", "MANOJ", "ANAND", "KIRAN", "PRIYA", "SUNITA", "LAKSHMI", "MEENA", "KAVITA", "ANJALI", "POOJA",
    "NEHA", "GEETA", "VENKATESH", "SRINIVAS", "MURALI", "ARUN", "GOPAL", "HARISH", "NAVEEN", "SATISH"};
const std::array<const char*, 40> kSurnames{
    "SHARMA", "VERMA", "GUPTA", "AGARWAL", "PATEL", "SHAH", "MEHTA", "DESAI", "JOSHI", "KULKARNI", "DESHPANDE",
    "IYER", "IYENGAR", "NAIR", "MENON", "PILLAI", "REDDY", "RAO", "NAIDU", "CHOWDHURY", "BANERJEE", "MUKHERJEE",
    "CHATTERJEE", "DAS", "BOSE", "SINGH", "GILL", "SETHI", "MALHOTRA", "KAPOOR", "KHANNA", "JAIN", "BHATT",
    "PANDEY", "MISHRA", "TIWARI", "YADAV", "KHAN", "FERNANDES", "D'SOUZA"};
const std::array<const char*, 18> kPrefixes{"SHREE", "SRI", "NEW", "NATIONAL", "BHARAT", "HINDUSTAN", "GANESH",
                                            "LAXMI", "SAI", "OM", "JAI", "RELIABLE", "STANDARD", "UNITED",
                                            "ORIENT", "EASTERN", "WESTERN", "SOUTHERN"};
const std::array<const char*, 18> kTrades{"TEXTILES", "PHARMA", "ENGINEERING", "CONSTRUCTIONS", "EXPORTS",
                                          "TRADERS", "INFOTECH", "CHEMICALS", "FOODS", "LOGISTICS", "STEELS",
                                          "AGENCIES", "ENTERPRISES", "INDUSTRIES", "MOTORS", "JEWELLERS", "HOTELS",
                                          "SOFTWARE"};
const std::array<const char*, 12> kStreets{"M G ROAD", "STATION ROAD", "NEHRU MARG", "LINK ROAD", "RING ROAD",
                                           "NETAJI SUBHASH ROAD", "TILAK ROAD", "ASHRAM ROAD", "ANNA SALAI",
                                           "PARK STREET", "BRIGADE ROAD", "MALL ROAD"};
const std::array<const char*, 12> kAreas{"INDUSTRIAL AREA", "SECTOR 12", "MAIN BAZAAR", "CIVIL LINES",
                                         "NEW COLONY", "MIDC", "GANDHI NAGAR", "NEHRU NAGAR", "RAJAJI NAGAR",
                                         "SALT LAKE", "T NAGAR", "FORT"};
const std::array<const char*, 6> kBuildings{"BHAVAN", "TOWERS", "COMPLEX", "CHAMBERS", "HOUSE", "ARCADE"};
const std::array<const char*, 12> kBanks{
    "STATE BANK OF INDIA", "PUNJAB NATIONAL BANK", "BANK OF BARODA", "CANARA BANK", "UNION BANK OF INDIA",
    "BANK OF INDIA", "HDFC BANK LTD", "ICICI BANK LTD", "AXIS BANK LTD", "INDIAN BANK", "SYNDICATE BANK",
    "CENTRAL BANK OF INDIA"};
const std::array<const char*, 4> kDesignations{"DIRECTOR", "PARTNER", "MANAGING DIRECTOR", "TRUSTEE"};

struct City {
    const char* name;
    const char* state;
    const char* std;
    const char* pin;
};
const std::array<City, 20> kCities{{
    {"MUMBAI", "MAHARASHTRA", "022", "400"},      {"PUNE", "MAHARASHTRA", "020", "411"},
    {"NAGPUR", "MAHARASHTRA", "0712", "440"},     {"DELHI", "DELHI", "011", "110"},
    {"NOIDA", "UTTAR PRADESH", "0120", "201"},    {"LUCKNOW", "UTTAR PRADESH", "0522", "226"},
    {"KOLKATA", "WEST BENGAL", "033", "700"},     {"CHENNAI", "TAMIL NADU", "044", "600"},
    {"COIMBATORE", "TAMIL NADU", "0422", "641"},  {"BANGALORE", "KARNATAKA", "080", "560"},
    {"HYDERABAD", "ANDHRA PRADESH", "040", "500"}, {"AHMEDABAD", "GUJARAT", "079", "380"},
    {"SURAT", "GUJARAT", "0261", "395"},          {"JAIPUR", "RAJASTHAN", "0141", "302"},
    {"KOCHI", "KERALA", "0484", "682"},           {"CHANDIGARH", "CHANDIGARH", "0172", "160"},
    {"INDORE", "MADHYA PRADESH", "0731", "452"},  {"BHUBANESWAR", "ORISSA", "0674", "751"},
    {"PATNA", "BIHAR", "0612", "800"},            {"LUDHIANA", "PUNJAB", "0161", "141"},
}};

// Stored status, its PAN letter and its share of the clients in percent.
struct Status {
    int number;
    char panLetter;
    int percent;
};
const std::array<Status, 10> kStatuses{{{16, 'C', 35}, {15, 'C', 10}, {3, 'F', 28}, {9, 'A', 5}, {11, 'T', 3},
                                        {17, 'A', 5}, {0, 'P', 8}, {1, 'H', 3}, {4, 'J', 2}, {5, 'C', 1}}};

enum Stream : quint64 { ClientStream = 1, YearStream = 2, BankListStream = 3 };

QString date(Random& r, int firstYear, int years)
{
    return QStringLiteral("%1/%2/%3")
        .arg(r.below(28) + 1, 2, 10, QLatin1Char('0'))
        .arg(r.below(12) + 1, 2, 10, QLatin1Char('0'))
        .arg(firstYear + r.below(years));
}

QString name(Random& r, int status, const City& city)
{
    const QString surname = r.pick(kSurnames);
    switch (status) {
    case 16: return QStringLiteral("%1 %2 PRIVATE LIMITED").arg(r.chance(50) ? surname : QString(r.pick(kPrefixes)), r.pick(kTrades));
    case 15:
    case 5: return QStringLiteral("%1 %2 LIMITED").arg(r.pick(kPrefixes), r.pick(kTrades));
    case 3:
        switch (r.below(3)) {
        case 0: return surname + QStringLiteral(" & CO");
        case 1: return surname + QStringLiteral(" AND ASSOCIATES");
        default: return QStringLiteral("M/S %1 %2").arg(r.pick(kPrefixes), r.pick(kTrades));
        }
    case 9: return QStringLiteral("%1 %2 ASSOCIATION").arg(QLatin1String(city.name), r.pick(kTrades));
    case 11: return QStringLiteral("%1 FAMILY TRUST").arg(surname);
    case 17: return QStringLiteral("%1 %2 CO-OPERATIVE SOCIETY LTD").arg(QLatin1String(city.name), r.pick(kTrades));
    case 1: return QStringLiteral("%1 %2 (HUF)").arg(r.pick(kFirstNames), surname);
    case 4: return QStringLiteral("%1 EDUCATION SOCIETY").arg(r.pick(kPrefixes));
    default: return QStringLiteral("%1 %2 %3").arg(r.pick(kFirstNames)).arg(r.letter()).arg(surname);
    }
}

// The first letter of the name's last word for persons, of the name for others.
QChar panNameLetter(const QString& name, int status)
{
    const QString source = status == 0 || status == 1 ? name.section(QLatin1Char(' '), status == 0 ? 2 : 1, status == 0 ? 2 : 1) : name;
    return source.isEmpty() ? QChar(u'X') : source.at(0);
}

QString rowOf(const QStringList& values)
{
    return QLatin1Char('(') + values.join(QLatin1Char(',')) + QLatin1Char(')');
}

QString q(const QString& text)
{
    return text.isEmpty() ? QStringLiteral("NULL") : sqlQuote(text);
}

void insert(Connection& connection, const QString& table, const QString& columns, const QStringList& rows)
{
    if (!rows.isEmpty())
        connection.execute(QStringLiteral("INSERT INTO %1 (%2) VALUES ").arg(sqlName(table), columns) + rows.join(QLatin1Char(',')));
}

// The SQL of clientCode() for a client index.
QString codeSql(const QString& index)
{
    return QStringLiteral("CONCAT(CHAR(65 + (%1) MOD 26), LPAD((%1) + 1, 5, '0'))").arg(index);
}

} // namespace

QString clientCode(int index)
{
    return QChar(u'A' + index % 26) + QStringLiteral("%1").arg(index + 1, 5, 10, QLatin1Char('0'));
}

Client client(int index)
{
    Random r(ClientStream, quint64(index));
    Client c;
    c.code = clientCode(index);
    int roll = r.below(100);
    const Status* status = &kStatuses.front();
    for (const Status& s : kStatuses) {
        status = &s;
        if (roll < s.percent)
            break;
        roll -= s.percent;
    }
    c.status = status->number;
    const City& city = kCities[size_t(r.below(int(kCities.size())))];
    c.name = name(r, c.status, city);
    c.pan = QStringLiteral("AA%1%2%3%4%5")
                .arg(r.letter())
                .arg(QLatin1Char(status->panLetter))
                .arg(panNameLetter(c.name, c.status))
                .arg(r.digits(4))
                .arg(r.letter());
    switch (r.below(4)) {
    case 0: c.flat = QStringLiteral("FLAT %1").arg(r.below(900) + 101); break;
    case 1: c.flat = QStringLiteral("OFFICE NO. %1").arg(r.below(60) + 1); break;
    case 2: c.flat = QStringLiteral("UNIT %1").arg(r.below(40) + 1); break;
    default: break;
    }
    c.building = r.chance(80) ? QStringLiteral("%1 %2").arg(r.pick(kPrefixes), r.pick(kBuildings)) : QString();
    c.street = r.pick(kStreets);
    c.area = r.pick(kAreas);
    c.city = QLatin1String(city.name);
    c.pin = QLatin1String(city.pin) + r.digits(3);
    c.state = QLatin1String(city.state);
    c.std = QLatin1String(city.std);
    c.telephone = QString(QChar(u'2' + r.below(7))) + r.digits(QLatin1String(city.std).size() == 3 ? 7 : 6);
    c.incorporated = date(r, 1950, 57);
    c.nature = r.chance(30) ? QStringLiteral("%1,%2").arg(r.below(15) + 1).arg(r.below(15) + 16) : QString::number(r.below(30) + 1);
    if (r.chance(50))
        c.email = c.name.section(QLatin1Char(' '), 0, 0).toLower().remove(QLatin1Char('\'')) + QStringLiteral("@") + c.code.toLower()
                  + QStringLiteral(".example");
    return c;
}

void insertClients(Connection& connection, int count, int first, bool details)
{
    schema::createMissingTables(connection);
    constexpr int kBatch = 500;
    QStringList miscColumns{QStringLiteral("Code_No"), QStringLiteral("TYear"), QStringLiteral("RepAss"),
                            QStringLiteral("Var0_0"), QStringLiteral("Var0_1"), QStringLiteral("Var0_2"),
                            QStringLiteral("Var0_3"), QStringLiteral("Opt44AA"), QStringLiteral("Opt44AB"),
                            QStringLiteral("Var1_0"), QStringLiteral("Var1_1"), QStringLiteral("Var2_0")};
    for (int from = first; from < first + count; from += kBatch) {
        QStringList info, add, misc, banks;
        for (int i = from; i < std::min(first + count, from + kBatch); ++i) {
            const Client c = client(i);
            info << rowOf({q(c.code), q(c.name), q(c.pan), QString::number(c.status), q(c.flat), q(c.building),
                           q(c.street), q(c.area), q(c.city), q(c.pin), q(c.state), q(c.std), q(c.telephone),
                           q(c.incorporated), q(c.nature), q(c.email)});
            Random r(YearStream, quint64(i));
            const QString ward = r.chance(60) ? QStringLiteral("WARD %1(%2)").arg(r.below(30) + 1).arg(r.below(6) + 1)
                                              : QStringLiteral("CIRCLE %1(%2)").arg(r.below(12) + 1).arg(r.below(4) + 1);
            const QString signatory = QStringLiteral("%1 %2").arg(r.pick(kFirstNames), r.pick(kSurnames));
            for (const int year : kYears) {
                if (!r.chance(85))
                    continue; // not every client in every year
                const bool filed = r.chance(year == kYears[2] ? 40 : 90);
                const QString filedOn = filed ? QStringLiteral("%1/%2/%3")
                                                    .arg(r.below(28) + 1, 2, 10, QLatin1Char('0'))
                                                    .arg(r.below(4) + 8, 2, 10, QLatin1Char('0'))
                                                    .arg(year)
                                              : QString();
                const QString ack = filed ? filedOn.mid(8, 2) + filedOn.mid(3, 2) + filedOn.left(2) + r.digits(6) : QString();
                const int employees = r.below(500) + 2;
                add << rowOf({q(c.code), QString::number(year), q(QStringLiteral("N")), q(ward), q(QString()),
                              q(r.chance(90) ? QStringLiteral("1") : QStringLiteral("3")), q(QStringLiteral("N")),
                              q(c.nature.section(QLatin1Char(','), 0, 0)), q(r.chance(30) ? QStringLiteral("Y") : QStringLiteral("N")),
                              q(r.chance(40) ? QStringLiteral("Y") : QStringLiteral("N")), QString::number(employees),
                              QString::number(employees + r.below(20)), q(filedOn), q(ack), q(c.city.left(3)),
                              q(QStringLiteral("W")), QString::number(r.below(20) + 1), QString::number(r.below(9) + 1),
                              q(r.chance(10) ? (r.chance(50) ? QStringLiteral("todate") : date(r, year, 1)) : QString())});
                if (!details)
                    continue;
                misc << rowOf({q(c.code), QString::number(year), q(QStringLiteral("N")), q(signatory),
                               q(QStringLiteral("%1 %2").arg(r.pick(kFirstNames), signatory.section(QLatin1Char(' '), 1))),
                               q(r.pick(kDesignations)), q(c.city), q(QStringLiteral("N")), q(QStringLiteral("N")),
                               q(c.street + QStringLiteral(", ") + c.area), q(c.pin), q(QStringLiteral("N"))});
                const int accounts = 1 + r.below(3);
                for (int a = 1; a <= accounts; ++a) {
                    const int bank = r.below(int(kBanks.size()));
                    banks << rowOf({q(c.code), QString::number(year), QString::number(a), q(QLatin1String(kBanks[size_t(bank)])),
                                    q(c.area + QStringLiteral(", ") + c.city),
                                    q(c.pin.left(3) + QStringLiteral("%1").arg(bank * 17 % 1000, 3, 10, QLatin1Char('0')) + r.digits(3)),
                                    q(r.chance(70) ? QStringLiteral("CURRENT") : QStringLiteral("SAVINGS")), q(r.digits(11 + r.below(4))),
                                    q(r.chance(30) ? QStringLiteral("Y") : QStringLiteral("N")), q(a == 1 ? QStringLiteral("Y") : QStringLiteral("N"))});
                }
            }
        }
        insert(connection, QStringLiteral("FBT_Info"),
               QStringLiteral("Code_No, Name, PAN, ClStatus, Flat, Building, Street, Area, City, Pin, State, STD, TelNo, DOI, BusNat, EMail"),
               info);
        insert(connection, QStringLiteral("FBT_AddInfo"),
               QStringLiteral("Code_No, TYear, ChAdd, Ward, OldWard, Section, RevRet, NOB, Ac44AA, Ac44AB, IndiaEmp, TotalEmp, "
                              "RetDt, RetAckNo, AreaCd, AoTyp, AoRng, AoNo, IntDt"),
               add);
        insert(connection, QStringLiteral("FBT_MiscInf"), miscColumns.join(QStringLiteral(", ")), misc);
        insert(connection, QStringLiteral("FBT_BankDet"),
               QStringLiteral("code_no, Yr, SrNo, BankName, BranchAdd, MICR, AccType, AccNo, ECS, DefAcc"), banks);
    }
}

int sharedDatabaseMegabytes()
{
    bool ok = false;
    const int megabytes = qEnvironmentVariableIntValue("CORVANE_BENCH_MB", &ok);
    if (ok && megabytes > 0)
        return megabytes;
    return qEnvironmentVariableIntValue("CORVANE_BENCH_QUICK") == 1 ? 100 : 1024;
}

qint64 databaseBytes(Connection& connection)
{
    return connection
        .query(QStringLiteral("SELECT COALESCE(SUM(data_length + index_length), 0) FROM information_schema.tables "
                              "WHERE table_schema = DATABASE()"))
        .rows.value(0)
        .value(0)
        .toLongLong();
}

int makeDatabase(Connection& connection, int megabytes, const std::function<void(const QString&)>& progress)
{
    const int clients = megabytes * 50;
    const auto say = [&](const QString& text) {
        if (progress)
            progress(text);
    };
    const auto marker = connection.query(QStringLiteral("SELECT COUNT(*) FROM information_schema.tables "
                                                        "WHERE table_schema = DATABASE() AND table_name = 'bench_made'"));
    if (marker.rows.value(0).value(0).toInt() > 0
        && connection.query(QStringLiteral("SELECT megabytes FROM bench_made")).rows.value(0).value(0).toInt() == megabytes) {
        say(QStringLiteral("using the %1 MB database made before").arg(megabytes));
        return clients;
    }
    for (const auto& row : connection.query(QStringLiteral("SHOW TABLES")).rows)
        connection.execute(QStringLiteral("DROP TABLE ") + sqlName(row.value(0).toString()));
    schema::createMissingTables(connection);
    constexpr int kClientChunk = 5000;
    for (int first = 0; first < clients; first += kClientChunk) {
        insertClients(connection, std::min(kClientChunk, clients - first), first);
        say(QStringLiteral("  %1 of %2 clients").arg(std::min(clients, first + kClientChunk)).arg(clients));
    }

    // Bills (four lines each) and receipts for four bills in five, up to the size.
    const QString code = codeSql(QStringLiteral("seq * 7919 MOD %1").arg(clients));
    const QString amount = QStringLiteral("2500 + (seq * 7907 MOD 400) * 125");
    const qint64 target = qint64(megabytes) * 1024 * 1024;
    constexpr qint64 kBillChunk = 25000; // about 14 MB, so that the size is met closely
    for (qint64 first = 1; databaseBytes(connection) < target; first += kBillChunk) {
        const QString range = QStringLiteral("seq_%1_to_%2").arg(first).arg(first + kBillChunk - 1);
        connection.execute(
            QStringLiteral("INSERT INTO bill_main (billid, code_no, billdt, amount, narration) SELECT seq, %1, "
                           "DATE_FORMAT(DATE('2007-04-01') + INTERVAL (seq * 104729 MOD 1096) DAY, '%d/%m/%Y'), %2, "
                           "CONCAT('PROFESSIONAL FEES FOR FBT RETURN AY ', 2007 + seq MOD 3, '-', LPAD(8 + seq MOD 3, 2, '0')) FROM ")
                .arg(code, amount)
            + range);
        connection.execute(
            QStringLiteral("INSERT INTO bill_det (billid, srno, particulars, amount) SELECT %1 + seq DIV 4, seq MOD 4 + 1, "
                           "ELT(seq MOD 4 + 1, 'PREPARATION AND FILING OF FBT RETURN', 'COMPUTATION OF VALUE OF FRINGE BENEFITS', "
                           "'ATTENDANCE BEFORE THE ASSESSING OFFICER', 'OUT OF POCKET EXPENSES'), 500 + (seq * 7907 MOD 100) * 50 "
                           "FROM seq_0_to_%2")
                .arg(first)
                .arg(kBillChunk * 4 - 1));
        connection.execute(
            QStringLiteral("INSERT INTO recp_main (recpid, code_no, recpdt, amount, mode) SELECT seq, %1, "
                           "DATE_FORMAT(DATE('2007-05-01') + INTERVAL (seq * 104729 MOD 1096) DAY, '%d/%m/%Y'), %2, "
                           "ELT(seq MOD 4 + 1, 'CHEQUE', 'CASH', 'DEMAND DRAFT', 'RTGS') FROM ")
                .arg(code, amount)
            + range + QStringLiteral(" WHERE seq MOD 5 <> 0"));
        connection.execute(QStringLiteral("INSERT INTO recp_det (recpid, billid, amount) SELECT seq, seq, %1 FROM ").arg(amount)
                           + range + QStringLiteral(" WHERE seq MOD 5 <> 0"));
        if (first % (kBillChunk * 8) == 1)
            say(QStringLiteral("  %1 MB of %2").arg(databaseBytes(connection) / 1048576).arg(megabytes));
    }
    connection.execute(QStringLiteral("CREATE TABLE bench_made (megabytes INT)"));
    connection.execute(QStringLiteral("INSERT INTO bench_made VALUES (%1)").arg(megabytes));
    connection.execute(QStringLiteral("FLUSH TABLES"));
    return clients;
}

void writeBankList(const QString& path, int rows)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw std::runtime_error("cannot write the bank list");
    file.write("BANK,IFSC,MICR,BRANCH,ADDRESS,CITY,DISTRICT,STATE\r\n");
    for (int i = 0; i < rows; ++i) {
        Random r(BankListStream, quint64(i));
        const int bank = r.below(int(kBanks.size()));
        const City& city = kCities[size_t(r.below(int(kCities.size())))];
        const QString bankName = QLatin1String(kBanks[size_t(bank)]);
        const QString ifsc = bankName.left(1) + bankName.section(QLatin1Char(' '), 1, 1).left(1)
                             + bankName.section(QLatin1Char(' '), -1).left(2) + QStringLiteral("0%1").arg(i, 6, 10, QLatin1Char('0'));
        const QString address = QStringLiteral("%1 %2, %3").arg(r.below(300) + 1).arg(r.pick(kStreets), r.pick(kAreas));
        file.write(QStringLiteral("%1,%2,%3,%4,\"%5\",%6,%6,%7\r\n")
                       .arg(bankName, ifsc, QLatin1String(city.pin) + QStringLiteral("%1").arg(i, 6, 10, QLatin1Char('0')),
                            QStringLiteral("%1 BRANCH %2").arg(r.pick(kAreas)).arg(i), address, QLatin1String(city.name),
                            QLatin1String(city.state))
                       .toLatin1());
    }
}

} // namespace corvane::bench
