#include "userloginvalidator.h"

UserLoginValidator::UserLoginValidator(QObject *parent)
    : QValidator(parent)
{}

UserLoginValidator::UserLoginValidator(const QStringList &logins, QObject *parent)
    : QValidator(parent)
    , m_denyLogins(logins.cbegin(), logins.cend())
{}

QStringList UserLoginValidator::denyLogins() const
{
    return m_denyLogins.values();
}

void UserLoginValidator::setDenyLogins(const QStringList &logins)
{
    m_denyLogins = QSet<QString>(logins.cbegin(), logins.cend());
    emit changed();
}

QValidator::State UserLoginValidator::validate(QString &input, int &pos) const
{
    Q_UNUSED(pos)
    // Only the emptiness check trims: " admin" is a login of its own beside "admin".
    if (input.trimmed().isEmpty() || m_denyLogins.contains(input))
        return Intermediate;
    return Acceptable;
}
