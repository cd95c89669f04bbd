#pragma once

#include <QDialog>
#include <memory>

namespace Ui {
class frmrestoration;
}

namespace corvane {

class BarProgress;
namespace backup {
class RestoreJob;
}

// The restoration screen: the first page chooses the backup and the
// directories, the second lists what will be restored and restores it. The
// work is the RestoreJob's; the screen shows it.
class frmrestoration : public QDialog {
    Q_OBJECT
public:
    explicit frmrestoration(QWidget* parent = nullptr);
    ~frmrestoration() override;

    bool running() const { return running_; }

public slots:
    void cbomysql_Click();
    void cbodatadir_Click();
    void Option1_Click();
    void cmdmysql_Click();
    void cmddatadir_Click();
    void cmdbkfl_Click();
    void cmdbk_Click(int index);
    void cmdproceed_Click();
    void cmdrestore_Click();
    void cmdback_Click();
    void cmdexit_Click();
    void done(int result) override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void Form_Load();
    void showPage(int page);
    void fillGrid();
    void fitColumns();
    void showStatus(int row);
    QString module() const { return objectName(); }

    std::unique_ptr<Ui::frmrestoration> ui;
    std::unique_ptr<BarProgress> progress_;
    std::unique_ptr<backup::RestoreJob> job_;
    bool running_ = false;
};

} // namespace corvane
