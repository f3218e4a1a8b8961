#pragma once

#include <QStackedWidget>

// Pages of tool buttons of which one is shown: a screen with several tabs keeps one page per
// tab and shows the page of the tab in front. ZRActionsInsertHelper fills it.
class ZRStackedToolBars : public QStackedWidget
{
    Q_OBJECT
public:
    explicit ZRStackedToolBars(QWidget *parent = nullptr);

    // As big as the page shown, not as the biggest page.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
};
