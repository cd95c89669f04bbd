#include "screens/addinfo/aolookup.h"

#include "core/modbase.h"
#include "core/objectregistry.h"
#include "core/resumenext.h"
#include "db/connection.h"
#include "db/recordset.h"
#include "db/sqltext.h"

namespace corvane {

namespace {

const QString kBankInfoClass = QStringLiteral("ORVMiscInf.ClsMain");

// InitMe and GetPANTANAoCode of the bank information component; the eight
// elements come back in result.
// wired once the bank screens exist
void askBankInfo(const QString& city, std::array<QString, 8>& result)
{
    (void)city;
    (void)result;
    ObjectRegistry::instance().createComponent(kBankInfoClass);
}

} // namespace

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
    std::array<QString, 8> result;
    if (!guard([&] { askBankInfo(city, result); }))
        return std::nullopt;
    if (result[0].isEmpty())
        return std::nullopt;
    return std::array<QString, 4>{result[1], result[2], result[3], result[4]};
}

} // namespace corvane
