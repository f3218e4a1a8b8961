#include "fastproxymodel.h"

#include "fasttreemodel.h"

#include <QRegularExpression>

FastProxyModel::FastProxyModel(QObject *parent)
    : QSortFilterProxyModel(parent)
{
    setRecursiveFilteringEnabled(true);
}

void FastProxyModel::setSourceModel(QAbstractItemModel *model)
{
    m_model = qobject_cast<FastTreeModel *>(model);
    QSortFilterProxyModel::setSourceModel(model);
}

void FastProxyModel::setSourceModel(FastTreeModel *model)
{
    setSourceModel(static_cast<QAbstractItemModel *>(model));
}

void FastProxyModel::setCheckable(bool checkable)
{
    m_checkable = checkable;
    checksChanged();
}

void FastProxyModel::setPartiallyCheckEnabled(bool enabled)
{
    m_partial = enabled;
    checksChanged();
}

void FastProxyModel::setChecked(const QList<QString> &keys)
{
    m_checked = QSet<QString>(keys.cbegin(), keys.cend());
    checksChanged();
}

QStringList FastProxyModel::checked() const
{
    QStringList keys = m_checked.values();
    keys.sort();
    return keys;
}

Qt::CheckState FastProxyModel::checkState(const QModelIndex &sourceIndex) const
{
    if (!m_model)
        return Qt::Unchecked;
    const int children = m_model->rowCount(sourceIndex);
    if (!m_partial || children == 0)
        return m_checked.contains(m_model->keyForIndex(sourceIndex)) ? Qt::Checked : Qt::Unchecked;
    bool all = true;
    bool any = false;
    for (int row = 0; row < children; ++row) {
        const Qt::CheckState state = checkState(m_model->index(row, 0, sourceIndex));
        all = all && state == Qt::Checked;
        any = any || state != Qt::Unchecked;
    }
    return all ? Qt::Checked : any ? Qt::PartiallyChecked : Qt::Unchecked;
}

void FastProxyModel::setCheckStateFilter(const QList<Qt::CheckState> &states)
{
    m_stateFilter.clear();
    for (Qt::CheckState state : states)
        m_stateFilter.insert(state);
    invalidateFilter();
}

void FastProxyModel::clearCheckStateFilter()
{
    setCheckStateFilter({});
}

void FastProxyModel::setDisabledAll(bool disabled)
{
    m_disabledAll = disabled;
    notifyAll({});
}

void FastProxyModel::setReadOnly(bool readOnly)
{
    m_readOnly = readOnly;
}

void FastProxyModel::setFilter(const QString &text)
{
    m_filterText = text;
    m_words
        = text.toCaseFolded().split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
    invalidateFilter();
}

void FastProxyModel::setSearchEnabled(bool enabled)
{
    m_searchEnabled = enabled;
    invalidateFilter();
}

bool FastProxyModel::filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const
{
    if (!m_model)
        return true;
    const QModelIndex index = m_model->index(sourceRow, 0, sourceParent);
    if (!m_stateFilter.isEmpty() && !m_stateFilter.contains(checkState(index)))
        return false;
    if (!m_searchEnabled || m_words.isEmpty())
        return true;
    // The words may stand in the item's title or in the titles of its parents.
    QString path;
    for (QModelIndex it = index; it.isValid(); it = it.parent())
        path += it.data().toString().toCaseFolded() + QLatin1Char('\n');
    for (const QString &word : m_words) {
        if (!path.contains(word))
            return false;
    }
    return true;
}

QVariant FastProxyModel::data(const QModelIndex &index, int role) const
{
    if (role == Qt::CheckStateRole && m_checkable && index.column() == 0)
        return checkState(mapToSource(index));
    return QSortFilterProxyModel::data(index, role);
}

bool FastProxyModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role == Qt::CheckStateRole) {
        if (!m_checkable || m_disabledAll || index.column() != 0 || !m_model)
            return false;
        const QString key = m_model->keyForIndex(mapToSource(index));
        QStringList keys = m_model->childKeys(key);
        keys << key;
        const bool check = value.toInt() != Qt::Unchecked;
        for (const QString &it : qAsConst(keys)) {
            if (check)
                m_checked.insert(it);
            else
                m_checked.remove(it);
        }
        checksChanged();
        return true;
    }
    if (m_readOnly)
        return false;
    return QSortFilterProxyModel::setData(index, value, role);
}

Qt::ItemFlags FastProxyModel::flags(const QModelIndex &index) const
{
    Qt::ItemFlags result = QSortFilterProxyModel::flags(index);
    if (m_readOnly)
        result &= ~Qt::ItemIsEditable;
    if (m_checkable && index.column() == 0)
        result |= Qt::ItemIsUserCheckable;
    // Disabled items keep their check boxes, drawn greyed: a tree that only shows what is
    // granted still shows it by its checks. Nobody can change them (see setData).
    if (m_disabledAll)
        result &= ~Qt::ItemIsEnabled;
    return result;
}

void FastProxyModel::checksChanged()
{
    if (!m_stateFilter.isEmpty())
        invalidateFilter();
    notifyAll({});
    emit checkedChanged();
}

void FastProxyModel::notifyAll(const QModelIndex &parent)
{
    const int rows = rowCount(parent);
    if (rows == 0)
        return;
    emit dataChanged(index(0, 0, parent), index(rows - 1, columnCount(parent) - 1, parent));
    for (int row = 0; row < rows; ++row)
        notifyAll(index(row, 0, parent));
}
