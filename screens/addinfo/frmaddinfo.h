#pragma once

#include "screens/addinfo/addinforecord.h"

#include <QDialog>
#include <QList>
#include <memory>

class QCheckBox;
class QLineEdit;
class QRadioButton;

namespace Ui {
class frmaddinfo;
}

namespace corvane {

class KeyRules;

// "Additional Information": the client's answers for the year (FBT_AddInfo).
class FrmAddInfo : public QDialog {
    Q_OBJECT

public:
    explicit FrmAddInfo(QWidget* parent = nullptr);
    ~FrmAddInfo() override;

    AddInfoRecord& record() { return record_; }

    // The control arrays, in index order.
    QList<QLineEdit*> txtfields;
    QList<QCheckBox*> Check1;
    QList<QCheckBox*> chknob;
    QList<QRadioButton*> Option1;

public slots:
    void Option1_Click(int index);
    void Check1_Click(int index);
    void Check2_Click();
    void Check3_Click();
    void Check4_Click();
    void txtfields_LostFocus(int index);
    void cmdloadpre_Click();
    void cmdexit_Click();
    void cmdbankdet_Click();
    void cmdao_Click();
    // Escape saves and closes.
    void Form_KeyPress(int keyAscii);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void Form_Load();
    void Form_Resize();
    void READDATA(bool fromPrevious);
    bool SAVEDATA();
    void showValues();
    void takeValues();

    std::unique_ptr<Ui::frmaddinfo> ui;
    AddInfoRecord record_;
    KeyRules* keys_ = nullptr;
};

} // namespace corvane
