#pragma once

#include "screens/register/returnregister.h"

#include <QAbstractTableModel>

namespace corvane {

// The register grid's rows: eight columns, the status shown by its name, only
// the date of filing and the acknowledgement number editable; a date typed
// into the grid is normalised to dd/mm/yyyy.
class RegisterModel : public QAbstractTableModel {
    Q_OBJECT
public:
    using QAbstractTableModel::QAbstractTableModel;

    void setRows(QVector<returnregister::Row> rows);
    QVector<returnregister::Row>& rows() { return rows_; }
    const QVector<returnregister::Row>& rows() const { return rows_; }
    // Tells the views that the rows were changed in place.
    void rowsChanged();

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

    static bool editable(int column);

private:
    QVector<returnregister::Row> rows_;
};

// The entry view's lists over the client entries of the year: the drop-down
// list (code and name) and the hidden work list (all six columns).
class EntryModel : public QAbstractTableModel {
    Q_OBJECT
public:
    EntryModel(int columns, QObject* parent = nullptr) : QAbstractTableModel(parent), columns_(columns) {}

    void setEntries(const QVector<returnregister::Entry>* entries);
    void entriesChanged();

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    const QVector<returnregister::Entry>* entries_ = nullptr;
    int columns_;
};

} // namespace corvane
