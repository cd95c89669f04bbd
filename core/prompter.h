#pragma once

#include <QString>
#include <QStringList>
#include <deque>
#include <vector>

namespace corvane {

// A message box: the screens ask their questions through this, never through
// QMessageBox directly, so that tests and the command line can answer them.
class Prompter {
public:
    enum class Buttons { OK, YesNo, YesNoCancel, AbortRetryIgnore, OKCancel };
    enum class Icon { None, Information, Question, Exclamation, Critical };
    enum class Answer { OK, Cancel, Yes, No, Abort, Retry, Ignore };

    struct Question {
        QString text;
        Buttons buttons = Buttons::OK;
        Icon icon = Icon::None;
        Answer defaultAnswer = Answer::OK;
        QString title;
    };

    virtual ~Prompter() = default;
    virtual Answer ask(const Question& question) = 0;

    Answer ask(const QString& text, Buttons buttons, Icon icon = Icon::None,
               Answer defaultAnswer = Answer::OK, const QString& title = QString())
    {
        if (defaultAnswer == Answer::OK && buttons != Buttons::OK && buttons != Buttons::OKCancel)
            defaultAnswer = firstAnswerOf(buttons);
        return ask(Question{text, buttons, icon, defaultAnswer, title});
    }
    void inform(const QString& text, Icon icon = Icon::Information, const QString& title = QString())
    {
        ask(Question{text, Buttons::OK, icon, Answer::OK, title});
    }

    static Answer firstAnswerOf(Buttons buttons);
    static QString answerName(Answer answer);
};

// Answers from a script and records every question; used by the tests.
class ScriptedPrompter : public Prompter {
public:
    using Prompter::ask;
    Answer ask(const Question& question) override;

    ScriptedPrompter& then(Answer answer)
    {
        answers_.push_back(answer);
        return *this;
    }
    const std::vector<Question>& asked() const { return asked_; }
    QStringList texts() const;
    // Questions that found no scripted answer (they were given their default answer).
    int unanswered() const { return unanswered_; }
    int pending() const { return int(answers_.size()); }
    void clear();

private:
    std::deque<Answer> answers_;
    std::vector<Question> asked_;
    int unanswered_ = 0;
};

// The prompter installed in the context; a scripted one that answers with the
// default when nothing else was installed.
Prompter& prompter();

// Whether real dialogs may be installed on start-up; test programs switch
// them off so that no message box can ever wait for a click.
void setRealDialogsAllowed(bool allowed);
bool realDialogsAllowed();

} // namespace corvane
