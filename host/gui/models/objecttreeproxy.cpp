#include "objecttreeproxy.h"

#include "itemroles.h"

#include <QRegularExpression>

#include <algorithm>

using zeral::TYPE_ID;

ObjectTreeProxy::ObjectTreeProxy(QObject *parent)
    : QSortFilterProxyModel(parent)
    , m_searchRole(ItemRoles::SortText)
{}

void ObjectTreeProxy::setSourceModel(QAbstractItemModel *model)
{
    if (model == QSortFilterProxyModel::sourceModel())
        return;
    for (const QMetaObject::Connection &connection : qAsConst(m_connections))
        disconnect(connection);
    m_connections.clear();
    m_model = qobject_cast<ObjectTreeModel *>(model);
    m_countsDirty = true;
    m_checkCountsDirty = true;
    if (m_model) {
        // Ours before the base class's: the counts must be right when it filters the rows.
        m_connections << connect(m_model, &QAbstractItemModel::rowsInserted, this,
                                 &ObjectTreeProxy::beforeRowsInserted)
                      << connect(m_model, &QAbstractItemModel::rowsAboutToBeRemoved, this,
                                 &ObjectTreeProxy::beforeRowsRemoved)
                      << connect(m_model, &QAbstractItemModel::dataChanged, this,
                                 &ObjectTreeProxy::beforeDataChanged)
                      << connect(m_model, &QAbstractItemModel::rowsAboutToBeMoved, this,
                                 &ObjectTreeProxy::structureChanged)
                      << connect(m_model, &QAbstractItemModel::modelAboutToBeReset, this,
                                 &ObjectTreeProxy::forgetCounts)
                      << connect(m_model, &QAbstractItemModel::layoutAboutToBeChanged, this,
                                 &ObjectTreeProxy::forgetCounts);
        // A view may read check states between the two signals of a change and so count on
        // the old tree: once the change is done the counts are stale again.
        m_connections << connect(m_model, &QAbstractItemModel::rowsMoved, this,
                                 &ObjectTreeProxy::forgetCounts)
                      << connect(m_model, &QAbstractItemModel::rowsRemoved, this,
                                 &ObjectTreeProxy::forgetCounts)
                      << connect(m_model, &QAbstractItemModel::layoutChanged, this,
                                 &ObjectTreeProxy::forgetCounts)
                      << connect(m_model, &QAbstractItemModel::modelReset, this, [this] {
                             forgetCounts();
                             dropChecksOfMissing();
                         });
    }
    QSortFilterProxyModel::setSourceModel(model);
    dropChecksOfMissing();
    if (m_model) {
        // After the base class: a parent whose visibility a change turned is filtered anew.
        m_connections << connect(m_model, &QAbstractItemModel::rowsInserted, this,
                                 &ObjectTreeProxy::afterChange)
                      << connect(m_model, &QAbstractItemModel::rowsRemoved, this,
                                 &ObjectTreeProxy::afterChange)
                      << connect(m_model, &QAbstractItemModel::rowsMoved, this,
                                 &ObjectTreeProxy::afterChange)
                      << connect(m_model, &QAbstractItemModel::dataChanged, this,
                                 &ObjectTreeProxy::afterChange);
    }
}

void ObjectTreeProxy::setFilter(const QString &text)
{
    m_filterText = text;
    const QString folded = text.toCaseFolded();
    if (m_searchByWords)
        m_words = folded.split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
    else if (!folded.trimmed().isEmpty())
        m_words = QStringList{folded.trimmed()};
    else
        m_words.clear();
    refilter();
}

void ObjectTreeProxy::clearFilter()
{
    setFilter(QString());
}

QSet<TYPE_ID> ObjectTreeProxy::filterResult() const
{
    ensureCounts();
    return m_matched;
}

void ObjectTreeProxy::setSearchEnabled(bool enabled)
{
    if (enabled == m_searchEnabled)
        return;
    m_searchEnabled = enabled;
    refilter();
}

void ObjectTreeProxy::setSearchByWordsEnabled(bool enabled)
{
    if (enabled == m_searchByWords)
        return;
    m_searchByWords = enabled;
    setFilter(m_filterText);
}

