#pragma once

#include <shared/types.h>

#include <QString>
#include <QStringList>

namespace zeral::server {

struct Session;

// What an operator may do to whom, from his role template and its roles. The same rules
// answer data.role_template_inherit and guard every change, so the studio never offers what
// the server would refuse.
//
//  - Visible templates: a supervisor sees all; an administrator all but the supervisor's;
//    anybody else all but the supervisor's and the administrator's.
//  - Own template allowed (the operator sees and manages colleagues of his own template):
//    for the supervisor and the administrator only.
//  - Templates he may hand out: with "RL_ROLE_LINKUSER", the visible ones except his own;
//    without it none. Nobody hands out the template he holds.
//  - A user he may manage (change, block, delete, give rights or a template): one whose
//    template is visible to him, and not his own unless own-template-allowed. A user
//    without a template counts as an ordinary one.
//  - Sessions he may cut: the supervisor all; the administrator all but the supervisors';
//    anybody else, with "RL_ROLE_DISCONNECT_USER", all but the supervisors' and the
//    administrators'.
class Rights
{
public:
    explicit Rights(const Session &session);

    bool has(const char *role) const;
    bool isSupervisor() const;
    bool isAdministrator() const;
    bool isPrivileged() const { return isSupervisor() || isAdministrator(); }

    bool canSee(const QString &templateId) const;
    bool ownTemplateAllowed() const;
    bool canHandOut(const QString &templateId) const;
    bool canManage(const QString &targetTemplate) const;
    bool canDisconnect(const QString &targetTemplate) const;

private:
    QString m_template;
    QStringList m_roles;
};

} // namespace zeral::server
