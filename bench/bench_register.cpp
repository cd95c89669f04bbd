// The return register against the server's own client.
//   bench_register [CLIENTS] [MEMORY_CLIENTS]
//     CLIENTS (10000): clients with three years of filing rows; the register of
//       one year loaded into the grid, against the same rows fetched by one LEFT
//       JOIN through `mariadb -B`; the best of five runs of each, and their ratio.
//     MEMORY_CLIENTS (100000, 0 to skip): the register of that many clients and
//       its PDF in a child process, with the peak resident memory it needed.
//   CORVANE_BENCH_SOCKET=PATH uses a running server (user root) instead of a private one.
#include "components/repview/reportdocument.h"
#include "components/repview/reportlayout.h"
#include "components/repview/reportpreview.h"
#include "core/modbase.h"
#include "core/resumenext.h"
#include "db/connection.h"
#include "db/privateserver.h"
#include "db/schema.h"
#include "db/sqltext.h"
#include "screens/register/registermodel.h"
#include "screens/register/registerreport.h"
#include "screens/register/returnregister.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QHeaderView>
#include <QProcess>
#include <QTableView>
#include <QTemporaryDir>
#include <QTextStream>
#include <algorithm>

using namespace corvane;
using namespace corvane::returnregister;

namespace {

const QString kJoin = QStringLiteral(
    "Select i.Code_No, i.Name, i.PAN, i.ClStatus, a.RetDt, a.RetAckNo, a.Code_No is not null, a.IntDt "
    "from FBT_Info i left join FBT_AddInfo a on a.Code_No = i.Code_No and a.TYear = 2008");

void fill(Connection& c, int clients)
{
    c.execute(QStringLiteral("delete from FBT_Info"));
    c.execute(QStringLiteral("delete from FBT_AddInfo"));
    const int batch = 1000;
    for (int from = 0; from < clients; from += batch) {
        QStringList info, add;
        for (int i = from; i < std::min(clients, from + batch); ++i) {
            const QString code = QStringLiteral("C%1").arg(i, 6, 10, QLatin1Char('0'));
            info << QStringLiteral("(%1,%2,%3,%4)")
                        .arg(sqlQuote(code), sqlQuote(QStringLiteral("Client %1 Private Limited").arg(i)),
                             sqlQuote(QStringLiteral("ABCDE%1F").arg(i % 10000, 4, 10, QLatin1Char('0'))))
                        .arg(i % 18);
            for (int year = 2007; year <= 2009; ++year) {
                if ((i + year) % 4 == 0)
                    continue; // some clients have no row in a year
                const bool filed = (i + year) % 3 != 0;
                add << QStringLiteral("(%1,%2,%3,%4,%5)")
                           .arg(sqlQuote(code))
                           .arg(year)
                           .arg(sqlQuote(filed ? QStringLiteral("%1/07/%2").arg(i % 28 + 1, 2, 10, QLatin1Char('0')).arg(year) : QString()),
                                sqlQuote(filed ? QStringLiteral("ACK%1").arg(i * 10 + year % 10) : QString()),
                                sqlQuote(i % 5 == 0 ? QStringLiteral("todate") : QString()));
            }
        }
        c.execute(QStringLiteral("insert into FBT_Info (Code_No, Name, PAN, ClStatus) values ") + info.join(QLatin1Char(',')));
        if (!add.isEmpty())
            c.execute(QStringLiteral("insert into FBT_AddInfo (Code_No, TYear, RetDt, RetAckNo, IntDt) values ")
                      + add.join(QLatin1Char(',')));
    }
    c.execute(QStringLiteral("flush tables"));
}

double bestOf(int runs, const std::function<void()>& work)
{
    double best = 1e9;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer t;
        t.start();
        work();
        best = std::min(best, t.nsecsElapsed() / 1e6);
    }
    return best;
}

long peakKiB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').first().toLong();
    return -1;
}

