#include <host/core/framecodec.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <host/core/zrserverinterface.h>
#include <tests/support/loopbackpeer.h>
#include <tests/support/scriptedserver.h>
#include <tests/support/testplugin.h>

#include <QAbstractSocket>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <array>

using namespace zeral::proto;
using State = ZRServerInterface::State;

namespace {

// Counts the calls of one callback and keeps what it was given.
struct Answers
{
    int calls = 0;
    Command last;
    QList<quint64> *order = nullptr; // request ids, in the order their callbacks ran

    ZRServerInterface::Callback callback()
    {
        return [this](Command &answer) {
            ++calls;
            last = answer;
            if (order)
                order->append(answer.id);
        };
    }
};

// Runs everything already queued, so that "not called again" can be checked.
void flushEvents()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

bool waitFor(QSignalSpy &spy, int count = 1)
{
    while (spy.count() < count) {
        if (!spy.wait(5000))
            return false;
    }
    return true;
}

Command namedCommand(const QString &name, const QByteArray &data = {})
{
    Command command;
    command.type = NamedCommand;
    command.name = name;
    command.data = data;
    return command;
}

QByteArray lengthPrefix(quint32 length)
{
    QByteArray bytes;
    ZRDataStream out(&bytes, QIODevice::WriteOnly);
    out << length;
    return bytes;
}

bool connectClient(ZRServerInterface &client, LoopbackPeer &peer)
{
    QSignalSpy connected(&client, &ZRServerInterface::connected);
    QSignalSpy accepted(&peer, &LoopbackPeer::clientConnected);
    client.connectToServer(QStringLiteral("127.0.0.1"), peer.port());
    return waitFor(connected) && waitFor(accepted) && client.state() == State::Connected;
}

bool hasRunningTimer(const ZRServerInterface &client)
{
    const auto timers = client.findChildren<QTimer *>();
    return std::any_of(timers.begin(), timers.end(), [](QTimer *t) { return t->isActive(); });
}

// Nothing left that could open a connection again: no timer running, the socket closed.
bool isIdle(const ZRServerInterface &client)
{
    if (hasRunningTimer(client))
        return false;
    const auto sockets = client.findChildren<QAbstractSocket *>();
    for (const QAbstractSocket *socket : sockets) {
        if (socket->state() != QAbstractSocket::UnconnectedState)
            return false;
    }
    return true;
}

} // namespace

class TestServerInterface : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void routing_data();
    void routing();
    void requestIdsAreFreshAndIncreasing();
    void strayAnswersAreIgnored_data();
    void strayAnswersAreIgnored();
    void pushes_data();
    void pushes();
    void cancelCallbacksForgetsOwner();
    void sendingOffline_data();
    void sendingOffline();

    void tcpRequestAnswerAndPush();
    void tcpPeerClosesThenReconnect();
    void tcpMalformedFrameResetsConnection_data();
    void tcpMalformedFrameResetsConnection();
    void tcpFirstConnectionRefused();
    void tcpDisconnectStopsReconnecting_data();
    void tcpDisconnectStopsReconnecting();
    void tcpConnectElsewhereWhileConnected();
};

void TestServerInterface::initTestCase()
{
    qRegisterMetaType<ZRServerInterface::State>();
}

void TestServerInterface::routing_data()
{
    QTest::addColumn<qint32>("type");
    QTest::addColumn<QString>("name");
    QTest::addColumn<qint32>("status");
    QTest::addColumn<QByteArray>("data"); // tells who answered: local, plugin or wire
    const qint32 ok = StatusOk;
    QTest::addRow("local handler") << NamedCommand << "local.echo" << ok << QByteArray("local:x");
    QTest::addRow("local handler, any type") << 3 << "local.echo" << ok << QByteArray("local:x");
    QTest::addRow("local handler's failure")
        << NamedCommand << "local.refuse" << qint32(StatusForbidden) << QByteArray("no");
    QTest::addRow("plugin's type") << NamedCommand << "plugin.echo" << ok << QByteArray("plugin:x");
    QTest::addRow("plugin's type without a handler")
        << NamedCommand << "plugin.silent" << qint32(StatusNotFound) << QByteArray("x");
    QTest::addRow("plugin's name, other type") << 3 << "plugin.echo" << ok << QByteArray("wire:x");
    QTest::addRow("local handler before plugin")
        << NamedCommand << "both" << ok << QByteArray("local:x");
    QTest::addRow("server's command")
        << NamedCommand << "data.add_object" << ok << QByteArray("wire:x");
}

