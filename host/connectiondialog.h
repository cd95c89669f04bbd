#pragma once

#include "db/connectionsettings.h"

#include <QDialog>
#include <functional>

namespace Ui {
class frmconnect;
}

namespace corvane::host {

// Where the database is: the private server of the application folder, or a
// server elsewhere. The settings are kept only once a connection with them works.
class ConnectionDialog : public QDialog {
    Q_OBJECT

public:
    // Tries the settings: empty text when a connection works, else why not.
    using Tester = std::function<QString(const ConnectionSettings&)>;

    // machineFolder: where the settings of every user of the machine live.
    ConnectionDialog(const ConnectionSettings& current, Tester tester, const QString& reason, QWidget* parent = nullptr,
                     const QString& machineFolder = QStringLiteral("/etc/orv-softworks"));
    ~ConnectionDialog() override;

    ConnectionSettings settings() const;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private slots:
    void cmdok_Click();
    void optserver_Click();

private:
    Ui::frmconnect* ui;
    Tester tester_;
    QString machineFolder_;
};

} // namespace corvane::host
