#include "maillog.h"

Q_LOGGING_CATEGORY(lcMail, "zr.server.mail")
