#include "screens/bank/bankinfocall.h"

#include "components/bankinfo/bankinfo.h"
#include "core/modbase.h"
#include "core/resumenext.h"

namespace corvane {

std::shared_ptr<BankInfo> createBankInfo(ResumeNext& guard)
{
    std::shared_ptr<BankInfo> info;
    guard([&] { info = CreateObject<BankInfo>(kBankInfoClass); });
    if (!info)
        return info;
    Modbase& m = modbase();
    QString appPath = m.AppPath;
    std::shared_ptr<Connection> connection = m.CnnObj;
    QString logFile = QStringLiteral("FBTLogger.log");
    guard([&] { info->InitMe(appPath, connection, logFile, m.vScreenRatX, m.vScreenRatY, m.vScreenRatFS); });
    m.CnnObj = connection;
    return info;
}

} // namespace corvane
