#include "passwordchangewidget.h"

#include "passwordcriteriapanel.h"

#include <host/core/guipassfuncs.h>

#include <KPasswordLineEdit>

#include <QCheckBox>
#include <QEvent>
#include <QGridLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>

namespace {
constexpr int CriteriaGap = 8;
}

PasswordChangeWidget::PasswordChangeWidget(QWidget *parent)
    : QWidget(parent)
    , m_options(GUIPassFuncs::getPasswordOptions())
{
    const auto makeEdit = [this](const QString &name) {
        auto *edit = new KPasswordLineEdit(this);
        edit->setObjectName(name);
        edit->setRevealPasswordAvailable(true);
        edit->lineEdit()->setMaxLength(GUIPassFuncs::MaxLength);
        connect(edit, &KPasswordLineEdit::passwordChanged, this, [this] {
            showCriteriaWidget();
            check();
        });
        return edit;
    };
    m_passwordEdit = makeEdit(QStringLiteral("passwordEdit"));
    m_repeatEdit = makeEdit(QStringLiteral("repeatEdit"));
    setFocusProxy(m_passwordEdit);

    m_generateButton = new QPushButton(QIcon::fromTheme(QStringLiteral("action-generate")),
                                       tr("Сгенерировать"), this);
    m_generateButton->setObjectName(QStringLiteral("generateButton"));
    m_generateButton->setToolTip(tr("Создать случайный пароль, отвечающий требованиям"));
    connect(m_generateButton, &QPushButton::clicked, this, &PasswordChangeWidget::generatePassword);

    m_showCheck = new QCheckBox(tr("Показать пароль"), this);
    m_showCheck->setObjectName(QStringLiteral("showPasswordCheck"));
    connect(m_showCheck, &QCheckBox::toggled, this, [this](bool shown) {
        const QLineEdit::EchoMode mode = shown ? QLineEdit::Normal : QLineEdit::Password;
        m_passwordEdit->setEchoMode(mode);
        m_repeatEdit->setEchoMode(mode);
    });

    auto *layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *passwordLabel = new QLabel(tr("Новый пароль:"), this);
    passwordLabel->setBuddy(m_passwordEdit);
    auto *repeatLabel = new QLabel(tr("Подтверждение:"), this);
    repeatLabel->setBuddy(m_repeatEdit);
    layout->addWidget(passwordLabel, 0, 0);
    layout->addWidget(m_passwordEdit, 0, 1, 1, 2);
    layout->addWidget(repeatLabel, 1, 0);
    layout->addWidget(m_repeatEdit, 1, 1, 1, 2);
    layout->addWidget(m_showCheck, 2, 1);
    layout->addWidget(m_generateButton, 2, 2, Qt::AlignRight);
    layout->setColumnStretch(1, 1);

    m_criteria = new PasswordCriteriaPanel(this);
    updateCriteriaTexts();
    check();
}

PasswordChangeWidget::~PasswordChangeWidget()
{
    delete m_criteria;
}

PasswordCriteriaPanel *PasswordChangeWidget::criteriaWidget() const
{
    return m_criteria;
}

QString PasswordChangeWidget::password() const
{
    return m_passwordEdit->password();
}

void PasswordChangeWidget::setPasswordOptions(const QMap<QString, QVariant> &options)
{
    m_options = options;
    updateCriteriaTexts();
    check();
}

QStringList PasswordChangeWidget::unmetCriteria() const
{
    QStringList unmet = GUIPassFuncs::unmetCriteria(password(), m_options);
    if (password() != m_repeatEdit->password())
        unmet.append(PasswordCriteriaPanel::Match);
    return unmet;
}

void PasswordChangeWidget::setElementsEnabled(bool enabled)
{
    for (QWidget *child : findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
        if (child != m_criteria)
            child->setEnabled(enabled);
    }
    if (!enabled)
        hideCriteriaWidget();
}

void PasswordChangeWidget::setVisisbleExtraElements(bool visible)
{
    m_generateButton->setVisible(visible);
    m_showCheck->setVisible(visible);
}

void PasswordChangeWidget::startCheckingProcess()
{
    check();
    emit passCheckResult(m_verdict);
    showCriteriaWidget();
}

void PasswordChangeWidget::moveCriteriaWidget()
{
    if (!m_criteria)
        return;
    m_criteria->adjustSize();
    const QWidget *top = window();
    const QRect frame = top->frameGeometry();
    const QPoint fieldTop = m_passwordEdit->mapToGlobal(QPoint(0, 0));
    QPoint pos(frame.right() + 1 + CriteriaGap, fieldTop.y());
    // Beside the window on the right, or on the left when the screen ends there.
    if (const QScreen *screen = top->screen()) {
        const QRect available = screen->availableGeometry();
        if (pos.x() + m_criteria->width() > available.right())
            pos.setX(frame.left() - CriteriaGap - m_criteria->width());
        pos.setY(qBound(available.top(), pos.y(), available.bottom() - m_criteria->height()));
    }
    m_criteria->move(pos);
}

void PasswordChangeWidget::hideCriteriaWidget()
{
    m_restoreCriteria = false;
    if (m_criteria)
        m_criteria->hide();
}

void PasswordChangeWidget::generatePassword()
{
    const QString generated = GUIPassFuncs::generatePassword(m_options);
    m_showCheck->setChecked(true); // a generated password is read or copied, so it shows
    m_passwordEdit->setPassword(generated);
    m_repeatEdit->setPassword(generated);
    emit passwordGenerated(generated);
}

void PasswordChangeWidget::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    const bool shown = m_criteria && m_criteria->isVisible();
    hideCriteriaWidget();
    m_restoreCriteria = shown;
}

void PasswordChangeWidget::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (m_restoreCriteria) {
        m_restoreCriteria = false;
        showCriteriaWidget();
    }
}

void PasswordChangeWidget::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::EnabledChange && !isEnabled())
        hideCriteriaWidget();
}

void PasswordChangeWidget::check()
{
    const QStringList unmet = unmetCriteria();
    if (m_criteria)
        m_criteria->setUnmet(unmet);
    const bool verdict = unmet.isEmpty();
    if (verdict == m_verdict)
        return;
    m_verdict = verdict;
    emit passCheckResult(verdict);
}

void PasswordChangeWidget::showCriteriaWidget()
{
    if (!m_criteria || !isVisible() || !m_passwordEdit->isEnabled())
        return;
    moveCriteriaWidget();
    m_criteria->show();
}

void PasswordChangeWidget::updateCriteriaTexts()
{
    const int minLength
        = qBound(1, m_options.value(GUIPassFuncs::MinLength).toInt(), GUIPassFuncs::MaxLength);
    QList<QPair<QString, QString>> criteria{
        {GUIPassFuncs::MinLength, tr("Не менее %n символов", nullptr, minLength)}};
    if (m_options.value(GUIPassFuncs::RequireUpper).toBool())
        criteria.append({GUIPassFuncs::RequireUpper, tr("Заглавная буква")});
    if (m_options.value(GUIPassFuncs::RequireLower).toBool())
        criteria.append({GUIPassFuncs::RequireLower, tr("Строчная буква")});
    if (m_options.value(GUIPassFuncs::RequireDigit).toBool())
        criteria.append({GUIPassFuncs::RequireDigit, tr("Цифра")});
    if (m_options.value(GUIPassFuncs::RequireSpecial).toBool())
        criteria.append({GUIPassFuncs::RequireSpecial, tr("Специальный символ (!, #, % ...)")});
    criteria.append({PasswordCriteriaPanel::Match, tr("Пароли совпадают")});
    if (m_criteria)
        m_criteria->setCriteria(criteria);
}