void TestServerInterface::routing()
{
    QFETCH(qint32, type);
    QFETCH(QString, name);
    QFETCH(qint32, status);
    QFETCH(QByteArray, data);
    const bool onWire = data.startsWith("wire:");

    ScriptedServer server;
    TestPlugin plugin;
    plugin.init(&server, QStringLiteral("plugin"));
    int localRan = 0;
    int pluginRan = 0;
    const auto local = [&](Command &command) {
        ++localRan;
        command.status = StatusOk;
        command.data.prepend("local:");
    };
    server.registerLocalHandler(QStringLiteral("local.echo"), local);
    server.registerLocalHandler(QStringLiteral("both"), local);
    server.registerLocalHandler(QStringLiteral("local.refuse"), [&](Command &command) {
        ++localRan;
        command.status = StatusForbidden;
        command.data = "no";
    });
    server.registerPlugin(&plugin, {{NamedCommand, QStringLiteral("plugin.echo")},
                                    {NamedCommand, QStringLiteral("plugin.silent")},
                                    {NamedCommand, QStringLiteral("both")}});
    const auto pluginHandler = [&](Command &command) {
        ++pluginRan;
        command.status = StatusOk;
        command.data.prepend("plugin:");
    };
    plugin.registerCommandHandler({NamedCommand, QStringLiteral("plugin.echo")}, pluginHandler);
    plugin.registerCommandHandler({NamedCommand, QStringLiteral("both")}, pluginHandler);

    Command request = namedCommand(name, "x");
    request.type = type;
    Answers answers;
    const quint64 id = server.send(request, answers.callback());
    QCOMPARE(answers.calls, 0); // never from inside send()
    QCOMPARE(localRan + pluginRan, 0);

    QCOMPARE(server.sent().size(), onWire ? 1 : 0);
    if (onWire) {
        const Command sent = server.sent().constFirst();
        QCOMPARE(sent.id, id);
        QCOMPARE(sent.type, type);
        QCOMPARE(sent.name, name);
        QCOMPARE(sent.status, qint32(StatusNone));
        server.answerOk(sent, "wire:x");
    }
    QTRY_COMPARE_WITH_TIMEOUT(answers.calls, 1, 2000);
    flushEvents();
    QCOMPARE(answers.calls, 1);
    QCOMPARE(answers.last.id, id);
    QCOMPARE(answers.last.status, status);
    QCOMPARE(answers.last.data, data);
    QVERIFY(localRan + pluginRan <= 1);
    QCOMPARE(server.pendingCount(), 0);
}

void TestServerInterface::requestIdsAreFreshAndIncreasing()
{
    ScriptedServer server;
    server.registerLocalHandler(QStringLiteral("local"), [](Command &c) { c.status = StatusOk; });
    QList<quint64> ids;
    for (const char *name : {"a", "local", "b", "local", "c"})
        ids.append(server.send(namedCommand(QLatin1String(name)), nullptr));
    for (int i = 1; i < ids.size(); ++i)
        QVERIFY(ids.at(i) > ids.at(i - 1));
    QCOMPARE(server.sent().size(), 3);
    QCOMPARE(server.sent().at(0).id, ids.at(0));
    QCOMPARE(server.sent().at(1).id, ids.at(2));
    QCOMPARE(server.sent().at(2).id, ids.at(4));
}

void TestServerInterface::strayAnswersAreIgnored_data()
{
    QTest::addColumn<QString>("target");
    QTest::addRow("an id never sent") << "unknown";
    QTest::addRow("an answered request") << "answered";
    QTest::addRow("a request of a local handler") << "local";
}

