#include "serverlogging.h"

Q_LOGGING_CATEGORY(lcServer, "zr.server")
Q_LOGGING_CATEGORY(lcServerNet, "zr.server.net")
Q_LOGGING_CATEGORY(lcServerDb, "zr.server.db")
Q_LOGGING_CATEGORY(lcServerSession, "zr.server.session")
