#include <host/core/authdata.h>
#include <host/core/data.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <shared/roletemplateinfo.h>
#include <tests/support/builders.h>
#include <tests/support/scriptedserver.h>
#include <tests/support/testplugin.h>

#include <QtTest>

#include <functional>

using zeral::TYPE_ID;
namespace cmd = zeral::proto::command;

// Calls one operation of the data object; reads that operation's payload and checks it.
using Operation = std::function<void(zr5sdk::Data &, zr5sdk::Data::Callback)>;
using PayloadCheck = std::function<void(ZRDataStream &)>;
Q_DECLARE_METATYPE(Operation)
Q_DECLARE_METATYPE(PayloadCheck)

namespace {

const QByteArray SessionId = QByteArrayLiteral("data-session-7f3a");

template<class... Values>
QByteArray write(const Values &...values)
{
    QByteArray bytes;
    ZRDataStream out(&bytes, QIODevice::WriteOnly);
    (out << ... << values);
    return bytes;
}

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

const QDateTime Moment(QDate(2024, 3, 1), QTime(9, 30), Qt::UTC);

} // namespace

class TestData : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void requestPayload_data();
    void requestPayload();
    void addObjectAnswerCarriesUid();
    void roleTemplateInheritAnswer();
    void failedAnswer_data();
    void failedAnswer();

private:
    Command sendOne(const Operation &operation);

    ScriptedServer *m_server = nullptr;
    TestPlugin *m_plugin = nullptr;
    QList<Command> m_answers;
};

void TestData::init()
{
    // The data object must send the session it was given, not the operator's current one.
    AuthData::set({QStringLiteral("root"), 1, QByteArrayLiteral("other-session"), {}, {}, {}});
    m_server = new ScriptedServer;
    m_plugin = new TestPlugin;
    m_plugin->init(m_server, QStringLiteral("data test"));
    m_answers.clear();
}

void TestData::cleanup()
{
    delete m_plugin; // before the server it unregisters from
    delete m_server;
}

Command TestData::sendOne(const Operation &operation)
{
    zr5sdk::Data data(m_plugin, SessionId);
    operation(data, [this](Command &answer) { m_answers.append(answer); });
    return m_server->sent().value(0);
}

void TestData::requestPayload_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<PayloadCheck>("check");

    zeral::ObjectInfo user = testing::makeUser(0, QStringLiteral("petrov"));
    user.parent = 12;
    user.timestamp = Moment;
    user.parameters.insert(QStringLiteral("PT_SURNAME"), QStringLiteral("Петров"));
    const zeral::_INHERIT_DATA link{77, 0,      zeral::INHERIT_WORKER_USER,
                                    0,  Moment, Moment.addYears(1)};
    const QList<zeral::_INHERIT_DATA> links = {link};
    QTest::addRow("add_object") << cmd::AddObject << Operation([=](auto &d, auto cb) {
        d.addObject(user, links, cb);
    }) << expect(user, links);

    // Links, timestamp and the reserved field stay home: only what update_object changes goes.
    zeral::ObjectInfo changed = testing::makeUser(41, QStringLiteral("sidorov"));
    changed.parent = 5;
    changed.reserved = 9;
    changed.timestamp = Moment.addDays(5);
    changed.parents.insert(zeral::INHERIT_WORKER_USER, link);
    changed.children.insert(zeral::INHERIT_WORKER_USER, link);
    QTest::addRow("update_object")
        << cmd::UpdateObject << Operation([=](auto &d, auto cb) { d.updateObject(changed, cb); })
        << expect(quint32(41), QStringLiteral("OT_USER"), quint32(5), changed.parameters);

    const zeral::ObjectInfo gone = testing::makeObject(42, QStringLiteral("OT_DEPARTMENT"));
    QTest::addRow("remove_object")
        << cmd::RemoveObject << Operation([=](auto &d, auto cb) { d.removeObject(gone, cb); })
        << expect(quint32(42), QStringLiteral("OT_DEPARTMENT"));

    QTest::addRow("role_template_prescribe_user")
        << cmd::PrescribeRoleTemplate << Operation([](auto &d, auto cb) {
               d.roleTemplatePrescribeUser(43, QStringLiteral("RT_MOBILE"), cb);
           })
        << expect(quint32(43), QStringLiteral("RT_MOBILE"));

    const QList<zeral::OBJECT_PERMISSION> permissions = {{43, 100, 1}, {43, 101, 6}};
    QTest::addRow("add_permissions") << cmd::AddPermissions << Operation([=](auto &d, auto cb) {
        d.addPermissions(permissions, cb);
    }) << expect(permissions);
    QTest::addRow("update_permissions")
        << cmd::UpdatePermissions
        << Operation([=](auto &d, auto cb) { d.updatePermissions(43, permissions, cb); })
        << expect(quint32(43), permissions);

    const QList<quint32> uids = {7, 3, 900000};
    QTest::addRow("get_permissions")
        << cmd::GetPermissions << Operation([=](auto &d, auto cb) { d.getPermissions(uids, cb); })
        << expect(uids);
    QTest::addRow("role_template_inherit")
        << cmd::RoleTemplateInherit << Operation([](auto &d, auto cb) {
               d.roleTemplateInherit(QStringLiteral("RT_ADMINISTRATOR"), cb);
           })
        << expect(QStringLiteral("RT_ADMINISTRATOR"));
    QTest::addRow("get_user_fingers_exists")
        << cmd::GetUserFingersExists
        << Operation([=](auto &d, auto cb) { d.getUserFingersExists(uids, cb); }) << expect(uids);

    DbQuery query;
    query.statements = QStringList{QStringLiteral("SELECT 1"), QStringLiteral("SELECT 'ы'")};
    query.maxRows = 250;
    QTest::addRow("exec_sql") << cmd::ExecSql
                              << Operation([=](auto &d, auto cb) { d.execSql(query, cb); })
                              << expect(QList<QString>(query.statements), qint32(250));

    QTest::addRow("get_sessions_info")
        << cmd::GetSessionsInfo << Operation([](auto &d, auto cb) { d.getSessionsInfo(cb); })
        << expect(); // nothing at all
}

