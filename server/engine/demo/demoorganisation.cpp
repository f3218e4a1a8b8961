#include "demoorganisation.h"

#include <server/engine/demo/demobuilder.h>

namespace zeral::server {

QString DemoOrganisation::demoPassword()
{
    // Upper case, lower case, digits and a sign: it passes even the strictest policy the
    // settings offer.
    return QStringLiteral("Zeral2026!");
}

DemoData DemoOrganisation::build(int employees, TYPE_ID firstUid, int extraUsers)
{
    return DemoBuilder(employees, firstUid, extraUsers).build();
}

} // namespace zeral::server
