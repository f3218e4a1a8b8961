#include "paintrecorder.h"

#include <QPaintEvent>
#include <QWidget>

PaintRecorder::PaintRecorder(QWidget *widget)
{
    widget->installEventFilter(this);
}

void PaintRecorder::clear()
{
    m_painted = QRegion();
    m_paints = 0;
}

bool PaintRecorder::eventFilter(QObject *, QEvent *event)
{
    if (event->type() == QEvent::Paint) {
        m_painted += static_cast<QPaintEvent *>(event)->region();
        ++m_paints;
    }
    return false;
}
