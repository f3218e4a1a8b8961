#include <host/core/protocol.h>
#include <host/core/zrplugininterface.h>
#include <tests/support/scriptedserver.h>
#include <tests/support/testplugin.h>

#include <QTest>

#include <memory>

using namespace zeral::proto;

namespace {

struct Answers
{
    int calls = 0;
    Command last;

    ZRPluginInterface::Callback callback()
    {
        return [this](Command &answer) {
            ++calls;
            last = answer;
        };
    }
};

void flushEvents()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

Command part(int index)
{
    Command command;
    command.type = NamedCommand;
    command.name = QStringLiteral("part.%1").arg(index);
    command.data = QByteArray::number(index);
    return command;
}

QList<Command> parts(int count)
{
    QList<Command> list;
    for (int i = 0; i < count; ++i)
        list.append(part(i));
    return list;
}

QByteArray partAnswer(int index)
{
    return "p" + QByteArray::number(index);
}

} // namespace

class TestPluginInterface : public QObject
{
    Q_OBJECT
private slots:
    void initAndNewCommand();
    void sendQuery_data();
    void sendQuery();
    void destroyedPluginIsNeverCalledBack_data();
    void destroyedPluginIsNeverCalledBack();
    void handleCommand_data();
    void handleCommand();
    void splitQuery_data();
    void splitQuery();
    void splitQueryFailsAsAWhole_data();
    void splitQueryFailsAsAWhole();
    void splitQueriesDoNotMix();
};

void TestPluginInterface::initAndNewCommand()
{
    ScriptedServer server;
    TestPlugin plugin;
    QCOMPARE(plugin.server(), nullptr);
    QVERIFY(plugin.init(&server, QStringLiteral("журнал")).isEmpty());
    QCOMPARE(plugin.server(), &server);
    QCOMPARE(plugin.instanceName(), QStringLiteral("журнал"));
    const Command command = plugin.newCommand();
    QCOMPARE(command.type, NamedCommand);
    QCOMPARE(command.type, 8);
    QCOMPARE(command.id, quint64(0));
    QCOMPARE(command.status, qint32(StatusNone));
}

void TestPluginInterface::sendQuery_data()
{
    QTest::addColumn<bool>("withServer");
    QTest::addColumn<qint32>("status");
    QTest::addRow("answered") << true << qint32(StatusOk);
    QTest::addRow("refused") << true << qint32(StatusForbidden);
    QTest::addRow("init not called") << false << qint32(StatusConnectionLost);
}

void TestPluginInterface::sendQuery()
{
    QFETCH(bool, withServer);
    QFETCH(qint32, status);
    ScriptedServer server;
    server.script(QStringLiteral("part.0"), [status](const Command &request) {
        return Command::answer(request, status, "reply");
    });
    TestPlugin plugin;
    if (withServer)
        plugin.init(&server, QStringLiteral("plugin"));

    Answers answers;
    plugin.sendQuery(part(0), answers.callback());
    QCOMPARE(answers.calls, 0); // never from inside the call
    QCOMPARE(server.sent().size(), withServer ? 1 : 0);
    QTRY_COMPARE_WITH_TIMEOUT(answers.calls, 1, 2000);
    flushEvents();
    QCOMPARE(answers.calls, 1);
    QCOMPARE(answers.last.status, status);
    QCOMPARE(answers.last.name, QStringLiteral("part.0"));
    if (withServer)
        QCOMPARE(answers.last.data, QByteArray("reply"));
    else
        QVERIFY(!answers.last.errorText().isEmpty());
}

void TestPluginInterface::destroyedPluginIsNeverCalledBack_data()
{
    QTest::addColumn<bool>("withServer");
    QTest::addColumn<bool>("split");
    QTest::addRow("query waiting for the server") << true << false;
    QTest::addRow("split query waiting for the server") << true << true;
    QTest::addRow("query without a server") << false << false;
    QTest::addRow("split query without a server") << false << true;
}

