#include "searchwidget.h"

#include <QAction>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QTimer>
#include <QToolButton>

SearchWidget::SearchWidget(QWidget *parent)
    : QWidget(parent)
{
    m_edit = new QLineEdit(this);
    m_edit->setObjectName(QStringLiteral("searchEdit"));
    m_edit->setPlaceholderText(tr("Поиск"));
    m_edit->addAction(QIcon::fromTheme(QStringLiteral("action-search")),
                      QLineEdit::LeadingPosition);
    QAction *clearAction = m_edit->addAction(QIcon::fromTheme(QStringLiteral("action-clear")),
                                             QLineEdit::TrailingPosition);
    clearAction->setObjectName(QStringLiteral("clearAction"));
    clearAction->setToolTip(tr("Очистить"));
    clearAction->setVisible(false);

    m_advancedButton = new QToolButton(this);
    m_advancedButton->setObjectName(QStringLiteral("advancedButton"));
    m_advancedButton->setIcon(QIcon::fromTheme(QStringLiteral("action-filter")));
    m_advancedButton->setToolTip(tr("Расширенный поиск"));
    m_advancedButton->setAutoRaise(true);

    m_typingTimer = new QTimer(this);
    m_typingTimer->setSingleShot(true);
    m_typingTimer->setInterval(TypingPause);

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(m_edit, 1);
    layout->addWidget(m_advancedButton);
    setFocusProxy(m_edit);

    connect(m_edit, &QLineEdit::textChanged, clearAction,
            [clearAction](const QString &text) { clearAction->setVisible(!text.isEmpty()); });
    connect(m_edit, &QLineEdit::textEdited, m_typingTimer, qOverload<>(&QTimer::start));
    connect(m_typingTimer, &QTimer::timeout, this, &SearchWidget::emitSearch);
    connect(m_edit, &QLineEdit::returnPressed, this, &SearchWidget::emitSearch);
    connect(clearAction, &QAction::triggered, this, &SearchWidget::clear);
    connect(m_advancedButton, &QToolButton::clicked, this, &SearchWidget::advancedClicked);
}

QString SearchWidget::text() const
{
    return m_edit->text();
}

void SearchWidget::setText(const QString &text)
{
    m_typingTimer->stop();
    m_edit->setText(text);
}

void SearchWidget::setPlaceholderText(const QString &text)
{
    m_edit->setPlaceholderText(text);
}

void SearchWidget::showAdvancedButton(bool show)
{
    m_advancedButton->setVisible(show);
}

bool SearchWidget::isAdvancedButtonShown() const
{
    return !m_advancedButton->isHidden();
}

void SearchWidget::clear()
{
    m_edit->clear();
    emitSearch();
}

void SearchWidget::emitSearch()
{
    m_typingTimer->stop();
    emit startSearch(m_edit->text());
}
