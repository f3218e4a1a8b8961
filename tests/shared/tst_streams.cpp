#include <host/core/zrdatastream.h>
#include <shared/metatypes.h>
#include <shared/rolenames.h>

#include <QTest>

using namespace zeral;

namespace {

template<class T>
QByteArray toBytes(const T &value)
{
    QByteArray bytes;
    ZRDataStream out(&bytes, QIODevice::WriteOnly);
    out << value;
    return bytes;
}

template<class T>
struct ReadBack
{
    T value;
    QDataStream::Status status;
    bool atEnd;
};

// Writes `value` and reads it back into `into`, the way a payload travels between processes.
template<class T>
ReadBack<T> roundTrip(const T &value, T into = T())
{
    const QByteArray bytes = toBytes(value);
    ZRDataStream in(bytes);
    in >> into;
    return {std::move(into), in.status(), in.atEnd()};
}

_INHERIT_DATA link(TYPE_ID child, TYPE_ID parent, quint32 linkType)
{
    _INHERIT_DATA data;
    data.child = child;
    data.parent = parent;
    data.linkType = linkType;
    data.validFrom = QDateTime(QDate(2023, 1, 9), QTime(8, 0), Qt::UTC);
    return data;
}

// Same type, same null-ness and same value at every level: QVariant's own == converts
// (true == 1) and doesn't see the difference between a null and an empty string.
bool sameVariant(const QVariant &a, const QVariant &b)
{
    if (a.userType() != b.userType() || a.isNull() != b.isNull())
        return false;
    switch (a.userType()) {
    case QMetaType::QVariantList: {
        const QVariantList left = a.toList(), right = b.toList();
        if (left.size() != right.size())
            return false;
        for (int i = 0; i < left.size(); ++i) {
            if (!sameVariant(left.at(i), right.at(i)))
                return false;
        }
        return true;
    }
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash: {
        const QVariantMap left = a.toMap(), right = b.toMap();
        if (left.keys() != right.keys())
            return false;
        for (auto it = left.cbegin(); it != left.cend(); ++it) {
            if (!sameVariant(it.value(), right.value(it.key())))
                return false;
        }
        return true;
    }
    default:
        return a == b;
    }
}

} // namespace

#define VERIFY_READ(back)                                                                          \
    do {                                                                                           \
        QCOMPARE(int((back).status), int(QDataStream::Ok));                                        \
        QVERIFY2((back).atEnd, "bytes left over after the record");                                \
    } while (false)

// QString and QByteArray compare a null value equal to an empty one; the wire keeps them apart.
#define COMPARE_TEXT(actual, expected)                                                             \
    do {                                                                                           \
        QCOMPARE(actual, expected);                                                                \
        QCOMPARE((actual).isNull(), (expected).isNull());                                          \
    } while (false)

#define CHECK_ROUND_TRIP(record)                                                                   \
    do {                                                                                           \
        const auto back = roundTrip(record);                                                       \
        VERIFY_READ(back);                                                                         \
        QCOMPARE(back.value, record);                                                              \
    } while (false)

class TestStreams : public QObject
{
    Q_OBJECT

private slots:
    void objectInfo();
    void inheritData_data();
    void inheritData();
    void flatRecords();
    void emailMessage_data();
    void emailMessage();
    void taskInfo();
    void text_data();
    void text();
    void byteLayout_data();
    void byteLayout();

private:
    void compareTasks(const TaskInfo &actual, const TaskInfo &expected);
};

