#include "trackedselectionmodel.h"

#include <algorithm>

TrackedSelectionModel::TrackedSelectionModel(QAbstractItemModel *model, QObject *parent)
    : QItemSelectionModel(model, parent)
{
    // Connected after the base class's own handlers: by the time reportLoss() runs, the
    // selection has been mapped to the new rows.
    connect(model, &QAbstractItemModel::layoutAboutToBeChanged, this,
            &TrackedSelectionModel::remember);
    connect(model, &QAbstractItemModel::layoutChanged, this, &TrackedSelectionModel::reportLoss);
    connect(model, &QAbstractItemModel::modelAboutToBeReset, this,
            &TrackedSelectionModel::remember);
    connect(model, &QAbstractItemModel::modelReset, this, &TrackedSelectionModel::reportLoss);
}

void TrackedSelectionModel::remember()
{
    // Rows come and go, columns stay: one cell of each selected row tells whether it went.
    m_selectedBefore.clear();
    const QItemSelection ranges = selection();
    for (const QItemSelectionRange &range : ranges) {
        for (int row = range.top(); row <= range.bottom(); ++row)
            m_selectedBefore.append(range.model()->index(row, range.left(), range.parent()));
    }
    m_hadCurrent = currentIndex().isValid();
}

void TrackedSelectionModel::reportLoss()
{
    const bool lost
        = std::any_of(m_selectedBefore.cbegin(), m_selectedBefore.cend(),
                      [](const QPersistentModelIndex &cell) { return !cell.isValid(); });
    m_selectedBefore.clear();
    if (lost)
        emit selectionChanged(QItemSelection(), QItemSelection());
    if (m_hadCurrent && !currentIndex().isValid()) {
        emit currentRowChanged(QModelIndex(), QModelIndex());
        emit currentChanged(QModelIndex(), QModelIndex());
    }
    m_hadCurrent = false;
}
