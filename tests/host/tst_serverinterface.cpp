#include <host/core/protocol.h>
#include <host/core/zrserverinterface.h>
#include <tests/support/loopbackpeer.h>
#include <tests/support/scriptedserver.h>
#include <tests/support/testplugin.h>

#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <algorithm>

using namespace zeral::proto;
using State = ZRServerInterface::State;

namespace {

ZRServerInterface::Callback recordInto(QList<Command> *answers)
{
    return [answers](Command &answer) {
        answers->append(answer);
    };
}

QList<quint64> idsOf(const QList<Command> &answers)
{
    QList<quint64> ids;
    for (const Command &answer : answers)
        ids.append(answer.id);
    return ids;
}

// Runs everything already queued, so that "not called again" can be checked.
void flushEvents()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

bool waitFor(QSignalSpy &spy, int count = 1)
{
    return QTest::qWaitFor([&spy, count] { return spy.count() >= count; }, 5000);
}

Command named(const QString &name, const QByteArray &data = {})
{
    return Command{0, NamedCommand, name, StatusNone, {}, data};
}

bool connectClient(ZRServerInterface &client, LoopbackPeer &peer)
{
    QSignalSpy connected(&client, &ZRServerInterface::connected);
    QSignalSpy accepted(&peer, &LoopbackPeer::clientConnected);
    client.connectToServer(QStringLiteral("127.0.0.1"), peer.port());
    return waitFor(connected) && waitFor(accepted) && client.state() == State::Connected;
}

// A running timer is a pending attempt to connect again.
bool retrying(const ZRServerInterface &client)
{
    const auto timers = client.findChildren<QTimer *>();
    return std::any_of(timers.begin(), timers.end(), [](QTimer *t) { return t->isActive(); });
}

// A client connected to a peer on 127.0.0.1, retrying quickly when the connection drops.
struct Wire
{
    LoopbackPeer peer;
    ZRServerInterface client;
    QList<quint64> ids;     // requests sent by sendWaiting
    QList<Command> answers; // their answers, in the order the callbacks ran
    QList<State> states;

    bool start()
    {
        QObject::connect(&client, &ZRServerInterface::stateChanged,
                         [this](State state) { states.append(state); });
        client.setReconnectDelays(20, 80);
        return peer.listen() && connectClient(client, peer);
    }
    // Sends requests that the peer receives and leaves unanswered.
    bool sendWaiting(int count)
    {
        QSignalSpy received(&peer, &LoopbackPeer::commandReceived);
        for (int i = 0; i < count; ++i)
            ids.append(client.send(named(QStringLiteral("wait")), recordInto(&answers)));
        return waitFor(received, count);
    }
};

} // namespace

class TestServerInterface : public QObject
{
    Q_OBJECT
private slots:
    void routing_data();
    void routing();
    void answersNobodyWaitsFor();
    void tcpConnectionBreaks_data();
    void tcpConnectionBreaks();
    void tcpFirstConnectionRefused();
    void tcpLeavingStopsReconnecting_data();
    void tcpLeavingStopsReconnecting();
};

void TestServerInterface::routing_data()
{
    QTest::addColumn<qint32>("type");
    QTest::addColumn<QString>("name");
    QTest::addColumn<qint32>("status");
    QTest::addColumn<QByteArray>("data"); // tells who answered: local, plugin or wire
    const qint32 ok = StatusOk;
    QTest::addRow("local handler") << NamedCommand << "local" << ok << QByteArray("local:x");
    QTest::addRow("local handler, any type") << 3 << "local" << ok << QByteArray("local:x");
    QTest::addRow("plugin's type") << NamedCommand << "plugin" << ok << QByteArray("plugin:x");
    QTest::addRow("plugin's type without a handler")
        << NamedCommand << "plugin.silent" << qint32(StatusNotFound) << QByteArray("x");
    QTest::addRow("plugin's name, other type") << 3 << "plugin" << ok << QByteArray("wire:x");
    QTest::addRow("local handler before plugin")
        << NamedCommand << "both" << ok << QByteArray("local:x");
    QTest::addRow("server's command") << NamedCommand << "data.add" << ok << QByteArray("wire:x");
}

