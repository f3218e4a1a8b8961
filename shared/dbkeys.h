#pragma once

// Parameter keys and object types of the server's store. Parameter values are always text.
namespace db {

namespace user {
inline constexpr char LOGIN[] = "PT_LOGIN";
inline constexpr char SURNAME[] = "PT_SURNAME";
inline constexpr char NAME[] = "PT_NAME";
inline constexpr char PATRONYMIC[] = "PT_PATRONYMIC";
inline constexpr char ROLE_TEMPLATE[] = "PT_ROLETEMPLATE";
inline constexpr char IDENT_TYPE[] = "PT_IDENT_TYPE";
inline constexpr char PASSHASH[] = "PT_PASSHASH";
inline constexpr char REQUIRE_CHANGE[] = "PT_REQUIRE_CHANGE";
// Write-only requests: the server acts on them and never stores them.
inline constexpr char CLEAR_PASSWORD[] = "PT_CLEAR_PASSWORD";
inline constexpr char SET_PASSWORD[] = "PT_SET_PASSWORD";
// "b" on a user means blocked; on a worker "d" marks a dismissed employee.
inline constexpr char OBJECTSTATE[] = "PT_OBJECTSTATE";
// Seconds since the epoch, in decimal, of the last change of the state.
inline constexpr char OBJECTSTATEDATE[] = "PT_OBJECTSTATEDATE";
} // namespace user

namespace database {
// On a user: when the password expires (ISO date, empty for never); on the database
// object: the number of days a new password lasts.
inline constexpr char PASSWORD_EXPIRED[] = "PT_PASSWORD_EXPIRED";
inline constexpr char PASSWORD_DEF[] = "PT_PASSWORD_DEF";
inline constexpr char IDENT_TYPE[] = "PT_IDENT_TYPE";
inline constexpr char MOBILE_HOST[] = "PT_MOBILE_HOST";
inline constexpr char MOBILE_PORT[] = "PT_MOBILE_PORT";
// The password policy (ours): minimum length and the character classes required.
inline constexpr char PASSWORD_MIN_LENGTH[] = "PT_PASSWORD_MIN_LENGTH";
inline constexpr char PASSWORD_REQUIRE_UPPER[] = "PT_PASSWORD_REQUIRE_UPPER";
inline constexpr char PASSWORD_REQUIRE_LOWER[] = "PT_PASSWORD_REQUIRE_LOWER";
inline constexpr char PASSWORD_REQUIRE_DIGIT[] = "PT_PASSWORD_REQUIRE_DIGIT";
inline constexpr char PASSWORD_REQUIRE_SPECIAL[] = "PT_PASSWORD_REQUIRE_SPECIAL";
} // namespace database

namespace worker {
inline constexpr char EMAIL[] = "PT_EMAIL";
inline constexpr char WORKERNUM[] = "PT_WORKERNUM";
inline constexpr char JOBLINK[] = "PT_JOBLINK";
} // namespace worker

namespace object {
// Hides an object from the permission trees.
inline constexpr char HIDDEN[] = "PT_HIDDEN";
} // namespace object

namespace system {
inline constexpr char USER[] = "OT_USER";
inline constexpr char ROLE[] = "OT_ROLE";
inline constexpr char DATABASE[] = "OT_DATABASE";
} // namespace system

namespace orgstructure {
inline constexpr char WORKER[] = "OT_WORKER";
inline constexpr char DEPARTMENT[] = "OT_DEPARTMENT";
inline constexpr char FIRM[] = "OT_FIRM";
inline constexpr char SUBJECTROOT[] = "OT_SUBJECTROOT";
inline constexpr char JOB[] = "OT_JOB";
} // namespace orgstructure

namespace placing {
inline constexpr char PLACING[] = "OT_PLACING";
} // namespace placing

namespace report {
inline constexpr char REPORT[] = "OT_REPORT";
} // namespace report

namespace policy {
inline constexpr char ACCESS_POLICY[] = "OT_ACCESS_POLICY";
} // namespace policy

namespace monitoring {
inline constexpr char SETTINGS[] = "OT_MONITORING_SETTINGS";
} // namespace monitoring

} // namespace db
