#include <server/engine/storage/database.h>
#include <server/engine/storage/objectstore.h>
#include <server/engine/storage/seeder.h>
#include <shared/datasets.h>
#include <tests/server/testdatabase.h>

#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

using namespace zeral;
using namespace zeral::server;

// A page of a dataset answers the same objects as reading them one by one, whatever the
// page size and wherever a page ends.
class TestObjectStorePages : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void pageEqualsRead_data();
    void pageEqualsRead();
    void pageOfNothing();

private:
    // Links of one type to several objects, a validity on some of them: the order of equal
    // link types and the time stamps must survive a page as they survive a read.
    bool addCrossLinks(const QList<TYPE_ID> &users, const QList<TYPE_ID> &employees);

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
    QVERIFY(m_database.commit());
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

QTEST_GUILESS_MAIN(TestObjectStorePages)
#include "tst_objectstorepages.moc"
