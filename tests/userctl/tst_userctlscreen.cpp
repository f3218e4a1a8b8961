// The users screen as the studio sees it: its identity and commands, its tabs by the
// operator's rights, the switching of pages, the tool bar and the keys of its tables.
#include "userctlharness.h"

#include <host/gui/widgets/zrstackedtoolbars.h>
#include <host/gui/widgets/zrtableview.h>

#include <QAction>
#include <QHostInfo>
#include <QKeyEvent>
#include <QSignalSpy>
#include <QTabBar>
#include <QTabWidget>
#include <QToolBar>
#include <QTimer>
#include <QtTest>

namespace {

QList<QHostAddress> addresses(const QStringList &texts)
{
    QList<QHostAddress> list;
    for (const QString &text : texts)
        list.append(QHostAddress(text));
    return list;
}

QStringList withoutRole(const QString &role)
{
    QStringList roles = UserCtlHarness::allRoles();
    roles.removeAll(role);
    return roles;
}

QTimer *sessionTimer(UserCtl *screen)
{
    for (QTimer *timer : screen->findChildren<QTimer *>()) {
        if (timer->interval() == 10000)
            return timer;
    }
    return nullptr;
}

} // namespace

class TestUserCtlScreen : public QObject
{
    Q_OBJECT
private slots:
    void clientIdentity_data()
    {
        QTest::addColumn<QStringList>("addresses");
        QTest::addColumn<QString>("address");
        const QString host = QHostInfo::localHostName();
        QTest::addRow("loopback only") << QStringList{"127.0.0.1", "::1"} << host;
        QTest::addRow("nothing at all") << QStringList{} << host;
        QTest::addRow("first outside address")
            << QStringList{"127.0.0.1", "10.1.2.3", "192.168.0.7"} << "10.1.2.3";
        QTest::addRow("ipv6") << QStringList{"::1", "fe80::1"} << "fe80::1";
        // Only one of each loopback address is taken out.
        QTest::addRow("loopback twice") << QStringList{"127.0.0.1", "127.0.0.1"} << "127.0.0.1";
    }
    void clientIdentity()
    {
        QFETCH(QStringList, addresses);
        QFETCH(QString, address);
        QCOMPARE(UserCtl::composeClientId(QStringLiteral("userctl"), QStringLiteral("3"),
                                          ::addresses(addresses), 1700000000),
                 QStringLiteral("userctl 3 ") + address + QStringLiteral(" 1700000000"));
    }

    void initRegistersTheThreeCommands()
    {
        UserCtlHarness h(UserCtlHarness::allRoles(), false);
        Settings::setValue(QStringLiteral("userctl/id"), QStringLiteral("7"));
        auto *screen = new UserCtl;
        const QList<CommandType> types = screen->init(&h.server, QStringLiteral("userctl"));
        QVERIFY(screen->clientId().startsWith(QStringLiteral("userctl 7 ")));
        QCOMPARE(screen->clientId().split(QLatin1Char(' ')).size(), 4);
        QStringList names;
        for (const CommandType &type : types) {
            QCOMPARE(type.type, zeral::proto::NamedCommand);
            names.append(type.name);
        }
        QCOMPARE(names, (QStringList{QStringLiteral("fingerprint.finished:") + screen->clientId(),
                                     QStringLiteral("show:userctl:mobileuserwizards"),
                                     QStringLiteral("show:userctl:mobileuserproperties")}));

        // The enrolment screen's notice reaches this instance and is acknowledged.
        h.server.registerPlugin(screen, types);
        Command notice = Command::named(names.at(0));
        qint32 status = 0;
        h.server.send(notice, [&status](Command &answer) { status = answer.status; });
        QTRY_COMPARE(status, qint32(zeral::proto::StatusOk));
        delete screen;
    }

    void tabsByRights_data()
    {
        QTest::addColumn<QStringList>("roles");
        QTest::addColumn<bool>("canShow");
        QTest::addColumn<bool>("mobileHidden");
        QTest::addColumn<bool>("sessionsHidden");
        QTest::addRow("all") << UserCtlHarness::allRoles() << true << false << false;
        QTest::addRow("no mobile") << withoutRole("RL_USER_MOBILE_SHOW") << true << true << false;
        QTest::addRow("no sessions") << withoutRole("RL_USER_ONLINE_SHOW") << true << false << true;
        QTest::addRow("only show") << QStringList{"RL_USER_SHOW"} << true << true << true;
        QTest::addRow("nothing") << QStringList{} << false << true << true;
        QTest::addRow("lower case")
            << QStringList{"rl_user_show", "rl_user_mobile_show"} << false << true << true;
    }
    void tabsByRights()
    {
        QFETCH(QStringList, roles);
        QFETCH(bool, canShow);
        QFETCH(bool, mobileHidden);
        QFETCH(bool, sessionsHidden);
        UserCtlHarness h(roles);
        QCOMPARE(h.screen->canShow(), canShow);
        const QList<PLUGIN_TAB> tabs = h.screen->tabList();
        QCOMPARE(tabs.size(), 3); // hidden tabs are listed all the same
        QCOMPARE(tabs.at(0).name, QStringLiteral("Пользователи"));
        QCOMPARE(tabs.at(1).name, QStringLiteral("Мобильные пользователи"));
        QCOMPARE(tabs.at(2).name, QStringLiteral("Активные сессии"));
        QCOMPARE(tabs.at(0).icon.name(), QStringLiteral("userctl"));
        QCOMPARE(tabs.at(1).icon.name(), QStringLiteral("common-mobile"));
        QCOMPARE(tabs.at(2).icon.name(), QStringLiteral("action-login"));
        for (int i = 0; i < 3; ++i)
            QCOMPARE(tabs.at(i).index, i);
        QCOMPARE(tabs.at(0).hidden, false);
        QCOMPARE(tabs.at(1).hidden, mobileHidden);
        QCOMPARE(tabs.at(2).hidden, sessionsHidden);
        QCOMPARE(h.child<QAction>("actionAddUser")->isEnabled(),
                 roles.contains(QStringLiteral("RL_USER_CREATE")));
    }

