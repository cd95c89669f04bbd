#include "screens/cldet/frmcldet.h"
#include "ui_frmcldet.h"

#include "core/prompter.h"
#include "core/resumenext.h"
#include "db/contextconnection.h"
#include "ui/screenscaling.h"

#include <QAction>
#include <QCheckBox>
#include <QHeaderView>
#include <QMenuBar>

#include <algorithm>

namespace corvane {

frmcldet::frmcldet(QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmcldet>())
{
    ui->setupUi(this);
    chkfield_ = {ui->chkfield_0, ui->chkfield_1, ui->chkfield_2, ui->chkfield_3, ui->chkfield_4,
                 ui->chkfield_5, ui->chkfield_6, ui->chkfield_7, ui->chkfield_8};

    auto* menu = new QMenuBar(this);
    menu->setObjectName(QStringLiteral("mnubar"));
    mnupreview_ = menu->addAction(QStringLiteral("&Preview"));
    mnupreview_->setObjectName(QStringLiteral("mnupreview"));
    mnuexit_ = menu->addAction(QStringLiteral("E&xit"));
    mnuexit_->setObjectName(QStringLiteral("mnuexit"));
    layout()->setMenuBar(menu);

    // Alt+P is also the menu's Preview: Enter proceeds without the ambiguity.
    ui->cmdProceed->setDefault(true);

    connect(ui->cmdselall, &QPushButton::clicked, this, &frmcldet::cmdselall_Click);
    connect(ui->cmddselall, &QPushButton::clicked, this, &frmcldet::cmddselall_Click);
    connect(ui->cmdProceed, &QPushButton::clicked, this, &frmcldet::cmdProceed_Click);
    connect(mnupreview_, &QAction::triggered, this, &frmcldet::mnupreview_Click);
    connect(mnuexit_, &QAction::triggered, this, &frmcldet::mnuexit_Click);

    Form_Load();
}

frmcldet::~frmcldet() = default;

void frmcldet::Form_Load()
{
    ResumeNext guard(module(), QStringLiteral("FORM_LOAD"));
    guard([&] { Resize_For_Resolution(this, false); });
    const clientdetails::Choice choice = clientdetails::savedChoice();
    for (int i = 0; i < chkfield_.size(); ++i)
        chkfield_.at(i)->setChecked(choice[i]);
    ui->vsf->hide();
    mnupreview_->setEnabled(false);
}

clientdetails::Choice frmcldet::ticked() const
{
    clientdetails::Choice choice{};
    for (int i = 0; i < chkfield_.size(); ++i)
        choice[i] = chkfield_.at(i)->isChecked();
    return choice;
}

void frmcldet::cmdselall_Click()
{
    for (QCheckBox* box : chkfield_)
        box->setChecked(true);
}

void frmcldet::cmddselall_Click()
{
    for (QCheckBox* box : chkfield_)
        box->setChecked(false);
}

void frmcldet::cmdProceed_Click()
{
    ResumeNext guard(module(), QStringLiteral("CMDPROCEED_CLICK"));
    const clientdetails::Choice choice = ticked();
    if (clientdetails::nothingTicked(choice)) {
        prompter().ask(QStringLiteral("Please select a Item"), Prompter::Buttons::OK);
        return;
    }
    guard([&] { clientdetails::saveChoice(choice); });
    LOADGRID(choice);
    ui->Frame1->hide();
    ui->vsf->show();
    mnupreview_->setEnabled(true);
    ui->vsf->setFocus();
}

void frmcldet::LOADGRID(const clientdetails::Choice& choice)
{
    ResumeNext guard(module(), QStringLiteral("LOADGRID"));
    clientdetails::Table table;
    guard([&] { table = clientdetails::load(contextConnection(), choice, guard); });
    QTableWidget* grid = ui->vsf;
    grid->clear();
    grid->setColumnCount(int(table.headings.size()));
    grid->setRowCount(int(table.rows.size()));
    grid->setHorizontalHeaderLabels(table.headings);
    grid->horizontalHeader()->setDefaultAlignment(Qt::AlignCenter);
    for (int r = 0; r < table.rows.size(); ++r) {
        for (int c = 0; c < table.headings.size(); ++c) {
            auto* item = new QTableWidgetItem(QString(table.rows.at(r).value(c)).remove(QLatin1Char('\r')));
            item->setTextAlignment(Qt::AlignLeft | Qt::AlignTop);
            grid->setItem(r, c, item);
        }
    }
    grid->resizeColumnsToContents();
    // An address on one line would push every later column out of sight: long
    // texts wrap within a readable width instead.
    const int widest = grid->fontMetrics().averageCharWidth() * 36;
    for (int c = 0; c < grid->columnCount(); ++c)
        grid->setColumnWidth(c, std::min(grid->columnWidth(c), widest));
    grid->resizeRowsToContents();
}

void frmcldet::mnupreview_Click()
{
    ResumeNext guard(module(), QStringLiteral("MNUPREVIEW_CLICK"));
    QTableWidget* grid = ui->vsf;
    clientdetails::Table table;
    QVector<int> widths;
    for (int c = 0; c < grid->columnCount(); ++c) {
        table.headings << grid->horizontalHeaderItem(c)->text();
        widths << grid->columnWidth(c);
    }
    for (int r = 0; r < grid->rowCount(); ++r) {
        QStringList row;
        for (int c = 0; c < grid->columnCount(); ++c)
            row << (grid->item(r, c) ? grid->item(r, c)->text() : QString());
        table.rows << row;
    }
    ResumeNext building(module(), QStringLiteral("VIEWREPORT"));
    clientdetails::showReport(table, widths, building);
}

void frmcldet::mnuexit_Click()
{
    close();
}

} // namespace corvane