void TestData::requestPayload()
{
    QFETCH(QString, name);
    QFETCH(Operation, operation);
    QFETCH(PayloadCheck, check);

    const Command request = sendOne(operation);
    QCOMPARE(m_server->sent().size(), 1);
    QCOMPARE(request.name, name);
    QCOMPARE(request.type, zeral::proto::NamedCommand);
    QCOMPARE(request.sessionId, SessionId);
    QCOMPARE(request.status, qint32(zeral::proto::StatusNone));
    QVERIFY(m_answers.isEmpty()); // nothing comes back before the server answers

    ZRDataStream in(request.data);
    check(in);
    if (QTest::currentTestFailed())
        return;
    QCOMPARE(in.status(), QDataStream::Ok);
    QVERIFY2(in.atEnd(), "the payload holds more than the operation's fields");
}

void TestData::addObjectAnswerCarriesUid()
{
    const Command request = sendOne(
        [](auto &d, auto cb) { d.addObject(testing::makeUser(0, QStringLiteral("new")), {}, cb); });
    m_server->answerOk(request, write(qint32(4711)));

    QCOMPARE(m_answers.size(), 1);
    QVERIFY(m_answers.constFirst().isOk());
    ZRDataStream in(m_answers.constFirst().data);
    qint32 uid = 0;
    in >> uid;
    QCOMPARE(uid, 4711);
    QVERIFY(in.atEnd());
}

void TestData::roleTemplateInheritAnswer()
{
    zeral::_ROLETEMPLATE_INFO custom;
    custom.id = QStringLiteral("RT_CUSTOM_12");
    custom.name = QStringLiteral("Вахтёры");
    custom.custom = true;
    custom.roles = {QStringLiteral("RL_USER_SHOW")};
    const QHash<QString, zeral::_ROLETEMPLATE_INFO> templates = {{custom.id, custom}};
    const QList<QString> grantable = {custom.id};

    const Command request = sendOne(
        [](auto &d, auto cb) { d.roleTemplateInherit(QStringLiteral("RT_SUPERVISOR"), cb); });
    m_server->answerOk(request, write(templates, grantable, true));

    QCOMPARE(m_answers.size(), 1);
    ZRDataStream in(m_answers.constFirst().data);
    QHash<QString, zeral::_ROLETEMPLATE_INFO> gotTemplates;
    QList<QString> gotGrantable;
    bool own = false;
    in >> gotTemplates >> gotGrantable >> own;
    QCOMPARE(in.status(), QDataStream::Ok);
    QVERIFY(in.atEnd());
    QVERIFY(gotTemplates == templates);
    QCOMPARE(gotGrantable, grantable);
    QVERIFY(own);
}

void TestData::failedAnswer_data()
{
    QTest::addColumn<qint32>("status");
    QTest::addColumn<QString>("text");
    QTest::addRow("forbidden") << qint32(zeral::proto::StatusForbidden)
                               << QStringLiteral("Недостаточно прав для изменения пользователя");
    QTest::addRow("conflict") << qint32(zeral::proto::StatusConflict)
                              << QStringLiteral("Логин «petrov» уже занят");
    QTest::addRow("internal, no text") << qint32(zeral::proto::StatusInternal) << QString();
}

void TestData::failedAnswer()
{
    QFETCH(qint32, status);
    QFETCH(QString, text);
    const Command request
        = sendOne([](auto &d, auto cb) { d.removeObject(testing::makeUser(5, {}), cb); });
    m_server->answerFailure(request, status, text);

    QCOMPARE(m_answers.size(), 1);
    QVERIFY(!m_answers.constFirst().isOk());
    QCOMPARE(m_answers.constFirst().status, status);
    QCOMPARE(m_answers.constFirst().errorText(), text);
}

QTEST_GUILESS_MAIN(TestData)
#include "tst_data.moc"
