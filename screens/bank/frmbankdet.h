#pragma once

#include "screens/bank/bankaccounts.h"

#include <QDialog>
#include <QList>
#include <memory>

class QLineEdit;

namespace Ui {
class frmbankdet;
}

namespace corvane {

// The client's bank accounts for the year ("Bank Details"): the grid vsf1 lists
// them, the entry frame Frame2 edits one; every update or deletion writes the
// client's whole list for the year back to FBT_BankDet.
class frmbankdet : public QDialog {
    Q_OBJECT
public:
    explicit frmbankdet(QWidget* parent = nullptr);
    ~frmbankdet() override;

    const QList<QLineEdit*>& txtfields() const { return txtfields_; }
    const BankAccounts& accounts() const { return accounts_; }
    // −1 while adding, 0 while modifying.
    qint16 editMode() const { return editMode_; }
    bool editing() const;

public slots:
    void cmdadd_Click();
    void cmdmodify_Click();
    void cmdupdate_Click();
    void cmdcancel_Click();
    void cmddelete_Click();
    void cmdmicr_Click();
    void cmdview_Click();
    void cmdback_Click();
    void reject() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void Form_Load();
    void LOADGRID();
    void SAVEGRID();
    void UPDATEBANKDATA();
    void CLEARDATA();
    void SETBUTTON(bool viewing);
    // Copies the selected grid row into the entry frame.
    void SHOWDATA();
    // False when the MICR box refuses to be left.
    bool txtfields_LostFocus();
    void fillGrid(int selectRow);
    BankAccountEntry entry() const;
    // Escape and Back: while editing, asks to cancel the entry; otherwise closes.
    void escape();
    QString module() const { return objectName(); }

    std::unique_ptr<Ui::frmbankdet> ui;
    QList<QLineEdit*> txtfields_;
    BankAccounts accounts_;
    qint16 editMode_ = 0;
    bool unloading_ = false;
    bool checkingMicr_ = false;
};

} // namespace corvane
