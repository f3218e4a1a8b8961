#pragma once

#include <server/engine/ops/servertext.h>
#include <shared/objectinfo.h>

#include <QDate>
#include <QHash>
#include <QMap>
#include <QStringList>
#include <QVariant>

namespace zeral::server {

class ObjectStore;

// The installation's password rules, as the database object holds them, and what they mean
// for one user: whether he must choose a new password before he may log in, and what a
// password he chose himself does to his obligation and his expiry date.
class PasswordRules
{

public:
    // Parameters to store and parameters to drop, in one change of a user.
    struct Edit
    {
        QHash<QString, QString> set;
        QStringList removed;
    };

    explicit PasswordRules(ObjectStore &store);

    // The database object's parameters; false if the store couldn't be read.
    bool readSettings(QHash<QString, QString> *settings);
    // The text a reset gives a password ("PT_PASSWORD_DEF"); empty if there is none.
    QString defaultPassword();
    // The policy in the keys of GUIPassFuncs' options.
    QMap<QString, QVariant> policy();
    // After a user chose his password himself: no obligation to change it any more, and an
    // expiry date, if he has one, moves on by the installation's term (or goes, without one).
    Edit renewal(const ObjectInfo &user, const QDate &today);

    // Why `user` must choose a new password before he may log in; empty if he needn't.
    static ServerText changeRequiredReason(const ObjectInfo &user, const QDate &today);

private:
    ObjectStore &m_store;
};

} // namespace zeral::server
