#include "zrtableview.h"

#include <algorithm>

#include <host/gui/models/trackedselectionmodel.h>
#include <host/gui/widgets/uniformrowheader.h>

#include <QHeaderView>
#include <QMenu>
#include <QTimer>

namespace {
// Resizing by dragging sends many signals; one report follows when it has settled.
constexpr int ReportDelay = 300;
// How many rows, from the top, the first fit of the columns measures.
constexpr int FitSampleRows = 1000;
} // namespace

ZRTableView::ZRTableView(QWidget *parent)
    : QTableView(parent)
{
    m_reportTimer = new QTimer(this);
    m_reportTimer->setSingleShot(true);
    m_reportTimer->setInterval(ReportDelay);
    connect(m_reportTimer, &QTimer::timeout, this, &ZRTableView::reportState);

    QHeaderView *header = horizontalHeader();
    header->setSectionsMovable(true);
    header->setHighlightSections(false);
    header->setStretchLastSection(true);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(header, &QHeaderView::customContextMenuRequested, this, [this](const QPoint &pos) {
        QMenu *menu = createHeaderMenu(this);
        menu->setAttribute(Qt::WA_DeleteOnClose);
        menu->popup(horizontalHeader()->viewport()->mapToGlobal(pos));
    });
    connect(header, &QHeaderView::sectionMoved, this, &ZRTableView::scheduleStateReport);
    connect(header, &QHeaderView::sectionResized, this, [this](int logical) {
        // The stretched last section follows the view's width, not the operator.
        QHeaderView *header = horizontalHeader();
        const bool stretched
            = header->stretchLastSection() && header->visualIndex(logical) == lastVisibleSection();
        if (!stretched)
            scheduleStateReport();
    });
    connect(header, &QHeaderView::sortIndicatorChanged, this, &ZRTableView::scheduleStateReport);
}

bool ZRTableView::restoreHeaderState(const QByteArray &state)
{
    m_restoring = true;
    const bool restored = !state.isEmpty() && horizontalHeader()->restoreState(state);
    if (!restored)
        applyDefaultColumns();
    m_columnsSettled = m_columnsSettled || restored;
    m_restoring = false;
    m_reportTimer->stop();
    m_lastReported = headerState();
    return restored;
}

QByteArray ZRTableView::headerState() const
{
    return horizontalHeader()->saveState();
}

void ZRTableView::setHeaderHiddenByDefaultColumns(const QList<int> &columns)
{
    // Screens repeat this after every change of their rows; only new defaults touch the
    // layout the operator has arranged.
    if (columns == m_hiddenByDefault)
        return;
    m_hiddenByDefault = columns;
    m_restoring = true;
    applyDefaultColumns();
    m_restoring = false;
    m_lastReported = headerState();
}

void ZRTableView::resetHeaderState()
{
    applyDefaultColumns();
}

void ZRTableView::setModel(QAbstractItemModel *model)
{
    m_restoring = true;
    QTableView::setModel(model);
    if (model) {
        // The plain selection model the base class has just made is nobody else's.
        QItemSelectionModel *plain = selectionModel();
        setSelectionModel(new TrackedSelectionModel(model, this));
        delete plain;
    }
    m_uniformRowHint = -1;
    if (model) {
        const auto forget = [this] {
            m_uniformRowHint = -1;
            if (auto *rows = qobject_cast<UniformRowHeader *>(verticalHeader()))
                rows->forgetSize();
        };
        // The first rows may come after the first show; the fit waits for the view to have
        // laid them out.
        const auto fitLater = [this] {
            if (!m_columnsSettled)
                QTimer::singleShot(0, this, &ZRTableView::fitColumnsOnce);
        };
        connect(model, &QAbstractItemModel::rowsInserted, this, fitLater);
        connect(model, &QAbstractItemModel::modelReset, this, fitLater);
        connect(model, &QAbstractItemModel::layoutChanged, this, fitLater);
        connect(model, &QAbstractItemModel::dataChanged, this, forget);
        connect(model, &QAbstractItemModel::modelReset, this, forget);
        connect(model, &QAbstractItemModel::layoutChanged, this, forget);
        connect(model, &QAbstractItemModel::rowsInserted, this, forget);
        connect(model, &QAbstractItemModel::rowsRemoved, this, forget);
    }
    applyDefaultColumns();
    m_restoring = false;
    m_lastReported = headerState();
}

void ZRTableView::showEvent(QShowEvent *event)
{
    QTableView::showEvent(event);
    fitColumnsOnce();
}

void ZRTableView::dataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight,
                              const QVector<int> &roles)
{
    // No roles named means any may have changed.
    const bool unpainted
        = !roles.isEmpty() && !m_unpaintedRoles.isEmpty()
          && std::all_of(roles.cbegin(), roles.cend(),
                         [this](int role) { return m_unpaintedRoles.contains(role); });
    if (!unpainted)
        QTableView::dataChanged(topLeft, bottomRight, roles);
}

