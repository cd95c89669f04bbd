#include "ui/qtprompter.h"

#include "core/modbase.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QPointer>

namespace corvane {

namespace {

QMessageBox::StandardButton toButton(Prompter::Answer answer)
{
    switch (answer) {
    case Prompter::Answer::OK: return QMessageBox::Ok;
    case Prompter::Answer::Cancel: return QMessageBox::Cancel;
    case Prompter::Answer::Yes: return QMessageBox::Yes;
    case Prompter::Answer::No: return QMessageBox::No;
    case Prompter::Answer::Abort: return QMessageBox::Abort;
    case Prompter::Answer::Retry: return QMessageBox::Retry;
    case Prompter::Answer::Ignore: return QMessageBox::Ignore;
    }
    return QMessageBox::Ok;
}

Prompter::Answer fromButton(int button, Prompter::Answer fallback)
{
    switch (button) {
    case QMessageBox::Ok: return Prompter::Answer::OK;
    case QMessageBox::Cancel: return Prompter::Answer::Cancel;
    case QMessageBox::Yes: return Prompter::Answer::Yes;
    case QMessageBox::No: return Prompter::Answer::No;
    case QMessageBox::Abort: return Prompter::Answer::Abort;
    case QMessageBox::Retry: return Prompter::Answer::Retry;
    case QMessageBox::Ignore: return Prompter::Answer::Ignore;
    default: return fallback;
    }
}

} // namespace

Prompter::Answer QtPrompter::ask(const Question& question)
{
    QMessageBox box(QApplication::activeWindow());
    box.setWindowTitle(question.title.isEmpty() ? QApplication::applicationDisplayName() : question.title);
    box.setText(question.text);
    switch (question.icon) {
    case Icon::None: box.setIcon(QMessageBox::NoIcon); break;
    case Icon::Information: box.setIcon(QMessageBox::Information); break;
    case Icon::Question: box.setIcon(QMessageBox::Question); break;
    case Icon::Exclamation: box.setIcon(QMessageBox::Warning); break;
    case Icon::Critical: box.setIcon(QMessageBox::Critical); break;
    }
    QMessageBox::StandardButtons buttons;
    Answer escape = Answer::OK;
    switch (question.buttons) {
    case Buttons::OK: buttons = QMessageBox::Ok; escape = Answer::OK; break;
    case Buttons::OKCancel: buttons = QMessageBox::Ok | QMessageBox::Cancel; escape = Answer::Cancel; break;
    case Buttons::YesNo: buttons = QMessageBox::Yes | QMessageBox::No; escape = Answer::No; break;
    case Buttons::YesNoCancel: buttons = QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel; escape = Answer::Cancel; break;
    case Buttons::AbortRetryIgnore: buttons = QMessageBox::Abort | QMessageBox::Retry | QMessageBox::Ignore; escape = Answer::Ignore; break;
    }
    box.setStandardButtons(buttons);
    box.setDefaultButton(toButton(question.defaultAnswer));
    box.setEscapeButton(toButton(escape));
    // Without a window manager nobody gives the focus back to the form that asked.
    QPointer<QWidget> asking = QApplication::activeWindow();
    const Answer answer = fromButton(box.exec(), escape);
    if (asking)
        asking->activateWindow();
    return answer;
}

QString QtChooser::chooseFolder(const QString& title, const QString& startFolder)
{
    return QFileDialog::getExistingDirectory(owner, title, startFolder, QFileDialog::ShowDirsOnly);
}

QString QtChooser::chooseOpenFile(const QString& title, const QString& startFolder, const QString& filter)
{
    return QFileDialog::getOpenFileName(owner, title, startFolder, filter);
}

QString QtChooser::chooseSaveFile(const QString& title, const QString& startPath, const QString& filter)
{
    return QFileDialog::getSaveFileName(owner, title, startPath, filter);
}

void installQtUserInterface()
{
    if (!realDialogsAllowed())
        return;
    Modbase& m = modbase();
    if (!m.prompter)
        m.prompter = std::make_shared<QtPrompter>();
    if (!m.chooser)
        m.chooser = std::make_shared<QtChooser>();
}

void setChooserOwner(QWidget* owner)
{
    if (auto qt = std::dynamic_pointer_cast<QtChooser>(modbase().chooser))
        qt->owner = owner;
}

} // namespace corvane