// An answer from the server to no request of its own changes nothing.
void TestServerInterface::strayAnswersAreIgnored()
{
    QFETCH(QString, target);
    ScriptedServer server;
    server.registerLocalHandler(QStringLiteral("local"), [](Command &command) {
        command.status = StatusOk;
        command.data = "local";
    });
    Answers remote;
    Answers local;
    const quint64 remoteId = server.send(namedCommand(QStringLiteral("remote")), remote.callback());
    const quint64 localId = server.send(namedCommand(QStringLiteral("local")), local.callback());
    const Command sent = server.sent().constFirst();
    if (target == QLatin1String("answered"))
        server.answerOk(sent, "first");

    Command stray = sent;
    stray.id = target == QLatin1String("unknown") ? localId + 100
               : target == QLatin1String("local") ? localId
                                                  : remoteId;
    server.answer(stray, StatusForbidden, "stray");
    flushEvents();
    if (target != QLatin1String("answered"))
        server.answerOk(sent, "first");
    flushEvents();

    QCOMPARE(remote.calls, 1);
    QCOMPARE(remote.last.data, QByteArray("first"));
    QCOMPARE(local.calls, 1);
    QCOMPARE(local.last.data, QByteArray("local"));
    QCOMPARE(server.pendingCount(), 0);
}

void TestServerInterface::pushes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("toPlugin");
    QTest::addRow("plugin's type") << QString::fromLatin1(command::DataChanged) << true;
    QTest::addRow("nobody's type") << QString::fromLatin1(command::DataRemoved) << false;
}

void TestServerInterface::pushes()
{
    QFETCH(QString, name);
    QFETCH(bool, toPlugin);
    ScriptedServer server;
    TestPlugin plugin;
    plugin.init(&server, QStringLiteral("plugin"));
    const CommandType changed{NamedCommand, QString::fromLatin1(command::DataChanged)};
    server.registerPlugin(&plugin, {changed});
    QList<Command> handled;
    plugin.registerCommandHandler(changed, [&](Command &push) { handled.append(push); });
    Answers waiting;
    server.send(namedCommand(QStringLiteral("remote")), waiting.callback());

    QSignalSpy pushed(&server, &ZRServerInterface::pushReceived);
    server.push(name, "payload");
    QCOMPARE(pushed.count(), 1);
    const Command push = pushed.at(0).at(0).value<Command>();
    QCOMPARE(push.id, quint64(0));
    QCOMPARE(push.name, name);
    QCOMPARE(push.data, QByteArray("payload"));
    QCOMPARE(handled.size(), toPlugin ? 1 : 0);
    if (toPlugin)
        QCOMPARE(handled.constFirst().data, QByteArray("payload"));
    flushEvents();
    QCOMPARE(waiting.calls, 0); // a push answers no request
    QCOMPARE(server.pendingCount(), 1);
}

void TestServerInterface::cancelCallbacksForgetsOwner()
{
    ScriptedServer server;
    server.registerLocalHandler(QStringLiteral("local"), [](Command &c) { c.status = StatusOk; });
    const int leaving = 0;
    const int staying = 0;
    std::array<Answers, 4> answers;
    server.send(namedCommand(QStringLiteral("a")), answers[0].callback(), &leaving);
    server.send(namedCommand(QStringLiteral("b")), answers[1].callback(), &staying);
    server.send(namedCommand(QStringLiteral("c")), answers[2].callback(), &leaving);
    server.send(namedCommand(QStringLiteral("local")), answers[3].callback(), &leaving);
    server.cancelCallbacks(&leaving);
    QCOMPARE(server.pendingCount(), 1);

    const QList<Command> sent = server.sent();
    for (const Command &request : sent)
        server.answerOk(request);
    server.dropConnection();
    flushEvents();
    QCOMPARE(answers[0].calls, 0);
    QCOMPARE(answers[1].calls, 1);
    QCOMPARE(answers[1].last.status, qint32(StatusOk));
    QCOMPARE(answers[2].calls, 0);
    QCOMPARE(answers[3].calls, 0);
}

