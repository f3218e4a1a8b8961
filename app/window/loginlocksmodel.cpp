#include "loginlocksmodel.h"

LoginLocksModel::LoginLocksModel(QObject *parent)
    : QAbstractTableModel(parent)
{}

void LoginLocksModel::setLocks(const QList<zeral::LoginLockInfo> &locks)
{
    beginResetModel();
    m_locks = locks;
    endResetModel();
}

void LoginLocksModel::removeLocks(const QString &login, const QString &address)
{
    // From the end, so that the rows still to look at keep their numbers.
    for (int row = m_locks.size() - 1; row >= 0; --row) {
        const zeral::LoginLockInfo &lock = m_locks.at(row);
        if (lock.login.compare(login, Qt::CaseInsensitive) != 0
            || (!address.isEmpty() && lock.address != address))
            continue;
        beginRemoveRows(QModelIndex(), row, row);
        m_locks.removeAt(row);
        endRemoveRows();
    }
}

int LoginLocksModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_locks.size();
}

int LoginLocksModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant LoginLocksModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const zeral::LoginLockInfo &lock = m_locks.at(index.row());
    if (role == Qt::DisplayRole) {
        switch (index.column()) {
        case LoginColumn:
            return lock.login;
        case AddressColumn:
            return lock.address;
        case FailuresColumn:
            return lock.failures;
        case LockedUntilColumn:
            return lock.lockedUntil.toLocalTime().toString(QStringLiteral("dd.MM.yyyy HH:mm:ss"));
        }
    } else if (role == Qt::ToolTipRole && index.column() == LockedUntilColumn) {
        return tr("%1 UTC").arg(
            lock.lockedUntil.toUTC().toString(QStringLiteral("dd.MM.yyyy HH:mm:ss")));
    } else if (role == Qt::TextAlignmentRole && index.column() == FailuresColumn) {
        return int(Qt::AlignRight | Qt::AlignVCenter);
    }
    return {};
}

QVariant LoginLocksModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case LoginColumn:
        return tr("Имя пользователя");
    case AddressColumn:
        return tr("Адрес");
    case FailuresColumn:
        return tr("Неудачных попыток");
    case LockedUntilColumn:
        return tr("Заблокирован до");
    }
    return {};
}
