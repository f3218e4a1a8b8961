#include <server/engine/storage/database.h>
#include <server/engine/storage/objectstore.h>
#include <server/engine/storage/seeder.h>
#include <shared/datasets.h>
#include <shared/objectlistreader.h>
#include <tests/server/testdatabase.h>

#include <QSet>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QFileInfo>
#include <QtTest>

using namespace zeral;
using namespace zeral::server;

// A page of a dataset answers the same objects as reading them one by one, whatever the
// page size and wherever a page ends; the bytes of a page read back with QDataStream's own
// reader as with the studio's, time zones of the stamps included.
class TestObjectStorePages : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void pageEqualsRead_data();
    void pageEqualsRead();
    void pageOfNothing();
    void moreOnlyWhileObjectsRemain();
    void encodedPageReadsAsRead_data();
    void encodedPageReadsAsRead();
    void bytesOfOneParameterAsTheWriterWrites();

private:
    // Links of one type to several objects, a validity on some of them: the order of equal
    // link types and the time stamps must survive a page as they survive a read.
    bool addCrossLinks(const QList<TYPE_ID> &users, const QList<TYPE_ID> &employees);
    // Objects whose stamps the server never writes itself (an offset, no zone, empty, NULL,
    // unreadable, without milliseconds, past midnight) and texts of every width.
    bool addOddObjects();
    bool exec(const QString &sql);
    // Every object of a dataset through encodePage(), read back by `reader`.
    QList<ObjectInfo> encodedDataset(const QString &dataset, int limit, bool plainQt);
    // The objects as read() gives them, one by one.
    QList<ObjectInfo> readOneByOne(const QList<ObjectInfo> &objects);

    QList<TYPE_ID> m_oddUids;

    QTemporaryDir m_dir;
    Database m_database;
    std::unique_ptr<ObjectStore> m_store;
};

void TestObjectStorePages::initTestCase()
{
    ZR_SKIP_WITHOUT_TEST_DATABASE();
    QVERIFY(m_dir.isValid());
    QCOMPARE(m_database.open(harness::newTestDatabase(m_dir.path(), QStringLiteral("pages.db"))),
             QString());
    m_store = std::make_unique<ObjectStore>(m_database.connection());
    Seeder seeder(m_database, *m_store);
    QCOMPARE(seeder.seedBase(), QString());
    QCOMPARE(seeder.seedDemo(40, 25), QString());
    // The demo is moved out of the write-ahead log, where every read would look for its pages.
    if (!m_database.isPostgres())
        QCOMPARE(QFileInfo(m_database.path() + QLatin1String("-wal")).size(), qint64(0));

    QList<ObjectInfo> users;
    QList<ObjectInfo> employees;
    bool more = false;
    QVERIFY(m_store->page(QLatin1String(USER_DATANAME), 0, 1000, &users, &more));
    QVERIFY(m_store->page(QLatin1String(SUBJECT_DATANAME), 0, 1000, &employees, &more));
    QVERIFY(users.size() >= 10 && employees.size() >= 10);
    QList<TYPE_ID> userUids;
    QList<TYPE_ID> employeeUids;
    for (const ObjectInfo &user : users)
        userUids.append(user.uid);
    for (const ObjectInfo &employee : employees)
        employeeUids.append(employee.uid);
    QVERIFY(m_database.begin());
    QVERIFY(addCrossLinks(userUids, employeeUids));
    QVERIFY(addOddObjects());
    QVERIFY(m_database.commit());
}

bool TestObjectStorePages::exec(const QString &sql)
{
    QSqlQuery query(m_database.connection());
    if (query.exec(sql))
        return true;
    qWarning("%s: %s", qPrintable(sql), qPrintable(query.lastError().text()));
    return false;
}

