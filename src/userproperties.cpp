#include "userproperties.h"
#include "ui_userproperties.h"

#include <src/identificationpolicy.h>
#include <src/passworddialog.h>
#include <src/pastmarkingdateedit.h>
#include <src/userloginvalidator.h>
#include <src/usertaskdata.h>

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/core/logging.h>
#include <host/core/passhash.h>
#include <host/core/zrglobals.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>

#include <QCryptographicHash>
#include <QDate>
#include <QMessageBox>
#include <QSignalBlocker>
#include <QStringList>

namespace {
QString param(const zeral::ObjectInfo &object, const char *key)
{
    return object.parameters.value(QLatin1String(key));
}
} // namespace

UserProperties::UserProperties(QWidget *parent)
    : QWidget(parent)
    , m_ui(std::make_unique<Ui::UserProperties>())
{
    m_ui->setupUi(this);

    ZRDateEdit *dateEdit = replaceExpiryDateEdit(m_ui->passwordExpireDateEdit);
    m_ui->passwordExpireDateEdit = dateEdit;
    setTabOrder(m_ui->passwExpireCheck, dateEdit);

    ZRComboBox *identType = m_ui->cbIdentType;
    IdentificationPolicy::fillBox(identType);

    QFont warningFont = font();
    warningFont.setPointSize(warningFont.pointSize() + 2);
    m_ui->lbWarning->setFont(warningFont);
    m_ui->lbWarning->hide();

    connect(m_ui->loginEdit, &QLineEdit::textEdited, this, &UserProperties::checkLogin);
    for (ParameterizedEdit *edit : {m_ui->surnameEdit, m_ui->nameEdit, m_ui->patronymicEdit})
        connect(edit, &QLineEdit::textEdited, this, &UserProperties::dataEdited);
    connect(identType, qOverload<int>(&QComboBox::activated), this,
            &UserProperties::identTypeChanged);
    connect(m_ui->passwExpireCheck, &QCheckBox::toggled, this,
            &UserProperties::passwExpireCheckChanged);
    connect(dateEdit, &QDateEdit::dateChanged, this, &UserProperties::dataEdited);
    connect(m_ui->actionResetPassword, &QAction::triggered, this, &UserProperties::clearPassword);
    connect(m_ui->actionChangePassword, &QAction::triggered, this, &UserProperties::setPassword);
    // A Kerberos account has neither a password nor a login of ours to change.
    connect(identType, &ZRComboBox::currentDataChanged, this, [this](const QVariant &data) {
        const bool ours = data.toInt() != IdentificationPolicy::Kerberos;
        m_ui->actionChangePassword->setEnabled(ours);
        m_ui->actionResetPassword->setEnabled(ours);
        m_ui->loginEdit->setEnabled(ours);
    });

    // The dialog's tool bar offers the actions of the tab in front.
    addAction(m_ui->actionChangePassword);
    addAction(m_ui->actionResetPassword);
}

UserProperties::~UserProperties() = default;

void UserProperties::clear()
{
    m_current = zeral::ObjectInfo();
    setEnabled(false);
    for (ParameterizedEdit *edit :
         {m_ui->loginEdit, m_ui->surnameEdit, m_ui->nameEdit, m_ui->patronymicEdit})
        edit->clear();
    // Emptying the form is no edit of the operator's.
    const QSignalBlocker quiet(m_ui->passwExpireCheck);
    m_ui->passwExpireCheck->setChecked(false);
    m_ui->passwordExpireDateEdit->setEnabled(false);
}

