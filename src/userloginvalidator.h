#pragma once

#include <QSet>
#include <QString>
#include <QStringList>
#include <QValidator>

// Keeps a login edit from accepting a login that another user already has, or one of blanks
// only. It never answers Invalid, so typing is never blocked: a taken login is merely not
// acceptable, and the comparison is exact (case and blanks count).
class UserLoginValidator : public QValidator
{
    Q_OBJECT
public:
    explicit UserLoginValidator(QObject *parent = nullptr);
    UserLoginValidator(const QStringList &logins, QObject *parent = nullptr);

    QStringList denyLogins() const;
    // Replaces the taken logins; the edit judges its text again on changed().
    void setDenyLogins(const QStringList &logins);

    State validate(QString &input, int &pos) const override;

private:
    QSet<QString> m_denyLogins;
};
