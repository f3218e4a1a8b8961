// One new user made with the wizard of the users screen, against the real server engine on a
// fresh database over loopback TCP: the studio's router logged in as root, the store loaded,
// the users screen placed, and the wizard opened from it, filled in and walked up to its last
// page. What is measured is the chain that page runs: from entering it (the operator's last
// Next, no confirmation asked) to the answer of its last task, the creation, password,
// template, prescription and the rights on the five kinds of object, one after the other.
// Fifty users, each in a wizard of its own.
//
// Prints "name value" lines (milliseconds) for bench/run.
#include "benchreport.h"
#include "rootlogin.h"

#include <src/userctl.h>
#include <src/wizards/newuserwizard.h>
#include <src/wizards/userprogresswizardpage.h>
#include <tests/server/serverharness.h>

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/core/localstorageloader.h>
#include <host/core/loginclient.h>
#include <host/core/settings.h>
#include <host/core/zrserverinterface.h>
#include <host/gui/widgets/zrcombobox.h>
#include <shared/dbkeys.h>

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QPointer>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <cstdio>
#include <memory>

namespace {

constexpr int Users = 50;

[[noreturn]] void fail(const char *what)
{
    std::fprintf(stderr, "bench_newuser: %s\n", what);
    std::exit(1);
}

// Objects of every kind the wizard gives rights on, so that each of its five rights pages
// sends a task: departments, readers, reports, access groups, monitoring settings.
void addObjects(harness::WireClient &root)
{
    const QList<QPair<const char *, int>> kinds{{db::orgstructure::DEPARTMENT, 20},
                                                {"OT_TERM_ZR_NOVA", 10},
                                                {db::report::REPORT, 5},
                                                {db::policy::ACCESS_POLICY, 5},
                                                {db::monitoring::SETTINGS, 3}};
    for (const auto &kind : kinds) {
        for (int i = 0; i < kind.second; ++i) {
            zeral::ObjectInfo object;
            object.type = QLatin1String(kind.first);
            object.parameters = {{QStringLiteral("PT_NAME"), QStringLiteral("Объект %1").arg(i)}};
            const Command answer = root.request(
                harness::cmd::AddObject, ZRDataStream::pack(object, QList<zeral::_INHERIT_DATA>()));
            if (answer.status != zeral::proto::StatusOk)
                fail("an object was refused");
        }
    }
}

// Opens the wizard from the screen and walks it up to the last page but one.
NewUserWizard *openAndFill(UserCtl *screen, int index)
{
    QMetaObject::invokeMethod(screen, "addButtonClicked");
    auto *wizard = screen->findChild<NewUserWizard *>();
    if (!wizard)
        fail("the wizard didn't open");
    wizard->findChild<QLineEdit *>(QStringLiteral("loginEdit"))
        ->setText(QStringLiteral("bench%1").arg(index));
    wizard->findChild<QLineEdit *>(QStringLiteral("surnameEdit"))
        ->setText(QStringLiteral("Замеров"));
    wizard->next();
    wizard->next();
    auto *templates = wizard->findChild<ZRComboBox *>(QStringLiteral("cbRoleTemplate"));
    if (!QTest::qWaitFor([templates] { return templates->count() > 0; }, 5000)
        || !templates->setCurrentData(QStringLiteral("RT_OPERATOR")))
        fail("no role templates");
    while (wizard->currentId() < NewUserWizard::MonitoringPermissionPage)
        wizard->next();
    return wizard;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.warning=false"));
    QTemporaryDir settings;
    Settings::useFile(settings.filePath(QStringLiteral("studio.ini")));

    harness::Server server;
    if (!server.start().isEmpty())
        fail("the server didn't start");
    addObjects(*server.rootClient());

    ZRServerInterface router;
    zeral::LocalStorage *store = zeral::LocalStorage::instance();
    bench::logInAsRootAndLoad(router, server.engine->port(), "bench_newuser");

    auto screen = std::make_unique<UserCtl>();
    router.registerPlugin(screen.get(), screen->init(&router, QStringLiteral("userctl")));
    screen->insertedToInterface();

    QVector<double> chains;
    for (int i = 0; i < Users; ++i) {
        NewUserWizard *wizard = openAndFill(screen.get(), i);
        UserProgressWizardPage *progress = wizard->pages().progressPage;
        QSignalSpy finished(progress, &BaseProgressWizardPage::runFinished);
        QElapsedTimer timer;
        timer.start();
        wizard->next();
        if (finished.isEmpty() && !finished.wait(10000))
            fail("the chain didn't end");
        chains.append(timer.nsecsElapsed() / 1e6);
        if (!finished.first().first().toBool())
            fail("a task of the chain failed");
        // The creation, the password, the template, its prescription, five kinds of rights.
        if (progress->succeededCount() != 9)
            fail("the chain wasn't whole");
        // The closed wizard deletes itself; the next round must not find it.
        QPointer<NewUserWizard> closed = wizard;
        wizard->button(QWizard::FinishButton)->click();
        if (!QTest::qWaitFor([&closed] { return closed.isNull(); }, 5000))
            fail("the wizard didn't close");
    }
    bench::report("newuser_chain", chains);
    bench::reportPercentile("newuser_chain_p90", chains, 90);

    screen.reset();
    router.disconnectFromServer();
    store->clear();
    AuthData::clear();
    return 0;
}
