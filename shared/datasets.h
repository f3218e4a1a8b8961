#pragma once

#include <array>

namespace zeral {

// The datasets of the local store. Every object belongs to exactly one.
inline constexpr char USER_DATANAME[] = "user";
inline constexpr char SUBJECT_DATANAME[] = "subject";
inline constexpr char ORGSTRUCTURE_DATANAME[] = "orgstructure";
inline constexpr char REPORT_DATANAME[] = "report";
inline constexpr char PLACING_DATANAME[] = "placing";
inline constexpr char MONITORING_DATANAME[] = "monitoring_settings";
inline constexpr char POLICY_DATANAME[] = "policy";
inline constexpr char DB_DATANAME[] = "db";
inline constexpr char JOB_DATANAME[] = "job";

inline constexpr std::array<const char *, 9> ALL_DATANAMES = {
    USER_DATANAME,       SUBJECT_DATANAME, ORGSTRUCTURE_DATANAME, REPORT_DATANAME, PLACING_DATANAME,
    MONITORING_DATANAME, POLICY_DATANAME,  DB_DATANAME,           JOB_DATANAME,
};

} // namespace zeral
