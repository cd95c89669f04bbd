#pragma once

#include <QList>
#include <QString>
#include <optional>

namespace corvane {
class ClsMain;
class Connection;
}

namespace corvane::host {

struct ClientListEntry;

// One row of FBT_Info.
struct ClientRecord {
    QString code;
    QString name;
    QString pan;
    int status = 0;
    QString flat;
    QString building;
    QString street;
    QString area;
    QString city;
    QString pin;
    QString state;
    QString std;
    QString telNo;
    QString doi;         // date of birth or incorporation, dd/mm/yyyy
    QList<int> natures;  // FBT_Nature SrNo values, stored in BusNat as "1,11"
    QString email;

    QString busNat() const;
    static QList<int> parseBusNat(const QString& text);
};

struct Nature {
    int srNo = 0;
    QString description;
};

// The outcome of a save or a delete: the message to show when it did not
// happen, and the field the user has to correct.
struct ClientOutcome {
    enum class Field { None, Code, Name, Pan, Pin, Doi, EMail, Natures };
    bool ok = true;
    QString message;
    Field field = Field::None;

    static ClientOutcome refused(QString message, Field field = Field::None) { return {false, std::move(message), field}; }
};

// The client master: reads and writes FBT_Info on the context's connection and
// uses the component's services for PAN, dates, deletion and code changes.
class ClientService {
public:
    explicit ClientService(ClsMain& cls);

    // Every client, by code.
    QList<ClientRecord> list() const;
    // Every client by code, with only what the client list shows.
    QVector<ClientListEntry> listing() const;
    std::optional<ClientRecord> load(const QString& code) const;
    QList<Nature> natures() const;

    // Puts the entries in their stored form (code and PAN in capitals, the date
    // as dd/mm/yyyy, blanks trimmed) and checks them. originalCode is empty for a new client.
    ClientOutcome normalise(ClientRecord& record, const QString& originalCode = QString()) const;

    // The table that still holds rows under code (compared in capitals), empty when it is free.
    QString tableUsingCode(const QString& code) const;

    // A new client.
    ClientOutcome add(ClientRecord record);
    // An existing client; a new code is first changed in every table.
    ClientOutcome update(const QString& originalCode, ClientRecord record);
    // Every record of the client in every table.
    ClientOutcome remove(const QString& code);

private:
    Connection& connection() const;
    ClientOutcome write(const ClientRecord& record, bool insert);

    ClsMain& cls_;
};

} // namespace corvane::host
