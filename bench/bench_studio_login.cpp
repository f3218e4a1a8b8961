// From the password to the users screen, as the studio does it against a site's server: the
// real engine in a process of its own on a database of 100,000 employees and 100,000 more
// accounts (the demo with --demo-users), a login over loopback TCP through LoginClient, the
// store filled by LocalStorageLoader, then the users screen (UserCtl) set up as the main window
// places it, shown on the offscreen platform, until both user lists are filled, the role
// templates applied and the users list repainted. One login per process, so that the peak
// memory is that of one login; run it several times for a median. The engine runs apart, as
// the server of a site this large does, so that the memory measured is the studio's alone.
//
// Prints "name value" lines (milliseconds, or MB for the memory) for bench/run, and on stderr
// the time the database took to build (not a figure: it is made once) and every dataset's
// share of the load. `bench_studio_login DBFILE` keeps the database in that file and reuses it
// on the next run; without it the database lives in a temporary folder. `bench_studio_login
// DBFILE EMPLOYEES ACCOUNTS` makes a smaller site, for a profiler.
#include "benchreport.h"

#include <tests/support/paintrecorder.h>
#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/core/localstorageloader.h>
#include <host/core/loginclient.h>
#include <host/core/protocol.h>
#include <host/core/settings.h>
#include <host/core/zrserverinterface.h>
#include <server/engine/demo/demoorganisation.h>
#include <server/engine/serverengine.h>
#include <shared/datasets.h>
#include <src/userctl.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QTableView>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <functional>

using zeral::server::ServerEngine;
namespace command = zeral::proto::command;

namespace {

// The site's size; a profiler may ask for a smaller one after the file name.
int employees = 100000;
int accounts = 100000;

[[noreturn]] void fail(const char *what)
{
    std::fprintf(stderr, "bench_studio_login: %s\n", what);
    std::exit(1);
}

double elapsedMs(const QElapsedTimer &timer)
{
    return timer.nsecsElapsed() / 1e6;
}

// The CPU time of a thread or process: what the studio's thread and the server spent.
double cpuMs(clockid_t clock)
{
    timespec now{};
    clock_gettime(clock, &now);
    return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

// A line of /proc/self/status in megabytes ("VmRSS", "VmHWM").
double statusMb(const char *field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        fail("can't read /proc/self/status");
    const QByteArray prefix = QByteArray(field) + ':';
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(prefix))
            return line.mid(prefix.size()).trimmed().split(' ').value(0).toDouble() / 1024.0;
    }
    fail("no such line in /proc/self/status");
}

// Runs the event loop until `done` holds; stops the program after two minutes. It sleeps while
// there is nothing to do (processEvents with a time limit would spin, taking a core from the
// server and making the studio's CPU time meaningless).
void waitFor(const std::function<bool()> &done, const char *what)
{
    QTimer wake; // looks at the clock now and then even when no event comes
    wake.start(100);
    QElapsedTimer waited;
    waited.start();
    while (!done()) {
        if (waited.elapsed() > 120000)
            fail(what);
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

// The studio's router, telling when the users screen asks for the sessions: the last thing the
// answer of the role templates does.
class WatchedRouter : public ZRServerInterface
{
public:
    bool sessionsAsked = false;

protected:
    void transmit(const Command &command) override
    {
        if (command.name == QLatin1String(command::GetSessionsInfo))
            sessionsAsked = true;
        ZRServerInterface::transmit(command);
    }
};

// One dataset of the load: wall time, the studio thread's CPU time (reading the pages,
// storing the objects) and the server's (reading the database, writing the pages).
struct DatasetTimes
{
    QString dataname;
    double wallMs = 0;
    double studioMs = 0;
    double engineMs = 0;
};

// The server: a child process running the engine until it is killed. Writes its port, or 0
// when the engine didn't start, into `reply`.
[[noreturn]] void runServer(int argc, char **argv, const ServerEngine::Options &options, int reply)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL); // never outlives the benchmark
    QCoreApplication app(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.info=false"));
    ServerEngine engine(options);
    const QString error = engine.start();
    if (!error.isEmpty())
        std::fprintf(stderr, "bench_studio_login: %s\n", qPrintable(error));
    const quint16 port = error.isEmpty() ? engine.port() : 0;
    if (write(reply, &port, sizeof port) != sizeof port || port == 0)
        std::_Exit(1);
    close(reply);
    app.exec();
    std::_Exit(0);
}

} // namespace

