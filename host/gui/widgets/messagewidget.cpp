#include "messagewidget.h"

#include <QIcon>
#include <QMouseEvent>

MessageWidget::MessageWidget(QWidget *parent)
    : KMessageWidget(parent)
{
    setWordWrap(true);
    setMessageIcon(Information);
}

MessageWidget::MessageWidget(const QString &text, Icon icon, QWidget *parent)
    : MessageWidget(parent)
{
    setText(text);
    setMessageIcon(icon);
}

void MessageWidget::setMessageIcon(Icon icon)
{
    m_icon = icon;
    switch (icon) {
    case Information:
        setMessageType(KMessageWidget::Information);
        setIcon(QIcon::fromTheme(QStringLiteral("common-information")));
        break;
    case Positive:
        setMessageType(KMessageWidget::Positive);
        setIcon(QIcon::fromTheme(QStringLiteral("common-online")));
        break;
    case Warning:
        setMessageType(KMessageWidget::Warning);
        setIcon(QIcon::fromTheme(QStringLiteral("common-warning")));
        break;
    case Critical:
        setMessageType(KMessageWidget::Error);
        setIcon(QIcon::fromTheme(QStringLiteral("common-error")));
        break;
    }
}

void MessageWidget::mouseReleaseEvent(QMouseEvent *event)
{
    KMessageWidget::mouseReleaseEvent(event);
    if (event->button() == Qt::LeftButton && rect().contains(event->pos()))
        emit clicked();
}
