#include "taskinfo.h"

#include <shared/wire.h>

namespace zeral {

std::atomic<qint64> TaskInfo::_nextid{0};

TaskInfo::TaskInfo() : id(++_nextid) {}

QDataStream &operator<<(QDataStream &out, const TaskInfo &task)
{
    return out << task.id << task.dependsOn << task.uid << task.type << task.data
               << task.startMessage << task.errorMessage << task.subtasks << task.method;
}

QDataStream &operator>>(QDataStream &in, TaskInfo &task)
{
    in >> task.id;
    wire::readList(in, task.dependsOn);
    in >> task.uid >> task.type;
    wire::readVariantMultiMap(in, task.data);
    in >> task.startMessage >> task.errorMessage;
    wire::readList(in, task.subtasks);
    task.receiver = nullptr;
    return in >> task.method;
}

} // namespace zeral
