#include <shared/metatypes.h>
#include <shared/zrhash.h>

#include <QSet>
#include <QTest>
#include <QThread>

#include <memory>
#include <vector>

using namespace zeral;

class TestRecords : public QObject
{
    Q_OBJECT

private slots:
    void objectInfoCopyOwnsParameters();
    void zrHashConstValue();
    void taskIds();
    void taskIdsAreUniqueAcrossThreads();
    void templatesHashKeepsEveryTemplate();
};

void TestRecords::objectInfoCopyOwnsParameters()
{
    ObjectInfo source;
    source.uid = 12;
    source.parameters.insert(QStringLiteral("PT_LOGIN"), QStringLiteral("ivanov"));

    const ObjectInfo copy(source);
    QCOMPARE(copy, source);
    QVERIFY(copy.parameters.isDetached());
    QVERIFY(source.parameters.isDetached());
    const ObjectInfo second(copy); // a copy of a copy owns its hash as well
    QVERIFY(second.parameters.isDetached());
    QVERIFY(copy.parameters.isDetached());
}

void TestRecords::zrHashConstValue()
{
    ZRHash<TYPE_ID, ObjectInfo> store;
    ObjectInfo object;
    object.uid = 7;
    object.type = QStringLiteral("OT_WORKER");
    store.insert(object.uid, object);
    const ZRHash<TYPE_ID, ObjectInfo> &constStore = store;

    QCOMPARE(&constStore.constValue(7), &*constStore.constFind(7));
    const ObjectInfo &miss = constStore.constValue(8);
    QCOMPARE(miss, ObjectInfo());
    QCOMPARE(&constStore.constValue(9), &miss); // every miss shares one object
    QCOMPARE(constStore.size(), 1);             // and inserts nothing
}

void TestRecords::taskIds()
{
    const TaskInfo first;
    const TaskInfo second;
    QCOMPARE(second.id, first.id + 1);
    QCOMPARE(TaskInfo::_nextid.load(), second.id);

    // A copy is the same task and draws no number.
    const TaskInfo copy(first);
    QCOMPARE(copy.id, first.id);
    TaskInfo target;
    QCOMPARE(target.id, second.id + 1);
    target = first;
    QCOMPARE(target.id, first.id);
    QCOMPARE(TaskInfo::_nextid.load(), second.id + 1);
}

void TestRecords::taskIdsAreUniqueAcrossThreads()
{
    // Plugins create tasks from worker threads too.
    constexpr int Threads = 4;
    constexpr int TasksPerThread = 5000;
    std::vector<QList<qint64>> ids(Threads);
    std::vector<std::unique_ptr<QThread>> threads;
    for (QList<qint64> &out : ids) {
        threads.emplace_back(QThread::create([&out] {
            for (int i = 0; i < TasksPerThread; ++i)
                out.append(TaskInfo().id);
        }));
        threads.back()->start();
    }
    QSet<qint64> all;
    for (size_t t = 0; t < threads.size(); ++t) {
        QVERIFY(threads[t]->wait(30000));
        for (const qint64 id : ids[t])
            all.insert(id);
    }
    QCOMPARE(all.size(), Threads * TasksPerThread);
}

void TestRecords::templatesHashKeepsEveryTemplate()
{
    TEMPLATE_DATA left;
    left.data = QByteArrayLiteral("left index");
    TEMPLATE_DATA right;
    right.data = QByteArrayLiteral("right index");

    TEMPLATES_HASH templates;
    templates.insert(5, left);
    templates.insert(5, right);
    templates.insert(6, left);

    const QList<TEMPLATE_DATA> ofUser = templates.values(5);
    QCOMPARE(ofUser.size(), 2);
    QVERIFY(ofUser.contains(left));
    QVERIFY(ofUser.contains(right));
}

QTEST_GUILESS_MAIN(TestRecords)
#include "tst_records.moc"
