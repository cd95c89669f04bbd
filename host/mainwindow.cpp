#include "host/mainwindow.h"

#include "ui_mainwindow.h"

#include "component/clsmain.h"
#include "core/prompter.h"
#include "ui/screenscaling.h"
#include "host/aboutfbt.h"
#include "host/assessmentyears.h"
#include "host/clientlistmodel.h"
#include "host/clientdialog.h"
#include "core/clientstatus.h"
#include "host/connectiondialog.h"
#include "host/failuretext.h"
#include "host/hostsession.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QHeaderView>
#include <QMenu>
#include <QMenuBar>
#include <QKeyEvent>
#include <QLabel>
#include <QScopedValueRollback>

namespace corvane::host {

namespace {

bool needsClient(MainWindow::Member member)
{
    return member == MainWindow::Member::ShowAddInfo || member == MainWindow::Member::ShowAddInfo1;
}

} // namespace

MainWindow::MainWindow(ClsMain& cls, HostSession& session, QWidget* parent)
    : QMainWindow(parent)
    , ui(new Ui::frmmain)
    , cls_(cls)
    , session_(session)
    , clients_(cls)
    , model_(new ClientListModel(this))
    , search_(new ClientSearchModel(model_, this))
{
    ui->setupUi(this);
    ui->lstclients->setModel(search_);
    invoker_ = [this](Member member) -> qint16 {
        switch (member) {
        case Member::ShowBankMas: cls_.ShowBankMas(); break;
        case Member::ShowAddInfo: cls_.ShowAddInfo(); break;
        case Member::ShowAddInfo1: cls_.ShowAddInfo1(); break;
        case Member::ShowReturn: cls_.ShowReturn(); break;
        case Member::ShowClDet: cls_.ShowClDet(); break;
        case Member::BackUp: cls_.BackUp(); break;
        case Member::Restoration: return cls_.Restoration();
        case Member::RepairData: cls_.RepairData(this); break;
        }
        return 0;
    };
    runner_ = [](QDialog& dialog) { return dialog.exec(); };

    // Sized from the rows in sight: measuring every row of a large practice takes seconds.
    QHeaderView* header = ui->lstclients->horizontalHeader();
    header->setSectionResizeMode(QHeaderView::Interactive);
    header->setSectionResizeMode(ClientListModel::Name, QHeaderView::Stretch);
    header->setResizeContentsPrecision(200);
    QHeaderView* rows = ui->lstclients->verticalHeader();
    rows->setSectionResizeMode(QHeaderView::Fixed);
    rows->setDefaultSectionSize(ui->lstclients->fontMetrics().height() + 8);
    ui->txtsearch->installEventFilter(this);

    lblclient_ = new QLabel(this);
    lblclient_->setObjectName(QStringLiteral("lblclient"));
    lblyear_ = new QLabel(this);
    lblyear_->setObjectName(QStringLiteral("lblyear"));
    lbldatabase_ = new QLabel(this);
    lbldatabase_->setObjectName(QStringLiteral("lbldatabase"));
    for (QLabel* label : {lblclient_, lblyear_, lbldatabase_})
        label->setContentsMargins(8, 0, 8, 0);
    statusBar()->addWidget(lblclient_, 1);
    statusBar()->addPermanentWidget(lblyear_);
    statusBar()->addPermanentWidget(lbldatabase_);

    const auto member = [this](QAction* action, Member m) { connect(action, &QAction::triggered, this, [this, m] { call(m); }); };
    member(ui->mnubankmas, Member::ShowBankMas);
    member(ui->mnuaddinfo, Member::ShowAddInfo);
    member(ui->mnuaddinfo1, Member::ShowAddInfo1);
    member(ui->mnureturn, Member::ShowReturn);
    member(ui->mnucldet, Member::ShowClDet);
    member(ui->mnubackup, Member::BackUp);
    member(ui->mnurestore, Member::Restoration);
    member(ui->mnurepair, Member::RepairData);
    connect(ui->mnunewclient, &QAction::triggered, this, &MainWindow::mnunewclient_Click);
    connect(ui->mnueditclient, &QAction::triggered, this, &MainWindow::mnueditclient_Click);
    connect(ui->mnudeleteclient, &QAction::triggered, this, &MainWindow::mnudeleteclient_Click);
    connect(ui->mnuconnection, &QAction::triggered, this, &MainWindow::mnuconnection_Click);
    connect(ui->mnuexit, &QAction::triggered, this, &QWidget::close);
    connect(ui->mnufind, &QAction::triggered, this, [this] {
        ui->txtsearch->setFocus();
        ui->txtsearch->selectAll();
    });
    // Delete in the search box deletes text, not the client.
    ui->mnudeleteclient->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    ui->lstclients->addAction(ui->mnudeleteclient);
    connect(ui->txtsearch, &QLineEdit::textChanged, this, &MainWindow::txtsearch_Change);
    connect(ui->txtsearch, &QLineEdit::returnPressed, this, &MainWindow::txtsearch_KeyPress);
    connect(ui->lstclients->selectionModel(), &QItemSelectionModel::selectionChanged, this, &MainWindow::lstclients_SelChange);
    connect(ui->lstclients, &QAbstractItemView::activated, this, [this] { call(Member::ShowAddInfo); });
    connect(ui->cboyear, &QComboBox::currentIndexChanged, this, &MainWindow::cboyear_Click);

    QMenu* help = menuBar()->addMenu(QStringLiteral("&Help"));
    help->setObjectName(QStringLiteral("mnuhelp"));
    QAction* about = help->addAction(QStringLiteral("&About FBT"), this, &MainWindow::mnuabout_Click);
    about->setObjectName(QStringLiteral("mnuabout"));
    keepOnScreenWhenShown(this);

    reload();
    ui->txtsearch->setFocus();
}

void MainWindow::mnuabout_Click()
{
    prompter().inform(aboutText(session_), Prompter::Icon::Information, QStringLiteral("About FBT"));
}

MainWindow::~MainWindow()
{
    delete ui;
}

int MainWindow::selectedRow() const
{
    const auto selected = ui->lstclients->selectionModel()->selectedRows();
    return selected.isEmpty() ? -1 : selected.first().row();
}

QString MainWindow::currentCode() const
{
    return search_->codeAt(selectedRow());
}

int MainWindow::currentYear() const
{
    return ui->cboyear->currentData().toInt();
}

void MainWindow::reload()
{
    const QString keep = currentCode().isEmpty() ? cls_.Code() : currentCode();
    {
        const QSignalBlocker block(ui->cboyear);
        const int year = cls_.TYear();
        ui->cboyear->clear();
        for (int y : session_.years())
            ui->cboyear->addItem(assessmentYearLabel(y), y);
        const int index = ui->cboyear->findData(year);
        ui->cboyear->setCurrentIndex(index >= 0 ? index : ui->cboyear->count() - 1);
    }
    cls_.setTYear(qint16(currentYear()));
    loadClients(keep);
}

void MainWindow::loadClients(const QString& select)
{
    QVector<ClientListEntry> clients;
    const QString reason = failureText([&] { clients = clients_.listing(); }, QStringLiteral("LOADCLIENTS"));
    if (!reason.isEmpty())
        prompter().inform(QStringLiteral("The clients could not be read:\n\n%1").arg(reason), Prompter::Icon::Exclamation);
    {
        const QScopedValueRollback quiet(quietSelection_, true);
        model_->setClients(std::move(clients));
        search_->setSearch(ui->txtsearch->text());
        ui->lstclients->resizeColumnsToContents();
    }
    selectCode(select);
    if (currentCode().isEmpty())
        selectFirstVisible();
    lstclients_SelChange();
}

void MainWindow::selectRow(int row)
{
    QTableView* list = ui->lstclients;
    if (row < 0 || row >= search_->rowCount()) {
        list->clearSelection();
        return;
    }
    const QModelIndex index = search_->index(row, ClientListModel::Code);
    list->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    list->scrollTo(index);
}

void MainWindow::selectCode(const QString& code)
{
    const int row = search_->rowOfCode(code);
    if (row >= 0)
        selectRow(row);
}

void MainWindow::selectFirstVisible()
{
    selectRow(0);
}

void MainWindow::txtsearch_Change(const QString& text)
{
    // A client is found by the start of its code or by any part of its name;
    // the chosen client stays chosen while the search still finds it.
    const QString keep = currentCode();
    {
        const QScopedValueRollback quiet(quietSelection_, true);
        search_->setSearch(text);
        selectCode(keep);
        if (currentCode().isEmpty())
            selectFirstVisible();
    }
    if (currentCode() != keep)
        lstclients_SelChange();
}

void MainWindow::txtsearch_KeyPress()
{
    call(Member::ShowAddInfo);
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event)
{
    // The arrow and page keys in the search box move through the list.
    if (watched == ui->txtsearch && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_PageUp || key == Qt::Key_PageDown) {
            QKeyEvent copy(QEvent::KeyPress, key, static_cast<QKeyEvent*>(event)->modifiers());
            QCoreApplication::sendEvent(ui->lstclients, &copy);
            return true;
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

void MainWindow::lstclients_SelChange()
{
    if (quietSelection_)
        return;
    cls_.setCode(currentCode());
    showContext();
}

void MainWindow::cboyear_Click()
{
    cls_.setTYear(qint16(currentYear()));
    showContext();
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    // The next start opens on the same client and year.
    session_.remember(currentCode(), currentYear());
    QMainWindow::closeEvent(event);
}

void MainWindow::showContext()
{
    const QString code = currentCode();
    if (code.isEmpty()) {
        lblclient_->setText(QStringLiteral("No client chosen"));
    } else {
        lblclient_->setText(QStringLiteral("Client: %1  %2").arg(code, search_->nameAt(selectedRow())));
    }
    lblyear_->setText(QStringLiteral("Assessment Year: %1").arg(assessmentYearLabel(currentYear())));
    const ConnectionSettings& s = session_.settings();
    // A socket's path can be long: the status bar names it, Help → About FBT and the tip show it.
    lbldatabase_->setText(s.privateServer       ? QStringLiteral("Database %1 (private server)").arg(s.database)
                          : s.server.isEmpty() ? QStringLiteral("Database %1 on the local server").arg(s.database)
                                               : QStringLiteral("Database %1 on %2").arg(s.database, s.server));
    lbldatabase_->setToolTip(s.describe());
}

void MainWindow::call(Member member)
{
    if (needsClient(member) && currentCode().isEmpty()) {
        prompter().inform(QStringLiteral("Choose a client first."), Prompter::Icon::Information);
        return;
    }
    cls_.setCode(currentCode());
    cls_.setTYear(qint16(currentYear()));
    const qint16 result = invoker_(member);
    if (member == Member::Restoration && result != 0) {
        // The database has been replaced: a new connection, and everything read again.
        session_.reconnect();
        statusBar()->showMessage(QStringLiteral("The backup has been restored."), 5000);
    }
    reload();
}

void MainWindow::mnunewclient_Click()
{
    ClientDialog dialog(cls_, clients_, QString(), this);
    if (runner_(dialog) == QDialog::Accepted) {
        loadClients(dialog.savedCode());
        statusBar()->showMessage(QStringLiteral("Client %1 added.").arg(dialog.savedCode()), 5000);
    }
}

void MainWindow::mnueditclient_Click()
{
    const QString code = currentCode();
    if (code.isEmpty()) {
        prompter().inform(QStringLiteral("Choose a client first."), Prompter::Icon::Information);
        return;
    }
    ClientDialog dialog(cls_, clients_, code, this);
    if (runner_(dialog) != QDialog::Accepted)
        return;
    if (dialog.deleted()) {
        loadClients(QString());
        statusBar()->showMessage(QStringLiteral("Client %1 deleted.").arg(code), 5000);
    } else {
        loadClients(dialog.savedCode());
        statusBar()->showMessage(QStringLiteral("Client %1 saved.").arg(dialog.savedCode()), 5000);
    }
}

void MainWindow::mnudeleteclient_Click()
{
    const QString code = currentCode();
    if (code.isEmpty()) {
        prompter().inform(QStringLiteral("Choose a client first."), Prompter::Icon::Information);
        return;
    }
    if (!ClientDialog::confirmDelete(code, search_->nameAt(selectedRow())))
        return;
    const ClientOutcome outcome = clients_.remove(code);
    if (!outcome.ok)
        prompter().inform(outcome.message, Prompter::Icon::Exclamation);
    loadClients(QString());
    if (outcome.ok)
        statusBar()->showMessage(QStringLiteral("Client %1 deleted.").arg(code), 5000);
}

void MainWindow::mnuconnection_Click()
{
    ConnectionDialog dialog(session_.settings(), [this](const ConnectionSettings& s) { return session_.tryConnect(s); },
                            QString(), this);
    if (runner_(dialog) != QDialog::Accepted)
        return;
    if (session_.reconnect(true))
        statusBar()->showMessage(QStringLiteral("Connected: %1").arg(session_.settings().describe()), 5000);
    reload();
}

} // namespace corvane::host
