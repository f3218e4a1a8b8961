#pragma once

#include <QLoggingCategory>

// Fingerprint readers, matching and the confirmation by fingerprint.
Q_DECLARE_LOGGING_CATEGORY(lcBiometrics)