void UserProperties::setCurrent(const zeral::ObjectInfo &info)
{
    if (info.uid == 0) {
        clear();
        return;
    }
    // A failed save hands the stored user back to restore the form.
    if (&info != &m_current)
        m_current = info;

    installLoginValidator(m_ui->loginEdit, m_current.uid);

    setEnabled(true);
    m_ui->loginEdit->setText(param(m_current, db::user::LOGIN));
    m_ui->surnameEdit->setText(param(m_current, db::user::SURNAME));
    m_ui->nameEdit->setText(param(m_current, db::user::NAME));
    m_ui->patronymicEdit->setText(param(m_current, db::user::PATRONYMIC));

    const QString expires = param(m_current, db::database::PASSWORD_EXPIRED);
    {
        // Filling the form is no edit: the box and the date edit are set here directly.
        const QSignalBlocker quiet(m_ui->passwExpireCheck);
        m_ui->passwExpireCheck->setChecked(!expires.isEmpty());
    }
    ZRDateEdit *dateEdit = m_ui->passwordExpireDateEdit;
    dateEdit->setEnabled(!expires.isEmpty());
    if (m_ui->passwExpireCheck->isChecked()) {
        // Only this connection goes quiet: the date edit still marks a passed date.
        disconnect(dateEdit, &QDateEdit::dateChanged, this, &UserProperties::dataEdited);
        dateEdit->setDate(QDate::fromString(expires, Qt::ISODate));
        connect(dateEdit, &QDateEdit::dateChanged, this, &UserProperties::dataEdited);
    }

    // An operator edits his own name only as an administrator, and never resets his own
    // password or moves his own expiry here.
    const bool self = m_current.uid == AuthData::userId();
    const QString roleTemplate = param(m_current, db::user::ROLE_TEMPLATE);
    const bool mayEditOwnName = roleTemplate == QLatin1String("RT_SUPERVISOR")
                                || roleTemplate == QLatin1String("RT_ADMINISTRATOR");
    if (self) {
        for (ParameterizedEdit *edit :
             {m_ui->loginEdit, m_ui->surnameEdit, m_ui->nameEdit, m_ui->patronymicEdit})
            edit->setEnabled(mayEditOwnName);
    }

    // Selecting the policy also locks the login of a Kerberos account.
    if (!m_current.type.isEmpty())
        m_ui->cbIdentType->setCurrentData(param(m_current, db::user::IDENT_TYPE).toUInt());

    // Any other policy selected just now has given the login and the reset back; on the
    // operator's own account the locks above hold all the same.
    if (self) {
        if (!mayEditOwnName)
            m_ui->loginEdit->setEnabled(false);
        m_ui->passwExpireCheck->setEnabled(false);
        dateEdit->setEnabled(false);
        m_ui->actionResetPassword->setEnabled(false);
    }

    // Nobody renames "root".
    if (m_ui->loginEdit->isEnabled())
        m_ui->loginEdit->setEnabled(param(m_current, db::user::LOGIN) != QLatin1String("root"));
}

void UserProperties::applyChanges()
{
    QHash<QString, QVariant> changes;
    const QList<QPair<const char *, ParameterizedEdit *>> edits{
        {db::user::LOGIN, m_ui->loginEdit},
        {db::user::SURNAME, m_ui->surnameEdit},
        {db::user::NAME, m_ui->nameEdit},
        {db::user::PATRONYMIC, m_ui->patronymicEdit}};
    for (const auto &edit : edits) {
        if (edit.second->text() != param(m_current, edit.first))
            changes.insert(QLatin1String(edit.first), edit.second->text());
    }
    // The expiry always goes, so that the server holds what the form shows.
    changes.insert(QLatin1String(db::database::PASSWORD_EXPIRED),
                   m_ui->passwExpireCheck->isChecked()
                       ? m_ui->passwordExpireDateEdit->date().toString(Qt::ISODate)
                       : QString());
    const QVariant identType = m_ui->cbIdentType->currentData();
    if (identType.toUInt() != param(m_current, db::user::IDENT_TYPE).toUInt())
        changes.insert(QLatin1String(db::user::IDENT_TYPE), identType.toString());

    emit appendTask(makeTask(changes, "saved", tr("Сохранение параметров пользователя %1"),
                             tr("Ошибка сохранения параметров пользователя %1")));
}

