// Times FBT's main window over many clients: opening it, and each keystroke in
// the search box until the list is drawn again; prints the memory it holds.
//   bench_client_list [CLIENTS]     (default 100000; offscreen unless a display is chosen)
#include "component/clsmain.h"
#include "core/modbase.h"
#include "core/prompter.h"
#include "db/connection.h"
#include "db/sqltext.h"
#include "host/clientlistmodel.h"
#include "host/clientservice.h"
#include "host/hostsession.h"
#include "host/mainwindow.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QLineEdit>
#include <QTableView>
#include <QTemporaryDir>
#include <QTextStream>

using namespace corvane;
using namespace corvane::host;

namespace {

// "VmRSS" or "VmHWM" of this process, in MB.
double memoryMb(const char* key)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(key))
            return line.mid(int(qstrlen(key)) + 1).trimmed().split(' ').value(0).toDouble() / 1024.0;
    return 0;
}

void addClients(Connection& connection, int count)
{
    const char* cities[] = {"MUMBAI", "PUNE", "CHENNAI", "DELHI", "KOLKATA", "NAGPUR", "SURAT"};
    const char* kinds[] = {"TRADERS", "PHARMA LTD", "& CO", "INDUSTRIES PVT LTD", "EXPORTS", "FOODS LLP"};
    constexpr int kBatch = 2000;
    for (int first = 0; first < count; first += kBatch) {
        QStringList rows;
        for (int i = first; i < qMin(count, first + kBatch); ++i)
            rows << QStringLiteral("(%1,%2,%3,%4,%5)")
                        .arg(sqlQuote(QStringLiteral("C%1").arg(i, 6, 10, QLatin1Char('0'))),
                             sqlQuote(QStringLiteral("CLIENT %1 %2").arg(i * 7919 % 100003).arg(QLatin1String(kinds[i % 6]))),
                             sqlQuote(QStringLiteral("ABCDE%1F").arg(i % 10000, 4, 10, QLatin1Char('0'))),
                             QString::number(i % 8), sqlQuote(QLatin1String(cities[i % 7])));
        connection.execute(QStringLiteral("insert into FBT_Info (Code_No, Name, PAN, ClStatus, City) values ") + rows.join(QLatin1Char(',')));
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QTextStream out(stdout);
    const int clients = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 100000;

    QTemporaryDir dir;
    qputenv("CORVANE_SYSTEM_DIR", dir.filePath(QStringLiteral("system")).toLocal8Bit());
    auto answers = std::make_shared<ScriptedPrompter>();
    answers->then(Prompter::Answer::No); // no demo data
    modbase().prompter = answers;

    ClsMain cls;
    HostSession session(cls, dir.filePath(QStringLiteral("app")));
    if (!session.start()) {
        out << "failed: no database" << Qt::endl;
        return 1;
    }
    QElapsedTimer clock;
    clock.start();
    addClients(*modbase().CnnObj, clients);
    out << QStringLiteral("%1 clients stored in %2 s").arg(clients).arg(clock.elapsed() / 1000.0, 0, 'f', 1) << Qt::endl;

    // The part of the opening that is the database's: reading the list.
    for (int i = 0; i < 3; ++i) {
        clock.restart();
        const int read = int(ClientService(cls).listing().size());
        out << QStringLiteral("client list read: %1 rows in %2 ms").arg(read).arg(clock.nsecsElapsed() / 1e6, 0, 'f', 0) << Qt::endl;
    }

    const double before = memoryMb("VmRSS:");
    int status = 0;
    {
        clock.restart();
        MainWindow window(cls, session);
        window.show();
        QApplication::processEvents();
        window.repaint();
        const double shown = clock.nsecsElapsed() / 1e6;
        out << QStringLiteral("main window shown in %1 ms; memory %2 MB (%3 MB before the window, peak %4 MB)")
                   .arg(shown, 0, 'f', 0)
                   .arg(memoryMb("VmRSS:"), 0, 'f', 0)
                   .arg(before, 0, 'f', 0)
                   .arg(memoryMb("VmHWM:"), 0, 'f', 0)
                << Qt::endl;

        auto* search = window.findChild<QLineEdit*>(QStringLiteral("txtsearch"));
        auto* list = window.findChild<QTableView*>(QStringLiteral("lstclients"));
        // Typing a name letter by letter, a code, something nobody has, and clearing it again.
        const QStringList typed{QStringLiteral("P"), QStringLiteral("PH"), QStringLiteral("PHA"), QStringLiteral("PHARMA"),
                                QStringLiteral("C0999"), QStringLiteral("C09999"), QStringLiteral("NOBODY"), QString()};
        double worst = 0;
        for (const QString& text : typed) {
            clock.restart();
            search->setText(text);
            QApplication::processEvents();
            list->viewport()->repaint();
            const double ms = clock.nsecsElapsed() / 1e6;
            worst = qMax(worst, ms);
            out << QStringLiteral("search '%1': %2 rows, chosen %3, %4 ms")
                       .arg(text)
                       .arg(list->model()->rowCount())
                       .arg(window.currentCode().isEmpty() ? QStringLiteral("none") : window.currentCode())
                       .arg(ms, 0, 'f', 1)
                    << Qt::endl;
        }
        out << QStringLiteral("slowest keystroke %1 ms").arg(worst, 0, 'f', 1) << Qt::endl;
    }
    session.finish();
    return status;
}
