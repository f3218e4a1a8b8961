// The sessions tab of the users screen: each poll rebuilds the table, keeps the selected
// session by its address, colours the rows by who may be cut, and disconnects without asking.
#include "userctlharness.h"

#include <tests/support/builders.h>

#include <host/core/localstorage.h>
#include <host/core/zrdatastream.h>
#include <host/gui/widgets/zrtableview.h>
#include <shared/connecteduserinfo.h>

#include <QAbstractItemModelTester>
#include <QAction>
#include <QKeyEvent>
#include <QtTest>

#include <optional>

using zeral::TYPE_ID;
namespace command = zeral::proto::command;

namespace {

const QDateTime ServerNow = QDateTime::fromSecsSinceEpoch(1800000000);

zeral::ConnectedUserInfo session(const QString &login, const QString &address, const QByteArray &id,
                                 int minutesAgo = 10)
{
    return {login, address, ServerNow.addSecs(-60 * minutesAgo), ServerNow.addSecs(-60), id};
}

QByteArray pollAnswer(const QList<zeral::ConnectedUserInfo> &sessions,
                      const QDateTime &serverTime = ServerNow)
{
    QHash<QByteArray, zeral::ConnectedUserInfo> hash;
    for (const zeral::ConnectedUserInfo &info : sessions)
        hash.insert(info.sessionId, info);
    return ZRDataStream::pack(hash, serverTime);
}

zeral::ObjectInfo user(TYPE_ID uid, const QString &login, const QString &roleTemplate)
{
    zeral::ObjectInfo object = testing::makeUser(uid, login);
    object.parameters.insert(QStringLiteral("PT_ROLETEMPLATE"), roleTemplate);
    return object;
}

} // namespace

class TestUserCtlSessions : public QObject
{
    Q_OBJECT

    // The screen on its sessions page; every poll is answered by the test.
    struct Screen : UserCtlHarness
    {
        explicit Screen(const QStringList &roles = UserCtlHarness::allRoles())
            : UserCtlHarness(roles)
        {
            table = child<ZRTableView>("connectedUsersList");
            tester.emplace(table->model(), QAbstractItemModelTester::FailureReportingMode::QtTest);
            screen->onTabActivated(2);
        }
        void poll(const QByteArray &answer, qint32 status = zeral::proto::StatusOk)
        {
            QVERIFY(QMetaObject::invokeMethod(screen, "getSessionsInfo"));
            server.answer(sent(command::GetSessionsInfo).last(), status, answer);
        }
        QStringList column(int column) const
        {
            QStringList values;
            for (int row = 0; row < table->model()->rowCount(); ++row)
                values.append(table->model()->index(row, column).data().toString());
            return values;
        }
        void selectAddress(const QString &address)
        {
            for (int row = 0; row < table->model()->rowCount(); ++row) {
                if (table->model()->index(row, 1).data().toString() == address)
                    table->selectRow(row);
            }
        }
        ZRTableView *table = nullptr;
        std::optional<QAbstractItemModelTester> tester;
    };

private slots:
    void init()
    {
        zeral::LocalStorage::instance()->clear();
        zeral::LocalStorage::instance()->applyChanged(
            QStringLiteral("user"),
            {user(1, "root", "RT_SUPERVISOR"), user(2, "admin", "RT_ADMINISTRATOR"),
             user(3, "ivanov", "RT_OPERATOR"), user(4, "petrov", "RT_OPERATOR")});
    }
    void cleanup() { zeral::LocalStorage::instance()->clear(); }

    void pollRebuildsTheTable()
    {
        Screen h;
        h.poll(pollAnswer({session("ivanov", "10.0.0.5:5000", "s1", 90),
                           session("nobody", "10.0.0.6:5000", "s2"),
                           session("ghost", QString(), "s3")}));
        QCOMPARE(h.table->model()->rowCount(), 2); // the one without an address is left out
        QVERIFY(h.table->isColumnHidden(6));
        QVERIFY(h.table->isColumnHidden(7));
        h.table->sortByColumn(0, Qt::AscendingOrder);
        QCOMPARE(h.column(0), (QStringList{"ivanov", "nobody"}));
        // Durations by the server's clock; a login the screen doesn't know has no template
        // and no user id.
        QCOMPARE(h.column(4).first(), QStringLiteral("01:30:00"));
        QCOMPARE(h.column(2).last(), QStringLiteral("Не определено"));
        QCOMPARE(h.column(7), (QStringList{"3", "0"}));

        // A failed poll leaves the table as it was.
        h.poll(ZRDataStream::pack(QStringLiteral("boom")), zeral::proto::StatusInternal);
        QCOMPARE(h.table->model()->rowCount(), 2);

        h.poll(pollAnswer({session("ghost", QString(), "s3")}));
        QCOMPARE(h.table->model()->rowCount(), 0);
    }