void TestStreams::objectInfo()
{
    ObjectInfo object;
    object.uid = 1001;
    object.type = QStringLiteral("OT_WORKER");
    object.parent = 17;
    object.reserved = 0xA5A5A5A5;
    object.parameters.insert(QStringLiteral("PT_SURNAME"), QStringLiteral("Иванов"));
    object.parameters.insert(QStringLiteral("PT_WORKERNUM"), QStringLiteral("000123"));
    object.parameters.insert(QStringLiteral("PT_EMAIL"), QStringLiteral(""));
    object.timestamp = QDateTime(QDate(2024, 3, 1), QTime(9, 30, 15, 250), Qt::UTC);
    // Several links of one type: their order under the key must survive.
    object.parents.insert(INHERIT_WORKER_USER, link(1001, 2001, INHERIT_WORKER_USER));
    object.parents.insert(INHERIT_WORKER_USER, link(1001, 2002, INHERIT_WORKER_USER));
    object.parents.insert(INHERIT_WORKER_USER, link(1001, 2003, INHERIT_WORKER_USER));
    object.parents.insert(3, link(1001, 17, 3));
    object.children.insert(4, link(3001, 1001, 4));
    object.children.insert(4, link(3002, 1001, 4));
    object.children.insert(2, link(3003, 1001, 2));

    const auto back = roundTrip(object);
    VERIFY_READ(back);
    QCOMPARE(back.value, object);
    QCOMPARE(back.value.parents.values(INHERIT_WORKER_USER),
             object.parents.values(INHERIT_WORKER_USER));
    QCOMPARE(back.value.children.values(4), object.children.values(4));
    QCOMPARE(back.value.timestamp.time().msec(), 250);
}

void TestStreams::inheritData_data()
{
    QTest::addColumn<QDateTime>("validFrom");
    QTest::addColumn<QDateTime>("validTo");

    const QDateTime from(QDate(2020, 2, 29), QTime(0, 0), Qt::UTC);
    QTest::addRow("open-ended") << from << QDateTime();
    QTest::addRow("bounded, UTC") << from
                                  << QDateTime(QDate(2030, 12, 31), QTime(23, 59, 59), Qt::UTC);
    QTest::addRow("local time") << QDateTime(QDate(2024, 7, 1), QTime(12, 0), Qt::LocalTime)
                                << QDateTime(QDate(2025, 1, 1), QTime(0, 0, 0, 1), Qt::LocalTime);
    QTest::addRow("offset +03:00")
        << QDateTime(QDate(2024, 7, 1), QTime(12, 0), Qt::OffsetFromUTC, 3 * 3600) << from;
}

void TestStreams::inheritData()
{
    QFETCH(QDateTime, validFrom);
    QFETCH(QDateTime, validTo);

    _INHERIT_DATA data{5, 6, INHERIT_WORKER_USER, 7, validFrom, validTo};
    const auto back = roundTrip(data);
    VERIFY_READ(back);
    QCOMPARE(back.value, data);
    // == compares instants only; the ISO form also shows UTC, local time or the offset.
    QCOMPARE(back.value.validFrom.toString(Qt::ISODateWithMs),
             validFrom.toString(Qt::ISODateWithMs));
    QCOMPARE(back.value.validTo.toString(Qt::ISODateWithMs), validTo.toString(Qt::ISODateWithMs));
}

void TestStreams::flatRecords()
{
    CHECK_ROUND_TRIP((OBJECT_PERMISSION{0xFFFFFFFF, 42, 0x8000000F}));
    CHECK_ROUND_TRIP((RoleEntry{QStringLiteral("RL_USER_SHOW"), QStringLiteral("Просмотр"),
                                QStringLiteral("users"), false}));
    CHECK_ROUND_TRIP(
        (RoleEntry{QStringLiteral("users"), QStringLiteral("Пользователи"), QString(), true}));

    ROLETEMPLATE_INFO roleTemplate;
    roleTemplate.id = QStringLiteral("RT_CUSTOM_7");
    roleTemplate.name = QStringLiteral("Дежурный");
    roleTemplate.text = QStringLiteral("Смена");
    roleTemplate.custom = true;
    roleTemplate.roles
        = {QString::fromLatin1(role::USER_SHOW), QString::fromLatin1(role::USER_BLOCK),
           QString::fromLatin1(role::MONITORING_SHOW)};
    roleTemplate.extra = QStringLiteral("{\"v\":1}");
    CHECK_ROUND_TRIP(roleTemplate);
    CHECK_ROUND_TRIP(ROLETEMPLATE_INFO());

    TEMPLATE_DATA finger;
    finger.firstWord = 0x01020304;
    finger.marker = 0x7F;
    finger.secondWord = 0xFFFFFFFF;
    finger.format = 3;
    finger.data = QByteArray(512, '\xAB');
    finger.extra = QByteArray("\0\1\2", 3);
    finger.lastValue = 0x1234;
    finger.firstFlag = 1;
    finger.secondFlag = 0xFF;
    CHECK_ROUND_TRIP(finger);
    CHECK_ROUND_TRIP(TEMPLATE_DATA());

    ConnectedUserInfo session;
    session.user = QStringLiteral("admin");
    session.ipPort = QStringLiteral("[::1]:50123");
    session.connectDateTime = QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9, 10), Qt::UTC);
    session.lastActionTime = session.connectDateTime.addSecs(3600);
    session.sessionId = QByteArray::fromHex("00ff10e2");
    CHECK_ROUND_TRIP(session);
    CHECK_ROUND_TRIP(ConnectedUserInfo());

    CHECK_ROUND_TRIP(
        (EMAIL_ATTACHMENT{QStringLiteral("отчёт.pdf"), QStringLiteral("application/pdf"),
                          QByteArray("%PDF-1.4\0\n", 10)}));
}

