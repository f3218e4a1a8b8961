// What the server keeps per client stays bounded: ended sessions are forgotten once they no
// longer matter, and a client that doesn't read its answers is dropped. (The login throttle's
// own bounds are tested with it.)

#include "serverharness.h"

#include <server/engine/session/sessionregistry.h>

using namespace harness;
using zeral::server::SessionRegistry;
namespace proto = zeral::proto;

class TestServerLimits : public QObject
{
    Q_OBJECT
private slots:
    void endedSessionsAreForgottenAfterTheResumeWindow()
    {
        SessionRegistry registry;
        const QDateTime start(QDate(2024, 3, 1), QTime(10, 0));
        const int window = 600;
        const QByteArray id = registry.create({})->id;
        registry.end(id, start);
        QVERIFY(registry.wasEnded(id));

        registry.endDetachedBefore(start.addSecs(1 - window), start.addSecs(1));
        QVERIFY(registry.wasEnded(id)); // within the window: a resume still hears "ended"
        registry.endDetachedBefore(start.addSecs(1), start.addSecs(window + 1));
        QCOMPARE(registry.endedRemembered(), 0);
    }

    void clientThatDoesNotReadIsDropped()
    {
        Server server;
        zeral::server::ServerEngine::Options options;
        options.maxSendBufferBytes = 256 * 1024;
        QCOMPARE(server.start(options), QString());
        auto reader = server.rootClient();
        auto idle = server.rootClient();
        QCOMPARE(server.engine->connectionCount(), 2);

        // From now on `idle` reads nothing: Qt's buffer fills, then the kernel's.
        QObject::disconnect(&idle->socket, &QTcpSocket::readyRead, idle.get(), nullptr);
        idle->socket.setReadBufferSize(4096);
        for (int i = 0; i < 4000; ++i) {
            Command request = Command::named(QLatin1String(cmd::RoleCatalogue), idle->session);
            request.type = proto::NamedCommand;
            request.id = quint64(100 + i);
            idle->socket.write(FrameCodec::encode(request));
        }
        QTRY_COMPARE_WITH_TIMEOUT(server.engine->connectionCount(), 1, 30000);
        QCOMPARE(reader->request(cmd::RoleCatalogue).status, qint32(proto::StatusOk));
    }
};

QTEST_GUILESS_MAIN(TestServerLimits)
#include "tst_serverlimits.moc"
