#include "components/bankinfo/lookupdialog.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace corvane {

namespace {
// Typing pauses this long before the list is queried again.
constexpr int kTypingPauseMs = 150;
}

LookupDialog::LookupDialog(const QString& title, const QString& emptyHint, Fetch fetch, const QString& filter,
                           QWidget* parent)
    : QDialog(parent), fetch_(std::move(fetch)), emptyHint_(emptyHint)
{
    setObjectName(QStringLiteral("frmlookup"));
    setWindowTitle(title);
    resize(760, 440);

    auto* layout = new QVBoxLayout(this);
    auto* caption = new QLabel(tr("&Find (type any words of the row):"), this);
    txtfilter_ = new QLineEdit(filter, this);
    txtfilter_->setObjectName(QStringLiteral("txtfilter"));
    txtfilter_->setClearButtonEnabled(true);
    caption->setBuddy(txtfilter_);

    lstrows_ = new QTableWidget(this);
    lstrows_->setObjectName(QStringLiteral("lstrows"));
    lstrows_->setSelectionBehavior(QAbstractItemView::SelectRows);
    lstrows_->setSelectionMode(QAbstractItemView::SingleSelection);
    lstrows_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    lstrows_->setTabKeyNavigation(false);
    lstrows_->verticalHeader()->hide();
    lstrows_->horizontalHeader()->setStretchLastSection(true);
    lstrows_->setWordWrap(false);

    lblinfo_ = new QLabel(this);
    lblinfo_->setObjectName(QStringLiteral("lblinfo"));

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(tr("&Choose"));

    layout->addWidget(caption);
    layout->addWidget(txtfilter_);
    layout->addWidget(lstrows_, 1);
    layout->addWidget(lblinfo_);
    layout->addWidget(buttons);

    typing_ = new QTimer(this);
    typing_->setSingleShot(true);
    typing_->setInterval(kTypingPauseMs);
    connect(typing_, &QTimer::timeout, this, &LookupDialog::refresh);
    connect(txtfilter_, &QLineEdit::textChanged, this, [this] {
        pending_ = true;
        typing_->start();
    });
    connect(lstrows_, &QTableWidget::cellDoubleClicked, this, &LookupDialog::choose);
    connect(buttons, &QDialogButtonBox::accepted, this, &LookupDialog::choose);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    txtfilter_->installEventFilter(this);
    lstrows_->installEventFilter(this);
    txtfilter_->setFocus();

    pending_ = true;
    refresh();
}

void LookupDialog::refresh()
{
    typing_->stop();
    if (!pending_)
        return;
    pending_ = false;
    const bankinfo::Lookup lookup = fetch_(txtfilter_->text());

    lstrows_->clearContents();
    lstrows_->setColumnCount(int(lookup.headings.size()));
    lstrows_->setHorizontalHeaderLabels(lookup.headings);
    lstrows_->setRowCount(int(lookup.rows.size()));
    for (int r = 0; r < lookup.rows.size(); ++r)
        for (int c = 0; c < lookup.rows.at(r).size(); ++c) {
            auto* item = new QTableWidgetItem(lookup.rows.at(r).at(c));
            item->setToolTip(item->text()); // a cell cut short still tells all
            lstrows_->setItem(r, c, item);
        }
    if (!lookup.rows.isEmpty()) {
        lstrows_->resizeColumnsToContents();
        // The first column is the one the user searches by (bank, city): long
        // names and addresses must not push it out of sight.
        const int room = qMax(lstrows_->viewport()->width(), width() - 40);
        for (int c = 0; c < lstrows_->columnCount(); ++c)
            lstrows_->setColumnWidth(c, qMin(lstrows_->columnWidth(c), room * (c == 0 ? 45 : 30) / 100));
        lstrows_->horizontalScrollBar()->setValue(0);
        lstrows_->selectRow(0);
        lstrows_->setCurrentCell(0, 0);
    }

    if (lookup.rows.isEmpty())
        lblinfo_->setText(txtfilter_->text().trimmed().isEmpty() ? emptyHint_ : tr("Nothing matches: change the words."));
    else if (lookup.more)
        lblinfo_->setText(tr("The first %1 matching rows: type more words to narrow the list.").arg(lookup.rows.size()));
    else
        lblinfo_->setText(tr("%n matching row(s). Enter chooses, Escape cancels.", nullptr, int(lookup.rows.size())));
}

void LookupDialog::choose()
{
    refresh();
    const int row = lstrows_->currentRow();
    if (row < 0 || row >= lstrows_->rowCount())
        return;
    chosen_.clear();
    for (int c = 0; c < lstrows_->columnCount(); ++c) {
        const QTableWidgetItem* item = lstrows_->item(row, c);
        chosen_ << (item ? item->text() : QString());
    }
    accept();
}

bool LookupDialog::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress)
        return QDialog::eventFilter(watched, event);
    auto* key = static_cast<QKeyEvent*>(event);
    switch (key->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        choose();
        return true;
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        if (watched == txtfilter_) {
            // The filter box keeps the focus; the list moves.
            refresh();
            QApplication::sendEvent(lstrows_, event);
            return true;
        }
        break;
    default:
        if (watched == lstrows_ && !key->text().isEmpty() && key->text().at(0).isPrint()) {
            // Typing in the list goes on in the filter box.
            txtfilter_->setFocus();
            QApplication::sendEvent(txtfilter_, event);
            return true;
        }
        break;
    }
    return QDialog::eventFilter(watched, event);
}

} // namespace corvane
