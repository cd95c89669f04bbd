#include "screens/register/pending.h"
#include "ui_pending.h"

#include "core/conversions.h"
#include "core/modbase.h"
#include "core/prompter.h"
#include "core/resumenext.h"
#include "ui/screenkeys.h"
#include "ui/screenscaling.h"
#include "db/connection.h"
#include "db/contextconnection.h"
#include "screens/register/filingsave.h"
#include "screens/register/registerreport.h"

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenuBar>
#include <QTimer>

namespace corvane {

using namespace returnregister;

namespace {

// Focus that leaves because another window took over is no leaving of the box.
bool leavesWithinForm(const QEvent* event)
{
    const auto reason = static_cast<const QFocusEvent*>(event)->reason();
    return reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason;
}

int digitCount(const QString& text)
{
    int n = 0;
    for (const QChar c : text)
        n += c.isDigit() ? 1 : 0;
    return n;
}

} // namespace

Pending::Pending(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::Pending>())
{
    ui->setupUi(this);

    menuBar_ = new QMenuBar(this);
    menuBar_->setObjectName(QStringLiteral("mnubar"));
    mnuopt_ = menuBar_->addAction(QStringLiteral("&Options"));
    mnuopt_->setObjectName(QStringLiteral("mnuopt"));
    Dos_ = menuBar_->addAction(QStringLiteral("Print Previe&w"));
    Dos_->setObjectName(QStringLiteral("Dos"));
    mnuExit_ = menuBar_->addAction(QStringLiteral("E&xit"));
    mnuExit_->setObjectName(QStringLiteral("mnuExit"));
    layout()->setMenuBar(menuBar_);

    ui->Grid2->setModel(&model_);
    ui->Grid2->verticalHeader()->hide();
    // The columns fit their content (the first thousand rows), the name takes the room they leave.
    QHeaderView* header = ui->Grid2->horizontalHeader();
    header->setSectionResizeMode(QHeaderView::ResizeToContents);
    header->setSectionResizeMode(Name, QHeaderView::Stretch);
    ui->Grid2->setColumnHidden(HasRow, true);
    ui->Grid2->setColumnHidden(IntDate, true);
    setGrid2Editable(0);

    listModel_.setEntries(&entries_);
    workModel_.setEntries(&entries_);
    ui->vsfc->setModel(&listModel_);
    ui->vsfc->verticalHeader()->hide();
    ui->vsfc->horizontalHeader()->setStretchLastSection(true);
    ui->vsfc->setColumnWidth(0, 120);
    ui->vsfm->setModel(&workModel_);

    connect(ui->cmdproceed, &QPushButton::clicked, this, &Pending::cmdproceed_Click);
    connect(ui->cmdback_0, &QPushButton::clicked, this, &Pending::cmdback_Click);
    connect(ui->cmdback_1, &QPushButton::clicked, this, &Pending::cmdback_Click);
    connect(ui->Command1, &QPushButton::clicked, this, &Pending::Command1_Click);
    connect(ui->Command2, &QPushButton::clicked, this, &Pending::Command2_Click);
    connect(ui->cmdsave, &QPushButton::clicked, this, &Pending::cmdsave_Click);
    connect(ui->vsfc, &QTableView::clicked, this, &Pending::vsfc_Click);
    connect(mnuopt_, &QAction::triggered, this, &Pending::mnuopt_Click);
    connect(Dos_, &QAction::triggered, this, &Pending::Dos_Click);
    connect(mnuExit_, &QAction::triggered, this, &Pending::mnuExit_Click);
    connect(ui->txtcode, &QLineEdit::textEdited, this, [this] { searchChange(ui->txtcode, EntryCode); });
    connect(ui->txtnm, &QLineEdit::textEdited, this, [this] { searchChange(ui->txtnm, EntryName); });

    for (QWidget* w : {static_cast<QWidget*>(ui->txtcode), static_cast<QWidget*>(ui->txtnm),
                       static_cast<QWidget*>(ui->txtfldt), static_cast<QWidget*>(ui->txtrecno),
                       static_cast<QWidget*>(ui->mText1), static_cast<QWidget*>(ui->mText2),
                       static_cast<QWidget*>(ui->Option1_0), static_cast<QWidget*>(ui->Option1_1)})
        w->installEventFilter(this);

    Form_Load();
}

Pending::~Pending() = default;

void Pending::setGrid2Editable(int mode)
{
    editable_ = mode;
    ui->Grid2->setEditTriggers(mode == 2 ? QAbstractItemView::CurrentChanged | QAbstractItemView::AllEditTriggers
                               : mode == 1 ? QAbstractItemView::EditKeyPressed | QAbstractItemView::AnyKeyPressed
                                           : QAbstractItemView::NoEditTriggers);
}

void Pending::Form_Load()
{
    ResumeNext guard(module(), QStringLiteral("FORM_LOAD"));
    guard([&] { Resize_For_Resolution(this, false); });
    ui->cboasyear->addItems(yearItems(modbase().TYear));
    ui->cboasyear->setCurrentIndex(ui->cboasyear->count() - 1);
    ui->cboreturn->addItems({QStringLiteral("All"), QStringLiteral("Pending"), QStringLiteral("Filed")});
    ui->cbomode->addItems({QStringLiteral("All"), QStringLiteral("Code No. Wise"), QStringLiteral("Name Wise")});
    ui->Frame2->hide();
    ui->Frame3->hide();
    ui->vsfc->hide();
    showGrid(false);
}

QString Pending::yearItem() const
{
    return ui->cboasyear->currentText();
}

Returns Pending::returns() const
{
    return Returns(qBound(0, ui->cboreturn->currentIndex(), 2));
}

Period Pending::period() const
{
    return {ui->Option1_1->isChecked(), ui->mText1->text(), ui->mText2->text()};
}

void Pending::showGrid(bool shown)
{
    ui->Grid2->setVisible(shown);
    ui->lblhead->setVisible(shown);
    mnuopt_->setVisible(shown);
    Dos_->setVisible(shown);
}

void Pending::cmdproceed_Click()
{
    ResumeNext guard(module(), QStringLiteral("CMDPROCEED_CLICK"));
    const int mode = ui->cbomode->currentIndex();
    if (mode == 0) {
        ui->Frame1->hide();
        ui->Option1_0->setChecked(true);
        LOADGRID();
        showGrid(true);
        ui->Grid2->setFocus();
    } else if (mode == 1 || mode == 2) {
        ui->txtcode->clear();
        ui->txtnm->clear();
        ui->txtrecno->clear();
        ui->txtfldt->clear();
        LOADGRID1();
        ui->Frame1->hide();
        ui->Frame2->show();
        focusSearchBox();
    }
}

void Pending::LOADGRID()
{
    ResumeNext guard(module(), QStringLiteral("LOADGRID"));
    QVector<Row> rows;
    const Period p = period();
    guard([&] { rows = load(contextConnection(), yearOf(yearItem()), returns(), p); });
    model_.setRows(std::move(rows));
    if (model_.rowCount() > 0)
        ui->Grid2->setCurrentIndex(model_.index(0, 0));
    ui->lblhead->setText(heading(returns(), yearItem(), p));
}

void Pending::LOADGRID1()
{
    ResumeNext guard(module(), QStringLiteral("LOADGRID1"));
    QVector<Entry> entries;
    guard([&] { entries = loadEntries(contextConnection(), yearOf(yearItem())); });
    entries_ = std::move(entries);
    listModel_.entriesChanged();
    workModel_.entriesChanged();
    moveListCursor(entries_.isEmpty() ? -1 : 0);
}

void Pending::mnuopt_Click()
{
    showGrid(false);
    ui->Frame3->show();
    (ui->Option1_1->isChecked() ? ui->Option1_1 : ui->Option1_0)->setFocus();
}

void Pending::Command1_Click()
{
    ResumeNext guard(module(), QStringLiteral("COMMAND1_CLICK"));
    if (ui->Option1_1->isChecked()) {
        const PeriodCheck check = checkPeriod(ui->mText1->text(), ui->mText2->text());
        if (check != PeriodCheck::Ok) {
            prompter().inform(periodMessage(check));
            QLineEdit* box = check == PeriodCheck::BadEnd ? ui->mText2 : ui->mText1;
            box->selectAll();
            box->setFocus();
            return;
        }
    }
    ui->Frame3->hide();
    LOADGRID();
    showGrid(true);
    ui->Grid2->setFocus();
}

void Pending::Command2_Click()
{
    ui->Frame3->hide();
    showGrid(true);
    ui->Grid2->setFocus();
}

bool Pending::SAVEDATA()
{
    ResumeNext guard(module(), QStringLiteral("SAVEDATA"));
    // An edit still open counts as made.
    QWidget* editor = QApplication::focusWidget();
    if (editor && editor->parentWidget() == ui->Grid2->viewport()) {
        emit ui->Grid2->itemDelegate()->commitData(editor);
        emit ui->Grid2->itemDelegate()->closeEditor(editor);
    }
    const int bad = filing::checkGrid(model_.rows(), yearItem());
    if (bad >= 0) {
        prompter().inform(filing::tooEarlyMessage(yearOf(yearItem().left(4))));
        ui->Grid2->setCurrentIndex(model_.index(bad, FilingDate));
        ui->Grid2->setFocus();
        return false;
    }
    const int overLong = filing::tooLongRow(model_.rows());
    if (overLong >= 0) {
        const auto& row = model_.rows().at(overLong);
        prompter().inform(filing::tooLong(row[FilingDate], row[AckNo]), Prompter::Icon::Exclamation);
        ui->Grid2->setCurrentIndex(model_.index(overLong, AckNo));
        ui->Grid2->setFocus();
        return false;
    }
    guard([&] { filing::writeGrid(contextConnection(), model_.rows(), yearItem(), prompter(), guard); });
    model_.rowsChanged();
    return true;
}

void Pending::stepBack()
{
    if (ui->Frame3->isVisible()) {
        Command2_Click();
    } else if (ui->Frame2->isVisible()) {
        if (ui->vsfc->isVisible()) {
            ui->vsfc->hide();
            return;
        }
        ui->Frame2->hide();
        ui->Frame1->show();
        ui->cmdproceed->setFocus();
    } else if (ui->Grid2->isVisible()) {
        if (model_.rowCount() > 0) {
            const auto answer = prompter().ask(QStringLiteral("Do you want to Save?"), Prompter::Buttons::YesNoCancel,
                                               Prompter::Icon::Question);
            if (answer == Prompter::Answer::Cancel)
                return;
            // A refused date keeps the register open, so the edits are not lost.
            if (answer == Prompter::Answer::Yes && !SAVEDATA())
                return;
        }
        showGrid(false);
        ui->Frame1->show();
        ui->cmdproceed->setFocus();
    } else {
        closing_ = true;
        QDialog::reject();
    }
}

void Pending::cmdback_Click()
{
    stepBack();
}

void Pending::mnuExit_Click()
{
    stepBack();
}

void Pending::reject()
{
    if (closing_)
        QDialog::reject();
    else
        stepBack();
}

void Pending::Dos_Click()
{
    ResumeNext guard(module(), QStringLiteral("DOS_CLICK"));
    registerreport::Columns columns;
    // The visible columns: all but the last two.
    for (int c = 0; c < model_.columnCount() - 2; ++c) {
        columns.widths << ui->Grid2->columnWidth(c);
        const int align = model_.data(model_.index(0, c), Qt::TextAlignmentRole).toInt();
        columns.alignments << ((align & Qt::AlignHCenter) ? registerreport::kGridCentre
                               : (align & Qt::AlignRight) ? registerreport::kGridRight
                                                          : registerreport::kGridLeft);
    }
    if (model_.rowCount() == 0)
        columns.alignments = registerreport::registerColumns().alignments;
    registerreport::show(
        ui->lblhead->text(), columns, model_.rowCount() + 1,
        [this](int row, int column) {
            return row == 0 ? headings().value(column) : model_.data(model_.index(row - 1, column)).toString();
        },
        guard);
}

// The entry view.

QLineEdit* Pending::searchBox() const
{
    return ui->cbomode->currentIndex() == 2 ? ui->txtnm : ui->txtcode;
}

void Pending::focusSearchBox()
{
    searchBox()->setFocus();
}

void Pending::clearEntry()
{
    ui->txtcode->clear();
    ui->txtnm->clear();
    ui->txtrecno->clear();
    ui->txtfldt->clear();
}

int Pending::listCursor() const
{
    const QModelIndex current = ui->vsfc->currentIndex();
    return current.isValid() ? current.row() : -1;
}

void Pending::moveListCursor(int row)
{
    if (row < 0 || row >= entries_.size())
        return;
    const QModelIndex index = listModel_.index(row, 0);
    ui->vsfc->setCurrentIndex(index);
    ui->vsfc->scrollTo(index);
}

void Pending::searchChange(QLineEdit* box, int column)
{
    ResumeNext guard(module(), column == EntryCode ? QStringLiteral("TXTCODE_CHANGE") : QStringLiteral("TXTNM_CHANGE"));
    if (QApplication::focusWidget() != box)
        return;
    if (!ui->vsfc->isVisible())
        ui->vsfc->show();
    const int row = findPrefix(entries_, column, box->text());
    if (row >= 0)
        moveListCursor(row);
}

void Pending::searchGotFocus(QLineEdit* box, int column)
{
    QTimer::singleShot(0, box, &QLineEdit::selectAll);
    ui->vsfc->show();
    const int row = findPrefix(entries_, column, box->text());
    if (row >= 0)
        moveListCursor(row);
}

bool Pending::searchKeyDown(QKeyEvent* key)
{
    int step = 0;
    const int rowHeight = qMax(1, ui->vsfc->verticalHeader()->defaultSectionSize());
    const int page = qMax(1, ui->vsfc->viewport()->height() / rowHeight);
    switch (key->key()) {
    case Qt::Key_Up: step = -1; break;
    case Qt::Key_Down: step = 1; break;
    case Qt::Key_PageUp: step = -page; break;
    case Qt::Key_PageDown: step = page; break;
    default: return false;
    }
    if (entries_.isEmpty())
        return true;
    ui->vsfc->show();
    const int from = qMax(0, listCursor());
    moveListCursor(qBound(0, from + step, int(entries_.size()) - 1));
    return true;
}

void Pending::searchLostFocus()
{
    ResumeNext guard(module(), searchBox() == ui->txtnm ? QStringLiteral("TXTNM_LOSTFOCUS")
                                                         : QStringLiteral("TXTCODE_LOSTFOCUS"));
    if (QApplication::focusWidget() == ui->vsfc)
        return;
    const int row = listCursor();
    if (row >= 0 && row < entries_.size()) {
        ui->txtcode->setText(entries_.at(row)[EntryCode]);
        ui->txtnm->setText(entries_.at(row)[EntryName]);
    }
    ui->txtfldt->clear();
    ui->txtrecno->clear();
    const int found = findCode(entries_, ui->txtcode->text(), false);
    if (found >= 0) {
        ui->txtfldt->setText(entries_.at(found)[EntryDate]);
        ui->txtrecno->setText(entries_.at(found)[EntryNumber]);
    }
    QWidget* next = QApplication::focusWidget();
    if (next != ui->txtcode && next != ui->txtnm)
        ui->vsfc->hide();
}

void Pending::vsfc_Click()
{
    ui->vsfc->hide();
    ui->txtfldt->setFocus(); // leaving the search box takes the row
    searchLostFocus();
}

bool Pending::TXTFLDT_VALIDATE()
{
    ResumeNext guard(module(), QStringLiteral("TXTFLDT_VALIDATE"));
    const auto refuse = [this] {
        prompter().inform(QStringLiteral("Please Specify a Valid Date."));
        ui->txtfldt->setFocus();
        return false;
    };
    const int digits = digitCount(ui->txtfldt->text());
    if (digits == 0)
        return true;
    if (digits != 8)
        return refuse();
    QString normalised;
    guard([&] {
        QString year;
        normalised = ConvertDate(ui->txtfldt->text(), QStringLiteral("dd/MM/yyyy"), year);
    });
    ui->txtfldt->setText(normalised);
    const int after = digitCount(ui->txtfldt->text());
    if (after != 0 && after != 8)
        return refuse();
    return true;
}

void Pending::cmdsave_Click()
{
    ResumeNext guard(module(), QStringLiteral("CMDSAVE_CLICK"));
    if (!TXTFLDT_VALIDATE())
        return;
    const filing::ClientSave save{ui->txtcode->text(), ui->txtfldt->text(), ui->txtrecno->text()};
    filing::Outcome outcome = filing::Outcome::Failed;
    guard([&] { outcome = filing::saveClient(contextConnection(), entries_, save, yearItem(), prompter(), guard); });
    const QString text = filing::message(outcome, yearItem(), save);
    if (!text.isEmpty()) {
        prompter().inform(text);
        if (outcome == filing::Outcome::TooEarly)
            ui->txtfldt->setFocus();
        else if (outcome == filing::Outcome::TooLong)
            ui->txtrecno->setFocus();
        else
            focusSearchBox();
        return;
    }
    workModel_.entriesChanged();
    listModel_.entriesChanged();
    clearEntry();
    ui->vsfc->hide();
    focusSearchBox();
}

bool Pending::eventFilter(QObject* watched, QEvent* event)
{
    const bool searchBoxEvent = watched == ui->txtcode || watched == ui->txtnm;
    if (event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        if (screenkeys::isQuote(key) && qobject_cast<QLineEdit*>(watched))
            return true;
        if (searchBoxEvent) {
            if (screenkeys::isEnter(key)) {
                vsfc_Click();
                return true;
            }
            if (searchKeyDown(key))
                return true;
        } else if (screenkeys::isEnter(key)) {
            screenkeys::tabFrom(static_cast<QWidget*>(watched));
            return true;
        }
    } else if (event->type() == QEvent::FocusIn && searchBoxEvent) {
        auto* box = static_cast<QLineEdit*>(watched);
        searchGotFocus(box, box == ui->txtcode ? EntryCode : EntryName);
    } else if (event->type() == QEvent::FocusOut && leavesWithinForm(event) && isVisible()) {
        if (searchBoxEvent)
            searchLostFocus();
        else if (watched == ui->txtfldt && QApplication::focusWidget() != ui->cmdsave)
            TXTFLDT_VALIDATE();
    }
    return QDialog::eventFilter(watched, event);
}

} // namespace corvane
