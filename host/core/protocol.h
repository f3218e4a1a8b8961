#pragma once

#include <QtGlobal>

// The names and codes of the wire protocol, for the client and the server alike.
// docs/protocol.md tells the payload of each command. The server links this library for
// the wire types (this header, Command, FrameCodec, ZRDataStream, DbQuery, DbResult) and
// for the reading of the password policy (GUIPassFuncs::optionsFromParameters).
namespace zeral::proto {

// Every command of the protocol is a named command of this kind.
inline constexpr qint32 NamedCommand = 8;

// A frame is a quint32 byte length followed by that many bytes. Anything longer is refused
// before it is read.
inline constexpr quint32 MaxFrameSize = 64u * 1024u * 1024u;

// Objects per page of a dataset snapshot.
inline constexpr qint32 SnapshotPageSize = 2000;

enum Status : qint32 {
    StatusNone = 0, // a request, not yet answered
    StatusOk = 1,
    StatusMalformed = 2,               // the payload could not be read
    StatusNotLoggedIn = 3,             // the command needs a session
    StatusForbidden = 4,               // the operator's rights don't allow it
    StatusNotFound = 5,                // no such object, session or command
    StatusConflict = 6,                // the change contradicts stored data (a login in use, ...)
    StatusInternal = 7,                // the server failed; nothing was changed
    StatusConnectionLost = 8,          // client side: the connection dropped before the answer came
    StatusLoginFailed = 9,             // wrong login or password
    StatusAccountBlocked = 10,         // the account is blocked
    StatusLoginLocked = 11,            // too many failed attempts; try again later
    StatusPasswordChangeRequired = 12, // right password, but a new one must be chosen first
    StatusBiometricRefused = 18,       // the operator may not edit biometric data
};

namespace command {
// Sessions.
inline constexpr char Login[] = "session.login";
inline constexpr char Resume[] = "session.resume";
inline constexpr char Logout[] = "session.logout";
inline constexpr char ChangePassword[] = "session.change_password";
inline constexpr char PasswordPolicy[] = "session.password_policy";
// Pushed by the server (request id 0).
inline constexpr char SessionClosed[] = "session.closed";
inline constexpr char DataChanged[] = "data.changed";
inline constexpr char DataRemoved[] = "data.removed";
// A new row of the audit log, to the sessions that may read the log.
inline constexpr char AuditAppended[] = "audit.appended";
// The outcome of an attempt to deliver a mail, to the sessions of the operator who queued it.
inline constexpr char MailDelivery[] = "mail.delivery";
// The local store.
inline constexpr char Snapshot[] = "data.snapshot";
inline constexpr char RoleCatalogue[] = "data.role_catalogue";
// Data operations.
inline constexpr char AddObject[] = "data.add_object";
inline constexpr char UpdateObject[] = "data.update_object";
inline constexpr char RemoveObject[] = "data.remove_object";
inline constexpr char PrescribeRoleTemplate[] = "data.role_template_prescribe_user";
inline constexpr char AddPermissions[] = "data.add_permissions";
inline constexpr char UpdatePermissions[] = "data.update_permissions";
inline constexpr char GetPermissions[] = "data.get_permissions";
inline constexpr char RoleTemplateInherit[] = "data.role_template_inherit";
inline constexpr char GetUserFingersExists[] = "data.get_user_fingers_exists";
inline constexpr char ExecSql[] = "data.exec_sql";
inline constexpr char GetSessionsInfo[] = "data.get_sessions_info";
// Fingerprint enrolment, by the studio's enrolment screen.
inline constexpr char GetUserFingers[] = "data.get_user_fingers";
inline constexpr char EnrolFinger[] = "data.enrol_finger";
inline constexpr char RemoveFinger[] = "data.remove_finger";
// Logins locked after failed attempts, for operators who may change users.
inline constexpr char LoginLocks[] = "admin.login_locks";
inline constexpr char UnlockLogin[] = "admin.unlock_login";
// The audit log, page by page, for operators who may read it.
inline constexpr char AuditLog[] = "admin.audit_log";
// Names the user who confirmed the session's next request, for its audit row.
inline constexpr char SetConfirmer[] = "session.set_confirmer";
// Names kept as the clients know them.
inline constexpr char SendEmail[] = "send_email";
inline constexpr char DisconnectUsers[] = "datamanager.disconnect_users";
} // namespace command

// Commands between the studio and its screens; they never reach the server.
namespace studio {
inline constexpr char ShowFingerprintWidget[] = "show:fingerprintwidget";
// Followed by the client identity of the screen that opened the enrolment.
inline constexpr char FingerprintFinishedPrefix[] = "fingerprint.finished:";
inline constexpr char ShowMobileUserWizards[] = "show:userctl:mobileuserwizards";
inline constexpr char ShowMobileUserProperties[] = "show:userctl:mobileuserproperties";
} // namespace studio

} // namespace zeral::proto
