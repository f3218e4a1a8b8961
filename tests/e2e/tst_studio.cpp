// The studio from the login dialog to the screens, against a real server on a temporary
// database over loopback TCP, with a test screen loaded from a plugin folder.
#include <app/startup/embeddedserver.h>
#include <app/startup/logindialog.h>
#include <app/startup/rootpassworddialog.h>
#include <app/startup/studiocontroller.h>
#include <app/window/mainwindow.h>

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/core/settings.h>
#include <host/gui/widgets/passwordchangewidget.h>
#include <host/gui/widgets/pluginwidget.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <shared/rolenames.h>
#include <tests/e2e/studiofixture.h>
#include <tests/server/serverharness.h>
#include <tests/support/modalanswerer.h>

#include <KPasswordLineEdit>

#include <QAction>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QTreeWidget>
#include <QtTest>

using namespace harness;
using Phase = StudioController::Phase;

namespace {

const QString RootPassword = QStringLiteral("RootPass1");

QStringList callsOf(PluginWidget *screen)
{
    return screen ? screen->property("calls").toStringList() : QStringList{QStringLiteral("none")};
}

// Passes bytes between the studio and the server, and can cut every connection at once, as a
// broken network would, while the server itself and its sessions go on.
class CuttableProxy : public QObject
{
public:
    explicit CuttableProxy(quint16 serverPort)
        : m_serverPort(serverPort)
    {
        connect(&m_listener, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *client = m_listener.nextPendingConnection()) {
                auto *upstream = new QTcpSocket(client);
                upstream->connectToHost(QHostAddress::LocalHost, m_serverPort);
                connect(client, &QTcpSocket::readyRead, upstream,
                        [client, upstream] { upstream->write(client->readAll()); });
                connect(upstream, &QTcpSocket::readyRead, client,
                        [client, upstream] { client->write(upstream->readAll()); });
                connect(upstream, &QTcpSocket::disconnected, client,
                        &QTcpSocket::disconnectFromHost);
                connect(client, &QTcpSocket::disconnected, client, &QObject::deleteLater);
                m_clients.append(client);
            }
        });
        m_listener.listen(QHostAddress::LocalHost);
    }
    quint16 port() const { return m_listener.serverPort(); }
    void cut()
    {
        for (const QPointer<QTcpSocket> &client : qAsConst(m_clients)) {
            if (client)
                client->abort();
        }
        m_clients.clear();
    }

private:
    QTcpServer m_listener;
    quint16 m_serverPort;
    QList<QPointer<QTcpSocket>> m_clients;
};

} // namespace

class StudioTest : public QObject, protected StudioFixture
{
    Q_OBJECT
public:
    StudioTest()
        : StudioFixture(QStringLiteral(ZR_TEST_PLUGIN_DIR))
    {}

private slots:
    void init() { QCOMPARE(setUp(), QString()); }
    void cleanup() { tearDown(); }

    void loginLoadsTheStoreBeforeAnyScreen()
    {
        auto root = m_server->rootClient();
        for (int i = 0; i < 5; ++i)
            QVERIFY(addUser(*root, QStringLiteral("user%1").arg(i),
                            QLatin1String(zeral::roletemplate::OPERATOR)));
        QVERIFY(logIn(QStringLiteral("root"), RootPassword));

        QCOMPARE(AuthData::user(), QStringLiteral("root"));
        QVERIFY(!AuthData::sessionId().isEmpty());
        QCOMPARE(AuthData::roletemplateId(), QLatin1String(zeral::roletemplate::SUPERVISOR));
        const int users = zeral::LocalStorage::instance()
                              ->constObjects(QLatin1String(zeral::USER_DATANAME))
                              .size();
        QCOMPARE(users, 6);
        MainWindow *window = m_studio->mainWindow();
        QVERIFY(window->isVisible());
        QVERIFY(!m_studio->loginDialog()->isVisible());
        PluginWidget *screen = window->screenByName(QStringLiteral("testscreen"));
        QVERIFY(screen);
        QCOMPARE(callsOf(screen).mid(0, 3),
                 QStringList({QStringLiteral("init:testscreen"), QStringLiteral("canShow"),
                              QStringLiteral("insertedToInterface users:6")}));
        QVERIFY(window->screenByName(QStringLiteral("employees")));
        // The foreign plugin in the folder is named to the operator and left alone.
        QVERIFY(m_studio->pluginProblems()
                    .join(QLatin1Char(' '))
                    .contains(QLatin1String("foreignplugin")));
        QVERIFY(window->findChild<QLabel *>(QStringLiteral("operatorLabel"))
                    ->text()
                    .contains(QLatin1String("root")));
    }

