#pragma once

#include <shared/taskinfo.h>

#include <QHash>
#include <QList>
#include <QString>

#include <algorithm>

// The line of server writes of one screen. Tasks run one at a time, in arrival order; the head
// of `tasks` is the running one and stays there until its result has come and the owner calls
// processed(). A task with subtasks runs them first, each as a step of its own, and itself last.
// Only one level of subtasks is honoured.
//
// The owner fills `handlers` and drives the queue from its result handlers: it takes current(),
// calls processed(), and on failure removeTasks() with the task it took.
template<typename Owner>
class TaskQueue
{
public:
    // Sends a task to the server; true when it went out and a result handler will run.
    using Processor = bool (Owner::*)(const zeral::TaskInfo &);
    using Handlers = QHash<QString, Processor>;

    explicit TaskQueue(Owner *queueOwner)
        : owner(queueOwner)
    {}

    // Starts the step at the head and returns it, or a new empty task (one id used up) when
    // nothing remains. A step that can't start, because its kind is unknown or its processor
    // refused it, drops its whole top-level task with what is tied to it, and the next one
    // is tried at once.
    zeral::TaskInfo processNext()
    {
        while (!tasks.isEmpty()) {
            // A copy: the processor may touch the queue.
            const zeral::TaskInfo candidate = headStep();
            const auto handler = handlers.constFind(candidate.type);
            if (handler != handlers.constEnd() && *handler && (owner->*(*handler))(candidate))
                return candidate;
            if (tasks.isEmpty())
                break;
            const zeral::TaskInfo dropped = tasks.takeFirst();
            removeTasks(dropped);
        }
        return zeral::TaskInfo();
    }

    // Takes the finished step off the queue: the head's first subtask if it has any, otherwise
    // the head itself.
    void processed()
    {
        if (tasks.isEmpty())
            return;
        zeral::TaskInfo head = tasks.takeFirst();
        if (!head.subtasks.isEmpty()) {
            head.subtasks.removeFirst();
            tasks.prepend(head);
        }
    }

    // A copy of the step being run; on an empty queue a new empty task, which uses up an id.
    zeral::TaskInfo current() const
    {
        if (tasks.isEmpty())
            return zeral::TaskInfo();
        return headStep();
    }

    // Drops every queued task on the failed task's object, and every one that depends on it.
    // Tasks of uid 0 all count as one object, which is what stops a chain of new objects.
    void removeTasks(const zeral::TaskInfo &failed)
    {
        const auto tied = [&failed](const zeral::TaskInfo &task) {
            return task.uid == failed.uid || task.dependsOn.contains(failed.id);
        };
        tasks.erase(std::remove_if(tasks.begin(), tasks.end(), tied), tasks.end());
    }

    Owner *owner;
    QList<zeral::TaskInfo> tasks;
    Handlers handlers;
    // Tested by the owner before it starts a task; nothing sets it yet.
    bool paused = false;

private:
    Q_DISABLE_COPY(TaskQueue)

    const zeral::TaskInfo &headStep() const
    {
        const zeral::TaskInfo &head = tasks.first();
        return head.subtasks.isEmpty() ? head : head.subtasks.first();
    }
};
