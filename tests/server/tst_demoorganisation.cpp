#include <host/core/guipassfuncs.h>
#include <server/engine/demo/demoorganisation.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <shared/fingerprintformat.h>
#include <shared/rolenames.h>

#include <QSet>
#include <QtTest>

using namespace zeral;
using namespace zeral::server;

class TestDemoOrganisation : public QObject
{
    Q_OBJECT

private slots:
    void sameSizeGivesSameRecords();
    void recordsAreConsistent_data();
    void recordsAreConsistent();
    void hasWhatTheScreensShow();
    void bulkAccountsSpreadOverTemplates();
    void buildsLargeOrganisation();
};

namespace {

QHash<TYPE_ID, ObjectInfo> byUid(const DemoData &data, const char *dataset)
{
    QHash<TYPE_ID, ObjectInfo> objects;
    for (const ObjectInfo &object : data.objects.value(QLatin1String(dataset)))
        objects.insert(object.uid, object);
    return objects;
}

template<typename T>
bool insertNew(QSet<T> &set, const T &value)
{
    const int before = set.size();
    set.insert(value);
    return set.size() > before;
}

QString param(const ObjectInfo &object, const char *key)
{
    return object.parameters.value(QLatin1String(key));
}

} // namespace

void TestDemoOrganisation::sameSizeGivesSameRecords()
{
    const DemoData first = DemoOrganisation::build(300, 100);
    const DemoData second = DemoOrganisation::build(300, 100);
    QCOMPARE(first.objects, second.objects);
    QCOMPARE(first.passwords, second.passwords);
    QCOMPARE(first.permissions, second.permissions);
    const auto fingers = [](const DemoData &data) {
        QList<QPair<TYPE_ID, QByteArray>> list;
        for (const DemoFinger &finger : data.fingers)
            list.append({finger.userUid * 10 + TYPE_ID(finger.finger), finger.data.data});
        return list;
    };
    QCOMPARE(fingers(first), fingers(second));
}

void TestDemoOrganisation::recordsAreConsistent_data()
{
    QTest::addColumn<int>("employees");
    QTest::addColumn<TYPE_ID>("firstUid");
    QTest::addColumn<int>("extraUsers");
    QTest::addRow("no staff") << 0 << TYPE_ID(2) << 0;
    QTest::addRow("one employee") << 1 << TYPE_ID(10) << 0;
    QTest::addRow("small firm") << 37 << TYPE_ID(5) << 0;
    QTest::addRow("server default") << 300 << TYPE_ID(3) << 0;
    QTest::addRow("holding") << 5000 << TYPE_ID(1000) << 0;
    // More accounts than employees: mobile ones run out of employees to belong to.
    QTest::addRow("accounts, no staff") << 0 << TYPE_ID(2) << 120;
    QTest::addRow("accounts beyond the staff") << 37 << TYPE_ID(5) << 400;
    QTest::addRow("holding with accounts") << 5000 << TYPE_ID(1000) << 5000;
}

