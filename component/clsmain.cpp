#include "component/clsmain.h"

#include "db/clientdata.h"
#include "component/components.h"
#include "core/conversions.h"
#include "core/modbase.h"
#include "core/reportviewer.h"
#include "core/resumenext.h"
#include "ui/screenscaling.h"
#include "core/settings.h"
#include "core/statelist.h"
#include "ui/qtprompter.h"
#include "screens/addinfo/frmaddinfo.h"
#include "screens/addinfo/frmaddinfo1.h"
#include "screens/backup/frmbackup.h"
#include "screens/backup/frmrestoration.h"
#include "screens/bank/frmbankdet1.h"
#include "screens/cldet/frmcldet.h"
#include "screens/repair/frmchkrep.h"
#include "screens/register/pending.h"

#include <QComboBox>
#include <QListWidget>
#include <QPointer>
#include <mutex>

namespace corvane {

namespace {

// Runs once, before the first member call: registers the outside components
// and creates the report viewer, which every report screen shares for the life
// of the process.
void startUp()
{
    static std::once_flag once;
    std::call_once(once, [] {
        registerDefaultComponents();
        auto guard = silentGuard();
        guard([] { modbase().reportViewer = CreateObject<ReportViewer>(kReportViewerClass); });
        installQtUserInterface();
    });
}

} // namespace

ClsMain::ClsMain()
{
    startUp();
}

QString ClsMain::Code() const { return modbase().Code; }
void ClsMain::setCode(const QString& value) { modbase().Code = value; }
qint16 ClsMain::TYear() const { return modbase().TYear; }
void ClsMain::setTYear(qint16 value) { modbase().TYear = value; }
qint16 ClsMain::status() const { return modbase().status; }
void ClsMain::setstatus(qint16 value) { modbase().status = value; }
QString ClsMain::Cap() const { return modbase().Cap; }
void ClsMain::setCap(const QString& value) { modbase().Cap = value; }
QString ClsMain::AppPath() const { return modbase().AppPath; }
void ClsMain::setAppPath(const QString& value) { modbase().AppPath = value; }
void ClsMain::setCnnObj(std::shared_ptr<Connection> connection) { modbase().CnnObj = std::move(connection); }
std::shared_ptr<Connection> ClsMain::CnnObj() const { return modbase().CnnObj; }

QString ClsMain::ConvertDate(const QString& Dt, const QString& DtFrm, QString& Yr)
{
    return corvane::ConvertDate(Dt, DtFrm, Yr);
}

QString ClsMain::ConvertToWord(const QString& MyNumber)
{
    return corvane::ConvertToWord(MyNumber);
}

QString ClsMain::GetDirPath(QWidget* Wnd)
{
    setChooserOwner(Wnd);
    return corvane::GetDirPath();
}

bool ClsMain::ValidPan(const QString& PAN)
{
    return corvane::ValidPan(PAN);
}

QString ClsMain::GetSettingINI(const QString& Section, const QString& Key, const QString& DefVal, const QString& Fl)
{
    return corvane::GetSettingINI(Section, Key, DefVal, Fl);
}

void ClsMain::SaveSettingINI(const QString& Section, const QString& Key, const QString& KeyVal, const QString& Fl)
{
    corvane::SaveSettingINI(Section, Key, KeyVal, Fl);
}

void ClsMain::ShowAddInfo()
{
    auto guard = silentGuard();
    // A fresh form each time: closing it releases it.
    guard([] {
        FrmAddInfo form;
        form.exec();
    });
}

void ClsMain::ShowAddInfo1()
{
    auto guard = silentGuard();
    guard([] {
        FrmAddInfo1 form;
        form.exec();
    });
}

void ClsMain::ShowBankMas()
{
    // One instance while it is shown; it unloads when closed, so the next call loads it afresh.
    static QPointer<frmbankdet1> instance;
    auto guard = silentGuard();
    guard([] {
        if (!instance)
            instance = new frmbankdet1;
        instance->exec();
        delete instance;
    });
}

void ClsMain::ShowClDet()
{
    static QPointer<frmcldet> instance;
    auto guard = silentGuard();
    guard([] {
        if (!instance)
            instance = new frmcldet;
        instance->exec();
        delete instance;
    });
}

void ClsMain::ShowReturn()
{
    static QPointer<Pending> instance;
    auto guard = silentGuard();
    guard([] {
        if (!instance)
            instance = new Pending;
        // Grid cells go into edit mode as soon as they are entered.
        instance->setGrid2Editable(2);
        instance->exec();
        delete instance;
    });
}

QString ClsMain::vTmpPath() const { return modbase().vTmpPath; }
void ClsMain::setvTmpPath(const QString& value) { modbase().vTmpPath = value; }

void ClsMain::RepairData(QWidget* OwnFrm)
{
    // Modal over the host's form; unloaded when closed, so each call checks afresh.
    static QPointer<frmchkrep> instance;
    ResumeNext guard(QStringLiteral("CLSMAIN"), QStringLiteral("REPAIRDATA"));
    guard([OwnFrm] {
        if (!instance)
            instance = new frmchkrep(OwnFrm);
        instance->exec();
        delete instance;
    });
}

void ClsMain::BackUp()
{
    auto guard = silentGuard();
    guard([] {
        frmbackup form;
        form.exec();
    });
}

void ClsMain::DeleteClient(const QString& Cd)
{
    corvane::DeleteClient(modbase().CnnObj.get(), Cd);
}

void ClsMain::ChangeCode(const QString& OldCd, const QString& NewCd)
{
    corvane::ChangeCode(modbase().CnnObj.get(), OldCd, NewCd);
}

qint16 ClsMain::Restoration()
{
    modbase().restorationFlag = 0;
    auto guard = silentGuard();
    guard([] {
        frmrestoration form;
        form.exec();
    });
    return modbase().restorationFlag;
}

void ClsMain::LoadStateList(QComboBox* Cmb)
{
    ResumeNext guard(QStringLiteral("CLSMAIN"), QStringLiteral("LOADSTATELIST"));
    QStringList states;
    guard([&] {
        if (!Cmb)
            throw Failure(err::ObjectNotSet, kSource, QStringLiteral("Object variable or With block variable not set"));
        Cmb->clear();
        states = readStateList();
        Cmb->addItems(states);
    });
}

void ClsMain::LoadStateList(QListWidget* Cmb)
{
    ResumeNext guard(QStringLiteral("CLSMAIN"), QStringLiteral("LOADSTATELIST"));
    guard([&] {
        if (!Cmb)
            throw Failure(err::ObjectNotSet, kSource, QStringLiteral("Object variable or With block variable not set"));
        Cmb->clear();
        Cmb->addItems(readStateList());
    });
}

void ClsMain::SetPBBackColor(QProgressBar* ProgressBarHwnd, qint32 RGBValue)
{
    corvane::SetPBBackColor(ProgressBarHwnd, RGBValue);
}

void ClsMain::SetPBBarColor(QProgressBar* ProgressBarHwnd, qint32 RGBValue)
{
    corvane::SetPBBarColor(ProgressBarHwnd, RGBValue);
}

void ClsMain::GetScreenReso()
{
    corvane::GetScreenReso();
}

qint32 ClsMain::vDefScreenX() const { return modbase().vDefScreenX; }
qint32 ClsMain::vDefScreenY() const { return modbase().vDefScreenY; }
qint16 ClsMain::vDefScreenFS() const { return modbase().vDefScreenFS; }
float ClsMain::vScreenRatX() const { return modbase().vScreenRatX; }
float ClsMain::vScreenRatY() const { return modbase().vScreenRatY; }
float ClsMain::vScreenRatFS() const { return modbase().vScreenRatFS; }

void ClsMain::Resize_For_Resolution(QWidget* MyForm, bool RePosForm)
{
    corvane::Resize_For_Resolution(MyForm, RePosForm);
}

void ClsMain::Resize_For_ResolutionUC(const QList<QWidget*>& Ctrls)
{
    corvane::Resize_For_ResolutionUC(Ctrls);
}

} // namespace corvane
