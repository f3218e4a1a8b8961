#pragma once

#include <QLoggingCategory>

// The studio's client libraries.
Q_DECLARE_LOGGING_CATEGORY(lcHost)
// The connection to the server.
Q_DECLARE_LOGGING_CATEGORY(lcHostNet)
// The local object store.
Q_DECLARE_LOGGING_CATEGORY(lcHostStore)

// The category of the users screen, "gui.plugin.userctl", built on first use.
const QLoggingCategory &ucc();
