#include "taskinfo.h"

#include <shared/wire.h>

namespace zeral {

std::atomic<qint64> TaskInfo::_nextid{0};

TaskInfo::TaskInfo()
    : id(++_nextid)
{}

QDataStream &operator<<(QDataStream &out, const TaskInfo &task)
{
    return out << task.id << task.dependsOn << task.uid << task.type << task.data
               << task.startMessage << task.errorMessage << task.subtasks << task.method;
}

namespace {

// Subtasks nest a level or two in practice. A deeper task is refused as corrupt, so that a
// stream nesting them without end can't run the reader off the end of the stack.
constexpr int MaxSubtaskDepth = 16;

QDataStream &readTask(QDataStream &in, TaskInfo &task, int depth)
{
    if (depth > MaxSubtaskDepth) {
        in.setStatus(QDataStream::ReadCorruptData);
        return in;
    }
    in >> task.id;
    wire::readList(in, task.dependsOn);
    in >> task.uid >> task.type;
    wire::readVariantMultiMap(in, task.data);
    in >> task.startMessage >> task.errorMessage;
    wire::readSequence(in, task.subtasks,
                       [depth](QDataStream &s, TaskInfo &sub) { readTask(s, sub, depth + 1); });
    task.receiver = nullptr;
    return in >> task.method;
}

} // namespace

QDataStream &operator>>(QDataStream &in, TaskInfo &task)
{
    return readTask(in, task, 0);
}

} // namespace zeral
