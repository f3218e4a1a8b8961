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

#include <QMap>
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

// A page can't hold a thousand names: the first ones, and how many more there are.
constexpr int NamesShown = 10;

QString peopleText(const QList<unsigned int> &uids)
{
    QStringList names;
    for (const unsigned int uid : uids.mid(0, NamesShown))
        names.append(personText(uid));
    QString text = names.join(QStringLiteral(", "));
    if (uids.size() > NamesShown)
        text += NewMobileUserWizard::tr(" и ещё %1").arg(uids.size() - NamesShown);
    return text;
}

// People grouped by what the server said of their mails, one line a reason, as "<title> —
// <reason>: <people>." (or without the reason when it gave none).
QStringList reasonLines(const QString &title, const QMap<QString, QList<unsigned int>> &byReason)
{
    QStringList lines;
    for (auto it = byReason.cbegin(); it != byReason.cend(); ++it) {
        lines << (it.key().isEmpty()
                      ? NewMobileUserWizard::tr("%1: %2.").arg(title, peopleText(it.value()))
                      : NewMobileUserWizard::tr("%1 — %2: %3.")
                            .arg(title, it.key(), peopleText(it.value())));
    }
    return lines;
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
    QMap<QString, QList<unsigned int>> waiting;
    QMap<QString, QList<unsigned int>> failed;
    QMap<QString, QList<unsigned int>> held;
    for (const unsigned int uid : mailed) {
        const QString address = zeral::LocalStorage::instance()
                                    ->constObject(uid, QLatin1String(zeral::SUBJECT_DATANAME))
                                    .parameters.value(QLatin1String(db::worker::EMAIL));
        const zeral::MailDelivery delivery = m_mailWatcher->lastFor(address);
        const QString reason = delivery.error.trimmed();
        if (delivery.state == QLatin1String(zeral::MailDelivery::Sent))
            ++delivered;
        else if (delivery.state == QLatin1String(zeral::MailDelivery::Failed))
            failed[reason] << uid;
        else if (delivery.state == QLatin1String(zeral::MailDelivery::Held))
            held[reason] << uid;
        else if (delivery.state == QLatin1String(zeral::MailDelivery::Pending)
                 && delivery.nextAttempt.isValid())
            waiting[reason] << uid; // tried and refused; a mail just queued isn't late yet
    }
    QStringList lines;
    lines << tr("Письма с учетными данными: доставлено %1 из %2.").arg(delivered).arg(mailed.size());
    lines << reasonLines(tr("Не отправлены, сервер повторит попытку"), waiting);
    lines << reasonLines(tr("Не доставлены, попытки прекращены; передайте учетные данные из "
                            "свойств пользователя"),
                         failed);
    lines << reasonLines(tr("Ждут, пока на сервере не настроят почту"), held);
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
