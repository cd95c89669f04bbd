#include "screens/bank/frmbankdet.h"
#include "ui_frmbankdet.h"

#include "components/bankinfo/bankinfo.h"
#include "core/prompter.h"
#include "core/resumenext.h"
#include "ui/screenscaling.h"
#include "screens/bank/bankinfocall.h"
#include "screens/bank/clientcaption.h"
#include "ui/screenkeys.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFocusEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QTimer>

namespace corvane {

namespace {
const QString kViewFull = QStringLiteral("&View Full Screen");
const QString kViewNormal = QStringLiteral("&View Normal");

void uncheck(QRadioButton* option)
{
    option->setAutoExclusive(false);
    option->setChecked(false);
    option->setAutoExclusive(true);
}
} // namespace

frmbankdet::frmbankdet(QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmbankdet>())
{
    ui->setupUi(this);
    txtfields_ = {ui->txtfields_0, ui->txtfields_1, ui->txtfields_2, ui->txtfields_3};
    for (QLineEdit* box : txtfields_)
        box->installEventFilter(this);
    for (QWidget* w : {static_cast<QWidget*>(ui->Combo1), static_cast<QWidget*>(ui->Option1),
                       static_cast<QWidget*>(ui->Option2), static_cast<QWidget*>(ui->Check2)})
        w->installEventFilter(this);
    ui->vsf1->horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);

    connect(ui->cmdadd, &QPushButton::clicked, this, &frmbankdet::cmdadd_Click);
    connect(ui->cmdmodify, &QPushButton::clicked, this, &frmbankdet::cmdmodify_Click);
    connect(ui->cmdupdate, &QPushButton::clicked, this, &frmbankdet::cmdupdate_Click);
    connect(ui->cmdcancel, &QPushButton::clicked, this, &frmbankdet::cmdcancel_Click);
    connect(ui->cmddelete, &QPushButton::clicked, this, &frmbankdet::cmddelete_Click);
    connect(ui->cmdmicr, &QPushButton::clicked, this, &frmbankdet::cmdmicr_Click);
    connect(ui->cmdview, &QPushButton::clicked, this, &frmbankdet::cmdview_Click);
    connect(ui->cmdback, &QPushButton::clicked, this, &frmbankdet::cmdback_Click);
    connect(ui->vsf1, &QTableWidget::itemSelectionChanged, this, [this] {
        if (!editing())
            SHOWDATA();
    });

    Form_Load();
}

frmbankdet::~frmbankdet() = default;

bool frmbankdet::editing() const
{
    return !ui->vsf1->isEnabled();
}

void frmbankdet::Form_Load()
{
    ResumeNext guard(module(), QStringLiteral("FORM_LOAD"));
    guard([&] { Resize_For_Resolution(this, false); });
    SETBUTTON(true);
    LOADGRID();
    setWindowTitle(clientCaption(windowTitle()));
}

void frmbankdet::LOADGRID()
{
    ResumeNext guard(module(), QStringLiteral("LOADGRID"));
    ui->vsf1->setColumnCount(BankAccounts::ColumnCount);
    ui->vsf1->setHorizontalHeaderLabels(BankAccounts::headings());
    accounts_.load(guard);
    fillGrid(0);
}

void frmbankdet::fillGrid(int selectRow)
{
    QTableWidget* grid = ui->vsf1;
    const QSignalBlocker quiet(grid);
    grid->clearContents();
    grid->setRowCount(accounts_.count());
    for (int r = 0; r < accounts_.count(); ++r)
        for (int c = 0; c < BankAccounts::ColumnCount; ++c)
            grid->setItem(r, c, new QTableWidgetItem(accounts_.rows().at(r).value(c)));
    grid->resizeColumnsToContents();
    if (accounts_.count() > 0) {
        const int row = qBound(0, selectRow, accounts_.count() - 1);
        grid->setCurrentCell(row, 0);
        grid->selectRow(row);
    }
    SHOWDATA();
}

void frmbankdet::SAVEGRID()
{
    ResumeNext guard(module(), QStringLiteral("SAVEGRID"));
    if (const QString problem = accounts_.save(guard); !problem.isEmpty())
        prompter().inform(problem, Prompter::Icon::Exclamation);
}

