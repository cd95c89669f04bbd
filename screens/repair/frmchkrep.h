#pragma once

#include "screens/repair/checkrepairjob.h"

#include <QDialog>
#include <memory>

namespace Ui {
class frmchkrep;
}

namespace corvane {

class Progress;

// Check and repair of every table: checks all tables when shown, lists the
// problems the server reported, and repairs those tables on request. The
// window repaints and stays responsive during a run, but cannot be closed
// and no second run can start until it ends.
class frmchkrep : public QDialog {
    Q_OBJECT
public:
    explicit frmchkrep(QWidget* parent = nullptr);
    ~frmchkrep() override;

public slots:
    void CHECKTABLES();
    void cmdrepair_Click();
    void cmdcancel_Click();
    void reject() override;

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void Form_Load();
    void REPAIRTABLES();
    void setRunning(bool running);
    void fillGrid();
    QStringList tableNames() const;
    QString module() const { return objectName(); }
    // The job on the context's connection of the moment.
    CheckRepairJob job();

    std::unique_ptr<Ui::frmchkrep> ui;
    std::unique_ptr<Progress> progress_;
    QList<TableProblem> problems_;
    QList<TableProblem> repairNotes_;
    bool running_ = false;
    bool checkedOnShow_ = false;
};

} // namespace corvane
