#include "hiddenpanel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

namespace {
constexpr int TitleIconSize = 16;
}

HiddenPanel::HiddenPanel(QWidget *parent)
    : QFrame(parent)
{
    setFrameShape(QFrame::StyledPanel);
    setFrameShadow(QFrame::Plain);

    m_titleBar = new QWidget(this);
    m_titleBar->setObjectName(QStringLiteral("titleBar"));
    m_titleBar->setAutoFillBackground(true);
    m_titleBar->setBackgroundRole(QPalette::AlternateBase);
    auto *titleLayout = new QHBoxLayout(m_titleBar);
    titleLayout->setContentsMargins(4, 3, 8, 3);
    titleLayout->setSpacing(6);

    m_foldButton = new QToolButton(m_titleBar);
    m_foldButton->setObjectName(QStringLiteral("foldButton"));
    m_foldButton->setAutoRaise(true);
    m_foldButton->setIconSize(QSize(TitleIconSize, TitleIconSize));
    m_foldButton->setIcon(QIcon::fromTheme(QStringLiteral("action-collapse")));
    m_foldButton->setToolTip(tr("Свернуть или развернуть панель"));
    m_foldButton->setFocusPolicy(Qt::NoFocus);
    connect(m_foldButton, &QToolButton::clicked, this, [this] { setCollapsed(!m_collapsed); });

    m_iconLabel = new QLabel(m_titleBar);
    m_iconLabel->hide();
    m_titleLabel = new QLabel(m_titleBar);
    QFont titleFont = m_titleLabel->font();
    titleFont.setBold(true);
    m_titleLabel->setFont(titleFont);

    titleLayout->addWidget(m_foldButton);
    titleLayout->addWidget(m_iconLabel);
    titleLayout->addWidget(m_titleLabel, 1);

    m_content = new QWidget(this);
    m_content->setObjectName(QStringLiteral("content"));
    m_contentLayout = new QVBoxLayout(m_content);
    m_contentLayout->setContentsMargins(0, 0, 0, 0);
    m_contentLayout->setSpacing(0);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_titleBar);
    layout->addWidget(m_content, 1);
}

QString HiddenPanel::title() const
{
    return m_titleLabel->text();
}

void HiddenPanel::setTitle(const QString &title)
{
    m_titleLabel->setText(title);
}

void HiddenPanel::setIcon(const QIcon &icon)
{
    m_iconLabel->setPixmap(icon.pixmap(TitleIconSize, TitleIconSize));
    m_iconLabel->setVisible(!icon.isNull());
    setWindowIcon(icon);
}

void HiddenPanel::hideTitle()
{
    setCollapsed(false);
    m_titleBar->hide();
}

bool HiddenPanel::isTitleVisible() const
{
    return !m_titleBar->isHidden();
}

void HiddenPanel::addWidget(QWidget *widget)
{
    m_contentLayout->addWidget(widget);
}

void HiddenPanel::setCollapsed(bool collapsed)
{
    if (m_collapsed == collapsed)
        return;
    m_collapsed = collapsed;
    m_content->setVisible(!collapsed);
    m_foldButton->setIcon(QIcon::fromTheme(collapsed ? QStringLiteral("action-expand")
                                                     : QStringLiteral("action-collapse")));
    // A folded panel keeps only its title's height and leaves the room to the others.
    setSizePolicy(sizePolicy().horizontalPolicy(),
                  collapsed ? QSizePolicy::Maximum : QSizePolicy::Preferred);
    emit collapsedChanged(collapsed);
}
