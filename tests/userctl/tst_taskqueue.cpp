// What the users screen can't show of its queue: subtasks below the first level, a processor
// that refuses its step, and the task numbers the queue uses up. The rest is tested through
// the screen (tst_userctlqueue).
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
              const QList<TaskInfo> &subtasks = {})
{
    TaskInfo made;
    made.startMessage = label;
    made.type = type;
    made.uid = uid;
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
    // All tasks are queued first; then each step of `script` starts the next step ('n') or
    // ends the running one well ('d').
    void runsScript_data()
    {
        QTest::addColumn<QList<TaskInfo>>("incoming");
        QTest::addColumn<QString>("script");
        QTest::addColumn<QStringList>("runs");
        QTest::addColumn<QStringList>("left");

        const TaskInfo nested = task("S1", "save", 11, {task("X", "save", 12)});
        QTest::addRow("one level of subtasks only")
            << QList<TaskInfo>{task("P", "save", 10, {nested, task("S2", "save", 13)})} << "ndndndn"
            << QStringList{"S1", "S2", "P"} << QStringList{};
        TaskInfo parent = task("P", "save", 10, {task("S1", "save", 11), task("S2", "refuse", 12)});
        TaskInfo dependent = task("Q", "save", 13);
        dependent.dependsOn << parent.id;
        QTest::addRow("refused subtask drops its parent")
            << QList<TaskInfo>{parent, dependent, task("R", "save", 14)} << "ndn"
            << QStringList{"S1", "S2", "R"} << QStringList{"R"};
    }
    void runsScript()
    {
        QFETCH(QList<TaskInfo>, incoming);
        QFETCH(QString, script);
        Owner owner;
        TaskQueue<Owner> queue(&owner);
        queue.handlers = {{"save", &Owner::send}, {"refuse", &Owner::refuse}};
        queue.tasks = incoming;
        for (const QChar step : qAsConst(script)) {
            if (step == QLatin1Char('n'))
                queue.processNext();
            else
                queue.processed();
        }
        QTEST(owner.runs, "runs");
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

        const TaskInfo queued = task("A", "save", 1, {task("S", "save", 2)});
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
