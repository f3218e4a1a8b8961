#include "newmobileuserwizard.h"

#include "mobileuserchekwizardpage.h"
#include "mobileuserselectwizardpage.h"
#include "userpermissionswizardpage.h"
#include "userprogresswizardpage.h"

#include <src/userpermissions.h>

#include <host/core/localstorage.h>
#include <host/core/maildeliverywatcher.h>
#include <host/core/zrglobals.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>

#include <QTimer>

namespace {

// "Иванов Иван <ivanov@example.ru>" for the summary; the address as the store has it.
QString personText(unsigned int uid)
{
    const zeral::ObjectInfo &employee
        = zeral::LocalStorage::instance()->constObject(uid, QLatin1String(zeral::SUBJECT_DATANAME));
    const QString email = employee.parameters.value(QLatin1String(db::worker::EMAIL)).trimmed();
    const QString name = ZRGlobals::objectName(employee);
    return email.isEmpty() ? name : QStringLiteral("%1 <%2>").arg(name, email);
}

QString peopleText(const QList<unsigned int> &uids)
{
    QStringList names;
    for (const unsigned int uid : uids)
        names.append(personText(uid));
    return names.join(QStringLiteral(", "));
}

} // namespace

NewMobileUserWizard::NewMobileUserWizard(QWidget *parent)
    : PageListWizard(parent)
{
    if (objectName().isEmpty())
        setObjectName(QStringLiteral("NewMobileUserWizard"));
    resize(800, 600);
    setMinimumSize(800, 600);

    const auto add = [this](auto *page, const char *name) {
        page->setObjectName(QLatin1String(name));
        addPage(page);
        return page;
    };
    m_selectPage = add(new MobileUserSelectWizardPage, "selectUserPage");
    m_devicePage = add(new UserPermissionsWizardPage, "devicePermissionPage");
    m_departmentPage = add(new UserPermissionsWizardPage, "departmentPermissionPage");
    m_reportPage = add(new UserPermissionsWizardPage, "reportPermissionPage");
    m_checkPage = add(new MobileUserChekWizardPage, "checkUserPage");
    m_progressPage = add(new UserProgressWizardPage, "progressPage");

    setWindowTitle(tr("Мастер добавления мобильных пользователей"));
    setAttribute(Qt::WA_DeleteOnClose);
    setOption(QWizard::IndependentPages, false);

    setupPermissionsUserPage(m_departmentPage, tr("Полномочия на подразделения"),
                             QLatin1String(zeral::ORGSTRUCTURE_DATANAME));
    setupPermissionsUserPage(m_devicePage, tr("Полномочия на объекты доступа"),
                             QLatin1String(zeral::PLACING_DATANAME));
    setupPermissionsUserPage(m_reportPage, tr("Полномочия на отчеты"),
                             QLatin1String(zeral::REPORT_DATANAME));

    addPageGroup(tr("Полномочия"),
                 {DepartmentPermissionPage, DevicePermissionPage, ReportPermissionPage});
    addPageGroup(tr("Сохранение"), {CheckUserPage, ProgressPage});

    for (UserPermissionsWizardPage *page : {m_departmentPage, m_devicePage, m_reportPage})
        connect(page, &UserPermissionsWizardPage::appendTask, m_checkPage,
                &MobileUserChekWizardPage::proxyAppendTask);
    connect(m_checkPage, &MobileUserChekWizardPage::appendTask, m_progressPage,
            &UserProgressWizardPage::addTask);
    connect(m_progressPage, &UserProgressWizardPage::executeTask, this,
            &NewMobileUserWizard::appendTask);
    m_progressPage->setOutcomeSummary(
        [this](const UserProgressWizardPage &) { return outcomeSummary(); });

    rebuildPageList();

    // The server's word on the mails comes one by one; a burst redraws the summary once.
    m_mailRefresh = new QTimer(this);
    m_mailRefresh->setSingleShot(true);
    m_mailRefresh->setInterval(200);
    connect(m_mailRefresh, &QTimer::timeout, m_progressPage, &UserProgressWizardPage::refreshNote);
}

int NewMobileUserWizard::nextId() const
{
    // A mobile employee gets no rights on departments: only a chief passes that page.
    if (currentId() == DevicePermissionPage
        && field(QStringLiteral("user/role/mobile_employee")).toBool())
        return ReportPermissionPage;
    return QWizard::nextId();
}