    void tabSwitchesCallTheScreen()
    {
        QVERIFY(logIn(QStringLiteral("root"), RootPassword));
        MainWindow *window = m_studio->mainWindow();
        PluginWidget *screen = window->screenByName(QStringLiteral("testscreen"));
        PluginWidget *employees = window->screenByName(QStringLiteral("employees"));
        QVERIFY(screen && employees);
        QCOMPARE(window->currentScreen(), screen); // the first, on a fresh settings file
        QVERIFY(!window->showTab(screen, 1));      // hidden: not in the list
        QVERIFY(window->showTab(screen, 2));
        QVERIFY(window->showTab(employees, 0));
        // Back to the screen: the row of the screen stands for the tab it calls current.
        auto *navigation = window->findChild<QTreeWidget *>(QStringLiteral("screenNavigation"));
        navigation->setCurrentItem(navigation->topLevelItem(0));
        QCOMPARE(window->currentTab(), 2);
        QCOMPARE(
            callsOf(screen).mid(3),
            QStringList({QStringLiteral("onTabActivated:0"), QStringLiteral("onTabActivated:2"),
                         QStringLiteral("deactivate"), QStringLiteral("onTabActivated:2")}));
        // The hidden tab has no row.
        QTreeWidgetItem *top = navigation->topLevelItem(0);
        QCOMPARE(top->childCount(), 2);
        QCOMPARE(top->child(1)->text(0), QStringLiteral("Третья"));
    }

    void lastScreenAndTabAreKept()
    {
        QVERIFY(logIn(QStringLiteral("root"), RootPassword));
        MainWindow *window = m_studio->mainWindow();
        QVERIFY(window->showTab(window->screenByName(QStringLiteral("testscreen")), 2));
        window->resize(900, 650);
        window->close();
        QTRY_COMPARE(m_studio->phase(), Phase::Finished);
        m_studio.reset();

        QVERIFY(logIn(QStringLiteral("root"), RootPassword));
        window = m_studio->mainWindow();
        QCOMPARE(window->currentScreen(), window->screenByName(QStringLiteral("testscreen")));
        QCOMPARE(window->currentTab(), 2);
        QCOMPARE(window->size(), QSize(900, 650));
        QCOMPARE(m_studio->loginDialog()->login(), QStringLiteral("root")); // remembered
    }

    void changeOfAnotherSessionArrives()
    {
        auto root = m_server->rootClient();
        const zeral::TYPE_ID uid = addUser(*root, QStringLiteral("ivanov"),
                                           QLatin1String(zeral::roletemplate::OPERATOR));
        QVERIFY(uid);
        QVERIFY(logIn(QStringLiteral("root"), RootPassword));
        QSignalSpy changed(zeral::LocalStorage::instance(), &zeral::LocalStorage::dataChanged);
        const QHash<QString, QString> parameters
            = {{QLatin1String(db::user::OBJECTSTATE), QStringLiteral("b")}};
        QCOMPARE(
            root->request(cmd::UpdateObject,
                          ZRDataStream::pack(quint32(uid), QString(QLatin1String(db::system::USER)),
                                             quint32(0), parameters))
                .status,
            qint32(zeral::proto::StatusOk));
        QTRY_VERIFY(!changed.isEmpty());
        QCOMPARE(zeral::LocalStorage::instance()
                     ->constObject(uid, QLatin1String(zeral::USER_DATANAME))
                     .parameters.value(QLatin1String(db::user::OBJECTSTATE)),
                 QStringLiteral("b"));
    }

