#pragma once

#include <QString>
#include <QStringList>

// What makes a mobile account: its role templates, its generated password, and the auth
// data handed to the person who logs in from the mobile application.
class MobileUserHelper
{
public:
    // "RT_MOBILE", then "RT_MOBILE_CHIEF".
    static QStringList standardMobileRoleTemplates();
    // A new password by the installation's password policy, and by nothing else.
    static QString generatePassword();
    // Base64 of the indented JSON object {"host", "passw", "port", "user"}, with host and
    // port read anew from the database settings. Base64 hides nothing: the password in it
    // is readable by whoever holds the text.
    static QString generateAuthData(const QString &login, const QString &password);

    MobileUserHelper() = delete;
};
