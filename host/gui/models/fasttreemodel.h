#pragma once

#include <QAbstractItemModel>
#include <QHash>
#include <QVector>

// A light tree of named items keyed by text, such as the catalogue of roles: column 0
// shows the title, column 1 the key. Role 256 gives the key, role 259 the item's place in
// the order it was given, so that a view sorted on it keeps that order.
class FastTreeModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    struct Item
    {
        QString key;
        QString title;
        QString parentKey; // empty, or unknown, for a top-level item
    };

    explicit FastTreeModel(QObject *parent = nullptr);
    ~FastTreeModel() override;

    // Replaces all items; a parent may come after its children.
    void setItems(const QVector<Item> &items);
    void clear() { setItems({}); }

    QModelIndex indexForKey(const QString &key, int column = 0) const;
    QString keyForIndex(const QModelIndex &index) const;
    bool contains(const QString &key) const { return m_nodes.contains(key); }
    // The keys below an item at all depths; of the whole tree for an empty key.
    QStringList childKeys(const QString &key) const;

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    struct Node
    {
        Item item;
        int order = 0;
        int row = 0;
        Node *parent = nullptr;
        QVector<Node *> children;
    };
    Node *nodeOf(const QModelIndex &index) const;
    QModelIndex indexOf(const Node *node, int column) const;
    void deleteAll();

    Node m_root;
    QHash<QString, Node *> m_nodes;
};
