#pragma once

#include "component/clsmain.h"
#include "core/modbase.h"
#include "core/prompter.h"
#include "db/schema.h"
#include "host/connectionconfig.h"
#include "host/hostsession.h"
#include "support/testdatabase.h"

#include <QDate>
#include <QStringList>
#include <memory>

namespace corvane::test {

// Today, for the year chooser: the assessment year in progress is 2010-11.
inline const QDate kToday(2009, 11, 21);

// A test database that the host finds through ORVCONFIG.INI, the component
// object, a scripted prompter and a session that has not started yet
// (session->start() does what the program does before its window opens).
struct HostFixture {
    explicit HostFixture(const QString& name, bool withTables = true, bool demo = false)
        : db(name, withTables)
        , answers(std::make_shared<ScriptedPrompter>())
        , session(std::make_unique<host::HostSession>(cls, db.appPath()))
    {
        modbase().prompter = answers;
        modbase().clock = [] { return QDateTime(kToday, QTime(10, 0)); };
        host::connectionconfig::save(db.settings());
        if (withTables)
            schema::fillNatures(*db);
        if (demo)
            schema::loadDemoData(*db);
    }

    // The rows of a table under a code, compared in capitals.
    int rowsOf(const QString& table, const QString& code) const
    {
        return db.count(table, QStringLiteral("ucase(code_no)='%1'").arg(code.toUpper()));
    }

    // Every table with a code_no column.
    QStringList clientTables() const
    {
        QStringList tables;
        for (const auto& row : db->query(QStringLiteral("Select TABLE_NAME from information_schema.COLUMNS where "
                                                        "TABLE_SCHEMA=DATABASE() and COLUMN_NAME='code_no'")).rows)
            tables << row.value(0).toString();
        tables.sort(Qt::CaseInsensitive);
        return tables;
    }

    TestDatabase db;
    std::shared_ptr<ScriptedPrompter> answers;
    ClsMain cls;
    std::unique_ptr<host::HostSession> session;
};

} // namespace corvane::test
