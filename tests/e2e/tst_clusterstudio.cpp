// A studio on one of two servers over one PostgreSQL database: it sees a user blocked through
// the other server within a second, lists the sessions held there and disconnects one of
// them from its sessions tab. Runs where the tests run on PostgreSQL, and skips saying so on
// SQLite, where one server owns its database file.

#include <app/startup/studiocontroller.h>
#include <app/window/mainwindow.h>

#include <host/gui/models/itemroles.h>
#include <host/gui/widgets/pluginwidget.h>
#include <shared/rolenames.h>
#include <tests/e2e/studiofixture.h>

#include <QAction>
#include <QElapsedTimer>
#include <QTableView>
#include <QtTest>

using namespace harness;

class ClusterStudioTest : public QObject, protected StudioFixture
{
    Q_OBJECT
public:
    ClusterStudioTest()
        : StudioFixture(QStringLiteral(ZR_BINARY_DIR "/plugins"))
    {}

private slots:
    void initTestCase()
    {
        if (!onPostgres())
            QSKIP("several servers share a PostgreSQL database only");
        ZR_SKIP_WITHOUT_TEST_DATABASE();
    }
    // Server A is the fixture's, the studio's; server B shares its database.
    void init()
    {
        QCOMPARE(setUp(), QString());
        m_other = std::make_unique<Server>();
        m_other->databasePath = m_server->databasePath;
        QCOMPARE(m_other->start(), QString());
    }
    void cleanup()
    {
        m_studio.reset();
        m_other.reset();
        tearDown();
    }

    void userBlockedThroughTheOtherServer()
    {
        auto rootB = m_other->rootClient();
        const zeral::TYPE_ID bob
            = addUser(*rootB, QStringLiteral("bob"), QLatin1String(zeral::roletemplate::OPERATOR));
        QVERIFY(bob);
        QVERIFY(logIn(QStringLiteral("root"), QStringLiteral("RootPass1")));
        PluginWidget *screen = m_studio->mainWindow()->screenByName(QStringLiteral("userctl"));
        auto *users = screen->findChild<QTableView *>(QStringLiteral("usersList"));
        QTRY_VERIFY(rowOf(users, QStringLiteral("bob")) >= 0);
        QCOMPARE(stateOf(users, QStringLiteral("bob")), QString());

        QElapsedTimer sinceBlock;
        sinceBlock.start();
        QCOMPARE(updateUser(*rootB, bob, {{QStringLiteral("PT_OBJECTSTATE"), QStringLiteral("b")}})
                     .status,
                 qint32(zeral::proto::StatusOk));
        QTRY_COMPARE_WITH_TIMEOUT(stateOf(users, QStringLiteral("bob")), QStringLiteral("b"),
                                  1000);
        QVERIFY2(sinceBlock.elapsed() < 1000, qPrintable(QString::number(sinceBlock.elapsed())));
    }

    void sessionOnTheOtherServerDisconnected()
    {
        QVERIFY(addUser(*m_other->rootClient(), QStringLiteral("carol"),
                        QLatin1String(zeral::roletemplate::OPERATOR)));
        auto carolOnB = m_other->client();
        QCOMPARE(carolOnB->login(QStringLiteral("carol"), QStringLiteral("Passw0rd")).status,
                 qint32(zeral::proto::StatusOk));
        QVERIFY(logIn(QStringLiteral("root"), QStringLiteral("RootPass1")));
        MainWindow *window = m_studio->mainWindow();
        PluginWidget *screen = window->screenByName(QStringLiteral("userctl"));
        QVERIFY(window->showTab(screen, 2));
        auto *sessions = screen->findChild<QTableView *>(QStringLiteral("connectedUsersList"));
        sessions->sortByColumn(0, Qt::AscendingOrder);
        const auto carolsRow = [sessions] {
            const QAbstractItemModel *model = sessions->model();
            for (int row = 0; row < model->rowCount(); ++row) {
                if (model->index(row, 0).data().toString() == QLatin1String("carol"))
                    return row;
            }
            return -1;
        };
        // The session held by B is listed on A.
        QTRY_VERIFY_WITH_TIMEOUT(
            (QMetaObject::invokeMethod(screen, "getSessionsInfo"), carolsRow() >= 0), 5000);

        sessions->selectRow(carolsRow());
        auto *disconnect = screen->findChild<QAction *>(QStringLiteral("actionDisconnect"));
        QVERIFY(disconnect->isEnabled());
        disconnect->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(carolOnB->isClosed(), 2000);
        QCOMPARE(carolOnB->pushesNamed(cmd::SessionClosed).size(), 1);
        QTRY_VERIFY_WITH_TIMEOUT(
            (QMetaObject::invokeMethod(screen, "getSessionsInfo"), carolsRow() < 0), 5000);
    }

private:
    // The row of a login in a user table (column 0 holds the uid, its sort text the login).
    static int rowOf(const QTableView *table, const QString &login)
    {
        const QAbstractItemModel *model = table->model();
        for (int row = 0; row < model->rowCount(); ++row) {
            if (model->index(row, 0).data(ItemRoles::SortText).toString() == login)
                return row;
        }
        return -1;
    }
    static QString stateOf(const QTableView *table, const QString &login)
    {
        const int row = rowOf(table, login);
        return row < 0 ? QStringLiteral("(none)")
                       : table->model()->index(row, 5).data(ItemRoles::ObjectState).toString();
    }

    std::unique_ptr<Server> m_other;
};

QTEST_MAIN(ClusterStudioTest)
#include "tst_clusterstudio.moc"
