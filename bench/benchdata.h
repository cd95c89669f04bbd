#pragma once

// The benchmarks' data: a practice's clients with Indian names, addresses and
// PANs, three assessment years of return details and bank accounts, bills and
// receipts, and bank lists. Made from a fixed seed, so every run measures the
// same rows; client i is the same however many clients are made.

#include <QString>
#include <functional>

namespace corvane {
class Connection;
}

namespace corvane::bench {

// The years (TYear) every client may have details for.
inline constexpr int kYears[] = {2007, 2008, 2009};

struct Client {
    QString code, name, pan;
    int status = 0;
    QString flat, building, street, area, city, pin, state, std, telephone, incorporated, nature, email;
};

// Client `index` (0-based): the same for the same index on every run.
Client client(int index);
// The code of client `index`: a letter and five digits.
QString clientCode(int index);

// Creates the host tables when missing and adds clients [first, first + count)
// with their return details (most clients, not all, in each year), the
// miscellaneous details and one to three bank accounts a year (those two
// only with `details`).
void insertClients(Connection& connection, int count, int first = 0, bool details = true);

// Makes the database about `megabytes` of data and index files: clients as
// above, then bills and receipts up to the size. A database made before with
// the same size is kept as it is. Returns the clients it holds.
int makeDatabase(Connection& connection, int megabytes, const std::function<void(const QString&)>& progress = {});

// The database the backup, restoration and check benchmarks share, and its
// size: 1 GB, 100 MB in a quick run, else $CORVANE_BENCH_MB.
inline const QString kSharedDatabase = QStringLiteral("fbtbench");
int sharedDatabaseMegabytes();

// The data and index bytes of the connection's database.
qint64 databaseBytes(Connection& connection);

// A bank list as the lookup import reads it: a header line, then `rows` lines
// of BANK,IFSC,MICR,BRANCH,ADDRESS,CITY,DISTRICT,STATE with Windows line ends.
void writeBankList(const QString& path, int rows);

} // namespace corvane::bench
