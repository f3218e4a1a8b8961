#pragma once

#include <shared/roletemplateinfo.h>
#include <shared/taskinfo.h>
#include <shared/types.h>

#include <QList>
#include <QSet>
#include <QWizardPage>

#include <memory>

class MobileUserCheckModel;
class QSortFilterProxyModel;

namespace Ui {
class MobileUserChekWizardPage;
}

// The last choice in the new-mobile-users wizard: the chosen employees with a box each (all
// off at first), and how the credentials reach them. Leaving it makes up the whole run: per
// checked employee a generated password, the creation of the account with his address as
// login, its mobile role template, a copy of every permission task of the pages before, and
// the credentials to the clipboard (offered for one person only) or by e-mail. Nothing is
// sent here; the tasks go to the progress page.
//
// Fields: "user/send_email" (cbSendEmail), "user/checked_uids" (the checked uids).
class MobileUserChekWizardPage : public QWizardPage
{
    Q_OBJECT
public:
    explicit MobileUserChekWizardPage(QWidget *parent = nullptr);
    ~MobileUserChekWizardPage() override;

    QSet<unsigned int> checkedUids() const;
    // The employees the last validatePage made tasks for, in the order of their tasks.
    QList<unsigned int> chainUids() const { return m_chainUids; }
    MobileUserCheckModel *model() const { return m_model; }

    void initializePage() override;
    bool validatePage() override;
    bool isComplete() const override;

signals:
    void appendTask(zeral::TaskInfo task);

public slots:
    void setRoletemplates(zeral::ROLETEMPLATES_HASH rt_hash);
    void updateCheckstate();
    // Keeps a permission task of the pages before, to copy for each person.
    void proxyAppendTask(zeral::TaskInfo task);

private:
    void appendPersonTasks(unsigned int uid, const QString &roleTemplate);

    std::unique_ptr<Ui::MobileUserChekWizardPage> m_ui;
    MobileUserCheckModel *m_model;
    QSortFilterProxyModel *m_proxy;
    zeral::ROLETEMPLATES_HASH m_roleTemplates;
    QList<zeral::TaskInfo> m_permissionTasks;
    QList<unsigned int> m_chainUids;
};
