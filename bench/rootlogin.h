#pragma once

// What a benchmark of the users screen does before it measures anything, as the studio does it:
// the router connected to the server over loopback TCP, logged in as root, and the store filled.

#include <host/core/localstorage.h>
#include <host/core/localstorageloader.h>
#include <host/core/loginclient.h>
#include <host/core/zrserverinterface.h>

#include <QSignalSpy>
#include <QTest>

#include <cstdio>
#include <cstdlib>

namespace bench {

// Stops the program, saying why, when anything fails.
inline void logInAsRootAndLoad(ZRServerInterface &router, quint16 port, const char *program)
{
    const auto fail = [program](const char *what) {
        std::fprintf(stderr, "%s: %s\n", program, what);
        std::exit(1);
    };
    zeral::LocalStorage *store = zeral::LocalStorage::instance();
    LoginClient login(&router);
    QSignalSpy loggedIn(&login, &LoginClient::loggedIn);
    router.connectToServer(QStringLiteral("127.0.0.1"), port);
    if (!QTest::qWaitFor(
            [&router] { return router.state() == ZRServerInterface::State::Connected; }, 5000))
        fail("no connection");
    login.login(QStringLiteral("root"), QStringLiteral("RootPass1"), QStringLiteral("bench"));
    if (!loggedIn.wait(5000))
        fail("no login");
    store->attach(&router);
    zeral::LocalStorageLoader loader(&router, store);
    QSignalSpy loaded(&loader, &zeral::LocalStorageLoader::finished);
    loader.start();
    if (!loaded.wait(30000))
        fail("the store didn't load");
}

} // namespace bench
