#pragma once

#include <host/core/command.h>

#include <QVector>

#include <functional>

// The state of a request sent in several parts (ZRPluginInterface::sendSplitQuery).
struct SubCommandsInfo
{
    unsigned int firstKey = 0; // the callback key of part 0; the parts' keys follow it
    int outstanding = 0;       // parts not answered yet
    QVector<Command> answers;  // by part
    std::function<void(Command &)> callback;
};
