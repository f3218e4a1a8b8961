#include "seeder.h"

#include <host/core/passhash.h>
#include <server/engine/demo/demoorganisation.h>
#include <server/engine/serverlogging.h>
#include <server/engine/session/passwordhasher.h>
#include <server/engine/storage/database.h>
#include <server/engine/storage/objectstore.h>
#include <server/engine/storage/rolecatalogue.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <shared/rolenames.h>

#include <QElapsedTimer>

#include <QHostInfo>
#include <QRandomGenerator>
#include <QSet>
#include <algorithm>

namespace zeral::server {

namespace {

constexpr char BaseSeededSetting[] = "base_seeded";
constexpr char DemoSeededSetting[] = "demo_seeded";

// The password a reset gives a user until he sets his own: random per installation, so no
// two systems share one, and within the policy seeded beside it.
QString randomDefaultPassword()
{
    static const QString classes[] = {
        QStringLiteral("ABCDEFGHJKLMNPQRSTUVWXYZ"),
        QStringLiteral("abcdefghijkmnopqrstuvwxyz"),
        QStringLiteral("23456789"),
    };
    QRandomGenerator *random = QRandomGenerator::system();
    QString password;
    for (int i = 0; i < 12; ++i) {
        const QString &chars = classes[i % 3];
        password.append(chars.at(int(random->bounded(chars.size()))));
    }
    std::shuffle(password.begin(), password.end(), *random);
    return password;
}

} // namespace

Seeder::Seeder(Database &database, ObjectStore &store)
    : m_database(database)
    , m_store(store)
{}

QString Seeder::fail(const QString &what)
{
    m_database.rollback();
    return what % QLatin1String(": ") % m_store.lastError();
}

QString Seeder::seedBase()
{
    if (!m_store.setting(QLatin1String(BaseSeededSetting)).isEmpty())
        return addNewRoles();
    if (!m_database.begin())
        return QStringLiteral("can't begin the first start");

    int position = 0;
    for (const RoleEntry &entry : RoleCatalogue::entries()) {
        if (!m_store.putRoleEntry(entry, ++position))
            return fail(QStringLiteral("role catalogue"));
    }
    for (const _ROLETEMPLATE_INFO &info : RoleCatalogue::builtInTemplates()) {
        if (!m_store.insertRoleTemplate(info))
            return fail(QStringLiteral("role template ") % info.id);
    }

    namespace d = db::database;
    ObjectInfo database;
    database.type = QLatin1String(db::system::DATABASE);
    database.parameters = {
        {QStringLiteral("PT_NAME"), QStringLiteral("Zeral")},
        {QLatin1String(d::PASSWORD_DEF), randomDefaultPassword()},
        {QLatin1String(d::PASSWORD_EXPIRED), QStringLiteral("90")},
        {QLatin1String(d::IDENT_TYPE), QStringLiteral("0")},
        {QLatin1String(d::MOBILE_HOST), QHostInfo::localHostName()},
        {QLatin1String(d::MOBILE_PORT), QStringLiteral("8443")},
        {QLatin1String(d::PASSWORD_MIN_LENGTH), QStringLiteral("8")},
        {QLatin1String(d::PASSWORD_REQUIRE_UPPER), QStringLiteral("1")},
        {QLatin1String(d::PASSWORD_REQUIRE_LOWER), QStringLiteral("1")},
        {QLatin1String(d::PASSWORD_REQUIRE_DIGIT), QStringLiteral("1")},
        {QLatin1String(d::PASSWORD_REQUIRE_SPECIAL), QStringLiteral("0")},
    };
    if (m_store.insert(QLatin1String(DB_DATANAME), database) == 0)
        return fail(QStringLiteral("database object"));

    // root has no password until the studio's first start or --init-root-password sets one.
    ObjectInfo root;
    root.type = QLatin1String(db::system::USER);
    root.parameters = {
        {QLatin1String(db::user::LOGIN), QStringLiteral("root")},
        {QLatin1String(db::user::NAME), QStringLiteral("Суперпользователь")},
        {QLatin1String(db::user::ROLE_TEMPLATE), QLatin1String(zeral::roletemplate::SUPERVISOR)},
        {QLatin1String(db::user::IDENT_TYPE), QStringLiteral("0")},
        {QLatin1String(db::user::OBJECTSTATE), QString()},
    };
    const TYPE_ID rootUid = m_store.insert(QLatin1String(USER_DATANAME), root);
    if (rootUid == 0 || !m_store.setSetting(QLatin1String(RootUidSetting), QString::number(rootUid))
        || !m_store.setSetting(QLatin1String(BaseSeededSetting), QStringLiteral("1")))
        return fail(QStringLiteral("root"));
    if (!m_database.commit())
        return QStringLiteral("can't commit the first start");
    qCInfo(lcServerDb) << "first start: roles, templates, database object and root created";
    return {};
}

QString Seeder::addNewRoles()
{
    QSet<QString> stored;
    for (const RoleEntry &entry : m_store.roleCatalogue())
        stored.insert(entry.key);
    // A seeded database always has a catalogue: none means it couldn't be read, and every
    // role would look new.
    if (stored.isEmpty())
        return QStringLiteral("role catalogue: ") % m_store.lastError();
    const QList<RoleEntry> entries = RoleCatalogue::entries();
    QStringList added;
    for (const RoleEntry &entry : entries) {
        if (!stored.contains(entry.key))
            added.append(entry.key);
    }
    if (added.isEmpty())
        return {};
    if (!m_database.begin())
        return QStringLiteral("can't begin adding new roles");
    // Every entry is put again, so that the old ones make room for the new in the order.
    int position = 0;
    for (const RoleEntry &entry : entries) {
        if (!m_store.putRoleEntry(entry, ++position))
            return fail(QStringLiteral("role catalogue"));
    }
    for (const _ROLETEMPLATE_INFO &info : RoleCatalogue::builtInTemplates()) {
        for (const QString &role : info.roles) {
            if (added.contains(role) && !m_store.grantRole(info.id, role))
                return fail(QStringLiteral("role template ") % info.id);
        }
    }
    if (!m_database.commit())
        return QStringLiteral("can't commit the new roles");
    qCInfo(lcServerDb) << "roles added to the catalogue:" << added;
    return {};
}

QString Seeder::seedDemo(int employees, int extraUsers)
{
    if (!m_store.setting(QLatin1String(DemoSeededSetting)).isEmpty())
        return {};
    QElapsedTimer timer;
    timer.start();
    const DemoData demo = DemoOrganisation::build(employees, m_store.nextUid(), extraUsers);
    // Passwords are hashed before the transaction: a few dozen slow hashes. The bulk accounts
    // share one hash (and so its salt): 100,000 hashes would take over ten minutes.
    QHash<TYPE_ID, QString> hashes;
    const QString demoHash = PasswordHasher::hash(
        PassHash::encrypt(DemoOrganisation::demoPassword(), QCryptographicHash::Md5));
    for (auto it = demo.passwords.cbegin(); it != demo.passwords.cend(); ++it)
        hashes.insert(it.key(),
                      PasswordHasher::hash(PassHash::encrypt(it.value(), QCryptographicHash::Md5)));
    if (!m_database.begin())
        return QStringLiteral("can't begin the demo");
    // All objects first, then the links: a link may point into a dataset stored later.
    int count = 0;
    for (const char *dataset : ALL_DATANAMES) {
        for (const ObjectInfo &object : demo.objects.value(QLatin1String(dataset))) {
            if (m_store.insert(QLatin1String(dataset), object) == 0)
                return fail(QStringLiteral("demo object %1").arg(object.uid));
            ++count;
        }
    }
    for (const QList<ObjectInfo> &objects : demo.objects) {
        for (const ObjectInfo &object : objects) {
            for (const auto *links : {&object.parents, &object.children}) {
                for (const _INHERIT_DATA &link : *links) {
                    if (!m_store.insertLink(link))
                        return fail(QStringLiteral("demo link"));
                }
            }
        }
    }
    for (auto it = hashes.cbegin(); it != hashes.cend(); ++it) {
        if (!m_store.setPasswordHash(it.key(), it.value()))
            return fail(QStringLiteral("demo password"));
    }
    for (const TYPE_ID uid : demo.bulkUsers) {
        if (!m_store.setPasswordHash(uid, demoHash))
            return fail(QStringLiteral("demo password"));
    }
    const TYPE_ID rootUid = m_store.setting(QLatin1String(RootUidSetting)).toUInt();
    if (m_store.passwordHash(rootUid).isEmpty() && !m_store.setPasswordHash(rootUid, demoHash))
        return fail(QStringLiteral("root password"));
    for (const OBJECT_PERMISSION &permission : demo.permissions) {
        if (!m_store.addPermission(permission))
            return fail(QStringLiteral("demo permission"));
    }
    for (const DemoFinger &finger : demo.fingers) {
        if (!m_store.addFinger(finger.userUid, finger.finger, finger.data))
            return fail(QStringLiteral("demo finger"));
    }
    if (!m_store.setSetting(QLatin1String(DemoSeededSetting), QString::number(employees)))
        return fail(QStringLiteral("demo"));
    if (!m_database.commit())
        return QStringLiteral("can't commit the demo");
    // The transaction left the whole demo in the write-ahead log, where every later read of a
    // page would look it up first: 120 MB for 200,000 people.
    m_database.checkpoint();
    qCInfo(lcServerDb) << "demo organisation stored:" << count << "objects,"
                       << demo.bulkUsers.size() << "of them bulk accounts, in" << timer.elapsed()
                       << "ms";
    return {};
}

} // namespace zeral::server
