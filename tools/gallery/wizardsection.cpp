#include "sections.h"

void gallery::shootWizards(const QDir &) {}
