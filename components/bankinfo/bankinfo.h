#pragma once

#include "core/objectregistry.h"

#include <QString>
#include <QStringList>
#include <memory>

namespace corvane {

class Connection;

inline const QString kBankInfoClass = QStringLiteral("ORVMiscInf.ClsMain");

// The bank information component: bank branch, MICR and Assessing Officer
// lookups. Every Get… call lets the user choose in the component's own window
// and fills the result array; a cancelled choice leaves every element empty.
class BankInfo : public Component {
public:
    // The application folder, the connection (handed back through the same
    // argument), the log file name and the screen ratios of the caller.
    virtual void InitMe(QString& AppPath, std::shared_ptr<Connection>& CnnObj, QString& LogFile,
                        float& RatX, float& RatY, float& RatFS) = 0;

    // Result 0 bank name, 1 branch, 2 branch code. Filter starts the list filtered.
    virtual void GetBSRCode(const QString& Filter, QStringList& Result) = 0;

    // Result 0 bank name, 1 branch address, 2 to 4 the three three-digit groups of the MICR code.
    virtual void GetMICR(const QString& BankName, QStringList& Result) = 0;

    // Result 0 the officer's city (non-empty on a choice), 1 area code, 2 AO type,
    // 3 range code, 4 AO number, 5 jurisdiction, 6 and 7 empty.
    // With FilterByCity the list starts filtered by City.
    virtual void GetPANTANAoCode(const QString& City, bool FilterByCity, QStringList& Result) = 0;
};

} // namespace corvane