void TestServerInterface::routing()
{
    QFETCH(qint32, type);
    QFETCH(QString, name);
    QFETCH(qint32, status);
    QFETCH(QByteArray, data);
    ScriptedServer server;
    TestPlugin plugin;
    plugin.init(&server, QStringLiteral("plugin"));
    const auto prefixing = [](const QByteArray &prefix) {
        return [prefix](Command &command) {
            command.status = StatusOk;
            command.data.prepend(prefix);
        };
    };
    for (const char *name : {"local", "both"})
        server.registerLocalHandler(QLatin1String(name), prefixing("local:"));
    server.registerPlugin(&plugin, {{NamedCommand, QStringLiteral("plugin")},
                                    {NamedCommand, QStringLiteral("plugin.silent")},
                                    {NamedCommand, QStringLiteral("both")}});
    for (const char *name : {"plugin", "both"})
        plugin.registerCommandHandler({NamedCommand, QLatin1String(name)}, prefixing("plugin:"));

    QList<Command> answers;
    const quint64 id
        = server.send(Command{0, type, name, StatusNone, {}, "x"}, recordInto(&answers));
    QCOMPARE(answers.size(), 0); // never from inside send()
    const bool onWire = data.startsWith("wire:");
    QCOMPARE(server.sent().size(), onWire ? 1 : 0);
    if (onWire)
        server.answerOk(server.sent().constFirst(), "wire:x");
    flushEvents();
    QCOMPARE(idsOf(answers), QList<quint64>{id});
    QCOMPARE(answers.constFirst().status, status);
    QCOMPARE(answers.constFirst().data, data);
    QCOMPARE(server.pendingCount(), 0);
}

// Only the callbacks still waiting run: not for a stray answer from the server (to an
// unknown id, to a request answered already, to a request that a local handler answers),
// nor after their owner cancelled them.
void TestServerInterface::answersNobodyWaitsFor()
{
    ScriptedServer server;
    server.registerLocalHandler(QStringLiteral("local"), [](Command &command) {
        command.status = StatusOk;
        command.data = "local";
    });
    const int leaving = 0;
    QList<Command> answers;
    const quint64 remoteId = server.send(named(QStringLiteral("remote")), recordInto(&answers));
    const quint64 localId = server.send(named(QStringLiteral("local")), recordInto(&answers));
    for (const char *name : {"cancelled", "local"})
        server.send(named(QLatin1String(name)), recordInto(&answers), &leaving);
    server.cancelCallbacks(&leaving);
    Command stray = server.sent().constFirst();
    for (const quint64 id : {localId + 100, localId}) {
        stray.id = id;
        server.answer(stray, StatusForbidden, "stray");
    }
    flushEvents();
    for (const Command &request : server.sent())
        server.answerOk(request, "remote");
    stray.id = remoteId;
    server.answer(stray, StatusForbidden, "stray");
    server.dropConnection();
    flushEvents();
    QCOMPARE(idsOf(answers), (QList<quint64>{localId, remoteId}));
    QCOMPARE(answers.at(0).data, QByteArray("local"));
    QCOMPARE(answers.at(1).data, QByteArray("remote"));
    QCOMPARE(server.pendingCount(), 0);
}

void TestServerInterface::tcpConnectionBreaks_data()
{
    QTest::addColumn<QByteArray>("bytes"); // sent by the peer; none: the peer closes
    QTest::addColumn<bool>("answerFirst");
    // Lengths read the same in either byte order.
    QTest::addRow("peer closes") << QByteArray() << false;
    QTest::addRow("length over the limit") << QByteArray(4, '\xff') << false;
    QTest::addRow("empty payload") << QByteArray(4, '\0') << false;
    QTest::addRow("answer, then a bad frame") << QByteArray(4, '\0') << true;
}

// The waiting requests fail once each, in the order sent, by the time the loss is told;
// then the client retries with growing pauses until the peer listens again, and works as
// before: pushes reach the plugin of their type and the listeners, answers their request.
void TestServerInterface::tcpConnectionBreaks()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, answerFirst);
    Wire wire;
    TestPlugin plugin;
    plugin.init(&wire.client, QStringLiteral("plugin"));
    const CommandType changed{NamedCommand, QString::fromLatin1(command::DataChanged)};
    wire.client.registerPlugin(&plugin, {changed});
    QList<Command> handled;
    plugin.registerCommandHandler(changed, recordInto(&handled));
    QVERIFY(wire.start());
    QVERIFY(wire.sendWaiting(3));
    QSignalSpy peerLost(&wire.peer, &LoopbackPeer::clientDisconnected);
    QSignalSpy lost(&wire.client, &ZRServerInterface::connectionLost);
    QSignalSpy reconnecting(&wire.client, &ZRServerInterface::reconnecting);
    QSignalSpy connected(&wire.client, &ZRServerInterface::connected);
    QList<quint64> answeredWhenTold;
    connect(&wire.client, &ZRServerInterface::connectionLost,
            [&wire, &answeredWhenTold] { answeredWhenTold = idsOf(wire.answers); });
    wire.peer.stopListening();
    if (answerFirst)
        wire.peer.answer(wire.peer.received().constFirst(), StatusOk, "fine");
    if (bytes.isEmpty())
        wire.peer.closeClient();
    else
        wire.peer.writeRaw(bytes);
    QVERIFY(waitFor(lost));
    QCOMPARE(answeredWhenTold, wire.ids);
    for (const Command &answer : qAsConst(wire.answers)) {
        const bool fine = answerFirst && answer.id == wire.ids.constFirst();
        QCOMPARE(answer.status, qint32(fine ? StatusOk : StatusConnectionLost));
        QVERIFY(fine || !answer.errorText().isEmpty());
    }
    QCOMPARE(wire.client.pendingCount(), 0);
    QVERIFY(waitFor(peerLost)); // a malformed frame makes the client reset the connection

    QVERIFY(waitFor(reconnecting, 4));
    const QList<QList<QVariant>> attempts{{1, 20}, {2, 40}, {3, 80}, {4, 80}};
    QCOMPARE(reconnecting.mid(0, 4), attempts);
    QVERIFY(wire.peer.listen(wire.peer.port()));
    QVERIFY(waitFor(connected));
    QCOMPARE(lost.count(), 1);
    QCOMPARE(wire.states, (QList<State>{State::Connecting, State::Connected, State::Reconnecting,
                                        State::Connected}));
    QVERIFY(wire.sendWaiting(1));
    QSignalSpy pushed(&wire.client, &ZRServerInterface::pushReceived);
    wire.peer.send(named(QString::fromLatin1(command::DataRemoved), "removed"));
    wire.peer.send(named(QString::fromLatin1(command::DataChanged), "changed"));
    wire.peer.answer(wire.peer.received().constLast(), StatusOk, "back");
    QTRY_COMPARE_WITH_TIMEOUT(wire.answers.size(), 4, 5000);
    QCOMPARE(wire.answers.constLast().data, QByteArray("back"));
    QCOMPARE(pushed.count(), 2);
    QCOMPARE(idsOf(handled), QList<quint64>{0});
    QCOMPARE(handled.constFirst().data, QByteArray("changed"));
    flushEvents();
    QCOMPARE(idsOf(wire.answers), wire.ids);
}

