#pragma once

#include <vector>

class QAction;
class QToolButton;
class QWidget;
class ZRActionsToolBar;
class ZRStackedToolBars;

// Puts actions on tool bars as buttons in the studio's style: icon over text, groups apart.
class ZRActionsInsertHelper
{
public:
    using Group = std::vector<QAction *>;
    using Page = std::vector<Group>;

    // Replaces the pages of `stacked` by one page per entry of `pages`; a page shows its
    // groups side by side, a line between two groups.
    static void fillStackedWidget(ZRStackedToolBars *stacked, const std::vector<Page> &pages);
    // Adds a button of `action` at the end of `toolBar`.
    static void addActionWidget(ZRActionsToolBar *toolBar, QAction *action);
    // A button that shows and triggers `action`, as the pages hold them.
    static QToolButton *createButton(QAction *action, QWidget *parent);

    ZRActionsInsertHelper() = delete;
};
