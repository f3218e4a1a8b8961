// Passwords at the server: a reset to the installation's default password, a password set by
// an operator or by the user himself, the obligation to change it and its expiry at login,
// session.change_password and session.password_policy, over real TCP.

#include "databasereader.h"
#include "serverharness.h"

#include <host/core/guipassfuncs.h>
#include <shared/datasets.h>

#include <QSqlDatabase>
#include <QSqlQuery>

using namespace harness;
using zeral::ObjectInfo;
using zeral::TYPE_ID;
namespace proto = zeral::proto;
using Params = QHash<QString, QString>;

namespace {

const QString DefaultPassword = QStringLiteral("Default7Pass");
const QString OldPassword = QStringLiteral("Passw0rd");
const QString NewPassword = QStringLiteral("Brand9New");
const QString RequireChange = QLatin1String(db::user::REQUIRE_CHANGE);
const QString Expiry = QLatin1String(db::database::PASSWORD_EXPIRED);

QList<ObjectInfo> snapshot(WireClient &by, const QString &dataset)
{
    const Command answer
        = by.request(cmd::Snapshot, ZRDataStream::pack(dataset, quint32(0), qint32(2000)));
    QList<ObjectInfo> objects;
    ZRDataStream in(answer.data);
    zeral::wire::readList(in, objects);
    return objects;
}

// The user as the last push to `client` showed him; uid 0 if none did.
ObjectInfo lastPushed(const WireClient &client, TYPE_ID uid)
{
    ObjectInfo found;
    for (const Command &push : client.pushesNamed(cmd::DataChanged)) {
        QString dataset;
        QList<ObjectInfo> objects;
        ZRDataStream in(push.data);
        in >> dataset;
        zeral::wire::readList(in, objects);
        for (const ObjectInfo &object : qAsConst(objects)) {
            if (object.uid == uid)
                found = object;
        }
    }
    return found;
}

Command changePassword(WireClient &client, const QString &login, const QString &current,
                       const QString &next)
{
    return client.request(QLatin1String(cmd::ChangePassword),
                          ZRDataStream::pack(login, clientHash(current),
                                             next.isEmpty() ? QString() : clientHash(next),
                                             QStringLiteral("test")),
                          {});
}

} // namespace

