#include "objecttreemodel.h"

#include "itemroles.h"

#include <host/core/zrglobals.h>
#include <host/gui/widgets/zrguiglobals.h>
#include <shared/dbkeys.h>

#include <QLoggingCategory>

#include <algorithm>
#include <functional>
#include <iterator>

namespace {

Q_LOGGING_CATEGORY(lcModels, "zr.host.gui.models")

using zeral::ObjectInfo;
using zeral::TYPE_ID;

// Parameters that identify an object to a person searching for it.
constexpr const char *searchedKeysList[]
    = {db::user::LOGIN,      db::user::SURNAME, db::user::NAME,
       db::user::PATRONYMIC, db::worker::EMAIL, db::worker::WORKERNUM};
constexpr std::size_t searchedKeyCount = std::size(searchedKeysList);

// The same as QStrings, made once: every object added looks them up.
const QString *searchedKeys()
{
    static const QString keys[searchedKeyCount]
        = {QLatin1String(searchedKeysList[0]), QLatin1String(searchedKeysList[1]),
           QLatin1String(searchedKeysList[2]), QLatin1String(searchedKeysList[3]),
           QLatin1String(searchedKeysList[4]), QLatin1String(searchedKeysList[5])};
    return keys;
}

// Display and edit are one value, as in QStandardItemModel.
int storedRole(int role)
{
    return role == Qt::EditRole ? Qt::DisplayRole : role;
}

// The roles a change of a value in `role` is announced with: display and edit together.
QVector<int> announcedRoles(int role)
{
    return storedRole(role) == Qt::DisplayRole ? QVector<int>{Qt::DisplayRole, Qt::EditRole}
                                               : QVector<int>{role};
}

quint64 valueKey(int column, int role)
{
    return (quint64(quint32(column)) << 32) | quint32(storedRole(role));
}

} // namespace

ObjectTreeModel::ObjectTreeModel(QObject *parent)
    : QAbstractItemModel(parent)
{}

ObjectTreeModel::~ObjectTreeModel()
{
    for (Node *child : qAsConst(m_root.children))
        deleteTree(child);
}

void ObjectTreeModel::deleteTree(Node *node)
{
    for (Node *child : qAsConst(node->children))
        deleteTree(child);
    delete node;
}

void ObjectTreeModel::setColumnCount(int columns)
{
    columns = std::max(columns, 2);
    if (columns == m_columnCount)
        return;
    if (columns > m_columnCount) {
        beginInsertColumns({}, m_columnCount, columns - 1);
        m_columnCount = columns;
        endInsertColumns();
    } else {
        beginRemoveColumns({}, columns, m_columnCount - 1);
        m_columnCount = columns;
        endRemoveColumns();
    }
}

void ObjectTreeModel::setHorizontalHeaderLabels(const QStringList &labels)
{
    if (labels.size() > m_columnCount)
        setColumnCount(labels.size());
    for (int section = 0; section < labels.size(); ++section)
        m_headers.insert(valueKey(section, Qt::DisplayRole), labels.at(section));
    if (!labels.isEmpty())
        emit headerDataChanged(Qt::Horizontal, 0, labels.size() - 1);
}

void ObjectTreeModel::prepareTexts(Node *node)
{
    if (!node->nameSet)
        node->name = ZRGlobals::objectName(node->info);
    QString &text = m_searchScratch;
    text.resize(0);
    text += node->name;
    const auto &parameters = node->info.parameters;
    for (std::size_t i = 0; i < searchedKeyCount; ++i) {
        const auto value = parameters.constFind(searchedKeys()[i]);
        // A value that is the name itself (a user's login) is there already: 2.6 MB on
        // 100,000 users.
        if (value != parameters.cend() && !value->isEmpty() && *value != node->name)
            text += QLatin1Char('\n') + *value;
    }
    text = SearchCorpus::fold(std::move(text));
    // Case folding maps each UTF-16 unit to one: the sort key is the search text's beginning.
    node->sortKeyLength = node->name.size();
    node->sortPrefix = 0;
    for (int i = 0; i < 4; ++i) {
        const ushort unit = i < node->sortKeyLength ? text.at(i).unicode() : 0;
        node->sortPrefix = (node->sortPrefix << 16) | unit;
    }
    node->searchLength = text.size();
    node->searchStart = m_searchCorpus.set(node->info.uid, text);
    if (m_searchCorpus.layout() != m_searchLayout) {
        // Compacted: every node's text has moved.
        m_searchLayout = m_searchCorpus.layout();
        for (Node *other : qAsConst(m_nodes))
            other->searchStart = m_searchCorpus.startOf(other->info.uid);
    }
    if (m_sortKeyCorpusMade)
        m_sortKeyCorpus.set(node->info.uid, sortKey(*node));
}