int main(int argc, char **argv)
{
    const QString databaseArgument = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString();
    QTemporaryDir serverDir;
    const QString databasePath = argc > 1 ? databaseArgument
                                          : serverDir.filePath(QStringLiteral("bench.db"));
    if (argc > 3) {
        employees = QByteArray(argv[2]).toInt();
        accounts = QByteArray(argv[3]).toInt();
    }
    ServerEngine::Options options;
    options.databasePath = databasePath;
    options.demo = true;
    options.demoSize = employees;
    options.demoUsers = accounts;
    options.loginPolicy.delayStepMs = 0;
    const bool reused = QFileInfo::exists(databasePath);

    // The server is forked before the studio's application object exists.
    int pipeEnds[2];
    if (pipe(pipeEnds) != 0)
        fail("no pipe");
    QElapsedTimer build;
    build.start();
    const pid_t server = fork();
    if (server < 0)
        fail("can't fork the server");
    if (server == 0) {
        close(pipeEnds[0]);
        runServer(argc, argv, options, pipeEnds[1]);
    }
    close(pipeEnds[1]);
    quint16 port = 0;
    if (read(pipeEnds[0], &port, sizeof port) != sizeof port || port == 0)
        fail("the server didn't start");
    close(pipeEnds[0]);
    clockid_t engineClock{};
    if (clock_getcpuclockid(server, &engineClock) != 0)
        fail("no CPU clock of the server");
    std::fprintf(stderr, "database %s in %.1f s: %d employees, %d more accounts\n",
                 reused ? "opened" : "built", build.elapsed() / 1000.0, employees, accounts);

    QApplication app(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.info=false"));
    QTemporaryDir dir;
    Settings::useFile(dir.filePath(QStringLiteral("studio.ini")));

    WatchedRouter router;
    bool connected = false;
    QObject::connect(&router, &ZRServerInterface::connected, [&] { connected = true; });
    zeral::LocalStorage *store = zeral::LocalStorage::instance();
    store->attach(&router);
    router.connectToServer(QStringLiteral("127.0.0.1"), port);
    waitFor([&] { return connected; }, "no connection");

    LoginClient login(&router);
    zeral::LocalStorageLoader loader(&router, store);
    bool loggedIn = false;
    bool loaded = false;
    QVector<DatasetTimes> datasets;
    QElapsedTimer datasetTimer;
    double studioStart = 0;
    double engineStart = 0;
    const auto closeDataset = [&] {
        if (datasets.isEmpty())
            return;
        datasets.last().wallMs = elapsedMs(datasetTimer);
        datasets.last().studioMs = cpuMs(CLOCK_THREAD_CPUTIME_ID) - studioStart;
        datasets.last().engineMs = cpuMs(engineClock) - engineStart;
    };
    QObject::connect(&login, &LoginClient::loggedIn, [&] {
        loggedIn = true;
        store->clear();
        loader.start();
    });
    QObject::connect(&login, &LoginClient::loginFailed, [] { fail("login refused"); });
    // Step 0 is the role catalogue, then one step per dataset.
    QObject::connect(
        &loader, &zeral::LocalStorageLoader::progress, [&](int step, int, const QString &dataname) {
            closeDataset();
            if (step > 0 && dataname.isEmpty())
                return; // the end, told by finished()
            datasets.append({step == 0 ? QStringLiteral("(role catalogue)") : dataname, 0, 0, 0});
            datasetTimer.start();
            studioStart = cpuMs(CLOCK_THREAD_CPUTIME_ID);
            engineStart = cpuMs(engineClock);
        });
    QObject::connect(&loader, &zeral::LocalStorageLoader::finished, [&] {
        closeDataset();
        loaded = true;
    });
    QObject::connect(&loader, &zeral::LocalStorageLoader::failed, [] { fail("load failed"); });

    const double rssBefore = statusMb("VmRSS");
    const double studioCpuBefore = cpuMs(CLOCK_THREAD_CPUTIME_ID);
    QElapsedTimer total;
    total.start();
    login.login(QStringLiteral("root"), zeral::server::DemoOrganisation::demoPassword(),
                QStringLiteral("bench"));
    waitFor([&] { return loggedIn; }, "no login answer");
    const double loginMs = elapsedMs(total);
    std::fprintf(stderr, "login answer: %.1f ms, of it %.1f ms in the studio's thread\n", loginMs,
                 cpuMs(CLOCK_THREAD_CPUTIME_ID) - studioCpuBefore);
    waitFor([&] { return loaded; }, "the store was never filled");
    const double loadMs = elapsedMs(total) - loginMs;
    const double rssLoaded = statusMb("VmRSS");

    // The main window's way: init, registered on the router, placed, shown.
    const double screenStart = elapsedMs(total);
    UserCtl screen;
    router.registerPlugin(&screen, screen.init(&router, QStringLiteral("userctl")));
    screen.resize(1280, 800);
    screen.insertedToInterface();
    auto *users = screen.findChild<QTableView *>(QStringLiteral("usersList"));
    auto *mobile = screen.findChild<QTableView *>(QStringLiteral("mobileUsersList"));
    if (!users || !mobile)
        fail("the screen has no user lists");
    PaintRecorder paints(users->viewport());
    screen.show();
    waitFor([&] { return router.sessionsAsked; }, "the role templates were never applied");
    paints.clear(); // the repaint that counts is the one after the templates
    waitFor([&] { return paints.paints() > 0; }, "the users list was not repainted");
    const double totalMs = elapsedMs(total);
    const double screenMs = totalMs - screenStart;
    if (users->model()->rowCount() == 0 || mobile->model()->rowCount() == 0)
        fail("a user tab stayed empty");
    const double peak = statusMb("VmHWM");

    std::fprintf(stderr, "users list %d rows, mobile list %d rows\n", users->model()->rowCount(),
                 mobile->model()->rowCount());
    double engineMs = 0;
    double studioMs = 0;
    for (const DatasetTimes &times : qAsConst(datasets)) {
        studioMs += times.studioMs;
        // The datasets load side by side and their steps are reported in a fixed order, so a
        // step's time is the wait until its dataset and every one before it had finished.
        std::fprintf(stderr, "  %-22s %9.1f ms; CPU: studio %9.1f ms, engine %9.1f ms\n",
                     qPrintable(times.dataname), times.wallMs, times.studioMs, times.engineMs);
        engineMs += times.engineMs;
    }
    bench::report("studio_login_total", {totalMs});
    bench::report("studio_login_answer", {loginMs});
    bench::report("studio_login_load", {loadMs});
    bench::report("studio_login_load_studio", {studioMs});
    bench::report("studio_login_load_engine", {engineMs});
    bench::report("studio_login_screen", {screenMs});
    bench::report("studio_login_rss_before", {rssBefore});
    bench::report("studio_login_rss_loaded", {rssLoaded});
    bench::report("studio_login_rss_peak", {peak});

    router.unregisterPlugin(&screen);
    kill(server, SIGTERM);
    waitpid(server, nullptr, 0);
    return 0;
}
