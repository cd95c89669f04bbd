#include "screens/backup/frmrestoration.h"
#include "ui_frmrestoration.h"

#include "core/chooser.h"
#include "core/conversions.h"
#include "core/modbase.h"
#include "core/prompter.h"
#include "core/resumenext.h"
#include "db/connection.h"
#include "screens/backup/barprogress.h"
#include "screens/backup/restorecandidates.h"
#include "screens/backup/restorejob.h"
#include "ui/screenkeys.h"
#include "ui/screenscaling.h"

#include <QCloseEvent>
#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QKeyEvent>

namespace corvane {

namespace {

const QString kOther = QStringLiteral("Other");

// The entries, then "Other"; the entry matching `current` is chosen, else "Other".
void fillChoices(QComboBox* combo, const QStringList& entries, const QString& current)
{
    combo->clear();
    combo->addItems(entries);
    combo->addItem(kOther);
    int chosen = combo->count() - 1;
    for (int i = 0; i < entries.size(); ++i)
        if (backup::samePlace(entries.at(i), current))
            chosen = i;
    combo->setCurrentIndex(chosen);
}

QString chosenDirectory(const QComboBox* combo, const QLineEdit* other)
{
    return combo->currentText() == kOther ? other->text().trimmed() : combo->currentText();
}

} // namespace

frmrestoration::frmrestoration(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::frmrestoration>())
{
    ui->setupUi(this);
    progress_ = std::make_unique<BarProgress>(ui->pg1, ui->lblprog);
    job_ = std::make_unique<backup::RestoreJob>(modbase().CnnObj.get(), prompter(), *progress_);
    job_->stage = [this](const QString& text) { ui->lblprog1->setText(text); };
    job_->rowChanged = [this](int row) { showStatus(row); };

    connect(ui->cbomysql, &QComboBox::activated, this, &frmrestoration::cbomysql_Click);
    connect(ui->cbodatadir, &QComboBox::activated, this, &frmrestoration::cbodatadir_Click);
    connect(ui->Option1_0, &QRadioButton::toggled, this, &frmrestoration::Option1_Click);
    connect(ui->cmdmysql, &QPushButton::clicked, this, &frmrestoration::cmdmysql_Click);
    connect(ui->cmddatadir, &QPushButton::clicked, this, &frmrestoration::cmddatadir_Click);
    connect(ui->cmdbkfl, &QPushButton::clicked, this, &frmrestoration::cmdbkfl_Click);
    connect(ui->cmdbk_0, &QPushButton::clicked, this, [this] { cmdbk_Click(0); });
    connect(ui->cmdbk_1, &QPushButton::clicked, this, [this] { cmdbk_Click(1); });
    connect(ui->cmdproceed, &QPushButton::clicked, this, &frmrestoration::cmdproceed_Click);
    connect(ui->cmdrestore, &QPushButton::clicked, this, &frmrestoration::cmdrestore_Click);
    connect(ui->cmdback, &QPushButton::clicked, this, &frmrestoration::cmdback_Click);
    connect(ui->cmdexit, &QPushButton::clicked, this, &frmrestoration::cmdexit_Click);
    ui->vsf->horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    Form_Load();
}

frmrestoration::~frmrestoration()
{
    job_->removeExtraction();
}

void frmrestoration::Form_Load()
{
    ResumeNext guard(module(), QStringLiteral("FORM_LOAD"));
    guard([&] { Resize_For_Resolution(this, false); });
    showPage(0);
    Option1_Click();
    QString serverDirectory;
    guard([&] { serverDirectory = backup::serverDataDirectory(modbase().CnnObj.get()); });
    const auto roots = backup::CandidateRoots::standard(QDir::homePath());
    guard([&] {
        ui->txtmysql->setText(serverDirectory);
        fillChoices(ui->cbomysql, backup::mysqlCandidates(roots, serverDirectory), serverDirectory);
    });
    guard([&] {
        ui->txtdatadir->setText(modbase().AppPath);
        fillChoices(ui->cbodatadir, backup::dataCandidates(roots), modbase().AppPath);
    });
    cbomysql_Click();
    cbodatadir_Click();
}

void frmrestoration::showPage(int page)
{
    ui->stkpages->setCurrentIndex(page);
    if (page == 0)
        ui->cmdproceed->setFocus();
    else
        ui->cmdrestore->setFocus();
}

void frmrestoration::cbomysql_Click()
{
    const bool other = ui->cbomysql->currentText() == kOther;
    ui->txtmysql->setEnabled(other);
    ui->cmdmysql->setEnabled(other);
}

void frmrestoration::cbodatadir_Click()
{
    const bool other = ui->cbodatadir->currentText() == kOther;
    ui->txtdatadir->setEnabled(other);
    ui->cmddatadir->setEnabled(other);
}

void frmrestoration::Option1_Click()
{
    const bool zip = ui->Option1_0->isChecked();
    ui->txtbkfl->setEnabled(zip);
    ui->cmdbkfl->setEnabled(zip);
    for (QWidget* w : {static_cast<QWidget*>(ui->txtbk_0), static_cast<QWidget*>(ui->cmdbk_0),
                       static_cast<QWidget*>(ui->txtbk_1), static_cast<QWidget*>(ui->cmdbk_1)})
        w->setEnabled(!zip);
}

void frmrestoration::cmdmysql_Click()
{
    ResumeNext guard(module(), QStringLiteral("CMDMYSQL_CLICK"));
    guard([&] {
        const QString folder = GetDirPath();
        if (!folder.isEmpty())
            ui->txtmysql->setText(folder);
        ui->txtmysql->setFocus();
    });
}

void frmrestoration::cmddatadir_Click()
{
    ResumeNext guard(module(), QStringLiteral("CMDDATADIR_CLICK"));
    guard([&] {
        const QString folder = GetDirPath();
        if (!folder.isEmpty())
            ui->txtdatadir->setText(folder);
        ui->txtdatadir->setFocus();
    });
}

void frmrestoration::cmdbk_Click(int index)
{
    ResumeNext guard(module(), QStringLiteral("CMDBK_CLICK"));
    QLineEdit* box = index == 0 ? ui->txtbk_0 : ui->txtbk_1;
    guard([&] {
        const QString folder = GetDirPath();
        if (!folder.isEmpty())
            box->setText(folder);
        box->setFocus();
    });
}

void frmrestoration::cmdbkfl_Click()
{
    ResumeNext guard(module(), QStringLiteral("CMDBKFL_CLICK"));
    guard([&] {
        const QString current = ui->txtbkfl->text().trimmed();
        const QString start = current.isEmpty() ? QDir::homePath() : QFileInfo(current).absolutePath();
        const QString file = chooser().chooseOpenFile(QStringLiteral("Select Backup File"), start,
                                                      QStringLiteral("Backup Files (*.zip *.ZIP)"));
        if (!file.isEmpty())
            ui->txtbkfl->setText(file);
        ui->txtbkfl->setFocus();
    });
}

void frmrestoration::cmdproceed_Click()
{
    if (running_)
        return;
    ResumeNext guard(module(), QStringLiteral("CMDPROCEED_CLICK"));
    backup::RestoreJob::Choice choice;
    choice.mode = ui->Option1_0->isChecked() ? backup::RestoreJob::Mode::Zip : backup::RestoreJob::Mode::Manual;
    choice.archive = ui->txtbkfl->text().trimmed();
    choice.databasesFolder = ui->txtbk_0->text().trimmed();
    choice.dataFolder = ui->txtbk_1->text().trimmed();
    choice.mysqlDirectory = chosenDirectory(ui->cbomysql, ui->txtmysql);
    choice.dataDirectory = chosenDirectory(ui->cbodatadir, ui->txtdatadir);

    running_ = true;
    bool listed = false;
    ui->cmdproceed->setEnabled(false);
    guard([&] { listed = job_->proceed(choice); });
    ui->cmdproceed->setEnabled(true);
    ui->lblprog1->clear();
    running_ = false;
    if (!listed) {
        using F = backup::RestoreJob::Field;
        const bool otherMysql = ui->cbomysql->currentText() == kOther;
        const bool otherData = ui->cbodatadir->currentText() == kOther;
        switch (job_->failedField()) {
        case F::BackupFile: ui->txtbkfl->setFocus(); break;
        case F::DatabasesFolder: ui->txtbk_0->setFocus(); break;
        case F::DataFolder: ui->txtbk_1->setFocus(); break;
        case F::MysqlDirectory: (otherMysql ? static_cast<QWidget*>(ui->txtmysql) : ui->cbomysql)->setFocus(); break;
        case F::DataDirectory: (otherData ? static_cast<QWidget*>(ui->txtdatadir) : ui->cbodatadir)->setFocus(); break;
        case F::None: break;
        }
        return;
    }
    fillGrid();
    ui->cmdrestore->setEnabled(true);
    ui->pg1->setValue(0);
    ui->lblprog->clear();
    showPage(1);
    fitColumns(); // now that the list has its size
}

void frmrestoration::fillGrid()
{
    const auto& rows = job_->rows();
    ui->vsf->clearContents();
    ui->vsf->setRowCount(int(rows.size()));
    for (int i = 0; i < rows.size(); ++i) {
        const auto& row = rows.at(i);
        const QStringList cells{QDir::toNativeSeparators(row.item.source), QDir::toNativeSeparators(row.item.destination),
                                backup::kindMark(row.item.kind), row.status};
        for (int c = 0; c < cells.size(); ++c) {
            auto* item = new QTableWidgetItem(cells.at(c));
            if (c < 2)
                item->setToolTip(cells.at(c));
            ui->vsf->setItem(i, c, item);
        }
    }
    fitColumns();
}

// The source path is the long and least telling column: it gives way (its
// start elided, the whole path in its tip) so that the kind and the status of
// every row stay in sight.
void frmrestoration::fitColumns()
{
    QTableWidget* grid = ui->vsf;
    grid->setWordWrap(false);
    grid->setTextElideMode(Qt::ElideLeft);
    grid->resizeColumnsToContents();
    const int status = std::max(grid->columnWidth(3),
                                grid->fontMetrics().horizontalAdvance(QStringLiteral("Restroing File Error Ignored by User.")) + 16);
    grid->setColumnWidth(3, status);
    const int room = grid->viewport()->width() - grid->columnWidth(1) - grid->columnWidth(2) - status;
    if (grid->columnWidth(0) > room)
        grid->setColumnWidth(0, std::max(room, grid->fontMetrics().horizontalAdvance(QLatin1Char('x')) * 20));
}

void frmrestoration::showStatus(int row)
{
    if (row < 0 || row >= ui->vsf->rowCount())
        return;
    ui->vsf->item(row, 3)->setText(job_->rows().at(row).status);
    ui->vsf->selectRow(row);
    ui->vsf->scrollToItem(ui->vsf->item(row, 0));
}

void frmrestoration::cmdrestore_Click()
{
    if (running_)
        return;
    ResumeNext guard(module(), QStringLiteral("CMDRESTORE_CLICK"));
    running_ = true;
    for (QWidget* w : {static_cast<QWidget*>(ui->cmdrestore), static_cast<QWidget*>(ui->cmdback),
                       static_cast<QWidget*>(ui->cmdexit)})
        w->setEnabled(false);
    guard([&] { job_->restore(); });
    if (job_->completed())
        modbase().restorationFlag = 1;
    running_ = false;
    ui->cmdback->setEnabled(true);
    ui->cmdexit->setEnabled(true);
    // The list is spent once restored (its sources may have been moved into
    // place); a refused restore may be tried again.
    ui->cmdrestore->setEnabled(!job_->completed());
    ui->cmdexit->setFocus();
}

void frmrestoration::cmdback_Click()
{
    if (running_)
        return;
    showPage(0);
}

void frmrestoration::cmdexit_Click()
{
    if (running_)
        return;
    QDialog::reject();
}

void frmrestoration::done(int result)
{
    if (running_)
        return;
    ResumeNext guard(module(), QStringLiteral("FORM_UNLOAD"));
    guard([&] { job_->removeExtraction(); });
    QDialog::done(result);
}

void frmrestoration::closeEvent(QCloseEvent* event)
{
    if (running_) {
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}

void frmrestoration::keyPressEvent(QKeyEvent* event)
{
    // FORM_KEYPRESS: Enter presses the focused button or moves on; Escape leaves like Exit.
    if (screenkeys::enterPressesOrMovesOn(this, event))
        return;
    QDialog::keyPressEvent(event);
}

} // namespace corvane