void ObjectTreeModel::setCodedParameter(const QString &key)
{
    if (key == m_codedKey)
        return;
    m_codedKey = key;
    for (Node *node : qAsConst(m_nodes))
        setCode(node);
}

void ObjectTreeModel::setCode(Node *node)
{
    if (m_codedKey.isEmpty()) {
        node->code = -1;
        return;
    }
    const QString text = node->info.parameters.value(m_codedKey);
    auto code = m_codes.find(text);
    if (code == m_codes.end()) {
        code = m_codes.insert(text, m_codeTexts.size());
        m_codeTexts.append(text);
    }
    node->code = code.value();
}

QVector<TYPE_ID> ObjectTreeModel::uidsContaining(const QString &foldedWord,
                                                 SearchedText which) const
{
    if (which == SearchedText::SearchText)
        return m_searchCorpus.find(foldedWord);
    if (!m_sortKeyCorpusMade) {
        for (const Node *node : m_nodes)
            m_sortKeyCorpus.set(node->info.uid, sortKey(*node));
        m_sortKeyCorpusMade = true;
    }
    return m_sortKeyCorpus.find(foldedWord);
}

// From the back: a row may have come with a cell twice, and the later value counts.
const QVariant *ObjectTreeModel::Node::value(int column, int role) const
{
    for (auto cell = values.crbegin(); cell != values.crend(); ++cell) {
        if (cell->column == column && cell->role == role)
            return &cell->value;
    }
    return nullptr;
}

QVariant &ObjectTreeModel::Node::valueRef(int column, int role)
{
    for (auto cell = values.rbegin(); cell != values.rend(); ++cell) {
        if (cell->column == column && cell->role == role)
            return cell->value;
    }
    values.append({column, role, QVariant()});
    return values.last().value;
}

ObjectTreeModel::Node *ObjectTreeModel::makeNode(const ObjectInfo &object, RowValues *values)
{
    auto *node = new Node;
    node->info = object;
    if (values) {
        // The row's list becomes the node's; column 0's role 258 is the name, kept apart, and
        // a derived cell is not stored.
        node->values = std::move(*values);
        bool apart = false;
        for (CellValue &cell : node->values) {
            cell.role = storedRole(cell.role);
            if (cell.column == 0 && cell.role == ItemRoles::SortText) {
                node->name = cell.value.toString();
                node->nameSet = true;
                apart = true;
            } else if (!m_derived.isEmpty() && derivedCell(cell.column, cell.role)) {
                apart = true;
            }
        }
        if (apart) {
            node->values.erase(std::remove_if(node->values.begin(), node->values.end(),
                                              [this](const CellValue &cell) {
                                                  return (cell.column == 0
                                                          && cell.role == ItemRoles::SortText)
                                                         || derivedCell(cell.column, cell.role);
                                              }),
                               node->values.end());
        }
    }
    prepareTexts(node);
    setCode(node);
    m_nodes.insert(object.uid, node);
    return node;
}

bool ObjectTreeModel::storeValue(Node *node, int column, int role, const QVariant &value)
{
    if (column == 0 && role == ItemRoles::SortText) {
        const QString name = value.toString();
        node->nameSet = true;
        if (name == node->name)
            return false;
        node->name = name;
        return true;
    }
    if (derivedCell(column, storedRole(role)))
        return false;
    QVariant &stored = node->valueRef(column, storedRole(role));
    // Validity first: comparing a new, empty value with a text would try conversions.
    if (stored.isValid() && stored == value)
        return false;
    stored = value;
    return true;
}

bool ObjectTreeModel::isInside(const Node *node, const Node *ancestor)
{
    for (const Node *it = node; it; it = it->parent) {
        if (it == ancestor)
            return true;
    }
    return false;
}

