#pragma once

#include "host/clientservice.h"

#include <QDialog>

namespace Ui {
class frmclient;
}

namespace corvane {
class ClsMain;
}

namespace corvane::host {

// The client master: add a client, or edit, recode or delete one.
class ClientDialog : public QDialog {
    Q_OBJECT

public:
    // An empty code adds a new client.
    ClientDialog(ClsMain& cls, ClientService& service, const QString& code, QWidget* parent = nullptr);
    ~ClientDialog() override;

    // The code the client was saved under.
    QString savedCode() const { return savedCode_; }
    bool deleted() const { return deleted_; }

    // Asks before a client goes; true to delete.
    static bool confirmDelete(const QString& code, const QString& name);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private slots:
    void cmdsave_Click();
    void cmddelete_Click();
    void txtdoi_LostFocus();

private:
    void fill(const ClientRecord& record);
    ClientRecord collect() const;
    void focusField(ClientOutcome::Field field);

    Ui::frmclient* ui;
    ClsMain& cls_;
    ClientService& service_;
    QString originalCode_;
    QString savedCode_;
    bool deleted_ = false;
};

} // namespace corvane::host
