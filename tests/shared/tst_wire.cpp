#include <host/core/zrdatastream.h>
#include <shared/metatypes.h>
#include <shared/wire.h>

#include <QBuffer>
#include <QRect>
#include <QTest>
#include <QUrl>

#include <cstring>
#include <functional>

using namespace zeral;

// Found by QCOMPARE through argument lookup, for readable failures.
static char *toString(QDataStream::Status status)
{
    switch (status) {
    case QDataStream::Ok:
        return qstrdup("Ok");
    case QDataStream::ReadPastEnd:
        return qstrdup("ReadPastEnd");
    case QDataStream::ReadCorruptData:
        return qstrdup("ReadCorruptData");
    case QDataStream::WriteFailed:
        return qstrdup("WriteFailed");
    }
    return qstrdup("?");
}

namespace {

constexpr quint32 HugeCount = 0x7FFFFFFF;
constexpr QDataStream::Status Ok = QDataStream::Ok;
constexpr QDataStream::Status PastEnd = QDataStream::ReadPastEnd;
constexpr QDataStream::Status Corrupt = QDataStream::ReadCorruptData;

QByteArray bytesOf(const std::function<void(QDataStream &)> &write)
{
    QByteArray bytes;
    ZRDataStream out(&bytes, QIODevice::WriteOnly);
    write(out);
    return bytes;
}

QByteArray variantBytes(const QVariant &value)
{
    return bytesOf([&](QDataStream &s) { s << value; });
}

QVariant nestedLists(int levels)
{
    QVariant value = 42;
    for (int i = 0; i < levels; ++i)
        value = QVariantList{QStringLiteral("level"), value};
    return value;
}

QVariant nestedMaps(int levels)
{
    QVariant value = QStringLiteral("leaf");
    for (int i = 0; i < levels; ++i)
        value = QVariantMap{{QStringLiteral("k"), value}};
    return value;
}

// A list header repeated without end: the nesting a hostile peer can send in a few bytes each.
QByteArray endlessListNesting(int levels)
{
    return bytesOf([levels](QDataStream &s) {
        for (int i = 0; i < levels; ++i)
            s << quint32(QMetaType::QVariantList) << qint8(0) << quint32(1);
        s << QVariant(1);
    });
}

// A device that can't tell how much is left in it, like a socket.
class SequentialSource : public QIODevice
{
public:
    explicit SequentialSource(const QByteArray &data)
        : m_data(data)
    {
        open(ReadOnly);
    }
    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override
    {
        return m_data.size() - m_pos + QIODevice::bytesAvailable();
    }

protected:
    qint64 readData(char *out, qint64 max) override
    {
        const qint64 n = qMin(max, m_data.size() - m_pos);
        std::memcpy(out, m_data.constData() + m_pos, size_t(n));
        m_pos += n;
        return n;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray m_data;
    qint64 m_pos = 0;
};

void writeTaskHead(QDataStream &s)
{
    s << qint64(1) << QList<qint64>() << TYPE_ID(0) << QStringLiteral("CREATE_USER");
}

} // namespace

Q_DECLARE_METATYPE(QDataStream::Status)

class TestWire : public QObject
{
    Q_OBJECT

private slots:
    void readList_data();
    void readList();
    void readVariant_data();
    void readVariant();
    void hostileRecords_data();
    void hostileRecords();
    void subtaskNesting_data();
    void subtaskNesting();
};

void TestWire::readList_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("sequential");
    QTest::addColumn<QDataStream::Status>("status");
    QTest::addColumn<QStringList>("expected");

