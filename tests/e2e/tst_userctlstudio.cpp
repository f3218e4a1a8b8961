// The users screen in the studio: loaded from the studio's plugin folder, logged in against a
// real server on a temporary database over loopback TCP, with its tabs by the operator's rights.
#include <app/startup/studiocontroller.h>
#include <app/window/mainwindow.h>

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/core/zrdatastream.h>
#include <host/gui/models/itemroles.h>
#include <host/gui/widgets/messagewidget.h>
#include <host/gui/widgets/pluginwidget.h>
#include <host/gui/widgets/searchwidget.h>
#include <host/gui/widgets/zractionstoolbar.h>
#include <shared/rolenames.h>
#include <tests/e2e/studiofixture.h>

#include <QAction>
#include <QTabWidget>
#include <QTableView>
#include <QtTest>

using namespace harness;

class UserCtlStudioTest : public QObject, protected StudioFixture
{
    Q_OBJECT
public:
    UserCtlStudioTest()
        : StudioFixture(QStringLiteral(ZR_BINARY_DIR "/plugins"))
    {}

private slots:
    void init() { QCOMPARE(setUp(), QString()); }
    void cleanup() { tearDown(); }

    void screenAndTabsByRights_data()
    {
        QTest::addColumn<QString>("roleTemplate");
        QTest::addColumn<bool>("shown");
        QTest::addColumn<bool>("mobileTab");
        QTest::addColumn<bool>("sessionsTab");
        namespace t = zeral::roletemplate;
        QTest::addRow("supervisor") << t::SUPERVISOR << true << true << true;
        QTest::addRow("operator") << t::OPERATOR << true << false << true;
        QTest::addRow("hr") << t::HR << true << true << false;
        QTest::addRow("mobile") << t::MOBILE << false << false << false;
    }
    void screenAndTabsByRights()
    {
        QFETCH(QString, roleTemplate);
        QFETCH(bool, shown);
        QFETCH(bool, mobileTab);
        QFETCH(bool, sessionsTab);
        if (roleTemplate == QLatin1String(zeral::roletemplate::SUPERVISOR)) {
            QVERIFY(logIn(QStringLiteral("root"), QStringLiteral("RootPass1")));
        } else {
            QVERIFY(addUser(*m_server->rootClient(), QStringLiteral("person"), roleTemplate));
            QVERIFY(logIn(QStringLiteral("person"), QStringLiteral("Passw0rd")));
        }

        MainWindow *window = m_studio->mainWindow();
        PluginWidget *screen = window->screenByName(QStringLiteral("userctl"));
        QCOMPARE(screen != nullptr, shown);
        if (!screen)
            return;
        QVERIFY(window->showTab(screen, 0));
        QCOMPARE(window->showTab(screen, 1), mobileTab);
        QCOMPARE(window->showTab(screen, 2), sessionsTab);

        // The tool bar holds the page of the tab in front and the filter box.
        auto *toolBar = screen->findChild<ZRActionsToolBar *>(QStringLiteral("toolBar"));
        QVERIFY(toolBar && toolBar->isVisible());
        auto *search = toolBar->findChild<SearchWidget *>();
        QVERIFY(search && search->isVisible());
        auto *pages = screen->findChild<QTabWidget *>(QStringLiteral("tabWidget"));
        QCOMPARE(pages->currentIndex(), window->currentTab());
    }

    void listsFollowAnotherSession()
    {
        auto root = m_server->rootClient();
        const zeral::TYPE_ID ivanov = addUser(*root, QStringLiteral("ivanov"),
                                              QLatin1String(zeral::roletemplate::OPERATOR));
        QVERIFY(
            addUser(*root, QStringLiteral("mobile"), QLatin1String(zeral::roletemplate::MOBILE)));
        QVERIFY(logIn(QStringLiteral("root"), QStringLiteral("RootPass1")));
        PluginWidget *screen = m_studio->mainWindow()->screenByName(QStringLiteral("userctl"));
        auto *users = screen->findChild<QTableView *>(QStringLiteral("usersList"));
        auto *mobile = screen->findChild<QTableView *>(QStringLiteral("mobileUsersList"));
        QTRY_COMPARE(loginsOf(users), (QStringList{"ivanov", "root"}));
        QTRY_COMPARE(loginsOf(mobile), QStringList{"mobile"});

        // Blocked by another session: the row follows through the store's push.
        const QHash<QString, QString> blocked{
            {QStringLiteral("PT_OBJECTSTATE"), QStringLiteral("b")}};
        QCOMPARE(root->request(cmd::UpdateObject,
                               ZRDataStream::pack(quint32(ivanov), QStringLiteral("OT_USER"),
                                                  quint32(0), blocked))
                     .status,
                 qint32(zeral::proto::StatusOk));
        QTRY_COMPARE_WITH_TIMEOUT(
            users->model()->index(0, 5).data(ItemRoles::ObjectState).toString(),
            QStringLiteral("b"), 1000);
    }

    void sessionsOfOthersAndTheirDisconnect()
    {
        QVERIFY(addUser(*m_server->rootClient(), QStringLiteral("person"),
                        QLatin1String(zeral::roletemplate::OPERATOR)));
        auto other = m_server->client();
        QCOMPARE(other->login(QStringLiteral("person"), QStringLiteral("Passw0rd")).status,
                 qint32(zeral::proto::StatusOk));
        QVERIFY(logIn(QStringLiteral("root"), QStringLiteral("RootPass1")));
        MainWindow *window = m_studio->mainWindow();
        PluginWidget *screen = window->screenByName(QStringLiteral("userctl"));
        QVERIFY(window->showTab(screen, 2));
        auto *sessions = screen->findChild<QTableView *>(QStringLiteral("connectedUsersList"));
        sessions->sortByColumn(0, Qt::AscendingOrder);
        QTRY_COMPARE(loginsOf(sessions, false), (QStringList{"person", "root"}));

        // Cutting one's own session is the server's refusal, told in one sentence.
        auto *disconnect = screen->findChild<QAction *>(QStringLiteral("actionDisconnect"));
        sessions->selectRow(1);
        QVERIFY(disconnect->isEnabled());
        disconnect->trigger();
        QTRY_COMPARE(screen->popups().size(), 1);
        QCOMPARE(screen->popups().first()->text(), QStringLiteral("Вы не можете отключить себя!"));

        sessions->selectRow(0);
        disconnect->trigger();
        QTRY_VERIFY(other->isClosed());
        QVERIFY(QMetaObject::invokeMethod(screen, "getSessionsInfo"));
        QTRY_COMPARE(loginsOf(sessions, false), QStringList{"root"});
    }

private:
    // Logins of a table's rows, top to bottom; the user tables show the uid in column 0.
    static QStringList loginsOf(const QTableView *table, bool userTable = true)
    {
        QStringList logins;
        const QAbstractItemModel *model = table->model();
        for (int row = 0; row < model->rowCount(); ++row) {
            const QModelIndex first = model->index(row, 0);
            logins.append(userTable ? first.data(ItemRoles::SortText).toString()
                                    : first.data().toString());
        }
        return logins;
    }
};

QTEST_MAIN(UserCtlStudioTest)
#include "tst_userctlstudio.moc"
