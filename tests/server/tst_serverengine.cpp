// The server engine over real TCP on loopback with a temporary database: sessions, the data
// operations and their refusals, pushes, sessions of others, mail and bad input.

#include "serverharness.h"

#include <host/core/dbquery.h>
#include <host/core/dbresult.h>
#include <shared/connecteduserinfo.h>
#include <shared/emailmessage.h>
#include <shared/objectpermission.h>
#include <shared/rolenames.h>
#include <shared/roletemplateinfo.h>

#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlQuery>

using namespace harness;
using zeral::ObjectInfo;
using zeral::TYPE_ID;
namespace proto = zeral::proto;

class TestServerEngine : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { ZR_SKIP_WITHOUT_TEST_DATABASE(); }
    void init()
    {
        m_server = std::make_unique<Server>();
        QCOMPARE(m_server->start(), QString());
    }
    void cleanup() { m_server.reset(); }

    void loginAnswersIdentity()
    {
        auto root = m_server->client();
        QCOMPARE(root->login(QStringLiteral("root"), QStringLiteral("RootPass1")).status,
                 qint32(proto::StatusOk));
        QCOMPARE(root->session.size(), 64);
        QVERIFY(root->uid != 0);
        QCOMPARE(root->roleTemplate, QStringLiteral("RT_SUPERVISOR"));
        QVERIFY(root->roles.contains(QStringLiteral("RL_USER_CREATE")));
    }

    void loginRefusals_data()
    {
        QTest::addColumn<QString>("login");
        QTest::addColumn<QString>("password");
        QTest::addColumn<int>("status");
        QTest::addRow("wrong password") << "alice"
                                        << "nope" << int(proto::StatusLoginFailed);
        QTest::addRow("unknown login") << "nobody"
                                       << "Passw0rd" << int(proto::StatusLoginFailed);
        QTest::addRow("login is case-sensitive") << "ALICE"
                                                 << "Passw0rd" << int(proto::StatusLoginFailed);
        QTest::addRow("blocked, any case") << "bob"
                                           << "Passw0rd" << int(proto::StatusAccountBlocked);
    }
    void loginRefusals()
    {
        QFETCH(QString, login);
        QFETCH(QString, password);
        QFETCH(int, status);
        auto root = m_server->rootClient();
        QVERIFY(addUser(*root, QStringLiteral("alice"), QStringLiteral("RT_OPERATOR")));
        const TYPE_ID bob = addUser(*root, QStringLiteral("bob"), QStringLiteral("RT_OPERATOR"));
        QCOMPARE(update(*root, bob, {{QStringLiteral("PT_OBJECTSTATE"), QStringLiteral("B")}}),
                 qint32(proto::StatusOk));
        auto client = m_server->client();
        const Command answer = client->login(login, password);
        QCOMPARE(answer.status, qint32(status));
        QVERIFY(!errorText(answer).isEmpty());
        QVERIFY(client->session.isEmpty());
    }

    void rootWithoutPasswordIsRefused()
    {
        Server fresh;
        ServerEngineOptions options;
        options.databasePath = fresh.dir.filePath(QStringLiteral("fresh.db"));
        zeral::server::ServerEngine engine(options);
        QCOMPARE(engine.start(), QString());
        QVERIFY(!engine.rootPasswordIsSet());
        WireClient client;
        QVERIFY(client.connectTo(engine.port()));
        const Command answer = client.login(QStringLiteral("root"), QString());
        QCOMPARE(answer.status, qint32(proto::StatusLoginFailed));
        QVERIFY(errorText(answer).contains(QStringLiteral("root")));
        QVERIFY(engine.setRootPassword(clientHash(QStringLiteral("x"))));
        QVERIFY(engine.rootPasswordIsSet());
        QCOMPARE(client.login(QStringLiteral("root"), QStringLiteral("x")).status,
                 qint32(proto::StatusOk));
    }

    void repeatedFailuresLockUntilTimePasses()
    {
        auto client = m_server->client();
        for (int i = 0; i < 5; ++i)
            QCOMPARE(client->login(QStringLiteral("root"), QStringLiteral("bad")).status,
                     qint32(proto::StatusLoginFailed));
        // Locked: even the right password is refused now.
        QCOMPARE(client->login(QStringLiteral("root"), QStringLiteral("RootPass1")).status,
                 qint32(proto::StatusLoginLocked));
        m_server->now = m_server->now.addSecs(6 * 60);
        QCOMPARE(client->login(QStringLiteral("root"), QStringLiteral("RootPass1")).status,
                 qint32(proto::StatusOk));
    }

    void requestGuards_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("loggedIn");
        QTest::addColumn<QByteArray>("sessionId");
        QTest::addColumn<int>("status");
        QTest::addRow("before login") << "data.snapshot" << false << QByteArray() << 3;
        QTest::addRow("unknown command") << "data.format_disk" << true << QByteArray("own") << 5;
        QTest::addRow("foreign session id")
            << "data.role_catalogue" << true << QByteArray("0123abcd") << 4;
    }
    void requestGuards()
    {
        QFETCH(QString, name);
        QFETCH(bool, loggedIn);
        QFETCH(QByteArray, sessionId);
        QFETCH(int, status);
        auto client = loggedIn ? m_server->rootClient() : m_server->client();
        const Command answer
            = client->request(name, {}, sessionId == "own" ? client->session : sessionId);
        QCOMPARE(answer.status, qint32(status));
        QVERIFY(!errorText(answer).isEmpty());
    }

    void changesArePushedBeforeTheAnswer()
    {
        auto root = m_server->rootClient();
        auto other = m_server->rootClient();
        const TYPE_ID uid = addUser(*root, QStringLiteral("carol"), QStringLiteral("RT_HR"));
        QVERIFY(uid != 0);
        // The author has the push by the time the answer arrives.
        const QList<Command> own = root->pushesNamed(cmd::DataChanged);
        QCOMPARE(own.size(), 1);
        QString dataset;
        QList<ObjectInfo> objects;
        ZRDataStream in(own.constFirst().data);
        in >> dataset;
        zeral::wire::readList(in, objects);
        QCOMPARE(dataset, QStringLiteral("user"));
        QCOMPARE(objects.size(), 1);
        QCOMPARE(objects.constFirst().uid, uid);
        QVERIFY(!objects.constFirst().parameters.contains(QStringLiteral("PT_PASSHASH")));
        QTRY_COMPARE(other->pushesNamed(cmd::DataChanged).size(), 1);

        const Command removed
            = root->request(cmd::RemoveObject, ZRDataStream::pack(uid, QStringLiteral("OT_USER")));
        QCOMPARE(removed.status, qint32(proto::StatusOk));
        QTRY_COMPARE(other->pushesNamed(cmd::DataRemoved).size(), 1);
        QList<quint32> uids;
        ZRDataStream removedIn(other->pushesNamed(cmd::DataRemoved).constFirst().data);
        removedIn >> dataset >> uids;
        QCOMPARE(uids, QList<quint32>{uid});
    }

    void removedUserSessionDoesNotBecomeTheNextUser()
    {
        auto root = m_server->rootClient();
        const TYPE_ID gone = addUser(*root, QStringLiteral("gone"), QStringLiteral("RT_OPERATOR"));
        auto stale = m_server->client();
        QCOMPARE(stale->login(QStringLiteral("gone"), QStringLiteral("Passw0rd")).status,
                 qint32(proto::StatusOk));
        QCOMPARE(
            root->request(cmd::RemoveObject, ZRDataStream::pack(gone, QStringLiteral("OT_USER")))
                .status,
            qint32(proto::StatusOk));
        // A removed uid is never given out again, and the removed user's session has ended,
        // so it can't act with the rights of whoever is created next.
        QVERIFY(addUser(*root, QStringLiteral("next"), QStringLiteral("RT_ADMINISTRATOR")) > gone);
        QTRY_VERIFY(stale->isClosed());
    }

    void blockedOrRemovedUserIsClosedAtOnce_data()
    {
        QTest::addColumn<QString>("state"); // empty: the user is removed
        QTest::addColumn<QString>("reason");
        QTest::addRow("blocked") << "b"
                                 << "заблокирована";
        QTest::addRow("blocked, capital") << "B"
                                          << "заблокирована";
        QTest::addRow("removed") << ""
                                 << "удалена";
    }
    void blockedOrRemovedUserIsClosedAtOnce()
    {
        QFETCH(QString, state);
        QFETCH(QString, reason);
        auto root = m_server->rootClient();
        const TYPE_ID uid
            = addUser(*root, QStringLiteral("leaving"), QStringLiteral("RT_OPERATOR"));
        auto first = m_server->client();
        auto second = m_server->client();
        for (WireClient *client : {first.get(), second.get()})
            QCOMPARE(client->login(QStringLiteral("leaving"), QStringLiteral("Passw0rd")).status,
                     qint32(proto::StatusOk));
        const Command answer
            = state.isEmpty()
                  ? root->request(cmd::RemoveObject,
                                  ZRDataStream::pack(uid, QStringLiteral("OT_USER")))
                  : root->request(
                      cmd::UpdateObject,
                      ZRDataStream::pack(
                          uid, QStringLiteral("OT_USER"), quint32(0),
                          QHash<QString, QString>{{QLatin1String(db::user::OBJECTSTATE), state}}));
        QCOMPARE(answer.status, qint32(proto::StatusOk));
        // Both sessions were told and closed without asking anything more.
        for (WireClient *client : {first.get(), second.get()}) {
            QTRY_VERIFY(client->isClosed());
            const QList<Command> closed = client->pushesNamed(cmd::SessionClosed);
            QCOMPARE(closed.size(), 1);
            QString text;
            ZRDataStream in(closed.constFirst().data);
            in >> text;
            QVERIFY2(text.contains(reason) && text.contains(QLatin1String("root")),
                     qPrintable(text));
        }
        QVERIFY(!root->isClosed());
        QCOMPARE(root->request(cmd::GetSessionsInfo).status, qint32(proto::StatusOk));
    }

    void removalPushesTheChildrenItFrees()
    {
        auto root = m_server->rootClient();
        auto other = m_server->rootClient();
        ObjectInfo department;
        department.type = QLatin1String(db::orgstructure::DEPARTMENT);
        ObjectInfo worker;
        worker.type = QLatin1String(db::orgstructure::WORKER);
        worker.parent = add(*root, department);
        const TYPE_ID workerUid = add(*root, worker);
        QVERIFY(worker.parent && workerUid);
        other->pushes.clear();
        QCOMPARE(
            root->request(cmd::RemoveObject, ZRDataStream::pack(worker.parent, department.type))
                .status,
            qint32(proto::StatusOk));
        // The worker now hangs at the top, and every store learns it.
        const auto workerPushed = [&] {
            for (const Command &push : other->pushesNamed(cmd::DataChanged)) {
                QString dataset;
                QList<ObjectInfo> objects;
                ZRDataStream in(push.data);
                in >> dataset;
                zeral::wire::readList(in, objects);
                for (const ObjectInfo &object : qAsConst(objects)) {
                    if (object.uid == workerUid && object.parent == 0)
                        return true;
                }
            }
            return false;
        };
        QTRY_VERIFY(workerPushed());
    }

    void addObjectLinksTheEmployee()
    {
        auto root = m_server->rootClient();
        ObjectInfo worker;
        worker.type = QStringLiteral("OT_WORKER");
        worker.parameters = {{QStringLiteral("PT_SURNAME"), QStringLiteral("Петров")}};
        Command answer = root->request(cmd::AddObject,
                                       ZRDataStream::pack(worker, QList<zeral::_INHERIT_DATA>()));
        QCOMPARE(answer.status, qint32(proto::StatusOk));
        qint32 workerUid = 0;
        ZRDataStream(answer.data) >> workerUid;
        ObjectInfo user;
        user.type = QStringLiteral("OT_USER");
        user.parameters = {{QStringLiteral("PT_LOGIN"), QStringLiteral("petrov")}};
        zeral::_INHERIT_DATA link;
        link.child = TYPE_ID(workerUid);
        link.linkType = zeral::INHERIT_WORKER_USER;
        answer = root->request(cmd::AddObject, ZRDataStream::pack(user, QList{link}));
        QCOMPARE(answer.status, qint32(proto::StatusOk));
        qint32 userUid = 0;
        ZRDataStream(answer.data) >> userUid;
        const ObjectInfo stored = snapshotObject(*root, QStringLiteral("user"), TYPE_ID(userUid));
        QCOMPARE(stored.children.value(zeral::INHERIT_WORKER_USER).child, TYPE_ID(workerUid));
        // A link to nothing is refused and creates nothing.
        link.child = 999999;
        user.parameters.insert(QStringLiteral("PT_LOGIN"), QStringLiteral("petrov2"));
        answer = root->request(cmd::AddObject, ZRDataStream::pack(user, QList{link}));
        QCOMPARE(answer.status, qint32(proto::StatusNotFound));
    }

    void updateChangesOnlyWhatItCarries()
    {
        auto root = m_server->rootClient();
        const TYPE_ID uid = addUser(*root, QStringLiteral("dave"), QStringLiteral("RT_OPERATOR"));
        QCOMPARE(update(*root, uid, {{QStringLiteral("PT_SURNAME"), QStringLiteral("Смирнов")}}),
                 qint32(proto::StatusOk));
        QCOMPARE(update(*root, uid,
                        {{QStringLiteral("PT_NAME"), QString()},
                         {QStringLiteral("PT_SET_PASSWORD"), QStringLiteral("1")}}),
                 qint32(proto::StatusOk));
        const ObjectInfo user = snapshotObject(*root, QStringLiteral("user"), uid);
        QCOMPARE(user.parameters.value(QStringLiteral("PT_SURNAME")), QStringLiteral("Смирнов"));
        QCOMPARE(user.parameters.value(QStringLiteral("PT_LOGIN")), QStringLiteral("dave"));
        QVERIFY(user.parameters.contains(QStringLiteral("PT_NAME")));
        QVERIFY(!user.parameters.contains(QStringLiteral("PT_SET_PASSWORD")));
        QVERIFY(!user.parameters.contains(QStringLiteral("PT_PASSHASH")));
        // A new password takes effect; the old one stops working.
        QCOMPARE(update(*root, uid,
                        {{QStringLiteral("PT_PASSHASH"), clientHash(QStringLiteral("N3wPass"))},
                         {QStringLiteral("PT_SET_PASSWORD"), QStringLiteral("1")}}),
                 qint32(proto::StatusOk));
        QCOMPARE(
            m_server->client()->login(QStringLiteral("dave"), QStringLiteral("Passw0rd")).status,
            qint32(proto::StatusLoginFailed));
        QCOMPARE(
            m_server->client()->login(QStringLiteral("dave"), QStringLiteral("N3wPass")).status,
            qint32(proto::StatusOk));
    }

    void storedDataConflicts_data()
    {
        QTest::addColumn<QString>("what");
        QTest::addColumn<int>("status");
        QTest::addRow("login in use, other case") << "duplicate" << int(proto::StatusConflict);
        QTest::addRow("root renamed") << "rename root" << int(proto::StatusConflict);
        QTest::addRow("root deleted") << "delete root" << int(proto::StatusConflict);
        QTest::addRow("own account deleted") << "delete self" << int(proto::StatusForbidden);
        QTest::addRow("missing object") << "update missing" << int(proto::StatusNotFound);
        QTest::addRow("wrong type") << "wrong type" << int(proto::StatusConflict);
        QTest::addRow("unknown type") << "unknown type" << int(proto::StatusMalformed);
        QTest::addRow("root's template by update") << "demote root" << int(proto::StatusConflict);
        QTest::addRow("parent is itself") << "own parent" << int(proto::StatusConflict);
        QTest::addRow("parent below itself") << "parent cycle" << int(proto::StatusConflict);
    }
    void storedDataConflicts()
    {
        QFETCH(QString, what);
        QFETCH(int, status);
        auto root = m_server->rootClient();
        const TYPE_ID erin = addUser(*root, QStringLiteral("erin"), QStringLiteral("RT_OPERATOR"));
        root->pushes.clear();
        qint32 got = 0;
        if (what == QLatin1String("duplicate")) {
            addUser(*root, QStringLiteral("ERIN"), QString(), QStringLiteral("x"), &got);
        } else if (what == QLatin1String("rename root")) {
            got = update(*root, root->uid, {{QStringLiteral("PT_LOGIN"), QStringLiteral("admin")}});
        } else if (what == QLatin1String("delete self")) {
            addUser(*root, QStringLiteral("adm"), QStringLiteral("RT_ADMINISTRATOR"));
            auto admin = m_server->client();
            admin->login(QStringLiteral("adm"), QStringLiteral("Passw0rd"));
            root->pushes.clear();
            got = admin
                      ->request(cmd::RemoveObject,
                                ZRDataStream::pack(admin->uid, QStringLiteral("OT_USER")))
                      .status;
        } else if (what == QLatin1String("delete root")) {
            got = root->request(cmd::RemoveObject,
                                ZRDataStream::pack(root->uid, QStringLiteral("OT_USER")))
                      .status;
        } else if (what == QLatin1String("demote root")) {
            // Another supervisor (as the demo has one) manages his colleagues, but not root's
            // template. Nobody may hand out the supervisor's template: it goes into the file.
            const TYPE_ID sup = addUser(*root, QStringLiteral("sup"), QString());
            {
                QSqlDatabase db = sideDatabase(m_server->databasePath, QStringLiteral("side"));
                QVERIFY(db.open());
                QVERIFY(
                    QSqlQuery(db).exec(QStringLiteral("INSERT INTO object_params VALUES "
                                                      "(%1, 'PT_ROLETEMPLATE', 'RT_SUPERVISOR')")
                                           .arg(sup)));
                db.close();
            }
            QSqlDatabase::removeDatabase(QStringLiteral("side"));
            auto supervisor = m_server->client();
            supervisor->login(QStringLiteral("sup"), QStringLiteral("Passw0rd"));
            root->pushes.clear();
            got = update(*supervisor, root->uid,
                         {{QStringLiteral("PT_ROLETEMPLATE"), QStringLiteral("RT_ADMINISTRATOR")}});
        } else if (what == QLatin1String("own parent")) {
            got = move(*root, erin, erin);
        } else if (what == QLatin1String("parent cycle")) {
            const TYPE_ID fay = addUser(*root, QStringLiteral("fay"), QString());
            QCOMPARE(move(*root, fay, erin), qint32(proto::StatusOk));
            root->pushes.clear();
            got = move(*root, erin, fay);
        } else if (what == QLatin1String("update missing")) {
            got = update(*root, 777777, {{QStringLiteral("PT_NAME"), QStringLiteral("x")}});
        } else if (what == QLatin1String("wrong type")) {
            got = root->request(cmd::RemoveObject,
                                ZRDataStream::pack(erin, QStringLiteral("OT_WORKER")))
                      .status;
        } else {
            ObjectInfo odd;
            odd.type = QStringLiteral("OT_SPACESHIP");
            got = root->request(cmd::AddObject,
                                ZRDataStream::pack(odd, QList<zeral::_INHERIT_DATA>()))
                      .status;
        }
        QCOMPARE(got, qint32(status));
        // A refusal changes nothing: root hears only of the refusal's row in the audit log.
        QCOMPARE(root->pushes.size(), 1);
        QCOMPARE(root->pushes.first().name, QLatin1String(cmd::AuditAppended));
        QCOMPARE(
            m_server->client()->login(QStringLiteral("root"), QStringLiteral("RootPass1")).status,
            qint32(proto::StatusOk));
    }

    void permissionsAreReplacedAsAWhole()
    {
        auto root = m_server->rootClient();
        auto other = m_server->rootClient();
        const TYPE_ID uid = addUser(*root, QStringLiteral("frank"), QStringLiteral("RT_OPERATOR"));
        const TYPE_ID a = addUser(*root, QStringLiteral("objA"), QString());
        const TYPE_ID b = addUser(*root, QStringLiteral("objB"), QString());
        const TYPE_ID c = addUser(*root, QStringLiteral("objC"), QString());
        // Every session hears of the user whose permissions changed, and only of him.
        const auto pushedUsers = [&other, uid] {
            // A round trip of that session first: whatever was pushed before has reached it.
            other->request(cmd::GetPermissions, ZRDataStream::pack(QList<quint32>{uid}));
            QList<TYPE_ID> uids;
            for (const Command &push : other->pushesNamed(cmd::DataChanged)) {
                QString dataset;
                QList<ObjectInfo> objects;
                ZRDataStream in(push.data);
                in >> dataset;
                zeral::wire::readList(in, objects);
                for (const ObjectInfo &object : qAsConst(objects))
                    uids.append(object.uid);
            }
            other->pushes.clear();
            return uids;
        };
        QTRY_COMPARE(other->pushesNamed(cmd::DataChanged).size(), 4);
        other->pushes.clear();
        QCOMPARE(root->request(cmd::AddPermissions,
                               ZRDataStream::pack(QList<zeral::OBJECT_PERMISSION>{{uid, a, 12}}))
                     .status,
                 qint32(proto::StatusOk));
        QCOMPARE(pushedUsers(), QList<TYPE_ID>{uid});
        // The editor's set replaces the stored one as a whole, in one request.
        QCOMPARE(
            root->request(cmd::UpdatePermissions,
                          ZRDataStream::pack(
                              uid, QList<zeral::OBJECT_PERMISSION>{{uid, b, 12}, {uid, c, 12}}))
                .status,
            qint32(proto::StatusOk));
        QCOMPARE(pushedUsers(), QList<TYPE_ID>{uid});
        const Command answer
            = root->request(cmd::GetPermissions, ZRDataStream::pack(QList<quint32>{uid}));
        QCOMPARE(answer.status, qint32(proto::StatusOk));
        QList<zeral::OBJECT_PERMISSION> permissions;
        ZRDataStream in(answer.data);
        zeral::wire::readList(in, permissions);
        std::sort(permissions.begin(), permissions.end(),
                  [](const auto &x, const auto &y) { return x.object < y.object; });
        QCOMPARE(permissions, (QList<zeral::OBJECT_PERMISSION>{{uid, b, 12}, {uid, c, 12}}));
        // A permission on an object that doesn't exist fails the whole set.
        QCOMPARE(root->request(
                         cmd::UpdatePermissions,
                         ZRDataStream::pack(
                             uid, QList<zeral::OBJECT_PERMISSION>{{uid, a, 12}, {uid, 888888, 12}}))
                     .status,
                 qint32(proto::StatusNotFound));
        QCOMPARE(root->request(cmd::GetPermissions, ZRDataStream::pack(QList<quint32>{uid})).data,
                 answer.data);
        // So does an operator who may not hand out permissions, and nobody hears of it.
        QVERIFY(addUser(*root, QStringLiteral("guard"), QStringLiteral("RT_SECURITY")) != 0);
        auto security = m_server->client();
        QCOMPARE(security->login(QStringLiteral("guard"), QStringLiteral("Passw0rd")).status,
                 qint32(proto::StatusOk));
        QCOMPARE(
            security
                ->request(cmd::UpdatePermissions,
                          ZRDataStream::pack(uid, QList<zeral::OBJECT_PERMISSION>{{uid, a, 12}}))
                .status,
            qint32(proto::StatusForbidden));
        QCOMPARE(root->request(cmd::GetPermissions, ZRDataStream::pack(QList<quint32>{uid})).data,
                 answer.data);
        QVERIFY(!pushedUsers().contains(uid));
    }

    void sessionsAndDisconnect()
    {
        auto root = m_server->rootClient();
        auto other = m_server->rootClient();
        m_server->now = m_server->now.addSecs(30);
        const Command info = root->request(cmd::GetSessionsInfo);
        QCOMPARE(info.status, qint32(proto::StatusOk));
        QHash<QByteArray, zeral::ConnectedUserInfo> sessions;
        QDateTime serverTime;
        ZRDataStream infoIn(info.data);
        infoIn >> sessions >> serverTime;
        QCOMPARE(serverTime, m_server->now);
        QCOMPARE(sessions.size(), 2);
        const zeral::ConnectedUserInfo mine = sessions.value(root->session);
        QCOMPARE(mine.user, QStringLiteral("root"));
        QCOMPARE(mine.ipPort, QStringLiteral("127.0.0.1:%1").arg(root->socket.localPort()));
        QCOMPARE(mine.lastActionTime, m_server->now);

        Command refused = root->request(
            cmd::DisconnectUsers, ZRDataStream::pack(qint32(2), other->session, root->session));
        QCOMPARE(refused.status, qint32(proto::StatusForbidden));
        QVERIFY(!other->isClosed()); // all or nothing
        const Command done
            = root->request(cmd::DisconnectUsers, ZRDataStream::pack(qint32(1), other->session));
        QCOMPARE(done.status, qint32(proto::StatusOk));
        QTRY_VERIFY(other->isClosed());
        QCOMPARE(other->pushesNamed(cmd::SessionClosed).size(), 1);
        // The closed session can't be resumed.
        auto again = m_server->client();
        const Command resume
            = again->request(QLatin1String(cmd::Resume),
                             ZRDataStream::pack(other->session, QStringLiteral("root"),
                                                clientHash(QStringLiteral("RootPass1"))),
                             {});
        QCOMPARE(resume.status, qint32(proto::StatusNotFound));
    }

    void failuresSlowTheAnswerDown_data()
    {
        QTest::addColumn<int>("failure");
        QTest::addColumn<int>("minimumMs");
        // Three are free, each further one waits one step more.
        QTest::addRow("4th") << 4 << 200;
        QTest::addRow("5th") << 5 << 400;
    }
    void failuresSlowTheAnswerDown()
    {
        QFETCH(int, failure);
        QFETCH(int, minimumMs);
        m_server = std::make_unique<Server>();
        m_server->loginDelayStepMs = 200;
        QCOMPARE(m_server->start(), QString());
        auto client = m_server->client();
        for (int i = 1; i < failure; ++i)
            QCOMPARE(client->login(QStringLiteral("root"), QStringLiteral("bad")).status,
                     qint32(proto::StatusLoginFailed));
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(client->login(QStringLiteral("Root"), QStringLiteral("bad")).status,
                 qint32(proto::StatusLoginFailed));
        QVERIFY2(timer.elapsed() >= minimumMs, qPrintable(QString::number(timer.elapsed())));
        // Every refused attempt is in the audit log under the login it tried, though nobody
        // was logged in.
        int audited = -1;
        {
            QSqlDatabase db = sideDatabase(m_server->databasePath, QStringLiteral("audit"));
            QSqlQuery query(db.open() ? db : QSqlDatabase());
            if (query.exec(QStringLiteral("SELECT count(*) FROM audit_log"
                                          " WHERE command = 'session.login' AND status = 9"
                                          " AND lower(operator) = 'root'"))
                && query.next())
                audited = query.value(0).toInt();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("audit"));
        QCOMPARE(audited, failure);
    }

    void sessionWaitsForResumeWithinTheWindow_data()
    {
        QTest::addColumn<int>("idleMinutes"); // connected but silent before the drop
        QTest::addColumn<int>("awayMinutes");
        QTest::addColumn<qint32>("status");
        QTest::addRow("back within the window") << 0 << 9 << qint32(proto::StatusOk);
        QTest::addRow("back too late") << 0 << 11 << qint32(proto::StatusNotFound);
        QTest::addRow("idle long, then back soon") << 20 << 5 << qint32(proto::StatusOk);
    }
    void sessionWaitsForResumeWithinTheWindow()
    {
        QFETCH(int, idleMinutes);
        QFETCH(int, awayMinutes);
        QFETCH(qint32, status);
        auto first = m_server->rootClient();
        const QByteArray id = first->session;
        m_server->now = m_server->now.addSecs(idleMinutes * 60);
        first->socket.abort();
        QTRY_COMPARE(m_server->engine->connectionCount(), 0);
        m_server->now = m_server->now.addSecs(awayMinutes * 60);
        if (status != proto::StatusOk) {
            QTest::ignoreMessage(QtInfoMsg,
                                 QRegularExpression(QStringLiteral("session of .root. ended")));
        }
        auto second = m_server->client();
        const Command resume = second->request(
            QLatin1String(cmd::Resume),
            ZRDataStream::pack(id, QStringLiteral("root"), clientHash(QStringLiteral("RootPass1"))),
            {});
        QCOMPARE(resume.status, status);
    }

    void resumeKeepsTheSession()
    {
        auto first = m_server->rootClient();
        const QByteArray id = first->session;
        first->socket.abort();
        auto second = m_server->client();
        const Command resume = second->request(
            QLatin1String(cmd::Resume),
            ZRDataStream::pack(id, QStringLiteral("root"), clientHash(QStringLiteral("RootPass1"))),
            {});
        QCOMPARE(resume.status, qint32(proto::StatusOk));
        QByteArray resumed;
        ZRDataStream resumeIn(resume.data);
        resumeIn >> resumed;
        QCOMPARE(resumed, id);
        second->session = id;
        QCOMPARE(second->request(cmd::RoleCatalogue).status, qint32(proto::StatusOk));
    }

    // A session ended on its own connection: by logout, by a second login, or by resuming
    // another session over it. The old id must be gone for good and the connection go on.
    void sessionEndedOnItsConnection_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<int>("sessionsAfter");
        QTest::addRow("logout") << "logout" << 1;
        QTest::addRow("second login") << "login" << 2;
        QTest::addRow("resume of another session") << "resume" << 2;
    }
    void sessionEndedOnItsConnection()
    {
        QFETCH(QString, how);
        QFETCH(int, sessionsAfter);
        auto watcher = m_server->rootClient();
        auto client = m_server->rootClient();
        const QByteArray ended = client->session;
        if (how == QLatin1String("logout")) {
            QCOMPARE(client->request(cmd::Logout).status, qint32(proto::StatusOk));
        } else if (how == QLatin1String("login")) {
            QCOMPARE(client->login(QStringLiteral("root"), QStringLiteral("RootPass1")).status,
                     qint32(proto::StatusOk));
        } else {
            auto away = m_server->rootClient();
            const QByteArray other = away->session;
            away->socket.abort();
            QTRY_COMPARE(m_server->engine->connectionCount(), 2);
            const Command resume
                = client->request(QLatin1String(cmd::Resume),
                                  ZRDataStream::pack(other, QStringLiteral("root"),
                                                     clientHash(QStringLiteral("RootPass1"))),
                                  {});
            QCOMPARE(resume.status, qint32(proto::StatusOk));
            client->session = other;
        }
        QVERIFY(!client->isClosed());
        QVERIFY(how == QLatin1String("logout") || client->session != ended);

        // Nobody can act or resume under the ended id, and it is no longer listed.
        QCOMPARE(client->request(QLatin1String(cmd::RoleCatalogue), {}, ended).status,
                 qint32(how == QLatin1String("logout") ? proto::StatusNotLoggedIn
                                                       : proto::StatusForbidden));
        auto again = m_server->client();
        QCOMPARE(again
                     ->request(QLatin1String(cmd::Resume),
                               ZRDataStream::pack(ended, QStringLiteral("root"),
                                                  clientHash(QStringLiteral("RootPass1"))),
                               {})
                     .status,
                 qint32(proto::StatusNotFound));
        const Command info = watcher->request(cmd::GetSessionsInfo);
        QHash<QByteArray, zeral::ConnectedUserInfo> sessions;
        ZRDataStream infoIn(info.data);
        infoIn >> sessions;
        QCOMPARE(sessions.size(), sessionsAfter);
        QVERIFY(!sessions.contains(ended));
    }

    void mailIsHeldWithoutRelay()
    {
        auto root = m_server->rootClient();
        zeral::_EMAIL_MESSAGE message;
        message.to = QStringLiteral("ivanov@example.org");
        message.subject = QStringLiteral("Zeral-Desk v6 Mobile");
        message.parameters = {{QStringLiteral("LOCALE"), QStringLiteral("ru")},
                              {QStringLiteral("IS_MOBILE_TOKEN"), true},
                              {QStringLiteral("GREETINGS"), QStringLiteral("Здравствуйте")},
                              {QStringLiteral("TOKEN"), QStringLiteral("dG9rZW4=")}};
        QCOMPARE(root->request(cmd::SendEmail, ZRDataStream::pack(message, QStringLiteral("root")))
                     .status,
                 qint32(proto::StatusOk));
        message.to.clear();
        QCOMPARE(root->request(cmd::SendEmail, ZRDataStream::pack(message, QStringLiteral("root")))
                     .status,
                 qint32(proto::StatusMalformed));
        QSqlDatabase db = sideDatabase(m_server->databasePath, QStringLiteral("peek"));
        QVERIFY(db.open());
        {
            QSqlQuery query(QStringLiteral("SELECT COUNT(*) FROM mail_outbox"), db);
            QVERIFY(query.next());
            QCOMPARE(query.value(0).toInt(), 1);
        }
        db.close();
        db = QSqlDatabase();
        QSqlDatabase::removeDatabase(QStringLiteral("peek"));
    }

    void badBytesCloseOnlyThatConnection_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addRow("random bytes")
            << QByteArray::fromHex("00000010deadbeefdeadbeefdeadbeefdeadbeef");
        QTest::addRow("oversized length") << QByteArray::fromHex("7fffffff00");
        QTest::addRow("hostile list count")
            << (ZRDataStream::pack(quint32(12))
                + ZRDataStream::pack(quint64(1), qint32(8), quint32(0x7ffffff0)));
    }
    void badBytesCloseOnlyThatConnection()
    {
        QFETCH(QByteArray, bytes);
        auto good = m_server->rootClient();
        auto bad = m_server->client();
        bad->socket.write(bytes);
        QTRY_VERIFY(bad->isClosed());
        QCOMPARE(good->request(cmd::RoleCatalogue).status, qint32(proto::StatusOk));
    }

    void wrongPayloadIsMalformed()
    {
        auto root = m_server->rootClient();
        const Command answer
            = root->request(cmd::UpdateObject, ZRDataStream::pack(QStringLiteral("x")));
        QCOMPARE(answer.status, qint32(proto::StatusMalformed));
        QVERIFY(!root->isClosed());
    }