    const QStringList abc{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")};
    const QByteArray three = bytesOf([&](QDataStream &s) { s << abc; });
    const QByteArray huge = bytesOf([](QDataStream &s) { s << HugeCount; });
    const QByteArray truncated = bytesOf(
        [](QDataStream &s) { s << quint32(3) << QStringLiteral("a") << QStringLiteral("b"); });

    for (const bool sequential : {false, true}) {
        const char *device = sequential ? "sequential" : "buffer";
        QTest::addRow("%s: three strings", device) << three << sequential << Ok << abc;
        QTest::addRow("%s: count 0x7FFFFFFF", device)
            << huge << sequential << Corrupt << QStringList();
        QTest::addRow("%s: count 0xFFFFFFFF", device)
            << bytesOf([](QDataStream &s) { s << quint32(0xFFFFFFFF); }) << sequential << Corrupt
            << QStringList();
        QTest::addRow("%s: count 3, two strings", device)
            << truncated << sequential << PastEnd << QStringList();
        QTest::addRow("%s: count cut short", device)
            << QByteArray("\0\0", 2) << sequential << PastEnd << QStringList();
    }
    QTest::addRow("buffer: empty list")
        << bytesOf([](QDataStream &s) { s << QStringList(); }) << false << Ok << QStringList();
    // Nine elements can't fit in eight bytes, whatever they are.
    QTest::addRow("buffer: count above the bytes left") << bytesOf([](QDataStream &s) {
        s << quint32(9) << QStringLiteral("") << QStringLiteral("");
    }) << false << Corrupt << QStringList();
}

void TestWire::readList()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, sequential);
    QFETCH(QDataStream::Status, status);
    QFETCH(QStringList, expected);

    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    SequentialSource source(bytes);
    QIODevice *device = sequential ? static_cast<QIODevice *>(&source) : &buffer;
    ZRDataStream in(device);

    QList<QString> list{QStringLiteral("stale")};
    wire::readList(in, list);
    QCOMPARE(in.status(), status);
    QCOMPARE(QStringList(list), expected);
    if (status == Corrupt) {
        // Refused on the count alone: not one element was read.
        QCOMPARE(device->bytesAvailable(), qint64(bytes.size() - 4));
    }
}

void TestWire::readVariant_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QDataStream::Status>("status");
    QTest::addColumn<QVariant>("expected");

    const QList<QVariant> accepted{
        true,
        -7,
        7u,
        Q_INT64_C(1) << 40,
        Q_UINT64_C(1) << 63,
        0.125,
        1.5f,
        QChar(0x0416),
        QStringLiteral("Пароль"),
        QString(),
        QByteArray("\0\xff", 2),
        QDate(2024, 2, 29),
        QTime(23, 59, 59, 999),
        QDateTime(QDate(2024, 2, 29), QTime(1, 2, 3), Qt::UTC),
        QVariant(),
        QVariant(QVariant::Double),
        QStringList{QStringLiteral("RL_USER_SHOW"), QString()},
        QVariantHash{{QStringLiteral("n"), 1}, {QStringLiteral("s"), QStringLiteral("x")}},
    };
    for (const QVariant &value : accepted) {
        QTest::addRow("%s%s", value.isValid() ? value.typeName() : "invalid",
                      value.isNull() ? " (null)" : "")
            << variantBytes(value) << Ok << value;
    }
    QTest::addRow("lists 8 deep") << variantBytes(nestedLists(8)) << Ok << nestedLists(8);
    QTest::addRow("maps 8 deep") << variantBytes(nestedMaps(8)) << Ok << nestedMaps(8);

    QTest::addRow("lists 9 deep") << variantBytes(nestedLists(9)) << Corrupt << QVariant();
    QTest::addRow("maps 9 deep") << variantBytes(nestedMaps(9)) << Corrupt << QVariant();
    QTest::addRow("lists 100000 deep") << endlessListNesting(100000) << Corrupt << QVariant();
    QTest::addRow("registered record")
        << variantBytes(QVariant::fromValue(OBJECT_PERMISSION{1, 2, 3})) << Corrupt << QVariant();
    QTest::addRow("record inside a list")
        << variantBytes(QVariantList{1, QVariant::fromValue(OBJECT_PERMISSION{1, 2, 3})}) << Corrupt
        << QVariant();
    QTest::addRow("user type id") << bytesOf([](QDataStream &s) {
        s << quint32(QMetaType::User) << qint8(0) << QByteArray("Evil") << quint32(0);
    }) << Corrupt << QVariant();
    QTest::addRow("unknown type id")
        << bytesOf([](QDataStream &s) { s << quint32(0x7FFF) << qint8(0) << quint32(0); })
        << Corrupt << QVariant();
    QTest::addRow("url") << variantBytes(QUrl(QStringLiteral("http://example.org/"))) << Corrupt
                         << QVariant();
    QTest::addRow("rect") << variantBytes(QRect(1, 2, 3, 4)) << Corrupt << QVariant();
    QTest::addRow("list of 0x7FFFFFFF") << bytesOf([](QDataStream &s) {
        s << quint32(QMetaType::QVariantList) << qint8(0) << HugeCount;
    }) << Corrupt << QVariant();
    QTest::addRow("string list of 0x7FFFFFFF") << bytesOf([](QDataStream &s) {
        s << quint32(QMetaType::QStringList) << qint8(0) << HugeCount;
    }) << Corrupt << QVariant();
    QTest::addRow("map of 0x7FFFFFFF") << bytesOf([](QDataStream &s) {
        s << quint32(QMetaType::QVariantMap) << qint8(0) << HugeCount;
    }) << Corrupt << QVariant();
    QTest::addRow("int cut short")
        << bytesOf([](QDataStream &s) { s << quint32(QMetaType::Int) << qint8(0) << quint16(1); })
        << PastEnd << QVariant();
    QTest::addRow("nothing") << QByteArray() << PastEnd << QVariant();
}

