#include "host/clientservice.h"

#include "component/clsmain.h"
#include "db/connection.h"
#include "db/schema.h"
#include "db/sqltext.h"
#include "host/clientlistmodel.h"
#include "core/clientstatus.h"
#include "host/failuretext.h"

#include <QHash>
#include <QRegularExpression>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <algorithm>

namespace corvane::host {

namespace {

const QString kColumns = QStringLiteral(
    "Code_No, Name, PAN, ClStatus, Flat, Building, Street, Area, City, Pin, State, STD, TelNo, DOI, BusNat, EMail");

QString text(const QVector<QVariant>& row, int index)
{
    const QVariant v = row.value(index);
    return v.isNull() ? QString() : v.toString();
}

ClientRecord fromRow(const QVector<QVariant>& row)
{
    ClientRecord r;
    r.code = text(row, 0);
    r.name = text(row, 1);
    r.pan = text(row, 2);
    r.status = row.value(3).toInt();
    r.flat = text(row, 4);
    r.building = text(row, 5);
    r.street = text(row, 6);
    r.area = text(row, 7);
    r.city = text(row, 8);
    r.pin = text(row, 9);
    r.state = text(row, 10);
    r.std = text(row, 11);
    r.telNo = text(row, 12);
    r.doi = text(row, 13);
    r.natures = ClientRecord::parseBusNat(text(row, 14));
    r.email = text(row, 15);
    return r;
}

// Values in the order of kColumns.
QStringList literals(const ClientRecord& r)
{
    return {sqlQuote(r.code), sqlQuote(r.name), sqlQuote(r.pan), QString::number(r.status), sqlQuote(r.flat),
            sqlQuote(r.building), sqlQuote(r.street), sqlQuote(r.area), sqlQuote(r.city), sqlQuote(r.pin),
            sqlQuote(r.state), sqlQuote(r.std), sqlQuote(r.telNo), sqlQuote(r.doi), sqlQuote(r.busNat()),
            sqlQuote(r.email)};
}

// Codes are compared in capitals, as the code change does.
QString codeIs(const QString& code)
{
    return QStringLiteral("ucase(code_no)=") + sqlQuote(code.toUpper());
}

} // namespace

QString ClientRecord::busNat() const
{
    QList<int> sorted = natures;
    std::sort(sorted.begin(), sorted.end());
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    QStringList parts;
    for (int n : sorted)
        parts << QString::number(n);
    return parts.join(QLatin1Char(','));
}

QList<int> ClientRecord::parseBusNat(const QString& text)
{
    QList<int> list;
    for (const QString& part : text.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        bool ok = false;
        const int n = part.trimmed().toInt(&ok);
        if (ok)
            list << n;
    }
    return list;
}

ClientService::ClientService(ClsMain& cls)
    : cls_(cls)
{
}

Connection& ClientService::connection() const
{
    const auto c = cls_.CnnObj();
    if (!c)
        throw Failure(err::ObjectNotSet, kHostModule, QStringLiteral("There is no database connection"));
    return *c;
}

QList<ClientRecord> ClientService::list() const
{
    QList<ClientRecord> clients;
    for (const auto& row : connection().query(QStringLiteral("Select %1 from FBT_Info order by Code_No").arg(kColumns)).rows)
        clients << fromRow(row);
    return clients;
}

QVector<ClientListEntry> ClientService::listing() const
{
    // Read row by row into the list: a practice may have a hundred thousand clients.
    QSqlQuery q(connection().database());
    q.setForwardOnly(true);
    if (!q.exec(QStringLiteral("Select Code_No, Name, PAN, ClStatus, City from FBT_Info order by Code_No")))
        throw Connection::failureFrom(q.lastError(), QStringLiteral("MySQL"));
    QVector<ClientListEntry> clients;
    if (q.size() > 0)
        clients.reserve(q.size());
    QHash<int, QString> statuses; // one shared text per status
    while (q.next()) {
        const int status = q.value(3).toInt();
        auto name = statuses.constFind(status);
        if (name == statuses.constEnd())
            name = statuses.insert(status, clientStatusName(status));
        clients.push_back({q.value(0).toString(), q.value(1).toString(), q.value(2).toString(), *name, q.value(4).toString()});
    }
    return clients;
}

std::optional<ClientRecord> ClientService::load(const QString& code) const
{
    const auto rows = connection().query(QStringLiteral("Select %1 from FBT_Info where %2").arg(kColumns, codeIs(code))).rows;
    if (rows.isEmpty())
        return std::nullopt;
    return fromRow(rows.first());
}

QList<Nature> ClientService::natures() const
{
    QList<Nature> list;
    for (const auto& row : connection().query(QStringLiteral("Select SrNo, NatDesc from FBT_Nature order by SrNo")).rows)
        list.push_back({row.value(0).toInt(), text(row, 1)});
    return list;
}

QString ClientService::tableUsingCode(const QString& code) const
{
    // The same tables the code change and the deletion work on: every one with a code_no column.
    QStringList tables;
    for (const auto& row : connection().query(QStringLiteral(
             "Select TABLE_NAME from information_schema.COLUMNS where TABLE_SCHEMA=DATABASE() and COLUMN_NAME='code_no'")).rows)
        tables << text(row, 0);
    std::stable_sort(tables.begin(), tables.end(), [](const QString& a, const QString& b) {
        return a.compare(QStringLiteral("FBT_Info"), Qt::CaseInsensitive) == 0
            && b.compare(QStringLiteral("FBT_Info"), Qt::CaseInsensitive) != 0;
    });
    for (const QString& table : tables) {
        const auto rows = connection().query(QStringLiteral("Select 1 from %1 where %2 limit 1").arg(sqlName(table), codeIs(code))).rows;
        if (!rows.isEmpty())
            return table;
    }
    return QString();
}

ClientOutcome ClientService::normalise(ClientRecord& r, const QString& originalCode) const
{
    using Field = ClientOutcome::Field;
    for (QString* s : {&r.name, &r.flat, &r.building, &r.street, &r.area, &r.city, &r.pin, &r.state, &r.std, &r.telNo,
                       &r.doi, &r.email})
        *s = s->trimmed();
    r.code = r.code.trimmed().toUpper();
    r.pan = r.pan.trimmed().toUpper();

    if (r.code.isEmpty())
        return ClientOutcome::refused(QStringLiteral("Enter the client's code."), Field::Code);
    if (r.code.size() > 20)
        return ClientOutcome::refused(QStringLiteral("A client code has at most 20 characters."), Field::Code);
    static const QRegularExpression badCode(QStringLiteral("['\"\\\\,]"));
    if (r.code.contains(badCode))
        return ClientOutcome::refused(QStringLiteral("A client code cannot contain quotes, commas or back slashes."), Field::Code);
    if (r.name.isEmpty())
        return ClientOutcome::refused(QStringLiteral("Enter the client's name."), Field::Name);
    if (!cls_.ValidPan(r.pan))
        return ClientOutcome::refused(
            QStringLiteral("%1 is not a valid PAN: five letters, four digits and a letter, such as AABCA1234K.").arg(r.pan),
            Field::Pan);
    static const QRegularExpression pin(QStringLiteral("^[0-9]{6}$"));
    if (!r.pin.isEmpty() && !pin.match(r.pin).hasMatch())
        return ClientOutcome::refused(QStringLiteral("A PIN code has six digits."), Field::Pin);
    if (!r.doi.isEmpty()) {
        QString year; // empty: the date takes its century from the year being worked on
        const QString date = cls_.ConvertDate(r.doi, QStringLiteral("dd/MM/yyyy"), year);
        if (date.isEmpty())
            return ClientOutcome::refused(QStringLiteral("%1 is not a valid date: type it as dd/mm/yyyy.").arg(r.doi), Field::Doi);
        r.doi = date;
    }
    static const QRegularExpression mail(QStringLiteral("^[^@\\s]+@[^@\\s]+$"));
    if (!r.email.isEmpty() && !mail.match(r.email).hasMatch())
        return ClientOutcome::refused(QStringLiteral("%1 is not an e-mail address.").arg(r.email), Field::EMail);
    schema::LengthCheck length(QStringLiteral("FBT_Info"));
    length(QStringLiteral("Name"), r.name, QStringLiteral("Name"))(QStringLiteral("Flat"), r.flat, QStringLiteral("Flat / Door No."))(
        QStringLiteral("Building"), r.building, QStringLiteral("Building"))(QStringLiteral("Street"), r.street,
                                                                            QStringLiteral("Street"))(
        QStringLiteral("Area"), r.area, QStringLiteral("Area"))(QStringLiteral("City"), r.city, QStringLiteral("City"))(
        QStringLiteral("State"), r.state, QStringLiteral("State"))(QStringLiteral("STD"), r.std, QStringLiteral("STD Code"))(
        QStringLiteral("TelNo"), r.telNo, QStringLiteral("Telephone"))(QStringLiteral("BusNat"), r.busNat(),
                                                                       QStringLiteral("Nature of Business"))(
        QStringLiteral("EMail"), r.email, QStringLiteral("E-mail"));
    if (!length.ok()) {
        const QString column = length.column();
        return ClientOutcome::refused(length.problem(), column == QLatin1String("Name")     ? Field::Name
                                                        : column == QLatin1String("EMail")  ? Field::EMail
                                                        : column == QLatin1String("BusNat") ? Field::Natures
                                                                                            : Field::None);
    }

    if (originalCode.isEmpty() || r.code.compare(originalCode, Qt::CaseInsensitive) != 0) {
        const QString table = tableUsingCode(r.code);
        if (table.compare(QStringLiteral("FBT_Info"), Qt::CaseInsensitive) == 0) {
            const auto other = load(r.code);
            return ClientOutcome::refused(
                QStringLiteral("The code %1 is already used by %2.").arg(r.code, other ? other->name : QString()), Field::Code);
        }
        if (!table.isEmpty())
            return ClientOutcome::refused(
                QStringLiteral("The code %1 is still used in the table %2: choose another code.").arg(r.code, table), Field::Code);
    }
    return {};
}

ClientOutcome ClientService::write(const ClientRecord& r, bool insert)
{
    if (insert) {
        connection().execute(QStringLiteral("Insert into FBT_Info (%1) Values (%2)").arg(kColumns, literals(r).join(QLatin1Char(','))));
    } else {
        const QStringList names = kColumns.split(QStringLiteral(", "));
        const QStringList values = literals(r);
        QStringList sets;
        for (int i = 1; i < names.size(); ++i)
            sets << names.at(i) + QLatin1Char('=') + values.at(i);
        connection().execute(QStringLiteral("Update FBT_Info set %1 where %2").arg(sets.join(QLatin1Char(',')), codeIs(r.code)));
    }
    // The backup copies the table files: make them current.
    connection().execute(QStringLiteral("flush tables"));
    return {};
}

ClientOutcome ClientService::add(ClientRecord record)
{
    ClientOutcome outcome;
    const QString reason = failureText([&] {
        outcome = normalise(record);
        if (outcome.ok)
            outcome = write(record, true);
    }, QStringLiteral("ADDCLIENT"));
    if (!reason.isEmpty())
        return ClientOutcome::refused(QStringLiteral("The client could not be saved: %1").arg(reason));
    return outcome;
}

ClientOutcome ClientService::update(const QString& originalCode, ClientRecord record)
{
    ClientOutcome outcome;
    const QString reason = failureText([&] {
        outcome = normalise(record, originalCode);
        if (!outcome.ok)
            return;
        if (record.code != originalCode) {
            // The code change matches the stored codes in capitals.
            cls_.ChangeCode(originalCode.toUpper(), record.code);
            if (!load(record.code)) {
                outcome = ClientOutcome::refused(
                    QStringLiteral("The code %1 could not be changed to %2; FBTLogger.log in the application folder says why.")
                        .arg(originalCode, record.code),
                    ClientOutcome::Field::Code);
                return;
            }
        }
        outcome = write(record, false);
    }, QStringLiteral("UPDATECLIENT"));
    if (!reason.isEmpty())
        return ClientOutcome::refused(QStringLiteral("The client could not be saved: %1").arg(reason));
    return outcome;
}

ClientOutcome ClientService::remove(const QString& code)
{
    ClientOutcome outcome;
    const QString reason = failureText([&] {
        cls_.DeleteClient(code);
        if (load(code))
            outcome = ClientOutcome::refused(
                QStringLiteral("The client %1 could not be deleted; FBTLogger.log in the application folder says why.").arg(code));
    }, QStringLiteral("DELETECLIENT"));
    if (!reason.isEmpty())
        return ClientOutcome::refused(QStringLiteral("The client could not be deleted: %1").arg(reason));
    return outcome;
}

} // namespace corvane::host
