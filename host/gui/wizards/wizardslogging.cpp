#include "wizardslogging.h"

Q_LOGGING_CATEGORY(lcWizards, "zr.host.gui.wizards")
