#pragma once

#include "screens/addinfo/addinfodialog.h"

#include <QList>
#include <memory>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace Ui {
class frmaddinfo1;
}

namespace corvane {

// "Additional Information", second edition: the representative, the auditor
// and the other answers on three pages (FBT_AddInfo and FBT_MiscInf).
class FrmAddInfo1 : public AddInfoDialog {
    Q_OBJECT

public:
    explicit FrmAddInfo1(QWidget* parent = nullptr);
    ~FrmAddInfo1() override;

    int currentPage() const { return page_; }

    // The control arrays, in index order; txt0 and txt1 hold a null entry
    // where the state list takes the field.
    QList<QLineEdit*> txt0;
    QList<QLineEdit*> txt1;
    QList<QLineEdit*> txt2;
    QList<QCheckBox*> chk1;
    QList<QCheckBox*> chk2;
    QList<QRadioButton*> Opt2;
    QList<QPushButton*> cmddetail;
    QList<QWidget*> famdetail;

public slots:
    void cmddetail_Click(int index);
    void chk0_Click();
    void Opt2_Click(int index);
    void chk2_Click(int index);
    void txt0_LostFocus(int index);
    void txt1_LostFocus(int index);
    void txt2_LostFocus(int index);

protected:
    void READDATA(bool fromPrevious) override;
    bool SAVEDATA() override;
    void showAoCode(const std::array<QString, 4>& ao) override;
    void takeValues() override;

private:
    void Form_Load();
    void showValues();
    // A PAN box refuses to be left with an invalid PAN.
    void checkPan(QLineEdit* box);
    void convertDate(QLineEdit* box);

    std::unique_ptr<Ui::frmaddinfo1> ui;
    int page_ = 0;
};

} // namespace corvane
