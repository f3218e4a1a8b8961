#pragma once

#include <host/gui/models/objecttreemodel.h>
#include <shared/types.h>

#include <QHash>
#include <QPointer>
#include <QSet>
#include <QSortFilterProxyModel>
#include <QStringList>
#include <QVector>

// The filter and check layer over an ObjectTreeModel.
//
// Filters: a text (case-insensitive; the whole text, or each word by itself), object types,
// uids and parameter values. A row shows when it passes the type, uid and parameter
// filters and, while a text is set, when it or an object below it matches the text; a
// parent stays visible for a matching descendant. The set of visible rows is kept as
// counts per object, updated per changed row, so a change costs the depth of the tree.
//
// Checks: a set of uids. A row is checked when its uid is in the set; with partial
// checking on, an unchecked row with a checked object below it shows partly checked.
// Checking a row by hand, with auto-check on, also checks the rows below it that the
// filters let through; unchecking clears everything below it.
class ObjectTreeProxy : public QSortFilterProxyModel
{
    Q_OBJECT
public:
    // Fixed to int: a mode read from elsewhere may hold any number, and is then refused.
    enum FilterType : int { MustMatch = 0, MustNotMatch = 1 };
    Q_ENUM(FilterType)

    explicit ObjectTreeProxy(QObject *parent = nullptr);

    void setSourceModel(QAbstractItemModel *model) override;
    ObjectTreeModel *sourceModel() const { return m_model; }

    // Text search. The filter applies only while search is enabled.
    void setFilter(const QString &text);
    void clearFilter();
    QString filterText() const { return m_filterText; }
    // The uids that matched the filter by themselves (not kept as parents); with no text
    // set, every object that the other filters let through.
    QSet<zeral::TYPE_ID> filterResult() const;
    void setSearchEnabled(bool enabled);
    bool isSearchEnabled() const { return m_searchEnabled; }
    void setSearchByWordsEnabled(bool enabled);
    // With a search index the text is looked for in each object's name and identifying
    // parameters (login, names, e-mail, personnel number), prepared once by the model;
    // without one, in the search role of column 0 (258 unless set).
    void setSearchIndex(const QString &dataname);
    QString searchIndex() const { return m_searchIndex; }
    void setSearchRole(int role);

    void setObjectTypeFilter(const QStringList &types);
    // Only these uids; an empty set turns the filter off.
    void setFilterUids(const QSet<zeral::TYPE_ID> &uids);
    void addParameterFilter(const QString &key, const QStringList &values, FilterType type);
    void clearParameterFilters();

    void setReadOnly(bool readOnly);
    bool isReadOnly() const { return m_readOnly; }
    void setCheckable(bool checkable);
    bool isCheckable() const { return m_checkable; }
    // Check boxes only on rows of these types; empty means all types.
    void setCheckableObjectTypes(const QStringList &types);
    void setAutoCheckChildren(bool enabled);
    void setPartiallyCheckEnabled(bool enabled);
    bool isCheckable(zeral::TYPE_ID uid) const;

    // Makes the set of checked uids exactly these, of those the model holds and that may
    // be checked, whether the filters show them or not.
    void setChecked(const QSet<zeral::TYPE_ID> &uids);
    QSet<zeral::TYPE_ID> checked() const { return m_checked; }
    Qt::CheckState checkState(zeral::TYPE_ID uid) const;
    // Checks every checkable row that the filters let through; rows they hide stay as
    // they are, so nothing is granted that the operator didn't see.
    void checkAll();
    // Clears the whole set, hidden rows included, so that nothing stays checked unseen.
    void uncheckAll();

    QModelIndex indexForUid(zeral::TYPE_ID uid, int column = 0) const;
    // Whether the filters let the object's row through.
    bool acceptsUid(zeral::TYPE_ID uid) const;

    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

signals:
    void checkedChanged();

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override;
    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override;
    // A row whose type fails the type filter stays when an object below it passes: for
    // trees whose containers are of no listed type.
    void setTypeFilterKeepsContainers(bool keep);
    // A further condition of a subclass on an object, asked after the proxy's own filters.
    // Whoever changes what it answers calls refilter().
    virtual bool acceptsObject(const ObjectTreeModel::Node *node) const;
    // Filters every row anew.
    void refilter();

private:
    struct ParameterFilter
    {
        QString key;
        QSet<QString> values;
        FilterType type;
    };
    using Node = ObjectTreeModel::Node;

    bool textActive() const { return m_searchEnabled && !m_words.isEmpty(); }
    bool usesCounts() const { return textActive() || m_keepContainers; }
    bool typeAccepts(const Node *node) const;
    bool restAccepts(const Node *node) const;
    bool matchesText(const Node *node) const;
    bool matchesSelf(const Node *node) const;
    bool accepts(const Node *node) const;
    void ensureCounts() const;
    void countMatch(zeral::TYPE_ID uid, int delta) const;
    void ensureCheckCounts() const;
    void changeChecks(const QSet<zeral::TYPE_ID> &add, const QSet<zeral::TYPE_ID> &drop);
    void notifyChecks(const QSet<zeral::TYPE_ID> &uids);
    void notifyAllChecks(const QModelIndex &parent);
    void collectCheckable(zeral::TYPE_ID uid, bool visibleOnly, QSet<zeral::TYPE_ID> *into) const;

    // Source signals, seen before the base class sees them and after.
    void beforeRowsInserted(const QModelIndex &parent, int first, int last);
    void beforeRowsRemoved(const QModelIndex &parent, int first, int last);
    void beforeDataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight);
    void afterChange();
    void structureChanged();
    void forgetCounts();
    void dropChecksOfMissing();

    QPointer<ObjectTreeModel> m_model;
    QVector<QMetaObject::Connection> m_connections;

    QString m_filterText;
    QStringList m_words;
    bool m_searchEnabled = false;
    bool m_searchByWords = false;
    QString m_searchIndex;
    int m_searchRole;
    QSet<QString> m_types;
    QSet<zeral::TYPE_ID> m_uids;
    QVector<ParameterFilter> m_parameterFilters;
    bool m_keepContainers = false;

    // Objects that match by themselves, and per object the matches in its subtree.
    mutable QSet<zeral::TYPE_ID> m_matched;
    mutable QHash<zeral::TYPE_ID, int> m_matchesBelow;
    mutable bool m_countsDirty = true;
    // Set when a change turned a parent's visibility: the base class must filter again.
    mutable bool m_refilterAfterChange = false;

    bool m_readOnly = false;
    bool m_checkable = false;
    QSet<QString> m_checkableTypes;
    bool m_autoCheckChildren = false;
    bool m_partial = false;
    QSet<zeral::TYPE_ID> m_checked;
    mutable QHash<zeral::TYPE_ID, int> m_checkedBelow;
    mutable bool m_checkCountsDirty = true;
};
