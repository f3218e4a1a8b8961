#include "mobileuserchekwizardpage.h"

#include "mobileusercheckmodel.h"
#include "newusertask.h"
#include "ui_mobileuserchekwizardpage.h"

#include <src/mobileuserhelper.h>

#include <host/core/localstorage.h>
#include <host/core/passhash.h>
#include <host/core/zrglobals.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <shared/inheritdata.h>

#include <QHeaderView>
#include <QSortFilterProxyModel>
#include <QVariantList>
#include <QWizard>

MobileUserChekWizardPage::MobileUserChekWizardPage(QWidget *parent)
    : QWizardPage(parent)
    , m_ui(std::make_unique<Ui::MobileUserChekWizardPage>())
    , m_model(new MobileUserCheckModel(this))
    , m_proxy(new QSortFilterProxyModel(this))
{
    m_ui->setupUi(this);
    registerField(QStringLiteral("user/send_email"), m_ui->cbSendEmail);
    registerField(QStringLiteral("user/checked_uids"), this, "uids", SIGNAL(completeChanged()));

    m_proxy->setSourceModel(m_model);
    m_ui->userView->setModel(m_proxy);
    m_ui->userView->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    m_ui->userView->setSortingEnabled(true);
    m_ui->userView->sortByColumn(0, Qt::AscendingOrder);

    connect(m_model, &QAbstractItemModel::dataChanged, this,
            &MobileUserChekWizardPage::updateCheckstate);
    connect(m_ui->tbCheckAll, &QToolButton::clicked, m_model, &MobileUserCheckModel::checkAll);
    connect(m_ui->tbUncheckAll, &QToolButton::clicked, m_model,
            &MobileUserCheckModel::uncheckAll);
}

MobileUserChekWizardPage::~MobileUserChekWizardPage() = default;

void MobileUserChekWizardPage::initializePage()
{
    zeral::OBJECT_UID_LIST uids;
    const QVariantList chosen = field(QStringLiteral("user/uids")).toList();
    for (const QVariant &uid : chosen)
        uids.append(uid.toUInt());
    m_model->setUids(uids);
    // The clipboard holds one text: it is offered for one person only.
    const bool one = uids.size() == 1;
    m_ui->cbSaveToClipboard->setVisible(one);
    m_ui->cbSaveToClipboard->setChecked(one);
    updateCheckstate();
}

QSet<unsigned int> MobileUserChekWizardPage::checkedUids() const
{
    return m_model->checkedUids();
}

void MobileUserChekWizardPage::updateCheckstate()
{
    QVariantList uids;
    for (const unsigned int uid : m_model->checkedUids())
        uids.append(uid);
    setProperty("uids", uids);
    emit completeChanged();
}

bool MobileUserChekWizardPage::isComplete() const
{
    return !m_model->checkedUids().isEmpty();
}

void MobileUserChekWizardPage::setRoletemplates(zeral::ROLETEMPLATES_HASH rt_hash)
{
    m_roleTemplates = rt_hash;
    updateCheckstate();
}

void MobileUserChekWizardPage::proxyAppendTask(zeral::TaskInfo task)
{
    m_permissionTasks.append(task);
}

bool MobileUserChekWizardPage::validatePage()
{
    const QString roleTemplate = field(QStringLiteral("user/role/mobile_chief")).toBool()
                                     ? QStringLiteral("RT_MOBILE_CHIEF")
                                     : QStringLiteral("RT_MOBILE");
    // The people in the order of the table's rows, so that the run and its log follow what the
    // operator was shown.
    const QSet<unsigned int> checked = m_model->checkedUids();
    m_chainUids.clear();
    for (const unsigned int uid : m_model->uids()) {
        if (checked.contains(uid) && !m_chainUids.contains(uid))
            m_chainUids.append(uid);
    }
    for (const unsigned int uid : qAsConst(m_chainUids))
        appendPersonTasks(uid, roleTemplate);
    return !m_chainUids.isEmpty();
}

void MobileUserChekWizardPage::appendPersonTasks(unsigned int uid, const QString &roleTemplate)
{
    const zeral::ObjectInfo &employee = zeral::LocalStorage::instance()->constObject(
        uid, QLatin1String(zeral::SUBJECT_DATANAME));
    // The address is the login as it stands; the server judges it.
    const QString email = employee.parameters.value(QLatin1String(db::worker::EMAIL));
    const QString password = MobileUserHelper::generatePassword();
    const QString authData = MobileUserHelper::generateAuthData(email, password);

    const auto employeeValue = [&employee](const char *key) {
        return employee.parameters.value(QLatin1String(key));
    };
    const QHash<QString, QString> properties{
        {QLatin1String(db::user::LOGIN), email},
        {QLatin1String(db::user::NAME), employeeValue(db::user::NAME)},
        {QLatin1String(db::user::SURNAME), employeeValue(db::user::SURNAME)},
        {QLatin1String(db::user::PATRONYMIC), employeeValue(db::user::PATRONYMIC)},
        {QLatin1String(db::user::PASSHASH), PassHash::encrypt(password, QCryptographicHash::Md5)}};
    const QString startText = tr("Добавление пользователя %1");
    const QString errorText = tr("Ошибка добавления пользователя %1");
    zeral::TaskInfo create
        = NewUserTask::objectTask(QStringLiteral("create_object"), properties, nullptr,
                                  QStringLiteral("objectAdded"), startText, errorText);
    create.data.insert(QStringLiteral("inherit-child-%1").arg(zeral::INHERIT_WORKER_USER),
                       QString::number(uid));
    // Named by the address as it stands, whatever name the login would make.
    create.startMessage = startText.arg(email);
    create.errorMessage = errorText.arg(email);
    emit appendTask(create);

    zeral::TaskInfo prescribe;
    prescribe.type = QStringLiteral("prescribe");
    prescribe.data.insert(QLatin1String(db::user::ROLE_TEMPLATE), roleTemplate);
    prescribe.method = QStringLiteral("objectUpdated");
    prescribe.startMessage = tr("Применение параметров роли пользователя");
    prescribe.errorMessage = tr("Ошибка применения параметров роли пользователя");
    emit appendTask(prescribe);

    for (const zeral::TaskInfo &permissions : qAsConst(m_permissionTasks))
        emit appendTask(permissions);

    if (m_ui->cbSaveToClipboard->isChecked()) {
        zeral::TaskInfo clipboard;
        clipboard.type = QStringLiteral("save_to_clipboard");
        clipboard.data.insert(QStringLiteral("text"), authData);
        clipboard.method = QStringLiteral("objectUpdated");
        clipboard.startMessage
            = tr("Сохранение параметров авторизации %1 в буфер обмена").arg(email);
        clipboard.errorMessage
            = tr("Ошибка сохранения параметров авторизации %1 в буфер обмена").arg(email);
        emit appendTask(clipboard);
    }
    if (m_ui->cbSendEmail->isChecked()) {
        zeral::TaskInfo mail;
        mail.type = QStringLiteral("send_email");
        mail.data.insert(QStringLiteral("addr_to"), email);
        mail.data.insert(QStringLiteral("greetings"), ZRGlobals::objectName(employee));
        mail.data.insert(QStringLiteral("auth_data"), authData);
        mail.method = QStringLiteral("objectUpdated");
        mail.startMessage = tr("Отправка параметров авторизации на e-mail %1").arg(email);
        mail.errorMessage = tr("Ошибка отправки параметров авторизации на e-mail %1").arg(email);
        emit appendTask(mail);
    }
}
