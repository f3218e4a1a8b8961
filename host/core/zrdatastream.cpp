#include "zrdatastream.h"

ZRDataStream::ZRDataStream(const QByteArray &data)
    : QDataStream(data)
{
    applySettings(*this);
}

ZRDataStream::ZRDataStream(QByteArray *data, QIODevice::OpenMode mode)
    : QDataStream(data, mode)
{
    applySettings(*this);
}

ZRDataStream::ZRDataStream(QIODevice *device)
    : QDataStream(device)
{
    applySettings(*this);
}

void ZRDataStream::applySettings(QDataStream &stream)
{
    stream.setVersion(StreamVersion);
    stream.setByteOrder(StreamByteOrder);
}
