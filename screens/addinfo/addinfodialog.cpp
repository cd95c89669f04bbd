#include "screens/addinfo/addinfodialog.h"

#include "core/modbase.h"
#include "core/resumenext.h"
#include "ui/screenscaling.h"
#include "screens/addinfo/aolookup.h"
#include "screens/addinfo/bankdetails.h"
#include "core/prompter.h"
#include "screens/bank/clientcaption.h"
#include "ui/keyrules.h"

#include <QCloseEvent>
#include <QPushButton>

namespace corvane {

namespace {
// Room kept below the frame for the buttons (720 twips).
constexpr int kButtonRoom = 48;
} // namespace

AddInfoDialog::AddInfoDialog(AddInfoEdition edition, const QString& formName, QWidget* parent)
    : QDialog(parent), record_(edition, formName)
{
}

void AddInfoDialog::setUpShared(QWidget* frame1, QWidget* buttonBar)
{
    setObjectName(record_.formName());
    frame1_ = frame1;
    buttonBar_ = buttonBar;
    auto button = [this](const char* name) { return findChild<QPushButton*>(QString::fromLatin1(name)); };
    connect(button("cmdloadpre"), &QPushButton::clicked, this, &AddInfoDialog::cmdloadpre_Click);
    connect(button("cmdexit"), &QPushButton::clicked, this, &AddInfoDialog::cmdexit_Click);
    connect(button("cmdbankdet"), &QPushButton::clicked, this, &AddInfoDialog::cmdbankdet_Click);
    connect(button("cmdao"), &QPushButton::clicked, this, &AddInfoDialog::cmdao_Click);
    keys_ = new KeyRules(this, [this] { Form_KeyPress(27); });
    keys_->watchAll();
}

void AddInfoDialog::releaseKeys()
{
    delete keys_;
    keys_ = nullptr;
}

void AddInfoDialog::cmdloadpre_Click()
{
    ResumeNext guard(record_.formName(), QStringLiteral("CMDLOADPRE_CLICK"));
    guard([&] { READDATA(true); });
}

void AddInfoDialog::cmdexit_Click()
{
    Form_KeyPress(27);
}

void AddInfoDialog::cmdbankdet_Click()
{
    ResumeNext guard(record_.formName(), QStringLiteral("CMDBANKDET_CLICK"));
    guard([&] { ShowBankDetails(this); });
}

void AddInfoDialog::cmdao_Click()
{
    if (const auto ao = LookupAoCode(record_.formName()))
        showAoCode(*ao);
}

void AddInfoDialog::Form_KeyPress(int keyAscii)
{
    ResumeNext guard(record_.formName(), QStringLiteral("FORM_KEYPRESS"));
    guard([&] {
        if (keyAscii == 27 && SAVEDATA()) {
            closing_ = true;
            accept();
        }
    });
}

void AddInfoDialog::finishLoad()
{
    setWindowTitle(clientCaption(windowTitle()));
    takeValues();
    loadedValues_ = record_.values;
    loadedMisc_ = record_.misc;
}

bool AddInfoDialog::hasChanges()
{
    takeValues();
    return !(record_.values == loadedValues_) || !(record_.misc == loadedMisc_);
}

void AddInfoDialog::closeEvent(QCloseEvent* event)
{
    if (!closing_ && isVisible() && hasChanges()) {
        const Prompter::Answer answer = prompter().ask(QStringLiteral("Do you want to Save?"), Prompter::Buttons::YesNoCancel,
                                                       Prompter::Icon::Question, Prompter::Answer::Yes);
        // Yes saves as Escape does: a refused save keeps the form open.
        bool saved = false;
        if (answer == Prompter::Answer::Yes) {
            ResumeNext guard(record_.formName(), QStringLiteral("FORM_QUERYUNLOAD"));
            guard([&] { saved = SAVEDATA(); });
        }
        if (answer == Prompter::Answer::Cancel || (answer == Prompter::Answer::Yes && !saved)) {
            event->ignore();
            return;
        }
    }
    closing_ = true;
    QDialog::closeEvent(event);
}

void AddInfoDialog::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    Form_Resize();
    keepOnScreen(this); // the frame may have grown on its way to the screen
}

void AddInfoDialog::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    Form_Resize();
}

// The frame is centred in the form, with room for the buttons below it.
void AddInfoDialog::Form_Resize()
{
    ResumeNext guard(record_.formName(), QStringLiteral("FORM_RESIZE"));
    guard([&] {
        if (!frame1_ || !buttonBar_)
            return;
        const int room = qRound(kButtonRoom * modbase().vScreenRatY);
        // As large as the frame would like, as far as the screen allows.
        QSize frame = frame1_->sizeHint();
        const QSize screen = roomInsideFrame(this);
        if (!screen.isEmpty())
            frame = frame.boundedTo(QSize(screen.width(), screen.height() - room));
        frame1_->resize(frame.expandedTo(frame1_->minimumSizeHint()));
        frame1_->move((width() - frame1_->width()) / 2, (height() - frame1_->height() - room) / 2);
        buttonBar_->resize(frame1_->width(), buttonBar_->sizeHint().height());
        buttonBar_->move(frame1_->x(), frame1_->geometry().bottom() + 1 + (room - buttonBar_->height()) / 2);
        setMinimumSize(frame1_->width(), frame1_->height() + room);
    });
}

} // namespace corvane
