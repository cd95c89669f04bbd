#include "screens/repair/frmchkrep.h"
#include "ui_frmchkrep.h"

#include "core/modbase.h"
#include "core/progress.h"
#include "core/prompter.h"
#include "core/resumenext.h"
#include "screens/backup/barprogress.h"
#include "ui/screenkeys.h"
#include "ui/screenscaling.h"

#include <QCloseEvent>
#include <QHeaderView>
#include <QKeyEvent>

namespace corvane {

namespace {

// The progress bar's colours, in the BGR order of SetPBBackColor.
constexpr qint32 kBarBack = 0x00FFFFFF;
constexpr qint32 kBarFill = 0x00A05000;

} // namespace

frmchkrep::frmchkrep(QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmchkrep>())
{
    ui->setupUi(this);
    progress_ = std::make_unique<BarProgress>(ui->pb1, ui->Label1);
    QHeaderView* header = ui->vsf->horizontalHeader();
    header->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    header->setSectionResizeMode(1, QHeaderView::Stretch);
    header->setSectionResizeMode(2, QHeaderView::ResizeToContents);

    connect(ui->cmdrepair, &QPushButton::clicked, this, &frmchkrep::cmdrepair_Click);
    connect(ui->cmdcancel, &QPushButton::clicked, this, &frmchkrep::cmdcancel_Click);

    Form_Load();
}

frmchkrep::~frmchkrep() = default;

CheckRepairJob frmchkrep::job()
{
    return CheckRepairJob(modbase().CnnObj.get(), *progress_, module());
}

void frmchkrep::Form_Load()
{
    ResumeNext guard(module(), QStringLiteral("FORM_LOAD"));
    guard([&] { SetPBBackColor(ui->pb1, kBarBack); });
    guard([&] { SetPBBarColor(ui->pb1, kBarFill); });
    guard([&] { Resize_For_Resolution(this, false); });
    ui->List1->clear();
    ui->List1->addItems(job().tables(guard));
}

void frmchkrep::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    // The check runs once the window is up, so that its progress can be seen.
    if (!checkedOnShow_) {
        checkedOnShow_ = true;
        QMetaObject::invokeMethod(this, &frmchkrep::CHECKTABLES, Qt::QueuedConnection);
    }
}

QStringList frmchkrep::tableNames() const
{
    QStringList names;
    for (int i = 0; i < ui->List1->count(); ++i)
        names << ui->List1->item(i)->text();
    return names;
}

void frmchkrep::setRunning(bool running)
{
    running_ = running;
    ui->cmdrepair->setEnabled(!running);
    ui->cmdcancel->setEnabled(!running);
}

void frmchkrep::fillGrid()
{
    ui->vsf->setRowCount(0);
    ui->vsf->setRowCount(int(problems_.size()));
    for (int r = 0; r < problems_.size(); ++r) {
        const TableProblem& p = problems_.at(r);
        ui->vsf->setItem(r, 0, new QTableWidgetItem(p.table));
        ui->vsf->setItem(r, 1, new QTableWidgetItem(p.report));
        ui->vsf->setItem(r, 2, new QTableWidgetItem(p.type));
        ui->vsf->item(r, 1)->setToolTip(p.report);
    }
}

void frmchkrep::CHECKTABLES()
{
    if (running_)
        return;
    setRunning(true);
    problems_.clear();
    fillGrid();
    problems_ = job().check(tableNames());
    fillGrid();
    if (problems_.isEmpty())
        prompter().inform(QStringLiteral("No Error."), Prompter::Icon::Information);
    setRunning(false);
    (problems_.isEmpty() ? ui->cmdcancel : ui->cmdrepair)->setFocus();
}

void frmchkrep::REPAIRTABLES()
{
    setRunning(true);
    repairNotes_ = job().repair(problems_);
    setRunning(false);
}

void frmchkrep::cmdrepair_Click()
{
    if (running_)
        return;
    if (problems_.isEmpty()) {
        prompter().inform(QStringLiteral("Nothing to Repair."), Prompter::Icon::Information);
        return;
    }
    prompter().inform(QStringLiteral("It is highly recommended to take Backup before Refreshing Data."),
                      Prompter::Icon::Information);
    REPAIRTABLES();
    CHECKTABLES();
    // What the repair itself reported (rows it could not keep) stays in view.
    QStringList notes;
    for (const TableProblem& note : repairNotes_)
        notes << note.table + QStringLiteral(": ") + note.report;
    if (!notes.isEmpty())
        ui->Label1->setText(QStringLiteral("The repair reported: ") + notes.join(QStringLiteral("; ")));
    if (!problems_.isEmpty())
        prompter().inform(QStringLiteral("Data can not be repaired."), Prompter::Icon::Information);
}

void frmchkrep::cmdcancel_Click()
{
    close();
}

void frmchkrep::reject()
{
    if (!running_)
        QDialog::reject();
}

void frmchkrep::closeEvent(QCloseEvent* event)
{
    if (running_)
        event->ignore();
    else
        QDialog::closeEvent(event);
}

void frmchkrep::keyPressEvent(QKeyEvent* event)
{
    if (screenkeys::enterPressesOrMovesOn(this, event))
        return;
    QDialog::keyPressEvent(event);
}

} // namespace corvane
