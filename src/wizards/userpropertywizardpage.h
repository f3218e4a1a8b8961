#pragma once

#include <host/gui/wizards/zrwizardpage.h>
#include <shared/objectinfo.h>
#include <shared/taskinfo.h>
#include <shared/zrhash.h>

#include <QHash>
#include <QString>

#include <memory>

namespace Ui {
class UserPropertyWizardPage;
}

// The first page of the new-user wizard: the login and the three parts of the name. A login
// that another user has is refused (exactly: case and blanks count). On Next the page emits
// the task that creates the user, with a first password that the next page replaces.
//
// The values are read through the wizard's fields, so the page works inside a wizard only.
class UserPropertyWizardPage : public ZRWizardPage
{
    Q_OBJECT
public:
    explicit UserPropertyWizardPage(QWidget *parent = nullptr);
    ~UserPropertyWizardPage() override;

    void initializePage() override;
    bool validatePage() override;
    bool isComplete() const override;

    // The users whose logins are taken.
    void setExistingUsers(const zeral::ZRHash<unsigned int, zeral::ObjectInfo> &users);
    // What the creating task carries: the login, the names and a first password hash.
    QHash<QString, QString> properties() const;

signals:
    void appendTask(zeral::TaskInfo task);

private slots:
    void checkLoginExists(QString login);

private:
    bool loginUsable() const;

    std::unique_ptr<Ui::UserPropertyWizardPage> m_ui;
    // The users as they were given, and each one's login to his uid: all that is asked of
    // them is whether a login is taken.
    zeral::ZRHash<unsigned int, zeral::ObjectInfo> m_users;
    QHash<QString, unsigned int> m_logins;
};
