#include "pluginwidget.h"

#include <QTimer>

namespace {
constexpr int PopupMargin = 12;
constexpr int PopupSpacing = 6;
constexpr int PopupMaxWidth = 420;
} // namespace

PluginWidget::PluginWidget(QWidget *parent)
    : QMainWindow(parent)
{}

PluginWidget::~PluginWidget() = default;

bool PluginWidget::canShow()
{
    return true;
}

QString PluginWidget::defaultHelpContext() const
{
    return QString();
}

void PluginWidget::activated() {}

void PluginWidget::onTabActivated(int)
{
    activated();
}

QList<PLUGIN_TAB> PluginWidget::tabList()
{
    return {};
}

void PluginWidget::insertedToInterface() {}

QList<MessageWidget *> PluginWidget::popups() const
{
    QList<MessageWidget *> shown;
    for (const QPointer<MessageWidget> &popup : m_popups) {
        if (popup)
            shown.append(popup);
    }
    return shown;
}

void PluginWidget::showPopupMessage(const QString &text, MessageWidget::Icon icon, int msecs)
{
    auto *popup = new MessageWidget(text, icon, this);
    popup->setObjectName(QStringLiteral("popupMessage"));
    popup->setCloseButtonVisible(false);
    popup->setCursor(Qt::PointingHandCursor);
    popup->setToolTip(tr("Щелкните, чтобы закрыть"));
    connect(popup, &MessageWidget::clicked, this, [this, popup] { dismissPopup(popup); });
    QTimer::singleShot(msecs > 0 ? msecs : DefaultPopupTimeout, popup,
                       [this, popup] { dismissPopup(popup); });
    m_popups.append(popup);
    layoutPopups();
    popup->show();
    popup->raise();
}

void PluginWidget::showPopupCriticalMessage(const QString &text, int msecs)
{
    showPopupMessage(text, MessageWidget::Critical, msecs);
}

void PluginWidget::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    layoutPopups();
}

void PluginWidget::dismissPopup(MessageWidget *popup)
{
    m_popups.removeAll(popup);
    popup->hide();
    popup->deleteLater();
    layoutPopups();
}

void PluginWidget::layoutPopups()
{
    // In the bottom right corner of the central area, where they hide the least, the oldest
    // on top; the tool bar stays usable while messages stand.
    const QWidget *central = centralWidget();
    const QRect area = central ? central->geometry() : rect();
    const int width = qMax(120, qMin(PopupMaxWidth, area.width() - 2 * PopupMargin));
    int bottom = area.bottom() + 1 - PopupMargin;
    for (auto it = m_popups.crbegin(); it != m_popups.crend(); ++it) {
        MessageWidget *popup = *it;
        if (!popup)
            continue;
        const int height = popup->hasHeightForWidth() ? popup->heightForWidth(width)
                                                      : popup->sizeHint().height();
        popup->setGeometry(area.right() - PopupMargin - width + 1, bottom - height, width, height);
        popup->raise();
        bottom -= height + PopupSpacing;
    }
}
