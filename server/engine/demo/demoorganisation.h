#pragma once

#include <server/engine/demo/demodata.h>

namespace zeral::server {

// A deterministic, realistic organisation for demonstrations and benchmarks: the same size
// gives the same records on every run.
class DemoOrganisation
{
public:
    // The demo users' password (the README names it).
    static QString demoPassword();
    // `extraUsers` more accounts follow the demo's own: mostly operators, some mobile users of
    // employees without an account; listed in DemoData::bulkUsers.
    static DemoData build(int employees, TYPE_ID firstUid, int extraUsers = 0);
};

} // namespace zeral::server
