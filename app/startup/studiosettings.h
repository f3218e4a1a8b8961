#pragma once

// The studio's keys in Settings. "mainwindow/language" is read by the screens too.
namespace studio::settings {
inline constexpr char Language[] = "mainwindow/language";
inline constexpr char Geometry[] = "mainwindow/geometry";
inline constexpr char Navigation[] = "mainwindow/navigation";
inline constexpr char Screen[] = "mainwindow/screen"; // the plugin name of the screen in view
inline constexpr char Tab[] = "mainwindow/tab";
inline constexpr char LastLogin[] = "login/last_login";
inline constexpr char RecentServers[] = "login/recent_servers";
// "libfprint" (the default: a USB reader when there is one, else the simulated reader) or
// "simulated" (always the simulated reader).
inline constexpr char FingerprintReader[] = "fingerprint/reader";
} // namespace studio::settings