void TestStreams::emailMessage_data()
{
    QTest::addColumn<QVariant>("value");

    QTest::addRow("bool") << QVariant(true);
    QTest::addRow("int") << QVariant(-42);
    QTest::addRow("uint") << QVariant(4000000000u);
    QTest::addRow("long long") << QVariant(Q_INT64_C(-9000000000));
    QTest::addRow("double") << QVariant(2.5);
    QTest::addRow("string") << QVariant(QStringLiteral("Здравствуйте"));
    QTest::addRow("null string") << QVariant(QString());
    QTest::addRow("empty string") << QVariant(QStringLiteral(""));
    QTest::addRow("bytes") << QVariant(QByteArray("\0\1\xff", 3));
    QTest::addRow("date time") << QVariant(
        QDateTime(QDate(2024, 2, 29), QTime(23, 59, 59, 999), Qt::UTC));
    QTest::addRow("invalid") << QVariant();
    QTest::addRow("null int") << QVariant(QVariant::Int);
    QTest::addRow("string list") << QVariant(QStringList{QStringLiteral("a"), QString()});
    QTest::addRow("nested list") << QVariant(
        QVariantList{1, QStringLiteral("two"), QVariantList{true, QVariant(), QVariantList{3.0}}});
    QTest::addRow("nested map") << QVariant(
        QVariantMap{{QStringLiteral("name"), QStringLiteral("Пётр")},
                    {QStringLiteral("inner"), QVariantMap{{QStringLiteral("n"), 3u}}},
                    {QStringLiteral("list"), QVariantList{false, QByteArray("x")}}});
    QTest::addRow("hash") << QVariant(QVariantHash{{QStringLiteral("k"), 7LL}});
}

void TestStreams::emailMessage()
{
    QFETCH(QVariant, value);

    EMAIL_MESSAGE message;
    message.to = QStringLiteral("operator@example.org");
    message.subject = QStringLiteral("Пароль для входа");
    // An empty body: the server renders the text from the parameters.
    message.attachments.append({QStringLiteral("a.txt"), QStringLiteral("text/plain"), "a"});
    message.attachments.append({QStringLiteral("b.bin"), QString(), QByteArray()});
    message.parameters.insert(QString::fromLatin1(email::LOCALE), QStringLiteral("ru"));
    message.parameters.insert(QString::fromLatin1(email::IS_MOBILE_TOKEN), false);
    message.parameters.insert(QStringLiteral("VALUE"), value);

    const auto back = roundTrip(message);
    VERIFY_READ(back);
    QCOMPARE(back.value, message);
    QVERIFY(back.value.body.isNull());
    QCOMPARE(back.value.attachments.at(1).content.isNull(), true);
    QVERIFY(back.value.parameters.contains(QStringLiteral("VALUE")));
    const QVariant read = back.value.parameters.value(QStringLiteral("VALUE"));
    QVERIFY2(sameVariant(read, value),
             qPrintable(QStringLiteral("read back as %1 (%2), null %3")
                            .arg(QString::fromLatin1(read.typeName()), read.toString())
                            .arg(read.isNull())));
    QVERIFY(sameVariant(back.value.parameters.value(QString::fromLatin1(email::IS_MOBILE_TOKEN)),
                        QVariant(false)));
}

