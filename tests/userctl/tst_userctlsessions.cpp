// The sessions tab of the users screen: each poll rebuilds the table, keeps the selected
// session by its address, colours the rows by who may be cut, and disconnects without asking.
#include "userctlharness.h"

#include <shared/connecteduserinfo.h>

#include <QKeyEvent>
#include <QtTest>

namespace {

const QDateTime ServerNow = QDateTime::fromSecsSinceEpoch(1800000000);

zeral::ConnectedUserInfo session(const QString &login, const QString &address, const QByteArray &id,
                                 int minutesAgo = 10, const QDateTime &now = ServerNow)
{
    return {login, address, now.addSecs(-60 * minutesAgo), now.addSecs(-60), id};
}

} // namespace

class TestUserCtlSessions : public QObject
{
    Q_OBJECT

    // The screen on its sessions page; every poll is asked by F5 and answered by the test.
    struct Screen : UserCtlHarness
    {
        explicit Screen(const QStringList &roles = UserCtlHarness::allRoles())
            : UserCtlHarness(roles)
        {
            screen->onTabActivated(2);
        }
        void poll(const QList<zeral::ConnectedUserInfo> &list,
                  const QDateTime &serverTime = ServerNow)
        {
            QHash<QByteArray, zeral::ConnectedUserInfo> hash;
            for (const zeral::ConnectedUserInfo &info : list)
                hash.insert(info.sessionId, info);
            answerPoll(zeral::proto::StatusOk, ZRDataStream::pack(hash, serverTime));
        }
        void answerPoll(qint32 status, const QByteArray &answer)
        {
            QKeyEvent f5(QEvent::KeyPress, Qt::Key_F5, Qt::NoModifier);
            QVERIFY(screen->eventFilter(sessions, &f5));
            server.answer(sent(command::GetSessionsInfo).last(), status, answer);
        }
        QStringList column(int column) const
        {
            QStringList values;
            for (int row = 0; row < sessions->model()->rowCount(); ++row)
                values.append(sessions->model()->index(row, column).data().toString());
            return values;
        }
        void selectAddress(const QString &address)
        {
            const int row = column(1).indexOf(address);
            if (row >= 0)
                sessions->selectRow(row);
        }
    };

private slots:
    void init()
    {
        UserCtlHarness::storeUsers({UserCtlHarness::user(1, "root", "RT_SUPERVISOR"),
                                    UserCtlHarness::user(2, "admin", "RT_ADMINISTRATOR"),
                                    UserCtlHarness::user(3, "ivanov", "RT_OPERATOR"),
                                    UserCtlHarness::user(4, "petrov", "RT_OPERATOR")});
    }
    void cleanup() { zeral::LocalStorage::instance()->clear(); }

    void pollRebuildsTheTable()
    {
        Screen h;
        h.poll({session("ivanov", "10.0.0.5:5000", "s1", 90),
                session("nobody", "10.0.0.6:5000", "s2"), session("ghost", QString(), "s3")});
        QCOMPARE(h.sessions->model()->rowCount(), 2); // the one without an address is left out
        QVERIFY(h.sessions->isColumnHidden(6) && h.sessions->isColumnHidden(7));
        h.sessions->sortByColumn(0, Qt::AscendingOrder);
        QCOMPARE(h.column(0), (QStringList{"ivanov", "nobody"}));
        // Durations by the server's clock; a login the screen doesn't know has no template
        // and no user id.
        QCOMPARE(h.column(4).first(), QStringLiteral("01:30:00"));
        QCOMPARE(h.column(2).last(), QStringLiteral("Не определено"));
        QCOMPARE(h.column(7), (QStringList{"3", "0"}));

        // A failed poll leaves the table as it was.
        h.answerPoll(zeral::proto::StatusInternal, ZRDataStream::pack(QStringLiteral("boom")));
        QCOMPARE(h.sessions->model()->rowCount(), 2);
        // Without the server's time the local clock counts.
        const QDateTime now = QDateTime::currentDateTime();
        h.poll({session("ivanov", "10.0.0.5:5000", "s1", 120, now)}, QDateTime());
        QVERIFY2(h.column(4).value(0).startsWith("02:00:0"), qPrintable(h.column(4).value(0)));
        h.poll({session("ghost", QString(), "s3")});
        QCOMPARE(h.sessions->model()->rowCount(), 0);
    }

    // The poll remembers the users of the logins it saw; a change of the users is seen at once.
    void changedUsersShowAtTheNextPoll()
    {
        const QStringList roles = UserCtlHarness::allRoles();
        Screen h(roles);
        UserCtlHarness::logIn(roles, QStringLiteral("me"), 50, QStringLiteral("RT_OPERATOR"));
        h.sessions->sortByColumn(1, Qt::AscendingOrder);
        const QList<zeral::ConnectedUserInfo> polled{session("ivanov", "10.0.0.1:1", "a"),
                                                     session("newbie", "10.0.0.2:1", "b")};
        h.poll(polled);
        QCOMPARE(h.column(6), (QStringList{"1", "1"}));
        QCOMPARE(h.column(7), (QStringList{"3", "0"}));

        zeral::LocalStorage::instance()->applyChanged(
            QStringLiteral("user"), {UserCtlHarness::user(3, "ivanov", "RT_ADMINISTRATOR"),
                                     UserCtlHarness::user(5, "newbie", "RT_OPERATOR")});
        h.poll(polled);
        QCOMPARE(h.column(6), (QStringList{"4", "1"}));
        QCOMPARE(h.column(7), (QStringList{"3", "5"}));

        zeral::LocalStorage::instance()->applyRemoved(QStringLiteral("user"), {5});
        h.poll(polled);
        QCOMPARE(h.column(7), (QStringList{"3", "0"}));
    }

