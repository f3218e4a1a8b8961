#include "fasttreemodel.h"

#include "itemroles.h"

FastTreeModel::FastTreeModel(QObject *parent)
    : QAbstractItemModel(parent)
{}

FastTreeModel::~FastTreeModel()
{
    deleteAll();
}

void FastTreeModel::deleteAll()
{
    qDeleteAll(m_nodes);
    m_nodes.clear();
    m_root.children.clear();
}

void FastTreeModel::setItems(const QVector<Item> &items)
{
    beginResetModel();
    deleteAll();
    QVector<Node *> created;
    for (const Item &item : items) {
        if (item.key.isEmpty() || m_nodes.contains(item.key))
            continue;
        auto *node = new Node{item, created.size(), 0, nullptr, {}};
        m_nodes.insert(item.key, node);
        created.append(node);
    }
    for (Node *node : qAsConst(created)) {
        Node *parent = m_nodes.value(node->item.parentKey, &m_root);
        // A parent that is its own descendant would make a loop: such an item stays on top.
        for (const Node *it = parent; it && it != &m_root; it = it->parent) {
            if (it == node) {
                parent = &m_root;
                break;
            }
        }
        node->parent = parent;
        node->row = parent->children.size();
        parent->children.append(node);
    }
    endResetModel();
}

QModelIndex FastTreeModel::indexForKey(const QString &key, int column) const
{
    return indexOf(m_nodes.value(key), column);
}

QString FastTreeModel::keyForIndex(const QModelIndex &index) const
{
    const Node *node = nodeOf(index);
    return node ? node->item.key : QString();
}

QStringList FastTreeModel::childKeys(const QString &key) const
{
    QStringList keys;
    const Node *from = key.isEmpty() ? &m_root : m_nodes.value(key);
    if (!from)
        return keys;
    QVector<const Node *> pending(from->children.cbegin(), from->children.cend());
    while (!pending.isEmpty()) {
        const Node *node = pending.takeLast();
        keys.append(node->item.key);
        for (const Node *child : node->children)
            pending.append(child);
    }
    return keys;
}

FastTreeModel::Node *FastTreeModel::nodeOf(const QModelIndex &index) const
{
    if (!index.isValid() || index.model() != this)
        return nullptr;
    return static_cast<Node *>(index.internalPointer());
}

QModelIndex FastTreeModel::indexOf(const Node *node, int column) const
{
    if (!node || node == &m_root)
        return {};
    return createIndex(node->row, column, const_cast<Node *>(node));
}

QModelIndex FastTreeModel::index(int row, int column, const QModelIndex &parent) const
{
    const Node *parentNode = parent.isValid() ? nodeOf(parent) : &m_root;
    if (!parentNode || row < 0 || row >= parentNode->children.size() || column < 0 || column >= 2)
        return {};
    return indexOf(parentNode->children.at(row), column);
}

QModelIndex FastTreeModel::parent(const QModelIndex &child) const
{
    const Node *node = nodeOf(child);
    return node ? indexOf(node->parent, 0) : QModelIndex();
}

int FastTreeModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return m_root.children.size();
    const Node *node = nodeOf(parent);
    return node && parent.column() == 0 ? node->children.size() : 0;
}

int FastTreeModel::columnCount(const QModelIndex &) const
{
    return 2;
}

QVariant FastTreeModel::data(const QModelIndex &index, int role) const
{
    const Node *node = nodeOf(index);
    if (!node)
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return index.column() == 0 ? node->item.title : node->item.key;
    case ItemRoles::SelectorData:
        return node->item.key;
    case ItemRoles::CatalogueOrder:
        return node->order;
    default:
        return {};
    }
}

Qt::ItemFlags FastTreeModel::flags(const QModelIndex &index) const
{
    return nodeOf(index) ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::NoItemFlags;
}
