#pragma once

#include <QHash>
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

    // The policy of the local store's database object.
    static QMap<QString, QVariant> getPasswordOptions();
    // The policy held by these parameters of a database object. The server answers
    // session.password_policy with it, so a client that has no store yet gets the same.
    static QMap<QString, QVariant> optionsFromParameters(const QHash<QString, QString> &parameters);
    // A random password, from the system's secure source, that meets `options`.
    static QString generatePassword(const QMap<QString, QVariant> &options);
    // The option keys that `password` fails; empty if it meets them all.
    static QStringList unmetCriteria(const QString &password,
                                     const QMap<QString, QVariant> &options);
    // The text of a parameter of the database object; empty if it has none.
    static QString getDBParameterByName(const QString &key);

    GUIPassFuncs() = delete;
};
