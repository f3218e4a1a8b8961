#pragma once

#include <host/gui/models/searchcorpus.h>
#include <shared/objectinfo.h>
#include <shared/types.h>

#include <QAbstractItemModel>
#include <QHash>
#include <QIcon>
#include <QStringList>
#include <QVector>

// A tree of the store's objects, keyed by uid and built by each object's parent. A child
// that arrives before its parent waits at the top level and moves under the parent when
// that comes; it goes back to the top level when its parent is removed. Every lookup by
// uid goes through an index, so no operation scans the tree.
//
// Column 0 shows the uid, column 1 the type. In column 0, role 257 gives the parameters as
// a QVariantHash, role 258 the object's name (unless a screen set another text) and the
// decoration role the icon of the type. Other columns and roles hold what setData stores.
class ObjectTreeModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    // One object in the tree. Exposed read-only so that the proxies above can filter and
    // sort on the prepared texts without going through QVariant.
    struct Node
    {
        zeral::ObjectInfo info;
        Node *parent = nullptr;
        int row = 0;
        QVector<Node *> children;
        QString name;       // role 258 of column 0
        QString sortKey;    // the name, case-folded
        QString searchText; // the name and the identifying parameters, case-folded
        bool nameSet = false;
        // What setData stored, by column and role: a handful per row, where a short list
        // costs a fraction of a hash, for each of 100,000 rows.
        QVector<QPair<quint64, QVariant>> values;
        const QVariant *value(quint64 key) const;
        QVariant &valueRef(quint64 key);
    };

    explicit ObjectTreeModel(QObject *parent = nullptr);
    ~ObjectTreeModel() override;

    void setColumnCount(int columns);
    void setHorizontalHeaderLabels(const QStringList &labels);

    // Adds the object, or updates the row of its uid; the index of column 0 of its row.
    QModelIndex add(const zeral::ObjectInfo &object);
    // The same for many objects at once, with as few signals as the tree allows.
    void add(const QList<zeral::ObjectInfo> &objects);

    // A value of a row's cell, as setData() would store it.
    struct CellValue
    {
        int column = 0;
        int role = Qt::EditRole;
        QVariant value;
    };
    using RowValues = QVector<CellValue>;
    // Adds or updates the objects together with the values of their cells (`values` parallel
    // to `objects`). New rows come with their values already in place, so that a sorted or
    // filtering proxy places each one once; a row that was there gets setData() per value.
    void add(const QList<zeral::ObjectInfo> &objects, const QVector<RowValues> &values);
    // Sets one column's value in a role for many rows and announces each block of changed
    // sibling rows once, as a range; uids the model doesn't hold are skipped.
    void setColumnValues(int column, int role, const QHash<zeral::TYPE_ID, QVariant> &values);
    // Removes the row of the uid; its children wait at the top level for it to come back.
    void remove(zeral::TYPE_ID uid);
    void clear();

    bool contains(zeral::TYPE_ID uid) const { return m_nodes.contains(uid); }
    QModelIndex indexForUid(zeral::TYPE_ID uid, int column = 0) const;
    zeral::TYPE_ID uidForIndex(const QModelIndex &index) const;
    // The object of a row; a default one for a uid the model doesn't hold.
    const zeral::ObjectInfo &constInfo(zeral::TYPE_ID uid) const;
    QList<zeral::TYPE_ID> uniqueKeys() const { return m_nodes.keys(); }
    // The uids below an object at all depths, and above it, the nearest first.
    QList<zeral::TYPE_ID> childKeys(zeral::TYPE_ID uid) const;
    QList<zeral::TYPE_ID> parentKeys(zeral::TYPE_ID uid) const;

    // For the proxies.
    const Node *node(zeral::TYPE_ID uid) const { return m_nodes.value(uid); }
    const Node *nodeAt(int row, const QModelIndex &parent) const;
    const Node *nodeFor(const QModelIndex &index) const { return nodeOf(index); }
    const Node *rootNode() const { return &m_root; }
    const QHash<zeral::TYPE_ID, Node *> &nodes() const { return m_nodes; }
    // The uids whose search text (or sort key) contains a case-folded word, in one pass over
    // all the texts at once.
    enum class SearchedText { SearchText, SortKey };
    QVector<zeral::TYPE_ID> uidsContaining(const QString &foldedWord, SearchedText which) const;

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    bool hasChildren(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    bool setHeaderData(int section, Qt::Orientation orientation, const QVariant &value,
                       int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    Node *nodeOf(const QModelIndex &index) const;
    QModelIndex indexOf(const Node *node, int column = 0) const;
    void prepareTexts(Node *node);
    Node *makeNode(const zeral::ObjectInfo &object);
    // Stores a value without a signal; true if it changed. Column 0's role 258 is the name.
    bool storeValue(Node *node, int column, int role, const QVariant &value);
    // The node the object belongs under: its parent, or the root while that is missing.
    Node *placeFor(const zeral::ObjectInfo &object, const Node *self) const;
    void attach(Node *node, Node *parent);
    void detach(Node *node);
    void moveNode(Node *node, Node *newParent);
    void adoptWaiting(Node *parent);
    void forgetWaiting(Node *node);
    static bool isInside(const Node *node, const Node *ancestor);
    void update(Node *node, const zeral::ObjectInfo &object);
    void deleteTree(Node *node);

    Node m_root;
    QHash<zeral::TYPE_ID, Node *> m_nodes;
    // While add() with values runs: the values of the rows it makes, by uid.
    const QHash<zeral::TYPE_ID, const RowValues *> *m_pendingValues = nullptr;
    // Children that came before their parent, by the uid of the parent they wait for.
    QHash<zeral::TYPE_ID, QVector<Node *>> m_waiting;
    int m_columnCount = 2;
    QHash<quint64, QVariant> m_headers;    // by section and role
    mutable QHash<QString, QIcon> m_icons; // by type: a theme lookup is slow
    // Every node's search text and sort key, kept current with the nodes.
    SearchCorpus m_searchCorpus;
    SearchCorpus m_sortKeyCorpus;
};
