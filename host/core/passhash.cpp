#include "passhash.h"

QString PassHash::encrypt(const QString &password, QCryptographicHash::Algorithm algorithm)
{
    return QString::fromLatin1(QCryptographicHash::hash(password.toUtf8(), algorithm).toHex());
}
