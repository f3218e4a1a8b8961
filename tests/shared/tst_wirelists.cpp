#include <shared/metatypes.h>
#include <shared/objectlistreader.h>
#include <shared/sessiontablereader.h>
#include <shared/wire.h>

#include <tests/support/builders.h>
#include <tests/support/sequentialsource.h>

#include <QTest>
#include <QTimeZone>

using namespace zeral;

namespace {

QByteArray encode(const QList<ObjectInfo> &objects, bool more = true)
{
    QByteArray bytes = testing::encodeObjectList(objects);
    QDataStream out(&bytes, QIODevice::Append);
    out.setVersion(QDataStream::Qt_5_15);
    out << more;
    return bytes;
}

ObjectInfo person(TYPE_ID uid, const QString &name, const QDateTime &stamp)
{
    ObjectInfo object;
    object.uid = uid;
    object.type = QStringLiteral("OT_USER");
    object.parent = 7;
    object.reserved = 3;
    object.parameters = {{QStringLiteral("PT_NAME"), name},
                         {QStringLiteral("PT_LOGIN"), QStringLiteral("login%1").arg(uid)},
                         {QStringLiteral("PT_EMPTY"), QLatin1String("")},
                         {QStringLiteral("PT_NULL"), QString()}};
    object.timestamp = stamp;
    return object;
}

_INHERIT_DATA link(TYPE_ID child, TYPE_ID parent, const QDateTime &from)
{
    _INHERIT_DATA data;
    data.child = child;
    data.parent = parent;
    data.linkType = INHERIT_WORKER_USER;
    data.reserved = 1;
    data.validFrom = from;
    return data;
}

} // namespace

class TestWireLists : public QObject
{
    Q_OBJECT

private slots:
    void readsWhatQtReads_data();
    void readsWhatQtReads();
    void refusesWhatIsCut();
    void refusesAHostileCount();
    void sharesTextsThatRepeat();
    void readsOtherDevicesThroughTheStream();
    void readsSessionsAsQtDoes();
};

void TestWireLists::readsWhatQtReads_data()
{
    QTest::addColumn<QList<ObjectInfo>>("objects");
    const QDateTime utc(QDate(2026, 11, 24), QTime(18, 30, 1, 250), Qt::UTC);
    const QDateTime local(QDate(2025, 3, 30), QTime(2, 30), Qt::LocalTime);
    const QDateTime offset(QDate(2024, 2, 29), QTime(23, 59, 59), Qt::OffsetFromUTC, 3 * 3600);
    const QDateTime zoned(QDate(2026, 1, 1), QTime(9, 0),
                          QTimeZone(QByteArrayLiteral("Europe/Moscow")));

    QTest::newRow("none") << QList<ObjectInfo>();
    QTest::newRow("people, times in UTC") << QList<ObjectInfo>{
        person(1, QStringLiteral("Иван"), utc), person(2, QStringLiteral("Иван"), utc),
        person(3, QStringLiteral("Zoë 𝄞"), QDateTime())};
    ObjectInfo linked = person(4, QStringLiteral("Пётр"), local);
    linked.parents.insert(INHERIT_WORKER_USER, link(4, 90, offset));
    linked.parents.insert(INHERIT_WORKER_USER, link(4, 91, QDateTime()));
    linked.children.insert(2, link(95, 4, utc));
    QTest::newRow("links, local and offset times") << QList<ObjectInfo>{linked};
    ObjectInfo bare;
    bare.uid = 0xffffffffu;
    QTest::newRow("an empty object, null type") << QList<ObjectInfo>{bare};
    // A time in a named zone is read by QDataStream itself.
    QTest::newRow("a named time zone") << QList<ObjectInfo>{
        person(5, QStringLiteral("Олег"), utc), person(6, QStringLiteral("Олег"), zoned)};
}