void TestWire::readVariant()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QDataStream::Status, status);
    QFETCH(QVariant, expected);

    ZRDataStream in(bytes);
    QVariant value = QStringLiteral("stale");
    wire::readVariant(in, value);
    QCOMPARE(in.status(), status);
    if (status != Ok) {
        QVERIFY2(!value.isValid(), value.typeName());
        return;
    }
    QVERIFY(in.atEnd());
    QCOMPARE(value.userType(), expected.userType());
    QCOMPARE(value.isNull(), expected.isNull());
    QCOMPARE(value, expected);
}

void TestWire::hostileRecords_data()
{
    QTest::addColumn<QByteArray>("record");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QDataStream::Status>("status");

    const auto templateHead = [](QDataStream &s) {
        s << QStringLiteral("RT_X") << QStringLiteral("X") << QString() << true;
    };
    QTest::addRow("role template: 0x7FFFFFFF roles")
        << QByteArray("roletemplate") << bytesOf([&](QDataStream &s) {
               templateHead(s);
               s << HugeCount;
           })
        << Corrupt;
    QTest::addRow("role template: 3 roles, 2 sent")
        << QByteArray("roletemplate") << bytesOf([&](QDataStream &s) {
               templateHead(s);
               s << quint32(3) << QStringLiteral("RL_A") << QStringLiteral("RL_B");
           })
        << PastEnd;

    const auto messageHead = [](QDataStream &s) {
        s << QStringLiteral("a@example.org") << QStringLiteral("S") << QString();
    };
    const auto messageWith = [&](const QVariant &parameter) {
        return bytesOf([&](QDataStream &s) {
            messageHead(s);
            s << QList<EMAIL_ATTACHMENT>()
              << QVariantHash{{QStringLiteral("LOCALE"), QStringLiteral("ru")},
                              {QStringLiteral("P"), parameter}};
        });
    };
    QTest::addRow("e-mail: 0x7FFFFFFF attachments")
        << QByteArray("email") << bytesOf([&](QDataStream &s) {
               messageHead(s);
               s << HugeCount;
           })
        << Corrupt;
    QTest::addRow("e-mail: 0x7FFFFFFF parameters")
        << QByteArray("email") << bytesOf([&](QDataStream &s) {
               messageHead(s);
               s << QList<EMAIL_ATTACHMENT>() << HugeCount;
           })
        << Corrupt;
    QTest::addRow("e-mail: record as parameter")
        << QByteArray("email") << messageWith(QVariant::fromValue(OBJECT_PERMISSION{1, 2, 3}))
        << Corrupt;
    QTest::addRow("e-mail: parameter 20 lists deep")
        << QByteArray("email") << messageWith(nestedLists(20)) << Corrupt;

    QTest::addRow("task: 0x7FFFFFFF dependencies")
        << QByteArray("task") << bytesOf([](QDataStream &s) { s << qint64(1) << HugeCount; })
        << Corrupt;
    QTest::addRow("task: data of unknown type")
        << QByteArray("task") << bytesOf([](QDataStream &s) {
               writeTaskHead(s);
               s << quint32(1) << QStringLiteral("K") << quint32(0x7FFF) << qint8(0) << quint32(0);
           })
        << Corrupt;
    QTest::addRow("task: 0x7FFFFFFF subtasks") << QByteArray("task") << bytesOf([](QDataStream &s) {
        writeTaskHead(s);
        s << QMultiMap<QString, QVariant>() << QString() << QString() << HugeCount;
    }) << Corrupt;
    // Each level costs the sender a few dozen bytes; the reader must not follow it down.
    QTest::addRow("task: subtasks 100000 deep")
        << QByteArray("task") << bytesOf([](QDataStream &s) {
               for (int i = 0; i < 100000; ++i) {
                   writeTaskHead(s);
                   s << QMultiMap<QString, QVariant>() << QString() << QString() << quint32(1);
               }
           })
        << Corrupt;
}

