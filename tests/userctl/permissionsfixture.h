#pragma once

#include <tests/support/builders.h>

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <shared/metatypes.h>
#include <shared/roletemplateinfo.h>
#include <shared/taskinfo.h>

#include <QList>
#include <QMap>
#include <QStringList>

#include <algorithm>

// A small store for the permissions editor: an organisation below its invisible root, access
// objects of several device types, reports and access groups with hidden ones, monitoring
// settings, and the edited user "ivanov" (uid 100) of "RT_CLERK". The operator is uid 2.
namespace permissionsfixture {

using zeral::TYPE_ID;

enum : TYPE_ID {
    Root = 1,
    Firm = 2,
    Sales = 3,
    SalesEast = 4,
    Stock = 5,
    Site = 20,
    Reader = 21,
    TimeTerminal = 22,
    Desk = 23,
    Sensor = 24,
    Timesheet = 30,
    HiddenReport = 31,
    Visits = 32,
    Day = 40,
    HiddenPolicy = 41,
    Screen = 50,
    Alarms = 51,
    Edited = 100,
    Operator = 2,
};

inline zeral::ObjectInfo named(TYPE_ID uid, const char *type, const QString &name,
                               TYPE_ID parent = 0, bool hidden = false)
{
    QHash<QString, QString> parameters{{QStringLiteral("PT_NAME"), name}};
    if (hidden)
        parameters.insert(QStringLiteral("PT_HIDDEN"), QStringLiteral("true"));
    return testing::makeObject(uid, QLatin1String(type), parameters, parent);
}

inline zeral::ObjectInfo editedUser(const QString &roleTemplate = QStringLiteral("RT_CLERK"))
{
    zeral::ObjectInfo user = testing::makeUser(Edited, QStringLiteral("ivanov"));
    user.parameters.insert(QStringLiteral("PT_ROLETEMPLATE"), roleTemplate);
    return user;
}

// Fills the datasets of the trees; `only` limits it to one dataset when not empty.
inline void fillStore(const QString &only = QString())
{
    zeral::LocalStorage *store = zeral::LocalStorage::instance();
    const auto apply = [&](const char *dataname, const QList<zeral::ObjectInfo> &objects) {
        if (only.isEmpty() || only == QLatin1String(dataname))
            store->applyChanged(QLatin1String(dataname), objects);
    };
    apply("orgstructure", {named(Root, "OT_SUBJECTROOT", "Организация"),
                           named(Firm, "OT_FIRM", "ООО Ромашка", Root),
                           named(Sales, "OT_DEPARTMENT", "Отдел продаж", Firm),
                           named(SalesEast, "OT_DEPARTMENT", "Продажи Восток", Sales),
                           named(Stock, "OT_DEPARTMENT", "Склад", Firm)});
    apply("placing", {named(Site, "OT_PLACING", "Проходная"),
                      named(Reader, "OT_TERM_ZR_NOVA", "Считыватель входа", Site),
                      named(TimeTerminal, "OT_TERM_ZR_NOVA_E", "Терминал учёта", Site),
                      named(Desk, "OT_TERM_ZR_DESK", "Пост охраны", Site),
                      named(Sensor, "OT_SENSOR", "Датчик двери", Site)});
    apply("report", {named(Timesheet, "OT_REPORT", "Табель"),
                     named(HiddenReport, "OT_REPORT", "Служебный отчёт", 0, true),
                     named(Visits, "OT_REPORT", "Посещения")});
    apply("policy", {named(Day, "OT_ACCESS_POLICY", "Дневная смена"),
                     named(HiddenPolicy, "OT_ACCESS_POLICY", "Служебная", 0, true)});
    apply("monitoring_settings", {named(Screen, "OT_MONITORING_SETTINGS", "Главный экран"),
                                  named(Alarms, "OT_MONITORING_SETTINGS", "Тревоги")});
    apply("user", {editedUser()});
}

inline void logIn(const QStringList &roles
                  = {QStringLiteral("RL_USER_SHOW"), QStringLiteral("RL_ROLE_LINKSUBDIV")})
{
    AuthData::set({QStringLiteral("admin"), Operator, "session-7",
                   QStringLiteral("RT_ADMINISTRATOR"), roles, QString()});
}

inline zeral::ROLETEMPLATES_HASH templates(const QStringList &clerkRoles)
{
    zeral::ROLETEMPLATES_HASH hash;
    hash.insert(QStringLiteral("RT_CLERK"),
                {QStringLiteral("RT_CLERK"), QStringLiteral("Делопроизводитель"), QString(), true,
                 clerkRoles, QString()});
    hash.insert(QStringLiteral("RT_ADMINISTRATOR"), {QStringLiteral("RT_ADMINISTRATOR"),
                                                     QString(),
                                                     QString(),
                                                     false,
                                                     {QStringLiteral("RL_USER_SHOW")},
                                                     QString()});
    return hash;
}

// The uids of a permission task's "object-" keys, each checked to carry the value 7.
inline QList<TYPE_ID> objectsOf(const zeral::TaskInfo &task, bool *valuesRight = nullptr)
{
    QList<TYPE_ID> uids;
    bool right = true;
    for (auto it = task.data.cbegin(); it != task.data.cend(); ++it) {
        if (!it.key().startsWith(QLatin1String("object-"))) {
            right = false;
            continue;
        }
        uids.append(it.key().mid(7).toUInt());
        right = right && it.value() == QVariant(7);
    }
    std::sort(uids.begin(), uids.end());
    if (valuesRight)
        *valuesRight = right;
    return uids;
}

} // namespace permissionsfixture
