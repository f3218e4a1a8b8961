#pragma once

#include <host/core/command.h>

#include <QByteArray>
#include <QString>

class QIODevice;

// Frames on the wire: a quint32 byte length, then that many bytes holding one Command.
// Reading relies on QDataStream transactions, so a frame that arrives in pieces is simply
// read again once the rest is there.
class FrameCodec
{
public:
    enum class ReadResult {
        Frame,      // one command was read
        Incomplete, // wait for more bytes; nothing was consumed
        Error,      // the stream can't be trusted any more: close the connection
    };

    static QByteArray encode(const Command &command);
    // A frame's payload, without the length.
    static QByteArray encodePayload(const Command &command);
    static bool decodePayload(const QByteArray &payload, Command *command, QString *error);

    // Reads the next frame from `device`. On Error, `error` says why.
    static ReadResult read(QIODevice *device, Command *command, QString *error);
};