void TestPluginInterface::destroyedPluginIsNeverCalledBack()
{
    QFETCH(bool, withServer);
    QFETCH(bool, split);
    ScriptedServer server;
    auto plugin = std::make_unique<TestPlugin>();
    if (withServer)
        plugin->init(&server, QStringLiteral("plugin"));
    Answers answers;
    if (split)
        plugin->sendSplitQuery(parts(2), answers.callback());
    else
        plugin->sendQuery(part(0), answers.callback());
    QCOMPARE(server.pendingCount(), withServer ? (split ? 2 : 1) : 0);

    plugin.reset();
    QCOMPARE(server.pendingCount(), 0);
    const QList<Command> sent = server.sent();
    for (const Command &request : sent)
        server.answerOk(request, "late");
    flushEvents();
    QCOMPARE(answers.calls, 0);
}

void TestPluginInterface::handleCommand_data()
{
    QTest::addColumn<qint32>("type");
    QTest::addColumn<QString>("name");
    QTest::addColumn<qint32>("status");
    QTest::addColumn<QByteArray>("data");
    QTest::addRow("first handler") << NamedCommand << "one" << qint32(StatusOk) << QByteArray("1");
    QTest::addRow("second handler")
        << NamedCommand << "two" << qint32(StatusConflict) << QByteArray("2");
    QTest::addRow("same name, its own type") << 3 << "one" << qint32(StatusOk) << QByteArray("3");
    QTest::addRow("same name, unknown type")
        << 2 << "one" << qint32(StatusNotFound) << QByteArray("in");
    QTest::addRow("unknown name") << NamedCommand << "three" << qint32(StatusNotFound)
                                  << QByteArray("in");
}

void TestPluginInterface::handleCommand()
{
    QFETCH(qint32, type);
    QFETCH(QString, name);
    QFETCH(qint32, status);
    QFETCH(QByteArray, data);
    TestPlugin plugin;
    const auto handler = [](qint32 status, const QByteArray &data) {
        return [status, data](Command &command) {
            QCOMPARE(command.data, QByteArray("in"));
            command.status = status;
            command.data = data;
        };
    };
    plugin.registerCommandHandler({NamedCommand, QStringLiteral("one")}, handler(StatusOk, "1"));
    plugin.registerCommandHandler({NamedCommand, QStringLiteral("two")},
                                  handler(StatusConflict, "2"));
    plugin.registerCommandHandler({3, QStringLiteral("one")}, handler(StatusOk, "3"));

    Command command;
    command.type = type;
    command.name = name;
    command.data = "in";
    plugin.handleCommand(command);
    QCOMPARE(command.status, status);
    QCOMPARE(command.data, data);
}

void TestPluginInterface::splitQuery_data()
{
    QTest::addColumn<QVector<int>>("statuses");    // by part
    QTest::addColumn<QVector<int>>("answerOrder"); // parts, in the order they are answered
    QTest::addColumn<qint32>("status");
    QTest::addColumn<QByteArray>("data");
    const int ok = StatusOk;
    QTest::addRow("no parts") << QVector<int>{} << QVector<int>{} << qint32(StatusOk)
                              << QByteArray();
    QTest::addRow("one part") << QVector<int>{ok} << QVector<int>{0} << qint32(StatusOk)
                              << QByteArray("p0");
    QTest::addRow("all answered in order") << QVector<int>{ok, ok, ok} << QVector<int>{0, 1, 2}
                                           << qint32(StatusOk) << QByteArray("p0p1p2");
    QTest::addRow("all answered backwards") << QVector<int>{ok, ok, ok} << QVector<int>{2, 1, 0}
                                            << qint32(StatusOk) << QByteArray("p0p1p2");
    QTest::addRow("all answered, middle last") << QVector<int>{ok, ok, ok} << QVector<int>{0, 2, 1}
                                               << qint32(StatusOk) << QByteArray("p0p1p2");
    QTest::addRow("middle part fails")
        << QVector<int>{ok, StatusForbidden, ok} << QVector<int>{0, 1, 2} << qint32(StatusForbidden)
        << QByteArray("p1");
    QTest::addRow("failing part answered first")
        << QVector<int>{ok, StatusForbidden, ok} << QVector<int>{1, 2, 0} << qint32(StatusForbidden)
        << QByteArray("p1");
    QTest::addRow("last part fails")
        << QVector<int>{ok, ok, StatusNotFound} << QVector<int>{2, 0, 1} << qint32(StatusNotFound)
        << QByteArray("p2");
    QTest::addRow("two parts fail: the earlier part counts")
        << QVector<int>{ok, StatusConflict, StatusForbidden} << QVector<int>{2, 1, 0}
        << qint32(StatusConflict) << QByteArray("p1");
}

