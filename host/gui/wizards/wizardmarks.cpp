#include "wizardmarks.h"

#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QPixmap>

namespace {

constexpr int markSize = 16;
const QColor failureRed(0xc6, 0x28, 0x28);

} // namespace

QIcon WizardMarks::icon(Mark mark, const QPalette &palette)
{
    QPixmap pixmap(markSize * 2, markSize * 2);
    pixmap.setDevicePixelRatio(2);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF circle(2.5, 2.5, markSize - 5, markSize - 5);
    const QColor accent = palette.color(QPalette::Highlight);
    const QColor muted = palette.color(QPalette::Disabled, QPalette::Text);
    const QPen strokePen(palette.color(QPalette::HighlightedText), 1.6, Qt::SolidLine, Qt::RoundCap,
                         Qt::RoundJoin);

    switch (mark) {
    case Coming:
        painter.setPen(QPen(muted, 1.2));
        painter.drawEllipse(circle);
        break;
    case Skipped:
        painter.setPen(QPen(muted, 1.2, Qt::DotLine));
        painter.drawEllipse(circle);
        break;
    case Current:
        painter.setPen(QPen(accent, 1.6));
        painter.drawEllipse(circle);
        painter.setPen(Qt::NoPen);
        painter.setBrush(accent);
        painter.drawEllipse(circle.adjusted(3, 3, -3, -3));
        break;
    case Passed: {
        painter.setPen(Qt::NoPen);
        painter.setBrush(accent);
        painter.drawEllipse(circle);
        QPainterPath tick;
        tick.moveTo(5.2, 8.2);
        tick.lineTo(7.2, 10.2);
        tick.lineTo(10.9, 6.2);
        painter.setPen(strokePen);
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(tick);
        break;
    }
    case Failed: {
        painter.setPen(Qt::NoPen);
        painter.setBrush(failureRed);
        painter.drawEllipse(circle);
        QPen cross = strokePen;
        cross.setColor(Qt::white);
        painter.setPen(cross);
        painter.drawLine(QPointF(5.8, 5.8), QPointF(10.2, 10.2));
        painter.drawLine(QPointF(10.2, 5.8), QPointF(5.8, 10.2));
        break;
    }
    }
    return QIcon(pixmap);
}