void ObjectTreeProxy::setSearchIndex(const QString &dataname)
{
    m_searchIndex = dataname;
    if (textActive())
        refilter();
}

void ObjectTreeProxy::setSearchRole(int role)
{
    m_searchRole = role;
    if (textActive())
        refilter();
}

void ObjectTreeProxy::setObjectTypeFilter(const QStringList &types)
{
    m_types = QSet<QString>(types.cbegin(), types.cend());
    refilter();
}

void ObjectTreeProxy::setFilterUids(const QSet<TYPE_ID> &uids)
{
    m_uids = uids;
    refilter();
}

void ObjectTreeProxy::addParameterFilter(const QString &key, const QStringList &values,
                                         FilterType type)
{
    m_parameterFilters.append({key, QSet<QString>(values.cbegin(), values.cend()), type});
    refilter();
}

void ObjectTreeProxy::clearParameterFilters()
{
    m_parameterFilters.clear();
    refilter();
}

void ObjectTreeProxy::setTypeFilterKeepsContainers(bool keep)
{
    m_keepContainers = keep;
    refilter();
}

void ObjectTreeProxy::refilter()
{
    m_countsDirty = true;
    // Rebuilding the mapping in one pass is much cheaper, on a large list, than letting the
    // base class remove and insert the rows interval by interval.
    invalidate();
}

void ObjectTreeProxy::setReadOnly(bool readOnly)
{
    m_readOnly = readOnly;
}

void ObjectTreeProxy::setCheckable(bool checkable)
{
    if (checkable == m_checkable)
        return;
    m_checkable = checkable;
    notifyAllChecks({});
}

void ObjectTreeProxy::setCheckableObjectTypes(const QStringList &types)
{
    m_checkableTypes = QSet<QString>(types.cbegin(), types.cend());
    notifyAllChecks({});
}

void ObjectTreeProxy::setAutoCheckChildren(bool enabled)
{
    m_autoCheckChildren = enabled;
}

void ObjectTreeProxy::setPartiallyCheckEnabled(bool enabled)
{
    if (enabled == m_partial)
        return;
    m_partial = enabled;
    notifyAllChecks({});
}

bool ObjectTreeProxy::isCheckable(TYPE_ID uid) const
{
    if (!m_checkable || !m_model)
        return false;
    const Node *node = m_model->node(uid);
    return node && (m_checkableTypes.isEmpty() || m_checkableTypes.contains(node->info.type));
}

Qt::CheckState ObjectTreeProxy::checkState(TYPE_ID uid) const
{
    if (m_checked.contains(uid))
        return Qt::Checked;
    if (m_partial) {
        ensureCheckCounts();
        if (m_checkedBelow.value(uid) > 0)
            return Qt::PartiallyChecked;
    }
    return Qt::Unchecked;
}

void ObjectTreeProxy::setChecked(const QSet<TYPE_ID> &uids)
{
    QSet<TYPE_ID> wanted;
    for (TYPE_ID uid : uids) {
        if (!isCheckable(uid))
            continue;
        wanted.insert(uid);
        if (m_autoCheckChildren)
            collectCheckable(uid, true, &wanted);
    }
    changeChecks(wanted, m_checked - wanted);
}

void ObjectTreeProxy::checkAll()
{
    QSet<TYPE_ID> all;
    collectCheckable(0, true, &all);
    changeChecks(all, {});
}

void ObjectTreeProxy::uncheckAll()
{
    changeChecks({}, m_checked);
}

void ObjectTreeProxy::collectCheckable(TYPE_ID uid, bool visibleOnly, QSet<TYPE_ID> *into) const
{
    if (!m_model)
        return;
    const Node *from = uid ? m_model->node(uid) : m_model->rootNode();
    if (!from)
        return;
    QVector<const Node *> pending(from->children.cbegin(), from->children.cend());
    while (!pending.isEmpty()) {
        const Node *node = pending.takeLast();
        if (visibleOnly && !accepts(node))
            continue;
        if (isCheckable(node->info.uid))
            into->insert(node->info.uid);
        for (const Node *child : node->children)
            pending.append(child);
    }
}