void NewMobileUserWizard::setRoletemplates(zeral::ROLETEMPLATES_HASH rt_hash)
{
    m_checkPage->setRoletemplates(rt_hash);
}

void NewMobileUserWizard::setCheckedEmployees(zeral::OBJECT_UID_LIST uids)
{
    m_selectPage->setChecked(uids);
}

QString NewMobileUserWizard::outcomeSummary() const
{
    // The run makes the people one after the other, each by one creation, and stops at the
    // first failure: the first ones created are done, the last of them may be half set up,
    // and nobody after the failure was made.
    const QList<unsigned int> people = m_checkPage->chainUids();
    const int created = qMin(m_progressPage->createdUids().size(), people.size());
    const bool lastIncomplete = m_progressPage->failedAfterCreation() && created > 0;
    const int complete = lastIncomplete ? created - 1 : created;

    QStringList lines;
    lines << tr("Созданы: %1 из %2.").arg(created).arg(people.size());
    // Everybody made in full had his mail queued, when mails were asked for.
    lines << mailSummary(people.mid(0, complete));
    if (created == people.size() && !lastIncomplete)
        return lines.join(QLatin1Char('\n'));
    if (complete > 0)
        lines << tr("Созданы полностью: %1.").arg(peopleText(people.mid(0, complete)));
    if (lastIncomplete)
        lines << tr("Создан, но настроен не полностью: %1. Завершите настройку в свойствах "
                    "пользователя или удалите его.")
                     .arg(personText(people.at(created - 1)));
    if (created < people.size())
        lines << tr("Не созданы: %1.").arg(peopleText(people.mid(created)));
    return lines.join(QLatin1Char('\n'));
}

void NewMobileUserWizard::setMailDeliveryWatcher(MailDeliveryWatcher *watcher)
{
    if (m_mailWatcher)
        disconnect(m_mailWatcher, nullptr, this, nullptr);
    m_mailWatcher = watcher;
    if (watcher)
        connect(watcher, &MailDeliveryWatcher::deliveryChanged, m_mailRefresh,
                qOverload<>(&QTimer::start));
}

QStringList NewMobileUserWizard::mailSummary(const QList<unsigned int> &mailed) const
{
    if (!m_mailWatcher || mailed.isEmpty() || !field(QStringLiteral("user/send_email")).toBool())
        return {};
    int delivered = 0;
    QStringList waiting;
    QStringList failed;
    QStringList held;
    for (const unsigned int uid : mailed) {
        const QString address = zeral::LocalStorage::instance()
                                    ->constObject(uid, QLatin1String(zeral::SUBJECT_DATANAME))
                                    .parameters.value(QLatin1String(db::worker::EMAIL));
        const zeral::MailDelivery delivery = m_mailWatcher->lastFor(address);
        const QString person = delivery.error.isEmpty()
                                   ? personText(uid)
                                   : tr("%1: %2").arg(personText(uid), delivery.error);
        if (delivery.state == QLatin1String(zeral::MailDelivery::Sent))
            ++delivered;
        else if (delivery.state == QLatin1String(zeral::MailDelivery::Failed))
            failed << person;
        else if (delivery.state == QLatin1String(zeral::MailDelivery::Held))
            held << person;
        else if (delivery.state == QLatin1String(zeral::MailDelivery::Pending)
                 && delivery.nextAttempt.isValid())
            waiting << person;
    }
    QStringList lines;
    lines
        << tr("Письма с учетными данными: доставлено %1 из %2.").arg(delivered).arg(mailed.size());
    if (!waiting.isEmpty())
        lines << tr("Не отправлены, сервер повторит попытку: %1.")
                     .arg(waiting.join(QStringLiteral("; ")));
    if (!failed.isEmpty())
        lines << tr("Не доставлены, попытки прекращены: %1. Передайте учетные данные из свойств "
                    "пользователя.")
                     .arg(failed.join(QStringLiteral("; ")));
    if (!held.isEmpty())
        lines << tr("Ждут, пока на сервере не настроят почту: %1.")
                     .arg(held.join(QStringLiteral("; ")));
    return lines;
}

void NewMobileUserWizard::setupPermissionsUserPage(UserPermissionsWizardPage *page,
                                                   const QString &title, const QString &datatype)
{
    page->setTitle(title);
    UserPermissions *permissions = page->permissionsWidget();
    permissions->setDatatype(datatype);
    permissions->setObjectTypeSelectorEnabled(false);
    permissions->checkAll();
}
