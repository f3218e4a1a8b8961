#include "mobileuserproperties.h"
#include "ui_mobileuserproperties.h"

#include <src/passworddialog.h>
#include <src/userproperties.h>

#include <host/core/localstorage.h>
#include <host/core/zrglobals.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <shared/inheritdata.h>

#include <QDate>
#include <QIcon>
#include <QStringList>

namespace {
QString param(const zeral::ObjectInfo &object, const char *key)
{
    return object.parameters.value(QLatin1String(key));
}

// A department tree deeper than this is taken for a loop in the store.
constexpr int MaxDepartmentDepth = 99;
} // namespace

MobileUserProperties::MobileUserProperties(QWidget *parent)
    : QWidget(parent)
    , m_ui(std::make_unique<Ui::MobileUserProperties>())
{
    m_ui->setupUi(this);
    m_ui->wrongEmailIcon->setPixmap(
        QIcon::fromTheme(QStringLiteral("common-warning")).pixmap(24, 24));

    // Set up before the connections, so that the default date is no edit.
    ZRDateEdit *dateEdit = UserProperties::replaceExpiryDateEdit(m_ui->passwordExpireDateEdit);
    m_ui->passwordExpireDateEdit = dateEdit;
    setTabOrder(m_ui->passwExpireCheck, dateEdit);

    // Empty and locked until it gets a user.
    m_ui->actionChangePassword->setEnabled(false);
    setEnabled(false);

    connect(m_ui->loginEdit, &QLineEdit::textEdited, this, &MobileUserProperties::checkLogin);
    connect(m_ui->passwExpireCheck, &QCheckBox::toggled, this,
            &MobileUserProperties::passwExpireCheckChanged);
    connect(dateEdit, &QDateEdit::dateChanged, this, &MobileUserProperties::dataEdited);
    connect(m_ui->actionChangePassword, &QAction::triggered, this,
            &MobileUserProperties::showChangePasswordDialog);
}

MobileUserProperties::~MobileUserProperties() = default;

const zeral::ObjectInfo &MobileUserProperties::linkedWorker(const zeral::ObjectInfo &user)
{
    const auto link = user.children.constFind(zeral::INHERIT_WORKER_USER);
    const zeral::TYPE_ID workerUid = link != user.children.cend() ? link->child : 0;
    return zeral::LocalStorage::instance()->constObject(workerUid,
                                                        QLatin1String(zeral::SUBJECT_DATANAME));
}

QString MobileUserProperties::depName(unsigned int uid) const
{
    const auto &departments = zeral::LocalStorage::instance()->constObjects(
        QLatin1String(zeral::ORGSTRUCTURE_DATANAME));
    QStringList path;
    for (int step = 0; step < MaxDepartmentDepth && uid != 0; ++step) {
        const zeral::ObjectInfo department = departments.value(uid);
        if (department.type != QLatin1String(db::orgstructure::SUBJECTROOT))
            path.prepend(ZRGlobals::objectName(department));
        uid = department.parent;
    }
    return path.join(QLatin1Char(','));
}

void MobileUserProperties::clear()
{
    m_current = zeral::ObjectInfo();
    setEnabled(false);
    m_ui->nameLabel->clear();
    m_ui->jobLabel->clear();
    m_ui->depLabel->clear();
    m_ui->loginEdit->clear();
    m_ui->passwExpireCheck->setChecked(false);
}

