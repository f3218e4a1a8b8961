#include "authdata.h"

namespace {

AuthData::Identity &current()
{
    static AuthData::Identity identity;
    return identity;
}

} // namespace

QString AuthData::user()
{
    return current().user;
}

zeral::TYPE_ID AuthData::userId()
{
    return current().userId;
}

QByteArray AuthData::sessionId()
{
    return current().sessionId;
}

QString AuthData::roletemplateId()
{
    return current().roletemplateId;
}

QStringList AuthData::roles()
{
    return current().roles;
}

QString AuthData::passwdHash()
{
    return current().passwdHash;
}

void AuthData::set(const Identity &identity)
{
    current() = identity;
}

void AuthData::clear()
{
    current() = Identity();
}

bool AuthData::isLoggedIn()
{
    return !current().sessionId.isEmpty();
}
