#include "framecodec.h"

#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>

#include <QIODevice>

QByteArray FrameCodec::encodePayload(const Command &command)
{
    return ZRDataStream::pack(command);
}

QByteArray FrameCodec::encode(const Command &command)
{
    const QByteArray payload = encodePayload(command);
    return ZRDataStream::pack(quint32(payload.size())) + payload;
}

bool FrameCodec::decodePayload(const QByteArray &payload, Command *command, QString *error)
{
    ZRDataStream in(payload);
    Command decoded;
    in >> decoded;
    if (in.status() != QDataStream::Ok) {
        *error = QStringLiteral("undecodable frame of %1 bytes").arg(payload.size());
        return false;
    }
    if (!in.atEnd()) {
        *error = QStringLiteral("frame of %1 bytes has trailing data").arg(payload.size());
        return false;
    }
    *command = std::move(decoded);
    return true;
}

FrameCodec::ReadResult FrameCodec::read(QIODevice *device, Command *command, QString *error)
{
    QDataStream in(device);
    ZRDataStream::applySettings(in);
    in.startTransaction();
    quint32 length = 0;
    in >> length;
    if (in.status() != QDataStream::Ok) {
        in.rollbackTransaction();
        return ReadResult::Incomplete;
    }
    if (length > zeral::proto::MaxFrameSize) {
        in.abortTransaction();
        *error = QStringLiteral("frame of %1 bytes exceeds the limit of %2")
                     .arg(length)
                     .arg(zeral::proto::MaxFrameSize);
        return ReadResult::Error;
    }
    // Room for the payload is made only once all of it has arrived.
    if (device->bytesAvailable() < qint64(length)) {
        in.rollbackTransaction();
        return ReadResult::Incomplete;
    }
    QByteArray payload(int(length), Qt::Uninitialized);
    if (in.readRawData(payload.data(), int(length)) != int(length)) {
        in.rollbackTransaction();
        return ReadResult::Incomplete;
    }
    if (!in.commitTransaction())
        return ReadResult::Incomplete;
    return decodePayload(payload, command, error) ? ReadResult::Frame : ReadResult::Error;
}