void TestWireLists::readsWhatQtReads()
{
    QFETCH(QList<ObjectInfo>, objects);
    const QByteArray bytes = encode(objects);

    QDataStream expectedIn(bytes);
    expectedIn.setVersion(QDataStream::Qt_5_15);
    QList<ObjectInfo> expected;
    wire::readList(expectedIn, expected);
    QCOMPARE(expectedIn.status(), QDataStream::Ok);

    QDataStream in(bytes);
    in.setVersion(QDataStream::Qt_5_15);
    QList<ObjectInfo> read{person(99, QStringLiteral("stale"), QDateTime())};
    wire::ObjectListReader reader;
    reader.read(in, read);
    QCOMPARE(in.status(), QDataStream::Ok);
    QCOMPARE(read, expected);
    QCOMPARE(read, objects);
    for (int i = 0; i < read.size(); ++i)
        QCOMPARE(read.at(i).timestamp.timeSpec(), objects.at(i).timestamp.timeSpec());
    // The stream goes on after the list.
    bool more = false;
    in >> more;
    QVERIFY(more);
    QVERIFY(in.atEnd());
}

void TestWireLists::refusesWhatIsCut()
{
    ObjectInfo linked = person(4, QStringLiteral("Пётр"), QDateTime::currentDateTimeUtc());
    linked.parents.insert(1, link(4, 90, QDateTime::currentDateTimeUtc()));
    const QByteArray whole
        = encode({person(1, QStringLiteral("Анна"), QDateTime()), linked}, false);
    const int listBytes = whole.size() - 1; // the flag after the list
    wire::ObjectListReader reader;
    for (int cut = 0; cut < listBytes; ++cut) {
        QDataStream in(whole.left(cut));
        in.setVersion(QDataStream::Qt_5_15);
        QList<ObjectInfo> read{linked};
        reader.read(in, read);
        QVERIFY2(in.status() != QDataStream::Ok, qPrintable(QString::number(cut)));
        QVERIFY(read.isEmpty());
    }
}

void TestWireLists::refusesAHostileCount()
{
    // A count of objects, then of one object's parameters, far beyond the bytes there are.
    QByteArray objects;
    QDataStream out(&objects, QIODevice::WriteOnly);
    out << quint32(0x7fffffff);
    QByteArray parameters;
    QDataStream params(&parameters, QIODevice::WriteOnly);
    params << quint32(1) << quint32(5) << QStringLiteral("OT_USER") << quint32(0) << quint32(0)
           << quint32(0x7fffffff);
    // An odd number of bytes can't be UTF-16.
    QByteArray odd;
    QDataStream text(&odd, QIODevice::WriteOnly);
    text << quint32(1) << quint32(5) << quint32(3) << quint16(0x41) << quint8(0);

    wire::ObjectListReader reader;
    for (const QByteArray &bytes : {objects, parameters, odd}) {
        QDataStream in(bytes);
        QList<ObjectInfo> read;
        reader.read(in, read);
        QCOMPARE(in.status(), QDataStream::ReadCorruptData);
        QVERIFY(read.isEmpty());
    }
}