bool TestObjectStorePages::addOddObjects()
{
    const QStringList stamps{
        QStringLiteral("'2024-03-01T08:00:00.250Z'"),      QStringLiteral("'2024-03-01T11:00:00.000+03:00'"),
        QStringLiteral("'2024-03-01T11:00:00.000'"),       QStringLiteral("''"),
        QStringLiteral("NULL"),                            QStringLiteral("'not a time'"),
        QStringLiteral("'2024-03-01T08:00:00Z'"),          QStringLiteral("'2024-02-30T08:00:00.000Z'"),
        QStringLiteral("'2024-03-01T24:00:00.000Z'"),      QStringLiteral("'1999-12-31T23:59:59.999Z'"),
    };
    for (int i = 0; i < stamps.size(); ++i) {
        ObjectInfo object;
        object.type = i == 3 ? QLatin1String("") : QStringLiteral("OT_ODD_%1").arg(i);
        object.parent = TYPE_ID(i);
        object.reserved = quint32(i * 3);
        // One parameter at most on the first objects, so that their bytes are fixed.
        if (i % 3 == 1)
            object.parameters.insert(QStringLiteral("PT_NAME"), QStringLiteral("Ёлка 𝄞 № €"));
        if (i >= 5) {
            object.parameters.insert(QStringLiteral("PT_EMPTY"), QLatin1String(""));
            object.parameters.insert(QStringLiteral("ПАРАМЕТР"), QStringLiteral("значение"));
            object.parameters.insert(QStringLiteral("PT_LONG"), QString(300, QLatin1Char('x')));
        }
        const TYPE_ID uid = m_store->insert(QLatin1String(REPORT_DATANAME), object);
        if (uid == 0)
            return false;
        m_oddUids.append(uid);
        if (!exec(QStringLiteral("UPDATE objects SET changed_at = %1 WHERE uid = %2")
                      .arg(stamps.at(i))
                      .arg(uid)))
            return false;
    }
    // Links of several types on one object, one way and the other, with stamps of other
    // forms: the types come in descending order on the wire, each type's links in theirs.
    for (int i = 0; i < 4; ++i) {
        const TYPE_ID from = m_oddUids.at(0);
        const TYPE_ID to = m_oddUids.at(1 + i);
        if (!exec(QStringLiteral("INSERT INTO links (child, parent, link_type, reserved, valid_from,"
                                 " valid_to) VALUES (%1, %2, %3, %4, %5, %6)")
                      .arg(from)
                      .arg(to)
                      .arg(i % 2 ? 90 : 5)
                      .arg(i)
                      .arg(stamps.at(i + 1), stamps.at(9 - i)))
            || !exec(QStringLiteral("INSERT INTO links (child, parent, link_type) VALUES (%1, %2, %3)")
                         .arg(to)
                         .arg(from)
                         .arg(i % 2 ? 3 : 40)))
            return false;
    }
    return true;
}

QList<ObjectInfo> TestObjectStorePages::encodedDataset(const QString &dataset, int limit,
                                                       bool plainQt)
{
    QList<ObjectInfo> all;
    wire::ObjectListReader reader;
    TYPE_ID after = 0;
    for (bool more = true; more;) {
        QByteArray bytes;
        if (!m_store->encodePage(dataset, after, limit, &bytes, &more)) {
            qWarning("no page: %s", qPrintable(m_store->lastError()));
            return {};
        }
        QDataStream in(bytes);
        in.setVersion(QDataStream::Qt_5_15);
        QList<ObjectInfo> page;
        if (plainQt)
            in >> page;
        else
            reader.read(in, page);
        if (in.status() != QDataStream::Ok || !in.atEnd() || page.size() > limit) {
            qWarning("a page of %s doesn't read back whole", qPrintable(dataset));
            return {};
        }
        if (page.isEmpty())
            break;
        after = page.constLast().uid;
        all += page;
    }
    return all;
}

QList<ObjectInfo> TestObjectStorePages::readOneByOne(const QList<ObjectInfo> &objects)
{
    QList<ObjectInfo> read;
    for (const ObjectInfo &object : objects) {
        ObjectInfo stored;
        if (!m_store->read(object.uid, &stored))
            qWarning("object %u not read", object.uid);
        read.append(stored);
    }
    return read;
}

bool TestObjectStorePages::addCrossLinks(const QList<TYPE_ID> &users,
                                         const QList<TYPE_ID> &employees)
{
    const QDateTime from
        = QDateTime::fromString(QStringLiteral("2024-03-01T08:00:00.250Z"), Qt::ISODateWithMs);
    for (int i = 0; i < 6; ++i) {
        for (int j = 0; j < 3; ++j) {
            _INHERIT_DATA link;
            link.child = employees.at(i);
            link.parent = users.at(users.size() - 1 - j);
            link.linkType = 77;
            link.reserved = quint32(i * 10 + j);
            if (j == 1) {
                link.validFrom = from;
                link.validTo = from.addDays(i + 1);
            }
            if (!m_store->insertLink(link))
                return false;
        }
    }
    return true;
}

