#pragma once

#include <QLoggingCategory>

// The studio's own screens: fingerprint enrolment and the employees screen.
Q_DECLARE_LOGGING_CATEGORY(lcStudioScreens)
