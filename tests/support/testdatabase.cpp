#include "support/testdatabase.h"

#include "core/errorlog.h"
#include "core/modbase.h"
#include "db/schema.h"
#include "db/sqltext.h"

#include <QFile>
#include <QVariant>
#include <QtTest>
#include <unistd.h>

namespace corvane::test {

ConnectionSettings serverSettings()
{
    ConnectionSettings s;
    s.privateServer = false;
    s.socket = qEnvironmentVariable("CORVANE_TEST_SOCKET");
    s.user = QStringLiteral("root");
    s.database.clear();
    if (s.socket.isEmpty())
        qFatal("CORVANE_TEST_SOCKET is not set: run the tests through ctest");
    return s;
}

TestDatabase::TestDatabase(const QString& name, bool withTables)
    : name_(QStringLiteral("t_%1_%2").arg(name).arg(::getpid()))
{
    connection_ = std::make_shared<Connection>();
    ConnectionSettings s = serverSettings();
    s.database = name_;
    connection_->open(s, true);
    if (withTables)
        schema::createMissingTables(*connection_);
    qputenv("CORVANE_SYSTEM_DIR", systemDir_.path().toLocal8Bit());
    resetModbase();
    modbase().AppPath = appDir_.path();
    modbase().CnnObj = connection_;
}

TestDatabase::~TestDatabase()
{
    try {
        connection_->execute(QStringLiteral("DROP DATABASE IF EXISTS ") + sqlName(name_));
    } catch (...) {
    }
    modbase().CnnObj.reset();
}

ConnectionSettings TestDatabase::settings() const
{
    ConnectionSettings s = serverSettings();
    s.database = name_;
    return s;
}

void TestDatabase::startAfresh(const QStringList& tables) const
{
    for (const QString& table : tables)
        connection_->execute(QStringLiteral("delete from ") + sqlName(table));
    modbase().CnnObj = connection_;
    QFile::remove(logFilePath());
}

QString TestDatabase::scalar(const QString& sql) const
{
    const auto result = connection_->query(sql);
    if (result.rows.isEmpty() || result.rows.first().isEmpty())
        return QString();
    const QVariant v = result.rows.first().first();
    return v.isNull() ? QString() : v.toString();
}

int TestDatabase::count(const QString& table, const QString& where) const
{
    return scalar(QStringLiteral("SELECT COUNT(*) FROM ") + sqlName(table) + (where.isEmpty() ? QString() : QStringLiteral(" WHERE ") + where)).toInt();
}

} // namespace corvane::test
