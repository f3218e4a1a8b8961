#include "sections.h"

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/gui/widgets/zrcombobox.h>
#include <host/gui/wizards/pagelistwizard.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <src/wizards/userpasswordwizardpage.h>
#include <src/wizards/userpropertywizardpage.h>
#include <src/wizards/userroleswizardpage.h>

#include <QCheckBox>
#include <QLineEdit>

// The first three pages of the new-user wizard as an administrator sees them: a login that
// another user has, an own password with an expiry, a biometric policy with its warning.
void gallery::shootNewUserPages(const QDir &dir)
{
    zeral::LocalStorage *store = zeral::LocalStorage::instance();
    zeral::ObjectInfo database;
    database.uid = 1;
    database.type = QLatin1String(db::system::DATABASE);
    database.parameters = {{QStringLiteral("PT_PASSWORD_DEF"), QStringLiteral("Start-2024")},
                           {QStringLiteral("PT_PASSWORD_EXPIRED"), QStringLiteral("90")}};
    store->applyChanged(QLatin1String(zeral::DB_DATANAME), {database});
    AuthData::set({QStringLiteral("admin"),
                   2,
                   "gallery",
                   QStringLiteral("RT_ADMINISTRATOR"),
                   {QStringLiteral("RL_ROLE_LINKSUBDIV")},
                   QString()});

    PageListWizard wizard;
    wizard.setWindowTitle(QStringLiteral("Мастер добавления нового пользователя"));
    wizard.resize(652, 503);
    auto *property = new UserPropertyWizardPage;
    auto *password = new UserPasswordWizardPage;
    auto *roles = new UserRolesWizardPage;
    wizard.addPage(property);
    wizard.addPage(password);
    wizard.addPage(roles);
    wizard.rebuildPageList();

    zeral::ZRHash<unsigned int, zeral::ObjectInfo> users;
    zeral::ObjectInfo taken;
    taken.uid = 501;
    taken.type = QStringLiteral("OT_USER");
    taken.parameters.insert(QStringLiteral("PT_LOGIN"), QStringLiteral("orlova"));
    users.insert(taken.uid, taken);
    property->setExistingUsers(users);
    wizard.show();
    auto *login = property->findChild<QLineEdit *>(QStringLiteral("loginEdit"));
    login->setText(QStringLiteral("orlova"));
    emit login->textEdited(login->text());
    property->findChild<QLineEdit *>(QStringLiteral("surnameEdit"))
        ->setText(QStringLiteral("Орлова"));
    shoot(&wizard, dir, QStringLiteral("newuser-property"));

    login->setText(QStringLiteral("orlova2"));
    emit login->textEdited(login->text());
    wizard.next();
    password->findChild<QCheckBox *>(QStringLiteral("cbUseDefaultPassword"))->click();
    password->findChild<QCheckBox *>(QStringLiteral("cbIsPasswordTimeLimit"))->click();
    shoot(&wizard, dir, QStringLiteral("newuser-password"));

    zeral::ROLETEMPLATES_HASH templates;
    for (const char *id : {"RT_SUPERVISOR", "RT_ADMINISTRATOR", "RT_OPERATOR", "RT_MOBILE"})
        templates.insert(id, {id, QString(), QString(), false, {}, QString()});
    roles->setRoleTemplates(templates);
    wizard.next();
    auto *policy = roles->findChild<ZRComboBox *>(QStringLiteral("cbIdentType"));
    policy->setCurrentIndex(2);
    emit policy->activated(2);
    shoot(&wizard, dir, QStringLiteral("newuser-roles"));

    AuthData::clear();
    store->clear();
}
