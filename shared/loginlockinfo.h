#pragma once

#include <QDateTime>
#include <QString>

class QDataStream;

namespace zeral {

// A login that the server has locked for a while at one peer address, after failed
// attempts from there.
struct LoginLockInfo
{
    QString login;
    QString address;
    qint32 failures = 0;
    QDateTime lockedUntil; // UTC

    bool operator==(const LoginLockInfo &other) const;
    bool operator!=(const LoginLockInfo &other) const { return !(*this == other); }
};

QDataStream &operator<<(QDataStream &out, const LoginLockInfo &info);
QDataStream &operator>>(QDataStream &in, LoginLockInfo &info);

} // namespace zeral
