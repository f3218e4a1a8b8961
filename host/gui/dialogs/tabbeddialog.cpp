#include "tabbeddialog.h"

#include <QColor>

#include <host/gui/widgets/messagewidget.h>
#include <host/gui/widgets/zractionsinserthelper.h>
#include <host/gui/widgets/zractionstoolbar.h>

#include <QActionEvent>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

TabbedDialog::TabbedDialog(QWidget *parent)
    : QDialog(parent)
{
    m_toolBar = new ZRActionsToolBar(this);
    m_toolBar->setObjectName(QStringLiteral("dialogToolBar"));
    m_toolBar->hide();
    m_pageActionsSeparator = new QAction(this);
    m_pageActionsSeparator->setSeparator(true);

    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName(QStringLiteral("tabs"));
    m_tabs->setDocumentMode(false);

    m_message = new MessageWidget(this);
    m_message->setObjectName(QStringLiteral("messageLine"));
    m_message->setCloseButtonVisible(true);
    m_message->hide();

    m_buttons = new QDialogButtonBox(this);
    m_buttons->addButton(tr("Закрыть"), QDialogButtonBox::RejectRole);
    m_saveButton = m_buttons->addButton(tr("Сохранить"), QDialogButtonBox::ApplyRole);
    m_saveButton->setObjectName(QStringLiteral("saveButton"));
    m_saveButton->setIcon(QIcon::fromTheme(QStringLiteral("action-save")));
    m_saveButton->setDefault(true);
    m_saveButton->hide();
    connect(m_saveButton, &QPushButton::clicked, this, &TabbedDialog::save);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &TabbedDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_toolBar);
    layout->addWidget(m_tabs, 1);
    layout->addWidget(m_message);
    layout->addWidget(m_buttons);

    connect(m_tabs, &QTabWidget::currentChanged, this, &TabbedDialog::menuPageSelected);
}

int TabbedDialog::addTab(QWidget *page, const QString &title)
{
    return addTab(page, QIcon(), title);
}

int TabbedDialog::addTab(QWidget *page, const QIcon &icon, const QString &title)
{
    page->installEventFilter(this); // actions added to the page later reach the tool bar
    const int index = m_tabs->addTab(page, icon, title);
    if (index == m_tabs->currentIndex())
        menuPageSelected();
    return index;
}

void TabbedDialog::showToolBar()
{
    m_toolBarRequested = true;
    updateToolBarVisibility();
}

bool TabbedDialog::isSaveButtonShown() const
{
    return !m_saveButton->isHidden();
}

void TabbedDialog::showMessage(const QString &text)
{
    m_message->setMessageIcon(MessageWidget::Information);
    m_message->setText(text);
    m_message->setVisible(!text.isEmpty());
}

void TabbedDialog::showMessage(const QString &text, const QColor &color)
{
    showMessage(text.isEmpty() ? text
                               : QStringLiteral("<span style=\"color:%1\">%2</span>")
                                     .arg(color.name(), text.toHtmlEscaped()));
}

void TabbedDialog::showCriticalMessage(const QString &text)
{
    m_message->setMessageIcon(MessageWidget::Critical);
    m_message->setText(text);
    m_message->setVisible(!text.isEmpty());
}

void TabbedDialog::reject()
{
    QDialog::reject();
}

void TabbedDialog::saved()
{
    m_saveButton->hide();
}

void TabbedDialog::menuPageSelected()
{
    m_toolBar->removeAction(m_pageActionsSeparator);
    for (const QPointer<QAction> &action : qAsConst(m_pageActions)) {
        if (action)
            m_toolBar->removeAction(action);
    }
    m_pageActions.clear();
    const QWidget *page = m_tabs->currentWidget();
    const QList<QAction *> actions = page ? page->actions() : QList<QAction *>();
    // The dialog's own actions come first, since callers take the first as theirs; a line
    // sets the page's apart from them.
    if (!actions.isEmpty() && !m_toolBar->actions().isEmpty())
        m_toolBar->addAction(m_pageActionsSeparator);
    for (QAction *action : actions) {
        m_toolBar->addAction(action);
        m_pageActions.append(action);
    }
    updateToolBarVisibility();
}

void TabbedDialog::showSaveButton()
{
    m_saveButton->show();
}

bool TabbedDialog::eventFilter(QObject *watched, QEvent *event)
{
    if ((event->type() == QEvent::ActionAdded || event->type() == QEvent::ActionRemoved)
        && watched == m_tabs->currentWidget()) {
        // The page's list changes after this event; rebuild once it has.
        QMetaObject::invokeMethod(this, &TabbedDialog::menuPageSelected, Qt::QueuedConnection);
    }
    return QDialog::eventFilter(watched, event);
}

void TabbedDialog::updateToolBarVisibility()
{
    m_toolBar->setVisible(m_toolBarRequested || !m_pageActions.isEmpty());
}