    void invalidServerTimeFallsBackToTheLocalClock()
    {
        Screen h;
        const QDateTime now = QDateTime::currentDateTime();
        const zeral::ConnectedUserInfo info{"ivanov", "10.0.0.5:5000", now.addSecs(-7200),
                                            now.addSecs(-60), "s1"};
        h.poll(pollAnswer({info}, QDateTime()));
        const QString duration = h.column(4).value(0);
        QVERIFY2(duration.startsWith(QStringLiteral("02:00:0")), qPrintable(duration));
    }

    void selectionKeptByAddress()
    {
        Screen h;
        h.table->sortByColumn(1, Qt::DescendingOrder);
        h.poll(
            pollAnswer({session("ivanov", "10.0.0.1:1", "a"), session("petrov", "10.0.0.2:1", "b"),
                        session("admin", "10.0.0.3:1", "c")}));
        h.selectAddress(QStringLiteral("10.0.0.2:1"));
        // The same address under a new session id, among new rows that change the order.
        h.poll(
            pollAnswer({session("ivanov", "10.0.0.1:1", "a"), session("petrov", "10.0.0.2:1", "z"),
                        session("root", "10.0.0.9:1", "d"), session("admin", "10.0.0.3:1", "c")}));
        const QModelIndexList rows = h.table->selectionModel()->selectedRows(1);
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows.first().data().toString(), QStringLiteral("10.0.0.2:1"));

        h.poll(pollAnswer({session("ivanov", "10.0.0.1:1", "a")}));
        QVERIFY(h.table->selectionModel()->selectedRows().isEmpty());
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
        QStringList roles = UserCtlHarness::allRoles();
        if (!right)
            roles.removeAll(QStringLiteral("RL_ROLE_DISCONNECT_USER"));
        Screen h(roles);
        UserCtlHarness::logIn(roles, QStringLiteral("me"), 50, operatorTemplate);
        h.table->sortByColumn(1, Qt::AscendingOrder);
        h.poll(pollAnswer({session("root", "10.0.0.1:1", "a"), session("admin", "10.0.0.2:1", "b"),
                           session("ivanov", "10.0.0.3:1", "c"),
                           session("stranger", "10.0.0.4:1", "d")}));
        QCOMPARE(h.column(6), categories);

        // The action needs the right as well, whatever the row's colour says.
        h.selectAddress(QStringLiteral("10.0.0.4:1"));
        QCOMPARE(h.child<QAction>("actionDisconnect")->isEnabled(),
                 right && categories.last() == QLatin1String("1"));
    }

    void disconnectSendsTheSelectedSessions_data()
    {
        QTest::addColumn<QStringList>("selected");
        QTest::addColumn<QList<QByteArray>>("sent");
        QTest::addRow("none") << QStringList{} << QList<QByteArray>{};
        QTest::addRow("one") << QStringList{"10.0.0.2:1"} << QList<QByteArray>{"b"};
    }
    void disconnectSendsTheSelectedSessions()
    {
        QFETCH(QStringList, selected);
        QFETCH(QList<QByteArray>, sent);
        Screen h;
        h.poll(pollAnswer(
            {session("ivanov", "10.0.0.1:1", "a"), session("petrov", "10.0.0.2:1", "b")}));
        for (const QString &address : selected)
            h.selectAddress(address);
        QKeyEvent del(QEvent::KeyPress, Qt::Key_Delete, Qt::NoModifier);
        QVERIFY(h.screen->eventFilter(h.table, &del)); // no question asked

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
        QCOMPARE(ids, sent);

        // Whatever the server refuses, the operator reads one sentence.
        h.server.answerFailure(request, zeral::proto::StatusForbidden, QStringLiteral("own"));
        QCOMPARE(h.screen->popups().size(), 1);
        QCOMPARE(h.screen->popups().first()->text(),
                 QStringLiteral("Вы не можете отключить себя!"));
    }

    void refreshKeyPolls()
    {
        Screen h;
        const int before = h.sent(command::GetSessionsInfo).size();
        QKeyEvent f5(QEvent::KeyPress, Qt::Key_F5, Qt::NoModifier);
        QVERIFY(h.screen->eventFilter(h.table, &f5));
        QCOMPARE(h.sent(command::GetSessionsInfo).size(), before + 1);
    }
};

QTEST_MAIN(TestUserCtlSessions)
#include "tst_userctlsessions.moc"
