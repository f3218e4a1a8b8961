#pragma once

#include <QString>

namespace zeral::server {

// The slow hash under which the server keeps a password. What it hashes is the client's hash
// (PassHash::encrypt of the password), never the password itself, which the server never sees.
class PasswordHasher
{
public:
    // An Argon2id string with its own salt and parameters; empty if libsodium failed.
    static QString hash(const QString &clientHash);
    static bool verify(const QString &stored, const QString &clientHash);

    PasswordHasher() = delete;
};

} // namespace zeral::server
