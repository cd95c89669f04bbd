#include "core/prompter.h"

#include "core/modbase.h"

namespace corvane {

Prompter::Answer Prompter::firstAnswerOf(Buttons buttons)
{
    switch (buttons) {
    case Buttons::YesNo:
    case Buttons::YesNoCancel:
        return Answer::Yes;
    case Buttons::AbortRetryIgnore:
        return Answer::Abort;
    case Buttons::OK:
    case Buttons::OKCancel:
        break;
    }
    return Answer::OK;
}

QString Prompter::answerName(Answer answer)
{
    switch (answer) {
    case Answer::OK: return QStringLiteral("ok");
    case Answer::Cancel: return QStringLiteral("cancel");
    case Answer::Yes: return QStringLiteral("yes");
    case Answer::No: return QStringLiteral("no");
    case Answer::Abort: return QStringLiteral("abort");
    case Answer::Retry: return QStringLiteral("retry");
    case Answer::Ignore: return QStringLiteral("ignore");
    }
    return QString();
}

Prompter::Answer ScriptedPrompter::ask(const Question& question)
{
    asked_.push_back(question);
    if (question.buttons == Buttons::OK)
        return Answer::OK;
    if (answers_.empty()) {
        ++unanswered_;
        return question.defaultAnswer;
    }
    const Answer answer = answers_.front();
    answers_.pop_front();
    return answer;
}

QStringList ScriptedPrompter::texts() const
{
    QStringList list;
    for (const auto& q : asked_)
        list << q.text;
    return list;
}

void ScriptedPrompter::clear()
{
    answers_.clear();
    asked_.clear();
    unanswered_ = 0;
}

namespace {
bool g_realDialogsAllowed = true;
}

void setRealDialogsAllowed(bool allowed)
{
    g_realDialogsAllowed = allowed;
}

bool realDialogsAllowed()
{
    return g_realDialogsAllowed;
}

Prompter& prompter()
{
    auto& installed = modbase().prompter;
    if (!installed)
        installed = std::make_shared<ScriptedPrompter>();
    return *installed;
}

} // namespace corvane