    void selectionKeptByAddress()
    {
        Screen h;
        h.sessions->sortByColumn(1, Qt::DescendingOrder);
        h.poll({session("ivanov", "10.0.0.1:1", "a"), session("petrov", "10.0.0.2:1", "b"),
                session("admin", "10.0.0.3:1", "c")});
        h.selectAddress(QStringLiteral("10.0.0.2:1"));
        // The same address under a new session id, among new rows that change the order.
        h.poll({session("ivanov", "10.0.0.1:1", "a"), session("petrov", "10.0.0.2:1", "z"),
                session("root", "10.0.0.9:1", "d"), session("admin", "10.0.0.3:1", "c")});
        const QModelIndexList rows = h.sessions->selectionModel()->selectedRows(1);
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows.first().data().toString(), QStringLiteral("10.0.0.2:1"));

        h.poll({session("ivanov", "10.0.0.1:1", "a")});
        QVERIFY(h.sessions->selectionModel()->selectedRows().isEmpty());
    }

    void whoMayBeCut_data()
    {
        QTest::addColumn<QString>("operatorTemplate");
        QTest::addColumn<bool>("right");
        QTest::addColumn<QStringList>("categories"); // of root, admin, ivanov, a stranger
        const QStringList all{"1", "1", "1", "1"};
        QTest::addRow("supervisor") << "RT_SUPERVISOR" << false << all;
        QTest::addRow("administrator")
            << "RT_ADMINISTRATOR" << false << QStringList{"4", "1", "1", "1"};
        QTest::addRow("operator with the right")
            << "RT_OPERATOR" << true << QStringList{"4", "4", "1", "1"};
        QTest::addRow("operator without")
            << "RT_OPERATOR" << false << QStringList{"4", "4", "4", "4"};
    }
    void whoMayBeCut()
    {
        QFETCH(QString, operatorTemplate);
        QFETCH(bool, right);
        QFETCH(QStringList, categories);
        const QStringList roles = right ? UserCtlHarness::allRoles()
                                        : UserCtlHarness::allRolesBut("RL_ROLE_DISCONNECT_USER");
        Screen h(roles);
        UserCtlHarness::logIn(roles, QStringLiteral("me"), 50, operatorTemplate);
        h.sessions->sortByColumn(1, Qt::AscendingOrder);
        h.poll({session("root", "10.0.0.1:1", "a"), session("admin", "10.0.0.2:1", "b"),
                session("ivanov", "10.0.0.3:1", "c"), session("stranger", "10.0.0.4:1", "d")});
        QCOMPARE(h.column(6), categories);

        // The action needs the right as well, whatever the row's colour says.
        h.selectAddress(QStringLiteral("10.0.0.4:1"));
        QCOMPARE(h.child("actionDisconnect")->isEnabled(),
                 right && categories.last() == QLatin1String("1"));
    }

    void disconnectSendsTheSelectedSessions_data()
    {
        QTest::addColumn<QString>("selected");
        QTest::addColumn<QList<QByteArray>>("sent");
        QTest::addRow("none") << QString() << QList<QByteArray>{};
        QTest::addRow("one") << "10.0.0.2:1" << QList<QByteArray>{"b"};
    }
    void disconnectSendsTheSelectedSessions()
    {
        QFETCH(QString, selected);
        Screen h;
        h.poll({session("ivanov", "10.0.0.1:1", "a"), session("petrov", "10.0.0.2:1", "b")});
        h.selectAddress(selected);
        QKeyEvent del(QEvent::KeyPress, Qt::Key_Delete, Qt::NoModifier);
        QVERIFY(h.screen->eventFilter(h.sessions, &del)); // no question asked

        const Command request = h.sent(command::DisconnectUsers).value(0);
        QCOMPARE(request.type, zeral::proto::NamedCommand);
        QCOMPARE(request.sessionId, QByteArray("session-42"));
        ZRDataStream in(request.data);
        qint32 count = -1;
        in >> count;
        QList<QByteArray> ids;
        for (qint32 i = 0; i < count; ++i) {
            QByteArray id;
            in >> id;
            ids.append(id);
        }
        QTEST(ids, "sent");

        // Whatever the server refuses, the operator reads one sentence.
        h.server.answerFailure(request, zeral::proto::StatusForbidden, QStringLiteral("own"));
        QCOMPARE(h.popupTexts(), QStringList{"Вы не можете отключить себя!"});
    }
};

QTEST_MAIN(TestUserCtlSessions)
#include "tst_userctlsessions.moc"