void UserProperties::saved(zeral::TYPE_ID uid)
{
    if (uid == 0) {
        setCurrent(m_current);
        emit showMessage(tr("Ошибка сохранения параметров пользователя"));
        return;
    }
    QHash<QString, QString> &parameters = m_current.parameters;
    parameters.insert(QLatin1String(db::user::LOGIN), m_ui->loginEdit->text());
    parameters.insert(QLatin1String(db::user::SURNAME), m_ui->surnameEdit->text());
    parameters.insert(QLatin1String(db::user::NAME), m_ui->nameEdit->text());
    parameters.insert(QLatin1String(db::user::PATRONYMIC), m_ui->patronymicEdit->text());
    parameters.insert(QLatin1String(db::user::IDENT_TYPE),
                      m_ui->cbIdentType->currentData().toString());
    parameters.insert(QLatin1String(db::database::PASSWORD_EXPIRED),
                      m_ui->passwordExpireDateEdit->date().toString(Qt::ISODate));
    emit showMessage(tr("Параметры пользователя сохранены"));
}

void UserProperties::passwordCleared(zeral::TYPE_ID uid)
{
    setEnabled(true);
    if (uid == 0)
        emit showMessage(tr("Ошибка сброса пароля"));
    else
        emit showMessage(tr("Пароль пользователя %1 сброшен на пароль по умолчанию")
                             .arg(m_ui->loginEdit->text()));
}

void UserProperties::passwordSet(zeral::TYPE_ID uid)
{
    setEnabled(true);
    if (uid == 0)
        emit showMessage(tr("Ошибка установки пароля"));
    else
        emit showMessage(tr("Пароль пользователя %1 установлен").arg(m_ui->loginEdit->text()));
}

void UserProperties::setTemplatesCount(zeral::TYPE_ID uid, int count)
{
    if (uid == m_current.uid)
        m_templatesCount = count;
    // Without templates nobody logs in by fingerprint; a user already on such a policy keeps
    // it, since a disabled item stays selected.
    const bool hasTemplates = m_templatesCount != 0;
    ZRComboBox *identType = m_ui->cbIdentType;
    identType->setItemEnabled(identType->findData(IdentificationPolicy::Biometrics), hasTemplates);
    identType->setItemEnabled(identType->findData(IdentificationPolicy::PasswordBiometrics),
                              hasTemplates);
    m_ui->lbWarning->setVisible(!hasTemplates);
}

void UserProperties::checkLogin()
{
    if (isLoginAcceptable(m_ui->loginEdit))
        emit dataEdited();
    else
        emit denyEdit();
}

