#pragma once

#include "screens/addinfo/addinforecord.h"

#include <QDialog>
#include <array>

namespace corvane {

class KeyRules;

// What both editions of the additional information screen share: the record,
// the keyboard, Escape and "Save && E&xit", the buttons below the frame, the
// Assessing Officer lookup and the centred frame.
class AddInfoDialog : public QDialog {
    Q_OBJECT

public:
    AddInfoRecord& record() { return record_; }

public slots:
    void cmdloadpre_Click();
    void cmdexit_Click();
    void cmdbankdet_Click();
    void cmdao_Click();
    // Escape (27) saves and closes.
    void Form_KeyPress(int keyAscii);

protected:
    AddInfoDialog(AddInfoEdition edition, const QString& formName, QWidget* parent);

    // Call once the controls exist: wires the shared buttons and the keyboard.
    void setUpShared(QWidget* frame1, QWidget* buttonBar);

    // A closing form must not hear its boxes lose the focus: call first in the destructor.
    void releaseKeys();

    virtual void READDATA(bool fromPrevious) = 0;
    // False when the save was refused and the form must stay open.
    virtual bool SAVEDATA() = 0;
    virtual void showAoCode(const std::array<QString, 4>& ao) = 0;
    // Copies the controls into the record's values.
    virtual void takeValues() = 0;

    // Call at the end of loading: the title says whose data it is, and what
    // the controls show now counts as unchanged.
    void finishLoad();
    // True when the controls differ from what was loaded.
    bool hasChanges();

    // The window's close button asks before anything typed is lost.
    void closeEvent(QCloseEvent* event) override;

    void Form_Resize();
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

    AddInfoRecord record_;
    KeyRules* keys_ = nullptr;

private:
    QWidget* frame1_ = nullptr;
    QWidget* buttonBar_ = nullptr;
    AddInfoValues loadedValues_;
    MiscInfValues loadedMisc_;
    bool closing_ = false;
};

} // namespace corvane
