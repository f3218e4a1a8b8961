// The server inside the studio: its own thread, a port of its choice when the preferred one is
// taken, and one engine per database file.
#include <app/startup/embeddedserver.h>

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTcpSocket>
#include <QtTest>

class EmbeddedServerTest : public QObject
{
    Q_OBJECT

private slots:
    void takenPortAndOpenDatabase()
    {
        QTemporaryDir dir;
        EmbeddedServer first;
        QSignalSpy firstStarted(&first, &EmbeddedServer::started);
        first.start(dir.filePath(QStringLiteral("one.db")), false, 0);
        QVERIFY(firstStarted.wait(20000));
        QVERIFY(first.isRunning());
        QTcpSocket probe;
        probe.connectToHost(QHostAddress::LocalHost, first.port());
        QVERIFY(probe.waitForConnected(5000));

        // Another database asks for the same port: it gets another one.
        EmbeddedServer second;
        QSignalSpy secondStarted(&second, &EmbeddedServer::started);
        second.start(dir.filePath(QStringLiteral("two.db")), false, first.port());
        QVERIFY(secondStarted.wait(20000));
        QVERIFY(second.port() != first.port());

        // The same database twice: refused, with the way to join the first.
        EmbeddedServer third;
        QSignalSpy thirdFailed(&third, &EmbeddedServer::failed);
        third.start(dir.filePath(QStringLiteral("one.db")), false, first.port());
        QTRY_COMPARE(thirdFailed.size(), 1);
        QVERIFY(thirdFailed.constFirst().constFirst().toString().contains(
            QStringLiteral("--server 127.0.0.1:%1").arg(first.port())));
        QVERIFY(!third.isRunning());

        // Once the first is stopped, the file is free again.
        first.stop();
        QVERIFY(!first.isRunning());
        QSignalSpy thirdStarted(&third, &EmbeddedServer::started);
        third.start(dir.filePath(QStringLiteral("one.db")), false, 0);
        QVERIFY(thirdStarted.wait(20000));
    }

    void rootPasswordIsAskedOnceOnly()
    {
        QTemporaryDir dir;
        EmbeddedServer server;
        QSignalSpy started(&server, &EmbeddedServer::started);
        server.start(dir.filePath(QStringLiteral("fresh.db")), false, 0);
        QVERIFY(started.wait(20000));
        QVERIFY(!server.rootPasswordIsSet());
        QVERIFY(server.setRootPassword(QStringLiteral("0123456789abcdef0123456789abcdef")));
        QVERIFY(server.rootPasswordIsSet());
        server.stop();
        server.start(dir.filePath(QStringLiteral("fresh.db")), false, 0);
        QVERIFY(started.wait(20000));
        QVERIFY(server.rootPasswordIsSet());
    }
};

QTEST_MAIN(EmbeddedServerTest)
#include "tst_embeddedserver.moc"
