#pragma once

#include <QList>
#include <QTableView>
#include <QVector>

class QMenu;
class QTimer;

// A table whose header the operator arranges: columns moved, resized, sorted, shown and
// hidden through the header's context menu. Every change of that layout is reported once,
// a moment after it settles, with the header's state, which restoreHeaderState() takes
// back. Columns hidden by default stay hidden until a restored state shows them.
//
// Until the operator's state is restored, the columns fit their contents when the table is
// first shown with rows, so that no text is cut before anybody has arranged anything. The
// selection reports rows that a refilter or a reset takes away (TrackedSelectionModel).
class ZRTableView : public QTableView
{
    Q_OBJECT
public:
    explicit ZRTableView(QWidget *parent = nullptr);

    // Restores a state given by headerStateChanged; an empty or unreadable one gives the
    // default layout. Returns whether the state was applied.
    bool restoreHeaderState(const QByteArray &state);
    QByteArray headerState() const;
    // Hides these columns and shows the others, unless these are the defaults already.
    void setHeaderHiddenByDefaultColumns(const QList<int> &columns);
    QList<int> headerHiddenByDefaultColumns() const { return m_hiddenByDefault; }
    // Shows every column but those hidden by default.
    void resetHeaderState();

    void setModel(QAbstractItemModel *model) override;

    // Every row as high as the first, as QTreeView offers: fitting the rows to their contents
    // then measures one row, not each of thousands. For tables of one-line rows.
    void setUniformRowHeights(bool uniform);
    bool uniformRowHeights() const { return m_uniformRowHeights; }
    int sizeHintForRow(int row) const override;
    // QTableView's fit of the rows to their contents, which with uniform rows gives the first
    // row's height to all at once instead of going through 10,000 rows. QTableView's isn't
    // virtual: this one is what a caller holding a ZRTableView gets.
    void resizeRowsToContents();

    // Roles whose change alone leaves the picture of the cell as it was: a change that names
    // only these repaints nothing. For a model that keeps data of the whole row in a cell
    // for its delegates, which learn of a change of what they draw from that cell's own roles.
    void setUnpaintedRoles(const QVector<int> &roles) { m_unpaintedRoles = roles; }
    QVector<int> unpaintedRoles() const { return m_unpaintedRoles; }

    // The menu of the header: one checkable entry per column, and the default layout.
    QMenu *createHeaderMenu(QWidget *parent);

signals:
    void headerStateChanged(QByteArray state);

protected:
    void showEvent(QShowEvent *event) override;
    void dataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight,
                     const QVector<int> &roles = QVector<int>()) override;

private:
    // Fits the shown columns to their contents once, when shown with rows, unless a saved
    // state was restored; later changes of the rows leave the widths alone.
    void fitColumnsOnce();
    int contentWidth(int column) const;
    void scheduleStateReport();
    void reportState();
    void applyDefaultColumns();
    // The visual index of the last column shown; -1 if none is.
    int lastVisibleSection() const;

    QList<int> m_hiddenByDefault;
    QVector<int> m_unpaintedRoles;
    bool m_uniformRowHeights = false;
    mutable int m_uniformRowHint = -1; // measured on the first row; -1 until then or after a change
    QTimer *m_reportTimer = nullptr;
    QByteArray m_lastReported;
    bool m_restoring = false;
    bool m_columnsSettled = false; // fitted, or arranged by a restored state
};
