#include "sections.h"

void gallery::shootWidgets(const QDir &) {}