private:
    using ServerEngineOptions = zeral::server::ServerEngine::Options;

    static qint32 update(WireClient &by, TYPE_ID uid, const QHash<QString, QString> &parameters)
    {
        return by
            .request(cmd::UpdateObject,
                     ZRDataStream::pack(uid, QStringLiteral("OT_USER"), quint32(0), parameters))
            .status;
    }
    static TYPE_ID add(WireClient &by, const ObjectInfo &object)
    {
        const Command answer
            = by.request(cmd::AddObject, ZRDataStream::pack(object, QList<zeral::_INHERIT_DATA>()));
        qint32 uid = 0;
        ZRDataStream(answer.data) >> uid;
        return answer.status == proto::StatusOk ? TYPE_ID(uid) : 0;
    }
    static qint32 move(WireClient &by, TYPE_ID uid, TYPE_ID parent)
    {
        return by
            .request(cmd::UpdateObject, ZRDataStream::pack(uid, QStringLiteral("OT_USER"), parent,
                                                           QHash<QString, QString>()))
            .status;
    }
    static ObjectInfo snapshotObject(WireClient &by, const QString &dataset, TYPE_ID uid)
    {
        const Command answer
            = by.request(cmd::Snapshot, ZRDataStream::pack(dataset, quint32(uid - 1), qint32(1)));
        QList<ObjectInfo> objects;
        ZRDataStream in(answer.data);
        zeral::wire::readList(in, objects);
        return objects.value(0);
    }

    std::unique_ptr<Server> m_server;
};

QTEST_GUILESS_MAIN(TestServerEngine)
#include "tst_serverengine.moc"
