#include "zractionstoolbar.h"

ZRActionsToolBar::ZRActionsToolBar(QWidget *parent)
    : QToolBar(parent)
{
    setMovable(false);
    setFloatable(false);
    setContextMenuPolicy(Qt::PreventContextMenu);
    setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    setIconSize(QSize(IconSize, IconSize));
}
