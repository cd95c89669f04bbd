// Times `corvane sql` printing a large result against `mariadb -B` with the
// same query, both writing to /dev/null, and gives the peak memory of each
// program; the smaller result shows whether ours stays flat in the size.
//   bench_sql [ROWS]          a private server in the benchmarks' work folder
//   CORVANE_BENCH_SOCKET=PATH bench_sql [ROWS]   a running server (user root)
#include "benchsupport.h"
#include "core/failure.h"
#include "db/connection.h"
#include "db/sqltext.h"

#include <QCoreApplication>
#include <QFile>
#include <QTextStream>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

using namespace corvane;

namespace {

const QString kBench = QStringLiteral("bench");
constexpr int kColumns = 36;

// 36 columns: texts, whole numbers, amounts and dates, as the client tables hold them.
void generate(Connection& connection, int rows)
{
    QStringList columns, values;
    for (int i = 0; i < kColumns; ++i) {
        const QString name = QStringLiteral("c%1").arg(i, 2, 10, QLatin1Char('0'));
        switch (i % 6) {
        case 0:
        case 1:
        case 2:
            columns << name + QStringLiteral(" VARCHAR(40)");
            values << QStringLiteral("CONCAT('TEXT %1 ', seq)").arg(i);
            break;
        case 3:
            columns << name + QStringLiteral(" INT");
            values << QStringLiteral("seq * %1").arg(i);
            break;
        case 4:
            columns << name + QStringLiteral(" DECIMAL(14,2)");
            values << QStringLiteral("seq / 4");
            break;
        case 5:
            columns << name + QStringLiteral(" DATE");
            values << QStringLiteral("'2020-04-01' + INTERVAL (seq MOD 3000) DAY");
            break;
        }
    }
    connection.execute(QStringLiteral("DROP TABLE IF EXISTS wide"));
    connection.execute(QStringLiteral("CREATE TABLE wide (%1) ENGINE=MyISAM").arg(columns.join(QStringLiteral(", "))));
    connection.execute(QStringLiteral("INSERT INTO wide SELECT %1 FROM seq_1_to_%2").arg(values.join(QStringLiteral(", "))).arg(rows));
}

struct Run {
    double seconds = 0;
    double peakMb = 0;
};

// Runs a program with its output to /dev/null and waits for it; its own peak memory.
Run runProgram(const QStringList& command)
{
    std::vector<QByteArray> bytes;
    for (const QString& word : command)
        bytes.push_back(QFile::encodeName(word));
    std::vector<char*> argv;
    for (QByteArray& b : bytes)
        argv.push_back(b.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    Run run;
    pid_t pid = 0;
    rusage usage{};
    int status = 0;
    run.seconds = bench::seconds([&] {
        if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) != 0)
            throw Failure(1, kBench, QStringLiteral("cannot run ") + command.first());
        wait4(pid, &status, 0, &usage);
    });
    posix_spawn_file_actions_destroy(&actions);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw Failure(1, kBench, command.join(QLatin1Char(' ')) + QStringLiteral(" failed"));
    run.peakMb = double(usage.ru_maxrss) / 1024.0;
    return run;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    const int rows = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : (bench::quick() ? 60000 : 300000);
    const int repetitions = bench::repetitions(); // three rounds even when quick: one round is mostly noise

    bench::BenchServer benchServer(QStringLiteral("bench_sql"));
    const ConnectionSettings& settings = benchServer.settings();

    int status = 0;
    try {
        const std::shared_ptr<Connection> opened = benchServer.connect();
        Connection& connection = *opened;
        generate(connection, rows);
        const QString mariadb = QStringLiteral("/usr/bin/mariadb");
        const QString corvane = QCoreApplication::applicationDirPath() + QStringLiteral("/../app/corvane");
        auto ourCommand = [&](const QString& query) {
            return QStringList{corvane, QStringLiteral("--socket"), settings.socket, QStringLiteral("--user"), QStringLiteral("root"),
                               QStringLiteral("--database"), settings.database, QStringLiteral("sql"), query};
        };
        auto theirCommand = [&](const QString& query) {
            return QStringList{mariadb, QStringLiteral("-B"), QStringLiteral("--socket=") + settings.socket,
                               QStringLiteral("--user=root"), settings.database, QStringLiteral("-e"), query};
        };
        const QString all = QStringLiteral("SELECT * FROM wide");
        const QString tenth = QStringLiteral("SELECT * FROM wide LIMIT %1").arg(rows / 10);
        // Once each beforehand, so that both find the table in the server's caches.
        runProgram(ourCommand(all));
        runProgram(theirCommand(all));

        Run ours, theirs;
        const auto [oursSeconds, theirSeconds] = bench::alternate(
            repetitions, [&] { ours = runProgram(ourCommand(all)); }, [&] { theirs = runProgram(theirCommand(all)); });
        const Run oursSmall = runProgram(ourCommand(tenth));
        const Run theirsSmall = runProgram(theirCommand(tenth));
        out << QStringLiteral("peak memory, %1 rows: corvane sql %2 MB, mariadb -B %3 MB; %4 rows: %5 MB, %6 MB")
                   .arg(rows)
                   .arg(ours.peakMb, 0, 'f', 1)
                   .arg(theirs.peakMb, 0, 'f', 1)
                   .arg(rows / 10)
                   .arg(oursSmall.peakMb, 0, 'f', 1)
                   .arg(theirsSmall.peakMb, 0, 'f', 1)
            << Qt::endl;
        bench::report(QStringLiteral("sql"),
                      QStringLiteral("sql %1 rows x %2 cols (mariadb -B %3 MB)").arg(rows).arg(kColumns).arg(theirs.peakMb, 0, 'f', 0),
                      oursSeconds, theirSeconds, ours.peakMb, QStringLiteral("ratio <= 1.2, flat memory"));
        connection.execute(QStringLiteral("DROP DATABASE ") + sqlName(settings.database));
    } catch (const std::exception& e) {
        out << "failed: " << e.what() << Qt::endl;
        status = 1;
    }
    return status;
}