void TestStreams::compareTasks(const TaskInfo &actual, const TaskInfo &expected)
{
    QCOMPARE(actual.id, expected.id);
    QCOMPARE(actual.dependsOn, expected.dependsOn);
    QCOMPARE(actual.uid, expected.uid);
    QCOMPARE(actual.type, expected.type);
    QCOMPARE(actual.data, expected.data);
    QCOMPARE(actual.data.keys(), expected.data.keys());
    for (const QString &key : expected.data.uniqueKeys())
        QCOMPARE(actual.data.values(key), expected.data.values(key));
    QCOMPARE(actual.startMessage, expected.startMessage);
    QCOMPARE(actual.errorMessage, expected.errorMessage);
    QCOMPARE(actual.method, expected.method);
    QCOMPARE(actual.subtasks.size(), expected.subtasks.size());
    for (int i = 0; i < expected.subtasks.size(); ++i) {
        compareTasks(actual.subtasks.at(i), expected.subtasks.at(i));
        if (QTest::currentTestFailed())
            return;
    }
}

void TestStreams::taskInfo()
{
    TaskInfo link;
    link.uid = 3;
    link.type = QStringLiteral("LINK_ROLE");
    link.data.insert(QStringLiteral("ROLE"), QString::fromLatin1(role::USER_SHOW));
    TaskInfo password;
    password.type = QStringLiteral("SET_PASSWORD");
    password.dependsOn = {link.id};

    TaskInfo task;
    task.type = QStringLiteral("CREATE_USER");
    task.dependsOn = {link.id, password.id};
    task.data.insert(QStringLiteral("PT_LOGIN"), QStringLiteral("petrov"));
    task.data.insert(QStringLiteral("ROLE"), QStringLiteral("first"));
    task.data.insert(QStringLiteral("ROLE"), QStringLiteral("second"));
    task.data.insert(QStringLiteral("ROLE"), QStringLiteral("third"));
    task.data.insert(QStringLiteral("COUNT"), 3);
    task.data.insert(QStringLiteral("BLOCKED"), false);
    task.startMessage = QStringLiteral("Создание пользователя");
    task.errorMessage = QStringLiteral("Не удалось создать пользователя");
    task.subtasks = {link, password};
    task.receiver = this;
    task.method = QStringLiteral("onUserCreated");

    // The receiver is a live object of this process: whatever the target held, it reads null.
    TaskInfo into;
    into.receiver = this;
    const auto back = roundTrip(task, into);
    VERIFY_READ(back);
    QVERIFY(back.value.receiver.isNull());
    compareTasks(back.value, task);
}

void TestStreams::text_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("bytes");

    QTest::addRow("null") << QString() << QByteArray();
    QTest::addRow("empty") << QStringLiteral("") << QByteArray("");
    QTest::addRow("latin-1") << QStringLiteral("Müller") << QByteArray("\0\x7f\x80\xff", 4);
    QTest::addRow("russian") << QStringLiteral("Пользователь") << QByteArray("Пользователь");
    QTest::addRow("cjk") << QStringLiteral("用户管理") << QByteArray("用户管理");
    QTest::addRow("emoji") << QStringLiteral("👤🔑 ключ") << QByteArray("👤");
    QTest::addRow("embedded nul") << QString(QStringLiteral("a") + QChar(0) + QStringLiteral("b"))
                                  << QByteArray(3, '\0');
}