void TestWire::hostileRecords()
{
    QFETCH(QByteArray, record);
    QFETCH(QByteArray, bytes);
    QFETCH(QDataStream::Status, status);

    ZRDataStream in(bytes);
    if (record == "roletemplate") {
        ROLETEMPLATE_INFO info;
        info.roles = {QStringLiteral("stale")};
        in >> info;
        QVERIFY(info.roles.isEmpty());
    } else if (record == "email") {
        EMAIL_MESSAGE message;
        message.attachments.append({QStringLiteral("stale"), QString(), QByteArray()});
        message.parameters.insert(QStringLiteral("stale"), 1);
        in >> message;
        QVERIFY(message.attachments.isEmpty());
        QVERIFY(message.parameters.isEmpty());
    } else if (record == "task") {
        TaskInfo task;
        task.dependsOn = {1};
        task.data.insert(QStringLiteral("stale"), 1);
        task.subtasks = {TaskInfo()};
        in >> task;
        QVERIFY(task.dependsOn.isEmpty());
        QVERIFY(task.data.isEmpty());
        QVERIFY(task.subtasks.isEmpty());
    } else {
        QFAIL("unknown record");
    }
    QCOMPARE(in.status(), status);
}

void TestWire::subtaskNesting_data()
{
    QTest::addColumn<int>("levels");
    QTest::addColumn<QDataStream::Status>("status");

    QTest::addRow("one level") << 1 << Ok;
    QTest::addRow("16 levels") << 16 << Ok;
    QTest::addRow("17 levels") << 17 << Corrupt;
}

void TestWire::subtaskNesting()
{
    QFETCH(int, levels);
    QFETCH(QDataStream::Status, status);

    TaskInfo task;
    task.type = QStringLiteral("LEAF");
    for (int i = 0; i < levels; ++i) {
        TaskInfo outer;
        outer.type = QStringLiteral("LEVEL");
        outer.subtasks = {task};
        task = outer;
    }
    const QByteArray bytes = bytesOf([&](QDataStream &s) { s << task; });

    ZRDataStream in(bytes);
    TaskInfo back;
    in >> back;
    QCOMPARE(in.status(), status);
    int depth = 0;
    for (const TaskInfo *t = &back; !t->subtasks.isEmpty(); t = &t->subtasks.first())
        ++depth;
    QCOMPARE(depth, status == Ok ? levels : 0);
}

QTEST_GUILESS_MAIN(TestWire)
#include "tst_wire.moc"