void ZRTableView::fitColumnsOnce()
{
    if (m_columnsSettled || !isVisible() || !model() || model()->rowCount(rootIndex()) == 0)
        return;
    m_columnsSettled = true;
    // A column gets at most about forty characters, so that one long text can't push the
    // others out; the width of the view is no measure, since splitters may still move.
    QHeaderView *header = horizontalHeader();
    const int stretched = header->stretchLastSection() ? lastVisibleSection() : -1;
    const int widest = qMax(header->defaultSectionSize(), 40 * fontMetrics().averageCharWidth());
    m_restoring = true;
    for (int column = 0; column < header->count(); ++column) {
        if (header->isSectionHidden(column) || header->visualIndex(column) == stretched)
            continue;
        const int fit = qMax(contentWidth(column), header->sectionSizeHint(column));
        header->resizeSection(column, qMin(fit, widest));
    }
    m_restoring = false;
    m_reportTimer->stop();
    m_lastReported = headerState();
}

int ZRTableView::contentWidth(int column) const
{
    // Not the rows in sight, which are few while the window is still being laid out, nor all
    // rows, which may be 100,000: the first rows of the order stand for the rest.
    const int rows = qMin(model()->rowCount(rootIndex()), FitSampleRows);
    const QStyleOptionViewItem option = viewOptions();
    int width = 0;
    for (int row = 0; row < rows; ++row) {
        const QModelIndex index = model()->index(row, column, rootIndex());
        width = qMax(width, itemDelegate(index)->sizeHint(option, index).width());
    }
    // The grid line takes a pixel of the cell, and some delegates keep a gap at the right of
    // their text that their size hint doesn't count: room for one more character covers both.
    return width + fontMetrics().averageCharWidth();
}

void ZRTableView::setUniformRowHeights(bool uniform)
{
    m_uniformRowHeights = uniform;
    m_uniformRowHint = -1;
    if (uniform == bool(qobject_cast<UniformRowHeader *>(verticalHeader())))
        return;
    const bool hidden = verticalHeader()->isHidden();
    QHeaderView *rows = nullptr;
    if (uniform) {
        rows = new UniformRowHeader(this);
    } else {
        rows = new QHeaderView(Qt::Vertical, this);
        rows->setSectionsClickable(true);
        rows->setHighlightSections(true);
    }
    setVerticalHeader(rows);
    rows->setHidden(hidden);
}

void ZRTableView::resizeRowsToContents()
{
    if (!m_uniformRowHeights || !model() || model()->rowCount(rootIndex()) == 0) {
        QTableView::resizeRowsToContents();
        return;
    }
    // What QHeaderView's fit gives each row, the larger of the row's and its label's hint,
    // within the header's bounds; rows that come later get it as the default.
    QHeaderView *rows = verticalHeader();
    const int height = qMax(sizeHintForRow(0), rows->sectionSizeHint(0));
    rows->setDefaultSectionSize(
        qBound(rows->minimumSectionSize(), height, rows->maximumSectionSize()));
}

int ZRTableView::sizeHintForRow(int row) const
{
    if (!m_uniformRowHeights || !model() || model()->rowCount(rootIndex()) == 0)
        return QTableView::sizeHintForRow(row);
    if (m_uniformRowHint < 0)
        m_uniformRowHint = QTableView::sizeHintForRow(0);
    return m_uniformRowHint;
}

QMenu *ZRTableView::createHeaderMenu(QWidget *parent)
{
    auto *menu = new QMenu(parent);
    QHeaderView *header = horizontalHeader();
    QAbstractItemModel *source = model();
    const int columns = source ? source->columnCount() : 0;
    const int visible = columns - header->hiddenSectionCount();
    for (int visual = 0; visual < columns; ++visual) {
        const int column = header->logicalIndex(visual);
        QString title = source->headerData(column, Qt::Horizontal).toString();
        if (title.isEmpty())
            title = tr("Столбец %1").arg(column + 1);
        QAction *action = menu->addAction(title);
        action->setCheckable(true);
        action->setChecked(!header->isSectionHidden(column));
        // The last shown column stays: a table without columns can't get its menu back.
        action->setEnabled(header->isSectionHidden(column) || visible > 1);
        connect(action, &QAction::toggled, this, [this, column](bool shown) {
            horizontalHeader()->setSectionHidden(column, !shown);
            scheduleStateReport();
        });
    }
    menu->addSeparator();
    connect(menu->addAction(tr("Столбцы по умолчанию")), &QAction::triggered, this,
            &ZRTableView::resetHeaderState);
    return menu;
}

void ZRTableView::scheduleStateReport()
{
    if (!m_restoring)
        m_reportTimer->start();
}

void ZRTableView::reportState()
{
    const QByteArray state = headerState();
    if (state == m_lastReported)
        return;
    m_lastReported = state;
    emit headerStateChanged(state);
}

int ZRTableView::lastVisibleSection() const
{
    const QHeaderView *header = horizontalHeader();
    for (int visual = header->count() - 1; visual >= 0; --visual) {
        if (!header->isSectionHidden(header->logicalIndex(visual)))
            return visual;
    }
    return -1;
}

void ZRTableView::applyDefaultColumns()
{
    QHeaderView *header = horizontalHeader();
    const int columns = model() ? model()->columnCount() : 0;
    for (int column = 0; column < columns; ++column) {
        header->setSectionHidden(column, m_hiddenByDefault.contains(column));
        header->moveSection(header->visualIndex(column), column);
    }
    scheduleStateReport();
}
