#include "mobileusercheckmodel.h"

#include <host/core/localstorage.h>
#include <host/core/zrglobals.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>

namespace {
constexpr int ColumnCount = 2;
}

MobileUserCheckModel::MobileUserCheckModel(QObject *parent)
    : QAbstractItemModel(parent)
{}

void MobileUserCheckModel::setUids(zeral::OBJECT_UID_LIST uids)
{
    beginResetModel();
    m_uids = uids;
    m_checked.clear();
    endResetModel();
}

void MobileUserCheckModel::checkAll()
{
    m_checked = QSet<unsigned int>(m_uids.cbegin(), m_uids.cend());
    announceAllChecks();
}

void MobileUserCheckModel::uncheckAll()
{
    m_checked.clear();
    announceAllChecks();
}

void MobileUserCheckModel::announceAllChecks()
{
    if (!m_uids.isEmpty())
        emit dataChanged(index(0, 0), index(m_uids.size() - 1, ColumnCount - 1));
}

bool MobileUserCheckModel::isCell(const QModelIndex &index) const
{
    return index.isValid() && index.model() == this && !index.parent().isValid()
           && index.row() < m_uids.size() && index.column() < ColumnCount;
}

QModelIndex MobileUserCheckModel::index(int row, int column, const QModelIndex &parent) const
{
    if (parent.isValid() || row < 0 || column < 0 || row >= m_uids.size()
        || column >= ColumnCount)
        return QModelIndex();
    return createIndex(row, column);
}

QModelIndex MobileUserCheckModel::parent(const QModelIndex &) const
{
    return QModelIndex();
}

int MobileUserCheckModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_uids.size();
}

int MobileUserCheckModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant MobileUserCheckModel::data(const QModelIndex &index, int role) const
{
    if (!isCell(index))
        return QVariant();
    const unsigned int uid = m_uids.at(index.row());
    if (role == Qt::CheckStateRole) {
        if (index.column() != 0)
            return QVariant();
        return int(m_checked.contains(uid) ? Qt::Checked : Qt::Unchecked);
    }
    if (role != Qt::DisplayRole)
        return QVariant();
    const zeral::ObjectInfo &employee = zeral::LocalStorage::instance()->constObject(
        uid, QLatin1String(zeral::SUBJECT_DATANAME));
    if (index.column() == 0)
        return ZRGlobals::objectName(employee);
    return employee.parameters.value(QLatin1String(db::worker::EMAIL));
}

bool MobileUserCheckModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::CheckStateRole || !isCell(index) || index.column() != 0)
        return false;
    const unsigned int uid = m_uids.at(index.row());
    if (value.toInt() == Qt::Checked)
        m_checked.insert(uid);
    else
        m_checked.remove(uid);
    emit dataChanged(index, index);
    return true;
}

QVariant MobileUserCheckModel::headerData(int section, Qt::Orientation orientation,
                                          int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    switch (section) {
    case 0:
        return tr("ФИО");
    case 1:
        return tr("e-mail");
    default:
        return QVariant();
    }
}

Qt::ItemFlags MobileUserCheckModel::flags(const QModelIndex &index) const
{
    if (!isCell(index))
        return Qt::NoItemFlags;
    if (index.column() == 0)
        return Qt::ItemIsSelectable | Qt::ItemIsUserCheckable | Qt::ItemIsEnabled;
    return Qt::ItemIsSelectable | Qt::ItemIsEnabled;
}