ObjectTreeModel::Node *ObjectTreeModel::placeFor(const ObjectInfo &object, const Node *self) const
{
    if (object.parent == 0 || object.parent == object.uid)
        return const_cast<Node *>(&m_root);
    Node *parent = m_nodes.value(object.parent);
    if (!parent)
        return const_cast<Node *>(&m_root);
    if (self && isInside(parent, self)) {
        qCWarning(lcModels) << "object would be its own ancestor, kept at the top level"
                            << object.uid << object.parent;
        return const_cast<Node *>(&m_root);
    }
    return parent;
}

void ObjectTreeModel::attach(Node *node, Node *parent)
{
    node->parent = parent;
    node->row = parent->children.size();
    parent->children.append(node);
    if (parent == &m_root && node->info.parent != 0 && node->info.parent != node->info.uid)
        m_waiting[node->info.parent].append(node);
}

void ObjectTreeModel::forgetWaiting(Node *node)
{
    const auto it = m_waiting.find(node->info.parent);
    if (it == m_waiting.end())
        return;
    it->removeOne(node);
    if (it->isEmpty())
        m_waiting.erase(it);
}

void ObjectTreeModel::detach(Node *node)
{
    Node *parent = node->parent;
    if (parent == &m_root)
        forgetWaiting(node);
    parent->children.remove(node->row);
    for (int row = node->row; row < parent->children.size(); ++row)
        parent->children[row]->row = row;
    node->parent = nullptr;
}

void ObjectTreeModel::moveNode(Node *node, Node *newParent)
{
    const QModelIndex from = indexOf(node->parent);
    const QModelIndex to = indexOf(newParent);
    if (!beginMoveRows(from, node->row, node->row, to, newParent->children.size()))
        return;
    detach(node);
    attach(node, newParent);
    endMoveRows();
}

void ObjectTreeModel::adoptWaiting(Node *parent)
{
    const QVector<Node *> waiting = m_waiting.value(parent->info.uid);
    for (Node *child : waiting) {
        if (!isInside(parent, child))
            moveNode(child, parent);
    }
}

QModelIndex ObjectTreeModel::add(const ObjectInfo &object)
{
    if (Node *node = m_nodes.value(object.uid)) {
        update(node, object);
        return indexOf(node);
    }
    Node *parent = placeFor(object, nullptr);
    const int row = parent->children.size();
    beginInsertRows(indexOf(parent), row, row);
    Node *node = makeNode(object, nullptr);
    attach(node, parent);
    endInsertRows();
    adoptWaiting(node);
    return indexOf(node);
}

void ObjectTreeModel::update(Node *node, const ObjectInfo &object)
{
    const bool typeChanged = node->info.type != object.type;
    const QString oldName = node->name;
    const bool parentChanged = node->info.parent != object.parent;
    if (parentChanged && node->parent == &m_root)
        forgetWaiting(node);
    QVector<QVariant> derivedBefore;
    derivedBefore.reserve(m_derived.size());
    for (const DerivedCell &cell : qAsConst(m_derived))
        derivedBefore.append(cell.valueOf(*node));
    node->info = object;
    prepareTexts(node);
    setCode(node);
    if (parentChanged) {
        Node *place = placeFor(object, node);
        if (place != node->parent)
            moveNode(node, place);
        else if (place == &m_root && object.parent != 0 && object.parent != object.uid)
            m_waiting[object.parent].append(node);
    }
    // Only the cells and roles that changed: a sorted proxy then doesn't re-sort for nothing,
    // and a view repaints one cell (a range of cells would repaint its whole viewport).
    QVector<int> roles = {ItemRoles::Parameters};
    if (node->name != oldName)
        roles << ItemRoles::SortText;
    if (typeChanged) {
        m_icons.remove(object.type);
        roles << Qt::DecorationRole;
    }
    const QModelIndex first = indexOf(node, 0);
    emit dataChanged(first, first, roles);
    if (typeChanged) {
        const QModelIndex typeCell = indexOf(node, 1);
        emit dataChanged(typeCell, typeCell, {Qt::DisplayRole, Qt::EditRole});
    }
    for (int i = 0; i < m_derived.size(); ++i) {
        const DerivedCell &cell = m_derived.at(i);
        if (cell.valueOf(*node) == derivedBefore.at(i))
            continue;
        const QModelIndex changed = indexOf(node, cell.column);
        emit dataChanged(changed, changed, announcedRoles(cell.role));
    }
}

