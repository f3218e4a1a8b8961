#include "serverharness.h"

#include <host/core/authdata.h>
#include <host/core/loginclient.h>
#include <host/core/zrserverinterface.h>

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

using namespace harness;

// The engine with a certificate made for this run: TLS clients that trust it work, a plain
// client gets nothing and loses its connection, and the studio's router logs in over TLS.
class TestServerTls : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        QVERIFY(QSslSocket::supportsSsl());
        const QString openssl = QStandardPaths::findExecutable(QStringLiteral("openssl"));
        QVERIFY2(!openssl.isEmpty(), "the openssl command is needed (scripts/packages.txt)");
        QProcess process;
        process.start(openssl, {"req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj",
                                "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1", "-days",
                                "1", "-keyout", keyPath(), "-out", certificatePath()});
        QVERIFY(process.waitForFinished(60000));
        QVERIFY2(process.exitCode() == 0, process.readAllStandardError().constData());
        QFile file(certificatePath());
        QVERIFY(file.open(QIODevice::ReadOnly));
        m_certificate = QSslCertificate(&file, QSsl::Pem);
        QVERIFY(!m_certificate.isNull());
    }

    void init()
    {
        zeral::server::ServerEngine::Options options;
        options.tlsCertificatePath = certificatePath();
        options.tlsKeyPath = keyPath();
        options.handshakeTimeoutMs = 300;
        m_server = std::make_unique<Server>();
        QCOMPARE(m_server->start(options), QString());
    }
    void cleanup() { m_server.reset(); }

    void plainClientGetsNothingWhileTlsClientWorks()
    {
        WireClient secure;
        QVERIFY(secure.connectEncrypted(m_server->engine->port(), m_certificate));
        QCOMPARE(secure.login(QStringLiteral("root"), QStringLiteral("RootPass1")).status,
                 zeral::proto::StatusOk);

        auto plain = m_server->client();
        plain->socket.write(FrameCodec::encode(Command::named(QLatin1String(cmd::Login))));
        QTRY_VERIFY_WITH_TIMEOUT(plain->isClosed(), 10000);
        QVERIFY(plain->answers.isEmpty());
        QVERIFY(plain->pushes.isEmpty());
        // One that says nothing at all is dropped once its time for a handshake is over.
        auto silent = m_server->client();
        QTRY_VERIFY_WITH_TIMEOUT(silent->isClosed(), 10000);

        const Command sessions = secure.request(cmd::GetSessionsInfo);
        QCOMPARE(sessions.status, zeral::proto::StatusOk);
        QVERIFY(!secure.isClosed());
    }

    void studioLogsInOverTls_data()
    {
        QTest::addColumn<bool>("trusted");
        QTest::addRow("server's certificate trusted") << true;
        QTest::addRow("only the system's authorities") << false;
    }
    void studioLogsInOverTls()
    {
        QFETCH(bool, trusted);
        AuthData::clear();
        ZRServerInterface router;
        if (trusted) {
            QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
            configuration.setCaCertificates({m_certificate});
            router.setTlsConfiguration(configuration);
        }
        QSignalSpy connected(&router, &ZRServerInterface::connected);
        QSignalSpy failed(&router, &ZRServerInterface::connectionFailed);
        router.connectToServer(QStringLiteral("127.0.0.1"), m_server->engine->port(), true);
        QTRY_VERIFY_WITH_TIMEOUT(connected.count() + failed.count() == 1, 10000);
        if (!trusted) {
            QCOMPARE(connected.count(), 0);
            QVERIFY2(failed.at(0).at(0).toString().contains(
                         QStringLiteral("Не удалось установить защищённое соединение")),
                     qPrintable(failed.at(0).at(0).toString()));
            return;
        }
        LoginClient client(&router);
        QSignalSpy loggedIn(&client, &LoginClient::loggedIn);
        client.login(QStringLiteral("root"), QStringLiteral("RootPass1"), QStringLiteral("test"));
        QVERIFY(loggedIn.wait(10000));
        QCOMPARE(AuthData::user(), QStringLiteral("root"));
        QVERIFY(!AuthData::sessionId().isEmpty());
        AuthData::clear();
    }

private:
    QString certificatePath() const { return m_dir.filePath(QStringLiteral("server.crt")); }
    QString keyPath() const { return m_dir.filePath(QStringLiteral("server.key")); }

    QTemporaryDir m_dir;
    QSslCertificate m_certificate;
    std::unique_ptr<Server> m_server;
};

QTEST_MAIN(TestServerTls)
#include "tst_servertls.moc"
