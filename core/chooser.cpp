#include "core/chooser.h"

#include "core/modbase.h"

namespace corvane {

QString ScriptedChooser::next(const QString& title)
{
    titles_ << title;
    if (answers_.empty())
        return QString();
    QString answer = answers_.front();
    answers_.pop_front();
    return answer;
}

QString ScriptedChooser::chooseFolder(const QString& title, const QString&)
{
    return next(title);
}

QString ScriptedChooser::chooseOpenFile(const QString& title, const QString&, const QString&)
{
    return next(title);
}

QString ScriptedChooser::chooseSaveFile(const QString& title, const QString&, const QString&)
{
    return next(title);
}

Chooser& chooser()
{
    auto& installed = modbase().chooser;
    if (!installed)
        installed = std::make_shared<ScriptedChooser>();
    return *installed;
}

} // namespace corvane
