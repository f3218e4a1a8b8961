#include "biometricslogging.h"

Q_LOGGING_CATEGORY(lcBiometrics, "zr.host.gui.biometrics")
