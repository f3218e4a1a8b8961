#pragma once

#include <QCryptographicHash>
#include <QString>

// The client's form of a password: the lower-case hex digest of its UTF-8 text. The server
// never stores this as it comes, only a salted slow hash of it.
class PassHash
{
public:
    static QString encrypt(const QString &password, QCryptographicHash::Algorithm algorithm);

    PassHash() = delete;
};
