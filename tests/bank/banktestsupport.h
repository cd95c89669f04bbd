#pragma once

#include "component/components.h"
#include "components/bankinfo/bankinfo.h"
#include "core/modbase.h"
#include "core/objectregistry.h"
#include "core/prompter.h"
#include "db/connection.h"
#include "db/schema.h"
#include "db/sqltext.h"
#include "support/formdriver.h"
#include "support/prompts.h"
#include "support/testdatabase.h"
#include "support/testlog.h"
#include "support/testmain.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QStringList>
#include <QTimer>
#include <QWidget>
#include <memory>

namespace corvane::test {

// Stands in for ORVMiscInf.ClsMain: answers every Get… call with a scripted
// array and records what it was given (the additional information screens use it too).
class FakeBankInfo : public BankInfo {
public:
    struct Script {
        QStringList answer;
        QStringList calls; // "InitMe(app path, log file, connection, ratio across)", "GetBSRCode(filter)", …
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

    void InitMe(QString& AppPath, std::shared_ptr<Connection>& CnnObj, QString& LogFile, float& RatX, float&, float&) override
    {
        script().calls << QStringLiteral("InitMe(%1, %2, %3, %4)").arg(AppPath, LogFile, CnnObj ? "connection" : "none").arg(RatX);
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
    void GetPANTANAoCode(const QString& City, bool FilterByCity, QStringList& Result) override
    {
        script().calls << QStringLiteral("GetPANTANAoCode(%1, %2, %3)").arg(City).arg(int(FilterByCity)).arg(Result.size());
        for (qsizetype i = 0; i < Result.size(); ++i)
            Result[i] = script().answer.value(i);
    }
};

inline const QString kClient = QStringLiteral("A001");
constexpr int kYear = 2008;

// Every test function starts on empty tables, client A001 of 2008, the default
// components and a fresh scripted prompter, which it gets back.
inline std::shared_ptr<ScriptedPrompter> startAfresh(TestDatabase& db, const QStringList& tables)
{
    schema::createMissingTables(*db);
    db.startAfresh(tables);
    registerDefaultComponents();
    modbase().Code = kClient;
    modbase().TYear = kYear;
    return installPrompter();
}

// The first value of each row a query gives.
inline QStringList values(Connection& c, const QString& sql)
{
    QStringList out;
    for (const auto& r : c.query(sql).rows)
        out << r.value(0).toString();
    return out;
}

inline void insertBank(Connection& c, int code, const QString& name, const QString& branch, const QString& branchCode)
{
    c.execute(QStringLiteral("insert into Bank_Master values (%1, %2, %3, %4)")
                  .arg(code)
                  .arg(sqlQuote(name), sqlQuote(branch), sqlQuote(branchCode)));
}

// Banks 1…count: "BANK n", "BRANCH n", "BCn".
inline void seedBanks(Connection& c, int count)
{
    for (int n = 1; n <= count; ++n)
        insertBank(c, n, QStringLiteral("BANK %1").arg(n), QStringLiteral("BRANCH %1").arg(n), QStringLiteral("BC%1").arg(n));
}

// One FBT_BankDet row: bank, address, MICR, type, account number, ECS, default.
inline void insertAccount(Connection& c, const QString& code, int year, int srNo, const QStringList& cells)
{
    QStringList values{sqlQuote(code), QString::number(year), QString::number(srNo)};
    for (const QString& cell : cells)
        values << sqlQuote(cell);
    c.execute(QStringLiteral("insert into FBT_BankDet values (%1)").arg(values.join(QLatin1Char(','))));
}

// Accounts 1…count of the client for a year ("BANK n", "ACCn", …), stored last
// first so that only the SrNo order reads them in order.
inline void seedAccounts(Connection& c, int year, int count, int defaultRow)
{
    for (int n = count; n >= 1; --n)
        insertAccount(c, kClient, year, n,
                      {QStringLiteral("BANK %1").arg(n), QStringLiteral("ADDRESS %1").arg(n), QStringLiteral("40024001%1").arg(n),
                       QStringLiteral("SAVINGS"), QStringLiteral("ACC%1").arg(n), QStringLiteral("N"), n == defaultRow ? "Y" : "N"});
}

} // namespace corvane::test