void TestServerInterface::sendingOffline_data()
{
    QTest::addColumn<bool>("scripted");
    QTest::addRow("scripted server offline") << true;
    QTest::addRow("never connected") << false;
}

void TestServerInterface::sendingOffline()
{
    QFETCH(bool, scripted);
    ScriptedServer scriptedServer;
    scriptedServer.setOnline(false);
    ZRServerInterface plain;
    ZRServerInterface &server = scripted ? scriptedServer : plain;

    Answers answers;
    const quint64 id = server.send(namedCommand(QStringLiteral("remote"), "x"), answers.callback());
    QCOMPARE(answers.calls, 0);
    QTRY_COMPARE_WITH_TIMEOUT(answers.calls, 1, 2000);
    flushEvents();
    QCOMPARE(answers.calls, 1);
    QCOMPARE(answers.last.id, id);
    QCOMPARE(answers.last.status, qint32(StatusConnectionLost));
    QVERIFY(!answers.last.errorText().isEmpty());
    QVERIFY(scriptedServer.sent().isEmpty());
    QCOMPARE(server.pendingCount(), 0);
}

void TestServerInterface::tcpRequestAnswerAndPush()
{
    LoopbackPeer peer;
    QVERIFY(peer.listen());
    ZRServerInterface client;
    QSignalSpy states(&client, &ZRServerInterface::stateChanged);
    QVERIFY(connectClient(client, peer));
    QCOMPARE(states.count(), 2);
    QCOMPARE(states.at(0).at(0).value<State>(), State::Connecting);
    QCOMPARE(states.at(1).at(0).value<State>(), State::Connected);

    Command request = namedCommand(QStringLiteral("журнал.запрос"), QByteArray("\0\x01\xff", 3));
    request.sessionId = "session";
    QSignalSpy received(&peer, &LoopbackPeer::commandReceived);
    Answers answers;
    const quint64 id = client.send(request, answers.callback());
    QVERIFY(waitFor(received));
    const Command got = peer.received().constFirst();
    QCOMPARE(got.id, id);
    QCOMPARE(got.type, NamedCommand);
    QCOMPARE(got.name, request.name);
    QCOMPARE(got.status, qint32(StatusNone));
    QCOMPARE(got.sessionId, request.sessionId);
    QCOMPARE(got.data, request.data);

    QSignalSpy pushed(&client, &ZRServerInterface::pushReceived);
    Command push = namedCommand(QString::fromLatin1(command::DataChanged), "changed");
    peer.send(push);
    peer.answer(got, StatusOk, "answer");
    QTRY_COMPARE_WITH_TIMEOUT(answers.calls, 1, 5000);
    QCOMPARE(pushed.count(), 1); // it was written first
    QCOMPARE(pushed.at(0).at(0).value<Command>().data, QByteArray("changed"));
    flushEvents();
    QCOMPARE(answers.calls, 1);
    QCOMPARE(answers.last.status, qint32(StatusOk));
    QCOMPARE(answers.last.data, QByteArray("answer"));
}

