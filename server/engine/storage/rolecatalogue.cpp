#include "rolecatalogue.h"

#include <host/core/zrglobals.h>
#include <shared/rolenames.h>

#include <QCoreApplication>

namespace zeral::server {

namespace {

struct Role
{
    const char *name;
    const char *title;
};
struct Group
{
    const char *key;
    const char *title;
    QList<Role> roles;
};

const QList<Group> &groups()
{
    namespace r = zeral::role;
    static const QList<Group> all = {
        {"users",
         QT_TRANSLATE_NOOP("RoleCatalogue", "Пользователи"),
         {{r::USER_SHOW, QT_TRANSLATE_NOOP("RoleCatalogue", "Просмотр пользователей")},
          {r::USER_CREATE, QT_TRANSLATE_NOOP("RoleCatalogue", "Создание пользователей")},
          {r::USER_UPDATE, QT_TRANSLATE_NOOP("RoleCatalogue", "Изменение пользователей")},
          {r::USER_DELETE, QT_TRANSLATE_NOOP("RoleCatalogue", "Удаление пользователей")},
          {r::USER_BLOCK, QT_TRANSLATE_NOOP("RoleCatalogue", "Блокировка пользователей")},
          {r::USER_MOBILE_SHOW,
           QT_TRANSLATE_NOOP("RoleCatalogue", "Просмотр мобильных пользователей")},
          {r::USER_ONLINE_SHOW, QT_TRANSLATE_NOOP("RoleCatalogue", "Просмотр активных сессий")},
          {r::USER_BIOMETRICS_EDIT,
           QT_TRANSLATE_NOOP("RoleCatalogue", "Редактирование биометрических данных")},
          {r::MOBILE_LOGIN, QT_TRANSLATE_NOOP("RoleCatalogue", "Вход в мобильное приложение")}}},
        {"confirm",
         QT_TRANSLATE_NOOP("RoleCatalogue", "Подтверждение изменений"),
         {{r::USER_CREATE_REQUIRES_CONFIRM,
           QT_TRANSLATE_NOOP("RoleCatalogue", "Создание пользователя требует подтверждения")},
          {r::USER_UPDATE_REQUIRES_CONFIRM,
           QT_TRANSLATE_NOOP("RoleCatalogue", "Изменение пользователя требует подтверждения")},
          {r::USER_DELETE_REQUIRES_CONFIRM,
           QT_TRANSLATE_NOOP("RoleCatalogue", "Удаление пользователя требует подтверждения")},
          {r::CONFIRM_USER_CREATE,
           QT_TRANSLATE_NOOP("RoleCatalogue", "Подтверждение создания пользователей")},
          {r::CONFIRM_USER_UPDATE,
           QT_TRANSLATE_NOOP("RoleCatalogue", "Подтверждение изменения пользователей")},
          {r::CONFIRM_USER_DELETE,
           QT_TRANSLATE_NOOP("RoleCatalogue", "Подтверждение удаления пользователей")}}},
        {"roles",
         QT_TRANSLATE_NOOP("RoleCatalogue", "Роли и права"),
         {{r::ROLE_LINKUSER, QT_TRANSLATE_NOOP("RoleCatalogue", "Управление ролями пользователей")},
          {r::ROLE_LINKSUBDIV, QT_TRANSLATE_NOOP("RoleCatalogue", "Назначение прав на объекты")},
          {r::ROLE_DISCONNECT_USER,
           QT_TRANSLATE_NOOP("RoleCatalogue", "Отключение сессий пользователей")},
          {r::ROLETEMPLATE_CHANGE,
           QT_TRANSLATE_NOOP("RoleCatalogue", "Изменение шаблонов ролей")}}},
        {"organisation",
         QT_TRANSLATE_NOOP("RoleCatalogue", "Организационная структура"),
         {{r::WORKER_SHOW, QT_TRANSLATE_NOOP("RoleCatalogue", "Просмотр сотрудников")},
          {r::DEPARTMENT_SHOW, QT_TRANSLATE_NOOP("RoleCatalogue", "Просмотр подразделений")},
          {r::FIRM_SHOW, QT_TRANSLATE_NOOP("RoleCatalogue", "Просмотр организаций")}}},
        {"access",
         QT_TRANSLATE_NOOP("RoleCatalogue", "Контроль доступа"),
         {{r::PLACINGS_SHOW, QT_TRANSLATE_NOOP("RoleCatalogue", "Просмотр объектов доступа")},
          {r::ACCESS_POLICY_SHOW, QT_TRANSLATE_NOOP("RoleCatalogue", "Просмотр политик доступа")},
          {r::ACCESS_SCHEDULE_SHOW,
           QT_TRANSLATE_NOOP("RoleCatalogue", "Просмотр расписаний доступа")},
          {r::MONITORING_SHOW,
           QT_TRANSLATE_NOOP("RoleCatalogue", "Просмотр настроек мониторинга")}}},
        {"reports",
         QT_TRANSLATE_NOOP("RoleCatalogue", "Отчёты и журналы"),
         {{r::REPORT_CREATE_CHANGE,
           QT_TRANSLATE_NOOP("RoleCatalogue", "Создание и изменение отчётов")},
          {r::DEVICE_LOG_SHOW, QT_TRANSLATE_NOOP("RoleCatalogue", "Просмотр журнала устройств")},
          {r::SYSTEM_LOG_SHOW, QT_TRANSLATE_NOOP("RoleCatalogue", "Просмотр системного журнала")},
          {r::AUDIT_SHOW, QT_TRANSLATE_NOOP("RoleCatalogue", "Просмотр журнала действий")}}},
    };
    return all;
}

QString title(const char *text)
{
    return QCoreApplication::translate(RoleCatalogue::TitleContext, text);
}

} // namespace

QList<RoleEntry> RoleCatalogue::entries()
{
    QList<RoleEntry> result;
    for (const Group &group : groups()) {
        const QString key = QLatin1String(group.key);
        result.append({key, title(group.title), QString(), true});
        for (const Role &role : group.roles)
            result.append({QLatin1String(role.name), title(role.title), key, false});
    }
    return result;
}

QList<_ROLETEMPLATE_INFO> RoleCatalogue::builtInTemplates()
{
    namespace r = zeral::role;
    namespace t = zeral::roletemplate;
    QStringList everything;
    for (const Group &group : groups()) {
        for (const Role &role : group.roles)
            everything.append(QLatin1String(role.name));
    }
    // The confirmation demands and the mobile login are for whom a template is meant,
    // not powers: nobody gets them by being in charge.
    QStringList supervisor = everything;
    for (const char *demand : {r::USER_CREATE_REQUIRES_CONFIRM, r::USER_UPDATE_REQUIRES_CONFIRM,
                               r::USER_DELETE_REQUIRES_CONFIRM, r::MOBILE_LOGIN})
        supervisor.removeAll(QLatin1String(demand));
    QStringList administrator = supervisor;
    administrator.removeAll(QLatin1String(r::ROLETEMPLATE_CHANGE));

    const auto list = [](std::initializer_list<const char *> names) {
        QStringList roles;
        for (const char *name : names)
            roles.append(QLatin1String(name));
        return roles;
    };
    const QList<QPair<const char *, QStringList>> templates = {
        {t::SUPERVISOR, supervisor},
        {t::ADMINISTRATOR, administrator},
        {t::OPERATOR,
         list({r::USER_SHOW, r::USER_ONLINE_SHOW, r::WORKER_SHOW, r::DEPARTMENT_SHOW, r::FIRM_SHOW,
               r::PLACINGS_SHOW, r::MONITORING_SHOW, r::DEVICE_LOG_SHOW})},
        {t::SECURITY,
         list({r::USER_SHOW, r::USER_MOBILE_SHOW, r::USER_ONLINE_SHOW, r::USER_BLOCK,
               r::ROLE_DISCONNECT_USER, r::CONFIRM_USER_CREATE, r::CONFIRM_USER_UPDATE,
               r::CONFIRM_USER_DELETE, r::WORKER_SHOW, r::PLACINGS_SHOW, r::ACCESS_POLICY_SHOW,
               r::ACCESS_SCHEDULE_SHOW, r::MONITORING_SHOW, r::DEVICE_LOG_SHOW})},
        {t::HR,
         list({r::USER_SHOW, r::USER_MOBILE_SHOW, r::USER_CREATE, r::USER_UPDATE, r::USER_DELETE,
               r::USER_BLOCK, r::ROLE_LINKUSER, r::ROLE_LINKSUBDIV, r::USER_CREATE_REQUIRES_CONFIRM,
               r::USER_UPDATE_REQUIRES_CONFIRM, r::USER_DELETE_REQUIRES_CONFIRM, r::WORKER_SHOW,
               r::DEPARTMENT_SHOW, r::FIRM_SHOW, r::REPORT_CREATE_CHANGE})},
        {t::AUDITOR, list({r::USER_SHOW, r::USER_MOBILE_SHOW, r::USER_ONLINE_SHOW, r::WORKER_SHOW,
                           r::DEPARTMENT_SHOW, r::FIRM_SHOW, r::DEVICE_LOG_SHOW, r::SYSTEM_LOG_SHOW,
                           r::AUDIT_SHOW})},
        {t::MOBILE, list({r::MOBILE_LOGIN})},
        {t::MOBILE_CHIEF, list({r::MOBILE_LOGIN, r::WORKER_SHOW, r::DEPARTMENT_SHOW})},
    };
    QList<_ROLETEMPLATE_INFO> result;
    for (const auto &entry : templates) {
        _ROLETEMPLATE_INFO info;
        info.id = QLatin1String(entry.first);
        info.name = QCoreApplication::translate(
            "ZRGlobals", ZRGlobals::roleTemplateNames().value(info.id).toUtf8().constData());
        info.roles = entry.second;
        result.append(info);
    }
    return result;
}

} // namespace zeral::server
