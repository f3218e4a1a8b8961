// The users screen as the studio sees it: its identity and commands, its tabs by the
// operator's rights, the switching of pages and the keys of its tables.
#include "userctlharness.h"

#include <host/gui/widgets/zrstackedtoolbars.h>

#include <QHostInfo>
#include <QKeyEvent>
#include <QTabBar>
#include <QTabWidget>
#include <QTimer>
#include <QtTest>

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
        QList<QHostAddress> list;
        for (const QString &text : qAsConst(addresses))
            list.append(QHostAddress(text));
        QCOMPARE(UserCtl::composeClientId(QStringLiteral("userctl"), QStringLiteral("3"), list,
                                          1700000000),
                 QStringLiteral("userctl 3 ") + address + QStringLiteral(" 1700000000"));
    }

    void initRegistersTheThreeCommands()
    {
        UserCtlHarness h(UserCtlHarness::allRoles(), false);
        Settings::setValue(QStringLiteral("userctl/id"), QStringLiteral("7"));
        auto *screen = new UserCtl;
        const QList<CommandType> types = screen->init(&h.server, QStringLiteral("userctl"));
        QCOMPARE(screen->clientId().section(QLatin1Char(' '), 0, 1), QStringLiteral("userctl 7"));
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
        qint32 status = 0;
        h.server.send(Command::named(names.at(0)),
                      [&status](Command &answer) { status = answer.status; });
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
        QTest::addRow("no mobile")
            << UserCtlHarness::allRolesBut("RL_USER_MOBILE_SHOW") << true << true << false;
        QTest::addRow("no sessions")
            << UserCtlHarness::allRolesBut("RL_USER_ONLINE_SHOW") << true << false << true;
        QTest::addRow("only show") << QStringList{"RL_USER_SHOW"} << true << true << true;
        QTest::addRow("nothing") << QStringList{} << false << true << true;
        QTest::addRow("lower case")
            << QStringList{"rl_user_show", "rl_user_mobile_show"} << false << true << true;
    }
    void tabsByRights()
    {
        QFETCH(QStringList, roles);
        UserCtlHarness h(roles);
        QTEST(h.screen->canShow(), "canShow");
        const QList<PLUGIN_TAB> tabs = h.screen->tabList();
        QCOMPARE(tabs.size(), 3); // hidden tabs are listed all the same
        for (int i = 0; i < 3; ++i)
            QCOMPARE(tabs.at(i).index, i);
        QCOMPARE(tabs.at(0).hidden, false);
        QTEST(tabs.at(1).hidden, "mobileHidden");
        QTEST(tabs.at(2).hidden, "sessionsHidden");
        QCOMPARE(h.child("actionAddUser")->isEnabled(), roles.contains("RL_USER_CREATE"));
    }

    void switchingTabs()
    {
        UserCtlHarness h;
        auto *pages = h.child<QTabWidget>("tabWidget");
        QVERIFY(pages->tabBar()->isHidden());
        QTimer *poll = nullptr;
        for (QTimer *timer : h.screen->findChildren<QTimer *>()) {
            if (timer->interval() == 10000)
                poll = timer;
        }
        QVERIFY(poll);

        h.screen->onTabActivated(2);
        QCOMPARE(pages->currentIndex(), 2);
        QCOMPARE(h.screen->findChild<ZRStackedToolBars *>()->currentIndex(), 2);
        QVERIFY(h.screen->tabList().at(2).current);
        QVERIFY(!h.screen->tabList().at(0).current);
        QVERIFY(poll->isActive());

        // An index beyond the pages keeps the page, and the screen is still activated.
        const int asked = h.sent(command::RoleTemplateInherit).size();
        QVERIFY(QMetaObject::invokeMethod(h.screen, "setCurrentView", Q_ARG(int, 3)));
        QCOMPARE(pages->currentIndex(), 2);
        QCOMPARE(h.sent(command::RoleTemplateInherit).size(), asked + 1);

        h.screen->onTabActivated(1);
        QVERIFY(!poll->isActive());
        h.screen->onTabActivated(2);
        emit h.screen->deactivate();
        QVERIFY(!poll->isActive());
    }

    void keyTable_data()
    {
        QTest::addColumn<QString>("table");
        QTest::addColumn<QList<int>>("taken");
        QTest::addColumn<QList<int>>("passed");
        const QList<int> users{Qt::Key_Insert, Qt::Key_Return, Qt::Key_Enter, Qt::Key_Delete};
        QTest::addRow("users") << "usersList" << users << QList<int>{Qt::Key_F5, Qt::Key_A};
        QTest::addRow("mobile") << "mobileUsersList" << users << QList<int>{Qt::Key_Down};
        QTest::addRow("sessions") << "connectedUsersList" << QList<int>{Qt::Key_Delete, Qt::Key_F5}
                                  << QList<int>{Qt::Key_Insert, Qt::Key_Return};
        QTest::addRow("another widget") << "tabWidget" << QList<int>{} << users;
    }
    void keyTable()
    {
        QFETCH(QString, table);
        QFETCH(QList<int>, taken);
        QFETCH(QList<int>, passed);
        UserCtlHarness h;
        auto *watched = h.screen->findChild<QWidget *>(table);
        QVERIFY(watched);
        for (const int key : taken + passed) {
            QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
            QCOMPARE(h.screen->eventFilter(watched, &press), taken.contains(key));
            QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier);
            QVERIFY(!h.screen->eventFilter(watched, &release));
        }
    }
};

QTEST_MAIN(TestUserCtlScreen)
#include "tst_userctlscreen.moc"
