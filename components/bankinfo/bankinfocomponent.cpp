#include "components/bankinfo/bankinfocomponent.h"

#include "components/bankinfo/lookupdialog.h"
#include "core/resumenext.h"
#include "db/connection.h"

#include <QApplication>

namespace corvane {

namespace {

const QString kModule = QStringLiteral("ORVMISCINF");

void resetResult(QStringList& result, int size)
{
    result = QStringList();
    for (int i = 0; i < size; ++i)
        result << QString();
}

QString emptyHint(bankinfo::Kind kind)
{
    return QStringLiteral("The %1 is empty: load it with \"corvane lookup import %2 FILE\".")
        .arg(bankinfo::kindDescription(kind), bankinfo::kindName(kind));
}

} // namespace

void BankInfoComponent::InitMe(QString& AppPath, std::shared_ptr<Connection>& CnnObj, QString& LogFile,
                               float& RatX, float& RatY, float& RatFS)
{
    Q_UNUSED(RatX);
    Q_UNUSED(RatY);
    appPath_ = AppPath;
    connection_ = CnnObj;
    logFile_ = LogFile;
    ratFS_ = RatFS > 0.0f ? RatFS : 1.0f;
}

QStringList BankInfoComponent::choose(bankinfo::Kind kind, const QString& title, const QString& filter,
                                      const QString& procedure)
{
    QStringList chosen;
    ResumeNext guard(kModule, procedure);
    guard([&] {
        if (!connection_)
            throw Failure(err::ObjectNotSet, kBankInfoClass,
                          QStringLiteral("Object variable or With block variable not set"));
        bankinfo::BankInfoStore store(*connection_);
        store.ensureTables();
        auto fetch = [&](const QString& text) {
            bankinfo::Lookup lookup;
            lookup.headings = bankinfo::tableDef(kind).headings;
            ResumeNext fetchGuard(kModule, procedure);
            fetchGuard([&] { lookup = store.find(kind, text); });
            return lookup;
        };
        QWidget* owner = QApplication::activeWindow();
        LookupDialog dialog(title, emptyHint(kind), fetch, filter, owner);
        // The desktop's font suits the desktop's screen already: the ratio may
        // make the text smaller on a small screen, never larger.
        if (ratFS_ < 1.0f) {
            QFont font = dialog.font();
            font.setPointSizeF(font.pointSizeF() * ratFS_);
            dialog.setFont(font);
        }
        if (dialog.exec() == QDialog::Accepted)
            chosen = dialog.chosen();
        // Not every window manager gives the focus back to the caller's window.
        if (owner)
            owner->activateWindow();
    });
    return chosen;
}

void BankInfoComponent::GetBSRCode(const QString& Filter, QStringList& Result)
{
    resetResult(Result, 3);
    // Shown: bank, branch, branch code, city, state, IFSC.
    const QStringList row = choose(bankinfo::Kind::Banks, QStringLiteral("Bank Branches"), Filter.trimmed(),
                                   QStringLiteral("GETBSRCODE"));
    if (row.size() < 3)
        return;
    Result[0] = row.at(0);
    Result[1] = row.at(1);
    Result[2] = row.at(2);
}

void BankInfoComponent::GetMICR(const QString& BankName, QStringList& Result)
{
    resetResult(Result, 5);
    // Shown: bank, branch, address, city, MICR.
    const QStringList row = choose(bankinfo::Kind::Micr, QStringLiteral("MICR Codes"), BankName.trimmed(),
                                   QStringLiteral("GETMICR"));
    if (row.size() < 5 || row.at(4).size() != 9)
        return;
    QString address = row.at(2);
    if (address.isEmpty()) {
        QStringList parts{row.at(1), row.at(3)};
        parts.removeAll(QString());
        address = parts.join(QStringLiteral(", "));
    }
    Result[0] = row.at(0);
    Result[1] = address;
    Result[2] = row.at(4).mid(0, 3);
    Result[3] = row.at(4).mid(3, 3);
    Result[4] = row.at(4).mid(6, 3);
}

void BankInfoComponent::GetPANTANAoCode(const QString& City, bool FilterByCity, QStringList& Result)
{
    resetResult(Result, 8);
    // Shown: city, area code, AO type, range code, AO number, jurisdiction.
    const QStringList row = choose(bankinfo::Kind::Ao, QStringLiteral("Assessing Officer Codes"),
                                   FilterByCity ? City.trimmed() : QString(), QStringLiteral("GETPANTANAOCODE"));
    if (row.size() < 6)
        return;
    // Element 0 tells the caller that a choice was made: never empty then.
    Result[0] = row.at(0).isEmpty() ? row.at(1) : row.at(0);
    for (int i = 1; i <= 5; ++i)
        Result[i] = row.at(i);
}

} // namespace corvane