void frmbankdet::SETBUTTON(bool viewing)
{
    ui->vsf1->setEnabled(viewing);
    ui->cmdadd->setEnabled(viewing);
    ui->cmdmodify->setEnabled(viewing);
    ui->cmddelete->setEnabled(viewing);
    ui->cmdback->setEnabled(viewing);
    ui->cmdview->setEnabled(viewing);
    ui->Frame2->setEnabled(!viewing);
    ui->cmdcancel->setEnabled(!viewing);
    ui->cmdupdate->setEnabled(!viewing);
    if (!viewing) {
        if (ui->Frame2->isHidden())
            cmdview_Click(); // an entry needs the entry frame
        txtfields_.at(0)->setFocus();
    }
}

void frmbankdet::CLEARDATA()
{
    for (QLineEdit* box : txtfields_)
        box->clear();
    ui->Combo1->setCurrentIndex(-1);
    uncheck(ui->Option1);
    uncheck(ui->Option2);
    ui->Check2->setChecked(false);
}

void frmbankdet::SHOWDATA()
{
    const int row = ui->vsf1->currentRow();
    if (row < 0 || row >= accounts_.count()) {
        CLEARDATA();
        return;
    }
    const BankAccountEntry e = BankAccountEntry::fromCells(accounts_.rows().at(row));
    txtfields_.at(0)->setText(e.bankName);
    txtfields_.at(1)->setText(e.address);
    txtfields_.at(2)->setText(e.micr);
    txtfields_.at(3)->setText(e.accountNo);
    int type = ui->Combo1->findText(e.accountType, Qt::MatchFixedString);
    if (type < 0 && !e.accountType.isEmpty()) {
        // Keep a type typed elsewhere rather than lose it on the next save.
        ui->Combo1->addItem(e.accountType);
        type = ui->Combo1->count() - 1;
    }
    ui->Combo1->setCurrentIndex(type);
    if (e.ecs)
        ui->Option1->setChecked(true);
    else
        ui->Option2->setChecked(true);
    ui->Check2->setChecked(e.isDefault);
}

BankAccountEntry frmbankdet::entry() const
{
    BankAccountEntry e;
    e.bankName = txtfields_.at(0)->text();
    e.address = txtfields_.at(1)->text();
    e.micr = txtfields_.at(2)->text();
    e.accountType = ui->Combo1->currentText();
    e.accountNo = txtfields_.at(3)->text();
    e.ecs = ui->Option1->isChecked();
    e.isDefault = ui->Check2->isChecked();
    return e;
}

void frmbankdet::cmdadd_Click()
{
    editMode_ = -1;
    CLEARDATA();
    SETBUTTON(false);
}

void frmbankdet::cmdmodify_Click()
{
    const int row = ui->vsf1->currentRow();
    if (row < 0 || row >= accounts_.count())
        return;
    editMode_ = 0;
    SETBUTTON(false);
}

void frmbankdet::cmdupdate_Click()
{
    UPDATEBANKDATA();
}

void frmbankdet::UPDATEBANKDATA()
{
    // Clicked straight from the MICR box: leaving the box is checked now, once.
    if (checkingMicr_ && !txtfields_LostFocus())
        return;
    if (txtfields_.at(0)->text().trimmed().isEmpty()) {
        prompter().inform(QStringLiteral("Please Enter Bank Name."), Prompter::Icon::Information);
        txtfields_.at(0)->setFocus();
        return;
    }
    if (const QString problem = BankAccounts::tooLong(entry().cells()); !problem.isEmpty()) {
        prompter().inform(problem, Prompter::Icon::Exclamation);
        return; // the entry stays open to be shortened
    }
    const int row = accounts_.put(editMode_ == -1 ? -1 : ui->vsf1->currentRow(), entry());
    SAVEGRID();
    SETBUTTON(true);
    fillGrid(row);
    (editMode_ == 0 ? ui->cmdmodify : ui->cmdadd)->setFocus();
}

void frmbankdet::cmdcancel_Click()
{
    SETBUTTON(true);
    SHOWDATA();
    (editMode_ == 0 ? ui->cmdmodify : ui->cmdadd)->setFocus();
}

void frmbankdet::cmddelete_Click()
{
    const int row = ui->vsf1->currentRow();
    if (row < 0 || row >= accounts_.count())
        return;
    if (prompter().ask(QStringLiteral("Do you want to delele the selected item?"), Prompter::Buttons::YesNo,
                       Prompter::Icon::Question, Prompter::Answer::Yes, QStringLiteral("Delete Confirmation"))
        != Prompter::Answer::Yes)
        return;
    accounts_.remove(row);
    SAVEGRID();
    fillGrid(row);
}

