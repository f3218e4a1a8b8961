#include "connectedusersmodel.h"

#include <host/core/zrglobals.h>
#include <host/gui/widgets/zrguiglobals.h>

#include <QIcon>

bool ConnectedUsersModel::ModelRecord::operator==(const ModelRecord &other) const
{
    return zeral::ConnectedUserInfo::operator==(other) && roleTemplate == other.roleTemplate
           && category == other.category && userId == other.userId;
}

ConnectedUsersModel::ConnectedUsersModel(QObject *parent)
    : QAbstractItemModel(parent)
{}

QModelIndex ConnectedUsersModel::index(int row, int column, const QModelIndex &) const
{
    // A flat table: the index needs no pointer, and callers keep to the ranges themselves.
    return createIndex(row, column);
}

QModelIndex ConnectedUsersModel::parent(const QModelIndex &) const
{
    return QModelIndex();
}

int ConnectedUsersModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : records.size();
}

int ConnectedUsersModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ConnectedUsersModel::data(const QModelIndex &index, int role) const
{
    const int row = index.row();
    const int column = index.column();
    if (column < 0 || column >= columnCount() || row < 0 || row >= rowCount())
        return QVariant();

    const ModelRecord &record = records.at(row);
    const DerivedValues &values = derived.at(row);
    switch (role) {
    case Qt::DisplayRole:
        switch (column) {
        case 0:
            return record.user;
        case 1:
            return record.ipPort;
        case 2:
            return record.roleTemplate;
        case 3:
            // Formatted when first shown: a poll of thousands of sessions shows a few dozen.
            if (values.connectText.isNull())
                values.connectText = zeral::localeLongTime(record.connectDateTime.toLocalTime());
            return values.connectText;
        case 4:
            return sec2string(values.sessionSeconds);
        case 5:
            return sec2string(values.idleSeconds);
        case 6:
            return record.category;
        case 7:
            return record.userId;
        }
        break;
    case Qt::DecorationRole:
        if (column == 0)
            return userIcon;
        break;
    case Qt::BackgroundRole: {
        // The whole row takes its category's colour; a category without one keeps the view's.
        const QColor colour = ZRGuiGlobals::eventCategoryColor(record.category);
        if (colour.isValid())
            return colour;
        break;
    }
    case SessionIdentityRole:
        return QVariantMap{{QStringLiteral("user"), record.user},
                           {QStringLiteral("ipPort"), record.ipPort},
                           {QStringLiteral("connectDateTime"), record.connectDateTime},
                           {QStringLiteral("lastActionTime"), record.lastActionTime},
                           {QStringLiteral("sessionId"), record.sessionId}};
    }
    return QVariant();
}

QVariant ConnectedUsersModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();

    switch (section) {
    case 0:
        return tr("Логин");
    case 1:
        return tr("Адрес");
    case 2:
        return tr("Шаблон ролей");
    case 3:
        return tr("Начало сессии");
    case 4:
        return tr("Длительность сессии");
    case 5:
        return tr("Время бездействия");
    case 6:
        return tr("Категория");
    case 7:
        return tr("Идентификатор");
    }
    return QVariant();
}

void ConnectedUsersModel::setCurrentServerTime(const QDateTime &serverTime)
{
    currentServerTime = serverTime;
    serverMSecsSinceEpoch = serverTime.isValid() ? serverTime.toMSecsSinceEpoch() : 0;
    for (int row = 0; row < records.size(); ++row)
        deriveDurations(records.at(row), derived[row]);
    // Every duration depends on the server time. On an empty model the range runs to row -1;
    // views take that as nothing to redraw.
    emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1), {});
}

ConnectedUsersModel::ModelRecord ConnectedUsersModel::record(int row) const
{
    if (row < 0 || row >= records.size())
        return ModelRecord();
    return records.at(row);
}

QString ConnectedUsersModel::sec2string(qint64 seconds) const
{
    // A server clock behind the session's start still shows how far apart the two are.
    const qint64 value = qAbs(seconds);
    const qint64 hours = value / 3600;
    const qint64 minutes = (value % 3600) / 60;
    const qint64 secs = value - hours * 3600 - minutes * 60;
    const QLatin1Char zero('0');
    return QStringLiteral("%1:%2:%3")
        .arg(hours, 2, 10, zero)
        .arg(minutes, 2, 10, zero)
        .arg(secs, 2, 10, zero);
}

void ConnectedUsersModel::addRecord(const ModelRecord &record)
{
    addRecords({record});
}

void ConnectedUsersModel::addRecords(const QVector<ModelRecord> &added)
{
    if (added.isEmpty())
        return;
    const int first = records.size();
    beginInsertRows(QModelIndex(), first, first + added.size() - 1);
    for (const ModelRecord &record : added) {
        records.append(record);
        DerivedValues values;
        deriveDurations(record, values);
        derived.append(values);
    }
    endInsertRows();
}

void ConnectedUsersModel::clear()
{
    beginResetModel();
    // QVector keeps its capacity on clear; the next poll brings about as many sessions.
    records.clear();
    derived.clear();
    endResetModel();
}

void ConnectedUsersModel::deriveDurations(const ModelRecord &record, DerivedValues &values) const
{
    values.sessionSeconds = secondsToServerTime(record.connectDateTime);
    values.idleSeconds = secondsToServerTime(record.lastActionTime);
}

qint64 ConnectedUsersModel::secondsToServerTime(const QDateTime &moment) const
{
    // QDateTime::secsTo, with the server time converted once per poll and not once per call:
    // 0 when either side is invalid, whole seconds of the difference in milliseconds.
    if (!moment.isValid() || !currentServerTime.isValid())
        return 0;
    return (serverMSecsSinceEpoch - moment.toMSecsSinceEpoch()) / 1000;
}
