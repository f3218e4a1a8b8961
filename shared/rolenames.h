#pragma once

// The rights an operator's role template can grant, and the built-in role templates.
namespace zeral {

namespace role {
inline constexpr char USER_SHOW[] = "RL_USER_SHOW";
inline constexpr char USER_CREATE[] = "RL_USER_CREATE";
inline constexpr char USER_UPDATE[] = "RL_USER_UPDATE";
inline constexpr char USER_DELETE[] = "RL_USER_DELETE";
inline constexpr char USER_BLOCK[] = "RL_USER_BLOCK";
inline constexpr char USER_MOBILE_SHOW[] = "RL_USER_MOBILE_SHOW";
inline constexpr char USER_ONLINE_SHOW[] = "RL_USER_ONLINE_SHOW";
inline constexpr char USER_BIOMETRICS_EDIT[] = "RL_USER_BIOMETRICS_EDIT";
inline constexpr char USER_CREATE_REQUIRES_CONFIRM[] = "RL_USER_CREATE_REQUIRES_CONFIRM";
inline constexpr char USER_UPDATE_REQUIRES_CONFIRM[] = "RL_USER_UPDATE_REQUIRES_CONFIRM";
inline constexpr char USER_DELETE_REQUIRES_CONFIRM[] = "RL_USER_DELETE_REQUIRES_CONFIRM";
inline constexpr char CONFIRM_USER_CREATE[] = "RL_CONFIRM_USER_CREATE";
inline constexpr char CONFIRM_USER_UPDATE[] = "RL_CONFIRM_USER_UPDATE";
inline constexpr char CONFIRM_USER_DELETE[] = "RL_CONFIRM_USER_DELETE";
inline constexpr char ROLE_LINKUSER[] = "RL_ROLE_LINKUSER";
inline constexpr char ROLE_LINKSUBDIV[] = "RL_ROLE_LINKSUBDIV";
inline constexpr char ROLE_DISCONNECT_USER[] = "RL_ROLE_DISCONNECT_USER";
inline constexpr char ROLETEMPLATE_CHANGE[] = "RL_ROLETEMPLATE_CHANGE";
inline constexpr char MOBILE_LOGIN[] = "RL_MOBILE_LOGIN";

// Read by the permission editor to decide which object trees it offers.
inline constexpr char WORKER_SHOW[] = "RL_WORKER_SHOW";
inline constexpr char DEPARTMENT_SHOW[] = "RL_DEPARTMENT_SHOW";
inline constexpr char FIRM_SHOW[] = "RL_FIRM_SHOW";
inline constexpr char PLACINGS_SHOW[] = "RL_PLACINGS_SHOW";
inline constexpr char ACCESS_POLICY_SHOW[] = "RL_ACCESS_POLICY_SHOW";
inline constexpr char ACCESS_SCHEDULE_SHOW[] = "RL_ACCESS_SCHEDULE_SHOW";
inline constexpr char MONITORING_SHOW[] = "RL_MONITORING_SHOW";
inline constexpr char REPORT_CREATE_CHANGE[] = "RL_REPORT_CREATE_CHANGE";
inline constexpr char DEVICE_LOG_SHOW[] = "RL_DEVICE_LOG_SHOW";
inline constexpr char SYSTEM_LOG_SHOW[] = "RL_SYSTEM_LOG_SHOW";
// Reading the audit log of operators' changes and refusals.
inline constexpr char AUDIT_SHOW[] = "RL_AUDIT_SHOW";
} // namespace role

namespace roletemplate {
inline constexpr char SUPERVISOR[] = "RT_SUPERVISOR";
inline constexpr char ADMINISTRATOR[] = "RT_ADMINISTRATOR";
inline constexpr char MOBILE[] = "RT_MOBILE";
inline constexpr char MOBILE_CHIEF[] = "RT_MOBILE_CHIEF";
// Ordinary built-in templates seeded at first start.
inline constexpr char OPERATOR[] = "RT_OPERATOR";
inline constexpr char SECURITY[] = "RT_SECURITY";
inline constexpr char HR[] = "RT_HR";
inline constexpr char AUDITOR[] = "RT_AUDITOR";
} // namespace roletemplate

} // namespace zeral
