#pragma once

#include "components/bankinfo/bankinfo.h"
#include "component/components.h"
#include "core/objectregistry.h"

#include <QStringList>

// A bank information component that answers the AO lookup from a script and
// records what it was asked.
struct FakeBankInfo : corvane::BankInfo {
    struct Script {
        QStringList answer;
        QString appPath, logFile, city;
        bool filterByCity = false;
        qsizetype resultSize = -1;
    };
    static Script& script()
    {
        static Script s;
        return s;
    }
    // Installs the fake under the component's class identifier with a fresh script.
    static Script& install(const QStringList& answer)
    {
        script() = Script{answer, {}, {}, {}, false, -1};
        corvane::ObjectRegistry::instance().registerClass(corvane::kBankInfoClass, [] { return std::make_shared<FakeBankInfo>(); });
        return script();
    }
    static void uninstall() { corvane::registerDefaultComponents(); }

    void InitMe(QString& AppPath, std::shared_ptr<corvane::Connection>&, QString& LogFile, float&, float&, float&) override
    {
        script().appPath = AppPath;
        script().logFile = LogFile;
    }
    void GetBSRCode(const QString&, QStringList&) override {}
    void GetMICR(const QString&, QStringList&) override {}
    void GetPANTANAoCode(const QString& City, bool FilterByCity, QStringList& Result) override
    {
        script().city = City;
        script().filterByCity = FilterByCity;
        script().resultSize = Result.size();
        for (qsizetype i = 0; i < Result.size(); ++i)
            Result[i] = script().answer.value(i);
    }
};
