#include <host/core/zrdatastream.h>
#include <shared/metatypes.h>
#include <shared/rolenames.h>

#include <QTest>

#include <functional>

using namespace zeral;

namespace {

// Reads `bytes` back into `into`, the way a payload travels between processes.
#define READ_BACK(bytes, into)                                                                     \
    do {                                                                                           \
        ZRDataStream in(bytes);                                                                    \
        in >> (into);                                                                              \
        QCOMPARE(int(in.status()), int(QDataStream::Ok));                                          \
        QVERIFY2(in.atEnd(), "bytes left over after the record");                                  \
    } while (false)

// == of the records compares instants only and takes a null text for an empty one; the bytes
// written again also keep the time zone, null-ness and the order of every list. Records with
// a hash hold one key at most, so that the bytes don't depend on the hash order.
template<class T>
void checkRoundTrip(const T &record)
{
    const QByteArray bytes = ZRDataStream::pack(record);
    T back;
    READ_BACK(bytes, back);
    QCOMPARE(back, record);
    QCOMPARE(ZRDataStream::pack(back).toHex(), bytes.toHex());
}

using Check = std::function<void()>;

template<class T>
Check roundTripOf(const T &record)
{
    return [record] {
        checkRoundTrip(record);
    };
}

_INHERIT_DATA link(TYPE_ID child, TYPE_ID parent, quint32 linkType)
{
    const QDateTime from(QDate(2023, 1, 9), QTime(8, 0), Qt::OffsetFromUTC, 3 * 3600);
    return {child, parent, linkType, 0, from, {}};
}

} // namespace

Q_DECLARE_METATYPE(Check)

class TestStreams : public QObject
{
    Q_OBJECT

private slots:
    void records_data();
    void records();
    void text_data();
    void text();
    void taskInfo();
    void byteLayout_data();
    void byteLayout();
};

void TestStreams::records_data()
{
    QTest::addColumn<Check>("check");

    ObjectInfo object;
    object.uid = 1001;
    object.type = QStringLiteral("OT_WORKER");
    object.parent = 17;
    object.reserved = 0xA5A5A5A5;
    object.parameters.insert(QStringLiteral("PT_SURNAME"), QStringLiteral("Иванов"));
    object.timestamp = QDateTime(QDate(2024, 3, 1), QTime(9, 30, 15, 250), Qt::UTC);
    // Several links under one key: == of a QMultiMap sees their order too.
    for (const TYPE_ID parent : {2001, 2002, 2003})
        object.parents.insert(INHERIT_WORKER_USER, link(1001, parent, INHERIT_WORKER_USER));
    object.parents.insert(3, link(1001, 17, 3));
    for (const TYPE_ID child : {3001, 3002})
        object.children.insert(4, link(child, 1001, 4));
    QTest::addRow("ObjectInfo") << roundTripOf(object);

    QTest::addRow("_INHERIT_DATA, local time") << roundTripOf(_INHERIT_DATA{
        5, 6, INHERIT_WORKER_USER, 7, QDateTime(QDate(2024, 7, 1), QTime(12, 0), Qt::LocalTime),
        QDateTime(QDate(2030, 12, 31), QTime(23, 59), Qt::UTC)});
    QTest::addRow("OBJECT_PERMISSION")
        << roundTripOf(OBJECT_PERMISSION{0xFFFFFFFF, 42, 0x8000000F});
    QTest::addRow("RoleEntry") << roundTripOf(
        RoleEntry{QStringLiteral("users"), QStringLiteral("Пользователи"), QString(), true});
    QTest::addRow("_ROLETEMPLATE_INFO") << roundTripOf(ROLETEMPLATE_INFO{
        QStringLiteral("RT_CUSTOM_7"),
        QStringLiteral("Дежурный"),
        QString(),
        true,
        {QString::fromLatin1(role::USER_SHOW), QString::fromLatin1(role::MONITORING_SHOW)},
        QStringLiteral("{\"v\":1}")});
    QTest::addRow("_TEMPLATE_DATA")
        << roundTripOf(TEMPLATE_DATA{0x01020304, 0x7F, 0xFFFFFFFF, 3, QByteArray(512, '\xAB'),
                                     QByteArray("\0\1\2", 3), 0x1234, 1, 0xFF});
    const QDateTime connected(QDate(2024, 5, 6), QTime(7, 8, 9, 10), Qt::UTC);
    QTest::addRow("ConnectedUserInfo") << roundTripOf(
        ConnectedUserInfo{QStringLiteral("admin"), QStringLiteral("[::1]:50123"), connected,
                          connected.addSecs(3600), QByteArray::fromHex("00ff10e2")});
    QTest::addRow("LoginLockInfo") << roundTripOf(
        LoginLockInfo{QStringLiteral("Root"), QStringLiteral("::1"), 5, connected.addSecs(300)});

    // An empty body asks the server to render the mail from the parameters.
    EMAIL_MESSAGE message{QStringLiteral("operator@example.org"),
                          QStringLiteral("Пароль"),
                          QString(),
                          {{QStringLiteral("a.txt"), QStringLiteral("text/plain"), "a"},
                           {QStringLiteral("b.bin"), QString(), QByteArray()}},
                          {}};
    message.parameters.insert(
        QStringLiteral("VALUES"),
        QVariantList{false, -42, 4000000000u, Q_INT64_C(-9000000000), 2.5, QVariant(QVariant::Int),
                     QVariant(QVariant::Double), QString(), QStringLiteral(""), QVariant(),
                     QDateTime(QDate(2024, 2, 29), QTime(23, 59, 59, 999), Qt::UTC),
                     QStringList{QStringLiteral("a"), QString()},
                     QVariantMap{{QStringLiteral("inner"), QVariantList{3u, QByteArray("x")}},
                                 {QStringLiteral("name"), QStringLiteral("Пётр")}}});
    QTest::addRow("_EMAIL_MESSAGE") << roundTripOf(message);
}