void ObjectTreeModel::add(const QList<ObjectInfo> &objects)
{
    QVector<Arrival> fresh;
    for (const ObjectInfo &object : objects) {
        if (Node *node = m_nodes.value(object.uid))
            update(node, object);
        else
            fresh.append({&object, nullptr});
    }
    addNew(fresh);
}

void ObjectTreeModel::add(QVector<Row> rows)
{
    QVector<Arrival> fresh;
    for (Row &row : rows) {
        if (!m_nodes.contains(row.object->uid)) {
            fresh.append({row.object, &row.values});
            continue;
        }
        const QModelIndex index = add(*row.object);
        for (const CellValue &cell : qAsConst(row.values))
            setData(index.siblingAtColumn(cell.column), cell.value, cell.role);
    }
    addNew(fresh);
}

void ObjectTreeModel::addNew(const QVector<Arrival> &arrivals)
{
    if (arrivals.isEmpty())
        return;
    // The arrivals by uid, in the order of the uids; the last of a uid given twice wins. A
    // sorted list rather than a hash: on 100,000 arrivals it takes a fifth of the memory.
    QVector<QPair<TYPE_ID, int>> fresh;
    fresh.reserve(arrivals.size());
    for (int i = 0; i < arrivals.size(); ++i)
        fresh.append({arrivals.at(i).object->uid, i});
    const auto byUid = [](const QPair<TYPE_ID, int> &a, const QPair<TYPE_ID, int> &b) {
        return a.first < b.first;
    };
    std::stable_sort(fresh.begin(), fresh.end(), byUid);
    const auto lastOfEach
        = std::unique(fresh.rbegin(), fresh.rend(),
                      [](const QPair<TYPE_ID, int> &a, const QPair<TYPE_ID, int> &b) {
                          return a.first == b.first;
                      });
    fresh.erase(fresh.begin(), lastOfEach.base());
    const auto isFresh = [&fresh, &byUid](TYPE_ID uid) {
        return std::binary_search(fresh.cbegin(), fresh.cend(), qMakePair(uid, 0), byUid);
    };
    // The new objects form a forest below existing nodes: children by parent uid.
    QHash<TYPE_ID, QVector<int>> freshChildren;
    for (auto it = fresh.cbegin(); it != fresh.cend(); ++it) {
        const ObjectInfo &object = *arrivals.at(it->second).object;
        if (object.parent != 0 && object.parent != object.uid && isFresh(object.parent))
            freshChildren[object.parent].append(it->second);
    }
    // Siblings keep the order in which they came.
    for (auto it = freshChildren.begin(); it != freshChildren.end(); ++it)
        std::sort(it->begin(), it->end());
    // Builds the subtree of one new object below `parent`, without signals.
    std::function<void(int, Node *)> build = [&](int at, Node *parent) {
        const Arrival &arrival = arrivals.at(at);
        if (m_nodes.contains(arrival.object->uid))
            return; // a cycle among the new objects: already placed
        Node *node = makeNode(*arrival.object, arrival.values);
        attach(node, parent);
        for (int child : freshChildren.value(arrival.object->uid))
            build(child, node);
    };
    // The roots of that forest, grouped by the node they join.
    QHash<Node *, QVector<int>> groups;
    QVector<Node *> order;
    for (auto it = fresh.cbegin(); it != fresh.cend(); ++it) {
        const ObjectInfo &object = *arrivals.at(it->second).object;
        if (object.parent != 0 && object.parent != object.uid && isFresh(object.parent))
            continue; // built with its parent
        Node *place = placeFor(object, nullptr);
        if (!groups.contains(place))
            order << place;
        groups[place].append(it->second);
    }
    const bool reset = m_nodes.isEmpty();
    if (reset)
        beginResetModel();
    for (Node *place : qAsConst(order)) {
        QVector<int> roots = groups.value(place);
        // Keep the order in which the objects came.
        std::sort(roots.begin(), roots.end());
        const int first = place->children.size();
        if (!reset)
            beginInsertRows(indexOf(place), first, first + roots.size() - 1);
        for (int at : qAsConst(roots))
            build(at, place);
        if (!reset)
            endInsertRows();
    }
    // Objects caught in a parent cycle among themselves wait at the top level.
    QVector<int> left;
    for (auto it = fresh.cbegin(); it != fresh.cend(); ++it) {
        if (!m_nodes.contains(it->first))
            left << it->second;
    }
    std::sort(left.begin(), left.end());
    for (int at : qAsConst(left)) {
        if (m_nodes.contains(arrivals.at(at).object->uid))
            continue;
        const int row = m_root.children.size();
        if (!reset)
            beginInsertRows({}, row, row);
        build(at, &m_root);
        if (!reset)
            endInsertRows();
    }
    if (reset)
        endResetModel();
    for (auto it = fresh.cbegin(); it != fresh.cend(); ++it) {
        if (m_waiting.contains(it->first))
            adoptWaiting(m_nodes.value(it->first));
    }
}