void UserProperties::clearPassword()
{
    const QMessageBox::StandardButton answer = QMessageBox::question(
        this, tr("Сброс пароля"),
        tr("Сбросить пароль для пользователя %1?").arg(m_ui->loginEdit->text()),
        QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    if (answer != QMessageBox::Yes)
        return;

    QHash<QString, QVariant> changes;
    changes.insert(QLatin1String(db::user::CLEAR_PASSWORD), 1);
    changes.insert(QLatin1String(db::user::PASSHASH),
                   PassHash::encrypt(QString(), QCryptographicHash::Md5));

    const zeral::LocalStorage::Objects &databases
        = zeral::LocalStorage::instance()->constObjects(QLatin1String(zeral::DB_DATANAME));
    if (databases.isEmpty()) {
        qCWarning(ucc()) << "ERROR: no DB objects!";
        return;
    }
    const QList<unsigned int> keys = databases.keys(); // one value per key in the store
    if (keys.isEmpty()) {
        qCWarning(ucc()) << "ERROR: DB objects is empty!";
        return;
    }
    // The password a reset user starts with is the installation's default.
    const QString defaultPassword
        = param(databases.constValue(keys.first()), db::database::PASSWORD_DEF);
    changes.insert(QLatin1String(db::user::PASSHASH),
                   PassHash::encrypt(defaultPassword, QCryptographicHash::Md5));

    emit appendTask(makeTask(changes, "passwordCleared", tr("Сброс пароля пользователя %1"),
                             tr("Ошибка сброса пароля пользователя %1")));
    setEnabled(false);
}

void UserProperties::setPassword()
{
    PasswordDialog dialog(m_current.uid, this);
    if (dialog.exec() != QDialog::Accepted)
        return;

    emit appendTask(makeTask(setPasswordChanges(dialog.password()), "passwordSet", tr("Установка пароля пользователя %1"),
                             tr("Ошибка установки пароля пользователя %1")));
    setEnabled(false);
}

void UserProperties::passwExpireCheckChanged(bool checked)
{
    m_ui->passwordExpireDateEdit->setEnabled(checked);
    emit dataEdited();
}

void UserProperties::identTypeChanged()
{
    emit dataEdited();
}

zeral::TaskInfo UserProperties::makeTask(const QHash<QString, QVariant> &changes,
                                         const char *method, const QString &startMessage,
                                         const QString &errorMessage)
{
    return makeSaveTask(this, m_current, changes, method, startMessage, errorMessage);
}

void UserProperties::installLoginValidator(ParameterizedEdit *loginEdit, zeral::TYPE_ID uid)
{
    QStringList logins;
    const auto &users
        = zeral::LocalStorage::instance()->constObjects(QLatin1String(zeral::USER_DATANAME));
    for (auto it = users.cbegin(); it != users.cend(); ++it) {
        if (it.key() != uid)
            logins.append(ZRGlobals::objectName(it.value()));
    }
    // Each user gets a validator of his own; the earlier ones stay children of the edit.
    loginEdit->setValidator(new UserLoginValidator(logins, loginEdit));
    loginEdit->highlightValidation(true);
    loginEdit->setEmptyTextAllowed(false);
}

bool UserProperties::isLoginAcceptable(const ParameterizedEdit *loginEdit)
{
    const QValidator *validator = loginEdit->validator();
    QString login = loginEdit->text();
    int pos = -1;
    return !validator || validator->validate(login, pos) == QValidator::Acceptable;
}

ZRDateEdit *UserProperties::replaceExpiryDateEdit(ZRDateEdit *formEdit)
{
    ZRDateEdit *dateEdit = PastMarkingDateEdit::replace(formEdit);
    // A new expiry lasts as long as the installation gives a new password.
    const uint days
        = param(zeral::LocalStorage::instance()->dbSettings(), db::database::PASSWORD_EXPIRED)
              .toUInt();
    dateEdit->setDate(QDate::currentDate().addDays(days));
    return dateEdit;
}

QHash<QString, QVariant> UserProperties::setPasswordChanges(const QString &password)
{
    QHash<QString, QVariant> changes;
    changes.insert(QLatin1String(db::user::SET_PASSWORD), 1);
    changes.insert(QLatin1String(db::user::PASSHASH),
                   PassHash::encrypt(password, QCryptographicHash::Md5));
    return changes;
}

zeral::TaskInfo UserProperties::makeSaveTask(QObject *receiver, const zeral::ObjectInfo &object,
                                             const QHash<QString, QVariant> &changes,
                                             const char *method, const QString &startMessage,
                                             const QString &errorMessage)
{
    zeral::TaskInfo task;
    task.uid = object.uid;
    task.type = QStringLiteral("save_object");
    UserTaskData::putChanges(&task, object, changes);
    task.receiver = receiver;
    task.method = QLatin1String(method);
    const QString name = ZRGlobals::objectName(object);
    task.startMessage = startMessage.arg(name);
    task.errorMessage = errorMessage.arg(name);
    qCDebug(ucc()) << "properties: task" << task.method << "of user" << task.uid << "keys"
                   << changes.keys();
    return task;
}