void ObjectTreeProxy::changeChecks(const QSet<TYPE_ID> &add, const QSet<TYPE_ID> &drop)
{
    QSet<TYPE_ID> changed;
    for (TYPE_ID uid : add) {
        if (!m_checked.contains(uid))
            changed.insert(uid);
    }
    for (TYPE_ID uid : drop) {
        if (m_checked.contains(uid) && !add.contains(uid))
            changed.insert(uid);
    }
    if (changed.isEmpty())
        return;
    for (TYPE_ID uid : qAsConst(changed)) {
        const bool checking = !m_checked.contains(uid);
        if (checking)
            m_checked.insert(uid);
        else
            m_checked.remove(uid);
        if (m_checkCountsDirty || !m_model)
            continue;
        const Node *node = m_model->node(uid);
        for (const Node *it = node ? node->parent : nullptr; it && it != m_model->rootNode();
             it = it->parent) {
            int &count = m_checkedBelow[it->info.uid];
            count += checking ? 1 : -1;
        }
    }
    notifyChecks(changed);
    emit checkedChanged();
}

void ObjectTreeProxy::ensureCheckCounts() const
{
    if (!m_checkCountsDirty || !m_model)
        return;
    m_checkedBelow.clear();
    for (TYPE_ID uid : m_checked) {
        const Node *node = m_model->node(uid);
        for (const Node *it = node ? node->parent : nullptr; it && it != m_model->rootNode();
             it = it->parent)
            ++m_checkedBelow[it->info.uid];
    }
    m_checkCountsDirty = false;
}

void ObjectTreeProxy::notifyChecks(const QSet<TYPE_ID> &uids)
{
    if (!m_model)
        return;
    // Many changes at once: one signal per level is cheaper than one per row.
    if (uids.size() > 64) {
        notifyAllChecks({});
        return;
    }
    QSet<TYPE_ID> rows;
    for (TYPE_ID uid : uids) {
        rows.insert(uid);
        const Node *node = m_model->node(uid);
        for (const Node *it = node ? node->parent : nullptr; it && it != m_model->rootNode();
             it = it->parent) {
            if (rows.contains(it->info.uid))
                break;
            rows.insert(it->info.uid);
        }
    }
    for (TYPE_ID uid : qAsConst(rows)) {
        const QModelIndex index = indexForUid(uid);
        if (index.isValid())
            emit dataChanged(index, index, {Qt::CheckStateRole});
    }
}

void ObjectTreeProxy::notifyAllChecks(const QModelIndex &parent)
{
    const int rows = rowCount(parent);
    if (rows == 0)
        return;
    emit dataChanged(index(0, 0, parent), index(rows - 1, 0, parent), {Qt::CheckStateRole});
    for (int row = 0; row < rows; ++row) {
        const QModelIndex child = index(row, 0, parent);
        if (hasChildren(child))
            notifyAllChecks(child);
    }
}

QModelIndex ObjectTreeProxy::indexForUid(TYPE_ID uid, int column) const
{
    return m_model ? mapFromSource(m_model->indexForUid(uid, column)) : QModelIndex();
}

bool ObjectTreeProxy::acceptsUid(TYPE_ID uid) const
{
    const Node *node = m_model ? m_model->node(uid) : nullptr;
    return node && accepts(node);
}

bool ObjectTreeProxy::typeAccepts(const Node *node) const
{
    return m_types.isEmpty() || m_types.contains(node->info.type);
}

bool ObjectTreeProxy::restAccepts(const Node *node) const
{
    if (!m_uids.isEmpty() && !m_uids.contains(node->info.uid))
        return false;
    for (const ParameterFilter &filter : m_parameterFilters) {
        const bool listed = filter.values.contains(node->info.parameters.value(filter.key));
        if (listed != (filter.type == MustMatch))
            return false;
    }
    return true;
}

bool ObjectTreeProxy::acceptsObject(const Node *) const
{
    return true;
}