void ObjectTreeModel::setDerivedCell(int column, int role,
                                     std::function<QVariant(const Node &)> valueOf)
{
    m_derived.append({column, storedRole(role), std::move(valueOf)});
}

void ObjectTreeModel::announceColumn(int column, int role)
{
    const QVector<int> roles = announcedRoles(role);
    QVector<const Node *> parents{&m_root};
    while (!parents.isEmpty()) {
        const Node *parent = parents.takeLast();
        if (parent->children.isEmpty())
            continue;
        const QModelIndex parentIndex = indexOf(parent);
        emit dataChanged(index(0, column, parentIndex),
                         index(parent->children.size() - 1, column, parentIndex), roles);
        for (const Node *child : parent->children)
            parents.append(child);
    }
}

const ObjectTreeModel::DerivedCell *ObjectTreeModel::derivedCell(int column, int role) const
{
    for (const DerivedCell &cell : m_derived) {
        if (cell.column == column && cell.role == role)
            return &cell;
    }
    return nullptr;
}

void ObjectTreeModel::remove(TYPE_ID uid)
{
    Node *node = m_nodes.value(uid);
    if (!node)
        return;
    // The children wait at the top level for their parent to come back.
    if (!node->children.isEmpty()) {
        const int count = node->children.size();
        const int first = m_root.children.size();
        if (beginMoveRows(indexOf(node), 0, count - 1, {}, first)) {
            const QVector<Node *> children = std::exchange(node->children, {});
            for (Node *child : children)
                attach(child, &m_root);
            endMoveRows();
        }
    }
    const QModelIndex parent = indexOf(node->parent);
    beginRemoveRows(parent, node->row, node->row);
    detach(node);
    m_nodes.remove(uid);
    m_searchCorpus.remove(uid);
    m_sortKeyCorpus.remove(uid);
    delete node;
    endRemoveRows();
}

void ObjectTreeModel::clear()
{
    beginResetModel();
    for (Node *child : qAsConst(m_root.children))
        deleteTree(child);
    m_root.children.clear();
    m_nodes.clear();
    m_waiting.clear();
    m_searchCorpus.clear();
    m_sortKeyCorpus.clear();
    m_sortKeyCorpusMade = false;
    endResetModel();
}

QModelIndex ObjectTreeModel::indexForUid(TYPE_ID uid, int column) const
{
    const Node *node = m_nodes.value(uid);
    return node ? indexOf(node, column) : QModelIndex();
}

TYPE_ID ObjectTreeModel::uidForIndex(const QModelIndex &index) const
{
    const Node *node = nodeOf(index);
    return node ? node->info.uid : 0;
}

const ObjectInfo &ObjectTreeModel::constInfo(TYPE_ID uid) const
{
    static const ObjectInfo missing;
    const Node *node = m_nodes.value(uid);
    return node ? node->info : missing;
}

QList<TYPE_ID> ObjectTreeModel::childKeys(TYPE_ID uid) const
{
    QList<TYPE_ID> keys;
    const Node *node = m_nodes.value(uid);
    if (!node)
        return keys;
    QVector<const Node *> pending(node->children.cbegin(), node->children.cend());
    while (!pending.isEmpty()) {
        const Node *next = pending.takeLast();
        keys.append(next->info.uid);
        for (const Node *child : next->children)
            pending.append(child);
    }
    return keys;
}

QList<TYPE_ID> ObjectTreeModel::parentKeys(TYPE_ID uid) const
{
    QList<TYPE_ID> keys;
    const Node *node = m_nodes.value(uid);
    for (const Node *it = node ? node->parent : nullptr; it && it != &m_root; it = it->parent)
        keys.append(it->info.uid);
    return keys;
}

ObjectTreeModel::Node *ObjectTreeModel::nodeOf(const QModelIndex &index) const
{
    if (!index.isValid() || index.model() != this)
        return nullptr;
    return static_cast<Node *>(index.internalPointer());
}

