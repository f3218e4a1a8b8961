#include "usersitemdelegate.h"

#include <host/core/zrglobals.h>
#include <host/gui/models/itemroles.h>
#include <shared/dbkeys.h>

#include <QCoreApplication>
#include <QIcon>
#include <QPainter>

#include <utility>

namespace {
// Every cell is drawn on one line of text of this height, with icons of this size.
constexpr int LineHeight = 16;
constexpr int StateIconSize = 16;
} // namespace

UsersItemDelegate::UsersItemDelegate(QObject *parent)
    : StyledItemDelegate(parent)
{
    // The columns drawn here stand on the first line of the cell; the login and the others
    // the base draws keep to that line too, so the texts of a row share one baseline.
    setNameVerticalAlignment(Qt::AlignTop);
}

void UsersItemDelegate::setRoleTemplates(zeral::ROLETEMPLATES_HASH rt_hash)
{
    m_roleTemplates = std::move(rt_hash);
}

void UsersItemDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                              const QModelIndex &index) const
{
    const int column = index.column();
    if (column != FullNameColumn && column != RoleTemplateColumn && column != StateColumn) {
        StyledItemDelegate::paint(painter, option, index);
        return;
    }

    painter->save();
    drawBackground(painter, option, index);
    drawStyledBackground(painter, option, index);

    const QRect &cell = option.rect;
    const int left = cell.left() + leftMargin();
    const int top = cell.top() + topMargin();
    const int right = cell.right() - rightMargin() - spacing() - 1;
    int textLeft = left;
    if (column == StateColumn) {
        const QRect iconRect(left, top, StateIconSize, StateIconSize);
        textLeft = left + drawIcon(painter, index, iconRect) + spacing();
    }
    // Only the state reads today's date: each reading of the clock as a local date has the C
    // library look at the time zone's file again (three stat() calls), for every cell painted.
    const QDate today = column == StateColumn ? QDate::currentDate() : QDate();
    painter->drawText(QRect(QPoint(textLeft, top), QPoint(right, top + LineHeight - 1)),
                      Qt::AlignLeft, cellText(index, today));
    painter->restore();
}

int UsersItemDelegate::drawIcon(QPainter *painter, const QModelIndex &index,
                                const QRect &rect) const
{
    if (index.column() != StateColumn)
        return StyledItemDelegate::drawIcon(painter, index, rect);

    // Fixed at 16: the 24 of the view is for the icons the base draws.
    const QIcon icon = QIcon::fromTheme(stateIconName(accountState(index, QDate::currentDate())));
    const QPixmap pixmap
        = icon.pixmap(QSize(StateIconSize, StateIconSize), QIcon::Normal, QIcon::Off);
    const QSize size = pixmap.size() / pixmap.devicePixelRatio();
    const QPoint topLeft(rect.left() + (rect.width() - size.width()) / 2,
                         rect.top() + (rect.height() - size.height()) / 2);
    painter->drawPixmap(QRect(topLeft, size), pixmap, pixmap.rect());
    return size.width();
}

UsersItemDelegate::AccountState UsersItemDelegate::accountState(const QModelIndex &index,
                                                                const QDate &today)
{
    if (index.data(ItemRoles::ObjectState).toString().toLower() == QLatin1String("b"))
        return AccountState::Blocked;

    // An empty or unreadable date means that no expiry is recorded.
    const QVariant expiry = index.data(Qt::DisplayRole);
    if (!expiry.toDate().isValid())
        return AccountState::PasswordSet;
    const qint64 days = today.daysTo(QDate::fromString(expiry.toString(), Qt::ISODate));
    if (days < 0)
        return AccountState::PasswordExpired;
    if (days < ExpiryWarningDays)
        return AccountState::PasswordExpiring;
    return AccountState::PasswordSet;
}

QString UsersItemDelegate::stateIconName(AccountState state)
{
    switch (state) {
    case AccountState::Blocked:
        return QStringLiteral("action-lock");
    case AccountState::PasswordExpired:
        return QStringLiteral("common-offline");
    case AccountState::PasswordExpiring: // keeps the normal icon: only the text warns
    case AccountState::PasswordSet:
        break;
    }
    return QStringLiteral("common-online");
}

QString UsersItemDelegate::stateText(AccountState state)
{
    switch (state) {
    case AccountState::Blocked:
        return tr("Заблокирован");
    case AccountState::PasswordExpired:
        return tr("Истек срок действия пароля");
    case AccountState::PasswordExpiring:
        return tr("Необходимо сменить пароль");
    case AccountState::PasswordSet:
        break;
    }
    return tr("Пароль установлен");
}

QString UsersItemDelegate::cellText(const QModelIndex &index, const QDate &today) const
{
    switch (index.column()) {
    case FullNameColumn:
        return fullName(index);
    case RoleTemplateColumn:
        return roleTemplateName(index.data(Qt::DisplayRole).toString());
    case StateColumn:
        return stateText(accountState(index, today));
    default:
        return QString();
    }
}

QString UsersItemDelegate::fullName(const QModelIndex &index) const
{
    const QModelIndex first = index.siblingAtColumn(UidColumn);
    const QVariantHash parameters = first.data(ItemRoles::Parameters).toHash();
    const auto part = [&parameters](const char *key) {
        return parameters.value(QLatin1String(key)).toString();
    };
    // A missing part leaves its place empty; the blanks stay.
    return tr("%1 %2 %3")
        .arg(part(db::user::SURNAME), part(db::user::NAME), part(db::user::PATRONYMIC));
}

QString UsersItemDelegate::roleTemplateName(const QString &id) const
{
    const auto found = m_roleTemplates.constFind(id);
    if (found == m_roleTemplates.cend())
        return QString();
    if (found->custom)
        return found->name;
    const QString builtIn = ZRGlobals::roleTemplateNames().value(id);
    if (builtIn.isEmpty())
        return QString();
    return QCoreApplication::translate("ZRGlobals", builtIn.toUtf8().constData());
}
