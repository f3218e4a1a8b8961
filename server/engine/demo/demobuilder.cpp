#include "demobuilder.h"

#include <server/engine/demo/demonames.h>
#include <server/engine/demo/demoorganisation.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <shared/fingerprintformat.h>
#include <shared/inheritdata.h>
#include <shared/rolenames.h>

#include <QDateTime>
#include <QHash>
#include <QRandomGenerator>

#include <cmath>
#include <iterator>

namespace zeral::server {

namespace {

// Any constant will do; changing it changes every demo database built from now on.
constexpr quint32 demoSeed = 20260415;
// The rights one permission grants, the value the users screen writes.
constexpr quint32 grantedRights = 12;

const QString keyName = QString::fromLatin1(db::user::NAME);
const QString keySurname = QString::fromLatin1(db::user::SURNAME);
const QString keyPatronymic = QString::fromLatin1(db::user::PATRONYMIC);
const QString keyLogin = QString::fromLatin1(db::user::LOGIN);
const QString keyRoleTemplate = QString::fromLatin1(db::user::ROLE_TEMPLATE);
const QString keyIdentType = QString::fromLatin1(db::user::IDENT_TYPE);
const QString keyState = QString::fromLatin1(db::user::OBJECTSTATE);
const QString keyStateDate = QString::fromLatin1(db::user::OBJECTSTATEDATE);
const QString keyPasswordExpired = QString::fromLatin1(db::database::PASSWORD_EXPIRED);
const QString keyEmail = QString::fromLatin1(db::worker::EMAIL);
const QString keyWorkerNumber = QString::fromLatin1(db::worker::WORKERNUM);
const QString keyJob = QString::fromLatin1(db::worker::JOBLINK);
const QString keyHidden = QString::fromLatin1(db::object::HIDDEN);

struct FirmSeed
{
    const char *name;
    const char *domain; // the reserved top-level domain keeps demo mail from real people
};
const FirmSeed firmSeeds[] = {
    {"ООО «Северный механический завод»", "sevmeh.example"},
    {"АО «Зерал Логистика»", "zeral-logistika.example"},
    {"ООО «Торговый дом „Волга“»", "td-volga.example"},
    {"ООО «Медтехника-Сервис»", "medtekhnika.example"},
    {"АО «Уральские приборы»", "uralpribor.example"},
};

const char *const topUnitNames[] = {
    "Администрация",
    "Бухгалтерия",
    "Отдел кадров",
    "Служба безопасности",
    "Производственный цех №1",
    "Производственный цех №2",
    "Склад",
    "Отдел продаж",
    "Отдел информационных технологий",
    "Юридический отдел",
    "Отдел снабжения",
    "Транспортный участок",
    "Лаборатория контроля качества",
    "Ремонтно-механический участок",
    "Отдел главного инженера",
    "Планово-экономический отдел",
};
const char *const subUnitNames[] = {
    "Сектор учёта",     "Группа планирования", "Смена А",        "Смена Б",
    "Участок сборки",   "Бюро пропусков",      "Сектор закупок", "Участок отгрузки",
    "Группа поддержки", "Сектор отчётности",
};

const char *const headJobName = "Руководитель подразделения";
const char *const regularJobNames[] = {
    "Инженер",
    "Ведущий инженер",
    "Техник",
    "Бухгалтер",
    "Экономист",
    "Специалист по кадрам",
    "Охранник",
    "Контролёр КПП",
    "Оператор станков с ЧПУ",
    "Слесарь-ремонтник",
    "Электромонтёр",
    "Кладовщик",
    "Водитель погрузчика",
    "Менеджер по продажам",
    "Программист",
    "Системный администратор",
    "Юрисконсульт",
    "Секретарь",
    "Лаборант",
    "Комплектовщик",
    "Сборщик",
    "Водитель",
};

const char *const visibleReportNames[] = {
    "Табель учёта рабочего времени", "Отчёт о проходах сотрудников", "Опоздания и ранние уходы",
    "Присутствие на территории",     "Нарушения режима доступа",     "Отсутствующие сотрудники",
    "Журнал событий устройств",      "Сводка по подразделениям",     "Сверхурочная работа",
    "Первый вход и последний выход",
};
const char *const hiddenReportNames[] = {
    "Служебный: выгрузка в бухгалтерию",
    "Служебный: сверка справочника сотрудников",
    "Отладочный журнал терминалов",
};

const char *const policyNames[] = {
    "Круглосуточный доступ",
    "Рабочие дни 08:00–17:00",
    "Сменный график 2/2",
    "Только центральная проходная",
    "Доступ на склад",
    "Доступ в серверную",
    "Посетители",
};

const char *const monitoringNames[] = {
    "Общий мониторинг",
    "Тревожные события",
    "Мониторинг проходных",
};

// The accounts every demo has; more operators follow as the organisation grows.
struct DesktopSeed
{
    const char *login;
    const char *roleTemplate;
    const char *identType;
    bool blocked;
    const char *passwordExpires; // ISO date, empty for never
    int fingers;
};
const DesktopSeed desktopSeeds[] = {
    {"admin", roletemplate::ADMINISTRATOR, "0", false, "", 1},
    {"director", roletemplate::SUPERVISOR, "0", false, "", 2},
    {"security", roletemplate::SECURITY, "2", false, "", 2},
    {"operator", roletemplate::OPERATOR, "0", false, "2027-12-31", 0},
    {"operator2", roletemplate::OPERATOR, "0", true, "", 0},
    {"hr", roletemplate::HR, "0", false, "", 1},
    {"hr2", roletemplate::HR, "0", false, "2025-12-31", 0},
    {"auditor", roletemplate::AUDITOR, "0", false, "", 0},
};
const char *const extraOperatorTemplates[] = {
    roletemplate::OPERATOR, roletemplate::SECURITY, roletemplate::HR,
    roletemplate::OPERATOR, roletemplate::AUDITOR,
};

// When the demo accounts were blocked: a fixed moment, so that two builds agree.
const qint64 blockedSince = QDateTime(QDate(2025, 11, 3), QTime(9, 30), Qt::UTC).toSecsSinceEpoch();

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

template<typename T, std::size_t N>
constexpr int count(const T (&)[N])
{
    return int(N);
}

} // namespace

DemoBuilder::DemoBuilder(int employees, TYPE_ID firstUid, int extraUsers)
    : m_employees(qMax(0, employees))
    , m_extraUsers(qMax(0, extraUsers))
    , m_nextUid(firstUid)
    , m_random(demoSeed)
{}

DemoData DemoBuilder::build()
{
    // The order fixes the uids: parents come before their children in every dataset, and
    // whatever a record refers to (department, position, employee) already exists.
    addOrgStructure();
    addJobs();
    addWorkers();
    addPlacings();
    addReports();
    addPolicies();
    addMonitoring();
    addDesktopUsers();
    addMobileUsers();
    addBulkUsers();

    m_data.objects.insert(QString::fromLatin1(ORGSTRUCTURE_DATANAME), m_orgStructure);
    m_data.objects.insert(QString::fromLatin1(JOB_DATANAME), m_jobs);
    m_data.objects.insert(QString::fromLatin1(SUBJECT_DATANAME), m_workers);
    m_data.objects.insert(QString::fromLatin1(PLACING_DATANAME), m_placings);
    m_data.objects.insert(QString::fromLatin1(REPORT_DATANAME), m_reports);
    m_data.objects.insert(QString::fromLatin1(POLICY_DATANAME), m_policies);
    m_data.objects.insert(QString::fromLatin1(MONITORING_DATANAME), m_monitoring);
    m_data.objects.insert(QString::fromLatin1(USER_DATANAME), m_users);
    return m_data;
}

ObjectInfo &DemoBuilder::append(QList<ObjectInfo> &dataset, const char *type, TYPE_ID parent,
                                const QString &name)
{
    // Filled in place: copying a finished ObjectInfo copies its parameters as well.
    dataset.append(ObjectInfo());
    ObjectInfo &object = dataset.last();
    object.uid = m_nextUid++;
    object.type = QString::fromLatin1(type);
    object.parent = parent;
    object.parameters.insert(keyName, name);
    return object;
}

void DemoBuilder::addOrgStructure()
{
    const TYPE_ID root = append(m_orgStructure, db::orgstructure::SUBJECTROOT, 0,
                                text("Организационная структура"))
                             .uid;

    const int firms = m_employees < 100 ? 1 : m_employees < 2000 ? 2 : m_employees < 20000 ? 3 : 4;
    for (int i = 0; i < firms; ++i) {
        Firm firm;
        firm.name = text(firmSeeds[i].name);
        firm.domain = QString::fromLatin1(firmSeeds[i].domain);
        firm.uid = append(m_orgStructure, db::orgstructure::FIRM, root, firm.name).uid;
        m_firms.append(firm);
    }

    // About the square root of the staff in departments, three levels deep at most.
    const int departments = qMax(2 * firms, int(std::lround(std::sqrt(double(m_employees)))));
    const int topPerFirm = qBound(2, departments / (2 * firms), count(topUnitNames));
    QVector<int> childCount;
    for (int i = 0; i < departments; ++i) {
        Department unit;
        TYPE_ID parent = 0;
        QString name;
        if (i < topPerFirm * firms) {
            unit.firm = i % firms;
            parent = m_firms[unit.firm].uid;
            name = text(topUnitNames[i / firms]);
        } else {
            int parentIndex = int(m_random.bounded(quint32(i)));
            while (m_departments[parentIndex].level >= 3)
                parentIndex = (parentIndex + 1) % i;
            const Department &above = m_departments[parentIndex];
            unit.firm = above.firm;
            unit.level = above.level + 1;
            parent = above.uid;
            const int sibling = childCount[parentIndex]++;
            if (unit.level == 2) {
                name = text(subUnitNames[sibling % count(subUnitNames)]);
                if (sibling >= count(subUnitNames))
                    name += QLatin1Char(' ') + QString::number(sibling / count(subUnitNames) + 1);
            } else {
                name = text("Бригада №%1").arg(sibling + 1);
            }
        }
        unit.uid = append(m_orgStructure, db::orgstructure::DEPARTMENT, parent, name).uid;
        if (unit.level == 1)
            m_firms[unit.firm].topUnits.append(unit.uid);
        m_departments.append(unit);
        childCount.append(0);
    }
}

void DemoBuilder::addJobs()
{
    m_headJob = append(m_jobs, db::orgstructure::JOB, 0, text(headJobName)).uid;
    for (const char *name : regularJobNames)
        m_regularJobs.append(append(m_jobs, db::orgstructure::JOB, 0, text(name)).uid);
}

void DemoBuilder::addWorkers()
{
    // The first employees head the departments, one each; the others are spread at random.
    QHash<QString, int> addressesTaken;
    addressesTaken.reserve(m_employees);
    m_workerDepartment.reserve(m_employees);
    const int departments = m_departments.size();
    for (int i = 0; i < m_employees; ++i) {
        const bool head = i < departments;
        const int unit = head ? i : int(m_random.bounded(quint32(departments)));
        const DemoNames::Person person = DemoNames::person(m_random);
        const TYPE_ID job
            = head ? m_headJob
                   : m_regularJobs[int(m_random.bounded(quint32(m_regularJobs.size())))];
        const bool dismissed = !head && m_random.bounded(100) < 4;

        const Firm &firm = m_firms[m_departments[unit].firm];
        QString local = DemoNames::transliterate(person.name).left(1) + QLatin1Char('.')
                        + DemoNames::transliterate(person.surname);
        const int taken = addressesTaken[local + QLatin1Char('@') + firm.domain]++;
        if (taken > 0)
            local += QString::number(taken + 1);

        ObjectInfo &worker
            = append(m_workers, db::orgstructure::WORKER, m_departments[unit].uid, person.name);
        worker.parameters.insert(keySurname, person.surname);
        worker.parameters.insert(keyPatronymic, person.patronymic);
        worker.parameters.insert(keyEmail, local + QLatin1Char('@') + firm.domain);
        worker.parameters.insert(keyWorkerNumber,
                                 QString::number(i + 1).rightJustified(6, QLatin1Char('0')));
        worker.parameters.insert(keyJob, QString::number(job));
        if (dismissed)
            worker.parameters.insert(keyState, QStringLiteral("d"));
        m_workerDepartment.append(unit);
    }
}

void DemoBuilder::addPlacings()
{
    for (Firm &firm : m_firms)
        addPlacingsOfFirm(firm);
}

void DemoBuilder::addPlacingsOfFirm(Firm &firm)
{
    firm.site = append(m_placings, db::placing::PLACING, 0, text("Территория: ") + firm.name).uid;

    const TYPE_ID checkpoint
        = append(m_placings, db::placing::PLACING, firm.site, text("Центральная проходная")).uid;
    append(m_placings, "OT_TERM_ZR_TURNSTILE", checkpoint, text("Турникет №1"));
    append(m_placings, "OT_TERM_ZR_TURNSTILE", checkpoint, text("Турникет №2"));
    firm.gates.append(
        append(m_placings, "OT_TERM_ZR_NOVA_E", checkpoint, text("Терминал учёта рабочего времени"))
            .uid);
    append(m_placings, "OT_TERM_ZR_DESK", checkpoint,
           text("Настольный считыватель бюро пропусков"));
    firm.gates.append(append(m_placings, "OT_TERM_VIRTUAL_CHECKPOINT", checkpoint,
                             text("Виртуальная проходная (отметка с телефона)"))
                          .uid);
    append(m_placings, "OT_VIDEO_IP_CAMERA", checkpoint, text("Камера проходной"));

    const TYPE_ID parking
        = append(m_placings, db::placing::PLACING, firm.site, text("Автостоянка")).uid;
    append(m_placings, "OT_TERM_ZR_GATE", parking, text("Шлагбаум въезда"));
    append(m_placings, "OT_TERM_EXTERNAL_DEVICE", parking,
           text("Распознавание номеров (внешняя система)"));
    append(m_placings, "OT_VIDEO_CAMERA", parking, text("Камера въезда"));
    append(m_placings, "OT_VIDEO_SERVER", firm.site, text("Видеосервер"));

    const int buildings = qBound(1, 1 + m_employees / (m_firms.size() * 400), 12);
    for (int b = 1; b <= buildings; ++b) {
        const TYPE_ID building
            = append(m_placings, db::placing::PLACING, firm.site, text("Корпус %1").arg(b)).uid;
        append(m_placings, "OT_TERM_ZR_NOVA", building, text("Считыватель входа"));
        append(m_placings, "OT_TERM_ZR_NOVA_E", building, text("Терминал учёта рабочего времени"));
        append(m_placings, "OT_TERM_ZR_PASS", building, text("Считыватель склада"));
        append(m_placings, "OT_TERM_ZR_RELAY", building,
               text("Релейный модуль пожарной сигнализации"));
        if (b == 1) {
            const TYPE_ID serverRoom
                = append(m_placings, db::placing::PLACING, building, text("Серверная")).uid;
            append(m_placings, "OT_TERM_ZR_LOCK", serverRoom, text("Электрозамок серверной"));
            append(m_placings, "OT_TERM_EXTERNAL_DEVICE", serverRoom,
                   text("Датчик вскрытия двери"));
            append(m_placings, "OT_VIDEO_RECORDER", serverRoom, text("Видеорегистратор"));
        }
    }
}

void DemoBuilder::addReports()
{
    for (const char *name : visibleReportNames)
        m_visibleReports.append(append(m_reports, db::report::REPORT, 0, text(name)).uid);
    for (const char *name : hiddenReportNames)
        append(m_reports, db::report::REPORT, 0, text(name))
            .parameters.insert(keyHidden, QStringLiteral("true"));
}

void DemoBuilder::addPolicies()
{
    for (const char *name : policyNames)
        append(m_policies, db::policy::ACCESS_POLICY, 0, text(name));
    for (const Firm &firm : qAsConst(m_firms))
        append(m_policies, db::policy::ACCESS_POLICY, 0, text("Сотрудники: ") + firm.name);
    append(m_policies, db::policy::ACCESS_POLICY, 0, text("Служебная: аварийная разблокировка"))
        .parameters.insert(keyHidden, QStringLiteral("true"));
}

void DemoBuilder::addMonitoring()
{
    for (const char *name : monitoringNames)
        append(m_monitoring, db::monitoring::SETTINGS, 0, text(name));
    for (const Firm &firm : qAsConst(m_firms))
        append(m_monitoring, db::monitoring::SETTINGS, 0, text("Мониторинг: ") + firm.name);
}

int DemoBuilder::freeWorker(int index, int step) const
{
    for (; index >= 0 && index < m_employees; index += step) {
        if (!m_workersWithAccount.contains(index)
            && m_workers.at(index).parameters.value(keyState) != QLatin1String("d"))
            return index;
    }
    return -1;
}

ObjectInfo &DemoBuilder::appendUser(const QString &login, const char *roleTemplate, int workerIndex,
                                    bool ownPassword, const DemoNames::Person *given)
{
    // A person's account carries his name; an account without an employee gets one drawn
    // like an employee's.
    DemoNames::Person person;
    if (workerIndex >= 0) {
        const QHash<QString, QString> &worker = m_workers.at(workerIndex).parameters;
        person.surname = worker.value(keySurname);
        person.name = worker.value(keyName);
        person.patronymic = worker.value(keyPatronymic);
    } else {
        person = given ? *given : DemoNames::person(m_random);
    }
    ObjectInfo &user = append(m_users, db::system::USER, 0, person.name);
    user.parameters.insert(keySurname, person.surname);
    user.parameters.insert(keyPatronymic, person.patronymic);
    user.parameters.insert(keyLogin, login);
    user.parameters.insert(keyRoleTemplate, QString::fromLatin1(roleTemplate));
    user.parameters.insert(keyIdentType, QStringLiteral("0"));
    if (workerIndex >= 0) {
        _INHERIT_DATA link;
        link.child = m_workers.at(workerIndex).uid;
        link.parent = user.uid;
        link.linkType = INHERIT_WORKER_USER;
        user.children.insert(INHERIT_WORKER_USER, link);
        m_workersWithAccount.insert(workerIndex);
    }
    if (ownPassword)
        m_data.passwords.insert(user.uid, DemoOrganisation::demoPassword());
    else
        m_data.bulkUsers.append(user.uid);
    m_logins.insert(login);
    return user;
}

void DemoBuilder::addDesktopUsers()
{
    const int extraOperators = int(std::sqrt(double(m_employees)) / 4);
    const int total = count(desktopSeeds) + extraOperators;
    for (int k = 0; k < total; ++k) {
        const bool seeded = k < count(desktopSeeds);
        const DesktopSeed extra
            = {nullptr, extraOperatorTemplates[k % count(extraOperatorTemplates)],
               "0",     k % 7 == 6,
               "",      k % 3 == 0 ? 1 : 0};
        const DesktopSeed &seed = seeded ? desktopSeeds[k] : extra;
        const QString login = seeded
                                  ? QString::fromLatin1(seed.login)
                                  : QStringLiteral("operator%1").arg(k - count(desktopSeeds) + 3);

        ObjectInfo &user = appendUser(login, seed.roleTemplate, freeWorker(m_employees / 2 + k, 1));
        const TYPE_ID uid = user.uid;
        user.parameters.insert(keyIdentType, QString::fromLatin1(seed.identType));
        if (seed.blocked) {
            user.parameters.insert(keyState, QStringLiteral("b"));
            user.parameters.insert(keyStateDate, QString::number(blockedSince));
        }
        if (*seed.passwordExpires)
            user.parameters.insert(keyPasswordExpired, QString::fromLatin1(seed.passwordExpires));
        enrolFingers(uid, seed.fingers);

        // Supervisors and administrators see everything anyway; the others get the
        // departments, grounds and reports of one firm.
        const QByteArray roleTemplate(seed.roleTemplate);
        if (roleTemplate == roletemplate::SUPERVISOR || roleTemplate == roletemplate::ADMINISTRATOR)
            continue;
        if (roleTemplate == roletemplate::AUDITOR) {
            for (const TYPE_ID report : qAsConst(m_visibleReports))
                grant(uid, report);
            continue;
        }
        const Firm &firm = m_firms[k % m_firms.size()];
        for (const TYPE_ID unit : qAsConst(firm.topUnits))
            grant(uid, unit);
        grant(uid, firm.site);
        for (int r = 0; r < 4; ++r)
            grant(uid, m_visibleReports[r]);
    }
}

void DemoBuilder::addMobileUsers()
{
    if (m_employees == 0)
        return;
    const int mobiles = qMax(1, int(std::lround(std::sqrt(double(m_employees)))));
    const int departments = m_departments.size();
    const int chiefs = qMin(qMax(1, mobiles / 4), qMin(departments, m_employees));
    const int step = qMax(1, (m_employees - departments) / qMax(1, mobiles - chiefs));
    for (int k = 0; k < mobiles; ++k) {
        const bool chief = k < chiefs;
        // A chief is the head of department k; the others are picked across the staff.
        const int workerIndex
            = chief ? freeWorker(k, departments) : freeWorker(departments + (k - chiefs) * step, 1);
        if (workerIndex < 0)
            continue;
        const QString email = m_workers.at(workerIndex).parameters.value(keyEmail);
        ObjectInfo &user = appendUser(
            email, chief ? roletemplate::MOBILE_CHIEF : roletemplate::MOBILE, workerIndex);
        const TYPE_ID uid = user.uid;
        if (k % 6 == 5) {
            user.parameters.insert(keyState, QStringLiteral("b"));
            user.parameters.insert(keyStateDate, QString::number(blockedSince));
        }

        const Department &unit = m_departments[m_workerDepartment[workerIndex]];
        for (const TYPE_ID gate : qAsConst(m_firms[unit.firm].gates))
            grant(uid, gate);
        grant(uid, m_visibleReports[0]);
        grant(uid, m_visibleReports[1]);
        if (chief)
            grant(uid, unit.uid);
    }
}

QString DemoBuilder::bulkLogin(const DemoNames::Person &person)
{
    const QString base = DemoNames::transliterate(person.surname) + QLatin1Char('.')
                         + DemoNames::transliterate(person.name).left(1)
                         + DemoNames::transliterate(person.patronymic).left(1);
    QString login = base;
    for (int n = 2; m_logins.contains(login); ++n)
        login = base + QString::number(n);
    return login;
}

void DemoBuilder::addBulkUsers()
{
    // Of 100 accounts: 60 operators, 8 security, 8 HR, 4 auditors, 2 administrators and one
    // supervisor at the desktop; 14 mobile users and 3 mobile chiefs, each the account of an
    // employee who has none yet (a desktop account when every employee has one). Desktop
    // accounts have no employee and get no permissions; mobile ones get those of the demo's
    // mobile users. Every 23rd is blocked, every 9th has a password expiry date.
    struct Share
    {
        int below;
        const char *roleTemplate;
    };
    static const Share shares[] = {
        {60, roletemplate::OPERATOR},
        {68, roletemplate::SECURITY},
        {76, roletemplate::HR},
        {80, roletemplate::AUDITOR},
        {82, roletemplate::ADMINISTRATOR},
        {83, roletemplate::SUPERVISOR},
        {97, roletemplate::MOBILE},
        {100, roletemplate::MOBILE_CHIEF},
    };
    m_logins.reserve(m_logins.size() + m_extraUsers);
    m_users.reserve(m_users.size() + m_extraUsers);
    m_data.bulkUsers.reserve(m_extraUsers);
    int nextWorker = 0; // employees before it all have an account or were dismissed
    for (int k = 0; k < m_extraUsers; ++k) {
        const int draw = int(m_random.bounded(100));
        const char *roleTemplate = roletemplate::OPERATOR;
        for (const Share &share : shares) {
            if (draw < share.below) {
                roleTemplate = share.roleTemplate;
                break;
            }
        }
        const bool chief = qstrcmp(roleTemplate, roletemplate::MOBILE_CHIEF) == 0;
        const bool mobile = chief || qstrcmp(roleTemplate, roletemplate::MOBILE) == 0;
        const int workerIndex = mobile && nextWorker >= 0 ? freeWorker(nextWorker, 1) : -1;
        ObjectInfo *user = nullptr;
        if (mobile && workerIndex >= 0) {
            nextWorker = workerIndex + 1;
            user = &appendUser(m_workers.at(workerIndex).parameters.value(keyEmail), roleTemplate,
                               workerIndex, false);
            const Department &unit = m_departments[m_workerDepartment[workerIndex]];
            for (const TYPE_ID gate : qAsConst(m_firms[unit.firm].gates))
                grant(user->uid, gate);
            grant(user->uid, m_visibleReports[0]);
            grant(user->uid, m_visibleReports[1]);
            if (chief)
                grant(user->uid, unit.uid);
        } else {
            if (mobile) {
                nextWorker = -1;
                roleTemplate = roletemplate::OPERATOR;
            }
            const DemoNames::Person person = DemoNames::person(m_random);
            user = &appendUser(bulkLogin(person), roleTemplate, -1, false, &person);
        }
        if (k % 23 == 22) {
            user->parameters.insert(keyState, QStringLiteral("b"));
            user->parameters.insert(keyStateDate, QString::number(blockedSince));
        }
        if (k % 9 == 4)
            user->parameters.insert(keyPasswordExpired, QStringLiteral("2027-06-30"));
    }
}

void DemoBuilder::grant(TYPE_ID user, TYPE_ID object)
{
    m_data.permissions.append(OBJECT_PERMISSION{user, object, grantedRights});
}

void DemoBuilder::enrolFingers(TYPE_ID user, int count)
{
    // Right index finger first, then the left one (0 is the right thumb).
    static const int fingers[] = {1, 6};
    for (int i = 0; i < count && i < 2; ++i) {
        DemoFinger finger;
        finger.userUid = user;
        finger.finger = fingers[i];
        // Made up, not scanned: in the simulated reader's format, so that the studio's
        // simulated reader confirms them; the same bytes for the same user and finger.
        finger.data.format = SIMULATED_FINGERPRINT_FORMAT;
        QByteArray bytes(SIMULATED_FINGERPRINT_SIZE, Qt::Uninitialized);
        QRandomGenerator bytesRandom(user * 10u + quint32(finger.finger));
        bytesRandom.fillRange(reinterpret_cast<quint32 *>(bytes.data()),
                              SIMULATED_FINGERPRINT_SIZE / int(sizeof(quint32)));
        finger.data.data = bytes;
        m_data.fingers.append(finger);
    }
}

} // namespace zeral::server
