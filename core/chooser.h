#pragma once

#include <QString>
#include <QStringList>
#include <deque>

namespace corvane {

// Folder and file choosers. Every chooser returns an empty text on cancel.
class Chooser {
public:
    virtual ~Chooser() = default;
    virtual QString chooseFolder(const QString& title, const QString& startFolder) = 0;
    virtual QString chooseOpenFile(const QString& title, const QString& startFolder, const QString& filter) = 0;
    virtual QString chooseSaveFile(const QString& title, const QString& startPath, const QString& filter) = 0;
};

// Gives the queued answers in order (empty = cancel) and records the titles.
class ScriptedChooser : public Chooser {
public:
    QString chooseFolder(const QString& title, const QString& startFolder) override;
    QString chooseOpenFile(const QString& title, const QString& startFolder, const QString& filter) override;
    QString chooseSaveFile(const QString& title, const QString& startPath, const QString& filter) override;

    ScriptedChooser& then(const QString& path)
    {
        answers_.push_back(path);
        return *this;
    }
    const QStringList& titles() const { return titles_; }

private:
    QString next(const QString& title);
    std::deque<QString> answers_;
    QStringList titles_;
};

// The chooser installed in the context; a scripted one that always cancels otherwise.
Chooser& chooser();

} // namespace corvane
