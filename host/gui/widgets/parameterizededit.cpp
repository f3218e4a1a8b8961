#include "parameterizededit.h"

#include <QPainter>
#include <QValidator>

namespace {
QColor borderColorOf(ParameterizedEdit::BorderColor color)
{
    switch (color) {
    case ParameterizedEdit::Warning:
        return QColor(0xfb, 0x8c, 0x00);
    case ParameterizedEdit::Error:
        return QColor(0xe5, 0x39, 0x35);
    case ParameterizedEdit::Normal:
        break;
    }
    return QColor();
}
} // namespace

ParameterizedEdit::ParameterizedEdit(QWidget *parent)
    : QLineEdit(parent)
{
    connect(this, &QLineEdit::textChanged, this, &ParameterizedEdit::judgeText);
}

void ParameterizedEdit::highlightValidation(bool enabled)
{
    m_highlight = enabled;
    if (enabled)
        judgeText();
    else
        setBorderColor(Normal);
}

void ParameterizedEdit::setEmptyTextAllowed(bool allowed)
{
    m_emptyAllowed = allowed;
    judgeText();
}

void ParameterizedEdit::setBorderColor(BorderColor color)
{
    if (m_color == color)
        return;
    m_color = color;
    // A tinted base makes the state visible in every style, the border makes it clear.
    QPalette pal = palette();
    if (color == Normal) {
        pal.setBrush(QPalette::Base, QPalette().brush(QPalette::Base));
    } else {
        QColor tint = borderColorOf(color);
        tint.setAlpha(28);
        const QColor base = QPalette().color(QPalette::Base);
        const qreal a = tint.alphaF();
        pal.setColor(QPalette::Base, QColor::fromRgbF(base.redF() * (1 - a) + tint.redF() * a,
                                                      base.greenF() * (1 - a) + tint.greenF() * a,
                                                      base.blueF() * (1 - a) + tint.blueF() * a));
    }
    setPalette(pal);
    update();
}

bool ParameterizedEdit::isInputValid() const
{
    const QString current = text();
    if (current.trimmed().isEmpty())
        return m_emptyAllowed;
    if (const QValidator *check = validator()) {
        QString copy = current;
        int pos = cursorPosition();
        return check->validate(copy, pos) == QValidator::Acceptable;
    }
    return true;
}

void ParameterizedEdit::paintEvent(QPaintEvent *event)
{
    QLineEdit::paintEvent(event);
    const QColor color = borderColorOf(m_color);
    if (!color.isValid())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 1.5));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.75, 0.75, -0.75, -0.75), 3, 3);
}

void ParameterizedEdit::judgeText()
{
    if (m_highlight)
        setBorderColor(isInputValid() ? Normal : Error);
}
