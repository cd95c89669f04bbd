#pragma once

#include "host/clientservice.h"

#include <QMainWindow>
#include <functional>

class QDialog;
class QLabel;

namespace Ui {
class frmmain;
}

namespace corvane {
class ClsMain;
}

namespace corvane::host {

class ClientListModel;
class ClientSearchModel;
class HostSession;

// The window a practice starts every morning: the clients, the year, and
// every screen of the component one menu item or key away.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    // The members of ClsMain that show a screen.
    enum class Member { ShowBankMas, ShowAddInfo, ShowAddInfo1, ShowReturn, ShowClDet, BackUp, Restoration, RepairData };
    Q_ENUM(Member)

    // Calls a member; returns what Restoration returns, else 0.
    using Invoker = std::function<qint16(Member)>;
    // Shows a dialog modally and returns its result.
    using DialogRunner = std::function<int(QDialog&)>;

    MainWindow(ClsMain& cls, HostSession& session, QWidget* parent = nullptr);
    ~MainWindow() override;

    void setInvoker(Invoker invoker) { invoker_ = std::move(invoker); }
    void setDialogRunner(DialogRunner runner) { runner_ = std::move(runner); }

    // Reads the clients and the years again; the chosen client stays chosen while it exists.
    void reload();

    QString currentCode() const;
    int currentYear() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private slots:
    void mnunewclient_Click();
    void mnueditclient_Click();
    void mnudeleteclient_Click();
    void mnuconnection_Click();
    void mnuabout_Click();
    void txtsearch_Change(const QString& text);
    void txtsearch_KeyPress();
    void lstclients_SelChange();
    void cboyear_Click();

private:
    void call(Member member);
    void loadClients(const QString& select);
    void selectCode(const QString& code);
    void selectFirstVisible();
    void selectRow(int row);
    int selectedRow() const;
    void showContext();

    Ui::frmmain* ui;
    ClsMain& cls_;
    HostSession& session_;
    ClientService clients_;
    ClientListModel* model_;
    ClientSearchModel* search_;
    bool quietSelection_ = false; // while the list is refilled
    Invoker invoker_;
    DialogRunner runner_;
    QLabel* lblclient_;
    QLabel* lblyear_;
    QLabel* lbldatabase_;
};

} // namespace corvane::host
