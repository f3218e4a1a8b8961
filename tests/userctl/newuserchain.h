#pragma once

#include "wizardpagefixture.h"

#include <src/userctl.h>
#include <src/wizards/userpasswordwizardpage.h>
#include <src/wizards/userpropertywizardpage.h>
#include <src/wizards/userroleswizardpage.h>

#include <host/gui/widgets/zrcombobox.h>
#include <host/gui/wizards/baseprogresswizardpage.h>
#include <host/gui/wizards/pagelistwizard.h>

#include <QLineEdit>

// The first three pages of the new-user wizard and its closing progress page, wired as the
// wizard wires them: each page hands its tasks to the progress page when it is left, and the
// progress page releases them, once shown, to the users screen's queue.
class NewUserChain
{
public:
    explicit NewUserChain(UserCtl *screen)
        : property(new UserPropertyWizardPage)
        , password(new UserPasswordWizardPage)
        , roles(new UserRolesWizardPage)
        , progress(new BaseProgressWizardPage)
    {
        for (QWizardPage *page :
             {static_cast<QWizardPage *>(property), static_cast<QWizardPage *>(password),
              static_cast<QWizardPage *>(roles), static_cast<QWizardPage *>(progress)})
            wizard.addPage(page);
        QObject::connect(property, &UserPropertyWizardPage::appendTask, progress,
                         &BaseProgressWizardPage::addTask);
        QObject::connect(roles, &UserRolesWizardPage::appendTask, progress,
                         &BaseProgressWizardPage::addTask);
        QObject::connect(password, &UserPasswordWizardPage::appendTask, progress,
                         &BaseProgressWizardPage::addTask);
        QObject::connect(progress, &BaseProgressWizardPage::executeTask, screen, &UserCtl::addTask,
                         Qt::QueuedConnection);
    }

    // Types the login and the surname, keeps the default password, picks the template with
    // that id, and leaves each page by Next; the progress page then starts the run.
    void walk(const QString &login, const QString &surname, const QString &roleTemplate)
    {
        wizard.show();
        wizardpages::type(wizard.findChild<QLineEdit *>("loginEdit"), login);
        wizardpages::type(wizard.findChild<QLineEdit *>("surnameEdit"), surname);
        wizard.next();
        QCOMPARE(wizard.currentPage(), password);
        wizard.next();
        QCOMPARE(wizard.currentPage(), roles);
        auto *templates = roles->findChild<ZRComboBox *>("cbRoleTemplate");
        QVERIFY(templates->setCurrentData(roleTemplate));
        wizard.next();
        QCOMPARE(wizard.currentPage(), progress);
    }

    PageListWizard wizard;
    UserPropertyWizardPage *property;
    UserPasswordWizardPage *password;
    UserRolesWizardPage *roles;
    BaseProgressWizardPage *progress;
};
