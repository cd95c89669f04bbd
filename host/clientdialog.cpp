#include "host/clientdialog.h"

#include "db/schema.h"

#include "ui/screenkeys.h"

#include "ui_clientdialog.h"

#include "component/clsmain.h"
#include "core/prompter.h"
#include "core/clientstatus.h"
#include "host/failuretext.h"

#include <QAbstractButton>
#include <QKeyEvent>
#include <QLineEdit>
#include <QRegularExpressionValidator>

namespace corvane::host {

namespace {

// Codes and PANs are kept in capitals: show them so while they are typed.
void typeInCapitals(QLineEdit* edit)
{
    QObject::connect(edit, &QLineEdit::textEdited, edit, [edit](const QString& text) {
        const QString upper = text.toUpper();
        if (upper != text) {
            const int cursor = edit->cursorPosition();
            edit->setText(upper);
            edit->setCursorPosition(cursor);
        }
    });
}

} // namespace

ClientDialog::ClientDialog(ClsMain& cls, ClientService& service, const QString& code, QWidget* parent)
    : QDialog(parent)
    , ui(new Ui::frmclient)
    , cls_(cls)
    , service_(service)
    , originalCode_(code)
{
    ui->setupUi(this);
    typeInCapitals(ui->txtcode);
    typeInCapitals(ui->txtpan);
    ui->txtpin->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]{0,6}")), ui->txtpin));

    for (const ClientStatus& s : clientStatuses())
        ui->cbostatus->addItem(s.name, s.code);
    cls_.LoadStateList(ui->cbostate);
    ui->cbostate->insertItem(0, QString());
    ui->cbostate->setCurrentIndex(0);
    if (const schema::Column* state = schema::findColumn(QStringLiteral("FBT_Info"), QStringLiteral("State")))
        ui->cbostate->lineEdit()->setMaxLength(state->width());

    QList<Nature> natures;
    const QString reason = failureText([&] { natures = service_.natures(); }, QStringLiteral("LOADNATURES"));
    if (!reason.isEmpty())
        prompter().inform(QStringLiteral("The natures of business could not be read:\n\n%1").arg(reason), Prompter::Icon::Exclamation);
    for (const Nature& n : natures) {
        auto* item = new QListWidgetItem(n.description, ui->lstnature);
        item->setData(Qt::UserRole, n.srNo);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        item->setCheckState(Qt::Unchecked);
    }

