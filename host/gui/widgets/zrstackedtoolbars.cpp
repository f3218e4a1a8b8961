#include "zrstackedtoolbars.h"

ZRStackedToolBars::ZRStackedToolBars(QWidget *parent)
    : QStackedWidget(parent)
{
    connect(this, &QStackedWidget::currentChanged, this, &QWidget::updateGeometry);
}

QSize ZRStackedToolBars::sizeHint() const
{
    const QWidget *page = currentWidget();
    return page ? page->sizeHint() : QStackedWidget::sizeHint();
}

QSize ZRStackedToolBars::minimumSizeHint() const
{
    const QWidget *page = currentWidget();
    return page ? page->minimumSizeHint() : QStackedWidget::minimumSizeHint();
}
