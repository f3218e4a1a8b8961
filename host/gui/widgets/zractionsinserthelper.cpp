#include "zractionsinserthelper.h"

#include "zractionstoolbar.h"
#include "zrstackedtoolbars.h"

#include <QAction>
#include <QFrame>
#include <QHBoxLayout>
#include <QToolButton>

void ZRActionsInsertHelper::fillStackedWidget(ZRStackedToolBars *stacked,
                                              const std::vector<Page> &pages)
{
    while (stacked->count() > 0) {
        QWidget *old = stacked->widget(0);
        stacked->removeWidget(old);
        old->deleteLater();
    }
    for (const Page &groups : pages) {
        auto *page = new QWidget(stacked);
        auto *layout = new QHBoxLayout(page);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
        bool first = true;
        for (const Group &group : groups) {
            if (group.empty())
                continue;
            if (!first) {
                auto *line = new QFrame(page);
                line->setFrameShape(QFrame::VLine);
                line->setFrameShadow(QFrame::Sunken);
                layout->addSpacing(4);
                layout->addWidget(line);
                layout->addSpacing(4);
            }
            first = false;
            for (QAction *action : group)
                layout->addWidget(createButton(action, page));
        }
        layout->addStretch(1);
        stacked->addWidget(page);
    }
}

void ZRActionsInsertHelper::addActionWidget(ZRActionsToolBar *toolBar, QAction *action)
{
    // The tool bar makes the button itself, so QToolBar::widgetForAction finds it.
    toolBar->addAction(action);
}

QToolButton *ZRActionsInsertHelper::createButton(QAction *action, QWidget *parent)
{
    auto *button = new QToolButton(parent);
    button->setDefaultAction(action);
    button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    button->setIconSize(QSize(ZRActionsToolBar::IconSize, ZRActionsToolBar::IconSize));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    button->setMinimumWidth(64);
    return button;
}
