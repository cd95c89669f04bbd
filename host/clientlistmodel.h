#pragma once

#include <QAbstractProxyModel>
#include <QAbstractTableModel>
#include <QString>
#include <QVector>

namespace corvane::host {

// What the client list shows of a client.
struct ClientListEntry {
    QString code;
    QString name;
    QString pan;
    QString status; // the shown name of the legal status
    QString city;
};

// The clients of the main window, by code: only the columns the list shows.
class ClientListModel : public QAbstractTableModel {
public:
    enum Column { Code, Name, Pan, Status, City, ColumnCount };

    using QAbstractTableModel::QAbstractTableModel;

    void setClients(QVector<ClientListEntry> clients);
    const QVector<ClientListEntry>& clients() const { return clients_; }

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    QVector<ClientListEntry> clients_;
};

// The clients a search finds: a code that starts with the text or a name that
// contains it, both without regard to case; all of them for an empty search.
// A new search replaces the rows at once (one reset), which keeps a keystroke
// cheap also over a hundred thousand clients.
class ClientSearchModel : public QAbstractProxyModel {
public:
    explicit ClientSearchModel(ClientListModel* clients, QObject* parent = nullptr);

    void setSearch(const QString& text);
    const QString& search() const { return search_; }
    // The row of the client with this code (without regard to case), -1 when not shown.
    int rowOfCode(const QString& code) const;
    QString codeAt(int row) const;
    QString nameAt(int row) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex mapToSource(const QModelIndex& proxyIndex) const override;
    QModelIndex mapFromSource(const QModelIndex& sourceIndex) const override;

private:
    void refilter();
    bool matches(const ClientListEntry& entry) const;

    ClientListModel* clients_;
    QString search_;
    QVector<int> rows_; // source rows shown, ascending
};

} // namespace corvane::host