class TestServerPasswords : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        ZR_SKIP_WITHOUT_TEST_DATABASE();
        QCOMPARE(m_server.start(), QString());
        m_root = m_server.rootClient();
        QVERIFY(!m_root->session.isEmpty());
        const QList<ObjectInfo> databases = snapshot(*m_root, QLatin1String(zeral::DB_DATANAME));
        QCOMPARE(databases.size(), 1);
        m_database = databases.first().uid;
    }
    void init()
    {
        // Each case starts from the installation as seeded, with a known default password.
        QCOMPARE(setDatabase({{QLatin1String(db::database::PASSWORD_DEF), DefaultPassword},
                              {Expiry, QStringLiteral("90")}}),
                 qint32(proto::StatusOk));
    }

    // A reset gives the server's default password, whatever the client thinks it is, and the
    // obligation to change it; session.change_password then opens a session, lifts the
    // obligation and moves an expiry date by the installation's term.
    void resetThenChange_data()
    {
        QTest::addColumn<QString>("userExpiry");
        QTest::addColumn<QString>("termDays");
        QTest::addColumn<QString>("expiryAfter"); // empty: no expiry
        // The server's clock says 2024-03-01.
        QTest::addRow("no expiry stays none") << ""
                                              << "90"
                                              << "";
        QTest::addRow("expiry moves by the term") << "2024-02-01"
                                                  << "30"
                                                  << "2024-03-31";
        QTest::addRow("a future expiry moves too") << "2024-12-01"
                                                   << "10"
                                                   << "2024-03-11";
        QTest::addRow("term 0 clears it") << "2024-02-01"
                                          << "0"
                                          << "";
        QTest::addRow("no term clears it") << "2024-02-01"
                                           << ""
                                           << "";
        QTest::addRow("unreadable term clears it") << "2024-02-01"
                                                   << "soon"
                                                   << "";
    }
    void resetThenChange()
    {
        QFETCH(QString, userExpiry);
        QFETCH(QString, termDays);
        QFETCH(QString, expiryAfter);
        QCOMPARE(setDatabase({{Expiry, termDays}}), qint32(proto::StatusOk));
        const QString login = nextLogin();
        const TYPE_ID uid = addUser(*m_root, login, QStringLiteral("RT_OPERATOR"));
        QVERIFY(uid);
        if (!userExpiry.isEmpty())
            QCOMPARE(update(*m_root, uid, {{Expiry, userExpiry}}).status, qint32(proto::StatusOk));

        const Command reset = update(
            *m_root, uid,
            {{QLatin1String(db::user::CLEAR_PASSWORD), QStringLiteral("1")},
             {QLatin1String(db::user::PASSHASH), clientHash(QStringLiteral("StaleDefault1"))}});
        QCOMPARE(reset.status, qint32(proto::StatusOk));
        QCOMPARE(lastPushed(*m_root, uid).parameters.value(RequireChange), QStringLiteral("1"));

        // Neither the old password nor the client's idea of the default one opens anything.
        QCOMPARE(m_server.client()->login(login, OldPassword).status,
                 qint32(proto::StatusLoginFailed));
        QCOMPARE(m_server.client()->login(login, QStringLiteral("StaleDefault1")).status,
                 qint32(proto::StatusLoginFailed));
        auto user = m_server.client();
        const Command refused = user->login(login, DefaultPassword);
        QCOMPARE(refused.status, qint32(proto::StatusPasswordChangeRequired));
        QVERIFY(refused.errorText().contains(login));
        QVERIFY(user->session.isEmpty());
        QCOMPARE(user->request(cmd::RoleCatalogue).status, qint32(proto::StatusNotLoggedIn));

        m_root->pushes.clear();
        const Command changed = changePassword(*user, login, DefaultPassword, NewPassword);
        QCOMPARE(changed.status, qint32(proto::StatusOk));
        QByteArray session;
        quint32 sessionUid = 0;
        ZRDataStream identity(changed.data);
        identity >> session >> sessionUid;
        QVERIFY(!session.isEmpty());
        QCOMPARE(TYPE_ID(sessionUid), uid);
        // The connection carries the session now.
        user->session = session;
        QCOMPARE(user->request(cmd::RoleCatalogue).status, qint32(proto::StatusOk));

        QTRY_COMPARE(lastPushed(*m_root, uid).uid, uid);
        const ObjectInfo pushed = lastPushed(*m_root, uid);
        QVERIFY(!pushed.parameters.contains(RequireChange));
        QCOMPARE(pushed.parameters.value(Expiry), expiryAfter);
        QCOMPARE(pushed.parameters.contains(Expiry), !expiryAfter.isEmpty());

        QCOMPARE(m_server.client()->login(login, NewPassword).status, qint32(proto::StatusOk));
        QCOMPARE(m_server.client()->login(login, DefaultPassword).status,
                 qint32(proto::StatusLoginFailed));
        QSqlQuery audit = query(QStringLiteral("SELECT operator, status, detail FROM audit_log "
                                               "WHERE command = '%1' ORDER BY id DESC LIMIT 1")
                                    .arg(QLatin1String(cmd::ChangePassword)));
        QVERIFY(audit.next());
        QCOMPARE(audit.value(0).toString(), login);
        QCOMPARE(audit.value(1).toInt(), int(proto::StatusOk));
        QVERIFY(audit.value(2).toString().contains(QLatin1String("password")));
    }

    // "PT_SET_PASSWORD" stores the password and lifts the obligation, unless the request sets
    // the obligation itself.
    void setPassword_data()
    {
        QTest::addColumn<QString>("by"); // "operator", "self" or "create"
        QTest::addColumn<bool>("requireInRequest");
        QTest::addColumn<QString>("expiryAfter");
        QTest::addColumn<int>("loginAfter");
        // The user's expiry is 2024-06-01; the term 90 days from 2024-03-01 is 2024-05-30.
        QTest::addRow("operator sets")
            << "operator" << false << "2024-06-01" << int(proto::StatusOk);
        QTest::addRow("operator sets and demands a change")
            << "operator" << true << "2024-06-01" << int(proto::StatusPasswordChangeRequired);
        QTest::addRow("the user himself, without the right to change users")
            << "self" << false << "2024-05-30" << int(proto::StatusOk);
        QTest::addRow("new user with the obligation")
            << "create" << true << "" << int(proto::StatusPasswordChangeRequired);
        QTest::addRow("new user without it") << "create" << false << "" << int(proto::StatusOk);
    }
    void setPassword()
    {
        QFETCH(QString, by);
        QFETCH(bool, requireInRequest);
        QFETCH(QString, expiryAfter);
        QFETCH(int, loginAfter);
        const QString login = nextLogin();
        Params request = {{QLatin1String(db::user::SET_PASSWORD), QStringLiteral("1")},
                          {QLatin1String(db::user::PASSHASH), clientHash(NewPassword)}};
        if (requireInRequest)
            request.insert(RequireChange, QStringLiteral("1"));
        TYPE_ID uid = 0;
        if (by == QLatin1String("create")) {
            ObjectInfo user;
            user.type = QLatin1String(db::system::USER);
            user.parameters = request;
            user.parameters.insert(QLatin1String(db::user::LOGIN), login);
            user.parameters.insert(QLatin1String(db::user::ROLE_TEMPLATE),
                                   QStringLiteral("RT_OPERATOR"));
            const Command added = m_root->request(
                cmd::AddObject, ZRDataStream::pack(user, QList<zeral::_INHERIT_DATA>()));
            QCOMPARE(added.status, qint32(proto::StatusOk));
            qint32 newUid = 0;
            ZRDataStream(added.data) >> newUid;
            uid = TYPE_ID(newUid);
        } else {
            uid = addUser(*m_root, login, QStringLiteral("RT_OPERATOR"));
            QVERIFY(uid);
            QCOMPARE(update(*m_root, uid, {{Expiry, QStringLiteral("2024-06-01")}}).status,
                     qint32(proto::StatusOk));
            auto self = m_server.client();
            QCOMPARE(self->login(login, OldPassword).status, qint32(proto::StatusOk));
            // The obligation comes while he is logged in (his session goes on).
            QCOMPARE(update(*m_root, uid, {{RequireChange, QStringLiteral("1")}}).status,
                     qint32(proto::StatusOk));
            WireClient &author = by == QLatin1String("self") ? *self : *m_root;
            QCOMPARE(update(author, uid, request).status, qint32(proto::StatusOk));
            QCOMPARE(m_server.client()->login(login, OldPassword).status,
                     qint32(proto::StatusLoginFailed));
        }
        const ObjectInfo stored = userObject(uid);
        QCOMPARE(stored.parameters.value(RequireChange),
                 requireInRequest ? QStringLiteral("1") : QString());
        QCOMPARE(stored.parameters.value(Expiry), expiryAfter);
        for (const char *request : {db::user::SET_PASSWORD, db::user::PASSHASH})
            QVERIFY(!stored.parameters.contains(QLatin1String(request)));
        QCOMPARE(m_server.client()->login(login, NewPassword).status, qint32(loginAfter));
    }

    // Without a password a set changes nothing: an obligation is lifted only with a new one.
    void setWithoutPasswordChangesNothing()
    {
        const QString login = nextLogin();
        const TYPE_ID uid = addUser(*m_root, login, QStringLiteral("RT_OPERATOR"));
        QVERIFY(uid);
        QCOMPARE(update(*m_root, uid, {{RequireChange, QStringLiteral("1")}}).status,
                 qint32(proto::StatusOk));
        const QString hashBefore = storedHash(uid);
        const Command answer
            = update(*m_root, uid, {{QLatin1String(db::user::SET_PASSWORD), QStringLiteral("1")}});
        QCOMPARE(answer.status, qint32(proto::StatusOk));
        QCOMPARE(storedHash(uid), hashBefore);
        QCOMPARE(userObject(uid).parameters.value(RequireChange), QStringLiteral("1"));
        QCOMPARE(m_server.client()->login(login, OldPassword).status,
                 qint32(proto::StatusPasswordChangeRequired));
    }

    void resetAndSetTogetherAreRefused()
    {
        const QString login = nextLogin();
        const TYPE_ID uid = addUser(*m_root, login, QStringLiteral("RT_OPERATOR"));
        QVERIFY(uid);
        const QString hashBefore = storedHash(uid);
        const Command answer
            = update(*m_root, uid,
                     {{QLatin1String(db::user::SET_PASSWORD), QStringLiteral("1")},
                      {QLatin1String(db::user::CLEAR_PASSWORD), QStringLiteral("1")},
                      {QLatin1String(db::user::PASSHASH), clientHash(NewPassword)}});
        QCOMPARE(answer.status, qint32(proto::StatusMalformed));
        QVERIFY(!answer.errorText().isEmpty());
        QCOMPARE(storedHash(uid), hashBefore);
        QVERIFY(!userObject(uid).parameters.contains(RequireChange));
    }

    void resetWithoutDefaultIsRefused()
    {
        const QString login = nextLogin();
        const TYPE_ID uid = addUser(*m_root, login, QStringLiteral("RT_OPERATOR"));
        QVERIFY(uid);
        QCOMPARE(setDatabase({{QLatin1String(db::database::PASSWORD_DEF), QString()}}),
                 qint32(proto::StatusOk));
        const ObjectInfo before = userObject(uid);
        const QString hashBefore = storedHash(uid);
        QVERIFY(!hashBefore.isEmpty());
        m_root->pushes.clear();

        const Command answer
            = update(*m_root, uid,
                     {{QLatin1String(db::user::CLEAR_PASSWORD), QStringLiteral("1")},
                      {QLatin1String(db::user::PASSHASH), clientHash(DefaultPassword)},
                      {QLatin1String(db::user::SURNAME), QStringLiteral("Иванов")}});
        QCOMPARE(answer.status, qint32(proto::StatusConflict));
        QVERIFY(answer.errorText().contains(QStringLiteral("по умолчанию")));

        QCOMPARE(userObject(uid).parameters, before.parameters);
        QCOMPARE(storedHash(uid), hashBefore);
        QCOMPARE(lastPushed(*m_root, uid).uid, TYPE_ID(0));
        QCOMPARE(m_server.client()->login(login, OldPassword).status, qint32(proto::StatusOk));
        QCOMPARE(m_server.client()->login(login, DefaultPassword).status,
                 qint32(proto::StatusLoginFailed));
    }

    // Login and resume refuse, with 12, a user who must choose a new password: because of a
    // reset, or a date of expiry before today on the server's clock (2024-03-01).
    void loginWithDuePassword_data()
    {
        QTest::addColumn<QString>("roleTemplate");
        QTest::addColumn<QString>("requireChange");
        QTest::addColumn<QString>("expiry");
        QTest::addColumn<int>("status");
        const int ok = proto::StatusOk, due = proto::StatusPasswordChangeRequired;
        QTest::addRow("expired yesterday") << "RT_OPERATOR"
                                           << ""
                                           << "2024-02-29" << due;
        QTest::addRow("expired long ago") << "RT_OPERATOR"
                                          << ""
                                          << "2020-01-01" << due;
        QTest::addRow("expires today") << "RT_OPERATOR"
                                       << ""
                                       << "2024-03-01" << ok;
        QTest::addRow("expires tomorrow") << "RT_OPERATOR"
                                          << ""
                                          << "2024-03-02" << ok;
        QTest::addRow("never expires") << "RT_OPERATOR"
                                       << ""
                                       << "" << ok;
        QTest::addRow("unreadable date") << "RT_OPERATOR"
                                         << ""
                                         << "soon" << due;
        QTest::addRow("obligation") << "RT_OPERATOR"
                                    << "1"
                                    << "" << due;
        QTest::addRow("obligation lifted") << "RT_OPERATOR"
                                           << "0"
                                           << "" << ok;
        QTest::addRow("obligation with a valid date") << "RT_OPERATOR"
                                                      << "1"
                                                      << "2030-01-01" << due;
        QTest::addRow("mobile, expired") << "RT_MOBILE"
                                         << ""
                                         << "2024-02-29" << due;
        QTest::addRow("mobile, valid") << "RT_MOBILE"
                                       << ""
                                       << "2024-03-01" << ok;
        QTest::addRow("mobile chief, obligation") << "RT_MOBILE_CHIEF"
                                                  << "1"
                                                  << "" << due;
    }
    void loginWithDuePassword()
    {
        QFETCH(QString, roleTemplate);
        QFETCH(QString, requireChange);
        QFETCH(QString, expiry);
        QFETCH(int, status);
        const QString login = nextLogin();
        const TYPE_ID uid = addUser(*m_root, login, roleTemplate);
        QVERIFY(uid);
        // A session opened before the password fell due: its resume is refused the same way.
        auto earlier = m_server.client();
        QCOMPARE(earlier->login(login, OldPassword).status, qint32(proto::StatusOk));
        QCOMPARE(update(*m_root, uid, {{RequireChange, requireChange}, {Expiry, expiry}}).status,
                 qint32(proto::StatusOk));

        auto client = m_server.client();
        const Command answer = client->login(login, OldPassword);
        QCOMPARE(answer.status, qint32(status));
        if (status != proto::StatusOk) {
            QVERIFY(answer.errorText().contains(QStringLiteral("новый пароль")));
            QVERIFY(client->session.isEmpty());
        }
        earlier->socket.abort();
        auto again = m_server.client();
        const Command resumed = again->request(
            QLatin1String(cmd::Resume),
            ZRDataStream::pack(earlier->session, login, clientHash(OldPassword)), {});
        QCOMPARE(resumed.status, qint32(status));
    }

    void blockedIsToldFirst()
    {
        const QString login = nextLogin();
        const TYPE_ID uid = addUser(*m_root, login, QStringLiteral("RT_OPERATOR"));
        QVERIFY(uid);
        QCOMPARE(update(*m_root, uid,
                        {{RequireChange, QStringLiteral("1")},
                         {QLatin1String(db::user::OBJECTSTATE), QStringLiteral("b")}})
                     .status,
                 qint32(proto::StatusOk));
        QCOMPARE(m_server.client()->login(login, OldPassword).status,
                 qint32(proto::StatusAccountBlocked));
        QCOMPARE(changePassword(*m_server.client(), login, OldPassword, NewPassword).status,
                 qint32(proto::StatusAccountBlocked));
    }

    // A right password counts as a success for the throttle even when a change is due: the
    // failures before it are forgotten, and the owner is never locked by his own obligation.
    void dueLoginCountsAsSuccess()
    {
        const QString login = nextLogin();
        const TYPE_ID uid = addUser(*m_root, login, QStringLiteral("RT_OPERATOR"));
        QVERIFY(uid);
        QCOMPARE(update(*m_root, uid, {{RequireChange, QStringLiteral("1")}}).status,
                 qint32(proto::StatusOk));
        auto client = m_server.client();
        for (int round = 0; round < 2; ++round) {
            for (int i = 0; i < 4; ++i)
                QCOMPARE(client->login(login, QStringLiteral("wrong")).status,
                         qint32(proto::StatusLoginFailed));
            QCOMPARE(client->login(login, OldPassword).status,
                     qint32(proto::StatusPasswordChangeRequired));
        }
        // Eight failures in all, never five in a row: no lock.
        QCOMPARE(changePassword(*client, login, OldPassword, NewPassword).status,
                 qint32(proto::StatusOk));
    }

    void changeRefusals_data()
    {
        QTest::addColumn<QString>("current");
        QTest::addColumn<QString>("next");
        QTest::addColumn<int>("status");
        QTest::addRow("wrong current password")
            << "Wrong1pass" << NewPassword << int(proto::StatusLoginFailed);
        QTest::addRow("the same password")
            << OldPassword << OldPassword << int(proto::StatusConflict);
        QTest::addRow("empty new password")
            << OldPassword << QString() << int(proto::StatusMalformed);
    }
    void changeRefusals()
    {
        QFETCH(QString, current);
        QFETCH(QString, next);
        QFETCH(int, status);
        const QString login = nextLogin();
        const TYPE_ID uid = addUser(*m_root, login, QStringLiteral("RT_OPERATOR"));
        QVERIFY(uid);
        QCOMPARE(update(*m_root, uid, {{RequireChange, QStringLiteral("1")}}).status,
                 qint32(proto::StatusOk));
        const ObjectInfo before = userObject(uid);
        const QString hashBefore = storedHash(uid);

        auto client = m_server.client();
        const Command answer = changePassword(*client, login, current, next);
        QCOMPARE(answer.status, qint32(status));
        QVERIFY(!answer.errorText().isEmpty());
        QCOMPARE(client->request(QLatin1String(cmd::RoleCatalogue), {}, {}).status,
                 qint32(proto::StatusNotLoggedIn));
        QCOMPARE(storedHash(uid), hashBefore);
        QCOMPARE(userObject(uid).parameters, before.parameters);
        QCOMPARE(m_server.client()->login(login, OldPassword).status,
                 qint32(proto::StatusPasswordChangeRequired));
    }

    // Anybody may change his password this way, whether or not he has to.
    void changeWithoutObligation()
    {
        const QString login = nextLogin();
        QVERIFY(addUser(*m_root, login, QStringLiteral("RT_AUDITOR")));
        auto client = m_server.client();
        QCOMPARE(changePassword(*client, login, OldPassword, NewPassword).status,
                 qint32(proto::StatusOk));
        QCOMPARE(m_server.client()->login(login, NewPassword).status, qint32(proto::StatusOk));
    }

    // A user may not lift his own obligation, or move his own expiry, without the right to
    // change users; every other change of his own card stays his.
    void ownObligation_data()
    {
        QTest::addColumn<QString>("roleTemplate");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");
        QTest::addColumn<int>("status");
        const int ok = proto::StatusOk, no = proto::StatusForbidden;
        QTest::addRow("lift own obligation") << "RT_OPERATOR" << RequireChange << "" << no;
        QTest::addRow("set it to 0") << "RT_OPERATOR" << RequireChange << "0" << no;
        QTest::addRow("move own expiry") << "RT_OPERATOR" << Expiry << "2099-01-01" << no;
        QTest::addRow("clear own expiry") << "RT_OPERATOR" << Expiry << "" << no;
        QTest::addRow("the same obligation is no change")
            << "RT_OPERATOR" << RequireChange << "1" << ok;
        QTest::addRow("own surname")
            << "RT_OPERATOR" << QStringLiteral("PT_SURNAME") << "Петров" << ok;
        QTest::addRow("with the right to change users") << "RT_HR" << RequireChange << "" << ok;
    }
    void ownObligation()
    {
        QFETCH(QString, roleTemplate);
        QFETCH(QString, key);
        QFETCH(QString, value);
        QFETCH(int, status);
        const QString login = nextLogin();
        const TYPE_ID uid = addUser(*m_root, login, roleTemplate);
        QVERIFY(uid);
        QCOMPARE(update(*m_root, uid, {{Expiry, QStringLiteral("2024-12-01")}}).status,
                 qint32(proto::StatusOk));
        auto self = m_server.client();
        QCOMPARE(self->login(login, OldPassword).status, qint32(proto::StatusOk));
        QCOMPARE(update(*m_root, uid, {{RequireChange, QStringLiteral("1")}}).status,
                 qint32(proto::StatusOk));
        const ObjectInfo before = userObject(uid);

        const Command answer = update(*self, uid, {{key, value}});
        QCOMPARE(answer.status, qint32(status));
        if (status == proto::StatusOk) {
            QCOMPARE(userObject(uid).parameters.value(key), value);
        } else {
            QVERIFY(!answer.errorText().isEmpty());
            QCOMPARE(userObject(uid).parameters, before.parameters);
        }
    }

    // No snapshot and no push carries a password, in any form, after a reset, a set or a
    // change.
    void noPasswordLeaves()
    {
        const QString login = nextLogin();
        const TYPE_ID uid = addUser(*m_root, login, QStringLiteral("RT_OPERATOR"));
        QVERIFY(uid);
        auto watcher = m_server.client();
        QCOMPARE(watcher->login(QStringLiteral("root"), QStringLiteral("RootPass1")).status,
                 qint32(proto::StatusOk));
        QCOMPARE(update(*m_root, uid,
                        {{QLatin1String(db::user::CLEAR_PASSWORD), QStringLiteral("1")},
                         {QLatin1String(db::user::PASSHASH), clientHash(DefaultPassword)}})
                     .status,
                 qint32(proto::StatusOk));
        QCOMPARE(update(*m_root, uid,
                        {{QLatin1String(db::user::SET_PASSWORD), QStringLiteral("1")},
                         {QLatin1String(db::user::PASSHASH), clientHash(OldPassword)},
                         {RequireChange, QStringLiteral("1")}})
                     .status,
                 qint32(proto::StatusOk));
        QCOMPARE(changePassword(*m_server.client(), login, OldPassword, NewPassword).status,
                 qint32(proto::StatusOk));
        QTRY_COMPARE(watcher->pushesNamed(cmd::DataChanged).size(), 3);

        const QStringList secrets = {clientHash(DefaultPassword), clientHash(OldPassword),
                                     clientHash(NewPassword), DefaultPassword, storedHash(uid)};
        QList<QByteArray> payloads;
        for (const Command &push : watcher->pushes)
            payloads.append(push.data);
        payloads.append(m_root
                            ->request(cmd::Snapshot,
                                      ZRDataStream::pack(QString::fromLatin1(zeral::USER_DATANAME),
                                                         quint32(0), qint32(2000)))
                            .data);
        for (const QByteArray &payload : qAsConst(payloads)) {
            for (const char *key :
                 {db::user::PASSHASH, db::user::SET_PASSWORD, db::user::CLEAR_PASSWORD}) {
                QVERIFY2(!payload.contains(ZRDataStream::pack(QString::fromLatin1(key))), key);
            }
            for (const QString &secret : secrets) {
                QVERIFY(!secret.isEmpty());
                QVERIFY2(!payload.contains(ZRDataStream::pack(secret)), qPrintable(secret));
            }
        }
        QCOMPARE(lastPushed(*watcher, uid).uid, uid);
    }

    // The policy as GUIPassFuncs reads it, for a client that has no store yet.
    void policy_data()
    {
        QTest::addColumn<Params>("settings");
        QTest::addColumn<int>("minLength");
        QTest::addColumn<bool>("upper");
        QTest::addColumn<bool>("lower");
        QTest::addColumn<bool>("digit");
        QTest::addColumn<bool>("special");
        namespace d = db::database;
        const auto settings = [](const char *min, const char *upper, const char *lower,
                                 const char *digit, const char *special) {
            return Params{{QLatin1String(d::PASSWORD_MIN_LENGTH), QLatin1String(min)},
                          {QLatin1String(d::PASSWORD_REQUIRE_UPPER), QLatin1String(upper)},
                          {QLatin1String(d::PASSWORD_REQUIRE_LOWER), QLatin1String(lower)},
                          {QLatin1String(d::PASSWORD_REQUIRE_DIGIT), QLatin1String(digit)},
                          {QLatin1String(d::PASSWORD_REQUIRE_SPECIAL), QLatin1String(special)}};
        };
        QTest::addRow("as seeded") << Params() << 8 << true << true << true << false;
        QTest::addRow("strict") << settings("14", "1", "true", "yes", "1") << 14 << true << true
                                << true << true;
        QTest::addRow("lax") << settings("4", "0", "false", "no", "0") << 4 << false << false
                             << false << false;
        QTest::addRow("unreadable values take the defaults")
            << settings("many", "maybe", "", "?", "x") << 8 << true << true << true << false;
        QTest::addRow("too long a minimum is bounded")
            << settings("1000", "1", "1", "1", "0") << GUIPassFuncs::MaxLength << true << true
            << true << false;
    }
    void policy()
    {
        QFETCH(Params, settings);
        QFETCH(int, minLength);
        QFETCH(bool, upper);
        QFETCH(bool, lower);
        QFETCH(bool, digit);
        QFETCH(bool, special);
        if (!settings.isEmpty())
            QCOMPARE(setDatabase(settings), qint32(proto::StatusOk));
        // No session is needed.
        auto client = m_server.client();
        const Command answer = client->request(QLatin1String(cmd::PasswordPolicy), {}, {});
        QCOMPARE(answer.status, qint32(proto::StatusOk));
        QMap<QString, QVariant> options;
        ZRDataStream in(answer.data);
        in >> options;
        QCOMPARE(in.status(), QDataStream::Ok);
        QCOMPARE(options.size(), 5);
        QCOMPARE(options.value(GUIPassFuncs::MinLength).toInt(), minLength);
        QCOMPARE(options.value(GUIPassFuncs::RequireUpper).toBool(), upper);
        QCOMPARE(options.value(GUIPassFuncs::RequireLower).toBool(), lower);
        QCOMPARE(options.value(GUIPassFuncs::RequireDigit).toBool(), digit);
        QCOMPARE(options.value(GUIPassFuncs::RequireSpecial).toBool(), special);
    }
    void cleanup()
    {
        // Back to the policy as seeded, for the cases that follow.
        namespace d = db::database;
        QCOMPARE(setDatabase({{QLatin1String(d::PASSWORD_MIN_LENGTH), QStringLiteral("8")},
                              {QLatin1String(d::PASSWORD_REQUIRE_UPPER), QStringLiteral("1")},
                              {QLatin1String(d::PASSWORD_REQUIRE_LOWER), QStringLiteral("1")},
                              {QLatin1String(d::PASSWORD_REQUIRE_DIGIT), QStringLiteral("1")},
                              {QLatin1String(d::PASSWORD_REQUIRE_SPECIAL), QStringLiteral("0")}}),
                 qint32(proto::StatusOk));
    }

