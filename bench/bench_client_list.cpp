// FBT's main window over many clients: the opening of the window with the
// list read and drawn, against the same list read by `mariadb -B`; then each
// keystroke in the search box until the list is drawn again.
//   bench_client_list [CLIENTS]     (default 100,000, 20,000 in a quick run; offscreen unless a display is chosen)
#include "bench/benchdata.h"
#include "bench/benchsupport.h"
#include "component/clsmain.h"
#include "core/modbase.h"
#include "core/prompter.h"
#include "db/connection.h"
#include "db/privateserver.h"
#include "host/hostsession.h"
#include "host/mainwindow.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QLocale>
#include <QTableView>

using namespace corvane;
using namespace corvane::host;

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int clients = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : bench::quick() ? 20000 : 100000;
    if (clients <= 0) {
        bench::note(QStringLiteral("usage: bench_client_list [CLIENTS]"));
        return 2;
    }
    return bench::guarded(QStringLiteral("bench_client_list"), [&] {
        const QString appPath = bench::workFolder() + QStringLiteral("/client-list");
        qputenv("CORVANE_SYSTEM_DIR", (bench::workFolder() + QStringLiteral("/system")).toLocal8Bit());
        auto answers = std::make_shared<ScriptedPrompter>();
        answers->then(Prompter::Answer::No); // no demo data
        modbase().prompter = answers;

        ClsMain cls;
        HostSession session(cls, appPath);
        if (!session.start())
            throw std::runtime_error("no database");
        struct Finish {
            HostSession& session;
            ~Finish() { session.finish(); }
        } finish{session};
        Connection& connection = *modbase().CnnObj;
        if (connection.query(QStringLiteral("select count(*) from FBT_Info")).rows.value(0).value(0).toInt() != clients) {
            connection.execute(QStringLiteral("delete from FBT_Info"));
            QElapsedTimer clock;
            clock.start();
            bench::insertClients(connection, clients, 0, false);
            bench::note(QStringLiteral("%1 clients stored in %2 s").arg(clients).arg(double(clock.elapsed()) / 1000.0, 0, 'f', 1));
        }

        const QStringList mariadb{QStringLiteral("-B"), QStringLiteral("--socket=") + PrivateServer(appPath).socketPath(),
                                  QStringLiteral("--user=root"), connection.databaseName(), QStringLiteral("-e"),
                                  QStringLiteral("Select Code_No, Name, PAN, ClStatus, City from FBT_Info order by Code_No")};
        const auto [shown, listed] = bench::alternate(
            bench::repetitions(),
            [&] {
                MainWindow window(cls, session);
                window.show();
                QApplication::processEvents();
                window.repaint();
            },
            [&] { bench::run(QStringLiteral("mariadb"), mariadb, {}, QStringLiteral("/dev/null")); });

        MainWindow window(cls, session);
        window.show();
        QApplication::processEvents();
        auto* search = window.findChild<QLineEdit*>(QStringLiteral("txtsearch"));
        auto* list = window.findChild<QTableView*>(QStringLiteral("lstclients"));
        // Typing a name letter by letter, a code, something nobody has, and clearing it again.
        const QStringList typed{QStringLiteral("S"), QStringLiteral("SH"), QStringLiteral("SHA"), QStringLiteral("SHARMA"),
                                QStringLiteral("A000"), QStringLiteral("A00027"), QStringLiteral("NOBODY"), QString()};
        double worst = 0;
        for (const QString& text : typed) {
            QElapsedTimer clock;
            clock.start();
            search->setText(text);
            QApplication::processEvents();
            list->viewport()->repaint();
            const double ms = double(clock.nsecsElapsed()) / 1e6;
            worst = qMax(worst, ms);
            bench::note(QStringLiteral("  search '%1': %2 rows, %3 ms").arg(text).arg(list->model()->rowCount()).arg(ms, 0, 'f', 1));
        }
        bench::note(QStringLiteral("  slowest keystroke %1 ms").arg(worst, 0, 'f', 1));
        bench::report(QStringLiteral("client-list"),
                      QStringLiteral("main window over %1 clients").arg(QLocale(QLocale::English).toString(clients)), shown,
                      listed, bench::peakMemoryMb(), QStringLiteral("-"));
    });
}
