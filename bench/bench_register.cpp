// The return register: of 10,000 clients with three years of details loaded
// into the grid, against the same rows fetched by one LEFT JOIN through
// `mariadb -B`; and of 100,000 clients with its PDF, in a child process whose
// peak memory is the figure.
//   bench_register [--only register|memory] [CLIENTS] [MEMORY_CLIENTS]
#include "components/repview/reportdocument.h"
#include "components/repview/reportlayout.h"
#include "components/repview/reportpreview.h"
#include "core/modbase.h"
#include "core/resumenext.h"
#include "bench/benchdata.h"
#include "bench/benchsupport.h"
#include "db/connection.h"
#include "db/schema.h"
#include "screens/register/registermodel.h"
#include "screens/register/registerreport.h"
#include "screens/register/returnregister.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QLocale>
#include <QHeaderView>
#include <QProcess>
#include <QTableView>
#include <QTextStream>

#include <algorithm>
#include <vector>

using namespace corvane;
using namespace corvane::returnregister;

namespace {

const QString kJoin = QStringLiteral(
    "Select i.Code_No, i.Name, i.PAN, i.ClStatus, a.RetDt, a.RetAckNo, a.Code_No is not null, a.IntDt "
    "from FBT_Info i left join FBT_AddInfo a on a.Code_No = i.Code_No and a.TYear = 2008");

// Makes the database hold exactly `clients` clients (kept from an earlier run when it does).
void ensureClients(Connection& c, int clients)
{
    schema::createMissingTables(c);
    if (c.query(QStringLiteral("select count(*) from FBT_Info")).rows.value(0).value(0).toInt() == clients)
        return;
    for (const char* table : {"FBT_Info", "FBT_AddInfo", "FBT_MiscInf", "FBT_BankDet"})
        c.execute(QStringLiteral("delete from ") + QLatin1String(table));
    QElapsedTimer t;
    t.start();
    bench::insertClients(c, clients, 0, false);
    c.execute(QStringLiteral("flush tables"));
    bench::note(QStringLiteral("%1 clients, %2 return rows over 3 years, made in %3 s")
                    .arg(clients)
                    .arg(c.query(QStringLiteral("select count(*) from FBT_AddInfo")).rows.value(0).value(0).toInt())
                    .arg(double(t.elapsed()) / 1000.0, 0, 'f', 1));
}

// The child: the register of the database and its PDF; prints its seconds and peak memory.
int memoryRun(const ConnectionSettings& settings, const QString& pdf)
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
        bench::note(QStringLiteral("pdf: ") + error);
        return 1;
    }
    const double total = double(t.nsecsElapsed()) / 1e9;
    bench::note(QStringLiteral("  %1 rows: register %2 ms, report %3 ms, PDF %4 ms (%5 MB)")
                    .arg(model.rowCount())
                    .arg(loaded)
                    .arg(built - loaded)
                    .arg(t.elapsed() - built)
                    .arg(double(QFile(pdf).size()) / 1e6, 0, 'f', 1));
    QTextStream(stdout) << total << ' ' << bench::peakMemoryMb() << Qt::endl;
    return 0;
}