void TestStreams::records()
{
    QFETCH(Check, check);
    check();
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

    // Plain text, text in a list, and text and bytes inside a variant.
    checkRoundTrip(EMAIL_MESSAGE{text,
                                 text,
                                 text,
                                 {{text, QStringLiteral("text/plain"), bytes}},
                                 {{QStringLiteral("P"), QVariantList{text, bytes}}}});
    checkRoundTrip(ROLETEMPLATE_INFO{text, text, text, true, {text, text}, text});
}

void TestStreams::taskInfo()
{
    TaskInfo link;
    link.uid = 3;
    link.type = QStringLiteral("LINK_ROLE");
    TaskInfo password;
    password.type = QStringLiteral("SET_PASSWORD");
    password.dependsOn = {link.id};

    TaskInfo task;
    task.type = QStringLiteral("CREATE_USER");
    task.dependsOn = {link.id, password.id};
    task.data.insert(QStringLiteral("PT_LOGIN"), QStringLiteral("petrov"));
    for (const char *role : {"first", "second", "third"})
        task.data.insert(QStringLiteral("ROLE"), QString::fromLatin1(role));
    task.data.insert(QStringLiteral("COUNT"), 3);
    task.startMessage = QStringLiteral("Создание пользователя");
    task.errorMessage = QStringLiteral("Не удалось создать пользователя");
    task.subtasks = {link, password};
    task.method = QStringLiteral("onUserCreated");

    // The receiver is a live object of this process: whatever the target held, it reads null.
    const QByteArray bytes = ZRDataStream::pack(task);
    TaskInfo back;
    back.receiver = this;
    READ_BACK(bytes, back);
    QVERIFY(back.receiver.isNull());
    QCOMPARE(back.id, task.id);
    QCOMPARE(back.data.values(QStringLiteral("ROLE")), task.data.values(QStringLiteral("ROLE")));
    QCOMPARE(back.subtasks.value(1).dependsOn, password.dependsOn);
    QCOMPARE(back.errorMessage, task.errorMessage);
    QCOMPARE(back.method, task.method);
    QCOMPARE(ZRDataStream::pack(back).toHex(), bytes.toHex());
}

void TestStreams::byteLayout_data()
{
    // The server reads these bytes field by field: a change of any width or order breaks it.
    QTest::addColumn<QByteArray>("written");
    QTest::addColumn<QByteArray>("expected");

    QTest::addRow("OBJECT_PERMISSION") << ZRDataStream::pack(OBJECT_PERMISSION{1, 2, 12})
                                       << QByteArray::fromHex("00000001 00000002 0000000c");
    // "RL" in UTF-16BE, an empty title, a null parent key, the flag as one byte.
    QTest::addRow("RoleEntry") << ZRDataStream::pack(
        RoleEntry{QStringLiteral("RL"), QStringLiteral(""), QString(), true})
                               << QByteArray::fromHex("00000004 0052004c 00000000 ffffffff 01");
    // The defaults are what the server expects in a template the client built from a row.
    QTest::addRow("default _TEMPLATE_DATA")
        << ZRDataStream::pack(TEMPLATE_DATA())
        << QByteArray::fromHex("00000000 ff 00000000 00000000 ffffffff ffffffff ffff 00 00");
}

void TestStreams::byteLayout()
{
    QFETCH(QByteArray, written);
    QFETCH(QByteArray, expected);
    QCOMPARE(written.toHex(), expected.toHex());
}

QTEST_GUILESS_MAIN(TestStreams)
#include "tst_streams.moc"
