#include "passwordhasher.h"

#include <server/engine/serverlogging.h>

#include <sodium.h>

namespace zeral::server {

namespace {

// About 7 ms and 8 MiB per hash on one core: a thousand accounts are made in seconds. The
// input is already an MD5 of the password, so what these limits buy is the cost of guessing
// passwords against a stolen database file; see docs/server.md.
constexpr unsigned long long OpsLimit = 3;
constexpr size_t MemLimit = 8u * 1024u * 1024u;

bool ready()
{
    static const bool initialised = sodium_init() >= 0;
    return initialised;
}

} // namespace

QString PasswordHasher::hash(const QString &clientHash)
{
    if (!ready())
        return {};
    const QByteArray input = clientHash.toUtf8();
    char out[crypto_pwhash_STRBYTES];
    if (crypto_pwhash_str(out, input.constData(), quint64(input.size()), OpsLimit, MemLimit) != 0) {
        qCWarning(lcServerSession) << "password hashing failed: out of memory";
        return {};
    }
    return QString::fromLatin1(out);
}

bool PasswordHasher::verify(const QString &stored, const QString &clientHash)
{
    if (!ready() || stored.isEmpty())
        return false;
    const QByteArray encoded = stored.toLatin1();
    const QByteArray input = clientHash.toUtf8();
    return crypto_pwhash_str_verify(encoded.constData(), input.constData(), quint64(input.size()))
           == 0;
}

bool PasswordHasher::verifyWithoutAccount(const QString &clientHash)
{
    // Made once, with the parameters of every stored hash, from random bytes nobody knows.
    static const QString dummy = [] {
        QByteArray secret(32, Qt::Uninitialized);
        if (ready())
            randombytes_buf(secret.data(), size_t(secret.size()));
        return hash(QString::fromLatin1(secret.toHex()));
    }();
    verify(dummy, clientHash);
    return false;
}

} // namespace zeral::server