void TestStreams::text()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, bytes);

    ObjectInfo object;
    object.type = text;
    object.parameters.insert(QStringLiteral("PT_NAME"), text);
    const auto objectBack = roundTrip(object);
    VERIFY_READ(objectBack);
    COMPARE_TEXT(objectBack.value.type, text);
    QVERIFY(objectBack.value.parameters.contains(QStringLiteral("PT_NAME")));
    COMPARE_TEXT(objectBack.value.parameters.value(QStringLiteral("PT_NAME")), text);

    EMAIL_MESSAGE message;
    message.subject = text;
    message.body = text;
    message.attachments.append({text, QStringLiteral("text/plain"), bytes});
    message.parameters.insert(QString::fromLatin1(email::GREETINGS), text);
    message.parameters.insert(QString::fromLatin1(email::TOKEN), bytes);
    const auto messageBack = roundTrip(message);
    VERIFY_READ(messageBack);
    COMPARE_TEXT(messageBack.value.subject, text);
    COMPARE_TEXT(messageBack.value.body, text);
    COMPARE_TEXT(messageBack.value.attachments.value(0).fileName, text);
    COMPARE_TEXT(messageBack.value.attachments.value(0).content, bytes);
    COMPARE_TEXT(
        messageBack.value.parameters.value(QString::fromLatin1(email::GREETINGS)).toString(), text);
    COMPARE_TEXT(
        messageBack.value.parameters.value(QString::fromLatin1(email::TOKEN)).toByteArray(), bytes);

    ROLETEMPLATE_INFO roleTemplate;
    roleTemplate.name = text;
    roleTemplate.roles = {text, QStringLiteral("RL_USER_SHOW")};
    const auto templateBack = roundTrip(roleTemplate);
    VERIFY_READ(templateBack);
    COMPARE_TEXT(templateBack.value.name, text);
    COMPARE_TEXT(templateBack.value.roles.value(0), text);

    TaskInfo task;
    task.type = text;
    task.data.insert(QStringLiteral("NAME"), text);
    const auto taskBack = roundTrip(task);
    VERIFY_READ(taskBack);
    COMPARE_TEXT(taskBack.value.type, text);
    COMPARE_TEXT(taskBack.value.data.value(QStringLiteral("NAME")).toString(), text);

    TEMPLATE_DATA finger;
    finger.data = bytes;
    finger.extra = bytes;
    const auto fingerBack = roundTrip(finger);
    VERIFY_READ(fingerBack);
    COMPARE_TEXT(fingerBack.value.data, bytes);
    COMPARE_TEXT(fingerBack.value.extra, bytes);
}

void TestStreams::byteLayout_data()
{
    // The server reads these bytes field by field: a change of any width or order breaks it.
    // (fromHex skips the spaces.)
    QTest::addColumn<QByteArray>("written");
    QTest::addColumn<QByteArray>("expected");

    QTest::addRow("OBJECT_PERMISSION") << toBytes(OBJECT_PERMISSION{1, 2, 12})
                                       << QByteArray::fromHex("00000001 00000002 0000000c");
    // "RL" in UTF-16BE, an empty title, a null parent key, the flag as one byte.
    QTest::addRow("RoleEntry") << toBytes(
        RoleEntry{QStringLiteral("RL"), QStringLiteral(""), QString(), true})
                               << QByteArray::fromHex("00000004 0052004c 00000000 ffffffff 01");
    QTest::addRow("default _TEMPLATE_DATA")
        << toBytes(TEMPLATE_DATA())
        << QByteArray::fromHex("00000000 ff 00000000 00000000 ffffffff ffffffff ffff 00 00");
    TEMPLATE_DATA finger;
    finger.format = 2;
    finger.data = "AB";
    finger.firstFlag = 1;
    QTest::addRow("_TEMPLATE_DATA with data")
        << toBytes(finger)
        << QByteArray::fromHex("00000000 ff 00000000 00000002 00000002 4142 ffffffff ffff 01 00");
}

void TestStreams::byteLayout()
{
    QFETCH(QByteArray, written);
    QFETCH(QByteArray, expected);
    QCOMPARE(written.toHex(), expected.toHex());
}

QTEST_GUILESS_MAIN(TestStreams)
#include "tst_streams.moc"
