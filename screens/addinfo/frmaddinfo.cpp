#include "screens/addinfo/frmaddinfo.h"

#include "core/conversions.h"
#include "core/modbase.h"
#include "core/prompter.h"
#include "core/resumenext.h"
#include "ui/screenscaling.h"
#include "ui/keyrules.h"
#include "ui_frmaddinfo.h"

namespace corvane {

namespace {

const QString kForm = QStringLiteral("frmaddinfo");

// The form's date boxes and its count and amount boxes.
constexpr int kDateBoxes[] = {3, 4, 5, 14};
constexpr int kDigitBoxes[] = {6, 7, 12, 13};
// The column each box is written to, by index.
const char* const kColumns[] = {"Ward", "OldWard", "RevRecNo", "RevRecDt", "Dt44AB", "Dt44ABC", "IndiaEmp", "TotalEmp",
                                "AreaCd", "AoTyp", "AoRng", "AoNo", "Amt115WJ", "Amt115WK", "IntDt"};

} // namespace

FrmAddInfo::FrmAddInfo(QWidget* parent)
    : AddInfoDialog(AddInfoEdition::First, kForm, parent), ui(std::make_unique<Ui::frmaddinfo>())
{
    ui->setupUi(this);
    setUpShared(ui->Frame1, ui->ButtonBar);
    txtfields = {ui->txtfields_0, ui->txtfields_1, ui->txtfields_2, ui->txtfields_3, ui->txtfields_4,
                 ui->txtfields_5, ui->txtfields_6, ui->txtfields_7, ui->txtfields_8, ui->txtfields_9,
                 ui->txtfields_10, ui->txtfields_11, ui->txtfields_12, ui->txtfields_13, ui->txtfields_14};
    Check1 = {ui->Check1_0, ui->Check1_1, ui->Check1_2, ui->Check1_3, ui->Check1_4,
              ui->Check1_5, ui->Check1_6, ui->Check1_7, ui->Check1_8};
    chknob = {ui->chknob_0, ui->chknob_1, ui->chknob_2, ui->chknob_3, ui->chknob_4, ui->chknob_5};
    Option1 = {ui->Option1_0, ui->Option1_1, ui->Option1_2, ui->Option1_3};
    ui->Combo1->addItems({QStringLiteral("115WD(1)"), QStringLiteral("115WD(2)"), QStringLiteral("115WH"), QStringLiteral("115WD(3)")});
    ui->Combo1->setCurrentIndex(-1);

    for (int i = 0; i < Option1.size(); ++i)
        connect(Option1[i], &QRadioButton::toggled, this, [this, i](bool on) { if (on) Option1_Click(i); });
    for (int i = 0; i < Check1.size(); ++i)
        connect(Check1[i], &QCheckBox::toggled, this, [this, i] { Check1_Click(i); });
    connect(ui->Check2, &QCheckBox::toggled, this, &FrmAddInfo::Check2_Click);
    connect(ui->Check3, &QCheckBox::toggled, this, &FrmAddInfo::Check3_Click);
    connect(ui->Check4, &QCheckBox::toggled, this, &FrmAddInfo::Check4_Click);
    for (int i = 0; i < txtfields.size(); ++i) {
        const bool digits = std::find(std::begin(kDigitBoxes), std::end(kDigitBoxes), i) != std::end(kDigitBoxes);
        keys_->textBox(txtfields[i], digits ? KeyRules::Box::Digits : KeyRules::Box::Capitals,
                       [this, i] { txtfields_LostFocus(i); });
        txtfields[i]->setMaxLength(AddInfoRecord::boxLength(QStringLiteral("FBT_AddInfo"), QString::fromLatin1(kColumns[i])));
    }
    for (QCheckBox* box : chknob)
        keys_->enterAsTab(box);
    // Beyond the text and nature-of-business boxes, Enter moves on from every answer.
    for (QWidget* w : std::initializer_list<QWidget*>{ui->Combo1, ui->Check2, ui->Check3, ui->Check4})
        keys_->enterAsTab(w);
    for (QWidget* w : Check1)
        keys_->enterAsTab(w);
    for (QWidget* w : Option1)
        keys_->enterAsTab(w);

    Form_Load();
    Form_Resize();
    resize(minimumSize());
    finishLoad();
}

FrmAddInfo::~FrmAddInfo()
{
    releaseKeys();
}

void FrmAddInfo::Form_Load()
{
    ResumeNext guard(kForm, QStringLiteral("FORM_LOAD"));
    guard([&] { Resize_For_Resolution(this, false); });
    guard([&] { Option1_Click(2); });
    guard([&] { Check1_Click(1); });
    guard([&] { Check1_Click(2); });
    guard([&] { Check1_Click(7); });
    guard([&] { READDATA(false); });
    ui->txtfields_0->setFocus();
}

void FrmAddInfo::READDATA(bool fromPrevious)
{
    takeValues();
    record_.READDATA(fromPrevious);
    showValues();
    ui->Frame1->setProperty("Tag", record_.marker);
    Check2_Click();
    Check3_Click();
    Check4_Click();
}

void FrmAddInfo::takeValues()
{
    AddInfoValues& v = record_.values;
    v.chAdd = !ui->Option1_0->isChecked();
    v.ward = ui->txtfields_0->text();
    v.oldWard = ui->txtfields_1->text();
    v.section = ui->Combo1->currentIndex() + 1;
    v.revRet = ui->Option1_3->isChecked();
    v.revRecNo = ui->txtfields_2->text();
    v.revRecDt = ui->txtfields_3->text();
    for (int i = 0; i < chknob.size(); ++i)
        v.nob[std::size_t(i)] = chknob[i]->isChecked();
    v.ac44AA = ui->Check1_0->isChecked();
    v.ac44AB = ui->Check1_1->isChecked();
    v.dt44AB = ui->txtfields_4->text();
    v.ac44ABC = ui->Check1_2->isChecked();
    v.dt44ABC = ui->txtfields_5->text();
    v.peIndia = ui->Check1_3->isChecked();
    v.dtRel1 = ui->Check1_4->isChecked();
    v.dtRel2 = ui->Check1_5->isChecked();
    v.peOut = ui->Check1_6->isChecked();
    v.empBoth = ui->Check1_7->isChecked();
    v.sepBooks = ui->Check1_8->isChecked();
    v.indiaEmp = ui->txtfields_6->text();
    v.totalEmp = ui->txtfields_7->text();
    v.areaCd = ui->txtfields_8->text();
    v.aoTyp = ui->txtfields_9->text();
    v.aoRng = ui->txtfields_10->text();
    v.aoNo = ui->txtfields_11->text();
    v.calc115WJ = ui->Check3->isChecked();
    v.amt115WJ = ui->txtfields_12->text();
    v.calc115WK = ui->Check2->isChecked();
    v.amt115WK = ui->txtfields_13->text();
    v.intUpto = ui->Check4->isChecked();
    v.intDt = ui->txtfields_14->text();
}

void FrmAddInfo::showValues()
{
    const AddInfoValues& v = record_.values;
    (v.chAdd ? ui->Option1_1 : ui->Option1_0)->setChecked(true);
    ui->txtfields_0->setText(v.ward);
    ui->txtfields_1->setText(v.oldWard);
    ui->Combo1->setCurrentIndex(v.section - 1);
    (v.revRet ? ui->Option1_3 : ui->Option1_2)->setChecked(true);
    ui->txtfields_2->setText(v.revRecNo);
    ui->txtfields_3->setText(v.revRecDt);
    for (int i = 0; i < chknob.size(); ++i)
        chknob[i]->setChecked(v.nob[std::size_t(i)]);
    ui->Check1_0->setChecked(v.ac44AA);
    ui->Check1_1->setChecked(v.ac44AB);
    ui->txtfields_4->setText(v.dt44AB);
    ui->Check1_2->setChecked(v.ac44ABC);
    ui->txtfields_5->setText(v.dt44ABC);
    ui->Check1_3->setChecked(v.peIndia);
    ui->Check1_4->setChecked(v.dtRel1);
    ui->Check1_5->setChecked(v.dtRel2);
    ui->Check1_6->setChecked(v.peOut);
    ui->Check1_7->setChecked(v.empBoth);
    ui->Check1_8->setChecked(v.sepBooks);
    ui->txtfields_6->setText(v.indiaEmp);
    ui->txtfields_7->setText(v.totalEmp);
    ui->txtfields_8->setText(v.areaCd);
    ui->txtfields_9->setText(v.aoTyp);
    ui->txtfields_10->setText(v.aoRng);
    ui->txtfields_11->setText(v.aoNo);
    ui->Check3->setChecked(v.calc115WJ);
    ui->txtfields_12->setText(v.amt115WJ);
    ui->Check2->setChecked(v.calc115WK);
    ui->txtfields_13->setText(v.amt115WK);
    ui->Check4->setChecked(v.intUpto);
    ui->txtfields_14->setText(v.intDt);
}

bool FrmAddInfo::SAVEDATA()
{
    // Escape straight from a box counts as leaving it: a date typed there is normalised first.
    const int focused = int(txtfields.indexOf(qobject_cast<QLineEdit*>(focusWidget())));
    if (focused >= 0)
        txtfields_LostFocus(focused);
    takeValues();
    const AddInfoRecord::SaveResult result = record_.SAVEDATA();
    if (result == AddInfoRecord::SaveResult::NoNatureOfBusiness) {
        prompter().inform(QStringLiteral("Please Select Nature of Business."));
        ui->chknob_0->setFocus();
        return false;
    }
    if (result == AddInfoRecord::SaveResult::TooLong) {
        prompter().inform(record_.tooLong(), Prompter::Icon::Exclamation);
        return false;
    }
    return true;
}

void FrmAddInfo::Option1_Click(int index)
{
    ResumeNext guard(kForm, QStringLiteral("OPTION1_CLICK"));
    guard([&] {
        if (index < 2)
            return;
        const bool revised = ui->Option1_3->isChecked();
        ui->txtfields_2->setEnabled(revised);
        ui->txtfields_3->setEnabled(revised);
    });
}

void FrmAddInfo::Check1_Click(int index)
{
    ResumeNext guard(kForm, QStringLiteral("CHECK1_CLICK"));
    guard([&] {
        const bool ticked = Check1.value(index) && Check1[index]->isChecked();
        switch (index) {
        case 1: ui->txtfields_4->setEnabled(ticked); break;
        case 2: ui->txtfields_5->setEnabled(ticked); break;
        case 7:
            ui->Check1_8->setEnabled(ticked);
            ui->txtfields_7->setEnabled(ticked);
            if (!ticked)
                ui->txtfields_7->setText(ui->txtfields_6->text());
            break;
        default: break;
        }
    });
}

void FrmAddInfo::Check2_Click()
{
    ResumeNext guard(kForm, QStringLiteral("CHECK2_CLICK"));
    guard([&] { ui->txtfields_13->setEnabled(ui->Check2->isChecked()); });
}

void FrmAddInfo::Check3_Click()
{
    ResumeNext guard(kForm, QStringLiteral("CHECK3_CLICK"));
    guard([&] { ui->txtfields_12->setEnabled(ui->Check3->isChecked()); });
}

void FrmAddInfo::Check4_Click()
{
    ResumeNext guard(kForm, QStringLiteral("CHECK4_CLICK"));
    guard([&] { ui->txtfields_14->setEnabled(ui->Check4->isChecked()); });
}

void FrmAddInfo::txtfields_LostFocus(int index)
{
    ResumeNext guard(kForm, QStringLiteral("TXTFIELDS_LOSTFOCUS"));
    guard([&] {
        QLineEdit* box = txtfields.value(index);
        if (std::find(std::begin(kDateBoxes), std::end(kDateBoxes), index) != std::end(kDateBoxes)) {
            QString yr;
            box->setText(ConvertDate(box->text(), QStringLiteral("dd/MM/yyyy"), yr));
        } else if (index == 6 && !ui->Check1_7->isChecked()) {
            ui->txtfields_7->setText(ui->txtfields_6->text());
        }
    });
}

void FrmAddInfo::showAoCode(const std::array<QString, 4>& ao)
{
    ui->txtfields_8->setText(ao[0]);
    ui->txtfields_9->setText(ao[1]);
    ui->txtfields_10->setText(ao[2]);
    ui->txtfields_11->setText(ao[3]);
}

} // namespace corvane