void MobileUserProperties::setCurrent(const zeral::ObjectInfo &info)
{
    if (info.uid == 0) {
        clear();
        return;
    }
    // A failed save hands the held user back to restore the form.
    if (&info != &m_current)
        m_current = info;

    UserProperties::installLoginValidator(m_ui->loginEdit, m_current.uid);
    m_ui->actionChangePassword->setEnabled(m_current.uid != 0);
    setEnabled(true);

    const zeral::ObjectInfo &worker = linkedWorker(m_current);
    const zeral::ObjectInfo &job = zeral::LocalStorage::instance()->constObject(
        param(worker, db::worker::JOBLINK).toUInt(), QLatin1String(zeral::JOB_DATANAME));
    m_ui->loginEdit->setText(ZRGlobals::objectName(m_current));
    m_ui->nameLabel->setText(ZRGlobals::objectName(worker));
    m_ui->jobLabel->setText(ZRGlobals::objectName(job));
    m_ui->depLabel->setText(depName(worker.parent));

    // Turning the box on is an edit like any other; the dialog takes the Save button away
    // after filling.
    const QString expires = param(m_current, db::database::PASSWORD_EXPIRED);
    m_ui->passwExpireCheck->setChecked(!expires.isEmpty());
    ZRDateEdit *dateEdit = m_ui->passwordExpireDateEdit;
    dateEdit->setEnabled(m_ui->passwExpireCheck->isChecked());
    if (m_ui->passwExpireCheck->isChecked()) {
        // A date from the store is no edit.
        disconnect(dateEdit, &QDateEdit::dateChanged, this, &MobileUserProperties::dataEdited);
        dateEdit->setDate(QDate::fromString(expires, Qt::ISODate));
        connect(dateEdit, &QDateEdit::dateChanged, this, &MobileUserProperties::dataEdited);
    }
    checkEmail();
}

void MobileUserProperties::applyChanges()
{
    QHash<QString, QVariant> changes;
    const QString login = m_ui->loginEdit->text();
    if (login != param(m_current, db::user::LOGIN))
        changes.insert(QLatin1String(db::user::LOGIN), login);
    // The expiry always goes; an empty one clears it at the server.
    changes.insert(QLatin1String(db::database::PASSWORD_EXPIRED),
                   m_ui->passwExpireCheck->isChecked()
                       ? m_ui->passwordExpireDateEdit->date().toString(Qt::ISODate)
                       : QString());
    emit appendTask(UserProperties::makeSaveTask(
        this, m_current, changes, "saved", tr("Сохранение параметров пользователя %1"),
        tr("Ошибка сохранения параметров пользователя %1")));
}

void MobileUserProperties::saved(zeral::TYPE_ID uid)
{
    if (uid == 0) {
        setCurrent(m_current);
        emit showMessage(tr("Ошибка сохранения параметров пользователя"));
        return;
    }
    const QString login = m_ui->loginEdit->text();
    m_current.parameters.insert(QLatin1String(db::user::LOGIN), login);
    // The date is held even when the box is off; the held copy lives only with the dialog.
    m_current.parameters.insert(QLatin1String(db::database::PASSWORD_EXPIRED),
                                m_ui->passwordExpireDateEdit->date().toString(Qt::ISODate));
    emit loginChanged(login);
    emit showMessage(tr("Параметры пользователя сохранены"));
}

void MobileUserProperties::passwordSet(zeral::TYPE_ID uid)
{
    setEnabled(true);
    if (uid == 0)
        emit showMessage(tr("Ошибка установки пароля"));
    else
        emit showMessage(tr("Пароль пользователя %1 установлен").arg(m_ui->loginEdit->text()));
}

void MobileUserProperties::checkLogin()
{
    checkEmail();
    if (UserProperties::isLoginAcceptable(m_ui->loginEdit))
        emit dataEdited();
    else
        emit denyEdit();
}

void MobileUserProperties::passwExpireCheckChanged(bool checked)
{
    m_ui->passwordExpireDateEdit->setEnabled(checked);
    emit dataEdited();
}

void MobileUserProperties::showChangePasswordDialog()
{
    PasswordDialog dialog(m_current.uid, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    emit appendTask(UserProperties::makeSaveTask(
        this, m_current, UserProperties::setPasswordChanges(dialog.password()), "passwordSet",
        tr("Установка пароля пользователя %1"), tr("Ошибка установки пароля пользователя %1")));
    setEnabled(false);
}

void MobileUserProperties::checkEmail()
{
    // Exact and case-sensitive: the mobile application logs in with the address as it is.
    const QString email = param(linkedWorker(m_current), db::worker::EMAIL);
    m_ui->wrongEmailWidget->setVisible(email != m_ui->loginEdit->text());
}
