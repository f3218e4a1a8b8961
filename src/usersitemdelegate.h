#pragma once

#include <host/gui/widgets/styleditemdelegate.h>
#include <shared/roletemplateinfo.h>

#include <QDate>
#include <QString>

// Paints the rows of a user list: the full name (column 3), the name of the role template
// (column 4) and the state of the account with its icon (column 5), all on the first line
// of the cell; every other column is drawn by the base. The state says at a glance that a
// user is blocked or that his password has run out or soon will.
class UsersItemDelegate : public StyledItemDelegate
{
    Q_OBJECT
public:
    // The columns of a user row that this delegate draws itself. Column 0 holds the uid and,
    // in role 257, the user's parameters.
    enum Column { UidColumn = 0, FullNameColumn = 3, RoleTemplateColumn = 4, StateColumn = 5 };

    // The state of an account, the first that applies.
    enum class AccountState {
        Blocked,          // "PT_OBJECTSTATE" is "b", whatever the password
        PasswordExpired,  // the expiry date has passed
        PasswordExpiring, // it comes within ExpiryWarningDays, today included
        PasswordSet,      // later, or no expiry recorded
    };
    // Passwords expiring in fewer days than this ask to be changed.
    static constexpr int ExpiryWarningDays = 14;

    explicit UsersItemDelegate(QObject *parent);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    // In the state column: the state's icon, 16 by 16, centred in `rect`.
    int drawIcon(QPainter *painter, const QModelIndex &index, const QRect &rect) const override;

    // The state of the account of a state-column index (expiry date in the display role,
    // object state in role 1257), as of `today`.
    static AccountState accountState(const QModelIndex &index, const QDate &today);
    static QString stateIconName(AccountState state);
    static QString stateText(AccountState state);
    // The text that paint draws in the cell of `index`; empty in columns drawn by the base.
    QString cellText(const QModelIndex &index, const QDate &today) const;

public slots:
    // Stores the table; the cells of column 4 follow on the next repaint.
    void setRoleTemplates(zeral::ROLETEMPLATES_HASH rt_hash);

private:
    QString fullName(const QModelIndex &index) const;
    QString roleTemplateName(const QString &id) const;

    zeral::ROLETEMPLATES_HASH m_roleTemplates;
};
