// A thousand employees made mobile users in one run of the users screen's wizard, against the
// real server engine in a thread of its own (as the studio runs it) on a demo organisation,
// over loopback TCP, each account's credentials mailed through a local relay. What is measured
// is the run, from the operator leaving the check page (the passwords are generated and the
// chain built there) to the answer of its last task: for each person the account, its role
// template, the rights on access objects and on reports, and the mail.
//
// Prints "name value" lines (milliseconds, per cent) for bench/run; on stderr the number of
// tasks and of mails the relay took.
#include "benchreport.h"
#include "rootlogin.h"
#include "threadedengine.h"

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/core/localstorageloader.h>
#include <host/core/loginclient.h>
#include <host/core/settings.h>
#include <host/core/zrserverinterface.h>
#include <host/gui/wizards/baseprogresswizardpage.h>
#include <server/engine/session/passwordhasher.h>
#include <shared/inheritdata.h>
#include <src/userctl.h>
#include <tests/support/smtpsink.h>

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <QWizard>

#include <pthread.h>

#include <cstdio>
#include <ctime>
#include <memory>

using zeral::server::ServerEngine;

namespace {

// `bench_mobilebulk N` runs N people instead, for a profiler.
int People = 1000;

// The CPU time of a thread, in milliseconds.
double cpuMs(clockid_t clock)
{
    timespec now{};
    clock_gettime(clock, &now);
    return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

[[noreturn]] void fail(const char *what)
{
    std::fprintf(stderr, "bench_mobilebulk: %s\n", what);
    std::exit(1);
}

void waitOrFail(const std::function<bool()> &done, int ms, const char *what)
{
    if (!QTest::qWaitFor(done, ms))
        fail(what);
}

// Active employees with an address and no account, the first `count` by uid.
QList<unsigned int> employeesWithoutAccount(int count)
{
    const auto &subjects = zeral::LocalStorage::instance()->constObjects(QStringLiteral("subject"));
    QList<unsigned int> uids;
    for (auto it = subjects.cbegin(); it != subjects.cend(); ++it) {
        const zeral::ObjectInfo &employee = it.value();
        if (employee.type == QLatin1String("OT_WORKER")
            && !employee.parameters.value(QStringLiteral("PT_EMAIL")).trimmed().isEmpty()
            && !employee.parents.contains(zeral::INHERIT_WORKER_USER))
            uids.append(it.key());
    }
    std::sort(uids.begin(), uids.end());
    return uids.mid(0, count);
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    if (argc > 1)
        People = QByteArray(argv[1]).toInt();
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.info=false"));
    QTemporaryDir dir;
    Settings::useFile(dir.filePath(QStringLiteral("studio.ini")));

    SmtpSink relay;
    if (const QString error = relay.start(); !error.isEmpty())
        fail(qPrintable(error));

    ServerEngine::Options options;
    options.databasePath = dir.filePath(QStringLiteral("bench.db"));
    options.demo = true;
    options.demoSize = 1300; // the demo's own accounts take some; a thousand stay free
    options.smtpUrl = relay.url();
    options.loginPolicy.delayStepMs = 0;
    bench::ThreadedEngine engine(options);
    if (const QString error = engine.start(QStringLiteral("RootPass1")); !error.isEmpty())
        fail(qPrintable(error));

    clockid_t engineClock{};
    engine.run([&engineClock](ServerEngine &) { pthread_getcpuclockid(pthread_self(), &engineClock); });

    ZRServerInterface router;
    zeral::LocalStorage *store = zeral::LocalStorage::instance();
    bench::logInAsRootAndLoad(router, engine.port(), "bench_mobilebulk");

    auto screen = std::make_unique<UserCtl>();
    router.registerPlugin(screen.get(), screen->init(&router, QStringLiteral("userctl")));
    screen->insertedToInterface();

    const QList<unsigned int> people = employeesWithoutAccount(People);
    if (people.size() != People)
        fail("the demo has too few employees without an account");

    QMetaObject::invokeMethod(screen.get(), "addMobileButtonClicked");
    auto *wizard = screen->findChild<QWizard *>(QStringLiteral("NewMobileUserWizard"));
    if (!wizard)
        fail("the wizard didn't open");
    QMetaObject::invokeMethod(wizard, "setCheckedEmployees",
                              Q_ARG(zeral::OBJECT_UID_LIST, zeral::OBJECT_UID_LIST(people)));
    waitOrFail([wizard] { return wizard->field(QStringLiteral("user/uids")).toList().size() == People; },
               10000, "the employees weren't checked");
    while (wizard->currentPage()->objectName() != QLatin1String("checkUserPage"))
        wizard->next();
    QWizardPage *check = wizard->currentPage();
    check->findChild<QToolButton *>(QStringLiteral("tbCheckAll"))->click();
    auto *sendEmail = check->findChild<QCheckBox *>(QStringLiteral("cbSendEmail"));
    if (!sendEmail->isChecked())
        sendEmail->click();

    QElapsedTimer timer;
    const double studioStart = cpuMs(CLOCK_THREAD_CPUTIME_ID);
    const double engineStart = cpuMs(engineClock);
    timer.start();
    wizard->next();
    auto *progress = qobject_cast<BaseProgressWizardPage *>(wizard->currentPage());
    if (!progress)
        fail("no progress page");
    QSignalSpy finished(progress, &BaseProgressWizardPage::runFinished);
    if (finished.isEmpty() && !finished.wait(300000))
        fail("the run didn't end");
    const double runMs = timer.nsecsElapsed() / 1e6;
    const double studioMs = cpuMs(CLOCK_THREAD_CPUTIME_ID) - studioStart;
    const double engineMs = cpuMs(engineClock) - engineStart;
    if (!finished.first().first().toBool())
        fail("a task of the run failed");
    const int tasks = progress->succeededCount();
    waitOrFail([&relay] { return relay.count() >= People; }, 300000, "not every mail arrived");
    const double mailedMs = timer.nsecsElapsed() / 1e6;

    // What the server's password hashing alone takes for as many accounts, measured here in
    // the same run: its share of the run.
    QElapsedTimer hashing;
    hashing.start();
    for (int i = 0; i < People; ++i)
        zeral::server::PasswordHasher::hash(QStringLiteral("%1").arg(i, 32, 16, QLatin1Char('0')));
    const double hashingMs = hashing.nsecsElapsed() / 1e6;

    std::fprintf(stderr, "%d people, %d tasks, %d mails at the relay\n", People, tasks,
                 relay.count());
    bench::report("mobile_bulk_run", {runMs});
    bench::report("mobile_bulk_studio_cpu", {studioMs});
    bench::report("mobile_bulk_engine_cpu", {engineMs});
    bench::report("mobile_bulk_hashing", {hashingMs});
    bench::report("mobile_bulk_hashing_share", {100.0 * hashingMs / runMs});
    bench::report("mobile_bulk_mailed", {mailedMs});

    wizard->close();
    screen.reset();
    router.disconnectFromServer();
    store->clear();
    AuthData::clear();
    return 0;
}
