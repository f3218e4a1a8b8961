#include "treeview.h"

#include <QHeaderView>

TreeView::TreeView(QWidget *parent)
    : QTreeView(parent)
{
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setIconSize(QSize(16, 16));
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setAnimated(false);
    header()->setHighlightSections(false);
    header()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header()->setStretchLastSection(true);
}

void TreeView::setModel(QAbstractItemModel *model)
{
    QTreeView::setModel(model);
    // Names of objects are short and many levels deep: the first column follows them.
    if (model && model->columnCount() > 1)
        header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
}
