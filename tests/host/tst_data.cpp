#include <host/core/authdata.h>
#include <host/core/data.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <tests/support/builders.h>
#include <tests/support/scriptedserver.h>
#include <tests/support/testplugin.h>

#include <QtTest>

#include <functional>

namespace cmd = zeral::proto::command;

// Calls one operation of the data object; reads that operation's payload and checks it.
using Operation = std::function<void(zr5sdk::Data &, zr5sdk::Data::Callback)>;
using PayloadCheck = std::function<void(ZRDataStream &)>;
Q_DECLARE_METATYPE(Operation)
Q_DECLARE_METATYPE(PayloadCheck)

namespace {

const QByteArray SessionId = QByteArrayLiteral("data-session-7f3a");
const QDateTime Moment(QDate(2024, 3, 1), QTime(9, 30), Qt::UTC);

template<class T>
bool readEqual(ZRDataStream &in, const T &wanted)
{
    T read{};
    in >> read;
    return read == wanted;
}

// Reads one value of each given type, in order, and wants each equal to the one given.
template<class... Values>
PayloadCheck expect(const Values &...values)
{
    return [=](ZRDataStream &in) {
        int field = 0;
        const bool ok = ((++field, readEqual(in, values)) && ...);
        QVERIFY2(ok, qPrintable(QStringLiteral("field %1 differs").arg(field)));
    };
}

// A row named after the command the operation sends: the payload wanted, then the call.
void row(const char *command, const PayloadCheck &check, const Operation &operation)
{
    QTest::newRow(command) << operation << check;
}

} // namespace

class TestData : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void requestPayload_data();
    void requestPayload();

private:
    ScriptedServer m_server;
    TestPlugin m_plugin; // goes before the server it unregisters from
};

void TestData::initTestCase()
{
    // The data object must send the session it was given, not the operator's current one.
    AuthData::set({QStringLiteral("root"), 1, QByteArrayLiteral("other-session"), {}, {}, {}});
    m_plugin.init(&m_server, QStringLiteral("data test"));
}

void TestData::requestPayload_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<PayloadCheck>("check");

    zeral::ObjectInfo user = testing::makeUser(0, QStringLiteral("petrov"));
    user.parent = 12;
    user.timestamp = Moment;
    user.parameters.insert(QStringLiteral("PT_SURNAME"), QStringLiteral("Петров"));
    const zeral::_INHERIT_DATA link{77, 0,      zeral::INHERIT_WORKER_USER,
                                    0,  Moment, Moment.addYears(1)};
    const QList<zeral::_INHERIT_DATA> links = {link};
    row(cmd::AddObject, expect(user, links),
        [=](auto &d, auto cb) { d.addObject(user, links, cb); });

    // Links, timestamp and the reserved field stay home: only what update_object changes goes.
    zeral::ObjectInfo changed = testing::makeUser(41, QStringLiteral("sidorov"));
    changed.parent = 5;
    changed.reserved = 9;
    changed.timestamp = Moment.addDays(5);
    changed.parents.insert(zeral::INHERIT_WORKER_USER, link);
    changed.children.insert(zeral::INHERIT_WORKER_USER, link);
    row(cmd::UpdateObject,
        expect(quint32(41), QStringLiteral("OT_USER"), quint32(5), changed.parameters),
        [=](auto &d, auto cb) { d.updateObject(changed, cb); });
    row(cmd::RemoveObject, expect(quint32(41), QStringLiteral("OT_USER")),
        [=](auto &d, auto cb) { d.removeObject(changed, cb); });
    const QString mobile = QStringLiteral("RT_MOBILE");
    row(cmd::PrescribeRoleTemplate, expect(quint32(43), mobile),
        [=](auto &d, auto cb) { d.roleTemplatePrescribeUser(43, mobile, cb); });
    row(cmd::RoleTemplateInherit, expect(mobile),
        [=](auto &d, auto cb) { d.roleTemplateInherit(mobile, cb); });

    const QList<zeral::OBJECT_PERMISSION> permissions = {{43, 100, 1}, {43, 101, 6}};
    row(cmd::AddPermissions, expect(permissions),
        [=](auto &d, auto cb) { d.addPermissions(permissions, cb); });
    row(cmd::UpdatePermissions, expect(quint32(43), permissions),
        [=](auto &d, auto cb) { d.updatePermissions(43, permissions, cb); });
    const QList<quint32> uids = {7, 3, 900000};
    row(cmd::GetPermissions, expect(uids), [=](auto &d, auto cb) { d.getPermissions(uids, cb); });
    row(cmd::GetUserFingersExists, expect(uids),
        [=](auto &d, auto cb) { d.getUserFingersExists(uids, cb); });

    DbQuery query;
    query.statements = QStringList{QStringLiteral("SELECT 1"), QStringLiteral("SELECT 'ы'")};
    query.maxRows = 250;
    row(cmd::ExecSql, expect(QList<QString>(query.statements), qint32(250)),
        [=](auto &d, auto cb) { d.execSql(query, cb); });
    row(cmd::GetSessionsInfo, expect(), [](auto &d, auto cb) { d.getSessionsInfo(cb); });
}

void TestData::requestPayload()
{
    QFETCH(Operation, operation);
    QFETCH(PayloadCheck, check);
    m_server.clearSent();
    QList<Command> answers;
    zr5sdk::Data data(&m_plugin, SessionId);
    operation(data, [&answers](Command &answer) { answers.append(answer); });

    QCOMPARE(m_server.sent().size(), 1);
    const Command request = m_server.sent().constFirst();
    QCOMPARE(request.name, QLatin1String(QTest::currentDataTag()));
    QCOMPARE(request.type, zeral::proto::NamedCommand);
    QCOMPARE(request.sessionId, SessionId);
    ZRDataStream in(request.data);
    check(in);
    if (QTest::currentTestFailed())
        return;
    QCOMPARE(in.status(), QDataStream::Ok);
    QVERIFY2(in.atEnd(), "the payload holds more than the operation's fields");

    // The answer reaches the operation's callback, once and as it came.
    QVERIFY(answers.isEmpty());
    m_server.answerFailure(request, zeral::proto::StatusConflict, QStringLiteral("Логин занят"));
    QCOMPARE(answers.size(), 1);
    QCOMPARE(answers.constFirst().errorText(), QStringLiteral("Логин занят"));
}

QTEST_GUILESS_MAIN(TestData)
#include "tst_data.moc"
