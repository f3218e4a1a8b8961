#pragma once

#include <host/gui/wizards/pagelistwizard.h>
#include <QPointer>
#include <shared/roletemplateinfo.h>
#include <shared/taskinfo.h>
#include <shared/types.h>

class MailDeliveryWatcher;
class MobileUserChekWizardPage;
class MobileUserSelectWizardPage;
class UserPermissionsWizardPage;
class UserProgressWizardPage;

// The wizard that makes employees mobile users, many at a time. The operator picks the kind
// of mobile role and the employees, grants rights on access objects, departments (a mobile
// chief only) and reports, confirms the list, and watches the run. Name, login and password
// come from each employee's record and from the password generator; nothing is typed.
//
// The tasks pass from page to page: the permission pages give theirs to the check page, which
// copies them for every person into the chain it hands the progress page, and only the
// progress page releases them, one at a time, to the users screen.
class NewMobileUserWizard : public PageListWizard
{
    Q_OBJECT
public:
    enum PageId {
        SelectUserPage,
        DevicePermissionPage,
        DepartmentPermissionPage,
        ReportPermissionPage,
        CheckUserPage,
        ProgressPage
    };

    explicit NewMobileUserWizard(QWidget *parent = nullptr);

    int nextId() const override;

    MobileUserSelectWizardPage *selectPage() const { return m_selectPage; }
    MobileUserChekWizardPage *checkPage() const { return m_checkPage; }
    UserProgressWizardPage *progressPage() const { return m_progressPage; }

    // Who the run made and who it didn't, by name and address, for the progress page, and
    // what became of their mails as far as the watcher has heard.
    QString outcomeSummary() const;
    // The screen's record of the server's word on its mails; the summary follows it.
    void setMailDeliveryWatcher(MailDeliveryWatcher *watcher);

signals:
    void appendTask(zeral::TaskInfo task);
    void addMobileUser(zeral::TYPE_ID empl_uid);
    void editMobileUser(zeral::TYPE_ID uid);
    void removeMobileUser(zeral::TYPE_ID uid);
    void changeBlockMode(zeral::TYPE_ID uid);

public slots:
    void setRoletemplates(zeral::ROLETEMPLATES_HASH rt_hash);
    void setCheckedEmployees(zeral::OBJECT_UID_LIST uids);

private:
    void setupPermissionsUserPage(UserPermissionsWizardPage *page, const QString &title,
                                  const QString &datatype);
    QStringList mailSummary(const QList<unsigned int> &mailed) const;

    MobileUserSelectWizardPage *m_selectPage;
    UserPermissionsWizardPage *m_devicePage;
    UserPermissionsWizardPage *m_departmentPage;
    UserPermissionsWizardPage *m_reportPage;
    MobileUserChekWizardPage *m_checkPage;
    UserProgressWizardPage *m_progressPage;
    QPointer<MailDeliveryWatcher> m_mailWatcher;
    QTimer *m_mailRefresh;
};
