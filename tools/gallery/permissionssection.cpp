#include "sections.h"

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <server/engine/demo/demodata.h>
#include <server/engine/demo/demoorganisation.h>
#include <shared/datasets.h>
#include <src/userpermissions.h>

#include <QTreeView>

// The permissions editor on the demo organisation, for a demo user with the permissions the
// demo gives him: the departments, and the access objects with their device types.
void gallery::shootUserPermissions(const QDir &dir)
{
    const zeral::server::DemoData demo = zeral::server::DemoOrganisation::build(300, 100);
    zeral::LocalStorage *store = zeral::LocalStorage::instance();
    for (auto it = demo.objects.cbegin(); it != demo.objects.cend(); ++it)
        store->applyChanged(it.key(), it.value());

    // The demo user with the most departments, so that the first tree shows checks.
    const auto &departments
        = store->constObjects(QString::fromLatin1(zeral::ORGSTRUCTURE_DATANAME));
    QHash<zeral::TYPE_ID, QList<zeral::OBJECT_PERMISSION>> bySubject;
    QHash<zeral::TYPE_ID, int> departmentsOf;
    for (const zeral::OBJECT_PERMISSION &permission : demo.permissions) {
        bySubject[permission.subject].append(permission);
        if (departments.contains(permission.object))
            ++departmentsOf[permission.subject];
    }
    zeral::TYPE_ID subject = 0;
    for (auto it = departmentsOf.cbegin(); it != departmentsOf.cend(); ++it) {
        if (!subject || it.value() > departmentsOf.value(subject))
            subject = it.key();
    }
    const zeral::ObjectInfo user
        = store->constObject(subject, QString::fromLatin1(zeral::USER_DATANAME));
    AuthData::set({QStringLiteral("root"),
                   1,
                   "gallery",
                   QStringLiteral("RT_SUPERVISOR"),
                   {QStringLiteral("RL_ROLE_LINKSUBDIV")},
                   QString()});

    UserPermissions editor;
    editor.resize(460, 560);
    editor.setCurrent(user);
    zeral::ROLETEMPLATES_HASH templates;
    const QString id = user.parameters.value(QStringLiteral("PT_ROLETEMPLATE"));
    templates.insert(
        id, {id, QString(), QString(), false, {QStringLiteral("RL_USER_SHOW")}, QString()});
    editor.setRoleTemplates(templates);
    editor.setPermissions(bySubject.value(subject));
    shoot(&editor, dir, QStringLiteral("userpermissions"));
    editor.setDatatype(QStringLiteral("placing"));
    shoot(&editor, dir, QStringLiteral("userpermissions-placing"));
    AuthData::clear();
    store->clear();
}
