#include <host/core/authdata.h>
#include <host/core/guipassfuncs.h>
#include <host/core/loginclient.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <tests/support/scriptedserver.h>

#include <QCryptographicHash>
#include <QSignalSpy>
#include <QTest>

using namespace zeral::proto;

namespace {

QByteArray identity(const QByteArray &sessionId)
{
    return ZRDataStream::pack(sessionId, quint32(7), QStringLiteral("RT_ADMINISTRATOR"),
                              QList<QString>{QStringLiteral("RL_USER_SHOW")});
}

QString clientHash(const QByteArray &utf8)
{
    return QString::fromLatin1(QCryptographicHash::hash(utf8, QCryptographicHash::Md5).toHex());
}

// Answers `name` with `status`: a success carries `payload`, a failure a text.
ScriptedServer::Script answerWith(int status, const QByteArray &payload = identity("s-1"))
{
    return [=](const Command &request) {
        return status == StatusOk
                   ? Command::answer(request, StatusOk, payload)
                   : Command::failure(request, status, QStringLiteral("Отказ сервера"));
    };
}

} // namespace

class TestLoginClient : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        AuthData::clear();
        m_server = new ScriptedServer(this);
        m_client = new LoginClient(m_server, this);
    }
    void cleanup()
    {
        delete m_client;
        delete m_server;
    }

    void login_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<int>("reported"); // the status loginFailed tells, 0 for success
        QTest::addRow("accepted") << int(StatusOk) << identity("s-1") << 0;
        QTest::addRow("wrong password")
            << int(StatusLoginFailed) << QByteArray() << int(StatusLoginFailed);
        QTest::addRow("blocked") << int(StatusAccountBlocked) << QByteArray()
                                 << int(StatusAccountBlocked);
        QTest::addRow("locked") << int(StatusLoginLocked) << QByteArray() << int(StatusLoginLocked);
        QTest::addRow("password change required")
            << int(StatusPasswordChangeRequired) << QByteArray()
            << int(StatusPasswordChangeRequired);
        QTest::addRow("unreadable success")
            << int(StatusOk) << QByteArray("x") << int(StatusMalformed);
        QTest::addRow("success without session")
            << int(StatusOk) << identity(QByteArray()) << int(StatusMalformed);
    }
    void login()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, payload);
        QFETCH(int, reported);
        m_server->script(QLatin1String(command::Login), answerWith(status, payload));
        QSignalSpy loggedIn(m_client, &LoginClient::loggedIn);
        QSignalSpy failed(m_client, &LoginClient::loginFailed);
        m_client->login(QStringLiteral("админ"), QStringLiteral("секрет"),
                        QStringLiteral("studio 1"));
        QTRY_COMPARE(loggedIn.count() + failed.count(), 1);

        ZRDataStream in(m_server->lastSent(QLatin1String(command::Login)).data);
        QString login, hash, client, language;
        in >> login >> hash >> client >> language;
        const QString expectedHash = clientHash("секрет");
        QCOMPARE(login, QStringLiteral("админ"));
        QCOMPARE(hash, expectedHash);
        QCOMPARE(client, QStringLiteral("studio 1"));
        QCOMPARE(language, QString()); // none set: the server speaks Russian
        QVERIFY(in.atEnd());

        if (reported != 0) {
            QCOMPARE(failed.first().at(0).toInt(), reported);
            QVERIFY(!failed.first().at(1).toString().isEmpty());
            QVERIFY(!AuthData::isLoggedIn());
            return;
        }
        QCOMPARE(AuthData::user(), QStringLiteral("админ"));
        QCOMPARE(AuthData::userId(), 7u);
        QCOMPARE(AuthData::sessionId(), QByteArray("s-1"));
        QCOMPARE(AuthData::roletemplateId(), QStringLiteral("RT_ADMINISTRATOR"));
        QCOMPARE(AuthData::roles(), QStringList{QStringLiteral("RL_USER_SHOW")});
        QCOMPARE(AuthData::passwdHash(), expectedHash);
    }

    // The answer to a change is the answer to a login: it opens the session under the new
    // password. A refusal is a failure of the change, not of a login.
    void changePassword_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<int>("reported"); // the status passwordChangeFailed tells, 0 for success
        QTest::addRow("accepted") << int(StatusOk) << identity("s-2") << 0;
        QTest::addRow("same password")
            << int(StatusConflict) << QByteArray() << int(StatusConflict);
        QTest::addRow("wrong current password")
            << int(StatusLoginFailed) << QByteArray() << int(StatusLoginFailed);
        QTest::addRow("unreadable success")
            << int(StatusOk) << QByteArray("x") << int(StatusMalformed);
        QTest::addRow("connection lost")
            << int(StatusConnectionLost) << QByteArray() << int(StatusConnectionLost);
    }
    void changePassword()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, payload);
        QFETCH(int, reported);
        m_server->script(QLatin1String(command::ChangePassword), answerWith(status, payload));
        QSignalSpy loggedIn(m_client, &LoginClient::loggedIn);
        QSignalSpy loginFailed(m_client, &LoginClient::loginFailed);
        QSignalSpy failed(m_client, &LoginClient::passwordChangeFailed);
        m_client->changePassword(QStringLiteral("админ"), QStringLiteral("старый"),
                                 QStringLiteral("новый"), QStringLiteral("studio 1"));
        QTRY_COMPARE(loggedIn.count() + failed.count(), 1);
        QCOMPARE(loginFailed.count(), 0);

        ZRDataStream in(m_server->lastSent(QLatin1String(command::ChangePassword)).data);
        QString login, current, next, client, language;
        in >> login >> current >> next >> client >> language;
        QCOMPARE(login, QStringLiteral("админ"));
        QCOMPARE(current, clientHash("старый"));
        QCOMPARE(next, clientHash("новый"));
        QCOMPARE(client, QStringLiteral("studio 1"));
        QCOMPARE(language, QString());
        QVERIFY(in.atEnd());

        if (reported != 0) {
            QCOMPARE(failed.first().at(0).toInt(), reported);
            QVERIFY(!failed.first().at(1).toString().isEmpty());
            QVERIFY(!AuthData::isLoggedIn());
            return;
        }
        QCOMPARE(AuthData::sessionId(), QByteArray("s-2"));
        QCOMPARE(AuthData::user(), QStringLiteral("админ"));
        // A later resume proves itself with the new password.
        QCOMPARE(AuthData::passwdHash(), clientHash("новый"));
    }

    void changeToAnEmptyPasswordSendsNoDigest()
    {
        m_server->script(QLatin1String(command::ChangePassword), answerWith(StatusMalformed));
        QSignalSpy failed(m_client, &LoginClient::passwordChangeFailed);
        m_client->changePassword(QStringLiteral("user"), QStringLiteral("pw"), QString(),
                                 QString());
        QVERIFY(failed.wait(2000));
        ZRDataStream in(m_server->lastSent(QLatin1String(command::ChangePassword)).data);
        QString login, current, next;
        in >> login >> current >> next;
        QCOMPARE(next, QString());
    }

    void passwordPolicy_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<int>("minLength");
        QTest::addColumn<bool>("special");
        const QMap<QString, QVariant> strict = {{GUIPassFuncs::MinLength, 15},
                                                {GUIPassFuncs::RequireUpper, true},
                                                {GUIPassFuncs::RequireLower, true},
                                                {GUIPassFuncs::RequireDigit, false},
                                                {GUIPassFuncs::RequireSpecial, true}};
        QTest::addRow("the server's") << int(StatusOk) << ZRDataStream::pack(strict) << 15 << true;
        // An older server doesn't know the command: the default policy stands in.
        QTest::addRow("unknown command")
            << int(StatusNotFound) << QByteArray() << int(GUIPassFuncs::DefaultMinLength) << false;
        QTest::addRow("unreadable")
            << int(StatusOk) << QByteArray("\xff") << int(GUIPassFuncs::DefaultMinLength) << false;
    }
    void passwordPolicy()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, payload);
        QFETCH(int, minLength);
        QFETCH(bool, special);
        m_server->script(QLatin1String(command::PasswordPolicy), answerWith(status, payload));
        QSignalSpy received(m_client, &LoginClient::passwordPolicyReceived);
        m_client->requestPasswordPolicy();
        QVERIFY(received.wait(2000));
        // No session is asked for, nor needed.
        QVERIFY(m_server->lastSent(QLatin1String(command::PasswordPolicy)).sessionId.isEmpty());
        const auto options = received.first().at(0).value<QMap<QString, QVariant>>();
        QCOMPARE(options.value(GUIPassFuncs::MinLength).toInt(), minLength);
        QCOMPARE(options.value(GUIPassFuncs::RequireSpecial).toBool(), special);
        QCOMPARE(options.size(), 5);
    }

    // The server closes the connection of a session it ended right after saying so: a login
    // sent at once goes down with it, and goes out once more on the next connection.
    void loginDroppedWithItsConnection_data()
    {
        QTest::addColumn<QString>("next"); // what happens after the drop
        QTest::addColumn<int>("reported"); // the status loginFailed tells, 0 for success
        QTest::addRow("connected again") << "connected" << 0;
        QTest::addRow("no connection") << "failed" << int(StatusConnectionLost);
        QTest::addRow("server given up") << "given up" << int(StatusConnectionLost);
        QTest::addRow("dropped again") << "dropped" << int(StatusConnectionLost);
    }
    void loginDroppedWithItsConnection()
    {
        QFETCH(QString, next);
        QFETCH(int, reported);
        QSignalSpy loggedIn(m_client, &LoginClient::loggedIn);
        QSignalSpy failed(m_client, &LoginClient::loginFailed);
        m_client->login(QStringLiteral("user"), QStringLiteral("pw"), QString());
        m_server->dropConnection();
        flushAnswers();
        QCOMPARE(failed.count(), 0);
        m_server->clearSent();
        if (next == QLatin1String("failed") || next == QLatin1String("given up")) {
            // As the router does: disconnected, and for a failed connect the reason follows.
            emit m_server->stateChanged(ZRServerInterface::State::Disconnected);
            if (next == QLatin1String("failed"))
                emit m_server->connectionFailed(QStringLiteral("refused"));
        } else {
            m_server->script(QLatin1String(command::Login), answerWith(StatusOk));
            if (next == QLatin1String("dropped"))
                m_server->unscript(QLatin1String(command::Login));
            m_server->setOnline(true);
            emit m_server->connected();
            if (next == QLatin1String("dropped"))
                m_server->dropConnection();
            QCOMPARE(m_server->lastSent(QLatin1String(command::Login)).name,
                     QLatin1String(command::Login));
        }
        QTRY_COMPARE(loggedIn.count() + failed.count(), 1);
        QCOMPARE(failed.isEmpty() ? 0 : failed.first().at(0).toInt(), reported);
        // Once is all: a later connection sends nothing more.
        m_server->clearSent();
        emit m_server->connected();
        QCOMPARE(m_server->lastSent(QLatin1String(command::Login)).name, QString());
    }

    // The operator's language goes at the end of every request that opens or resumes a
    // session, so that the server's reasons come in it.
    void languageIsNamed_data()
    {
        QTest::addColumn<QString>("request");
        QTest::addColumn<int>("fieldsBefore"); // the texts and ids the request carries first
        QTest::addRow("login") << QString::fromLatin1(command::Login) << 3;
        QTest::addRow("password change") << QString::fromLatin1(command::ChangePassword) << 4;
        QTest::addRow("resume") << QString::fromLatin1(command::Resume) << 3;
    }
    void languageIsNamed()
    {
        QFETCH(QString, request);
        QFETCH(int, fieldsBefore);
        m_client->setLanguage(QStringLiteral("en_GB"));
        if (request == QLatin1String(command::Login)) {
            logIn();
        } else if (request == QLatin1String(command::ChangePassword)) {
            m_server->script(request, answerWith(StatusOk));
            QSignalSpy loggedIn(m_client, &LoginClient::loggedIn);
            m_client->changePassword(QStringLiteral("user"), QStringLiteral("old"),
                                     QStringLiteral("new"), QStringLiteral("studio 1"));
            QVERIFY(loggedIn.wait(2000));
        } else {
            logIn();
            m_server->script(request, answerWith(StatusOk));
            QSignalSpy resumed(m_client, &LoginClient::resumed);
            emit m_server->connected();
            QVERIFY(resumed.wait(2000));
        }
        ZRDataStream in(m_server->lastSent(request).data);
        // The session id of a resume is bytes, the rest texts: each read as what it is.
        if (request == QLatin1String(command::Resume)) {
            QByteArray sessionId;
            in >> sessionId;
            QCOMPARE(sessionId, QByteArray("s-1"));
            --fieldsBefore;
        }
        for (int field = 0; field < fieldsBefore; ++field) {
            QString text;
            in >> text;
        }
        QString language;
        in >> language;
        QCOMPARE(in.status(), QDataStream::Ok);
        QCOMPARE(language, QStringLiteral("en_GB"));
        QVERIFY(in.atEnd());
    }

    void reconnectResumesTheSession_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("stillLoggedIn");
        QTest::addRow("resumed") << int(StatusOk) << true;
        QTest::addRow("refused") << int(StatusNotFound) << false;
        QTest::addRow("dropped again") << int(StatusConnectionLost) << true;
    }
    void reconnectResumesTheSession()
    {
        QFETCH(int, status);
        QFETCH(bool, stillLoggedIn);
        logIn();
        m_server->script(QLatin1String(command::Resume), answerWith(status));
        QSignalSpy resumed(m_client, &LoginClient::resumed);
        QSignalSpy lost(m_client, &LoginClient::sessionLost);
        emit m_server->connected();
        flushAnswers();

        ZRDataStream in(m_server->lastSent(QLatin1String(command::Resume)).data);
        QByteArray sessionId;
        QString login, hash, language;
        in >> sessionId >> login >> hash >> language;
        QCOMPARE(sessionId, QByteArray("s-1"));
        QCOMPARE(login, QStringLiteral("user"));
        QCOMPARE(hash, clientHash("pw"));
        QCOMPARE(language, QString());
        QVERIFY(in.atEnd());
        QCOMPARE(AuthData::isLoggedIn(), stillLoggedIn);
        QCOMPARE(resumed.count(), status == StatusOk ? 1 : 0);
        QCOMPARE(lost.count(), stillLoggedIn ? 0 : 1);
    }

    void sessionEnds_data()
    {
        QTest::addColumn<bool>("closedByServer");
        QTest::addRow("disconnected by another operator") << true;
        QTest::addRow("logout") << false;
    }
    void sessionEnds()
    {
        QFETCH(bool, closedByServer);
        logIn();
        QSignalSpy lost(m_client, &LoginClient::sessionLost);
        if (closedByServer) {
            m_server->push(QLatin1String(command::SessionClosed),
                           ZRDataStream::pack(QStringLiteral("Вас отключил администратор")));
            QCOMPARE(lost.count(), 1);
            QCOMPARE(lost.first().at(0).toString(), QStringLiteral("Вас отключил администратор"));
        } else {
            m_client->logout();
            QCOMPARE(m_server->lastSent(QLatin1String(command::Logout)).sessionId,
                     QByteArray("s-1"));
            QCOMPARE(lost.count(), 0);
        }
        QVERIFY(!AuthData::isLoggedIn());
    }

private:
    // Answers come in the order of the requests: once a later one is here, all before it
    // have been handled.
    void flushAnswers()
    {
        m_server->script(QStringLiteral("test.flush"), answerWith(StatusOk));
        bool flushed = false;
        Command flush;
        flush.type = NamedCommand;
        flush.name = QStringLiteral("test.flush");
        m_server->send(flush, [&flushed](Command &) { flushed = true; });
        QTRY_VERIFY(flushed);
    }

    void logIn()
    {
        m_server->script(QLatin1String(command::Login), answerWith(StatusOk));
        QSignalSpy loggedIn(m_client, &LoginClient::loggedIn);
        m_client->login(QStringLiteral("user"), QStringLiteral("pw"), QString());
        QVERIFY(loggedIn.wait(2000));
    }

    ScriptedServer *m_server = nullptr;
    LoginClient *m_client = nullptr;
};

QTEST_GUILESS_MAIN(TestLoginClient)
#include "tst_loginclient.moc"