void TestObjectStorePages::pageEqualsRead_data()
{
    QTest::addColumn<QString>("dataset");
    QTest::addColumn<int>("limit");
    for (const char *dataset : ALL_DATANAMES) {
        // One object a page, a size that ends pages in the middle, and all in one page.
        for (int limit : {1, 7, 100000})
            QTest::addRow("%s by %d", dataset, limit) << QString::fromLatin1(dataset) << limit;
    }
}

void TestObjectStorePages::pageEqualsRead()
{
    QFETCH(QString, dataset);
    QFETCH(int, limit);

    QList<ObjectInfo> all;
    QSet<TYPE_ID> seen;
    TYPE_ID after = 0;
    int pages = 0;
    for (bool more = true; more;) {
        QList<ObjectInfo> page;
        QVERIFY2(m_store->page(dataset, after, limit, &page, &more),
                 qPrintable(m_store->lastError()));
        QVERIFY(page.size() <= limit);
        QVERIFY(!more || page.size() == limit);
        if (page.isEmpty())
            break;
        ++pages;
        for (const ObjectInfo &object : page) {
            QVERIFY2(object.uid > after, "the uids of the pages ascend");
            after = object.uid;
            QVERIFY(!seen.contains(object.uid));
            seen.insert(object.uid);
            all.append(object);
        }
    }
    QVERIFY2(!all.isEmpty(), "every dataset of the demo has objects");
    if (limit < all.size())
        QVERIFY(pages > 1);

    int linked = 0;
    for (const ObjectInfo &object : all) {
        ObjectInfo read;
        QString readDataset;
        QVERIFY(m_store->read(object.uid, &read, &readDataset));
        QCOMPARE(readDataset, dataset);
        QCOMPARE(object.type, read.type);
        QCOMPARE(object.parent, read.parent);
        QCOMPARE(object.reserved, read.reserved);
        QCOMPARE(object.timestamp, read.timestamp);
        QCOMPARE(object.parameters, read.parameters);
        QCOMPARE(object.parents.values(), read.parents.values());
        QCOMPARE(object.parents.keys(), read.parents.keys());
        QCOMPARE(object.children.values(), read.children.values());
        QCOMPARE(object.children.keys(), read.children.keys());
        QVERIFY(object == read);
        if (!object.parents.isEmpty() || !object.children.isEmpty())
            ++linked;
    }
    if (dataset == QLatin1String(USER_DATANAME) || dataset == QLatin1String(SUBJECT_DATANAME))
        QVERIFY2(linked > 0, "the links are part of what is compared");
}

void TestObjectStorePages::pageOfNothing()
{
    QList<ObjectInfo> page;
    bool more = true;
    QVERIFY(m_store->page(QStringLiteral("no such dataset"), 0, 10, &page, &more));
    QVERIFY(page.isEmpty());
    QVERIFY(!more);
    QVERIFY(m_store->page(QLatin1String(USER_DATANAME), 0xfffffff0u, 10, &page, &more));
    QVERIFY(page.isEmpty());
    QVERIFY(!more);
}

void TestObjectStorePages::moreOnlyWhileObjectsRemain()
{
    const QString dataset = QLatin1String(USER_DATANAME);
    QList<ObjectInfo> all;
    bool more = true;
    QVERIFY(m_store->page(dataset, 0, 100000, &all, &more));
    QVERIFY(!more);
    QVERIFY(all.size() > 2);

    // All in a page of exactly their number: nothing more.
    QList<ObjectInfo> page;
    QVERIFY(m_store->page(dataset, 0, all.size(), &page, &more));
    QCOMPARE(page.size(), all.size());
    QVERIFY(!more);
    // One short: more, and the last one alone after it.
    QVERIFY(m_store->page(dataset, 0, all.size() - 1, &page, &more));
    QCOMPARE(page.size(), all.size() - 1);
    QVERIFY(more);
    QVERIFY(m_store->page(dataset, page.constLast().uid, all.size(), &page, &more));
    QCOMPARE(page.size(), 1);
    QCOMPARE(page.first().uid, all.constLast().uid);
    QVERIFY(!more);
    // After an object in the middle: the rest, from the next one on.
    const TYPE_ID middle = all.at(all.size() / 2).uid;
    QVERIFY(m_store->page(dataset, middle, 100000, &page, &more));
    QCOMPARE(page.size(), all.size() - all.size() / 2 - 1);
    QCOMPARE(page.first().uid, all.at(all.size() / 2 + 1).uid);
}