void TestServerInterface::tcpFirstConnectionRefused()
{
    LoopbackPeer gone;
    QVERIFY(gone.listen());
    gone.stopListening();
    ZRServerInterface client;
    client.setReconnectDelays(20, 80);
    QSignalSpy failed(&client, &ZRServerInterface::connectionFailed);
    QSignalSpy reconnecting(&client, &ZRServerInterface::reconnecting);
    client.connectToServer(QStringLiteral("127.0.0.1"), gone.port());
    QVERIFY(waitFor(failed));
    flushEvents();
    QCOMPARE(failed.count(), 1);
    QCOMPARE(client.state(), State::Disconnected);
    QVERIFY(reconnecting.isEmpty());
    QVERIFY(!retrying(client));

    // Without a connection a request fails, later.
    QList<Command> answers;
    const quint64 id = client.send(named(QStringLiteral("remote")), recordInto(&answers));
    QCOMPARE(answers.size(), 0);
    flushEvents();
    QCOMPARE(idsOf(answers), QList<quint64>{id});
    QCOMPARE(answers.constFirst().status, qint32(StatusConnectionLost));
}

void TestServerInterface::tcpLeavingStopsReconnecting_data()
{
    QTest::addColumn<bool>("peerGoneFirst");
    QTest::addColumn<bool>("elsewhere"); // connectToServer to another peer, not disconnect
    QTest::addRow("disconnect while connected") << false << false;
    QTest::addRow("disconnect while reconnecting") << true << false;
    QTest::addRow("connect elsewhere while connected") << false << true;
    QTest::addRow("connect elsewhere while reconnecting") << true << true;
}

// Leaving the peer fails its waiting request once and leaves no retry of it behind.
void TestServerInterface::tcpLeavingStopsReconnecting()
{
    QFETCH(bool, peerGoneFirst);
    QFETCH(bool, elsewhere);
    Wire wire;
    LoopbackPeer second;
    QVERIFY(wire.start() && second.listen());
    QVERIFY(wire.sendWaiting(1));
    QSignalSpy peerLost(&wire.peer, &LoopbackPeer::clientDisconnected);
    QSignalSpy lost(&wire.client, &ZRServerInterface::connectionLost);
    QSignalSpy reconnecting(&wire.client, &ZRServerInterface::reconnecting);
    if (peerGoneFirst) {
        wire.peer.stopListening();
        wire.peer.closeClient();
        QVERIFY(waitFor(reconnecting, 2));
    }
    const int lostBefore = lost.count();
    const int reconnectingBefore = reconnecting.count();
    if (elsewhere) {
        QVERIFY(connectClient(wire.client, second));
    } else {
        wire.client.disconnectFromServer();
        QCOMPARE(wire.client.state(), State::Disconnected);
    }
    QVERIFY(waitFor(peerLost));
    flushEvents();
    QCOMPARE(idsOf(wire.answers), wire.ids);
    QCOMPARE(wire.answers.constFirst().status, qint32(StatusConnectionLost));
    QCOMPARE(lost.count(), lostBefore);
    QCOMPARE(reconnecting.count(), reconnectingBefore);
    QVERIFY(!retrying(wire.client));
    QCOMPARE(wire.peer.acceptedCount(), 1);
}

QTEST_GUILESS_MAIN(TestServerInterface)
#include "tst_serverinterface.moc"