private:
    QString nextLogin() { return QStringLiteral("pw%1").arg(++m_counter); }

    static Command update(WireClient &by, TYPE_ID uid, const Params &parameters)
    {
        return by.request(
            cmd::UpdateObject,
            ZRDataStream::pack(quint32(uid), QStringLiteral("OT_USER"), quint32(0), parameters));
    }
    qint32 setDatabase(const Params &parameters)
    {
        return m_root
            ->request(cmd::UpdateObject,
                      ZRDataStream::pack(quint32(m_database),
                                         QString::fromLatin1(db::system::DATABASE), quint32(0),
                                         parameters))
            .status;
    }
    ObjectInfo userObject(TYPE_ID uid)
    {
        for (const ObjectInfo &user : snapshot(*m_root, QLatin1String(zeral::USER_DATANAME))) {
            if (user.uid == uid)
                return user;
        }
        return {};
    }
    QSqlQuery query(const QString &statement)
    {
        return harness::readDatabase(m_server.databasePath, statement);
    }
    QString storedHash(TYPE_ID uid)
    {
        QSqlQuery result
            = query(QStringLiteral("SELECT hash FROM passwords WHERE uid = %1").arg(uid));
        return result.next() ? result.value(0).toString() : QString();
    }

    Server m_server;
    std::unique_ptr<WireClient> m_root;
    TYPE_ID m_database = 0;
    int m_counter = 0;
};

QTEST_GUILESS_MAIN(TestServerPasswords)
#include "tst_serverpasswords.moc"