void TestDemoOrganisation::recordsAreConsistent()
{
    QFETCH(int, employees);
    QFETCH(TYPE_ID, firstUid);
    QFETCH(int, extraUsers);
    const DemoData data = DemoOrganisation::build(employees, firstUid, extraUsers);
    const QSet<TYPE_ID> bulk(data.bulkUsers.cbegin(), data.bulkUsers.cend());
    QCOMPARE(bulk.size(), extraUsers);

    QSet<QString> knownKeys;
    for (const char *key :
         {db::user::LOGIN, db::user::SURNAME, db::user::NAME, db::user::PATRONYMIC,
          db::user::ROLE_TEMPLATE, db::user::IDENT_TYPE, db::user::OBJECTSTATE,
          db::user::OBJECTSTATEDATE, db::database::PASSWORD_EXPIRED, db::worker::EMAIL,
          db::worker::WORKERNUM, db::worker::JOBLINK, db::object::HIDDEN})
        knownKeys.insert(QLatin1String(key));

    // Uids run from the first one asked for without gaps, across all datasets; within a
    // dataset every parent precedes its children.
    QSet<TYPE_ID> uids;
    QHash<TYPE_ID, QString> datasetOf;
    for (auto it = data.objects.cbegin(); it != data.objects.cend(); ++it) {
        for (const ObjectInfo &object : it.value()) {
            QVERIFY(insertNew(uids, object.uid));
            datasetOf.insert(object.uid, it.key());
        }
    }
    for (auto it = data.objects.cbegin(); it != data.objects.cend(); ++it) {
        QSet<TYPE_ID> seenHere;
        for (const ObjectInfo &object : it.value()) {
            QVERIFY(object.parent == 0 || datasetOf.contains(object.parent));
            if (datasetOf.value(object.parent) == it.key())
                QVERIFY2(seenHere.contains(object.parent), qPrintable(it.key()));
            seenHere.insert(object.uid);
            for (auto p = object.parameters.cbegin(); p != object.parameters.cend(); ++p)
                QVERIFY2(knownKeys.contains(p.key()), qPrintable(p.key()));
        }
    }
    for (TYPE_ID uid = firstUid; uid < firstUid + TYPE_ID(uids.size()); ++uid)
        QVERIFY(uids.contains(uid));

    const QHash<TYPE_ID, ObjectInfo> org = byUid(data, ORGSTRUCTURE_DATANAME);
    const QHash<TYPE_ID, ObjectInfo> workers = byUid(data, SUBJECT_DATANAME);
    const QHash<TYPE_ID, ObjectInfo> jobs = byUid(data, JOB_DATANAME);
    const QHash<TYPE_ID, ObjectInfo> users = byUid(data, USER_DATANAME);
    QCOMPARE(workers.size(), employees);

    QSet<QString> emails;
    for (const ObjectInfo &worker : workers) {
        QCOMPARE(worker.type, QLatin1String(db::orgstructure::WORKER));
        QCOMPARE(org.value(worker.parent).type, QLatin1String(db::orgstructure::DEPARTMENT));
        QVERIFY(jobs.contains(param(worker, db::worker::JOBLINK).toUInt()));
        QVERIFY(insertNew(emails, param(worker, db::worker::EMAIL)));
    }

    QSet<QString> logins;
    for (const ObjectInfo &user : users) {
        const QString login = param(user, db::user::LOGIN);
        QVERIFY(!login.isEmpty() && login != QLatin1String("root"));
        QVERIFY(insertNew(logins, login));
        QVERIFY(!user.parameters.contains(QLatin1String(db::user::PASSHASH)));
        // A bulk account has the demo password too, stored under one shared hash.
        QCOMPARE(data.passwords.value(user.uid),
                 bulk.contains(user.uid) ? QString() : DemoOrganisation::demoPassword());
        QVERIFY(!param(user, db::user::SURNAME).isEmpty());

        const QString roleTemplate = param(user, db::user::ROLE_TEMPLATE);
        const bool mobile = roleTemplate == QLatin1String(roletemplate::MOBILE)
                            || roleTemplate == QLatin1String(roletemplate::MOBILE_CHIEF);
        const QList<_INHERIT_DATA> links = user.children.values(INHERIT_WORKER_USER);
        QVERIFY(mobile ? links.size() == 1 : links.size() <= 1);
        if (links.isEmpty())
            continue;
        QCOMPARE(links.first().parent, user.uid);
        QCOMPARE(links.first().linkType, INHERIT_WORKER_USER);
        const ObjectInfo worker = workers.value(links.first().child);
        QCOMPARE(worker.type, QLatin1String(db::orgstructure::WORKER));
        QVERIFY(param(worker, db::user::OBJECTSTATE) != QLatin1String("d"));
        QCOMPARE(param(user, db::user::SURNAME), param(worker, db::user::SURNAME));
        if (mobile)
            QCOMPARE(login, param(worker, db::worker::EMAIL));
    }
    QCOMPARE(data.passwords.size() + bulk.size(), users.size());

    for (const OBJECT_PERMISSION &permission : data.permissions) {
        QVERIFY(users.contains(permission.subject));
        const QString dataset = datasetOf.value(permission.object);
        QVERIFY2(dataset == QLatin1String(ORGSTRUCTURE_DATANAME)
                     || dataset == QLatin1String(PLACING_DATANAME)
                     || dataset == QLatin1String(REPORT_DATANAME),
                 qPrintable(dataset));
        QCOMPARE(permission.permission, 12u);
    }

    QSet<QPair<TYPE_ID, int>> fingers;
    QSet<QByteArray> templates;
    for (const DemoFinger &finger : data.fingers) {
        QVERIFY(users.contains(finger.userUid));
        QVERIFY(finger.finger >= 0 && finger.finger <= 9);
        QVERIFY(insertNew(fingers, qMakePair(finger.userUid, finger.finger)));
        QVERIFY(!finger.data.data.isEmpty() && insertNew(templates, finger.data.data));
        // The studio's simulated reader confirms only templates of its own format and size.
        QCOMPARE(finger.data.format, SIMULATED_FINGERPRINT_FORMAT);
        QCOMPARE(finger.data.data.size(), SIMULATED_FINGERPRINT_SIZE);
    }
}

