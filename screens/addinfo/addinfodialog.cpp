#include "screens/addinfo/addinfodialog.h"

#include "core/modbase.h"
#include "core/resumenext.h"
#include "screens/addinfo/aolookup.h"
#include "screens/addinfo/bankdetails.h"
#include "ui/keyrules.h"

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
        if (keyAscii == 27 && SAVEDATA())
            accept();
    });
}

void AddInfoDialog::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    Form_Resize();
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
        frame1_->resize(frame1_->sizeHint().expandedTo(frame1_->minimumSizeHint()));
        const int room = qRound(kButtonRoom * modbase().vScreenRatY);
        frame1_->move((width() - frame1_->width()) / 2, (height() - frame1_->height() - room) / 2);
        buttonBar_->resize(frame1_->width(), buttonBar_->sizeHint().height());
        buttonBar_->move(frame1_->x(), frame1_->geometry().bottom() + 1 + (room - buttonBar_->height()) / 2);
        setMinimumSize(frame1_->width(), frame1_->height() + room);
    });
}

} // namespace corvane