void frmbankdet::cmdmicr_Click()
{
    ResumeNext guard(module(), QStringLiteral("CMDMICR_CLICK"));
    QStringList result{QString(), QString(), QString(), QString(), QString()};
    std::shared_ptr<BankInfo> info = createBankInfo(guard);
    guard([&] {
        if (!info)
            throw Failure(err::ObjectNotSet, kSource, QStringLiteral("Object variable or With block variable not set"));
        info->GetMICR(txtfields_.at(0)->text().trimmed(), result);
    });
    info.reset();
    if (result.value(0).isEmpty())
        return;
    txtfields_.at(0)->setText(result.value(0));
    txtfields_.at(1)->setText(result.value(1));
    txtfields_.at(2)->setText(result.value(2) + result.value(3) + result.value(4));
}

void frmbankdet::cmdview_Click()
{
    if (ui->cmdview->text() == kViewFull) {
        ui->Frame2->hide(); // the layout gives the grid the freed height
        ui->cmdview->setText(kViewNormal);
    } else {
        ui->Frame2->show();
        ui->cmdview->setText(kViewFull);
    }
}

void frmbankdet::cmdback_Click()
{
    escape();
}

void frmbankdet::escape()
{
    if (!editing()) {
        close();
        return;
    }
    if (prompter().ask(QStringLiteral("Do you want to Cancel this Entry?"), Prompter::Buttons::YesNo,
                       Prompter::Icon::Question, Prompter::Answer::No)
        == Prompter::Answer::Yes)
        cmdcancel_Click();
}

bool frmbankdet::txtfields_LostFocus()
{
    checkingMicr_ = false;
    if (!editing() || BankAccounts::micrLengthOk(txtfields_.at(2)->text()))
        return true;
    prompter().inform(QStringLiteral("MICR should be 9 Digit Number."), Prompter::Icon::Information);
    txtfields_.at(2)->setFocus();
    return false;
}

void frmbankdet::reject()
{
    if (unloading_)
        QDialog::reject();
    else
        escape();
}

void frmbankdet::closeEvent(QCloseEvent* event)
{
    if (!unloading_ && editing()) {
        // The window's close button with an entry open: save it, drop it, or stay.
        const Prompter::Answer answer = prompter().ask(QStringLiteral("Do you want to Save?"), Prompter::Buttons::YesNoCancel,
                                                       Prompter::Icon::Question, Prompter::Answer::Yes);
        if (answer == Prompter::Answer::Yes)
            UPDATEBANKDATA();
        else if (answer == Prompter::Answer::No)
            cmdcancel_Click();
        if (editing()) { // Cancel, or a refused update
            event->ignore();
            return;
        }
    }
    unloading_ = true;
    QDialog::closeEvent(event);
}

void frmbankdet::keyPressEvent(QKeyEvent* event)
{
    // FORM_KEYPRESS
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        escape();
        return;
    }
    QDialog::keyPressEvent(event);
}

bool frmbankdet::eventFilter(QObject* watched, QEvent* event)
{
    auto* widget = qobject_cast<QWidget*>(watched);
    if (!widget)
        return QDialog::eventFilter(watched, event);
    if (event->type() == QEvent::KeyPress) {
        // TXTFIELDS_KEYPRESS, COMBO1_KEYPRESS
        auto* key = static_cast<QKeyEvent*>(event);
        if (screenkeys::isEnter(key)) {
            screenkeys::tabFrom(widget);
            return true;
        }
        if (screenkeys::isQuote(key))
            return true;
        if (screenkeys::sendUpperCase(watched, key))
            return true;
    } else if (event->type() == QEvent::FocusOut && watched == ui->txtfields_2 && editing() && !checkingMicr_) {
        // TXTFIELDS_LOSTFOCUS. Not when the focus goes to another window, nor to
        // the buttons that leave or refill the box; checked once the focus has moved.
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        QWidget* next = QApplication::focusWidget();
        const bool leavesEntry = next == ui->cmdcancel || next == ui->cmdmicr || next == ui->cmdback;
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason && next && next->window() == this
            && !leavesEntry) {
            checkingMicr_ = true;
            QTimer::singleShot(0, this, [this] {
                if (checkingMicr_)
                    txtfields_LostFocus();
            });
        }
    }
    return QDialog::eventFilter(watched, event);
}

} // namespace corvane
