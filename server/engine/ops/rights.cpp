#include "rights.h"

#include <server/engine/session/session.h>
#include <shared/rolenames.h>

namespace zeral::server {

namespace {
bool is(const QString &templateId, const char *builtIn)
{
    return templateId == QLatin1String(builtIn);
}
} // namespace

Rights::Rights(const Session &session)
    : m_template(session.roleTemplate)
    , m_roles(session.roles)
{}

bool Rights::has(const char *role) const
{
    return m_roles.contains(QLatin1String(role));
}

bool Rights::isSupervisor() const
{
    return is(m_template, roletemplate::SUPERVISOR);
}

bool Rights::isAdministrator() const
{
    return is(m_template, roletemplate::ADMINISTRATOR);
}

bool Rights::canSee(const QString &templateId) const
{
    if (isSupervisor())
        return true;
    if (is(templateId, roletemplate::SUPERVISOR))
        return false;
    return isAdministrator() || !is(templateId, roletemplate::ADMINISTRATOR);
}

bool Rights::ownTemplateAllowed() const
{
    return isPrivileged();
}

bool Rights::canHandOut(const QString &templateId) const
{
    return has(role::ROLE_LINKUSER) && !templateId.isEmpty() && templateId != m_template
           && canSee(templateId);
}

bool Rights::canManage(const QString &targetTemplate) const
{
    if (targetTemplate.isEmpty())
        return true;
    return canSee(targetTemplate) && (targetTemplate != m_template || ownTemplateAllowed());
}

bool Rights::canDisconnect(const QString &targetTemplate) const
{
    if (isSupervisor())
        return true;
    if (isAdministrator())
        return !is(targetTemplate, roletemplate::SUPERVISOR);
    if (!has(role::ROLE_DISCONNECT_USER))
        return false;
    return !is(targetTemplate, roletemplate::SUPERVISOR)
           && !is(targetTemplate, roletemplate::ADMINISTRATOR);
}

} // namespace zeral::server
