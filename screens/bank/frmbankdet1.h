#pragma once

#include "screens/bank/bankregister.h"

#include <QDialog>
#include <QList>
#include <memory>

class QLineEdit;

namespace Ui {
class frmbankdet1;
}

namespace corvane {

// The bank master register ("Bank Details"): one Bank_Master record at a time,
// browsed in code order, added, modified and deleted. Every failure is logged
// under the form's name and the procedure's and the screen goes on.
class frmbankdet1 : public QDialog {
    Q_OBJECT
public:
    explicit frmbankdet1(QWidget* parent = nullptr);
    ~frmbankdet1() override;

    // The control array txtfields(0 to 3).
    const QList<QLineEdit*>& txtfields() const { return txtfields_; }
    bool adding() const { return adding_; }

public slots:
    void cmdfirst_Click();
    void cmdprev_Click();
    void cmdnext_Click();
    void cmdlast_Click();
    void cmdadd_Click();
    void cmdmodify_Click();
    void cmdupdate_Click();
    void cmdcancel_Click();
    void cmddelete_Click();
    void cmdsearch_Click();
    void cmdexit_Click();
    void reject() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void Form_Load();
    // False when the user chose to stay.
    bool Form_Unload();
    void SETBUTTON(bool editing);
    void LOADDATA();
    QStringList fieldTexts() const;
    QString module() const { return objectName(); }

    std::unique_ptr<Ui::frmbankdet1> ui;
    QList<QLineEdit*> txtfields_;
    BankRegister register_;
    bool adding_ = false;
    bool unloading_ = false;
};

} // namespace corvane