// The child: the register of the database and its PDF, then the peak memory.
int memoryRun(const ConnectionSettings& settings, const QString& pdf, QTextStream& out)
{
    Connection c;
    c.open(settings);
    QElapsedTimer t;
    t.start();
    RegisterModel model;
    model.setRows(load(c, 2008));
    const qint64 loaded = t.elapsed();
    auto recorder = std::make_shared<ReportRecorder>();
    modbase().reportViewer = recorder;
    ResumeNext guard(QStringLiteral("bench"), QStringLiteral("REPORT"));
    registerreport::show(
        heading(Returns::All, QStringLiteral("2008-09"), {}), registerreport::registerColumns(), model.rowCount() + 1,
        [&](int row, int column) {
            return row == 0 ? headings().value(column) : model.data(model.index(row - 1, column)).toString();
        },
        guard);
    const qint64 built = t.elapsed();
    QString error;
    if (!ReportLayout::writePdf(recorder->document(), pdf, &error)) {
        out << "pdf: " << error << Qt::endl;
        return 1;
    }
    out << QStringLiteral("%1 rows: register %2 ms, report %3 ms, PDF %4 ms (%5 MB); peak memory %6 MB")
               .arg(model.rowCount())
               .arg(loaded)
               .arg(built - loaded)
               .arg(t.elapsed() - built)
               .arg(QFile(pdf).size() / 1e6, 0, 'f', 1)
               .arg(peakKiB() / 1024.0, 0, 'f', 1)
        << Qt::endl;
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QTextStream out(stdout);
    const QStringList args = app.arguments();

    ConnectionSettings settings;
    settings.privateServer = false;
    settings.user = QStringLiteral("root");
    if (args.value(1) == QStringLiteral("--child")) {
        settings.socket = args.value(2);
        settings.database = args.value(3);
        return memoryRun(settings, args.value(4), out);
    }
    const int clients = args.size() > 1 ? args.at(1).toInt() : 10000;
    const int memoryClients = args.size() > 2 ? args.at(2).toInt() : 100000;

    QTemporaryDir dir;
    settings.database = QStringLiteral("bench_register");
    settings.socket = qEnvironmentVariable("CORVANE_BENCH_SOCKET");
    std::unique_ptr<PrivateServer> server;
    if (settings.socket.isEmpty()) {
        server = std::make_unique<PrivateServer>(dir.filePath(QStringLiteral("app")));
        server->start([&](const QString& text) { out << text << Qt::endl; });
        settings.socket = server->socketPath();
    }

    try {
        Connection c;
        c.open(settings, true);
        schema::createMissingTables(c);
        QElapsedTimer t;
        t.start();
        fill(c, clients);
        out << QStringLiteral("%1 clients, %2 filing rows over 3 years, made in %3 s")
                   .arg(clients)
                   .arg(c.query(QStringLiteral("select count(*) from FBT_AddInfo")).rows.first().first().toInt())
                   .arg(t.elapsed() / 1000.0, 0, 'f', 1)
            << Qt::endl;

        QTableView view;
        RegisterModel model;
        view.setModel(&model);
        // as the register screen sets its grid up
        view.horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
        view.horizontalHeader()->setSectionResizeMode(Name, QHeaderView::Stretch);
        view.setColumnHidden(HasRow, true);
        view.setColumnHidden(IntDate, true);
        view.resize(1000, 600);
        view.show();
        const double grid = bestOf(5, [&] {
            model.setRows(load(c, 2008));
            view.repaint();
        });
        const QStringList mariadb{QStringLiteral("-B"), QStringLiteral("-u"), QStringLiteral("root"),
                                  QStringLiteral("--socket=") + settings.socket, settings.database,
                                  QStringLiteral("-e"), kJoin};
        int lines = 0;
        const double client = bestOf(5, [&] {
            QProcess p;
            p.start(QStringLiteral("mariadb"), mariadb);
            p.waitForFinished(-1);
            lines = int(p.readAllStandardOutput().count('\n'));
        });
        out << QStringLiteral("register of %1 rows into the grid: %2 ms; mariadb -B LEFT JOIN (%3 lines): %4 ms; "
                              "ratio %5 (goal at most 1.5)")
                   .arg(model.rowCount())
                   .arg(grid, 0, 'f', 1)
                   .arg(lines)
                   .arg(client, 0, 'f', 1)
                   .arg(grid / client, 0, 'f', 2)
            << Qt::endl;

        // The print preview of the same register: the time from the call until its pages are shown.
        {
            auto recorder = std::make_shared<ReportRecorder>();
            modbase().reportViewer = recorder;
            ResumeNext guard(QStringLiteral("bench"), QStringLiteral("PREVIEW"));
            QElapsedTimer p;
            p.start();
            registerreport::show(
                heading(Returns::All, QStringLiteral("2008-09"), {}), registerreport::registerColumns(),
                model.rowCount() + 1,
                [&](int row, int column) {
                    return row == 0 ? headings().value(column) : model.data(model.index(row - 1, column)).toString();
                },
                guard);
            const qint64 built = p.elapsed();
            ReportPreview preview(recorder->document());
            preview.show();
            QCoreApplication::processEvents();
            out << QStringLiteral("print preview of %1 rows: report built in %2 ms, %3 pages shown after %4 ms")
                       .arg(model.rowCount())
                       .arg(built)
                       .arg(preview.pageCount())
                       .arg(p.elapsed())
                << Qt::endl;
            modbase().reportViewer.reset();
        }

        if (memoryClients > 0) {
            t.restart();
            fill(c, memoryClients);
            out << QStringLiteral("%1 clients made in %2 s").arg(memoryClients).arg(t.elapsed() / 1000.0, 0, 'f', 1) << Qt::endl;
            QProcess child;
            child.setProcessChannelMode(QProcess::ForwardedChannels);
            child.start(QCoreApplication::applicationFilePath(),
                        {QStringLiteral("--child"), settings.socket, settings.database,
                         dir.filePath(QStringLiteral("register.pdf"))});
            child.waitForFinished(-1);
            out << QStringLiteral("goal: at most 200 MB") << Qt::endl;
        }
        c.execute(QStringLiteral("drop database ") + sqlName(settings.database));
    } catch (const std::exception& e) {
        out << "failed: " << e.what() << Qt::endl;
        return 1;
    }
    return 0;
}
