#include <host/core/zrdatastream.h>
#include <shared/metatypes.h>
#include <shared/wire.h>

#include <tests/support/sequentialsource.h>

#include <QBuffer>
#include <QTest>


using namespace zeral;

// Found by QCOMPARE through argument lookup, for readable failures.
static char *toString(QDataStream::Status status)
{
    static const char *const names[] = {"Ok", "ReadPastEnd", "ReadCorruptData", "WriteFailed"};
    return qstrdup(names[status]);
}

namespace {

constexpr quint32 HugeCount = 0x7FFFFFFF;
constexpr QDataStream::Status Ok = QDataStream::Ok;
constexpr QDataStream::Status PastEnd = QDataStream::ReadPastEnd;
constexpr QDataStream::Status Corrupt = QDataStream::ReadCorruptData;

// The head of a streamed QVariant holding a list or map of `count` entries.
QByteArray containerHead(int type, quint32 count)
{
    return ZRDataStream::pack(quint32(type), qint8(0), count);
}

QVariant nested(int levels, bool maps)
{
    QVariant value = 42;
    for (int i = 0; i < levels; ++i)
        value = maps ? QVariant(QVariantMap{{QStringLiteral("k"), value}})
                     : QVariant(QVariantList{QStringLiteral("level"), value});
    return value;
}

QByteArray nestedTask(int levels)
{
    TaskInfo task;
    for (int i = 0; i < levels; ++i) {
        TaskInfo outer;
        outer.subtasks = {task};
        task = outer;
    }
    return ZRDataStream::pack(task);
}


// Readers under test, each handing back what it made of the bytes.
using Reader = QVariant (*)(QDataStream &);

QVariant readStrings(QDataStream &in)
{
    QList<QString> list{QStringLiteral("stale")};
    wire::readList(in, list);
    return QStringList(list);
}

QVariant readVariant(QDataStream &in)
{
    QVariant value = QStringLiteral("stale");
    wire::readVariant(in, value);
    return value;
}

template<class T>
QVariant readRecord(QDataStream &in)
{
    T value;
    in >> value;
    return {};
}

} // namespace

Q_DECLARE_METATYPE(QDataStream::Status)
Q_DECLARE_METATYPE(Reader)

class TestWire : public QObject
{
    Q_OBJECT

private slots:
    void read_data();
    void read();
};

