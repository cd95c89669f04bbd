#include "screens/backup/frmbackup.h"
#include "ui_frmbackup.h"

#include "core/chooser.h"
#include "core/conversions.h"
#include "core/modbase.h"
#include "core/prompter.h"
#include "core/resumenext.h"
#include "ui/screenkeys.h"
#include "ui/screenscaling.h"
#include "db/connection.h"
#include "db/contextconnection.h"
#include "screens/backup/backupjob.h"
#include "screens/backup/barprogress.h"

#include <QCloseEvent>
#include <QDir>
#include <QKeyEvent>

namespace corvane {

frmbackup::frmbackup(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::frmbackup>())
{
    ui->setupUi(this);
    connect(ui->cmdsource, &QPushButton::clicked, this, &frmbackup::cmdsource_Click);
    connect(ui->cmdok, &QPushButton::clicked, this, &frmbackup::cmdok_Click);
    connect(ui->cmdexit, &QPushButton::clicked, this, &frmbackup::cmdexit_Click);
    Form_Load();
}

frmbackup::~frmbackup() = default;

void frmbackup::Form_Load()
{
    ResumeNext guard(module(), QStringLiteral("FORM_LOAD"));
    guard([&] { Resize_For_Resolution(this, false); });
    guard([&] { ui->txtpath->setText(QDir::toNativeSeparators(backup::defaultDestination())); });
}

void frmbackup::cmdsource_Click()
{
    ResumeNext guard(module(), QStringLiteral("CMDSOURCE_CLICK"));
    guard([&] {
        const QString folder = GetDirPath();
        if (!folder.isEmpty())
            ui->txtpath->setText(folder);
        ui->txtpath->setFocus();
    });
}

void frmbackup::cmdok_Click()
{
    if (running_)
        return;
    ResumeNext guard(module(), QStringLiteral("CMDOK_CLICK"));
    Connection* connection = nullptr;
    if (!guard([&] { connection = &contextConnection(); }))
        return;
    BarProgress progress(ui->pb1, ui->lblcopying);
    backup::BackupJob job(*connection, prompter(), progress);
    job.started = [&] {
        ui->Frame1->setVisible(false);
        ui->Frame3->setVisible(true);
        ui->pb1->setValue(0);
    };
    job.cancelled = [this] { return cancelRequested_; };
    running_ = true;
    cancelRequested_ = false;
    backup::BackupJob::Outcome outcome = backup::BackupJob::Outcome::Refused;
    guard([&] { outcome = job.run(ui->txtpath->text().trimmed()); });
    running_ = false;
    ui->lsttables->clear();
    ui->lsttables->addItems(job.tables());
    if (outcome == backup::BackupJob::Outcome::Completed) {
        leaving_ = true;
        accept();
        return;
    }
    ui->Frame3->setVisible(false);
    ui->Frame1->setVisible(true);
    ui->txtpath->setFocus();
}

bool frmbackup::confirmExit()
{
    return prompter().ask(QStringLiteral("Do you want to exit?"), Prompter::Buttons::YesNo, Prompter::Icon::Question)
        == Prompter::Answer::Yes;
}

void frmbackup::cmdexit_Click()
{
    ResumeNext guard(module(), QStringLiteral("CMDEXIT_CLICK"));
    guard([&] {
        if (!confirmExit())
            return;
        if (running_) {
            // Stops the job at its next file, table or block; it cleans up after itself.
            cancelRequested_ = true;
            return;
        }
        leaving_ = true;
        QDialog::reject();
    });
}

void frmbackup::reject()
{
    cmdexit_Click();
}

void frmbackup::closeEvent(QCloseEvent* event)
{
    if (leaving_) {
        QDialog::closeEvent(event);
        return;
    }
    event->ignore();
    cmdexit_Click();
}

void frmbackup::keyPressEvent(QKeyEvent* event)
{
    // FORM_KEYPRESS: Enter presses the focused button or moves on; Escape leaves like Exit.
    if (screenkeys::enterPressesOrMovesOn(this, event))
        return;
    QDialog::keyPressEvent(event);
}

} // namespace corvane
