#pragma once

#include <host/gui/models/searchcorpus.h>
#include <shared/objectinfo.h>
#include <shared/types.h>

#include <QAbstractItemModel>
#include <QHash>
#include <QIcon>
#include <QStringList>
#include <QStringView>
#include <QVector>

#include <functional>

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
    // A value of a row's cell, as setData() would store it.
    struct CellValue
    {
        int column = 0;
        int role = Qt::EditRole;
        QVariant value;
    };
    using RowValues = QVector<CellValue>;

    // One object in the tree. Exposed read-only so that the proxies above can filter and
    // sort on the prepared texts without going through QVariant.
    struct Node
    {
        // The pointers and lists first and the numbers after them, without gaps: a node is
        // made for each of 100,000 rows.
        zeral::ObjectInfo info;
        Node *parent = nullptr;
        QVector<Node *> children;
        QString name; // role 258 of column 0
        // What setData stored, the edit role kept as the display role: a handful per row,
        // where a short list costs a fraction of a hash, for each of 100,000 rows.
        RowValues values;
        // The sort key's first four UTF-16 units, the first in the high bits, zeros past its
        // end: most comparisons end here, without reading two texts far apart in memory.
        quint64 sortPrefix = 0;
        int row = 0;
        // Where the model's search corpus keeps the name and the identifying parameters,
        // case-folded (searchText()): a copy in each node would be 14 MB on 100,000 users.
        int searchStart = 0;
        int searchLength = 0;
        int sortKeyLength = 0;
        // The coded parameter's value as its code (see setCodedParameter), -1 without one.
        int code = -1;
        bool nameSet = false;

        const QVariant *value(int column, int role) const;
        QVariant &valueRef(int column, int role);
    };

    explicit ObjectTreeModel(QObject *parent = nullptr);
    ~ObjectTreeModel() override;

    void setColumnCount(int columns);
    void setHorizontalHeaderLabels(const QStringList &labels);

    // Adds the object, or updates the row of its uid; the index of column 0 of its row.
    QModelIndex add(const zeral::ObjectInfo &object);
    // The same for many objects at once, with as few signals as the tree allows.
    void add(const QList<zeral::ObjectInfo> &objects);

    // An object with the values of its row's cells. The object is the caller's, read during
    // add() and copied into the node: a list of 100,000 rows then holds no second copy.
    struct Row
    {
        const zeral::ObjectInfo *object;
        RowValues values;
    };
    // Adds or updates the objects together with the values of their cells. New rows come
    // with their values already in place, so that a sorted or filtering proxy places each
    // one once; a row that was there gets setData() per value. The values are moved into
    // the rows, not copied: on 100,000 rows that is much of the work.
    void add(QVector<Row> rows);
    // A cell worked out from its node each time it is asked for, instead of stored: what a
    // column shows of an object's own parameters then costs no memory per row (on 100,000
    // rows, each stored cell is 2.4 MB). Such a cell can't be set; a change of its object
    // announces it when its value changed.
    void setDerivedCell(int column, int role, std::function<QVariant(const Node &)> valueOf);
    // Announces a column's cells in a role as changed in every row, the siblings of each
    // parent as one range: for derived cells whose function reads something besides the node.
    void announceColumn(int column, int role);
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

    // One parameter that a proxy filters many rows on, kept in each node as a small number,
    // the same for the same text: the proxy then decides once per text and reads the number
    // from the node at hand, instead of looking the text up in 100,000 objects' parameters.
    void setCodedParameter(const QString &key);
    const QString &codedParameter() const { return m_codedKey; }
    // The node's code of the value of `key`, or -1 unless `key` is the coded parameter.
    int codeOf(const Node &node, const QString &key) const
    {
        const bool coded = m_codedKey.isSharedWith(key) || m_codedKey == key;
        return coded ? node.code : -1;
    }
    // The text of a code; every code ever given keeps its text.
    QString codeText(int code) const { return m_codeTexts.value(code); }

    // For the proxies.
    const Node *node(zeral::TYPE_ID uid) const { return m_nodes.value(uid); }
    const Node *nodeAt(int row, const QModelIndex &parent) const;
    const Node *nodeFor(const QModelIndex &index) const { return nodeOf(index); }
    const Node *rootNode() const { return &m_root; }
    const QHash<zeral::TYPE_ID, Node *> &nodes() const { return m_nodes; }
    // A node's texts where the search corpus keeps them, made straight from the place,
    // without the bounds checks of mid(): the sort compares two of these millions of times.
    QStringView searchText(const Node &node) const { return textOf(node, node.searchLength); }
    // The name, case-folded: the beginning of the search text.
    QStringView sortKey(const Node &node) const { return textOf(node, node.sortKeyLength); }
    // Orders as sortKey(a).compare(sortKey(b)) does.
    int compareSortKeys(const Node &a, const Node &b) const
    {
        if (a.sortPrefix != b.sortPrefix)
            return a.sortPrefix < b.sortPrefix ? -1 : 1;
        return sortKey(a).compare(sortKey(b));
    }
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
    QStringView textOf(const Node &node, int length) const
    {
        return QStringView(m_searchCorpus.text().constData() + node.searchStart, length);
    }
    QModelIndex indexOf(const Node *node, int column = 0) const;
    void prepareTexts(Node *node);
    void setCode(Node *node);
    // Makes the node of a new object; its cells' values are moved out of `values`.
    Node *makeNode(const zeral::ObjectInfo &object, RowValues *values);
    // An object that add() found new, with the values of its cells if it came with some.
    struct Arrival
    {
        const zeral::ObjectInfo *object;
        RowValues *values;
    };
    // Builds the rows of new objects with as few signals as the tree allows.
    void addNew(const QVector<Arrival> &arrivals);
    // Stores a value without a signal; true if it changed. Column 0's role 258 is the name.
    bool storeValue(Node *node, int column, int role, const QVariant &value);
    struct DerivedCell
    {
        int column;
        int role; // as stored: the edit role as the display role
        std::function<QVariant(const Node &)> valueOf;
    };
    const DerivedCell *derivedCell(int column, int role) const;
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
    // Children that came before their parent, by the uid of the parent they wait for.
    QHash<zeral::TYPE_ID, QVector<Node *>> m_waiting;
    int m_columnCount = 2;
    QHash<quint64, QVariant> m_headers;    // by section and role
    mutable QHash<QString, QIcon> m_icons; // by type: a theme lookup is slow
    // Every node's search text, kept current with the nodes; and the sort keys, made at the
    // first search in them (few lists search names only) and kept current from then on.
    SearchCorpus m_searchCorpus;
    int m_searchLayout = 0;  // the corpus's layout the nodes' places are of
    QString m_searchScratch; // where a node's search text is put together, kept for its capacity
    mutable SearchCorpus m_sortKeyCorpus;
    mutable bool m_sortKeyCorpusMade = false;
    QVector<DerivedCell> m_derived;
    QString m_codedKey;
    QHash<QString, int> m_codes;
    QVector<QString> m_codeTexts;
};
