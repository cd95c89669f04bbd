#pragma once

#include "screens/register/registermodel.h"
#include "screens/register/returnregister.h"

#include <QDialog>
#include <memory>

class QAction;
class QLineEdit;
class QMenuBar;

namespace Ui {
class Pending;
}

namespace corvane {

// The return register of a year: the list of clients with the date of filing
// and acknowledgement number of their return, filtered to pending or filed
// returns (and a period of filing dates), edited in the grid or client by
// client, and printed through the report viewer.
class Pending : public QDialog {
    Q_OBJECT
public:
    explicit Pending(QWidget* parent = nullptr);
    ~Pending() override;

    // How the grid edits: 0 not at all, 2 a cell goes into edit mode as soon as it is entered.
    void setGrid2Editable(int mode);
    int grid2Editable() const { return editable_; }

    RegisterModel& register_() { return model_; }
    const QVector<returnregister::Entry>& entries() const { return entries_; }
    QAction* mnuopt() const { return mnuopt_; }
    QAction* Dos() const { return Dos_; }
    QAction* mnuExit() const { return mnuExit_; }
    QMenuBar* menuBar() const { return menuBar_; }

public slots:
    void cmdproceed_Click();
    void cmdback_Click();
    void mnuopt_Click();
    void Command1_Click();
    void Command2_Click();
    void Dos_Click();
    void mnuExit_Click();
    void cmdsave_Click();
    void vsfc_Click();
    void reject() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Form_Load();
    void LOADGRID();
    void LOADGRID1();
    // Saves the grid; false when the check pass refused a date.
    bool SAVEDATA();
    // Escape, the Back buttons and Exit: one level back.
    void stepBack();
    void showGrid(bool shown);
    bool TXTFLDT_VALIDATE();

    // The quick search of txtcode (column 0) and txtnm (column 1).
    void searchChange(QLineEdit* box, int column);
    void searchGotFocus(QLineEdit* box, int column);
    bool searchKeyDown(QKeyEvent* key);
    void searchLostFocus();
    void moveListCursor(int row);
    int listCursor() const;
    QLineEdit* searchBox() const;
    void focusSearchBox();
    void clearEntry();

    QString yearItem() const;
    returnregister::Returns returns() const;
    returnregister::Period period() const;
    QString module() const { return objectName(); }

    std::unique_ptr<Ui::Pending> ui;
    QMenuBar* menuBar_ = nullptr;
    QAction* mnuopt_ = nullptr;
    QAction* Dos_ = nullptr;
    QAction* mnuExit_ = nullptr;
    RegisterModel model_;
    EntryModel listModel_{2};
    EntryModel workModel_{returnregister::EntryColumnCount};
    QVector<returnregister::Entry> entries_;
    int editable_ = 0;
    bool closing_ = false;
};

} // namespace corvane
