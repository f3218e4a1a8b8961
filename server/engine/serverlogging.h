#pragma once

#include <QLoggingCategory>

// Diagnostics of the server; turn them on with QT_LOGGING_RULES="zr.server*.debug=true".
Q_DECLARE_LOGGING_CATEGORY(lcServer)
Q_DECLARE_LOGGING_CATEGORY(lcServerNet)
Q_DECLARE_LOGGING_CATEGORY(lcServerDb)
Q_DECLARE_LOGGING_CATEGORY(lcServerSession)
