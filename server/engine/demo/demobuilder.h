#pragma once

#include <server/engine/demo/demodata.h>
#include <server/engine/demo/demonames.h>

#include <QRandomGenerator>
#include <QSet>
#include <QStringList>
#include <QVector>

namespace zeral::server {

// Builds the demo organisation one dataset after the other. Every choice comes from one
// generator seeded with a constant, so the same size always gives the same records.
class DemoBuilder
{
public:
    // `extraUsers` accounts follow the demo's own (see addBulkUsers).
    DemoBuilder(int employees, TYPE_ID firstUid, int extraUsers = 0);
    DemoData build();

private:
    struct Firm
    {
        TYPE_ID uid = 0;
        QString name;
        QString domain;
        TYPE_ID site = 0;        // its grounds in the dataset "placing"
        QList<TYPE_ID> gates;    // access points every employee passes
        QList<TYPE_ID> topUnits; // its departments of the first level
    };
    struct Department
    {
        TYPE_ID uid = 0;
        int firm = 0;
        int level = 1;
    };

    ObjectInfo &append(QList<ObjectInfo> &dataset, const char *type, TYPE_ID parent,
                       const QString &name);
    void addOrgStructure();
    void addJobs();
    void addWorkers();
    void addPlacings();
    void addPlacingsOfFirm(Firm &firm);
    void addReports();
    void addPolicies();
    void addMonitoring();
    void addDesktopUsers();
    void addMobileUsers();
    // Many more accounts of every kind, for trying the screens on a large site.
    void addBulkUsers();
    // A login made of the person's Latin surname and initials, unique among the accounts.
    QString bulkLogin(const DemoNames::Person &person);
    // Without an employee the account carries `person`, or a person drawn anew. Without
    // `ownPassword` it is a bulk one (DemoData::bulkUsers).
    ObjectInfo &appendUser(const QString &login, const char *roleTemplate, int workerIndex,
                           bool ownPassword = true, const DemoNames::Person *person = nullptr);
    void grant(TYPE_ID user, TYPE_ID object);
    void enrolFingers(TYPE_ID user, int count);
    // The next worker from `index` on, in steps of `step`, who still works here and has no
    // account yet; -1 when there is none.
    int freeWorker(int index, int step) const;

    const int m_employees;
    const int m_extraUsers;
    TYPE_ID m_nextUid;
    QRandomGenerator m_random;
    DemoData m_data;

    QList<ObjectInfo> m_orgStructure;
    QList<ObjectInfo> m_jobs;
    QList<ObjectInfo> m_workers;
    QList<ObjectInfo> m_placings;
    QList<ObjectInfo> m_reports;
    QList<ObjectInfo> m_policies;
    QList<ObjectInfo> m_monitoring;
    QList<ObjectInfo> m_users;

    QVector<Firm> m_firms;
    QVector<Department> m_departments;
    QVector<int> m_workerDepartment; // index into m_departments, by worker index
    QSet<int> m_workersWithAccount;
    QSet<QString> m_logins;
    TYPE_ID m_headJob = 0;
    QList<TYPE_ID> m_regularJobs;
    QList<TYPE_ID> m_visibleReports;
};

} // namespace zeral::server
