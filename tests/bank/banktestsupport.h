#pragma once

#include "components/bankinfo/bankinfo.h"
#include "core/modbase.h"
#include "core/objectregistry.h"
#include "core/prompter.h"
#include "db/connection.h"
#include "db/sqltext.h"
#include "support/formdriver.h"
#include "support/prompts.h"

#include <QApplication>
#include <QStringList>
#include <QWidget>
#include <memory>

namespace corvane::test {

// Stands in for ORVMiscInf.ClsMain: answers every Get… call with a scripted
// array and records what it was given.
class FakeBankInfo : public BankInfo {
public:
    struct Script {
        QStringList answer;
        QStringList calls;      // "GetBSRCode(filter)", "GetMICR(bank)"
        QString appPath;
        QString logFile;
        float ratios[3] = {0, 0, 0};
        bool connectionGiven = false;
    };
    static Script& script()
    {
        static Script s;
        return s;
    }
    static void install(const QStringList& answer)
    {
        script() = Script{};
        script().answer = answer;
        ObjectRegistry::instance().registerClass(kBankInfoClass, [] { return std::make_shared<FakeBankInfo>(); });
    }

    void InitMe(QString& AppPath, std::shared_ptr<Connection>& CnnObj, QString& LogFile, float& RatX, float& RatY,
                float& RatFS) override
    {
        script().appPath = AppPath;
        script().logFile = LogFile;
        script().connectionGiven = CnnObj != nullptr;
        script().ratios[0] = RatX;
        script().ratios[1] = RatY;
        script().ratios[2] = RatFS;
    }
    void GetBSRCode(const QString& Filter, QStringList& Result) override
    {
        script().calls << QStringLiteral("GetBSRCode(%1)").arg(Filter);
        Result = script().answer;
    }
    void GetMICR(const QString& BankName, QStringList& Result) override
    {
        script().calls << QStringLiteral("GetMICR(%1)").arg(BankName);
        Result = script().answer;
    }
    void GetPANTANAoCode(const QString& City, bool, QStringList& Result) override
    {
        script().calls << QStringLiteral("GetPANTANAoCode(%1)").arg(City);
        Result = script().answer;
    }
};

inline void insertBank(Connection& c, int code, const QString& name, const QString& branch, const QString& branchCode)
{
    c.execute(QStringLiteral("insert into Bank_Master values (%1, %2, %3, %4)")
                  .arg(code)
                  .arg(sqlQuote(name), sqlQuote(branch), sqlQuote(branchCode)));
}

// One FBT_BankDet row: bank, address, MICR, type, account number, ECS, default.
inline void insertAccount(Connection& c, const QString& code, int year, int srNo, const QStringList& cells)
{
    QStringList values{sqlQuote(code), QString::number(year), QString::number(srNo)};
    for (const QString& cell : cells)
        values << sqlQuote(cell);
    c.execute(QStringLiteral("insert into FBT_BankDet values (%1)").arg(values.join(QLatin1Char(','))));
}

} // namespace corvane::test