void TestWireLists::sharesTextsThatRepeat()
{
    // Names that repeat stay shared; logins, all different, stop being pooled once judged.
    QList<ObjectInfo> objects;
    for (TYPE_ID uid = 1; uid <= 600; ++uid)
        objects.append(
            person(uid, uid % 2 ? QStringLiteral("Иван") : QStringLiteral("Анна"), QDateTime()));
    const QByteArray bytes = encode(objects);
    wire::ObjectListReader reader;
    QDataStream in(bytes);
    QList<ObjectInfo> read;
    reader.read(in, read);
    QCOMPARE(read, objects);

    const auto keyOf = [](const ObjectInfo &object, const char *name) {
        return object.parameters.find(QLatin1String(name)).key().constData();
    };
    const ObjectInfo &first = read.first();
    const ObjectInfo &third = read.at(2);
    const ObjectInfo &last = read.last();
    QCOMPARE(first.type.constData(), last.type.constData());
    QCOMPARE(keyOf(first, "PT_LOGIN"), keyOf(last, "PT_LOGIN"));
    QCOMPARE(first.parameters.value(QStringLiteral("PT_NAME")).constData(),
             third.parameters.value(QStringLiteral("PT_NAME")).constData());
    QCOMPARE(first.parameters.value(QStringLiteral("PT_NAME")).constData(),
             read.at(598).parameters.value(QStringLiteral("PT_NAME")).constData());

    // A second page shares the texts of the first; a cleared reader starts anew.
    QList<ObjectInfo> again;
    QDataStream second(bytes);
    reader.read(second, again);
    QCOMPARE(again.first().type.constData(), first.type.constData());
    reader.clear();
    QDataStream fresh(bytes);
    reader.read(fresh, again);
    QVERIFY(again.first().type.constData() != first.type.constData());
}

void TestWireLists::readsOtherDevicesThroughTheStream()
{
    // A socket-like device is read through QDataStream, with the same result.
    const QList<ObjectInfo> objects{person(1, QStringLiteral("Иван"), QDateTime()),
                                    person(2, QStringLiteral("Анна"), QDateTime())};
    SequentialSource source(encode(objects));
    QDataStream in(&source);
    QList<ObjectInfo> read;
    wire::ObjectListReader().read(in, read);
    QCOMPARE(in.status(), QDataStream::Ok);
    QCOMPARE(read, objects);
    bool more = false;
    in >> more;
    QVERIFY(more);
}

void TestWireLists::readsSessionsAsQtDoes()
{
    // Times in UTC as the server sends them, one in a named zone (read by QDataStream), null
    // ids and texts; then the same bytes cut short at every length.
    QHash<QByteArray, ConnectedUserInfo> sessions;
    const QDateTime utc(QDate(2026, 11, 24), QTime(9, 15, 30, 5), Qt::UTC);
    sessions.insert("a1", {QStringLiteral("ivanov"), QStringLiteral("10.0.0.7:51234"), utc,
                           utc.addSecs(60), QByteArrayLiteral("a1")});
    const QDateTime beforeEpoch(QDate(1969, 12, 31), QTime(23, 59, 59, 999), Qt::UTC);
    sessions.insert("b2",
                    {QStringLiteral("петров"), QString(), QDateTime(), beforeEpoch, QByteArray()});
    QHash<QByteArray, ConnectedUserInfo> zoned = sessions;
    zoned.insert("c3", {QStringLiteral("x"), QLatin1String(""),
                        QDateTime(QDate(2026, 1, 1), QTime(8, 0),
                                  QTimeZone(QByteArrayLiteral("Europe/Moscow"))),
                        utc, QByteArrayLiteral("c3")});
    for (const auto &written : {sessions, zoned}) {
        QByteArray bytes;
        QDataStream out(&bytes, QIODevice::WriteOnly);
        out.setVersion(QDataStream::Qt_5_15);
        out << written << utc;
        QDataStream in(bytes);
        in.setVersion(QDataStream::Qt_5_15);
        QHash<QByteArray, ConnectedUserInfo> read;
        QDateTime after;
        wire::SessionTableReader::read(in, read) >> after;
        QCOMPARE(in.status(), QDataStream::Ok);
        QCOMPARE(read, written);
        QCOMPARE(after, utc);
    }
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << sessions;
    for (int cut = 0; cut < bytes.size(); ++cut) {
        QDataStream in(bytes.left(cut));
        QHash<QByteArray, ConnectedUserInfo> read{{"stale", {}}};
        wire::SessionTableReader::read(in, read);
        QVERIFY2(in.status() != QDataStream::Ok, qPrintable(QString::number(cut)));
        QVERIFY(read.isEmpty());
    }
}

QTEST_GUILESS_MAIN(TestWireLists)
#include "tst_wirelists.moc"
