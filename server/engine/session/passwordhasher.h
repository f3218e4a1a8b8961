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
    // Does the work of verify() against a hash that belongs to nobody and returns false: a
    // login that doesn't exist or has no password costs the same time as a wrong password,
    // so answer times don't tell which logins exist.
    static bool verifyWithoutAccount(const QString &clientHash);

    PasswordHasher() = delete;
};

} // namespace zeral::server