void TestServerInterface::tcpPeerClosesThenReconnect()
{
    LoopbackPeer peer;
    QVERIFY(peer.listen());
    ZRServerInterface client;
    client.setReconnectDelays(20, 200);
    QVERIFY(connectClient(client, peer));

    QSignalSpy received(&peer, &LoopbackPeer::commandReceived);
    QList<quint64> order;
    std::array<Answers, 3> answers;
    QList<quint64> ids;
    for (Answers &a : answers) {
        a.order = &order;
        ids.append(client.send(namedCommand(QStringLiteral("wait")), a.callback()));
    }
    QVERIFY(waitFor(received, 3));

    QSignalSpy lost(&client, &ZRServerInterface::connectionLost);
    QSignalSpy reconnecting(&client, &ZRServerInterface::reconnecting);
    QSignalSpy connected(&client, &ZRServerInterface::connected);
    peer.stopListening();
    peer.closeClient();
    QVERIFY(waitFor(lost));
    // Every waiting request has failed by the time the loss is told.
    QCOMPARE(order, ids);
    for (const Answers &a : answers) {
        QCOMPARE(a.calls, 1);
        QCOMPARE(a.last.status, qint32(StatusConnectionLost));
        QVERIFY(!a.last.errorText().isEmpty());
    }
    QCOMPARE(client.pendingCount(), 0);

    QVERIFY(waitFor(reconnecting, 5)); // 20, 40, 80, 160, then 200 ms
    QCOMPARE(client.state(), State::Reconnecting);
    int previousDelay = 0;
    for (int i = 0; i < reconnecting.count(); ++i) {
        const int attempt = reconnecting.at(i).at(0).toInt();
        const int delay = reconnecting.at(i).at(1).toInt();
        QCOMPARE(attempt, i + 1);
        QVERIFY2(delay > previousDelay || delay == 200, qPrintable(QString::number(delay)));
        QVERIFY(delay >= 20 && delay <= 200);
        previousDelay = delay;
    }
    QCOMPARE(reconnecting.at(0).at(1).toInt(), 20);
    QCOMPARE(previousDelay, 200);

    QVERIFY(peer.listen(peer.port()));
    QVERIFY(waitFor(connected));
    QCOMPARE(client.state(), State::Connected);
    QCOMPARE(lost.count(), 1);

    Answers after;
    client.send(namedCommand(QStringLiteral("again")), after.callback());
    QVERIFY(waitFor(received, 4));
    peer.answer(peer.received().constLast(), StatusOk, "back");
    QTRY_COMPARE_WITH_TIMEOUT(after.calls, 1, 5000);
    QCOMPARE(after.last.data, QByteArray("back"));
    flushEvents();
    for (const Answers &a : answers)
        QCOMPARE(a.calls, 1);
}

void TestServerInterface::tcpMalformedFrameResetsConnection_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("answerFirst");
    const QByteArray payload = FrameCodec::encodePayload(namedCommand(QStringLiteral("x")));
    QTest::addRow("length over the limit") << lengthPrefix(MaxFrameSize + 1) << false;
    QTest::addRow("garbage payload") << lengthPrefix(6) + QByteArray(6, '\xff') << false;
    QTest::addRow("empty payload") << lengthPrefix(0) << false;
    QTest::addRow("trailing bytes")
        << lengthPrefix(quint32(payload.size() + 2)) + payload + QByteArray(2, '\0') << false;
    QTest::addRow("answer, then garbage") << lengthPrefix(6) + QByteArray(6, '\xff') << true;
}

void TestServerInterface::tcpMalformedFrameResetsConnection()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, answerFirst);
    LoopbackPeer peer;
    QVERIFY(peer.listen());
    ZRServerInterface client;
    client.setReconnectDelays(20, 200);
    QVERIFY(connectClient(client, peer));

    QSignalSpy received(&peer, &LoopbackPeer::commandReceived);
    std::array<Answers, 2> answers;
    for (Answers &a : answers)
        client.send(namedCommand(QStringLiteral("wait")), a.callback());
    QVERIFY(waitFor(received, 2));

    QSignalSpy peerLost(&peer, &LoopbackPeer::clientDisconnected);
    QSignalSpy lost(&client, &ZRServerInterface::connectionLost);
    QSignalSpy connected(&client, &ZRServerInterface::connected);
    if (answerFirst)
        peer.answer(peer.received().constFirst(), StatusOk, "fine");
    peer.writeRaw(bytes);
    QVERIFY(waitFor(lost));
    QVERIFY(waitFor(peerLost)); // the client reset the connection
    QCOMPARE(answers[0].calls, 1);
    QCOMPARE(answers[0].last.status, qint32(answerFirst ? StatusOk : StatusConnectionLost));
    QCOMPARE(answers[1].calls, 1);
    QCOMPARE(answers[1].last.status, qint32(StatusConnectionLost));

    QVERIFY(waitFor(connected)); // the peer still listens: the client comes back
    QCOMPARE(client.state(), State::Connected);
    flushEvents();
    QCOMPARE(answers[0].calls, 1);
    QCOMPARE(answers[1].calls, 1);
    QCOMPARE(lost.count(), 1);
}