void TestDemoOrganisation::hasWhatTheScreensShow()
{
    const DemoData data = DemoOrganisation::build(300, 3);

    QMultiHash<QString, ObjectInfo> byType;
    for (const QList<ObjectInfo> &objects : data.objects)
        for (const ObjectInfo &object : objects)
            byType.insert(object.type, object);
    for (const char *type :
         {"OT_SUBJECTROOT", "OT_FIRM", "OT_JOB", "OT_PLACING", "OT_TERM_ZR_NOVA_E",
          "OT_TERM_ZR_DESK", "OT_TERM_VIRTUAL_CHECKPOINT", "OT_TERM_EXTERNAL_DEVICE",
          "OT_TERM_ZR_TURNSTILE", "OT_REPORT", "OT_ACCESS_POLICY", "OT_MONITORING_SETTINGS"})
        QVERIFY2(byType.contains(QLatin1String(type)), type);

    // Departments nest at least three levels below the firm.
    const QHash<TYPE_ID, ObjectInfo> org = byUid(data, ORGSTRUCTURE_DATANAME);
    int deepest = 0;
    for (const ObjectInfo &unit : org) {
        int depth = 0;
        for (TYPE_ID up = unit.uid; org.value(up).type == QLatin1String("OT_DEPARTMENT");
             up = org.value(up).parent)
            ++depth;
        deepest = qMax(deepest, depth);
    }
    QVERIFY(deepest >= 3);

    const auto count = [&](const char *type, const char *key, const char *value) {
        int n = 0;
        for (const ObjectInfo &object : byType.values(QLatin1String(type)))
            n += object.parameters.value(QLatin1String(key)) == QLatin1String(value) ? 1 : 0;
        return n;
    };
    QVERIFY(count("OT_REPORT", db::object::HIDDEN, "true") > 0);
    QVERIFY(count("OT_WORKER", db::user::OBJECTSTATE, "d") > 0);
    QVERIFY(count("OT_USER", db::user::OBJECTSTATE, "b") > 1);
    for (const char *roleTemplate : {roletemplate::ADMINISTRATOR, roletemplate::OPERATOR,
                                     roletemplate::MOBILE, roletemplate::MOBILE_CHIEF})
        QVERIFY2(count("OT_USER", db::user::ROLE_TEMPLATE, roleTemplate) > 0, roleTemplate);

    QHash<TYPE_ID, int> fingersPerUser;
    for (const DemoFinger &finger : data.fingers)
        ++fingersPerUser[finger.userUid];
    QVERIFY(fingersPerUser.values().contains(1));
    QVERIFY(fingersPerUser.values().contains(2));

    QVariantMap strictest = GUIPassFuncs::getPasswordOptions();
    strictest.insert(GUIPassFuncs::RequireSpecial, true);
    QCOMPARE(GUIPassFuncs::unmetCriteria(DemoOrganisation::demoPassword(), strictest),
             QStringList());
}

void TestDemoOrganisation::bulkAccountsSpreadOverTemplates()
{
    const DemoData data = DemoOrganisation::build(2000, 2, 3000);
    const QHash<TYPE_ID, ObjectInfo> users = byUid(data, USER_DATANAME);
    QHash<QString, int> perTemplate;
    int blocked = 0;
    for (const TYPE_ID uid : data.bulkUsers) {
        const ObjectInfo user = users.value(uid);
        ++perTemplate[param(user, db::user::ROLE_TEMPLATE)];
        blocked += param(user, db::user::OBJECTSTATE) == QLatin1String("b");
    }
    // Mostly operators, and some of every other built-in template.
    QVERIFY2(perTemplate.value(QLatin1String(roletemplate::OPERATOR)) > 3000 / 2,
             qPrintable(QString::number(perTemplate.value(QLatin1String(roletemplate::OPERATOR)))));
    for (const char *roleTemplate :
         {roletemplate::SUPERVISOR, roletemplate::ADMINISTRATOR, roletemplate::SECURITY,
          roletemplate::HR, roletemplate::AUDITOR, roletemplate::MOBILE,
          roletemplate::MOBILE_CHIEF})
        QVERIFY2(perTemplate.value(QLatin1String(roleTemplate)) > 0, roleTemplate);
    QVERIFY(perTemplate.value(QLatin1String(roletemplate::MOBILE)) > 3000 / 20);
    QCOMPARE(blocked, 3000 / 23);
}

// How long it takes is bench_studio_login's business; here, that a large site is whole.
void TestDemoOrganisation::buildsLargeOrganisation()
{
    const DemoData data = DemoOrganisation::build(100000, 2);
    QCOMPARE(data.objects.value(QLatin1String(SUBJECT_DATANAME)).size(), 100000);
}

QTEST_GUILESS_MAIN(TestDemoOrganisation)
#include "tst_demoorganisation.moc"
