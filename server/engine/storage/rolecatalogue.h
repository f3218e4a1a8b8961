#pragma once

#include <shared/roleentry.h>
#include <shared/roletemplateinfo.h>

#include <QList>

namespace zeral::server {

// What a first start puts into the catalogue of roles and the built-in role templates.
class RoleCatalogue
{
public:
    // The context of the titles in the server's catalogue of translations.
    static constexpr char TitleContext[] = "RoleCatalogue";

    // Groups and roles with their Russian titles, in display order.
    static QList<RoleEntry> entries();
    // The built-in templates with the roles each grants; names from ZRGlobals.
    static QList<_ROLETEMPLATE_INFO> builtInTemplates();

    RoleCatalogue() = delete;
};

} // namespace zeral::server
