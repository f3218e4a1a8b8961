#pragma once

#include <shared/types.h>

#include <QList>
#include <QMultiMap>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariant>

#include <atomic>

class QDataStream;

namespace zeral {

// One unit of server work for a client's task queue.
struct TaskInfo
{
    qint64 id;
    QList<qint64> dependsOn; // tasks whose failure drops this one too
    TYPE_ID uid = 0;         // 0 for a task that makes a new object
    QString type;            // the task kind; empty means no task
    QMultiMap<QString, QVariant> data;
    QString startMessage;
    QString errorMessage;
    QList<TaskInfo> subtasks; // run before this one, in order
    QPointer<QObject> receiver;
    QString method; // invokable method of the receiver taking one zeral::TYPE_ID

    // Every default-constructed task takes the next number, even one that means "no task";
    // a copy keeps the number, so a copy is the same task.
    TaskInfo();
    TaskInfo(const TaskInfo &other) = default;
    TaskInfo(TaskInfo &&other) = default;
    TaskInfo &operator=(const TaskInfo &other) = default;
    TaskInfo &operator=(TaskInfo &&other) = default;
    ~TaskInfo() = default;

    // The process-wide counter of task numbers; it lives in the shared library so that the
    // host and every plugin draw from one sequence.
    static std::atomic<qint64> _nextid;
};

// The receiver is a live object of one process and doesn't travel; everything else does.
QDataStream &operator<<(QDataStream &out, const TaskInfo &task);
QDataStream &operator>>(QDataStream &in, TaskInfo &task);

} // namespace zeral
