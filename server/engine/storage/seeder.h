#pragma once

#include <QString>

namespace zeral::server {

class Database;
class ObjectStore;

// What a first start puts into an empty database, and the demo organisation on request.
class Seeder
{
public:
    Seeder(Database &database, ObjectStore &store);

    // The role catalogue, the built-in templates, the database object and "root" without a
    // password, once. Empty on success, else the error.
    QString seedBase();
    // Roles that came into the catalogue after the database was first filled: they are put
    // into it, in their place, and into the built-in templates that hold them (a role that
    // didn't exist can't have been taken from a template on purpose). Empty on success.
    QString addNewRoles();
    // The demo organisation with `employees` employees and `extraUsers` bulk accounts, once
    // per database; root and the demo users get the demo password.
    QString seedDemo(int employees, int extraUsers = 0);

    static constexpr char RootUidSetting[] = "root_uid";

private:
    QString fail(const QString &what);

    Database &m_database;
    ObjectStore &m_store;
};

} // namespace zeral::server
