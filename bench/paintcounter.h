#pragma once

#include <QEvent>
#include <QObject>
#include <QWidget>

// Counts the paint events of a widget, so that a figure said to include the repaint does.
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget *widget) { widget->installEventFilter(this); }
    int count = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            ++count;
        return false;
    }
};