void TestPluginInterface::splitQuery()
{
    QFETCH(QVector<int>, statuses);
    QFETCH(QVector<int>, answerOrder);
    QFETCH(qint32, status);
    QFETCH(QByteArray, data);
    ScriptedServer server;
    TestPlugin plugin;
    plugin.init(&server, QStringLiteral("plugin"));

    Answers answers;
    plugin.sendSplitQuery(parts(statuses.size()), answers.callback());
    QCOMPARE(answers.calls, 0); // never from inside the call
    const QList<Command> sent = server.sent();
    QCOMPARE(sent.size(), statuses.size());
    for (int i = 0; i < sent.size(); ++i) {
        QCOMPARE(sent.at(i).name, part(i).name);
        QCOMPARE(sent.at(i).data, part(i).data);
    }
    for (int index : qAsConst(answerOrder)) {
        flushEvents();
        QCOMPARE(answers.calls, 0);
        server.answer(sent.at(index), statuses.at(index), partAnswer(index));
    }
    flushEvents();
    QCOMPARE(answers.calls, 1);
    QCOMPARE(answers.last.status, status);
    QCOMPARE(answers.last.data, data);
    QCOMPARE(server.pendingCount(), 0);
}

void TestPluginInterface::splitQueryFailsAsAWhole_data()
{
    QTest::addColumn<bool>("withServer");
    QTest::addColumn<int>("answeredBeforeDrop");
    QTest::addRow("init not called") << false << 0;
    QTest::addRow("connection drops before any answer") << true << 0;
    QTest::addRow("connection drops after one answer") << true << 1;
}

void TestPluginInterface::splitQueryFailsAsAWhole()
{
    QFETCH(bool, withServer);
    QFETCH(int, answeredBeforeDrop);
    ScriptedServer server;
    TestPlugin plugin;
    if (withServer)
        plugin.init(&server, QStringLiteral("plugin"));
    Answers answers;
    plugin.sendSplitQuery(parts(3), answers.callback());
    QCOMPARE(answers.calls, 0);
    for (int i = 0; i < answeredBeforeDrop; ++i)
        server.answerOk(server.sent().at(i), partAnswer(i));
    if (withServer)
        server.dropConnection();
    QTRY_COMPARE_WITH_TIMEOUT(answers.calls, 1, 2000);
    flushEvents();
    QCOMPARE(answers.calls, 1);
    QCOMPARE(answers.last.status, qint32(StatusConnectionLost));
    QVERIFY(!answers.last.errorText().isEmpty());
}

// Two split queries answered in a shuffled order each get their own parts.
void TestPluginInterface::splitQueriesDoNotMix()
{
    ScriptedServer server;
    TestPlugin plugin;
    plugin.init(&server, QStringLiteral("plugin"));
    Answers first;
    Answers second;
    plugin.sendSplitQuery(parts(2), first.callback());
    plugin.sendQuery(part(9), nullptr);
    plugin.sendSplitQuery(parts(3), second.callback());
    const QList<Command> sent = server.sent();
    QCOMPARE(sent.size(), 6);
    for (int index : {5, 1, 3, 4, 2, 0})
        server.answerOk(sent.at(index), sent.at(index).name.toLatin1() + ";");
    flushEvents();
    QCOMPARE(first.calls, 1);
    QCOMPARE(first.last.data, QByteArray("part.0;part.1;"));
    QCOMPARE(second.calls, 1);
    QCOMPARE(second.last.data, QByteArray("part.0;part.1;part.2;"));
}

QTEST_GUILESS_MAIN(TestPluginInterface)
#include "tst_plugininterface.moc"
