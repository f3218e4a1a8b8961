#include "userpropertywizardpage.h"
#include "ui_userpropertywizardpage.h"

#include <src/wizards/newusertask.h>

#include <host/core/passhash.h>
#include <shared/dbkeys.h>

#include <QCryptographicHash>
#include <QVariant>

namespace {
const QString LoginField = QLatin1String(db::user::LOGIN);
const QString SurnameField = QLatin1String(db::user::SURNAME);
const QString NameField = QLatin1String(db::user::NAME);
const QString PatronymicField = QLatin1String(db::user::PATRONYMIC);
// The account's first password, so that it never exists without one; the password page
// replaces it in the task right after.
const QString FirstPassword = QStringLiteral("Kk739146");
} // namespace

UserPropertyWizardPage::UserPropertyWizardPage(QWidget *parent)
    : ZRWizardPage(parent)
    , m_ui(std::make_unique<Ui::UserPropertyWizardPage>())
{
    m_ui->setupUi(this);
    m_ui->checkLoginButton->hide();

    registerField(LoginField, m_ui->loginEdit);
    registerField(SurnameField, m_ui->surnameEdit);
    registerField(NameField, m_ui->nameEdit);
    registerField(PatronymicField, m_ui->patronymicEdit);

    connect(m_ui->loginEdit, &QLineEdit::textEdited, this,
            &UserPropertyWizardPage::checkLoginExists);
    connect(m_ui->nameEdit, &QLineEdit::textEdited, this, &QWizardPage::completeChanged);
    connect(m_ui->patronymicEdit, &QLineEdit::textEdited, this, &QWizardPage::completeChanged);
    connect(m_ui->surnameEdit, &QLineEdit::textEdited, this, &QWizardPage::completeChanged);
}

UserPropertyWizardPage::~UserPropertyWizardPage() = default;

void UserPropertyWizardPage::setExistingUsers(
    const zeral::ZRHash<unsigned int, zeral::ObjectInfo> &users)
{
    m_users = users;
    m_logins.clear();
    // A user without a login stands under the empty text; of two users with one login, the
    // later in the hash's order wins.
    for (auto it = m_users.cbegin(); it != m_users.cend(); ++it)
        m_logins.insert(it.value().parameters.value(LoginField), it.key());
}

void UserPropertyWizardPage::checkLoginExists(QString login)
{
    // The edit is judged as it stands, whatever the signal carried.
    Q_UNUSED(login)
    m_ui->loginEdit->setBorderColor(loginUsable() ? ParameterizedEdit::Normal
                                                  : ParameterizedEdit::Error);
    emit completeChanged();
}

void UserPropertyWizardPage::initializePage()
{
    m_ui->loginEdit->setFocus(Qt::OtherFocusReason);
    checkLoginExists(m_ui->loginEdit->text());
}

bool UserPropertyWizardPage::isComplete() const
{
    return loginUsable();
}

// Only the emptiness check trims: " admin" is a login of its own beside "admin".
bool UserPropertyWizardPage::loginUsable() const
{
    const QString text = m_ui->loginEdit->text();
    return !text.trimmed().isEmpty() && !m_logins.contains(text);
}

QHash<QString, QString> UserPropertyWizardPage::properties() const
{
    QHash<QString, QString> properties;
    properties.insert(LoginField, field(LoginField).toString());
    for (const QString &key : {SurnameField, NameField, PatronymicField}) {
        const QVariant value = field(key);
        if (value.isValid())
            properties.insert(key, value.toString());
    }
    properties.insert(QLatin1String(db::user::PASSHASH),
                      PassHash::encrypt(FirstPassword, QCryptographicHash::Md5));
    return properties;
}

bool UserPropertyWizardPage::validatePage()
{
    emit appendTask(NewUserTask::objectTask(
        QStringLiteral("create_object"), properties(), this, QStringLiteral("objectAdded"),
        tr("Добавление пользователя %1"), tr("Ошибка добавления пользователя %1")));
    return true;
}
