#pragma once

#include "screens/addinfo/addinfodialog.h"

#include <QList>
#include <memory>

class QCheckBox;
class QLineEdit;
class QRadioButton;

namespace Ui {
class frmaddinfo;
}

namespace corvane {

// "Additional Information": the client's answers for the year (FBT_AddInfo).
class FrmAddInfo : public AddInfoDialog {
    Q_OBJECT

public:
    explicit FrmAddInfo(QWidget* parent = nullptr);
    ~FrmAddInfo() override;

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

protected:
    void READDATA(bool fromPrevious) override;
    bool SAVEDATA() override;
    void showAoCode(const std::array<QString, 4>& ao) override;
    void takeValues() override;

private:
    void Form_Load();
    void showValues();

    std::unique_ptr<Ui::frmaddinfo> ui;
};

} // namespace corvane