    void disconnectedByAnotherOperator()
    {
        QVERIFY(logIn(QStringLiteral("root"), RootPassword));
        auto other = m_server->rootClient();
        const Command done = other->request(cmd::DisconnectUsers,
                                            ZRDataStream::pack(qint32(1), AuthData::sessionId()));
        QCOMPARE(done.status, qint32(zeral::proto::StatusOk));
        QTRY_COMPARE_WITH_TIMEOUT(m_studio->phase(), Phase::Login, 20000);
        QVERIFY(!m_studio->mainWindow());
        QVERIFY(m_studio->loginDialog()->isVisible());
        // The reason the server gave, with who did it.
        QVERIFY2(m_studio->loginDialog()->messageText().contains(QStringLiteral("оператором root")),
                 qPrintable(m_studio->loginDialog()->messageText()));
        QVERIFY(!AuthData::isLoggedIn());
        // And the operator can log in again.
        submitLogin(m_studio->loginDialog(), QStringLiteral("root"), RootPassword);
        QTRY_COMPARE_WITH_TIMEOUT(m_studio->phase(), Phase::Running, 20000);
    }

    void droppedConnectionIsResumedAndTheStoreReloaded()
    {
        CuttableProxy proxy(m_server->engine->port());
        startStudio(proxy.port());
        submitLogin(m_studio->loginDialog(), QStringLiteral("root"), RootPassword);
        QTRY_COMPARE(m_studio->phase(), Phase::Running);
        const QByteArray session = AuthData::sessionId();
        m_studio->router()->setReconnectDelays(50, 200);

        proxy.cut();
        MessageWidget *notice = m_studio->mainWindow()->notice();
        QTRY_VERIFY2(notice->text().contains(QStringLiteral("Связь с сервером потеряна")),
                     qPrintable(notice->text()));
        QVERIFY(notice->isVisible());
        // What another operator does meanwhile shows once the store is read again.
        auto root = m_server->rootClient();
        const zeral::TYPE_ID uid = addUser(*root, QStringLiteral("sidorov"),
                                           QLatin1String(zeral::roletemplate::OPERATOR));
        QVERIFY(uid);
        QTRY_VERIFY2(notice->text().contains(QStringLiteral("данные обновлены")),
                     qPrintable(notice->text()));
        QCOMPARE(m_studio->phase(), Phase::Running);
        QCOMPARE(AuthData::sessionId(), session); // the same session, resumed
        QVERIFY(zeral::LocalStorage::instance()
                    ->constObjects(QLatin1String(zeral::USER_DATANAME))
                    .contains(uid));
    }

    void loginFailureIsExplained_data()
    {
        QTest::addColumn<QString>("situation");
        QTest::addColumn<QString>("expected");
        QTest::addRow("wrong password") << "wrong"
                                        << "Неверное имя пользователя или пароль";
        QTest::addRow("blocked account") << "blocked"
                                         << "заблокирована";
        QTest::addRow("locked after failures") << "locked"
                                               << "временно закрыт";
        QTest::addRow("unreachable server") << "unreachable"
                                            << "недоступен";
        QTest::addRow("malformed address") << "address"
                                           << "не подходит";
    }

