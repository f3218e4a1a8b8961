#pragma once

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

// The password policy of the installation and passwords that meet it. The policy is read
// from the settings of the server's database object; missing settings take sane defaults.
class GUIPassFuncs
{
public:
    // Keys of the option map.
    static const QString MinLength;      // int
    static const QString RequireUpper;   // bool
    static const QString RequireLower;   // bool
    static const QString RequireDigit;   // bool
    static const QString RequireSpecial; // bool

    static constexpr int DefaultMinLength = 8;
    static constexpr int MaxLength = 128;
    // Generated passwords are at least this long, even under a laxer policy.
    static constexpr int GeneratedMinLength = 12;

    static QMap<QString, QVariant> getPasswordOptions();
    // A random password, from the system's secure source, that meets `options`.
    static QString generatePassword(const QMap<QString, QVariant> &options);
    // The option keys that `password` fails; empty if it meets them all.
    static QStringList unmetCriteria(const QString &password,
                                     const QMap<QString, QVariant> &options);
    // The text of a parameter of the database object; empty if it has none.
    static QString getDBParameterByName(const QString &key);

    GUIPassFuncs() = delete;
};
