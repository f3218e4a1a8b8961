#pragma once

#include <src/userctl.h>
#include <tests/server/serverharness.h>

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/core/localstorageloader.h>
#include <host/core/loginclient.h>
#include <host/core/settings.h>
#include <host/core/zrserverinterface.h>

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

// The users screen of a studio logged in as root to the real server engine, on a fresh
// database, over loopback. Start the server and prepare its data, then log in: the store is
// loaded with what the server holds by then. The screen is made last, registered with the
// router but not placed, so that a test connects its editors before the first requests go.
class RealServerScreen
{
public:
    RealServerScreen() = default;
    RealServerScreen(const RealServerScreen &) = delete;
    RealServerScreen &operator=(const RealServerScreen &) = delete;
    ~RealServerScreen()
    {
        screen.reset();
        router.disconnectFromServer();
        zeral::LocalStorage::instance()->clear();
    }

    void logInAsRootAndLoad()
    {
        AuthData::clear();
        zeral::LocalStorage *store = zeral::LocalStorage::instance();
        store->clear();
        LoginClient login(&router);
        QSignalSpy loggedIn(&login, &LoginClient::loggedIn);
        router.connectToServer(QStringLiteral("127.0.0.1"), server.engine->port());
        QTRY_COMPARE(router.state(), ZRServerInterface::State::Connected);
        login.login(QStringLiteral("root"), QStringLiteral("RootPass1"), QStringLiteral("test"));
        QVERIFY(loggedIn.wait(5000));
        store->attach(&router);
        zeral::LocalStorageLoader loader(&router, store);
        QSignalSpy loaded(&loader, &zeral::LocalStorageLoader::finished);
        loader.start();
        QVERIFY(loaded.wait(10000));
    }

    void makeScreen()
    {
        Settings::useFile(settings.filePath(QStringLiteral("studio.ini")));
        screen = std::make_unique<UserCtl>();
        router.registerPlugin(screen.get(), screen->init(&router, QStringLiteral("userctl")));
    }

    harness::Server server;
    ZRServerInterface router;
    QTemporaryDir settings;
    std::unique_ptr<UserCtl> screen;
};
