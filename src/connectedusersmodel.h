#pragma once

#include <shared/connecteduserinfo.h>

#include <QAbstractItemModel>
#include <QDateTime>
#include <QIcon>
#include <QVector>

// The table of client sessions on the sessions tab: one row per session that the server
// reported at the last poll. It is rebuilt in full after every poll (clear, server time, one
// addRecord per session) and never updated in place; it talks to no server and owns no timers.
//
// Columns: 0 login, 1 address, 2 role template, 3 start, 4 duration, 5 idle time,
// 6 category and 7 user id (both hidden in the view, read by code).
class ConnectedUsersModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    // A session as the server reported it, with the values that only the client can work out.
    struct ModelRecord : zeral::ConnectedUserInfo
    {
        QString roleTemplate;
        // 1: the operator may disconnect the session, 4: he may not. Selects the row colour.
        unsigned int category = 0;
        // The id of the stored user with that login, 0 if there is none.
        unsigned int userId = 0;

        // Compares every field, not only those of the shared record.
        bool operator==(const ModelRecord &other) const;
        bool operator!=(const ModelRecord &other) const { return !(*this == other); }
    };

    // The identity of a row in every column: a QVariantMap with the keys "user", "ipPort",
    // "connectDateTime", "lastActionTime" and "sessionId".
    static constexpr int SessionIdentityRole = Qt::UserRole + 100;
    static constexpr int ColumnCount = 8;

    explicit ConnectedUsersModel(QObject *parent = nullptr);

    QModelIndex index(int row, int column,
                      const QModelIndex &parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    // The server's clock at the last poll; both duration columns count up to it, so they
    // move only when a poll comes in and don't depend on the operator's own clock.
    void setCurrentServerTime(const QDateTime &serverTime);
    // A copy of the row's record, or a default record for a row out of range.
    ModelRecord record(int row) const;
    // A count of seconds as "hh:mm:ss"; the sign is dropped and the hours don't wrap.
    QString sec2string(qint64 seconds) const;
    void addRecord(const ModelRecord &record);
    // The same for a whole poll, as one insertion: a view and its proxy then take 10,000
    // sessions in one go instead of one at a time.
    void addRecords(const QVector<ModelRecord> &added);
    // Removes every row; the server time stays.
    void clear();

private:
    // The values of the columns 3 to 5 of one row: the durations worked out when the row comes
    // in and again when the server time changes, the start text when it is first shown. A local
    // date-time costs a time-zone conversion on each use, and a sorted proxy asks for these
    // cells many times per insert.
    struct DerivedValues
    {
        mutable QString connectText; // null until first asked for
        qint64 sessionSeconds = 0;
        qint64 idleSeconds = 0;
    };
    void deriveDurations(const ModelRecord &record, DerivedValues &values) const;
    qint64 secondsToServerTime(const QDateTime &moment) const;

    QVector<ModelRecord> records;
    QDateTime currentServerTime;
    qint64 serverMSecsSinceEpoch = 0;
    // Parallel to `records`.
    QVector<DerivedValues> derived;
    // Looked up in the theme once: views ask for it for every row they measure or paint.
    const QIcon userIcon = QIcon::fromTheme(QStringLiteral("object-OT_USER"));
};
