#pragma once

#include <QLoggingCategory>

// The wizards of the studio's widget library and the chains they run.
Q_DECLARE_LOGGING_CATEGORY(lcWizards)