QModelIndex ObjectTreeModel::indexOf(const Node *node, int column) const
{
    if (!node || node == &m_root)
        return {};
    return createIndex(node->row, column, const_cast<Node *>(node));
}

const ObjectTreeModel::Node *ObjectTreeModel::nodeAt(int row, const QModelIndex &parent) const
{
    const Node *parentNode = parent.isValid() ? nodeOf(parent) : &m_root;
    if (!parentNode || row < 0 || row >= parentNode->children.size())
        return nullptr;
    return parentNode->children.at(row);
}

QModelIndex ObjectTreeModel::index(int row, int column, const QModelIndex &parent) const
{
    if (column < 0 || column >= m_columnCount)
        return {};
    const Node *node = nodeAt(row, parent);
    return node ? createIndex(row, column, const_cast<Node *>(node)) : QModelIndex();
}

QModelIndex ObjectTreeModel::parent(const QModelIndex &child) const
{
    const Node *node = nodeOf(child);
    return node ? indexOf(node->parent) : QModelIndex();
}

int ObjectTreeModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return m_root.children.size();
    if (parent.column() != 0)
        return 0;
    const Node *node = nodeOf(parent);
    return node ? node->children.size() : 0;
}

int ObjectTreeModel::columnCount(const QModelIndex &) const
{
    return m_columnCount;
}

bool ObjectTreeModel::hasChildren(const QModelIndex &parent) const
{
    return rowCount(parent) > 0;
}

QVariant ObjectTreeModel::data(const QModelIndex &index, int role) const
{
    const Node *node = nodeOf(index);
    if (!node)
        return {};
    const int column = index.column();
    if (column == 0) {
        switch (role) {
        case Qt::DisplayRole:
        case Qt::EditRole:
            return node->info.uid;
        case ItemRoles::Parameters: {
            QVariantHash parameters;
            parameters.reserve(node->info.parameters.size());
            for (auto it = node->info.parameters.cbegin(); it != node->info.parameters.cend(); ++it)
                parameters.insert(it.key(), it.value());
            return parameters;
        }
        case ItemRoles::SortText:
            return node->name;
        case Qt::DecorationRole: {
            if (const QVariant *stored = node->value(0, role))
                return *stored;
            auto icon = m_icons.find(node->info.type);
            if (icon == m_icons.end())
                icon = m_icons.insert(node->info.type, ZRGuiGlobals::objectIcon(node->info.type));
            return *icon;
        }
        default:
            break;
        }
    } else if (column == 1 && (role == Qt::DisplayRole || role == Qt::EditRole)) {
        return node->info.type;
    }
    if (const DerivedCell *cell = derivedCell(column, storedRole(role)))
        return cell->valueOf(*node);
    const QVariant *stored = node->value(column, storedRole(role));
    return stored ? *stored : QVariant();
}

bool ObjectTreeModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    Node *node = nodeOf(index);
    if (!node)
        return false;
    const int column = index.column();
    const bool display = role == Qt::DisplayRole || role == Qt::EditRole;
    // The uid, the type and the parameters belong to the object, not to the screen.
    if ((column == 0 && (display || role == ItemRoles::Parameters)) || (column == 1 && display)
        || derivedCell(column, storedRole(role)))
        return false;
    if (!storeValue(node, column, role, value))
        return true;
    if (column == 0 && role == ItemRoles::SortText)
        prepareTexts(node);
    emit dataChanged(index, index, announcedRoles(role));
    return true;
}

QVariant ObjectTreeModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && section >= 0 && section < m_columnCount) {
        const auto it = m_headers.constFind(valueKey(section, role));
        if (it != m_headers.cend())
            return *it;
    }
    return QAbstractItemModel::headerData(section, orientation, role);
}

bool ObjectTreeModel::setHeaderData(int section, Qt::Orientation orientation, const QVariant &value,
                                    int role)
{
    if (orientation != Qt::Horizontal || section < 0 || section >= m_columnCount)
        return false;
    m_headers.insert(valueKey(section, role), value);
    emit headerDataChanged(orientation, section, section);
    return true;
}

Qt::ItemFlags ObjectTreeModel::flags(const QModelIndex &index) const
{
    if (!nodeOf(index))
        return Qt::NoItemFlags;
    Qt::ItemFlags result = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (index.column() >= 2)
        result |= Qt::ItemIsEditable;
    return result;
}
