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

// As read(), and then one more text that later clients add at the end and earlier ones
// don't send: `present` says whether it came; absent, `text` is left as it is.
template<class... Values>
bool readWithTrailingText(const Command &command, QString *text, bool *present, Values &...values)
{
    ZRDataStream in(command.data);
    (readValue(in, values), ...);
    *present = in.status() == QDataStream::Ok && !in.atEnd();
    if (*present)
        in >> *text;
    return in.status() == QDataStream::Ok && in.atEnd();
}

} // namespace zeral::server::payload
