#pragma once

#include <QPointer>
#include <QSet>
#include <QSortFilterProxyModel>
#include <QStringList>

class FastTreeModel;

// The check and filter layer over a FastTreeModel. Checks are a set of keys; with partial
// checking on, an item with children shows checked when everything below it is, partly
// checked when something is. A check-state filter and a text filter act together: an item
// shows when its state is let through and its title, or the title of a parent, holds the
// text; a parent stays while something below it shows. The trees are small (hundreds of
// items), so Qt's recursive filtering does the keeping of parents.
class FastProxyModel : public QSortFilterProxyModel
{
    Q_OBJECT
public:
    explicit FastProxyModel(QObject *parent = nullptr);

    void setSourceModel(QAbstractItemModel *model) override;
    void setSourceModel(FastTreeModel *model);

    void setCheckable(bool checkable);
    void setPartiallyCheckEnabled(bool enabled);
    // Makes the checked keys exactly these.
    void setChecked(const QList<QString> &keys);
    QStringList checked() const;
    Qt::CheckState checkState(const QModelIndex &sourceIndex) const;
    void setCheckStateFilter(const QList<Qt::CheckState> &states);
    void clearCheckStateFilter();
    // Items shown but not available to the operator.
    void setDisabledAll(bool disabled);
    void setReadOnly(bool readOnly);
    void setFilter(const QString &text);
    void clearFilter() { setFilter(QString()); }
    void setSearchEnabled(bool enabled);

    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

signals:
    void checkedChanged();

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override;

private:
    void checksChanged();
    void notifyAll(const QModelIndex &parent);

    QPointer<FastTreeModel> m_model;
    bool m_checkable = false;
    bool m_partial = false;
    QSet<QString> m_checked;
    QSet<int> m_stateFilter;
    bool m_disabledAll = false;
    bool m_readOnly = false;
    bool m_searchEnabled = false;
    QString m_filterText;
    QStringList m_words;
};
