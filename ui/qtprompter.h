#pragma once

#include "core/chooser.h"
#include "core/prompter.h"

#include <QPointer>
#include <QWidget>

namespace corvane {

// Message boxes on screen.
class QtPrompter : public Prompter {
public:
    using Prompter::ask;
    Answer ask(const Question& question) override;
};

// The platform's folder and file dialogs.
class QtChooser : public Chooser {
public:
    QString chooseFolder(const QString& title, const QString& startFolder) override;
    QString chooseOpenFile(const QString& title, const QString& startFolder, const QString& filter) override;
    QString chooseSaveFile(const QString& title, const QString& startPath, const QString& filter) override;

    QPointer<QWidget> owner;
};

// Installs the Qt prompter and chooser in the context unless others are installed.
void installQtUserInterface();
// The owner window of the next chooser (GetDirPath's Wnd).
void setChooserOwner(QWidget* owner);

} // namespace corvane
