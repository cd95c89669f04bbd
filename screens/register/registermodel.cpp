#include "screens/register/registermodel.h"

#include "core/conversions.h"

namespace corvane {

using namespace returnregister;

void RegisterModel::setRows(QVector<Row> rows)
{
    beginResetModel();
    rows_ = std::move(rows);
    endResetModel();
}

void RegisterModel::rowsChanged()
{
    if (!rows_.isEmpty())
        emit dataChanged(index(0, 0), index(int(rows_.size()) - 1, ColumnCount - 1));
}

int RegisterModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(rows_.size());
}

int RegisterModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant RegisterModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rows_.size())
        return QVariant();
    const QString& cell = rows_.at(index.row())[index.column()];
    switch (role) {
    case Qt::DisplayRole:
        return index.column() == Status ? statusName(cell) : cell;
    case Qt::EditRole:
        return cell;
    case Qt::TextAlignmentRole:
        return int((index.column() == FilingDate || index.column() == AckNo ? Qt::AlignHCenter : Qt::AlignLeft)
                   | Qt::AlignVCenter);
    default:
        return QVariant();
    }
}

QVariant RegisterModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return QAbstractTableModel::headerData(section, orientation, role);
    if (role == Qt::DisplayRole)
        return headings().value(section);
    if (role == Qt::TextAlignmentRole)
        return int(Qt::AlignCenter);
    return QVariant();
}

bool RegisterModel::editable(int column)
{
    return column == FilingDate || column == AckNo;
}

Qt::ItemFlags RegisterModel::flags(const QModelIndex& index) const
{
    Qt::ItemFlags f = QAbstractTableModel::flags(index);
    if (index.isValid() && editable(index.column()))
        f |= Qt::ItemIsEditable;
    return f;
}

bool RegisterModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::EditRole || !index.isValid() || !editable(index.column()) || index.row() >= rows_.size())
        return false;
    QString text = value.toString();
    if (index.column() == FilingDate) {
        QString year;
        text = ConvertDate(text, QStringLiteral("dd/MM/yyyy"), year);
    }
    rows_[index.row()][index.column()] = text;
    emit dataChanged(index, index);
    return true;
}

void EntryModel::setEntries(const QVector<Entry>* entries)
{
    beginResetModel();
    entries_ = entries;
    endResetModel();
}

void EntryModel::entriesChanged()
{
    beginResetModel();
    endResetModel();
}

int EntryModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() || !entries_ ? 0 : int(entries_->size());
}

int EntryModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : columns_;
}

QVariant EntryModel::data(const QModelIndex& index, int role) const
{
    if (role != Qt::DisplayRole || !entries_ || !index.isValid() || index.row() >= entries_->size())
        return QVariant();
    return entries_->at(index.row())[index.column()];
}

QVariant EntryModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    static const char* const names[] = {"Code No.", "Name", "Date", "Receipt No.", "", ""};
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 && section < EntryColumnCount)
        return QString::fromLatin1(names[section]);
    return QAbstractTableModel::headerData(section, orientation, role);
}

} // namespace corvane
