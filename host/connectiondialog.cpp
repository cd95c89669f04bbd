#include "host/connectiondialog.h"

#include "ui/screenkeys.h"

#include "ui_connectiondialog.h"

#include "core/prompter.h"
#include "host/connectionconfig.h"
#include "host/failuretext.h"

#include <QAbstractButton>
#include <QIntValidator>
#include <QKeyEvent>

namespace corvane::host {

ConnectionDialog::ConnectionDialog(const ConnectionSettings& current, Tester tester, const QString& reason, QWidget* parent,
                                   const QString& machineFolder)
    : QDialog(parent)
    , ui(new Ui::frmconnect)
    , tester_(std::move(tester))
    , machineFolder_(machineFolder)
{
    ui->setupUi(this);
    ui->txtport->setValidator(new QIntValidator(1, 65535, ui->txtport));
    ui->lblreason->setVisible(!reason.isEmpty());
    ui->lblreason->setText(QStringLiteral("The last attempt failed: %1").arg(reason));
    ui->lblfile->setText(QStringLiteral("Kept in %1, readable by you only.").arg(connectionconfig::file()));
    ui->chkeveryuser->setVisible(connectionconfig::canSaveForEveryUser(machineFolder_));
    ui->chkeveryuser->setText(QStringLiteral("For every &user of this machine (%1/ORVCONFIG.INI, readable by all of them)")
                                  .arg(machineFolder_));

    ui->optprivate->setChecked(current.privateServer);
    ui->optserver->setChecked(!current.privateServer);
    if (!current.privateServer) {
        ui->txtserver->setText(current.server);
        ui->txtport->setText(current.port > 0 ? QString::number(current.port) : QString());
        ui->txtsocket->setText(current.socket);
        ui->txtuser->setText(current.user);
        ui->txtpassword->setText(current.password);
    }
    ui->txtdatabase->setText(current.database);

    connect(ui->optprivate, &QRadioButton::toggled, this, &ConnectionDialog::optserver_Click);
    connect(ui->cmdok, &QPushButton::clicked, this, &ConnectionDialog::cmdok_Click);
    connect(ui->cmdcancel, &QPushButton::clicked, this, &QDialog::reject);
    optserver_Click();
}

ConnectionDialog::~ConnectionDialog()
{
    delete ui;
}

ConnectionSettings ConnectionDialog::settings() const
{
    ConnectionSettings s;
    s.privateServer = ui->optprivate->isChecked();
    s.database = ui->txtdatabase->text().trimmed();
    if (s.database.isEmpty())
        s.database = QStringLiteral("fbt");
    if (!s.privateServer) {
        s.server = ui->txtserver->text().trimmed();
        s.port = ui->txtport->text().toInt();
        s.socket = ui->txtsocket->text().trimmed();
        s.user = ui->txtuser->text().trimmed();
        s.password = ui->txtpassword->text();
    }
    return s;
}

void ConnectionDialog::optserver_Click()
{
    ui->fraserver->setEnabled(ui->optserver->isChecked());
}

void ConnectionDialog::cmdok_Click()
{
    const ConnectionSettings s = settings();
    if (!s.privateServer && s.server.isEmpty() && s.socket.isEmpty()) {
        prompter().inform(QStringLiteral("Enter the name of the database server, or its socket."), Prompter::Icon::Exclamation);
        ui->txtserver->setFocus();
        return;
    }
    const QString reason = tester_ ? tester_(s) : QString();
    if (!reason.isEmpty()) {
        prompter().inform(QStringLiteral("Cannot connect to %1:\n\n%2\n\nCorrect the settings and try again.")
                              .arg(s.privateServer ? QStringLiteral("the private server of the application folder") : s.describe(), reason),
                          Prompter::Icon::Critical);
        if (s.privateServer)
            ui->optprivate->setFocus();
        else
            ui->txtserver->setFocus();
        return;
    }
    const bool everyUser = ui->chkeveryuser->isVisible() && ui->chkeveryuser->isChecked();
    const QString failed = failureText([&] {
        if (everyUser)
            connectionconfig::saveForEveryUser(s, machineFolder_);
        else
            connectionconfig::save(s);
    });
    if (!failed.isEmpty()) {
        prompter().inform(QStringLiteral("The settings could not be kept:\n\n%1").arg(failed), Prompter::Icon::Critical);
        return;
    }
    accept();
}

void ConnectionDialog::keyPressEvent(QKeyEvent* event)
{
    // Enter moves on to the next field, as in every screen of the component.
    if (!screenkeys::enterPressesOrMovesOn(this, event))
        QDialog::keyPressEvent(event);
}

} // namespace corvane::host
