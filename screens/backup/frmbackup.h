#pragma once

#include <QDialog>
#include <memory>

namespace Ui {
class frmbackup;
}

namespace corvane {

// The backup screen: the destination folder, then the backup job with its
// progress. The work is the BackupJob's; the screen shows it.
class frmbackup : public QDialog {
    Q_OBJECT
public:
    explicit frmbackup(QWidget* parent = nullptr);
    ~frmbackup() override;

    bool running() const { return running_; }

public slots:
    void cmdsource_Click();
    void cmdok_Click();
    void cmdexit_Click();
    void reject() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void Form_Load();
    bool confirmExit();
    QString module() const { return objectName(); }

    std::unique_ptr<Ui::frmbackup> ui;
    bool running_ = false;
    bool cancelRequested_ = false;
    bool leaving_ = false;
};

} // namespace corvane
