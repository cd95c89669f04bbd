#pragma once

#include "screens/cldet/clientdetails.h"

#include <QDialog>
#include <QList>
#include <memory>

class QAction;
class QCheckBox;

namespace Ui {
class frmcldet;
}

namespace corvane {

// The client details report: the user ticks the fields, Proceed lists every
// client with them, Preview hands the list to the report viewer.
class frmcldet : public QDialog {
    Q_OBJECT
public:
    explicit frmcldet(QWidget* parent = nullptr);
    ~frmcldet() override;

    // The control array chkfield(0 to 8).
    const QList<QCheckBox*>& chkfield() const { return chkfield_; }
    QAction* mnupreview() const { return mnupreview_; }

public slots:
    void cmdselall_Click();
    void cmddselall_Click();
    void cmdProceed_Click();
    void mnupreview_Click();
    void mnuexit_Click();

private:
    void Form_Load();
    void LOADGRID(const clientdetails::Choice& choice);
    clientdetails::Choice ticked() const;
    QString module() const { return objectName(); }

    std::unique_ptr<Ui::frmcldet> ui;
    QList<QCheckBox*> chkfield_;
    QAction* mnupreview_ = nullptr;
    QAction* mnuexit_ = nullptr;
};

} // namespace corvane
