#include <host/core/protocol.h>
#include <host/core/zrplugininterface.h>
#include <tests/support/scriptedserver.h>
#include <tests/support/testplugin.h>

#include <QTest>

#include <memory>

using namespace zeral::proto;

namespace {

ZRPluginInterface::Callback recordInto(QList<Command> *answers)
{
    return [answers](Command &answer) {
        answers->append(answer);
    };
}

void flushEvents()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

QList<Command> parts(int count)
{
    QList<Command> list;
    for (int i = 0; i < count; ++i) {
        const QByteArray index = QByteArray::number(i);
        list.append(Command{0, NamedCommand, QString::fromLatin1("part." + index), 0, {}, index});
    }
    return list;
}

} // namespace

class TestPluginInterface : public QObject
{
    Q_OBJECT
private slots:
    void sendQuery_data();
    void sendQuery();
    void splitQuery_data();
    void splitQuery();
    void splitQueriesDoNotMix();
    void routerGoneFirst();
};

void TestPluginInterface::sendQuery_data()
{
    QTest::addColumn<bool>("withServer");
    QTest::addColumn<int>("split");    // parts of a split query, or 0 for a plain query
    QTest::addColumn<bool>("destroy"); // the plugin goes away before the answer comes
    QTest::addColumn<qint32>("status");
    QTest::addRow("answered") << true << 0 << false << qint32(StatusOk);
    QTest::addRow("refused") << true << 0 << false << qint32(StatusForbidden);
    QTest::addRow("init not called") << false << 0 << false << qint32(StatusConnectionLost);
    QTest::addRow("split, init not called") << false << 3 << false << qint32(StatusConnectionLost);
    QTest::addRow("destroyed while waiting") << true << 0 << true << qint32(StatusOk);
    QTest::addRow("split, destroyed while waiting") << true << 2 << true << qint32(StatusOk);
    QTest::addRow("destroyed, init not called") << false << 0 << true << qint32(StatusOk);
    QTest::addRow("split, destroyed, init not called") << false << 2 << true << qint32(StatusOk);
}

void TestPluginInterface::sendQuery()
{
    QFETCH(bool, withServer);
    QFETCH(int, split);
    QFETCH(bool, destroy);
    QFETCH(qint32, status);
    ScriptedServer server;
    auto plugin = std::make_unique<TestPlugin>();
    if (withServer)
        plugin->init(&server, QStringLiteral("plugin"));
    QList<Command> answers;
    if (split)
        plugin->sendSplitQuery(parts(split), recordInto(&answers));
    else
        plugin->sendQuery(parts(1).constFirst(), recordInto(&answers));
    QCOMPARE(answers.size(), 0); // never from inside the call
    const QList<Command> sent = server.sent();
    QCOMPARE(sent.size(), withServer ? qMax(split, 1) : 0);
    if (destroy) {
        plugin.reset();
        QCOMPARE(server.pendingCount(), 0);
    }
    for (const Command &request : sent)
        server.answer(request, status, "reply");
    flushEvents();
    QCOMPARE(answers.size(), destroy ? 0 : 1);
    if (destroy)
        return;
    QCOMPARE(answers.constLast().status, status);
    QCOMPARE(answers.constLast().name, QStringLiteral("part.0"));
    if (withServer)
        QCOMPARE(answers.constLast().data, QByteArray("reply"));
    else
        QVERIFY(!answers.constLast().errorText().isEmpty());
}

void TestPluginInterface::splitQuery_data()
{
    // Each part is answered with "p<index>" and its status; a part whose status is StatusNone is
    // never answered: the connection drops instead.
    QTest::addColumn<QVector<int>>("statuses");    // by part
    QTest::addColumn<QVector<int>>("answerOrder"); // parts, in the order they are answered
    QTest::addColumn<qint32>("status");
    QTest::addColumn<QByteArray>("data");
    using V = QVector<int>;
    const int ok = StatusOk;
    const int none = StatusNone;
    const int lost = StatusConnectionLost;
    QTest::addRow("no parts") << V{} << V{} << ok << QByteArray();
    QTest::addRow("answered backwards")
        << V{ok, ok, ok} << V{2, 1, 0} << ok << QByteArray("p0p1p2");
    QTest::addRow("middle part last") << V{ok, ok, ok} << V{0, 2, 1} << ok << QByteArray("p0p1p2");
    QTest::addRow("failing part answered first")
        << V{ok, StatusForbidden, ok} << V{1, 2, 0} << qint32(StatusForbidden) << QByteArray("p1");
    QTest::addRow("two parts fail: the earlier part counts")
        << V{ok, StatusConflict, StatusForbidden} << V{2, 1, 0} << qint32(StatusConflict)
        << QByteArray("p1");
    QTest::addRow("connection drops before any answer")
        << V{none, none, none} << V{} << lost << QByteArray();
    QTest::addRow("connection drops after one answer")
        << V{ok, none, none} << V{0} << lost << QByteArray();
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

    QList<Command> answers;
    plugin.sendSplitQuery(parts(statuses.size()), recordInto(&answers));
    QCOMPARE(answers.size(), 0); // never from inside the call
    const QList<Command> sent = server.sent();
    QCOMPARE(sent.size(), statuses.size());
    for (int i = 0; i < sent.size(); ++i)
        QCOMPARE(sent.at(i).data, QByteArray::number(i));
    for (int index : qAsConst(answerOrder)) {
        flushEvents();
        QCOMPARE(answers.size(), 0); // not before every part is answered
        server.answer(sent.at(index), statuses.at(index), "p" + QByteArray::number(index));
    }
    const bool drops = statuses.contains(StatusNone);
    if (drops)
        server.dropConnection();
    flushEvents();
    QCOMPARE(answers.size(), 1);
    QCOMPARE(answers.constLast().status, status);
    if (drops)
        QVERIFY(!answers.constLast().errorText().isEmpty());
    else
        QCOMPARE(answers.constLast().data, data);
    QCOMPARE(server.pendingCount(), 0);
}

// Two split queries answered in a shuffled order each get their own parts.
void TestPluginInterface::splitQueriesDoNotMix()
{
    ScriptedServer server;
    TestPlugin plugin;
    plugin.init(&server, QStringLiteral("plugin"));
    QList<Command> first;
    QList<Command> second;
    plugin.sendSplitQuery(parts(2), recordInto(&first));
    plugin.sendQuery(parts(1).constFirst(), nullptr);
    plugin.sendSplitQuery(parts(3), recordInto(&second));
    const QList<Command> sent = server.sent();
    QCOMPARE(sent.size(), 6);
    for (int index : {5, 1, 3, 4, 2, 0})
        server.answerOk(sent.at(index), sent.at(index).name.toLatin1() + ";");
    flushEvents();
    QCOMPARE(first.size(), 1);
    QCOMPARE(first.constFirst().data, QByteArray("part.0;part.1;"));
    QCOMPARE(second.size(), 1);
    QCOMPARE(second.constFirst().data, QByteArray("part.0;part.1;part.2;"));
}

QTEST_GUILESS_MAIN(TestPluginInterface)
#include "tst_plugininterface.moc"

// The studio may tear its router down before a plugin: the plugin then answers by itself
// and goes away without touching the router.
void TestPluginInterface::routerGoneFirst()
{
    auto server = std::make_unique<ScriptedServer>();
    TestPlugin plugin;
    plugin.init(server.get(), QStringLiteral("plugin"));
    server.reset();
    QCOMPARE(plugin.server(), nullptr);
    QList<Command> answers;
    plugin.sendQuery(parts(1).constFirst(), recordInto(&answers));
    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.constFirst().status, qint32(StatusConnectionLost));
}
