#pragma once

#include <QByteArray>
#include <QMetaType>
#include <QString>

class QDataStream;

// The message exchanged with the server and between parts of the studio: a request, its
// answer (same id), or a push from the server (id 0).
struct Command
{
    quint64 id = 0;
    qint32 type = 0;
    QString name;
    qint32 status = 0; // 1 is success in an answer
    QByteArray sessionId;
    QByteArray data; // the payload, written through ZRDataStream

    bool isOk() const;
    // The text of a failed answer: its data holds one QString. Empty if it can't be read.
    QString errorText() const;

    // A request of the named kind, without payload yet.
    static Command named(const QString &name, const QByteArray &sessionId = {});
    // An answer to `request` with the given status and payload.
    static Command answer(const Command &request, qint32 status, const QByteArray &data = {});
    // A failed answer whose payload is the text for a person.
    static Command failure(const Command &request, qint32 status, const QString &text);
};
Q_DECLARE_METATYPE(Command)

QDataStream &operator<<(QDataStream &out, const Command &command);
QDataStream &operator>>(QDataStream &in, Command &command);
