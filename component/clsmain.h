#pragma once

#include <QList>
#include <QString>
#include <memory>

class QComboBox;
class QListWidget;
class QProgressBar;
class QWidget;

namespace corvane {

class Connection;

// The one public class of the component (class identifier "Corvane.ClsMain").
// It holds no state: every property is a variable of the shared context, so
// two objects see the same values.
class ClsMain {
public:
    ClsMain();

    QString Code() const;
    void setCode(const QString& value);
    qint16 TYear() const;
    void setTYear(qint16 value);
    qint16 status() const;
    void setstatus(qint16 value);
    QString Cap() const;
    void setCap(const QString& value);
    QString AppPath() const;
    void setAppPath(const QString& value);
    void setCnnObj(std::shared_ptr<Connection> connection);
    std::shared_ptr<Connection> CnnObj() const;

    QString ConvertDate(const QString& Dt, const QString& DtFrm, QString& Yr);
    QString ConvertToWord(const QString& MyNumber);
    QString GetDirPath(QWidget* Wnd);
    bool ValidPan(const QString& PAN);
    QString GetSettingINI(const QString& Section, const QString& Key, const QString& DefVal, const QString& Fl = QString());
    void SaveSettingINI(const QString& Section, const QString& Key, const QString& KeyVal, const QString& Fl = QString());

    void ShowAddInfo();
    void ShowAddInfo1();
    void ShowBankMas();
    void ShowClDet();
    void ShowReturn();

    QString vTmpPath() const;
    void setvTmpPath(const QString& value);

    void RepairData(QWidget* OwnFrm);
    void BackUp();
    void DeleteClient(const QString& Cd);
    void ChangeCode(const QString& OldCd, const QString& NewCd);
    qint16 Restoration();
    void LoadStateList(QComboBox* Cmb);
    void LoadStateList(QListWidget* Cmb);
    void SetPBBackColor(QProgressBar* ProgressBarHwnd, qint32 RGBValue);
    void SetPBBarColor(QProgressBar* ProgressBarHwnd, qint32 RGBValue);
    void GetScreenReso();

    qint32 vDefScreenX() const;
    qint32 vDefScreenY() const;
    qint16 vDefScreenFS() const;
    float vScreenRatX() const;
    float vScreenRatY() const;
    float vScreenRatFS() const;

    void Resize_For_Resolution(QWidget* MyForm, bool RePosForm);
    void Resize_For_ResolutionUC(const QList<QWidget*>& Ctrls);
};

} // namespace corvane
