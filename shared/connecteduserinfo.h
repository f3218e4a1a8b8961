#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

class QDataStream;

namespace zeral {

// One client session at the server.
struct ConnectedUserInfo
{
    QString user; // login
    QString ipPort;
    QDateTime connectDateTime;
    QDateTime lastActionTime;
    QByteArray sessionId;

    bool operator==(const ConnectedUserInfo &other) const;
    bool operator!=(const ConnectedUserInfo &other) const { return !(*this == other); }
};

QDataStream &operator<<(QDataStream &out, const ConnectedUserInfo &info);
QDataStream &operator>>(QDataStream &in, ConnectedUserInfo &info);

} // namespace zeral
