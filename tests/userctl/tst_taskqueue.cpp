#include <shared/metatypes.h>
#include <src/taskqueue.h>

#include <QtTest>

using zeral::TaskInfo;

namespace {

// Stands in for the screen that owns the queue: its processors only record what they got.
class Owner
{
public:
    bool send(const TaskInfo &task)
    {
        runs << task.startMessage;
        return true;
    }
    bool refuse(const TaskInfo &task)
    {
        runs << task.startMessage;
        return false;
    }
    QStringList runs;
};

TaskInfo task(const QString &label, const QString &type, zeral::TYPE_ID uid,
              const QList<TaskInfo> &dependsOn = {}, const QList<TaskInfo> &subtasks = {})
{
    TaskInfo made;
    made.startMessage = label;
    made.type = type;
    made.uid = uid;
    for (const TaskInfo &other : dependsOn)
        made.dependsOn << other.id;
    made.subtasks = subtasks;
    return made;
}

QStringList labels(const QList<TaskInfo> &tasks)
{
    QStringList result;
    for (const TaskInfo &queued : tasks)
        result << queued.startMessage;
    return result;
}

} // namespace

class TestTaskQueue : public QObject
{
    Q_OBJECT

private slots:
    // A script drives the queue as the owner does: 'a' appends the row's next task, 'n' starts
    // the next step, 'd' ends the running step well, 'f' ends it with a failure.
    void runsScript_data()
    {
        QTest::addColumn<QList<TaskInfo>>("incoming");
        QTest::addColumn<QString>("script");
        QTest::addColumn<QStringList>("runs");
        QTest::addColumn<QStringList>("started");
        QTest::addColumn<QStringList>("left");

        QTest::addRow("arrival order")
            << QList<TaskInfo>{task("A", "save", 5), task("B", "save", 6), task("C", "save", 5)}
            << "aaandndndn" << QStringList{"A", "B", "C"} << QStringList{"A", "B", "C", ""}
            << QStringList{};
        QTest::addRow("empty queue")
            << QList<TaskInfo>{} << "dfn" << QStringList{} << QStringList{""} << QStringList{};

        const TaskInfo unknown = task("U", "no_such_kind", 5);
        QTest::addRow("unknown kind dropped with its followers")
            << QList<TaskInfo>{unknown, task("B", "save", 5), task("C", "save", 6, {unknown}),
                               task("D", "save", 7)}
            << "aaaan" << QStringList{"D"} << QStringList{"D"} << QStringList{"D"};

        const TaskInfo saved = task("A", "save", 5);
        const TaskInfo other = task("C", "save", 6);
        QTest::addRow("failure drops same object and dependents only")
            << QList<TaskInfo>{saved, task("B", "prescribe", 5), other,
                               task("D", "save", 7, {saved}), task("E", "save", 8, {other})}
            << "aaaaanfn" << QStringList{"A", "C"} << QStringList{"A", "C"}
            << QStringList{"C", "E"};
        QTest::addRow("new objects count as one")
            << QList<TaskInfo>{task("A", "create", 0), task("B", "save", 0), task("C", "save", 4)}
            << "aaanfn" << QStringList{"A", "C"} << QStringList{"A", "C"} << QStringList{"C"};

        const TaskInfo nested = task("S1", "save", 11, {}, {task("X", "save", 12)});
        QTest::addRow("subtasks first, one level only")
            << QList<TaskInfo>{task("P", "save", 10, {}, {nested, task("S2", "save", 13)})}
            << "andndndn" << QStringList{"S1", "S2", "P"} << QStringList{"S1", "S2", "P", ""}
            << QStringList{};
        QTest::addRow("failed subtask keeps its parent")
            << QList<TaskInfo>{task("P", "save", 10, {},
                                    {task("S1", "save", 11), task("S2", "save", 12)})}
            << "anfndndn" << QStringList{"S1", "S2", "P"} << QStringList{"S1", "S2", "P", ""}
            << QStringList{};
        QTest::addRow("failed subtask on the parent's object")
            << QList<TaskInfo>{task("P", "save", 10, {},
                                    {task("S1", "save", 10), task("S2", "save", 12)}),
                               task("Q", "save", 13)}
            << "aanfn" << QStringList{"S1", "Q"} << QStringList{"S1", "Q"} << QStringList{"Q"};

        const TaskInfo parent
            = task("P", "save", 10, {}, {task("S1", "save", 11), task("S2", "refuse", 12)});
        QTest::addRow("refused subtask drops its parent")
            << QList<TaskInfo>{parent, task("Q", "save", 13, {parent}), task("R", "save", 14)}
            << "aaandn" << QStringList{"S1", "S2", "R"} << QStringList{"S1", "R"}
            << QStringList{"R"};
        QTest::addRow("queued behind a task with subtasks")
            << QList<TaskInfo>{task("P", "save", 10, {},
                                    {task("S1", "save", 11), task("S2", "save", 12)}),
                               task("Q", "save", 13)}
            << "anadndndndn" << QStringList{"S1", "S2", "P", "Q"}
            << QStringList{"S1", "S2", "P", "Q", ""} << QStringList{};
    }

    void runsScript()
    {
        QFETCH(QList<TaskInfo>, incoming);
        QFETCH(QString, script);
        Owner owner;
        TaskQueue<Owner> queue(&owner);
        queue.handlers = {{"save", &Owner::send},
                          {"create", &Owner::send},
                          {"prescribe", &Owner::send},
                          {"refuse", &Owner::refuse}};
        QStringList started;
        for (const QChar step : qAsConst(script)) {
            if (step == 'a') {
                queue.tasks << incoming.takeFirst();
            } else if (step == 'n') {
                const TaskInfo next = queue.processNext();
                if (!queue.tasks.isEmpty())
                    QCOMPARE(next.id, queue.current().id);
                started << next.startMessage;
            } else {
                const TaskInfo finished = queue.current();
                queue.processed();
                if (step == 'f')
                    queue.removeTasks(finished);
            }
        }
        QTEST(owner.runs, "runs");
        QTEST(started, "started");
        QTEST(labels(queue.tasks), "left");
    }

    // Only an empty answer makes a task of its own, and each one takes a number.
    void usesUpIdsOnlyForEmptyAnswers()
    {
        Owner owner;
        TaskQueue<Owner> queue(&owner);
        queue.handlers.insert("save", &Owner::send);
        const qint64 first = TaskInfo::_nextid + 1;
        QCOMPARE(queue.current().id, first);
        QCOMPARE(queue.processNext().id, first + 1);

        const TaskInfo queued = task("A", "save", 1, {}, {task("S", "save", 2)});
        queue.tasks << queued;
        const qint64 numbered = TaskInfo::_nextid;
        QCOMPARE(queue.processNext().id, queued.subtasks.first().id);
        queue.processed();
        QCOMPARE(queue.current().id, queued.id);
        queue.removeTasks(queue.current());
        QCOMPARE(TaskInfo::_nextid.load(), numbered);
        QVERIFY(queue.current().type.isEmpty());
        QCOMPARE(TaskInfo::_nextid.load(), numbered + 1);
    }
};

QTEST_GUILESS_MAIN(TestTaskQueue)
#include "tst_taskqueue.moc"
