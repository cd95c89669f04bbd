#pragma once

#include "components/bankinfo/bankinfostore.h"

#include <QDialog>
#include <QStringList>
#include <functional>

class QLabel;
class QLineEdit;
class QTableWidget;
class QTimer;

namespace corvane {

// A searchable list: typing filters the rows, the arrow and page keys move
// through them, Enter (or a double click) chooses, Escape cancels.
class LookupDialog : public QDialog {
    Q_OBJECT
public:
    // Gives the rows for a filter text; runs again whenever the filter changes.
    using Fetch = std::function<bankinfo::Lookup(const QString& filter)>;

    LookupDialog(const QString& title, const QString& emptyHint, Fetch fetch, const QString& filter,
                 QWidget* parent = nullptr);

    // The cells of the chosen row; empty when cancelled.
    QStringList chosen() const { return chosen_; }

    // Runs a pending filter change at once.
    void refresh();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void choose();

    Fetch fetch_;
    QString emptyHint_;
    QLineEdit* txtfilter_;
    QTableWidget* lstrows_;
    QLabel* lblinfo_;
    QTimer* typing_;
    bool pending_ = false;
    QStringList chosen_;
};

} // namespace corvane