    void loginFailureIsExplained()
    {
        QFETCH(QString, situation);
        QFETCH(QString, expected);
        auto root = m_server->rootClient();
        const QString login = QStringLiteral("petrov");
        const zeral::TYPE_ID uid
            = addUser(*root, login, QLatin1String(zeral::roletemplate::OPERATOR));
        QVERIFY(uid);
        QString password = QStringLiteral("Passw0rd");
        QString server = QStringLiteral("127.0.0.1:%1").arg(m_server->engine->port());
        if (situation == QLatin1String("wrong")) {
            password = QStringLiteral("nope");
            // Typed by the operator, not the studio's default: the retry must go there too.
            server = QStringLiteral("localhost:%1").arg(m_server->engine->port());
        } else if (situation == QLatin1String("blocked")) {
            const QHash<QString, QString> blocked
                = {{QLatin1String(db::user::OBJECTSTATE), QStringLiteral("b")}};
            QCOMPARE(root->request(cmd::UpdateObject,
                                   ZRDataStream::pack(quint32(uid),
                                                      QString(QLatin1String(db::system::USER)),
                                                      quint32(0), blocked))
                         .status,
                     qint32(zeral::proto::StatusOk));
        } else if (situation == QLatin1String("locked")) {
            auto guesser = m_server->client();
            for (int i = 0; i < 5; ++i)
                guesser->login(login, QStringLiteral("guess%1").arg(i));
        } else if (situation == QLatin1String("unreachable")) {
            // A port that was free a moment ago: nobody listens there once `closed` is gone.
            QTcpServer closed;
            QVERIFY(closed.listen(QHostAddress::LocalHost));
            server = QStringLiteral("127.0.0.1:%1").arg(closed.serverPort());
        } else if (situation == QLatin1String("address")) {
            server = QStringLiteral("127.0.0.1");
        }
        startStudio();
        submitLogin(m_studio->loginDialog(), login, password, server);
        QTRY_COMPARE(m_studio->phase(), Phase::Login);
        QTRY_VERIFY2(m_studio->loginDialog()->messageText().contains(expected),
                     qPrintable(m_studio->loginDialog()->messageText()));
        QVERIFY(!m_studio->loginDialog()->isBusy());
        QVERIFY(!m_studio->mainWindow());
        QCOMPARE(m_studio->loginDialog()->serverText(), server); // kept for the retry
        // Retry: the same dialog takes the right answer.
        if (situation == QLatin1String("wrong")) {
            submitLogin(m_studio->loginDialog(), login, QStringLiteral("Passw0rd"));
            QTRY_COMPARE(m_studio->phase(), Phase::Running);
        }
    }