    void switchingTabs()
    {
        UserCtlHarness h;
        auto *pages = h.child<QTabWidget>("tabWidget");
        QVERIFY(pages->tabBar()->isHidden());
        QTimer *poll = sessionTimer(h.screen);
        QVERIFY(poll);

        h.screen->onTabActivated(2);
        QCOMPARE(pages->currentIndex(), 2);
        QCOMPARE(h.screen->findChild<ZRStackedToolBars *>()->currentIndex(), 2);
        QVERIFY(h.screen->tabList().at(2).current);
        QVERIFY(!h.screen->tabList().at(0).current);
        QVERIFY(poll->isActive());

        // An index beyond the pages keeps the page, and the screen is still activated.
        QVERIFY(QMetaObject::invokeMethod(h.screen, "setCurrentView", Q_ARG(int, 3)));
        QCOMPARE(pages->currentIndex(), 2);
        QVERIFY(poll->isActive());

        h.screen->onTabActivated(1);
        QCOMPARE(pages->currentIndex(), 1);
        QVERIFY(!poll->isActive());
        h.screen->onTabActivated(2);
        emit h.screen->deactivate();
        QVERIFY(!poll->isActive());
    }

    void formStartsAsDesigned_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("icon");
        QTest::addColumn<bool>("enabled");
        QTest::addRow("add") << "actionAddUser"
                             << "Добавить"
                             << "action-add" << true;
        QTest::addRow("scan") << "actionFingerptint"
                              << "Сканировать"
                              << "action-finger" << false;
        QTest::addRow("remove") << "actionRemove"
                                << "Удалить"
                                << "action-remove" << false;
        QTest::addRow("properties") << "actionProperties"
                                    << "Свойства"
                                    << "action-config" << false;
        QTest::addRow("block") << "actionBlockChange"
                               << "Разблокировать"
                               << "action-lock" << false;
        QTest::addRow("disconnect") << "actionDisconnect"
                                    << "Отключить"
                                    << "common-cancel" << false;
        QTest::addRow("refresh") << "actionRefresh"
                                 << "Обновить"
                                 << "action-update" << true;
        // Follows the empty selection from the start: nothing to block.
        QTest::addRow("mobile block")
            << "actionBlockMobileChange" << "Разблокировать" << "action-unlock" << false;
    }
    void formStartsAsDesigned()
    {
        QFETCH(QString, action);
        QFETCH(QString, text);
        QFETCH(QString, icon);
        QFETCH(bool, enabled);
        UserCtlHarness h;
        auto *item = h.screen->findChild<QAction *>(action);
        QVERIFY(item);
        QCOMPARE(item->text(), text);
        QCOMPARE(item->icon().name(), icon);
        QCOMPARE(item->isEnabled(), enabled);
        QCOMPARE(h.screen->windowTitle(), QStringLiteral("Пользователи"));
        auto *search = h.child<QToolBar>("toolBar")->findChild<SearchWidget *>();
        QVERIFY(search);
        QCOMPARE(search->maximumWidth(), 400);
        QVERIFY(!search->isAdvancedButtonShown());
    }

    void keyTable_data()
    {
        QTest::addColumn<QString>("table");
        QTest::addColumn<int>("key");
        QTest::addColumn<bool>("taken");
        QTest::addRow("users insert") << "usersList" << int(Qt::Key_Insert) << true;
        QTest::addRow("users return") << "usersList" << int(Qt::Key_Return) << true;
        QTest::addRow("users enter") << "usersList" << int(Qt::Key_Enter) << true;
        QTest::addRow("users delete") << "usersList" << int(Qt::Key_Delete) << true;
        QTest::addRow("users f5") << "usersList" << int(Qt::Key_F5) << false;
        QTest::addRow("users letter") << "usersList" << int(Qt::Key_A) << false;
        QTest::addRow("mobile insert") << "mobileUsersList" << int(Qt::Key_Insert) << true;
        QTest::addRow("mobile enter") << "mobileUsersList" << int(Qt::Key_Enter) << true;
        QTest::addRow("mobile delete") << "mobileUsersList" << int(Qt::Key_Delete) << true;
        QTest::addRow("mobile down") << "mobileUsersList" << int(Qt::Key_Down) << false;
        QTest::addRow("sessions delete") << "connectedUsersList" << int(Qt::Key_Delete) << true;
        QTest::addRow("sessions f5") << "connectedUsersList" << int(Qt::Key_F5) << true;
        QTest::addRow("sessions insert") << "connectedUsersList" << int(Qt::Key_Insert) << false;
        QTest::addRow("sessions return") << "connectedUsersList" << int(Qt::Key_Return) << false;
        QTest::addRow("another widget") << "tabWidget" << int(Qt::Key_Delete) << false;
    }
    void keyTable()
    {
        QFETCH(QString, table);
        QFETCH(int, key);
        QFETCH(bool, taken);
        UserCtlHarness h;
        auto *watched = h.screen->findChild<QWidget *>(table);
        QVERIFY(watched);
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QCOMPARE(h.screen->eventFilter(watched, &press), taken);
        QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier);
        QVERIFY(!h.screen->eventFilter(watched, &release));
    }
};

QTEST_MAIN(TestUserCtlScreen)
#include "tst_userctlscreen.moc"
