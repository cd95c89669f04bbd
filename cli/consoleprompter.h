#pragma once

#include "core/chooser.h"
#include "core/prompter.h"

#include <QTextStream>
#include <optional>

namespace corvane::cli {

// Questions on a terminal. Without a terminal on standard input it never
// waits: it answers by the policy the options gave, else with the default.
class ConsolePrompter : public Prompter {
public:
    struct Policy {
        enum YesNo { Ask, Yes, No } yesNo = Ask;
        std::optional<Answer> onError;
    };

    ConsolePrompter(Policy policy, QTextStream& err) : policy_(policy), err_(err) {}

    using Prompter::ask;
    Answer ask(const Question& question) override;

private:
    std::optional<Answer> fromPolicy(const Question& question) const;
    Policy policy_;
    QTextStream& err_;
};

// Folders and files cannot be picked without a screen: the command line takes
// them as arguments, so every choice is a cancel.
class ConsoleChooser : public Chooser {
public:
    QString chooseFolder(const QString&, const QString&) override { return QString(); }
    QString chooseOpenFile(const QString&, const QString&, const QString&) override { return QString(); }
    QString chooseSaveFile(const QString&, const QString&, const QString&) override { return QString(); }
};

} // namespace corvane::cli
