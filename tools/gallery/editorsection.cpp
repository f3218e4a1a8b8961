#include "sections.h"

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <server/engine/demo/demoorganisation.h>
#include <server/engine/storage/rolecatalogue.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <src/passworddialog.h>
#include <src/userproperties.h>
#include <src/userroles.h>

namespace {

// The demo organisation's users and the server's catalogue of roles and templates, as the
// studio has them after logging in to a demo server.
zeral::ROLETEMPLATES_HASH fillDemoStore()
{
    zeral::LocalStorage *store = zeral::LocalStorage::instance();
    store->setRoleCatalogue(zeral::server::RoleCatalogue::entries());
    const zeral::server::DemoData demo = zeral::server::DemoOrganisation::build(40, 1000);
    const QString users = QLatin1String(zeral::USER_DATANAME);
    store->applyChanged(users, demo.objects.value(users));

    zeral::ROLETEMPLATES_HASH templates;
    for (const zeral::_ROLETEMPLATE_INFO &info : zeral::server::RoleCatalogue::builtInTemplates())
        templates.insert(info.id, info);
    return templates;
}

zeral::ObjectInfo demoUser(const QString &login)
{
    const auto &users
        = zeral::LocalStorage::instance()->constObjects(QLatin1String(zeral::USER_DATANAME));
    for (const zeral::ObjectInfo &user : users) {
        if (user.parameters.value(QLatin1String(db::user::LOGIN)) == login)
            return user;
    }
    return {};
}

} // namespace

void gallery::shootUserRoles(const QDir &dir)
{
    const zeral::ROLETEMPLATES_HASH templates = fillDemoStore();
    const zeral::ObjectInfo admin = demoUser(QStringLiteral("admin"));
    const QString adminTemplate = admin.parameters.value(QLatin1String(db::user::ROLE_TEMPLATE));
    AuthData::set({QStringLiteral("admin"), admin.uid, "gallery", adminTemplate,
                   templates.value(adminTemplate).roles, QString()});

    // The demo administrator edits the security officer: the templates he may hand out, and
    // the roles of the officer's template.
    UserRoles other;
    other.resize(471, 460);
    other.setCurrent(demoUser(QStringLiteral("security")));
    other.setRoleTemplates(templates);
    shoot(&other, dir, QStringLiteral("userroles"));

    // His own card: shown, not to be changed.
    UserRoles self;
    self.resize(471, 305);
    self.setCurrent(admin);
    self.setRoleTemplates(templates);
    shoot(&self, dir, QStringLiteral("userroles-self"));

    AuthData::clear();
    zeral::LocalStorage::instance()->clear();
}

void gallery::shootUserProperties(const QDir &dir)
{
    const zeral::ROLETEMPLATES_HASH templates = fillDemoStore();
    const zeral::ObjectInfo admin = demoUser(QStringLiteral("admin"));
    const QString adminTemplate = admin.parameters.value(QLatin1String(db::user::ROLE_TEMPLATE));
    AuthData::set({QStringLiteral("admin"), admin.uid, "gallery", adminTemplate,
                   templates.value(adminTemplate).roles, QString()});

    // The security officer as the administrator sees him, with no fingerprints enrolled.
    UserProperties other;
    other.resize(564, 309);
    const zeral::ObjectInfo security = demoUser(QStringLiteral("security"));
    other.setCurrent(security);
    other.setTemplatesCount(security.uid, 0);
    shoot(&other, dir, QStringLiteral("userproperties"));

    // The administrator changing his own password is asked for the current one.
    PasswordDialog password(admin.uid);
    shoot(&password, dir, QStringLiteral("passworddialog"));

    AuthData::clear();
    zeral::LocalStorage::instance()->clear();
}
