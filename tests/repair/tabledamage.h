#pragma once

#include "db/connection.h"
#include "db/sqltext.h"
#include "support/files.h"
#include "support/testdatabase.h"

#include <QFile>
#include <QString>
#include <QtTest>

namespace corvane::test {

// Tables of the test database and real damage to their files in the server's
// data folder. Every table is flushed before its files are touched and after,
// so that the server neither writes over the damage nor keeps an old file open.
class TableFiles {
public:
    enum class Damage { None, IndexDeleted, IndexHeader, DataTruncated, MarkedCrashed, DataDeleted };

    explicit TableFiles(Connection& connection) : connection_(connection)
    {
        QString datadir;
        for (const auto& row : connection.query(QStringLiteral("Show variables like 'datadir'")).rows)
            datadir = row.value(1).toString();
        folder_ = datadir + (datadir.endsWith(QLatin1Char('/')) ? QString() : QStringLiteral("/")) + connection.databaseName() + QLatin1Char('/');
    }

    // A MyISAM table of fixed-length rows 1..rows with a second index.
    void create(const QString& table, int rows = kRows)
    {
        connection_.execute(QStringLiteral("DROP TABLE IF EXISTS ") + sqlName(table));
        connection_.execute(QStringLiteral("CREATE TABLE ") + sqlName(table)
                            + QStringLiteral(" (id INT NOT NULL PRIMARY KEY, name CHAR(30) NOT NULL, KEY (name))"
                                             " ENGINE=MyISAM ROW_FORMAT=FIXED"));
        if (rows > 0)
            connection_.execute(QStringLiteral("INSERT INTO ") + sqlName(table)
                                + QStringLiteral(" SELECT seq, CONCAT('name ', seq) FROM seq_1_to_%1").arg(rows));
    }

    // Drops every table of the database, damaged or not.
    void dropAll()
    {
        for (const auto& row : connection_.query(QStringLiteral("SHOW TABLES")).rows)
            connection_.execute(QStringLiteral("DROP TABLE IF EXISTS ") + sqlName(row.value(0).toString()));
    }

    int count(const QString& table)
    {
        return connection_.query(QStringLiteral("SELECT COUNT(*) FROM ") + sqlName(table)).rows.value(0).value(0).toInt();
    }

    // The rows kept when the data file is cut in the middle of the row after them.
    static constexpr int kRows = 1000;
    static constexpr int kRowsBeforeCut = 400;

    void damage(const QString& table, Damage damage)
    {
        connection_.execute(QStringLiteral("FLUSH TABLES"));
        const QString index = folder_ + table + QStringLiteral(".MYI");
        const QString data = folder_ + table + QStringLiteral(".MYD");
        QVERIFY2(QFile::exists(index) && QFile::exists(data), qPrintable(folder_ + table));
        switch (damage) {
        case Damage::None:
            break;
        case Damage::IndexDeleted:
            QVERIFY(QFile::remove(index));
            break;
        case Damage::IndexHeader:
            // The state part of the header: open count, flags, row and key counts.
            overwrite(index, 24, QByteArray(16, '\xff'));
            break;
        case Damage::DataTruncated: {
            const qint64 rowLength = QFile(data).size() / count(table);
            QVERIFY(QFile::resize(data, kRowsBeforeCut * rowLength + rowLength / 2));
            break;
        }
        case Damage::MarkedCrashed:
            // The state flags byte; 2 is "crashed".
            overwrite(index, 26, QByteArray(1, char(readFile(index).at(26) | 2)));
            break;
        case Damage::DataDeleted:
            QVERIFY(QFile::remove(data));
            break;
        }
        connection_.execute(QStringLiteral("FLUSH TABLES"));
    }

    QString folder() const { return folder_; }

private:
    static void overwrite(const QString& path, qint64 offset, const QByteArray& bytes)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.seek(offset));
        QCOMPARE(file.write(bytes), qint64(bytes.size()));
    }

    Connection& connection_;
    QString folder_;
};

using Damage = TableFiles::Damage;

// A database without the host's tables and its table files, for a whole test class (a base of the class).
struct DamageBench {
    std::unique_ptr<TestDatabase> db;
    std::unique_ptr<TableFiles> files;
    void openBench(const QString& name)
    {
        db = std::make_unique<TestDatabase>(name, false);
        files = std::make_unique<TableFiles>(**db);
    }
    void closeBench()
    {
        files.reset();
        db.reset();
    }
};

} // namespace corvane::test

Q_DECLARE_METATYPE(corvane::test::TableFiles::Damage)
