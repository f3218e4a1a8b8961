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
    static DemoData build(int employees, TYPE_ID firstUid);
};

} // namespace zeral::server
