#include "userprogresswizardpage.h"

#include <src/rolecontainer.h>

#include <host/core/authdata.h>
#include <host/gui/biometrics/authorizationwidget.h>
#include <host/gui/dialogs/validatingdialog.h>

#include <QDialogButtonBox>
#include <QLabel>
#include <QLayout>
#include <QPointer>
#include <QPushButton>
#include <QWizard>

UserProgressWizardPage::UserProgressWizardPage(QWidget *parent)
    : BaseProgressWizardPage(parent)
    , m_note(new QLabel(this))
{
    setTitle(tr("Сохранение"));
    m_note->setObjectName(QStringLiteral("noteLabel"));
    m_note->setWordWrap(true);
    m_note->setTextInteractionFlags(Qt::TextSelectableByMouse);
    QPalette notePalette = m_note->palette();
    notePalette.setColor(QPalette::WindowText, QColor(0xb7, 0x1c, 0x1c));
    m_note->setPalette(notePalette);
    m_note->hide();
    layout()->addWidget(m_note);
    connect(this, &BaseProgressWizardPage::runFinished, this, &UserProgressWizardPage::runEnded);
}

void UserProgressWizardPage::initializePage()
{
    if (!verifyCreateUser())
        dropTaskQueue(tr("Пользователь не прошел верификацию для создания нового пользователя."));
    BaseProgressWizardPage::initializePage();
}

void UserProgressWizardPage::objectAdded(zeral::TYPE_ID uid)
{
    if (uid != 0 && state() == State::Running) {
        m_createdUid = uid;
        m_createdUids.append(uid);
    }
    BaseProgressWizardPage::objectAdded(uid);
}

void UserProgressWizardPage::objectUpdated(zeral::TYPE_ID uid)
{
    if (uid == 0 && state() == State::Running && !m_createdUids.isEmpty())
        m_failedAfterCreation = true;
    BaseProgressWizardPage::objectUpdated(uid);
}

void UserProgressWizardPage::setOutcomeSummary(OutcomeSummary summary)
{
    m_summary = std::move(summary);
}

bool UserProgressWizardPage::verifyCreateUser()
{
    if (!userctl::RoleContainer::requireConfirmUserCreate())
        return true;

    QPointer<ValidatingDialog> dialog = new ValidatingDialog(this);
    dialog->setObjectName(QStringLiteral("verifyCreateUserDialog"));
    dialog->setModal(true);
    auto *authorization = new AuthorizationWidget(dialog);
    dialog->setCentralWidget(authorization);

    // The widget gets the templates without the operator's own, as the stored hash keeps
    // them: nobody confirms the accounts he creates himself.
    connect(this, &UserProgressWizardPage::templatesForVerify, authorization,
            [this, authorization](const QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA> &given) {
                setTemplatesForVerify(given);
                authorization->setTemplates(templates);
            });
    connect(this, &UserProgressWizardPage::variantsForVerify, authorization,
            &AuthorizationWidget::addGrantVariant);
    connect(this, &UserProgressWizardPage::uidsForVerify, authorization,
            &AuthorizationWidget::setGrantedUids);
    connect(this, &UserProgressWizardPage::startVerify, authorization, &AuthorizationWidget::start);

    auto *confirm = new QPushButton(tr("Подтвердить"), dialog);
    auto *refuse = new QPushButton(tr("Отклонить"), dialog);
    confirm->setObjectName(QStringLiteral("confirmButton"));
    refuse->setObjectName(QStringLiteral("refuseButton"));
    dialog->buttonBox()->addButton(confirm, QDialogButtonBox::AcceptRole);
    dialog->buttonBox()->addButton(refuse, QDialogButtonBox::RejectRole);
    confirm->setEnabled(false);
    connect(authorization, &AuthorizationWidget::granted, confirm, &QPushButton::setEnabled);
    connect(refuse, &QPushButton::clicked, dialog, &QDialog::reject);
    connect(confirm, &QPushButton::clicked, dialog, &QDialog::accept);
    connect(confirm, &QPushButton::clicked, this,
            [this, authorization] { m_identifiedUids = authorization->identifiedUids(); });

    m_identifiedUids.clear();
    emit requestUserTemplatesForCreateUser();
    const bool accepted = dialog->exec() == QDialog::Accepted;
    // The dialog dies with the page if the wizard goes while it is open.
    delete dialog.data();
    return accepted;
}

void UserProgressWizardPage::setTemplatesForVerify(
    QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA> templates)
{
    templates.remove(AuthData::userId());
    this->templates = templates;
}

void UserProgressWizardPage::showFailureReason(const QString &reason)
{
    // The reason follows the failed result; while the run goes well a red message is another
    // window's business.
    if (reason.isEmpty() || state() != State::Failed)
        return;
    m_reason = reason;
    showNote(noteText());
}

void UserProgressWizardPage::refreshNote()
{
    if (state() == State::Finished || state() == State::Failed)
        showNote(noteText());
}

QString UserProgressWizardPage::noteText() const
{
    if (m_summary && (state() == State::Finished || state() == State::Failed)) {
        QStringList lines;
        if (state() == State::Failed && !m_reason.isEmpty())
            lines << m_reason;
        lines << m_summary(*this);
        lines.removeAll(QString());
        return lines.join(QLatin1Char('\n'));
    }
    if (state() != State::Failed)
        return QString();
    QStringList lines;
    if (!m_reason.isEmpty())
        lines << m_reason;
    if (m_createdUid != 0) {
        const QString login
            = wizard() ? wizard()->field(QStringLiteral("PT_LOGIN")).toString() : QString();
        lines << tr("Пользователь «%1» создан, но настроен не полностью. Завершите настройку в "
                    "его свойствах или удалите его.")
                     .arg(login);
    } else {
        lines << tr("Пользователь не создан.");
    }
    return lines.join(QLatin1Char('\n'));
}

void UserProgressWizardPage::runEnded(bool success)
{
    if (!success || m_summary)
        showNote(noteText());
}

void UserProgressWizardPage::showNote(const QString &text)
{
    // Red tells of a failure; a summary of a run that went well is plain text.
    QPalette notePalette = m_note->palette();
    notePalette.setColor(QPalette::WindowText, state() == State::Failed
                                                   ? QColor(0xb7, 0x1c, 0x1c)
                                                   : palette().color(QPalette::WindowText));
    m_note->setPalette(notePalette);
    m_note->setText(text);
    m_note->setVisible(!text.isEmpty());
}
