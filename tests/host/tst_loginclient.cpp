#include <host/core/authdata.h>
#include <host/core/loginclient.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <tests/support/scriptedserver.h>

#include <QCryptographicHash>
#include <QSignalSpy>
#include <QTest>

using namespace zeral::proto;

namespace {

QByteArray identityPayload(const QByteArray &sessionId, quint32 uid, const QString &templateId,
                           const QList<QString> &roles)
{
    QByteArray bytes;
    ZRDataStream out(&bytes, QIODevice::WriteOnly);
    out << sessionId << uid << templateId << roles;
    return bytes;
}

QString md5Hex(const QString &text)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Md5).toHex());
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

    void loginFillsTheOperator()
    {
        m_server->script(QLatin1String(command::Login), [](const Command &request) {
            return Command::answer(request, StatusOk,
                                   identityPayload("s-1", 7, QStringLiteral("RT_ADMINISTRATOR"),
                                                   {QStringLiteral("RL_USER_SHOW")}));
        });
        QSignalSpy loggedIn(m_client, &LoginClient::loggedIn);
        m_client->login(QStringLiteral("админ"), QStringLiteral("секрет"),
                        QStringLiteral("studio 1"));
        QVERIFY(loggedIn.wait(2000));

        const Command request = m_server->lastSent(QLatin1String(command::Login));
        ZRDataStream in(request.data);
        QString login, hash, client;
        in >> login >> hash >> client;
        QCOMPARE(login, QStringLiteral("админ"));
        QCOMPARE(hash, md5Hex(QStringLiteral("секрет")));
        QCOMPARE(client, QStringLiteral("studio 1"));
        QVERIFY(in.atEnd());

        QCOMPARE(AuthData::user(), QStringLiteral("админ"));
        QCOMPARE(AuthData::userId(), 7u);
        QCOMPARE(AuthData::sessionId(), QByteArray("s-1"));
        QCOMPARE(AuthData::roletemplateId(), QStringLiteral("RT_ADMINISTRATOR"));
        QCOMPARE(AuthData::roles(), QStringList{QStringLiteral("RL_USER_SHOW")});
        QCOMPARE(AuthData::passwdHash(), md5Hex(QStringLiteral("секрет")));
    }

    void loginFailureIsReported_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("emptyPayload");
        QTest::addRow("wrong password")
            << int(StatusLoginFailed) << QStringLiteral("Неверный логин или пароль") << false;
        QTest::addRow("blocked") << int(StatusAccountBlocked)
                                 << QStringLiteral("Учётная запись заблокирована") << false;
        QTest::addRow("locked") << int(StatusLoginLocked) << QStringLiteral("Повторите через 30 с")
                                << false;
        QTest::addRow("unreadable success") << int(StatusMalformed) << QString() << true;
    }
    void loginFailureIsReported()
    {
        QFETCH(int, status);
        QFETCH(QString, text);
        QFETCH(bool, emptyPayload);
        m_server->script(QLatin1String(command::Login), [=](const Command &request) {
            return emptyPayload ? Command::answer(request, StatusOk)
                                : Command::failure(request, status, text);
        });
        QSignalSpy failed(m_client, &LoginClient::loginFailed);
        QSignalSpy loggedIn(m_client, &LoginClient::loggedIn);
        m_client->login(QStringLiteral("user"), QStringLiteral("pw"), QString());
        QVERIFY(failed.wait(2000));
        QCOMPARE(failed.first().at(0).toInt(), status);
        if (!text.isEmpty())
            QCOMPARE(failed.first().at(1).toString(), text);
        else
            QVERIFY(!failed.first().at(1).toString().isEmpty());
        QCOMPARE(loggedIn.count(), 0);
        QVERIFY(!AuthData::isLoggedIn());
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
        m_server->script(QLatin1String(command::Resume), [=](const Command &request) {
            return status == StatusOk
                       ? Command::answer(request, StatusOk,
                                         identityPayload("s-1", 7, QStringLiteral("RT_X"), {}))
                       : Command::failure(request, status, QStringLiteral("Сессия закрыта"));
        });
        QSignalSpy resumed(m_client, &LoginClient::resumed);
        QSignalSpy lost(m_client, &LoginClient::sessionLost);
        emit m_server->connected();
        flushAnswers();

        const Command request = m_server->lastSent(QLatin1String(command::Resume));
        ZRDataStream in(request.data);
        QByteArray sessionId;
        QString login, hash;
        in >> sessionId >> login >> hash;
        QCOMPARE(sessionId, QByteArray("s-1"));
        QCOMPARE(login, QStringLiteral("user"));
        QCOMPARE(hash, md5Hex(QStringLiteral("pw")));

        QCOMPARE(AuthData::isLoggedIn(), stillLoggedIn);
        QCOMPARE(resumed.count(), status == StatusOk ? 1 : 0);
        QCOMPARE(lost.count(), stillLoggedIn ? 0 : 1);
    }

    void closedSessionIsLost()
    {
        logIn();
        QSignalSpy lost(m_client, &LoginClient::sessionLost);
        QByteArray reason;
        ZRDataStream out(&reason, QIODevice::WriteOnly);
        out << QStringLiteral("Вас отключил администратор");
        m_server->push(QLatin1String(command::SessionClosed), reason);
        QCOMPARE(lost.count(), 1);
        QCOMPARE(lost.first().at(0).toString(), QStringLiteral("Вас отключил администратор"));
        QVERIFY(!AuthData::isLoggedIn());
    }

    void logoutEndsTheSession()
    {
        logIn();
        m_client->logout();
        const Command request = m_server->lastSent(QLatin1String(command::Logout));
        QCOMPARE(request.sessionId, QByteArray("s-1"));
        QVERIFY(!AuthData::isLoggedIn());
    }

private:
    // Answers come in the order of the requests: once a later one is here, all before it
    // have been handled.
    void flushAnswers()
    {
        m_server->script(QStringLiteral("test.flush"),
                         [](const Command &request) { return Command::answer(request, StatusOk); });
        bool flushed = false;
        Command flush;
        flush.type = NamedCommand;
        flush.name = QStringLiteral("test.flush");
        m_server->send(flush, [&flushed](Command &) { flushed = true; });
        QTRY_VERIFY(flushed);
    }

    void logIn()
    {
        m_server->script(QLatin1String(command::Login), [](const Command &request) {
            return Command::answer(request, StatusOk,
                                   identityPayload("s-1", 7, QStringLiteral("RT_X"), {}));
        });
        QSignalSpy loggedIn(m_client, &LoginClient::loggedIn);
        m_client->login(QStringLiteral("user"), QStringLiteral("pw"), QString());
        QVERIFY(loggedIn.wait(2000));
    }

    ScriptedServer *m_server = nullptr;
    LoginClient *m_client = nullptr;
};

QTEST_GUILESS_MAIN(TestLoginClient)
#include "tst_loginclient.moc"