void TestServerInterface::tcpFirstConnectionRefused()
{
    quint16 port = 0;
    {
        LoopbackPeer gone;
        QVERIFY(gone.listen());
        port = gone.port();
    }
    ZRServerInterface client;
    client.setReconnectDelays(20, 200);
    QSignalSpy failed(&client, &ZRServerInterface::connectionFailed);
    QSignalSpy reconnecting(&client, &ZRServerInterface::reconnecting);
    QSignalSpy connected(&client, &ZRServerInterface::connected);
    client.connectToServer(QStringLiteral("127.0.0.1"), port);
    QCOMPARE(client.state(), State::Connecting);
    QVERIFY(waitFor(failed));
    QCOMPARE(failed.count(), 1);
    QVERIFY(!failed.at(0).at(0).toString().isEmpty());
    QCOMPARE(client.state(), State::Disconnected);
    QVERIFY(reconnecting.isEmpty());
    QVERIFY(connected.isEmpty());
    QVERIFY(isIdle(client));
}

void TestServerInterface::tcpDisconnectStopsReconnecting_data()
{
    QTest::addColumn<bool>("peerGoneFirst");
    QTest::addRow("while connected") << false;
    QTest::addRow("while reconnecting") << true;
}

void TestServerInterface::tcpDisconnectStopsReconnecting()
{
    QFETCH(bool, peerGoneFirst);
    LoopbackPeer peer;
    QVERIFY(peer.listen());
    ZRServerInterface client;
    client.setReconnectDelays(20, 200);
    QVERIFY(connectClient(client, peer));
    QSignalSpy received(&peer, &LoopbackPeer::commandReceived);
    Answers answers;
    client.send(namedCommand(QStringLiteral("wait")), answers.callback());
    QVERIFY(waitFor(received));

    QSignalSpy peerLost(&peer, &LoopbackPeer::clientDisconnected);
    QSignalSpy reconnecting(&client, &ZRServerInterface::reconnecting);
    if (peerGoneFirst) {
        peer.stopListening();
        peer.closeClient();
        QVERIFY(waitFor(reconnecting, 2));
    }
    client.disconnectFromServer();
    QCOMPARE(client.state(), State::Disconnected);
    QVERIFY(isIdle(client));
    QCOMPARE(answers.calls, 1);
    QCOMPARE(answers.last.status, qint32(StatusConnectionLost));
    QVERIFY(waitFor(peerLost));
    flushEvents();
    QCOMPARE(answers.calls, 1);
    QCOMPARE(reconnecting.count(), peerGoneFirst ? 2 : 0);
}

// A new address replaces the old connection without leaving a retry of the old one behind.
void TestServerInterface::tcpConnectElsewhereWhileConnected()
{
    LoopbackPeer first;
    LoopbackPeer second;
    QVERIFY(first.listen());
    QVERIFY(second.listen());
    ZRServerInterface client;
    client.setReconnectDelays(20, 200);
    QVERIFY(connectClient(client, first));
    QSignalSpy received(&first, &LoopbackPeer::commandReceived);
    Answers answers;
    client.send(namedCommand(QStringLiteral("wait")), answers.callback());
    QVERIFY(waitFor(received));

    QSignalSpy firstLost(&first, &LoopbackPeer::clientDisconnected);
    QSignalSpy reconnecting(&client, &ZRServerInterface::reconnecting);
    QVERIFY(connectClient(client, second));
    QCOMPARE(client.port(), second.port());
    QVERIFY(waitFor(firstLost));
    flushEvents();
    QCOMPARE(answers.calls, 1);
    QCOMPARE(answers.last.status, qint32(StatusConnectionLost));
    QVERIFY(reconnecting.isEmpty());
    QVERIFY(!hasRunningTimer(client));
    QCOMPARE(first.acceptedCount(), 1);
}

QTEST_GUILESS_MAIN(TestServerInterface)
#include "tst_serverinterface.moc"