    connect(ui->cmdsave, &QPushButton::clicked, this, &ClientDialog::cmdsave_Click);
    connect(ui->cmddelete, &QPushButton::clicked, this, &ClientDialog::cmddelete_Click);
    connect(ui->cmdcancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(ui->txtdoi, &QLineEdit::editingFinished, this, &ClientDialog::txtdoi_LostFocus);

    if (originalCode_.isEmpty()) {
        setWindowTitle(QStringLiteral("Client Master - New Client"));
        ui->cmddelete->setVisible(false);
        fill(ClientRecord());
    } else {
        setWindowTitle(QStringLiteral("Client Master - %1").arg(originalCode_));
        std::optional<ClientRecord> record;
        const QString failed = failureText([&] { record = service_.load(originalCode_); }, QStringLiteral("LOADCLIENT"));
        if (!failed.isEmpty())
            prompter().inform(QStringLiteral("The client could not be read:\n\n%1").arg(failed), Prompter::Icon::Exclamation);
        if (!record) {
            record = ClientRecord();
            record->code = originalCode_;
        }
        fill(*record);
    }
    ui->txtcode->setFocus();
}

ClientDialog::~ClientDialog()
{
    delete ui;
}

void ClientDialog::fill(const ClientRecord& r)
{
    ui->txtcode->setText(r.code);
    ui->txtname->setText(r.name);
    ui->txtpan->setText(r.pan);
    int status = ui->cbostatus->findData(r.status);
    if (status < 0) {
        // A number the list does not name shows as itself and is kept.
        ui->cbostatus->addItem(QString::number(r.status), r.status);
        status = ui->cbostatus->count() - 1;
    }
    ui->cbostatus->setCurrentIndex(status);
    ui->txtdoi->setText(r.doi);
    ui->txtflat->setText(r.flat);
    ui->txtbuilding->setText(r.building);
    ui->txtstreet->setText(r.street);
    ui->txtarea->setText(r.area);
    ui->txtcity->setText(r.city);
    ui->txtpin->setText(r.pin);
    int state = ui->cbostate->findText(r.state, Qt::MatchFixedString);
    if (state < 0) {
        ui->cbostate->addItem(r.state);
        state = ui->cbostate->count() - 1;
    }
    ui->cbostate->setCurrentIndex(state);
    ui->txtstd->setText(r.std);
    ui->txttelno->setText(r.telNo);
    ui->txtemail->setText(r.email);
    for (int i = 0; i < ui->lstnature->count(); ++i) {
        QListWidgetItem* item = ui->lstnature->item(i);
        item->setCheckState(r.natures.contains(item->data(Qt::UserRole).toInt()) ? Qt::Checked : Qt::Unchecked);
    }
}

ClientRecord ClientDialog::collect() const
{
    ClientRecord r;
    r.code = ui->txtcode->text();
    r.name = ui->txtname->text();
    r.pan = ui->txtpan->text();
    r.status = ui->cbostatus->currentData().toInt();
    r.doi = ui->txtdoi->text();
    r.flat = ui->txtflat->text();
    r.building = ui->txtbuilding->text();
    r.street = ui->txtstreet->text();
    r.area = ui->txtarea->text();
    r.city = ui->txtcity->text();
    r.pin = ui->txtpin->text();
    r.state = ui->cbostate->currentText().trimmed().toUpper();
    r.std = ui->txtstd->text();
    r.telNo = ui->txttelno->text();
    r.email = ui->txtemail->text();
    for (int i = 0; i < ui->lstnature->count(); ++i) {
        const QListWidgetItem* item = ui->lstnature->item(i);
        if (item->checkState() == Qt::Checked)
            r.natures << item->data(Qt::UserRole).toInt();
    }
    return r;
}

void ClientDialog::focusField(ClientOutcome::Field field)
{
    QLineEdit* edit = nullptr;
    switch (field) {
    case ClientOutcome::Field::Code: edit = ui->txtcode; break;
    case ClientOutcome::Field::Name: edit = ui->txtname; break;
    case ClientOutcome::Field::Pan: edit = ui->txtpan; break;
    case ClientOutcome::Field::Pin: edit = ui->txtpin; break;
    case ClientOutcome::Field::Doi: edit = ui->txtdoi; break;
    case ClientOutcome::Field::EMail: edit = ui->txtemail; break;
    case ClientOutcome::Field::Natures: ui->lstnature->setFocus(); return;
    case ClientOutcome::Field::None: return;
    }
    edit->setFocus();
    edit->selectAll();
}

void ClientDialog::txtdoi_LostFocus()
{
    // Shown in its stored form at once; a date that is no date is left for Save to refuse.
    const QString typed = ui->txtdoi->text().trimmed();
    if (typed.isEmpty())
        return;
    QString year;
    const QString date = cls_.ConvertDate(typed, QStringLiteral("dd/MM/yyyy"), year);
    if (!date.isEmpty() && date != ui->txtdoi->text())
        ui->txtdoi->setText(date);
}

void ClientDialog::cmdsave_Click()
{
    const ClientRecord record = collect();
    ClientOutcome outcome;
    if (originalCode_.isEmpty()) {
        outcome = service_.add(record);
    } else {
        const QString newCode = record.code.trimmed().toUpper();
        if (!newCode.isEmpty() && newCode != originalCode_.toUpper()
            && prompter().ask(QStringLiteral("Change the code of %1 from %2 to %3 in every table?")
                                  .arg(record.name.trimmed(), originalCode_, newCode),
                              Prompter::Buttons::YesNo, Prompter::Icon::Question, Prompter::Answer::No)
                != Prompter::Answer::Yes) {
            focusField(ClientOutcome::Field::Code);
            return;
        }
        outcome = service_.update(originalCode_, record);
    }
    if (!outcome.ok) {
        prompter().inform(outcome.message, Prompter::Icon::Exclamation);
        focusField(outcome.field);
        return;
    }
    savedCode_ = record.code.trimmed().toUpper();
    accept();
}

bool ClientDialog::confirmDelete(const QString& code, const QString& name)
{
    return prompter().ask(QStringLiteral("Delete the client %1 %2 and every record of the client in every table?\n\n"
                                         "This cannot be undone.")
                              .arg(code, name),
                          Prompter::Buttons::YesNo, Prompter::Icon::Exclamation, Prompter::Answer::No)
        == Prompter::Answer::Yes;
}

void ClientDialog::cmddelete_Click()
{
    if (originalCode_.isEmpty() || !confirmDelete(originalCode_, ui->txtname->text().trimmed()))
        return;
    const ClientOutcome outcome = service_.remove(originalCode_);
    if (!outcome.ok) {
        prompter().inform(outcome.message, Prompter::Icon::Exclamation);
        return;
    }
    deleted_ = true;
    accept();
}

void ClientDialog::keyPressEvent(QKeyEvent* event)
{
    // Enter moves on to the next field, as in every screen of the component.
    if (!screenkeys::enterPressesOrMovesOn(this, event))
        QDialog::keyPressEvent(event);
}

} // namespace corvane::host
