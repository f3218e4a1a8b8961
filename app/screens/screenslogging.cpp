#include "screenslogging.h"

Q_LOGGING_CATEGORY(lcStudioScreens, "zr.studio.screens")