void TestObjectStorePages::encodedPageReadsAsRead_data()
{
    QTest::addColumn<QString>("dataset");
    QTest::addColumn<bool>("plainQt");
    for (const char *dataset : {USER_DATANAME, SUBJECT_DATANAME, REPORT_DATANAME}) {
        QTest::addRow("%s, QDataStream", dataset) << QString::fromLatin1(dataset) << true;
        QTest::addRow("%s, the studio's reader", dataset) << QString::fromLatin1(dataset) << false;
    }
}

void TestObjectStorePages::encodedPageReadsAsRead()
{
    QFETCH(QString, dataset);
    QFETCH(bool, plainQt);
    const QList<ObjectInfo> paged = encodedDataset(dataset, 7, plainQt);
    QVERIFY(paged.size() > 7);
    const QList<ObjectInfo> read = readOneByOne(paged);
    int offsets = 0;
    for (int i = 0; i < paged.size(); ++i) {
        const ObjectInfo &object = paged.at(i);
        const ObjectInfo &stored = read.at(i);
        QCOMPARE(object, stored);
        QCOMPARE(object.type.isNull(), stored.type.isNull());
        // QDateTime's == compares instants: the zone's kind and offset are compared apart.
        QList<QPair<QDateTime, QDateTime>> stamps{{object.timestamp, stored.timestamp}};
        for (const auto &pair : {qMakePair(object.parents, stored.parents),
                                 qMakePair(object.children, stored.children)}) {
            QCOMPARE(pair.first.keys(), pair.second.keys());
            QCOMPARE(pair.first.values(), pair.second.values());
            for (int l = 0; l < pair.first.size(); ++l) {
                stamps.append({pair.first.values().at(l).validFrom,
                               pair.second.values().at(l).validFrom});
                stamps.append({pair.first.values().at(l).validTo,
                               pair.second.values().at(l).validTo});
            }
        }
        for (const auto &stamp : stamps) {
            QCOMPARE(stamp.first.isValid(), stamp.second.isValid());
            QCOMPARE(stamp.first.timeSpec(), stamp.second.timeSpec());
            QCOMPARE(stamp.first.offsetFromUtc(), stamp.second.offsetFromUtc());
            QCOMPARE(stamp.first.date(), stamp.second.date());
            QCOMPARE(stamp.first.time(), stamp.second.time());
            if (stamp.first.timeSpec() == Qt::OffsetFromUTC)
                ++offsets;
        }
        for (auto it = object.parameters.cbegin(); it != object.parameters.cend(); ++it)
            QCOMPARE(it.value().isNull(), stored.parameters.value(it.key()).isNull());
    }
    if (dataset == QLatin1String(REPORT_DATANAME)) {
        QVERIFY2(offsets >= 3, "stamps with an offset are part of what is compared");
        QVERIFY(std::any_of(paged.cbegin(), paged.cend(),
                            [](const ObjectInfo &o) { return o.parents.uniqueKeys().size() > 1; }));
        QVERIFY(std::any_of(paged.cbegin(), paged.cend(),
                            [](const ObjectInfo &o) { return o.children.uniqueKeys().size() > 1; }));
    }
}

void TestObjectStorePages::bytesOfOneParameterAsTheWriterWrites()
{
    // With one parameter at most, the order of a hash's pairs plays no part: a page of one
    // object is byte for byte what QDataStream writes for the object as read.
    QVERIFY(m_oddUids.size() > 5);
    for (const TYPE_ID uid : m_oddUids) {
        ObjectInfo stored;
        QVERIFY(m_store->read(uid, &stored));
        if (stored.parameters.size() > 1)
            continue;
        QByteArray page;
        bool more = false;
        QVERIFY(m_store->encodePage(QLatin1String(REPORT_DATANAME), uid - 1, 1, &page, &more));
        QByteArray expected;
        QDataStream out(&expected, QIODevice::WriteOnly);
        out.setVersion(QDataStream::Qt_5_15);
        out << QList<ObjectInfo>{stored};
        QVERIFY2(page == expected, qPrintable(QStringLiteral("object %1:\n%2\n%3")
                                                  .arg(uid)
                                                  .arg(QString::fromLatin1(page.toHex()),
                                                       QString::fromLatin1(expected.toHex()))));
        QCOMPARE(more, uid != m_oddUids.constLast());
    }
}

QTEST_GUILESS_MAIN(TestObjectStorePages)
#include "tst_objectstorepages.moc"
