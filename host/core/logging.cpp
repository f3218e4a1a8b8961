#include "logging.h"

Q_LOGGING_CATEGORY(lcHost, "zr.host")
Q_LOGGING_CATEGORY(lcHostNet, "zr.host.net")
Q_LOGGING_CATEGORY(lcHostStore, "zr.host.store")

const QLoggingCategory &ucc()
{
    static const QLoggingCategory category("gui.plugin.userctl");
    return category;
}