bool ObjectTreeProxy::matchesText(const Node *node) const
{
    if (!textActive())
        return true;
    const auto containsAll = [this](const auto &text) {
        return std::all_of(m_words.cbegin(), m_words.cend(),
                           [&text](const QString &word) { return text.contains(word); });
    };
    if (!m_searchIndex.isEmpty())
        return containsAll(m_model->searchText(*node));
    if (m_searchRole == ItemRoles::SortText)
        return containsAll(m_model->sortKey(*node));
    return containsAll(
        m_model->indexForUid(node->info.uid).data(m_searchRole).toString().toCaseFolded());
}

bool ObjectTreeProxy::matchesSelf(const Node *node) const
{
    return typeAccepts(node) && restAccepts(node) && matchesText(node) && acceptsObject(node);
}

bool ObjectTreeProxy::accepts(const Node *node) const
{
    // While a text is set most rows fail it, and its count is the quickest test to ask; a
    // subclass's condition last.
    if (usesCounts()) {
        ensureCounts();
        if (m_matchesBelow.value(node->info.uid) <= 0)
            return false;
    }
    if (!restAccepts(node) || (!m_keepContainers && !typeAccepts(node)))
        return false;
    return acceptsObject(node);
}

void ObjectTreeProxy::ensureCounts() const
{
    if (!m_countsDirty || !m_model)
        return;
    m_matched.clear();
    m_matchesBelow.clear();
    const auto count = [this](const Node *node) {
        if (node && matchesSelf(node)) {
            m_matched.insert(node->info.uid);
            countMatch(node->info.uid, 1);
        }
    };
    // A text held ready by the model is searched once for its first word, in all objects at
    // a time; only the objects found are then checked one by one.
    const bool preparedText = m_searchIndex.isEmpty() ? m_searchRole == ItemRoles::SortText : true;
    if (textActive() && preparedText) {
        const auto which = m_searchIndex.isEmpty() ? ObjectTreeModel::SearchedText::SortKey
                                                   : ObjectTreeModel::SearchedText::SearchText;
        const QVector<TYPE_ID> candidates = m_model->uidsContaining(m_words.first(), which);
        for (const TYPE_ID uid : candidates)
            count(m_model->node(uid));
    } else {
        const auto &nodes = m_model->nodes();
        for (auto it = nodes.cbegin(); it != nodes.cend(); ++it)
            count(it.value());
    }
    m_countsDirty = false;
}

void ObjectTreeProxy::countMatch(TYPE_ID uid, int delta) const
{
    const Node *node = m_model->node(uid);
    for (const Node *it = node; it && it != m_model->rootNode(); it = it->parent) {
        int &count = m_matchesBelow[it->info.uid];
        const bool wasShown = count > 0;
        count += delta;
        if (it != node && wasShown != (count > 0))
            m_refilterAfterChange = true;
    }
}

bool ObjectTreeProxy::filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const
{
    const ObjectTreeModel *model = m_model;
    if (!model)
        return QSortFilterProxyModel::filterAcceptsRow(sourceRow, sourceParent);
    const Node *node = model->nodeAt(sourceRow, sourceParent);
    return node && accepts(node);
}

bool ObjectTreeProxy::lessThan(const QModelIndex &left, const QModelIndex &right) const
{
    const ObjectTreeModel *model = m_model; // read once: sorting compares millions of times
    if (model && sortRole() == ItemRoles::SortText && left.column() == 0 && right.column() == 0) {
        const Node *a = model->nodeFor(left);
        const Node *b = model->nodeFor(right);
        if (a && b) {
            const int order = sortCaseSensitivity() == Qt::CaseInsensitive
                                  ? model->compareSortKeys(*a, *b)
                                  : a->name.compare(b->name);
            return order != 0 ? order < 0 : a->info.uid < b->info.uid;
        }
    }
    return QSortFilterProxyModel::lessThan(left, right);
}

QVariant ObjectTreeProxy::data(const QModelIndex &index, int role) const
{
    if (role == Qt::CheckStateRole && index.column() == 0 && m_checkable && m_model) {
        const TYPE_ID uid = m_model->uidForIndex(mapToSource(index));
        return isCheckable(uid) ? QVariant(checkState(uid)) : QVariant();
    }
    return QSortFilterProxyModel::data(index, role);
}

