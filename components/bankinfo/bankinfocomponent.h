#pragma once

#include "components/bankinfo/bankinfo.h"
#include "components/bankinfo/bankinfostore.h"

namespace corvane {

// Our ORVMiscInf.ClsMain: the lists live in the component's own tables on the
// caller's connection; each Get… call shows a LookupDialog over one of them.
class BankInfoComponent : public BankInfo {
public:
    void InitMe(QString& AppPath, std::shared_ptr<Connection>& CnnObj, QString& LogFile, float& RatX,
                float& RatY, float& RatFS) override;
    void GetBSRCode(const QString& Filter, QStringList& Result) override;
    void GetMICR(const QString& BankName, QStringList& Result) override;
    void GetPANTANAoCode(const QString& City, bool FilterByCity, QStringList& Result) override;

private:
    // The chosen row's shown cells, empty when cancelled or when the list cannot be read.
    QStringList choose(bankinfo::Kind kind, const QString& title, const QString& filter, const QString& procedure);

    std::shared_ptr<Connection> connection_;
    QString appPath_;
    QString logFile_;
    float ratFS_ = 1.0f;
};

} // namespace corvane