    // Before login, a server is tried no more than the attempt under way needs: once more
    // while a login is on its way, not at all from a dialog that waits for the operator.
    void serverDroppingTheLoginIsTriedOnceMore()
    {
        // Takes connections and closes each as soon as the login arrives.
        QTcpServer dropping;
        QVERIFY(dropping.listen(QHostAddress::LocalHost));
        int accepted = 0;
        connect(&dropping, &QTcpServer::newConnection, this, [&] {
            while (QTcpSocket *socket = dropping.nextPendingConnection()) {
                ++accepted;
                connect(socket, &QTcpSocket::readyRead, socket, &QTcpSocket::abort);
            }
        });
        startStudio();
        ZRServerInterface *router = m_studio->router();
        router->setReconnectDelays(10, 20);
        submitLogin(m_studio->loginDialog(), QStringLiteral("root"), QStringLiteral("RootPass1"),
                    QStringLiteral("127.0.0.1:%1").arg(dropping.serverPort()));
        QTRY_COMPARE(m_studio->phase(), Phase::Login);
        QTRY_VERIFY2(m_studio->loginDialog()->messageText().contains(
                         QStringLiteral("прервалась во время входа")),
                     qPrintable(m_studio->loginDialog()->messageText()));
        QVERIFY(!m_studio->loginDialog()->isBusy());
        QTRY_COMPARE(router->state(), ZRServerInterface::State::Disconnected);
        QCOMPARE(accepted, 2);
        QVERIFY(!router->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly)
                     ->isActive()); // nothing left to call it again
    }

    void serverLostWhileTheDialogWaitsIsLeftAlone()
    {
        startStudio();
        ZRServerInterface *router = m_studio->router();
        router->setReconnectDelays(10, 20);
        submitLogin(m_studio->loginDialog(), QStringLiteral("root"), QStringLiteral("wrong"));
        QTRY_COMPARE(m_studio->phase(), Phase::Login);
        QCOMPARE(router->state(), ZRServerInterface::State::Connected);
        // The operator reads the refusal, and meanwhile the server goes away.
        m_server->engine->stop();
        QTRY_COMPARE(router->state(), ZRServerInterface::State::Disconnected);
        QVERIFY(!router->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly)->isActive());
        QCOMPARE(m_studio->phase(), Phase::Login);
    }

    void anotherOperatorGetsScreensOfHisOwn()
    {
        auto root = m_server->rootClient();
        QVERIFY(
            addUser(*root, QStringLiteral("mobile"), QLatin1String(zeral::roletemplate::MOBILE)));
        QVERIFY(logIn(QStringLiteral("root"), RootPassword));
        QPointer<PluginWidget> first
            = m_studio->mainWindow()->screenByName(QStringLiteral("testscreen"));
        QVERIFY(first);
        m_studio->mainWindow()->findChild<QAction *>(QStringLiteral("actionLogout"))->trigger();
        QTRY_COMPARE(m_studio->phase(), Phase::Login);
        QVERIFY(!AuthData::isLoggedIn());
        QVERIFY(zeral::LocalStorage::instance()
                    ->constObjects(QLatin1String(zeral::USER_DATANAME))
                    .isEmpty());
        QTRY_VERIFY(!first); // the last operator's screens are gone

        submitLogin(m_studio->loginDialog(), QStringLiteral("mobile"), QStringLiteral("Passw0rd"));
        QTRY_COMPARE(m_studio->phase(), Phase::Running);
        QVERIFY(!m_studio->mainWindow()->screenByName(QStringLiteral("testscreen")));
        m_studio->mainWindow()->findChild<QAction *>(QStringLiteral("actionLogout"))->trigger();
        QTRY_COMPARE(m_studio->phase(), Phase::Login);

        submitLogin(m_studio->loginDialog(), QStringLiteral("root"), RootPassword);
        QTRY_COMPARE(m_studio->phase(), Phase::Running);
        PluginWidget *again = m_studio->mainWindow()->screenByName(QStringLiteral("testscreen"));
        QVERIFY(again);
        // A new instance from the plugin, which starts its life anew.
        QCOMPARE(callsOf(again).value(0), QStringLiteral("init:testscreen"));
        QCOMPARE(callsOf(again).filter(QStringLiteral("init:")).size(), 1);
    }

    void screenNotForTheOperatorIsLeftOut()
    {
        auto root = m_server->rootClient();
        QVERIFY(
            addUser(*root, QStringLiteral("mobile"), QLatin1String(zeral::roletemplate::MOBILE)));
        QVERIFY(logIn(QStringLiteral("mobile"), QStringLiteral("Passw0rd")));
        MainWindow *window = m_studio->mainWindow();
        QVERIFY(!window->screenByName(QStringLiteral("testscreen")));
        QVERIFY(!window->screenByName(QStringLiteral("employees")));
        QCOMPARE(window->screenCount(), 0);
        QVERIFY(window->notice()->isVisible());
    }

    void firstStartOfTheEmbeddedServerAsksForRootPassword()
    {
        StudioOptions options;
        options.databasePath = m_settings->filePath(QStringLiteral("embedded.db"));
        options.pluginDir = QStringLiteral(ZR_TEST_PLUGIN_DIR);
        const QString password = QStringLiteral("Sup3rSecret");
        ModalAnswerer answerer([password](QWidget *modal) {
            auto *dialog = qobject_cast<RootPasswordDialog *>(modal);
            QVERIFY(dialog);
            const QList<KPasswordLineEdit *> fields = dialog->findChildren<KPasswordLineEdit *>();
            QCOMPARE(fields.size(), 2);
            for (KPasswordLineEdit *field : fields)
                field->setPassword(password);
            QPushButton *ok = dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok);
            QVERIFY(ok->isEnabled());
            ok->click();
        });
        m_studio = std::make_unique<StudioController>(options);
        m_studio->start();
        QTRY_COMPARE_WITH_TIMEOUT(m_studio->phase(), Phase::Login, 30000);
        QVERIFY(answerer.answered());
        QVERIFY(m_studio->embeddedServer()->isRunning());
        QCOMPARE(m_studio->loginDialog()->login(), QStringLiteral("root"));
        submitLogin(m_studio->loginDialog(), QStringLiteral("root"), password);
        QTRY_COMPARE_WITH_TIMEOUT(m_studio->phase(), Phase::Running, 20000);
        QCOMPARE(m_studio->router()->port(), m_studio->embeddedServer()->port());
        m_studio->mainWindow()->close();
        QTRY_COMPARE(m_studio->phase(), Phase::Finished);
        QVERIFY(!m_studio->embeddedServer()->isRunning());
    }

private:
};

QTEST_MAIN(StudioTest)
#include "tst_studio.moc"
