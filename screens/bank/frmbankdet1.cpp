#include "screens/bank/frmbankdet1.h"
#include "ui_frmbankdet1.h"

#include "components/bankinfo/bankinfo.h"
#include "core/prompter.h"
#include "core/resumenext.h"
#include "ui/screenscaling.h"
#include "screens/bank/bankinfocall.h"
#include "ui/screenkeys.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QTimer>

namespace corvane {

frmbankdet1::frmbankdet1(QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmbankdet1>())
{
    ui->setupUi(this);
    txtfields_ = {ui->txtfields_0, ui->txtfields_1, ui->txtfields_2, ui->txtfields_3};
    for (QLineEdit* box : txtfields_)
        box->installEventFilter(this);

    connect(ui->cmdfirst, &QPushButton::clicked, this, &frmbankdet1::cmdfirst_Click);
    connect(ui->cmdprev, &QPushButton::clicked, this, &frmbankdet1::cmdprev_Click);
    connect(ui->cmdnext, &QPushButton::clicked, this, &frmbankdet1::cmdnext_Click);
    connect(ui->cmdlast, &QPushButton::clicked, this, &frmbankdet1::cmdlast_Click);
    connect(ui->cmdadd, &QPushButton::clicked, this, &frmbankdet1::cmdadd_Click);
    connect(ui->cmdmodify, &QPushButton::clicked, this, &frmbankdet1::cmdmodify_Click);
    connect(ui->cmdupdate, &QPushButton::clicked, this, &frmbankdet1::cmdupdate_Click);
    connect(ui->cmdcancel, &QPushButton::clicked, this, &frmbankdet1::cmdcancel_Click);
    connect(ui->cmddelete, &QPushButton::clicked, this, &frmbankdet1::cmddelete_Click);
    connect(ui->cmdsearch, &QPushButton::clicked, this, &frmbankdet1::cmdsearch_Click);
    connect(ui->cmdexit, &QPushButton::clicked, this, &frmbankdet1::cmdexit_Click);

    Form_Load();
}

frmbankdet1::~frmbankdet1() = default;

void frmbankdet1::Form_Load()
{
    ResumeNext guard(module(), QStringLiteral("FORM_LOAD"));
    guard([&] { Resize_For_Resolution(this, false); });
    setWindowTitle(QStringLiteral("Bank Details"));
    register_.open(guard);
    LOADDATA();
    SETBUTTON(false);
}

void frmbankdet1::SETBUTTON(bool editing)
{
    ui->Frame1->setEnabled(editing);
    ui->picedit->setEnabled(editing);
    ui->picactions->setEnabled(!editing);
    ui->cmdprev->setEnabled(!editing);
    ui->cmdfirst->setEnabled(!editing);
    ui->cmdnext->setEnabled(!editing);
    ui->cmdlast->setEnabled(!editing);
}

void frmbankdet1::LOADDATA()
{
    ResumeNext guard(module(), QStringLiteral("LOADDATA"));
    const QStringList fields = register_.current(guard);
    for (int i = 0; i < txtfields_.size(); ++i)
        txtfields_.at(i)->setText(fields.value(i));
}

QStringList frmbankdet1::fieldTexts() const
{
    QStringList texts;
    for (const QLineEdit* box : txtfields_)
        texts << box->text();
    return texts;
}

void frmbankdet1::cmdfirst_Click()
{
    ResumeNext guard(module(), QStringLiteral("CMDFIRST_CLICK"));
    register_.moveFirst(guard);
    LOADDATA();
}

void frmbankdet1::cmdprev_Click()
{
    ResumeNext guard(module(), QStringLiteral("CMDPREV_CLICK"));
    register_.movePrevious(guard);
    LOADDATA();
}

void frmbankdet1::cmdnext_Click()
{
    ResumeNext guard(module(), QStringLiteral("CMDNEXT_CLICK"));
    register_.moveNext(guard);
    LOADDATA();
}

void frmbankdet1::cmdlast_Click()
{
    ResumeNext guard(module(), QStringLiteral("CMDLAST_CLICK"));
    register_.moveLast(guard);
    LOADDATA();
}

void frmbankdet1::cmdadd_Click()
{
    ResumeNext guard(module(), QStringLiteral("CMDADD_CLICK"));
    const std::optional<qint16> code = register_.nextCode(guard);
    adding_ = true;
    SETBUTTON(true);
    // Past the largest 16-bit code the box keeps what it showed.
    if (code)
        txtfields_.at(0)->setText(QString::number(*code));
    for (int i = 1; i < txtfields_.size(); ++i)
        txtfields_.at(i)->clear();
    txtfields_.at(1)->setFocus();
}

void frmbankdet1::cmdmodify_Click()
{
    if (register_.isEmpty())
        return;
    SETBUTTON(true);
    txtfields_.at(1)->setFocus();
}

void frmbankdet1::cmdupdate_Click()
{
    ResumeNext guard(module(), QStringLiteral("CMDUPDATE_CLICK"));
    if (const QString problem = register_.save(adding_, fieldTexts(), guard); !problem.isEmpty()) {
        prompter().inform(problem, Prompter::Icon::Exclamation);
        return; // still editing, nothing written
    }
    adding_ = false;
    LOADDATA();
    SETBUTTON(false);
    ui->cmdadd->setFocus();
}

void frmbankdet1::cmdcancel_Click()
{
    adding_ = false;
    SETBUTTON(false);
    LOADDATA();
    ui->cmdadd->setFocus();
}

void frmbankdet1::cmddelete_Click()
{
    ResumeNext guard(module(), QStringLiteral("CMDDELETE_CLICK"));
    if (register_.isEmpty())
        return;
    if (prompter().ask(QStringLiteral("Do you want to delete this record ?"), Prompter::Buttons::YesNo,
                       Prompter::Icon::Critical) == Prompter::Answer::No)
        return;
    register_.deleteCurrent(guard);
    LOADDATA();
}

void frmbankdet1::cmdsearch_Click()
{
    ResumeNext guard(module(), QStringLiteral("CMDSEARCH_CLICK"));
    QStringList result{QString(), QString(), QString()};
    std::shared_ptr<BankInfo> info = createBankInfo(guard);
    guard([&] {
        if (!info)
            throw Failure(err::ObjectNotSet, kSource, QStringLiteral("Object variable or With block variable not set"));
        info->GetBSRCode(QString(), result);
    });
    info.reset();
    if (result.value(2).isEmpty())
        return;
    txtfields_.at(1)->setText(result.value(0));
    txtfields_.at(2)->setText(result.value(1));
    txtfields_.at(3)->setText(result.value(2));
}

void frmbankdet1::cmdexit_Click()
{
    close();
}

void frmbankdet1::reject()
{
    // Every way out (Escape, the window's close button, Exit) asks first.
    if (unloading_)
        QDialog::reject();
    else
        close();
}

bool frmbankdet1::Form_Unload()
{
    if (ui->picedit->isEnabled()) {
        if (prompter().ask(QStringLiteral("You are currently editing a record. Do you want to exit now ?"),
                           Prompter::Buttons::YesNo, Prompter::Icon::Exclamation) == Prompter::Answer::No)
            return false;
        cmdcancel_Click();
    } else if (prompter().ask(QStringLiteral("Do you want to exit ?"), Prompter::Buttons::YesNo,
                              Prompter::Icon::Exclamation) == Prompter::Answer::No) {
        return false;
    }
    register_.close();
    return true;
}

void frmbankdet1::closeEvent(QCloseEvent* event)
{
    if (unloading_) {
        QDialog::closeEvent(event);
        return;
    }
    if (!Form_Unload()) {
        event->ignore();
        return;
    }
    unloading_ = true;
    QDialog::closeEvent(event);
}

void frmbankdet1::keyPressEvent(QKeyEvent* event)
{
    // FORM_KEYPRESS: Escape anywhere leaves like Exit.
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        cmdexit_Click();
        return;
    }
    QDialog::keyPressEvent(event);
}

bool frmbankdet1::eventFilter(QObject* watched, QEvent* event)
{
    auto* box = qobject_cast<QLineEdit*>(watched);
    if (!box || !txtfields_.contains(box))
        return QDialog::eventFilter(watched, event);
    if (event->type() == QEvent::KeyPress) {
        // TXTFIELDS_KEYPRESS
        auto* key = static_cast<QKeyEvent*>(event);
        if (screenkeys::isEnter(key)) {
            screenkeys::tabFrom(box);
            return true;
        }
        if (screenkeys::isQuote(key))
            return true;
    } else if (event->type() == QEvent::FocusIn) {
        // TXTFIELDS_GOTFOCUS: after a mouse click has placed the cursor.
        QTimer::singleShot(0, box, &QLineEdit::selectAll);
    }
    return QDialog::eventFilter(watched, event);
}

} // namespace corvane
