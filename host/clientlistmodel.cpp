#include "host/clientlistmodel.h"

#include <algorithm>

namespace corvane::host {

void ClientListModel::setClients(QVector<ClientListEntry> clients)
{
    beginResetModel();
    clients_ = std::move(clients);
    endResetModel();
}

int ClientListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(clients_.size());
}

int ClientListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ClientListModel::data(const QModelIndex& index, int role) const
{
    if (role != Qt::DisplayRole || !index.isValid() || index.row() >= clients_.size())
        return {};
    const ClientListEntry& c = clients_.at(index.row());
    switch (index.column()) {
    case Code: return c.code;
    case Name: return c.name;
    case Pan: return c.pan;
    case Status: return c.status;
    case City: return c.city;
    default: return {};
    }
}

QVariant ClientListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    static const QStringList headings{QStringLiteral("Code No."), QStringLiteral("Name"), QStringLiteral("PAN"),
                                      QStringLiteral("Status"), QStringLiteral("City")};
    return headings.value(section);
}

ClientSearchModel::ClientSearchModel(ClientListModel* clients, QObject* parent)
    : QAbstractProxyModel(parent), clients_(clients)
{
    QAbstractProxyModel::setSourceModel(clients);
    // The list is only ever replaced whole.
    connect(clients, &QAbstractItemModel::modelAboutToBeReset, this, [this] { beginResetModel(); });
    connect(clients, &QAbstractItemModel::modelReset, this, [this] {
        refilter();
        endResetModel();
    });
    refilter();
}

void ClientSearchModel::setSearch(const QString& text)
{
    const QString t = text.trimmed();
    if (t == search_)
        return;
    beginResetModel();
    search_ = t;
    refilter();
    endResetModel();
}

bool ClientSearchModel::matches(const ClientListEntry& entry) const
{
    return search_.isEmpty() || entry.code.startsWith(search_, Qt::CaseInsensitive)
        || entry.name.contains(search_, Qt::CaseInsensitive);
}

void ClientSearchModel::refilter()
{
    rows_.clear();
    const QVector<ClientListEntry>& all = clients_->clients();
    for (int i = 0; i < all.size(); ++i)
        if (matches(all.at(i)))
            rows_.push_back(i);
}

int ClientSearchModel::rowOfCode(const QString& code) const
{
    if (code.isEmpty())
        return -1;
    const QVector<ClientListEntry>& all = clients_->clients();
    for (int row = 0; row < rows_.size(); ++row)
        if (all.at(rows_.at(row)).code.compare(code, Qt::CaseInsensitive) == 0)
            return row;
    return -1;
}

QString ClientSearchModel::codeAt(int row) const
{
    return row >= 0 && row < rows_.size() ? clients_->clients().at(rows_.at(row)).code : QString();
}

QString ClientSearchModel::nameAt(int row) const
{
    return row >= 0 && row < rows_.size() ? clients_->clients().at(rows_.at(row)).name : QString();
}

QModelIndex ClientSearchModel::index(int row, int column, const QModelIndex& parent) const
{
    if (parent.isValid() || row < 0 || row >= rows_.size() || column < 0 || column >= ClientListModel::ColumnCount)
        return {};
    return createIndex(row, column);
}

QModelIndex ClientSearchModel::parent(const QModelIndex&) const
{
    return {};
}

int ClientSearchModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(rows_.size());
}

int ClientSearchModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ClientListModel::ColumnCount;
}

QModelIndex ClientSearchModel::mapToSource(const QModelIndex& proxyIndex) const
{
    if (!proxyIndex.isValid() || proxyIndex.row() >= rows_.size())
        return {};
    return clients_->index(rows_.at(proxyIndex.row()), proxyIndex.column());
}

QModelIndex ClientSearchModel::mapFromSource(const QModelIndex& sourceIndex) const
{
    if (!sourceIndex.isValid())
        return {};
    const auto it = std::lower_bound(rows_.cbegin(), rows_.cend(), sourceIndex.row());
    if (it == rows_.cend() || *it != sourceIndex.row())
        return {};
    return createIndex(int(it - rows_.cbegin()), sourceIndex.column());
}

} // namespace corvane::host