bool ObjectTreeProxy::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role == Qt::CheckStateRole && index.column() == 0 && m_model) {
        const TYPE_ID uid = m_model->uidForIndex(mapToSource(index));
        if (!isCheckable(uid))
            return false;
        QSet<TYPE_ID> rows{uid};
        if (value.toInt() == Qt::Unchecked) {
            if (m_autoCheckChildren) {
                const QList<TYPE_ID> below = m_model->childKeys(uid);
                rows.unite(QSet<TYPE_ID>(below.cbegin(), below.cend()));
            }
            changeChecks({}, rows);
        } else {
            if (m_autoCheckChildren)
                collectCheckable(uid, true, &rows);
            changeChecks(rows, {});
        }
        return true;
    }
    if (m_readOnly)
        return false;
    return QSortFilterProxyModel::setData(index, value, role);
}

Qt::ItemFlags ObjectTreeProxy::flags(const QModelIndex &index) const
{
    Qt::ItemFlags result = QSortFilterProxyModel::flags(index);
    if (m_readOnly)
        result &= ~Qt::ItemIsEditable;
    if (index.column() == 0 && m_checkable && m_model
        && isCheckable(m_model->uidForIndex(mapToSource(index))))
        result |= Qt::ItemIsUserCheckable;
    return result;
}

void ObjectTreeProxy::beforeRowsInserted(const QModelIndex &parent, int first, int last)
{
    if (m_countsDirty)
        return;
    for (int row = first; row <= last; ++row) {
        QVector<const Node *> pending{m_model->nodeAt(row, parent)};
        while (!pending.isEmpty()) {
            const Node *node = pending.takeLast();
            if (!node)
                continue;
            if (matchesSelf(node)) {
                m_matched.insert(node->info.uid);
                countMatch(node->info.uid, 1);
            }
            for (const Node *child : node->children)
                pending.append(child);
        }
    }
}

void ObjectTreeProxy::beforeRowsRemoved(const QModelIndex &parent, int first, int last)
{
    QSet<TYPE_ID> gone;
    for (int row = first; row <= last; ++row) {
        const TYPE_ID uid = m_model->uidForIndex(m_model->index(row, 0, parent));
        gone.insert(uid);
        const QList<TYPE_ID> below = m_model->childKeys(uid);
        gone.unite(QSet<TYPE_ID>(below.cbegin(), below.cend()));
    }
    // Checks of objects that are gone go with them.
    const QSet<TYPE_ID> uncheck = gone & m_checked;
    m_checked.subtract(uncheck);
    structureChanged();
    if (!uncheck.isEmpty())
        emit checkedChanged();
}

void ObjectTreeProxy::beforeDataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight)
{
    if (m_countsDirty || topLeft.column() > 1)
        return;
    for (int row = topLeft.row(); row <= bottomRight.row(); ++row) {
        const Node *node = m_model->nodeAt(row, topLeft.parent());
        if (!node)
            continue;
        const bool was = m_matched.contains(node->info.uid);
        const bool now = matchesSelf(node);
        if (was == now)
            continue;
        if (now)
            m_matched.insert(node->info.uid);
        else
            m_matched.remove(node->info.uid);
        countMatch(node->info.uid, now ? 1 : -1);
    }
}

void ObjectTreeProxy::dropChecksOfMissing()
{
    // Checks name objects of the model: those it no longer holds, or a model no longer
    // shown, would otherwise come back in checked() unseen.
    QSet<TYPE_ID> gone;
    for (TYPE_ID uid : qAsConst(m_checked)) {
        if (!m_model || !m_model->contains(uid))
            gone.insert(uid);
    }
    if (gone.isEmpty())
        return;
    m_checked.subtract(gone);
    m_checkCountsDirty = true;
    emit checkedChanged();
}

void ObjectTreeProxy::forgetCounts()
{
    // The base class filters every row anew after a reset or a new layout.
    m_countsDirty = true;
    m_checkCountsDirty = true;
}

void ObjectTreeProxy::structureChanged()
{
    forgetCounts();
    if (usesCounts())
        m_refilterAfterChange = true;
}

void ObjectTreeProxy::afterChange()
{
    if (!m_refilterAfterChange)
        return;
    m_refilterAfterChange = false;
    invalidateFilter();
}
