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
    void objectInfoDefaults();
    void templateDataDefaults();
    void smallRecordDefaults();
    void objectInfoCopyOwnsParameters();
    void zrHashConstValue();
    void taskIdsFollowTheCounter();
    void taskIdsAreUniqueAcrossThreads();
    void taskCopyKeepsId();
    void templatesHashKeepsEveryTemplate();
};

void TestRecords::objectInfoDefaults()
{
    const ObjectInfo object;
    QCOMPARE(object.uid, TYPE_ID(0));
    QVERIFY(object.type.isEmpty());
    QCOMPARE(object.parent, TYPE_ID(0));
    QCOMPARE(object.reserved, quint32(0));
    QVERIFY(object.parameters.isEmpty());
    QVERIFY(!object.timestamp.isValid());
    QVERIFY(object.parents.isEmpty());
    QVERIFY(object.children.isEmpty());
}

void TestRecords::templateDataDefaults()
{
    // The client fills only `format` and `data` when it builds a template from a query row;
    // the server expects these exact values in the other fields.
    const TEMPLATE_DATA data;
    QCOMPARE(data.firstWord, quint32(0));
    QCOMPARE(data.marker, quint8(0xFF));
    QCOMPARE(data.secondWord, quint32(0));
    QCOMPARE(data.format, quint32(0));
    QVERIFY(data.data.isEmpty());
    QVERIFY(data.extra.isEmpty());
    QCOMPARE(data.lastValue, quint16(0xFFFF));
    QCOMPARE(data.firstFlag, quint8(0));
    QCOMPARE(data.secondFlag, quint8(0));
}

void TestRecords::smallRecordDefaults()
{
    const TaskInfo task;
    QCOMPARE(task.uid, TYPE_ID(0));
    QVERIFY(task.type.isEmpty()); // an empty type means "no task"
    QVERIFY(task.data.isEmpty());
    QVERIFY(task.subtasks.isEmpty());
    QVERIFY(task.dependsOn.isEmpty());
    QVERIFY(task.receiver.isNull());

    const INHERIT_DATA link;
    QCOMPARE(link.child, TYPE_ID(0));
    QCOMPARE(link.parent, TYPE_ID(0));
    QCOMPARE(link.linkType, quint32(0));
    QVERIFY(!link.validFrom.isValid());
    QVERIFY(!link.validTo.isValid());

    const OBJECT_PERMISSION permission;
    QCOMPARE(permission, (OBJECT_PERMISSION{0, 0, 0}));

    QVERIFY(!RoleEntry().group);
    QVERIFY(!ROLETEMPLATE_INFO().custom);
    QVERIFY(ROLETEMPLATE_INFO().roles.isEmpty());
    QVERIFY(!ConnectedUserInfo().connectDateTime.isValid());
}

void TestRecords::objectInfoCopyOwnsParameters()
{
    ObjectInfo source;
    source.uid = 12;
    source.type = QStringLiteral("OT_USER");
    source.parameters.insert(QStringLiteral("PT_LOGIN"), QStringLiteral("ivanov"));
    source.parameters.insert(QStringLiteral("PT_NAME"), QStringLiteral("Иван"));

    const ObjectInfo copy(source);
    QCOMPARE(copy, source);
    QVERIFY(copy.parameters.isDetached());
    QVERIFY(source.parameters.isDetached());
    QVERIFY(&*copy.parameters.constFind(QStringLiteral("PT_LOGIN"))
            != &*source.parameters.constFind(QStringLiteral("PT_LOGIN")));

    // A copy of a copy owns its hash as well.
    const ObjectInfo second(copy);
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

    const ObjectInfo &hit = constStore.constValue(7);
    QCOMPARE(&hit, &*constStore.constFind(7));
    QCOMPARE(hit.type, QStringLiteral("OT_WORKER"));

    const ObjectInfo &miss = constStore.constValue(8);
    QCOMPARE(miss.uid, TYPE_ID(0));
    QVERIFY(miss.type.isEmpty());
    QCOMPARE(&constStore.constValue(9), &miss);
    QVERIFY(!constStore.contains(8)); // a miss doesn't insert anything
    QCOMPARE(constStore.size(), 1);
}

void TestRecords::taskIdsFollowTheCounter()
{
    const TaskInfo first;
    const TaskInfo second;
    QVERIFY(first.id != second.id);
    QCOMPARE(second.id, first.id + 1);
    QCOMPARE(TaskInfo::_nextid.load(), second.id);

    const TaskInfo third;
    QCOMPARE(third.id, second.id + 1);
}

void TestRecords::taskIdsAreUniqueAcrossThreads()
{
    // Plugins create tasks from worker threads too; the counter must never hand out a number
    // twice.
    constexpr int Threads = 4;
    constexpr int TasksPerThread = 5000;
    std::vector<QList<qint64>> ids(Threads);
    std::vector<std::unique_ptr<QThread>> threads;
    for (int t = 0; t < Threads; ++t) {
        QList<qint64> *out = &ids[size_t(t)];
        threads.emplace_back(QThread::create([out] {
            for (int i = 0; i < TasksPerThread; ++i)
                out->append(TaskInfo().id);
        }));
        threads.back()->start();
    }
    QSet<qint64> all;
    for (int t = 0; t < Threads; ++t) {
        QVERIFY(threads[size_t(t)]->wait(30000));
        for (const qint64 id : ids[size_t(t)])
            all.insert(id);
    }
    QCOMPARE(all.size(), Threads * TasksPerThread);
}

void TestRecords::taskCopyKeepsId()
{
    TaskInfo source;
    source.type = QStringLiteral("CREATE_USER");
    const qint64 counter = TaskInfo::_nextid.load();

    const TaskInfo copy(source);
    QCOMPARE(copy.id, source.id);
    QCOMPARE(TaskInfo::_nextid.load(), counter); // copying draws no number

    TaskInfo target;
    QVERIFY(target.id != source.id);
    target = source;
    QCOMPARE(target.id, source.id);
    QCOMPARE(target.type, source.type);
}

void TestRecords::templatesHashKeepsEveryTemplate()
{
    TEMPLATE_DATA left;
    left.format = 1;
    left.data = QByteArrayLiteral("left index");
    TEMPLATE_DATA right;
    right.format = 1;
    right.data = QByteArrayLiteral("right index");

    TEMPLATES_HASH templates;
    templates.insert(5, left);
    templates.insert(5, right);
    templates.insert(6, left);

    const QList<TEMPLATE_DATA> ofUser = templates.values(5);
    QCOMPARE(ofUser.size(), 2);
    QVERIFY(ofUser.contains(left));
    QVERIFY(ofUser.contains(right));
    QCOMPARE(templates.size(), 3);
}

QTEST_GUILESS_MAIN(TestRecords)
#include "tst_records.moc"
