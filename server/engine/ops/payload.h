#pragma once

#include <host/core/command.h>
#include <host/core/zrdatastream.h>
#include <shared/wire.h>

#include <QList>

// Reading a request's payload: every value in order, through the readers that don't trust
// counts from the wire, and nothing may be left over.
namespace zeral::server::payload {

template<class T>
void readValue(QDataStream &in, T &value)
{
    in >> value;
}

template<class T>
void readValue(QDataStream &in, QList<T> &value)
{
    zeral::wire::readList(in, value);
}

template<class... Values>
bool read(const Command &command, Values &...values)
{
    ZRDataStream in(command.data);
    (readValue(in, values), ...);
    return in.status() == QDataStream::Ok && in.atEnd();
}

} // namespace zeral::server::payload
