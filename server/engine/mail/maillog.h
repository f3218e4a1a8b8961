#pragma once

#include <QLoggingCategory>

// The server's mail: rendering, the outbox and delivery. Never log a mail's body or
// message: they carry passwords.
Q_DECLARE_LOGGING_CATEGORY(lcMail)
