#pragma once

#include <QItemSelectionModel>
#include <QPersistentModelIndex>
#include <QVector>

// A selection model that reports the rows it loses without a removal.
//
// QItemSelectionModel drops the rows that a new layout or a reset of the model takes away
// from the selection (a proxy filtering anew in one pass does both), but says nothing: it
// emits selectionChanged only when rows are removed one range at a time. Whoever shows the
// selected rows in a panel or enables actions by them then keeps a row that is gone. This
// model tells: after such a change it emits selectionChanged and, for a current row that
// went, currentChanged. The rows that went are no longer in the model, so the deselected
// part of the signal is empty; listeners read selectedRows() anew.
class TrackedSelectionModel : public QItemSelectionModel
{
    Q_OBJECT
public:
    explicit TrackedSelectionModel(QAbstractItemModel *model, QObject *parent = nullptr);

private:
    void remember();
    void reportLoss();

    QVector<QPersistentModelIndex> m_selectedBefore; // a cell of each selected row
    bool m_hadCurrent = false;
};
