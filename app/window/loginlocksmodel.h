#pragma once

#include <shared/loginlockinfo.h>

#include <QAbstractTableModel>
#include <QList>

// The logins the server has locked after failed attempts, one row per login and address:
// login, address, failures, and until when (shown in local time, kept in UTC as the server
// sends it).
class LoginLocksModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { LoginColumn, AddressColumn, FailuresColumn, LockedUntilColumn, ColumnCount };

    explicit LoginLocksModel(QObject *parent = nullptr);

    void setLocks(const QList<zeral::LoginLockInfo> &locks);
    const QList<zeral::LoginLockInfo> &locks() const { return m_locks; }
    zeral::LoginLockInfo lock(int row) const { return m_locks.value(row); }
    // Takes out the rows of the login (any case) at that address, or at every address when
    // `address` is empty, as the server lifts them.
    void removeLocks(const QString &login, const QString &address);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

private:
    QList<zeral::LoginLockInfo> m_locks;
};
