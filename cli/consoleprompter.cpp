#include "cli/consoleprompter.h"

#include <cstdio>
#include <unistd.h>

namespace corvane::cli {

namespace {

struct Choice {
    QString key;
    Prompter::Answer answer;
};

QList<Choice> choicesFor(Prompter::Buttons buttons)
{
    using A = Prompter::Answer;
    switch (buttons) {
    case Prompter::Buttons::OK: return {{"o", A::OK}};
    case Prompter::Buttons::OKCancel: return {{"o", A::OK}, {"c", A::Cancel}};
    case Prompter::Buttons::YesNo: return {{"y", A::Yes}, {"n", A::No}};
    case Prompter::Buttons::YesNoCancel: return {{"y", A::Yes}, {"n", A::No}, {"c", A::Cancel}};
    case Prompter::Buttons::AbortRetryIgnore: return {{"a", A::Abort}, {"r", A::Retry}, {"i", A::Ignore}};
    }
    return {};
}

} // namespace

std::optional<Prompter::Answer> ConsolePrompter::fromPolicy(const Question& question) const
{
    switch (question.buttons) {
    case Buttons::YesNo:
    case Buttons::YesNoCancel:
        if (policy_.yesNo == Policy::Yes)
            return Answer::Yes;
        if (policy_.yesNo == Policy::No)
            return Answer::No;
        break;
    case Buttons::AbortRetryIgnore:
        return policy_.onError;
    case Buttons::OK:
        return Answer::OK;
    case Buttons::OKCancel:
        if (policy_.yesNo == Policy::Yes)
            return Answer::OK;
        if (policy_.yesNo == Policy::No)
            return Answer::Cancel;
        break;
    }
    return std::nullopt;
}

Prompter::Answer ConsolePrompter::ask(const Question& question)
{
    const QList<Choice> choices = choicesFor(question.buttons);
    const auto decided = fromPolicy(question);
    if (decided || !::isatty(STDIN_FILENO)) {
        const Answer answer = decided.value_or(question.defaultAnswer);
        err_ << question.text;
        if (question.buttons != Buttons::OK)
            err_ << " [" << answerName(answer) << "]";
        err_ << Qt::endl;
        return answer;
    }
    QStringList keys;
    for (const Choice& c : choices)
        keys << (c.answer == question.defaultAnswer ? c.key.toUpper() : c.key);
    for (;;) {
        err_ << question.text << " [" << keys.join(QLatin1Char('/')) << "] " << Qt::flush;
        char line[64];
        if (!std::fgets(line, sizeof line, stdin))
            return question.defaultAnswer;
        const QString reply = QString::fromLocal8Bit(line).trimmed().toLower();
        if (reply.isEmpty())
            return question.defaultAnswer;
        for (const Choice& c : choices)
            if (reply.startsWith(c.key))
                return c.answer;
    }
}

} // namespace corvane::cli