void gridAgainstClient(const bench::BenchServer& server, int clients)
{
    auto connection = server.connect();
    Connection& c = *connection;
    ensureClients(c, clients);

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
    const QStringList mariadb = QStringList{QStringLiteral("-B")} + server.clientArguments() + QStringList{QStringLiteral("-e"), kJoin};
    const auto [grid, client] = bench::alternate(
        bench::repetitions(),
        [&] {
            model.setRows(load(c, 2008));
            view.repaint();
        },
        [&] { bench::run(QStringLiteral("mariadb"), mariadb, {}, QStringLiteral("/dev/null")); });
    bench::report(QStringLiteral("register"),
                  QStringLiteral("register of %1 clients x 3 years into the grid").arg(QLocale(QLocale::English).toString(clients)),
                  grid, client, bench::peakMemoryMb(), QStringLiteral("ratio <= 1.5"));

    if (bench::quick())
        return;
    // The print preview of the same register: the time from the call until its pages are shown.
    auto recorder = std::make_shared<ReportRecorder>();
    modbase().reportViewer = recorder;
    ResumeNext guard(QStringLiteral("bench"), QStringLiteral("PREVIEW"));
    QElapsedTimer p;
    p.start();
    registerreport::show(
        heading(Returns::All, QStringLiteral("2008-09"), {}), registerreport::registerColumns(), model.rowCount() + 1,
        [&](int row, int column) {
            return row == 0 ? headings().value(column) : model.data(model.index(row - 1, column)).toString();
        },
        guard);
    const qint64 built = p.elapsed();
    ReportPreview preview(recorder->document());
    preview.show();
    QCoreApplication::processEvents();
    bench::note(QStringLiteral("print preview of %1 rows: report built in %2 ms, %3 pages shown after %4 ms")
                    .arg(model.rowCount())
                    .arg(built)
                    .arg(preview.pageCount())
                    .arg(p.elapsed()));
    modbase().reportViewer.reset();
}

void memory(const bench::BenchServer& server, int clients)
{
    {
        auto connection = server.connect();
        ensureClients(*connection, clients);
    }
    std::vector<double> times;
    double peak = 0;
    // Memory is the figure here: one run does in a quick run.
    for (int i = 0; i < (bench::quick() ? 1 : bench::repetitions()); ++i) {
        QProcess child;
        child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        child.start(QCoreApplication::applicationFilePath(),
                    {QStringLiteral("--child"), server.socket(), server.settings().database,
                     bench::workFolder() + QStringLiteral("/register.pdf")});
        if (!child.waitForFinished(-1) || child.exitCode() != 0)
            throw std::runtime_error("the register child failed");
        const QStringList figures = QString::fromLocal8Bit(child.readAllStandardOutput()).simplified().split(QLatin1Char(' '));
        times.push_back(figures.value(0).toDouble());
        peak = std::max(peak, figures.value(1).toDouble());
    }
    QFile::remove(bench::workFolder() + QStringLiteral("/register.pdf"));
    bench::report(QStringLiteral("register-100k"),
                  QStringLiteral("register of %1 clients + its PDF").arg(QLocale(QLocale::English).toString(clients)),
                  bench::median(times), -1, peak, QStringLiteral("peak <= 200 MB"));
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QStringList args = app.arguments();
    args.removeFirst();

    if (args.value(0) == QStringLiteral("--child")) {
        ConnectionSettings settings;
        settings.privateServer = false;
        settings.user = QStringLiteral("root");
        settings.socket = args.value(1);
        settings.database = args.value(2);
        return bench::guarded(QStringLiteral("bench_register"), [&] {
            if (memoryRun(settings, args.value(3)) != 0)
                throw std::runtime_error("the PDF could not be written");
        });
    }
    QString only;
    if (args.value(0) == QStringLiteral("--only")) {
        only = args.value(1);
        args = args.mid(2);
    }
    const int clients = args.size() > 0 ? args.at(0).toInt() : 10000;
    const int memoryClients = args.size() > 1 ? args.at(1).toInt() : 100000;
    if (clients <= 0 || memoryClients <= 0 || (!only.isEmpty() && only != QStringLiteral("register") && only != QStringLiteral("memory"))) {
        bench::note(QStringLiteral("usage: bench_register [--only register|memory] [CLIENTS] [MEMORY_CLIENTS]"));
        return 2;
    }
    return bench::guarded(QStringLiteral("bench_register"), [&] {
        if (only != QStringLiteral("memory")) {
            bench::BenchServer server(QStringLiteral("fbt_register"));
            gridAgainstClient(server, clients);
        }
        if (only != QStringLiteral("register")) {
            bench::BenchServer server(QStringLiteral("fbt_register_memory"));
            memory(server, memoryClients);
        }
    });
}
