#include "screens/addinfo/aolookup.h"

#include "components/bankinfo/bankinfo.h"
#include "core/modbase.h"
#include "core/resumenext.h"
#include "db/connection.h"
#include "db/recordset.h"
#include "db/sqltext.h"
#include "screens/bank/bankinfocall.h"

namespace corvane {

QString ClientCity()
{
    Connection* c = modbase().CnnObj.get();
    if (!c)
        throw Failure(err::ObjectNotSet, kSource, QStringLiteral("Object variable or With block variable not set"));
    Recordset rs;
    rs.open(QStringLiteral("select * from FBT_info where code_no = ") + sqlQuote(modbase().Code), *c);
    return rs.eof() ? QString() : rs.text(QStringLiteral("City")).trimmed();
}

std::optional<std::array<QString, 4>> LookupAoCode(const QString& formName)
{
    ResumeNext guard(formName, QStringLiteral("CMDAO_CLICK"));
    QString city;
    guard([&] { city = ClientCity(); });
    const std::shared_ptr<BankInfo> info = createBankInfo(guard);
    if (!info)
        return std::nullopt;
    QStringList result(8);
    if (!guard([&] { info->GetPANTANAoCode(city, true, result); }))
        return std::nullopt;
    // An empty first element means no officer was chosen.
    if (result.value(0).isEmpty())
        return std::nullopt;
    return std::array<QString, 4>{result.value(1), result.value(2), result.value(3), result.value(4)};
}

} // namespace corvane
