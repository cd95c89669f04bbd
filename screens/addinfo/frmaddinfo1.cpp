#include "screens/addinfo/frmaddinfo1.h"

#include "core/conversions.h"
#include "core/modbase.h"
#include "core/prompter.h"
#include "core/resumenext.h"
#include "ui/screenscaling.h"
#include "core/statelist.h"
#include "ui/keyrules.h"
#include "ui_frmaddinfo1.h"

namespace corvane {

namespace {

const QString kForm = QStringLiteral("frmaddinfo1");

// Back colours of the page buttons, given as blue-green-red.
constexpr QRgb kPageShownBgr = 0xFFFFC0;
constexpr QRgb kPageHiddenBgr = 0x80C0FF;

QColor fromBgr(QRgb bgr)
{
    return QColor(int(bgr & 0xFF), int((bgr >> 8) & 0xFF), int((bgr >> 16) & 0xFF));
}

void setBackColour(QPushButton* button, QRgb bgr)
{
    QPalette palette = button->palette();
    palette.setColor(QPalette::Button, fromBgr(bgr));
    button->setPalette(palette);
    button->setAutoFillBackground(true);
}

// A state list shows a stored state even when the list does not offer it.
void selectState(QComboBox* list, const QString& state)
{
    int index = state.isEmpty() ? -1 : list->findText(state, Qt::MatchFixedString);
    if (index < 0 && !state.isEmpty()) {
        list->addItem(state);
        index = list->count() - 1;
    }
    list->setCurrentIndex(index);
}

void fillStates(QComboBox* list)
{
    ResumeNext guard(QStringLiteral("CLSMAIN"), QStringLiteral("LOADSTATELIST"));
    guard([&] {
        list->clear();
        list->addItems(readStateList());
        list->setCurrentIndex(-1);
    });
}

// The table and column each txt2 box is written to, by index.
const char* const kPage2Columns[] = {"FBT_MiscInf.Var2_1", "FBT_AddInfo.Ward", "FBT_AddInfo.RevRecNo", "FBT_AddInfo.RevRecDt",
                                     "FBT_AddInfo.IndiaEmp", "FBT_AddInfo.TotalEmp", "FBT_AddInfo.AreaCd", "FBT_AddInfo.AoTyp",
                                     "FBT_AddInfo.AoRng", "FBT_AddInfo.AoNo", "FBT_AddInfo.Amt115WJ", "FBT_AddInfo.Amt115WJ5",
                                     "FBT_AddInfo.Amt115WK", "FBT_AddInfo.IntDt"};

void limitLength(QLineEdit* box, const QString& tableDotColumn)
{
    box->setMaxLength(AddInfoRecord::boxLength(tableDotColumn.section(QLatin1Char('.'), 0, 0),
                                               tableDotColumn.section(QLatin1Char('.'), 1)));
}

} // namespace

FrmAddInfo1::FrmAddInfo1(QWidget* parent)
    : AddInfoDialog(AddInfoEdition::Second, kForm, parent), ui(std::make_unique<Ui::frmaddinfo1>())
{
    ui->setupUi(this);
    setUpShared(ui->Frame1, ui->ButtonBar);
    txt0 = {ui->txt0_0, ui->txt0_1, ui->txt0_2, ui->txt0_3, ui->txt0_4, ui->txt0_5, ui->txt0_6, nullptr, ui->txt0_8};
    txt1 = {ui->txt1_0, ui->txt1_1, ui->txt1_2, ui->txt1_3, ui->txt1_4, ui->txt1_5,
            ui->txt1_6, ui->txt1_7, ui->txt1_8, nullptr, ui->txt1_10, ui->txt1_11};
    txt2 = {ui->txt2_0, ui->txt2_1, ui->txt2_2, ui->txt2_3, ui->txt2_4, ui->txt2_5, ui->txt2_6,
            ui->txt2_7, ui->txt2_8, ui->txt2_9, ui->txt2_10, ui->txt2_11, ui->txt2_12, ui->txt2_13};
    chk1 = {ui->chk1_0, ui->chk1_1};
    chk2 = {ui->chk2_0, ui->chk2_1, ui->chk2_2, ui->chk2_3, ui->chk2_4, ui->chk2_5, ui->chk2_6, ui->chk2_7};
    Opt2 = {ui->Opt2_0, ui->Opt2_1};
    cmddetail = {ui->cmddetail_0, ui->cmddetail_1, ui->cmddetail_2};
    famdetail = {ui->famdetail_0, ui->famdetail_1, ui->famdetail_2};
    ui->cbosection->addItems({QStringLiteral("21 - Voluntarily before the due date"),
                              QStringLiteral("22 - Voluntarily after the due date"),
                              QStringLiteral("23 - In response to notice under section 115WD(2)"),
                              QStringLiteral("24 - In response to notice under section 115WG")});
    ui->cbosection->setCurrentIndex(-1);

    for (int i = 0; i < cmddetail.size(); ++i) {
        setBackColour(cmddetail[i], kPageHiddenBgr);
        connect(cmddetail[i], &QPushButton::clicked, this, [this, i] { cmddetail_Click(i); });
    }
    connect(ui->chk0, &QCheckBox::toggled, this, &FrmAddInfo1::chk0_Click);
    for (int i = 0; i < Opt2.size(); ++i)
        connect(Opt2[i], &QRadioButton::toggled, this, [this, i](bool on) { if (on) Opt2_Click(i); });
    for (int i = 0; i < chk2.size(); ++i)
        connect(chk2[i], &QCheckBox::toggled, this, [this, i] { chk2_Click(i); });

    // Keyboard: digits in the pin codes, counts and two amounts; the 115WK
    // amount takes any key, like the text boxes.
    const QList<QLineEdit*> digits{ui->txt0_8, ui->txt1_10, ui->txt2_4, ui->txt2_5, ui->txt2_10, ui->txt2_11};
    auto kind = [&](QLineEdit* box) { return digits.contains(box) ? KeyRules::Box::Digits : KeyRules::Box::Capitals; };
    for (int i = 0; i < txt0.size(); ++i)
        if (txt0[i])
            keys_->textBox(txt0[i], kind(txt0[i]), [this, i] { txt0_LostFocus(i); });
    for (int i = 0; i < txt1.size(); ++i)
        if (txt1[i])
            keys_->textBox(txt1[i], kind(txt1[i]), [this, i] { txt1_LostFocus(i); });
    for (int i = 0; i < txt2.size(); ++i)
        keys_->textBox(txt2[i], kind(txt2[i]), [this, i] { txt2_LostFocus(i); });
    // No box takes more than its column can store.
    for (int i = 0; i < txt0.size(); ++i)
        if (txt0[i])
            limitLength(txt0[i], QStringLiteral("FBT_MiscInf.Var0_%1").arg(i));
    for (int i = 0; i < txt1.size(); ++i)
        if (txt1[i])
            limitLength(txt1[i], QStringLiteral("FBT_MiscInf.Var1_%1").arg(i));
    for (int i = 0; i < txt2.size(); ++i)
        limitLength(txt2[i], QString::fromLatin1(kPage2Columns[i]));
    for (QWidget* w : std::initializer_list<QWidget*>{ui->chk0, ui->cbosection, ui->cbost0, ui->cbost1})
        keys_->enterAsTab(w);
    for (QWidget* w : chk1)
        keys_->enterAsTab(w);
    for (QWidget* w : chk2)
        keys_->enterAsTab(w);
    for (QWidget* w : Opt2)
        keys_->enterAsTab(w);

    Form_Load();
    Form_Resize();
    resize(minimumSize());
    finishLoad();
}

FrmAddInfo1::~FrmAddInfo1()
{
    releaseKeys();
}

void FrmAddInfo1::Form_Load()
{
    ResumeNext guard(kForm, QStringLiteral("FORM_LOAD"));
    guard([&] { Resize_For_Resolution(this, false); });
    guard([&] {
        const bool from2008 = modbase().TYear >= 2008;
        ui->chk2_5->setVisible(from2008);
        ui->txt2_11->setVisible(from2008);
    });
    guard([&] { fillStates(ui->cbost0); });
    guard([&] { fillStates(ui->cbost1); });
    // Every dependent box starts as its control says.
    guard([&] { chk0_Click(); });
    guard([&] { Opt2_Click(0); });
    guard([&] { chk2_Click(0); });
    guard([&] { chk2_Click(2); });
    guard([&] { READDATA(false); });
    guard([&] { cmddetail_Click(0); });
    ui->chk0->setFocus();
}

void FrmAddInfo1::READDATA(bool fromPrevious)
{
    takeValues();
    record_.READDATA(fromPrevious);
    showValues();
    ui->Frame1->setProperty("Tag", record_.marker);
    for (int i = 4; i <= 7; ++i)
        chk2_Click(i);
}

void FrmAddInfo1::takeValues()
{
    AddInfoValues& v = record_.values;
    MiscInfValues& m = record_.misc;
    m.repAss = ui->chk0->isChecked();
    for (int i = 0; i < txt0.size(); ++i)
        m.rep[std::size_t(i)] = txt0[i] ? txt0[i]->text() : ui->cbost0->currentText();
    m.opt44AA = ui->chk1_0->isChecked();
    m.opt44AB = ui->chk1_1->isChecked();
    for (int i = 0; i < txt1.size(); ++i)
        m.auditor[std::size_t(i)] = txt1[i] ? txt1[i]->text() : ui->cbost1->currentText();
    m.nameChanged = ui->chk2_0->isChecked();
    m.oldName = ui->txt2_0->text();

    v.ward = ui->txt2_1->text();
    v.section = ui->cbosection->currentIndex() + 1;
    v.revRet = ui->Opt2_1->isChecked();
    v.revRecNo = ui->txt2_2->text();
    v.revRecDt = ui->txt2_3->text();
    v.peIndia = ui->chk2_1->isChecked();
    v.empBoth = ui->chk2_2->isChecked();
    v.sepBooks = ui->chk2_3->isChecked();
    v.indiaEmp = ui->txt2_4->text();
    v.totalEmp = ui->txt2_5->text();
    v.areaCd = ui->txt2_6->text();
    v.aoTyp = ui->txt2_7->text();
    v.aoRng = ui->txt2_8->text();
    v.aoNo = ui->txt2_9->text();
    v.calc115WJ = ui->chk2_4->isChecked();
    v.amt115WJ = ui->txt2_10->text();
    v.calc115WJ5 = ui->chk2_5->isChecked();
    v.amt115WJ5 = ui->txt2_11->text();
    v.calc115WK = ui->chk2_6->isChecked();
    v.amt115WK = ui->txt2_12->text();
    v.intUpto = ui->chk2_7->isChecked();
    v.intDt = ui->txt2_13->text();
}

void FrmAddInfo1::showValues()
{
    const AddInfoValues& v = record_.values;
    const MiscInfValues& m = record_.misc;
    ui->chk0->setChecked(m.repAss);
    for (int i = 0; i < txt0.size(); ++i) {
        if (txt0[i])
            txt0[i]->setText(m.rep[std::size_t(i)]);
        else
            selectState(ui->cbost0, m.rep[std::size_t(i)]);
    }
    ui->chk1_0->setChecked(m.opt44AA);
    ui->chk1_1->setChecked(m.opt44AB);
    for (int i = 0; i < txt1.size(); ++i) {
        if (txt1[i])
            txt1[i]->setText(m.auditor[std::size_t(i)]);
        else
            selectState(ui->cbost1, m.auditor[std::size_t(i)]);
    }
    ui->chk2_0->setChecked(m.nameChanged);
    ui->txt2_0->setText(m.oldName);

    ui->txt2_1->setText(v.ward);
    ui->cbosection->setCurrentIndex(v.section - 1);
    (v.revRet ? ui->Opt2_1 : ui->Opt2_0)->setChecked(true);
    ui->txt2_2->setText(v.revRecNo);
    ui->txt2_3->setText(v.revRecDt);
    ui->chk2_1->setChecked(v.peIndia);
    ui->chk2_2->setChecked(v.empBoth);
    ui->chk2_3->setChecked(v.sepBooks);
    ui->txt2_4->setText(v.indiaEmp);
    ui->txt2_5->setText(v.totalEmp);
    ui->txt2_6->setText(v.areaCd);
    ui->txt2_7->setText(v.aoTyp);
    ui->txt2_8->setText(v.aoRng);
    ui->txt2_9->setText(v.aoNo);
    ui->chk2_4->setChecked(v.calc115WJ);
    ui->txt2_10->setText(v.amt115WJ);
    ui->chk2_5->setChecked(v.calc115WJ5);
    ui->txt2_11->setText(v.amt115WJ5);
    ui->chk2_6->setChecked(v.calc115WK);
    ui->txt2_12->setText(v.amt115WK);
    ui->chk2_7->setChecked(v.intUpto);
    ui->txt2_13->setText(v.intDt);
}

bool FrmAddInfo1::SAVEDATA()
{
    // Escape straight from a box counts as leaving it for the dates and the count; the
    // PAN boxes are not checked here, as the form is closing.
    auto* focused = qobject_cast<QLineEdit*>(focusWidget());
    if (focused && txt2.contains(focused))
        txt2_LostFocus(int(txt2.indexOf(focused)));
    else if (focused == ui->txt1_11)
        txt1_LostFocus(11);
    takeValues();
    if (record_.SAVEDATA() == AddInfoRecord::SaveResult::TooLong) {
        prompter().inform(record_.tooLong(), Prompter::Icon::Exclamation);
        return false;
    }
    return true;
}

void FrmAddInfo1::showAoCode(const std::array<QString, 4>& ao)
{
    ui->txt2_6->setText(ao[0]);
    ui->txt2_7->setText(ao[1]);
    ui->txt2_8->setText(ao[2]);
    ui->txt2_9->setText(ao[3]);
}

void FrmAddInfo1::cmddetail_Click(int index)
{
    ResumeNext guard(kForm, QStringLiteral("CMDDETAIL_CLICK"));
    guard([&] {
        if (index < 0 || index >= famdetail.size())
            throw Failure(err::SubscriptOutOfRange, kSource, QStringLiteral("Subscript out of range"));
        setBackColour(cmddetail[page_], kPageHiddenBgr);
        ui->PageStack->setCurrentWidget(famdetail[index]);
        setBackColour(cmddetail[index], kPageShownBgr);
        page_ = index;
    });
}

void FrmAddInfo1::chk0_Click()
{
    ResumeNext guard(kForm, QStringLiteral("CHK0_CLICK"));
    guard([&] {
        const bool ticked = ui->chk0->isChecked();
        for (QLineEdit* box : txt0)
            if (box)
                box->setEnabled(ticked);
        ui->cbost0->setEnabled(ticked);
    });
}

void FrmAddInfo1::Opt2_Click(int)
{
    ResumeNext guard(kForm, QStringLiteral("OPT2_CLICK"));
    guard([&] {
        const bool revised = ui->Opt2_1->isChecked();
        ui->txt2_2->setEnabled(revised);
        ui->txt2_3->setEnabled(revised);
    });
}

void FrmAddInfo1::chk2_Click(int index)
{
    ResumeNext guard(kForm, QStringLiteral("CHK2_CLICK"));
    guard([&] {
        const bool ticked = chk2.value(index) && chk2[index]->isChecked();
        switch (index) {
        case 0: ui->txt2_0->setEnabled(ticked); break;
        case 2:
            ui->chk2_3->setEnabled(ticked);
            ui->txt2_5->setEnabled(ticked);
            if (!ticked)
                ui->txt2_5->setText(ui->txt2_4->text());
            break;
        case 4:
        case 5:
        case 6: txt2[index + 6]->setEnabled(ticked); break;
        case 7: ui->txt2_13->setEnabled(ticked); break;
        default: break;
        }
    });
}

void FrmAddInfo1::checkPan(QLineEdit* box)
{
    if (ValidPan(box->text()))
        return;
    prompter().inform(QStringLiteral("PAN No is not Valid."));
    box->setFocus();
}

void FrmAddInfo1::convertDate(QLineEdit* box)
{
    QString yr;
    box->setText(ConvertDate(box->text(), QStringLiteral("dd/MM/yyyy"), yr));
}

void FrmAddInfo1::txt0_LostFocus(int index)
{
    ResumeNext guard(kForm, QStringLiteral("TXT0_LOSTFOCUS"));
    guard([&] {
        if (index == 1)
            checkPan(ui->txt0_1);
    });
}

void FrmAddInfo1::txt1_LostFocus(int index)
{
    ResumeNext guard(kForm, QStringLiteral("TXT1_LOSTFOCUS"));
    guard([&] {
        if (index == 3)
            checkPan(ui->txt1_3);
        else if (index == 11)
            convertDate(ui->txt1_11);
    });
}

void FrmAddInfo1::txt2_LostFocus(int index)
{
    ResumeNext guard(kForm, QStringLiteral("TXT2_LOSTFOCUS"));
    guard([&] {
        if (index == 3 || index == 13)
            convertDate(txt2[index]);
        else if (index == 4 && !ui->chk2_2->isChecked())
            ui->txt2_5->setText(ui->txt2_4->text());
    });
}

} // namespace corvane