void TestWire::read_data()
{
    QTest::addColumn<Reader>("read");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("sequential");
    QTest::addColumn<QDataStream::Status>("status");
    QTest::addColumn<QVariant>("expected");
    QTest::addColumn<int>("unread"); // bytes left in the device after a refusal; -1: any

    const auto row = [](const QByteArray &name, Reader read, const QByteArray &bytes,
                        QDataStream::Status status, const QVariant &expected = {},
                        bool sequential = false, int unread = -1) {
        QTest::newRow(name.constData())
            << read << bytes << sequential << status << expected << unread;
    };
    const QVariant record = QVariant::fromValue(OBJECT_PERMISSION{1, 2, 3});

    // A hostile count is refused on the count alone, before a single element is read.
    const QStringList ab{QStringLiteral("a"), QStringLiteral("b")};
    const QByteArray huge = ZRDataStream::pack(HugeCount, QStringLiteral("a"), QStringLiteral("b"));
    for (const bool sequential : {false, true}) {
        const QByteArray device = sequential ? "sequential: " : "buffer: ";
        row(device + "two strings", &readStrings, ZRDataStream::pack(ab), Ok, ab, sequential);
        row(device + "count 0x7FFFFFFF", &readStrings, huge, Corrupt, QStringList(), sequential,
            huge.size() - 4);
    }
    // Nine elements can't fit in the eight bytes left, whatever they are.
    row("buffer: count above the bytes left", &readStrings,
        ZRDataStream::pack(quint32(9), QStringLiteral(""), QStringLiteral("")), Corrupt,
        QStringList(), false, 8);
    row("buffer: count 3, two strings", &readStrings,
        ZRDataStream::pack(quint32(3), ab.at(0), ab.at(1)), PastEnd, QStringList());

    const QList<QVariant> accepted{-7,
                                   QVariant(QVariant::Int),
                                   QVariant(QVariant::Double),
                                   QStringLiteral("Пароль"),
                                   QString(),
                                   QByteArray("\0\xff", 2),
                                   QVariant(),
                                   QStringList{QStringLiteral("RL_USER_SHOW"), QString()},
                                   QVariantHash{{QStringLiteral("n"), 1}},
                                   nested(8, false),
                                   nested(8, true)};
    for (const QVariant &value : accepted) {
        row(QByteArray("variant: ") + (value.isValid() ? value.typeName() : "invalid")
                + (value.isNull() ? " (null)" : ""),
            &readVariant, ZRDataStream::pack(value), Ok, value);
    }
    // A refused variant stays invalid, also a list or map read halfway.
    row("variant: lists 9 deep", &readVariant, ZRDataStream::pack(nested(9, false)), Corrupt);
    row("variant: maps 9 deep", &readVariant, ZRDataStream::pack(nested(9, true)), Corrupt);
    row("variant: lists 100000 deep", &readVariant,
        containerHead(QMetaType::QVariantList, 1).repeated(100000)
            + ZRDataStream::pack(QVariant(1)),
        Corrupt);
    row("variant: registered record", &readVariant, ZRDataStream::pack(record), Corrupt);
    row("variant: record inside a list", &readVariant,
        ZRDataStream::pack(QVariant(QVariantList{1, record})), Corrupt);
    row("variant: list of 0x7FFFFFFF", &readVariant,
        containerHead(QMetaType::QVariantList, HugeCount), Corrupt);
    row("variant: map of 0x7FFFFFFF", &readVariant,
        containerHead(QMetaType::QVariantMap, HugeCount), Corrupt);
    row("variant: int cut short", &readVariant,
        ZRDataStream::pack(quint32(QMetaType::Int), qint8(0), quint16(1)), PastEnd);

    // Every record reads its lists and variants with the readers above, never with Qt's own.
    const Reader roleTemplate = &readRecord<ROLETEMPLATE_INFO>;
    const Reader mail = &readRecord<EMAIL_MESSAGE>;
    const Reader task = &readRecord<TaskInfo>;
    const QByteArray mailHead
        = ZRDataStream::pack(QStringLiteral("a@b.org"), QStringLiteral("S"), QString());
    const QByteArray taskHead
        = ZRDataStream::pack(qint64(1), QList<qint64>(), TYPE_ID(0), QString());
    using Data = QMultiMap<QString, QVariant>;
    row("role template: 0x7FFFFFFF roles", roleTemplate,
        ZRDataStream::pack(QStringLiteral("RT_X"), QString(), QString(), true, HugeCount), Corrupt);
    row("e-mail: 0x7FFFFFFF attachments", mail, mailHead + ZRDataStream::pack(HugeCount), Corrupt);
    row("e-mail: record as parameter", mail,
        mailHead
            + ZRDataStream::pack(QList<EMAIL_ATTACHMENT>(),
                                 QVariantHash{{QStringLiteral("P"), record}}),
        Corrupt);
    row("task: 0x7FFFFFFF dependencies", task, ZRDataStream::pack(qint64(1), HugeCount), Corrupt);
    row("task: record in data", task,
        taskHead + ZRDataStream::pack(Data{{QStringLiteral("K"), record}}), Corrupt);
    row("task: 0x7FFFFFFF subtasks", task,
        taskHead + ZRDataStream::pack(Data(), QString(), QString(), HugeCount), Corrupt);
    row("task: subtasks 16 deep", task, nestedTask(16), Ok);
    row("task: subtasks 17 deep", task, nestedTask(17), Corrupt);
}

void TestWire::read()
{
    QFETCH(Reader, read);
    QFETCH(QByteArray, bytes);
    QFETCH(bool, sequential);
    QFETCH(QDataStream::Status, status);
    QFETCH(QVariant, expected);
    QFETCH(int, unread);

    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    SequentialSource source;
    source.data = bytes;
    source.open(QIODevice::ReadOnly);
    ZRDataStream in(sequential ? static_cast<QIODevice *>(&source) : &buffer);

    const QVariant value = read(in);
    QCOMPARE(in.status(), status);
    QCOMPARE(value.userType(), expected.userType());
    QCOMPARE(value.isNull(), expected.isNull()); // a null int is not a zero
    QCOMPARE(value, expected);
    if (status == Ok)
        QVERIFY(in.atEnd());
    if (unread >= 0)
        QCOMPARE(in.device()->bytesAvailable(), qint64(unread));
}

QTEST_GUILESS_MAIN(TestWire)
#include "tst_wire.moc"
