// The users screen with 100,000 users in the store, shown on the offscreen platform: filling
// its lists, a keystroke in the filter box and a poll of 10,000 sessions; then the same lists
// made of stock Qt parts (QStandardItemModel, QSortFilterProxyModel, QTableView) as the
// baseline; last, one changed user on both in turns. Prints "name value" lines in
// milliseconds, the median of several runs; bench/run turns them into the table.
#include "benchreport.h"
#include "profilestep.h"

#include <src/userctl.h>
#include <tests/support/builders.h>
#include <tests/support/paintrecorder.h>
#include <tests/support/scriptedserver.h>

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/core/protocol.h>
#include <host/core/settings.h>
#include <host/core/zrdatastream.h>
#include <host/gui/models/itemroles.h>
#include <server/engine/demo/demonames.h>
#include <server/engine/storage/rolecatalogue.h>
#include <shared/connecteduserinfo.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <shared/objectlistreader.h>
#include <shared/rolenames.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QTabWidget>
#include <QTableView>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <malloc.h>
#include <memory>

using zeral::ObjectInfo;
using zeral::TYPE_ID;
using zeral::server::DemoNames;
namespace command = zeral::proto::command;

namespace {

constexpr int userCount = 100000;
constexpr int sessionCount = 10000;
constexpr TYPE_ID operatorUid = 1;
const QString operatorLogin = QStringLiteral("supervisor");
const QString userDataname = QLatin1String(zeral::USER_DATANAME);

// How the accounts of a large site are spread over the templates, in parts of 100.
const QList<QPair<const char *, int>> templateShares = {
    {zeral::roletemplate::MOBILE, 40},
    {zeral::roletemplate::MOBILE_CHIEF, 8},
    {zeral::roletemplate::OPERATOR, 22},
    {zeral::roletemplate::SECURITY, 12},
    {zeral::roletemplate::HR, 8},
    {zeral::roletemplate::AUDITOR, 5},
    {zeral::roletemplate::ADMINISTRATOR, 4},
    {zeral::roletemplate::SUPERVISOR, 1},
};

void fail(const char *what)
{
    std::fprintf(stderr, "bench_userctl: %s\n", what);
    std::exit(1);
}

QString templateOf(int index)
{
    int share = index % 100;
    for (const auto &entry : templateShares) {
        if (share < entry.second)
            return QLatin1String(entry.first);
        share -= entry.second;
    }
    return QLatin1String(zeral::roletemplate::OPERATOR);
}

void setPerson(ObjectInfo &user, const DemoNames::Person &person)
{
    user.parameters.insert(QLatin1String(db::user::SURNAME), person.surname);
    user.parameters.insert(QLatin1String(db::user::NAME), person.name);
    user.parameters.insert(QLatin1String(db::user::PATRONYMIC), person.patronymic);
}

// The users as the studio holds them: read from the wire, where the reader shares the
// parameters' names and the values that repeat (templates, first names, ...) among all
// objects. Built here one by one, each user would have texts of his own.
QList<ObjectInfo> asReceived(const QList<ObjectInfo> &objects)
{
    const QByteArray bytes = testing::encodeObjectList(objects);
    QDataStream in(bytes);
    in.setVersion(QDataStream::Qt_5_15);
    QList<ObjectInfo> received;
    zeral::wire::ObjectListReader().read(in, received);
    if (in.status() != QDataStream::Ok || received.size() != objects.size())
        fail("the users didn't come through the wire");
    return received;
}

// The operator (uid 1, a supervisor) and userCount accounts with the demo's names; every
// 23rd is blocked, every 5th has a password expiry date.
QList<ObjectInfo> makeUsers()
{
    QRandomGenerator random(20260415);
    QList<ObjectInfo> users;
    users.reserve(userCount + 1);
    for (int index = 0; index <= userCount; ++index) {
        ObjectInfo user;
        user.uid = operatorUid + TYPE_ID(index);
        user.type = QLatin1String(db::system::USER);
        const DemoNames::Person person = DemoNames::person(random);
        setPerson(user, person);
        const bool isOperator = index == 0;
        const QString login = isOperator ? operatorLogin
                                         : QStringLiteral("%1.%2%3")
                                               .arg(DemoNames::transliterate(person.surname),
                                                    DemoNames::transliterate(person.name.left(1)))
                                               .arg(index);
        user.parameters.insert(QLatin1String(db::user::LOGIN), login);
        user.parameters.insert(QLatin1String(db::user::ROLE_TEMPLATE),
                               isOperator ? QLatin1String(zeral::roletemplate::SUPERVISOR)
                                          : templateOf(index));
        user.parameters.insert(QLatin1String(db::user::IDENT_TYPE), QStringLiteral("0"));
        if (index % 23 == 22)
            user.parameters.insert(QLatin1String(db::user::OBJECTSTATE), QStringLiteral("b"));
        if (index % 5 == 4) {
            const QDate expiry = QDate(2026, 1, 1).addDays(index % 730);
            user.parameters.insert(QLatin1String(db::database::PASSWORD_EXPIRED),
                                   expiry.toString(Qt::ISODate));
        }
        users.append(user);
    }
    return asReceived(users);
}

// The answer of "data.role_template_inherit" to a supervisor, from the templates the server
// seeds: he sees them all, hands out all but his own, and manages colleagues of his own.
QByteArray roleTemplatesAnswer()
{
    zeral::ROLETEMPLATES_HASH visible;
    QList<QString> handOut;
    for (const zeral::_ROLETEMPLATE_INFO &info : zeral::server::RoleCatalogue::builtInTemplates()) {
        visible.insert(info.id, info);
        if (info.id != QLatin1String(zeral::roletemplate::SUPERVISOR))
            handOut.append(info.id);
    }
    std::sort(handOut.begin(), handOut.end());
    return ZRDataStream::pack(visible, handOut, true);
}

QStringList supervisorRoles()
{
    for (const zeral::_ROLETEMPLATE_INFO &info : zeral::server::RoleCatalogue::builtInTemplates()) {
        if (info.id == QLatin1String(zeral::roletemplate::SUPERVISOR))
            return info.roles;
    }
    return {};
}

// sessionCount sessions: nine in ten of users in the store, the rest of logins it lacks.
QByteArray sessionsAnswer(const QList<ObjectInfo> &users)
{
    QRandomGenerator random(7);
    const QDateTime now = QDateTime::currentDateTimeUtc(); // as the server sends its times
    QHash<QByteArray, zeral::ConnectedUserInfo> sessions;
    for (int index = 0; index < sessionCount; ++index) {
        zeral::ConnectedUserInfo session;
        session.user = index % 10 == 9 ? QStringLiteral("gone%1").arg(index)
                                       : users.at(random.bounded(users.size()))
                                             .parameters.value(QLatin1String(db::user::LOGIN));
        session.ipPort = QStringLiteral("10.%1.%2.%3:%4")
                             .arg(index / 65536)
                             .arg(index / 256 % 256)
                             .arg(index % 256)
                             .arg(40000 + index % 20000);
        session.connectDateTime = now.addSecs(-random.bounded(86400));
        session.lastActionTime = now.addSecs(-random.bounded(600));
        session.sessionId = QByteArray::number(index).toHex().rightJustified(32, '0');
        sessions.insert(session.sessionId, session);
    }
    return ZRDataStream::pack(sessions, now);
}

double elapsedMs(const QElapsedTimer &timer)
{
    return timer.nsecsElapsed() / 1e6;
}

// Runs the events that follow a change until `paints` has seen the view painted: a view
// lays out a large change from a zero timer, which a single pass of the event loop may not
// reach.
void settle(const PaintRecorder &paints, const char *step)
{
    QElapsedTimer waited;
    waited.start();
    do {
        QCoreApplication::processEvents();
    } while (paints.paints() == 0 && waited.elapsed() < 60000);
    if (paints.paints() == 0) {
        std::fprintf(stderr, "bench_userctl: %s: ", step);
        fail("the view was not repainted");
    }
}

// Under `valgrind --tool=callgrind --collect-atstart=no`, BENCH_PROFILE_STEP=update (or any
// other step's names, separated by commas: fill, filter, sessions poll) counts the
// instructions of those steps alone.
// Bytes allocated and not freed, small blocks and large.
std::size_t heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

bool profiled(const char *step)
{
    static const QList<QByteArray> steps = qgetenv("BENCH_PROFILE_STEP").split(',');
    return steps.contains(step);
}

// The time of `work` and of the events that follow it, up to the repaint of `painted`.
double timedRepaint(const char *step, QWidget *painted, const std::function<void()> &work)
{
    const bool profile = profiled(step);
    PaintRecorder paints(painted);
    QElapsedTimer timer;
    timer.start();
    if (profile)
        BENCH_TOGGLE_COLLECT;
    work();
    settle(paints, step);
    if (profile)
        BENCH_TOGGLE_COLLECT;
    return elapsedMs(timer);
}

const QStringList filterTexts
    = {QStringLiteral("Ива"), QStringLiteral("Пет"), QStringLiteral("Смир"), QStringLiteral("Кузн"),
       QStringLiteral("Ольг")};

// The users screen as the studio places it, logged in as the supervisor, its server scripted
// to answer the role templates at once.
struct UsersScreen
{
    QTemporaryDir settingsDir;
    ScriptedServer server;
    std::unique_ptr<UserCtl> screen = std::make_unique<UserCtl>();

    UsersScreen()
    {
        Settings::useFile(settingsDir.filePath(QStringLiteral("studio.ini")));
        server.registerPlugin(screen.get(), screen->init(&server, QStringLiteral("userctl")));
        const QByteArray templates = roleTemplatesAnswer();
        server.script(QLatin1String(command::RoleTemplateInherit), [templates](const Command &r) {
            return Command::answer(r, zeral::proto::StatusOk, templates);
        });
        screen->resize(1280, 800);
    }
    ~UsersScreen() { server.unregisterPlugin(screen.get()); }
    UsersScreen(const UsersScreen &) = delete;
    UsersScreen &operator=(const UsersScreen &) = delete;

    QTableView *table(const char *name) const
    {
        auto *view = screen->findChild<QTableView *>(QLatin1String(name));
        if (!view)
            fail("the screen has no such table");
        return view;
    }

    struct FillTimes
    {
        double total = 0;
        double read = 0;      // insertedToInterface(): the form built, every user read
        double templates = 0; // from there until the role templates are applied
        double heapMb = 0;    // what the screen holds on the heap once filled
    };

    // insertedToInterface(), shown, until the role templates are applied (the last thing
    // their answer does is to ask for the sessions) and the users list repainted.
    FillTimes fill()
    {
        FillTimes times;
        bool applied = false;
        std::unique_ptr<PaintRecorder> paints;
        QEventLoop loop;
        QObject::connect(&server, &ScriptedServer::commandSent, &loop, [&](const Command &sent) {
            if (sent.name == QLatin1String(command::GetSessionsInfo)) {
                applied = true;
                paints->clear(); // the repaint that counts is the one after the templates
                loop.quit();
            }
        });
        QTimer::singleShot(120000, &loop, &QEventLoop::quit);
        const bool profile = profiled("fill");
        const std::size_t heapBefore = heapInUse();
        QElapsedTimer timer;
        timer.start();
        if (profile)
            BENCH_TOGGLE_COLLECT;
        screen->insertedToInterface();
        times.read = elapsedMs(timer);
        paints = std::make_unique<PaintRecorder>(table("usersList")->viewport());
        screen->show();
        if (!applied)
            loop.exec();
        if (!applied)
            fail("the role templates were never applied");
        times.templates = elapsedMs(timer) - times.read;
        settle(*paints, "fill");
        if (profile)
            BENCH_TOGGLE_COLLECT;
        times.total = elapsedMs(timer);
        times.heapMb = double(heapInUse() - heapBefore) / (1024 * 1024);
        if (table("usersList")->model()->rowCount() == 0
            || table("mobileUsersList")->model()->rowCount() == 0)
            fail("a user tab stayed empty");
        return times;
    }
};

// With `openOnly`, only the opening is measured, once: for a profiler.
void benchUsersScreen(const QList<ObjectInfo> &users, bool openOnly)
{
    QVector<double> fills, reads, templates, heaps, filters, polls, pollHandlers, rowResizes;
    const QByteArray sessions = sessionsAnswer(users);
    for (int run = 0; run < 3; ++run) {
        UsersScreen s;
        const UsersScreen::FillTimes fill = s.fill();
        fills << fill.total;
        reads << fill.read;
        templates << fill.templates;
        heaps << fill.heapMb;
        if (openOnly)
            break;
        QTableView *usersList = s.table("usersList");
        QAbstractItemModel *shown = usersList->model();

        for (const QString &text : filterTexts) {
            filters << timedRepaint("filter", usersList->viewport(), [&] {
                QMetaObject::invokeMethod(s.screen.get(), "applyUserFilter", Q_ARG(QString, text));
            });
            if (shown->rowCount() == 0)
                fail("the filter left no user");
            QMetaObject::invokeMethod(s.screen.get(), "applyUserFilter", Q_ARG(QString, QString()));
            QCoreApplication::processEvents();
        }

        s.screen->findChild<QTabWidget *>(QStringLiteral("tabWidget"))->setCurrentIndex(2);
        QCoreApplication::processEvents();
        QTableView *sessionsList = s.table("connectedUsersList");
        for (int poll = 0; poll < 3; ++poll) {
            s.server.clearSent();
            QMetaObject::invokeMethod(s.screen.get(), "getSessionsInfo");
            const Command request = s.server.lastSent(QLatin1String(command::GetSessionsInfo));
            QElapsedTimer handler;
            polls << timedRepaint("sessions poll", sessionsList->viewport(), [&] {
                handler.start();
                s.server.answerOk(request, sessions);
                pollHandlers << elapsedMs(handler);
            });
            if (sessionsList->model()->rowCount() != sessionCount)
                fail("the sessions table doesn't hold every session");
            // The last step of the answer, alone: every row's height from its contents.
            QElapsedTimer resize;
            resize.start();
            sessionsList->resizeRowsToContents();
            rowResizes << elapsedMs(resize);
        }
    }
    bench::report("users_screen_fill", fills);
    bench::report("users_screen_fill_read", reads);
    bench::report("users_screen_fill_templates", templates);
    bench::report("users_screen_heap", heaps);
    bench::report("users_screen_filter", filters);
    bench::report("sessions_poll", polls);
    bench::report("sessions_poll_answer", pollHandlers);
    bench::report("sessions_poll_resize_rows", rowResizes);
}

// The same lists of stock parts: six text columns, one proxy and one table per tab, each
// proxy sorted on the login and filtered on a column by a fixed string.
struct StockScreen
{
    QTabWidget tabs;
    QStandardItemModel model{0, 6};
    QSortFilterProxyModel users;
    QSortFilterProxyModel mobileUsers;
    QTableView usersList;
    QTableView mobileUsersList;

    StockScreen()
    {
        const auto setUp = [this](QSortFilterProxyModel &proxy, QTableView &view, int column,
                                  const QString &text) {
            proxy.setSourceModel(&model);
            proxy.setSortCaseSensitivity(Qt::CaseInsensitive);
            proxy.setFilterCaseSensitivity(Qt::CaseInsensitive);
            proxy.setFilterKeyColumn(column);
            proxy.setFilterFixedString(text);
            proxy.sort(0);
            view.setModel(&proxy);
            view.setSortingEnabled(true);
            view.sortByColumn(0, Qt::AscendingOrder);
            tabs.addTab(&view, text);
        };
        setUp(users, usersList, 1, QLatin1String(db::system::USER));
        setUp(mobileUsers, mobileUsersList, 4, QStringLiteral("RT_MOBILE"));
        tabs.resize(1280, 800);
        tabs.show();
        QCoreApplication::processEvents();
    }
};

QString fullName(const DemoNames::Person &person)
{
    return person.surname + QLatin1Char(' ') + person.name + QLatin1Char(' ') + person.patronymic;
}

QList<QStandardItem *> stockRow(const ObjectInfo &user)
{
    const auto parameter = [&user](const char *key) {
        return user.parameters.value(QLatin1String(key));
    };
    return {new QStandardItem(parameter(db::user::LOGIN)),
            new QStandardItem(user.type),
            new QStandardItem(QString::number(user.uid)),
            new QStandardItem(fullName({parameter(db::user::SURNAME), parameter(db::user::NAME),
                                        parameter(db::user::PATRONYMIC)})),
            new QStandardItem(parameter(db::user::ROLE_TEMPLATE)),
            new QStandardItem(parameter(db::user::OBJECTSTATE))};
}

// Leaves the stock screen filled, for the renames.
std::unique_ptr<StockScreen> benchStock(const QList<ObjectInfo> &users)
{
    QVector<double> fills, filters;
    // One row at a time into the sorted proxies, as rows come from the store: about ten
    // seconds a run, so one run.
    auto stock = std::make_unique<StockScreen>();
    StockScreen &s = *stock;
    fills << timedRepaint("stock fill", s.usersList.viewport(), [&] {
        for (const ObjectInfo &user : users)
            s.model.appendRow(stockRow(user));
    });
    if (s.users.rowCount() == 0 || s.mobileUsers.rowCount() == 0)
        fail("a stock tab stayed empty");

    for (const QString &text : filterTexts) {
        filters << timedRepaint("stock filter", s.usersList.viewport(), [&] {
            s.users.setFilterKeyColumn(3);
            s.users.setFilterFixedString(text);
        });
        if (s.users.rowCount() == 0)
            fail("the stock filter left no user");
        s.users.setFilterKeyColumn(1);
        s.users.setFilterFixedString(QLatin1String(db::system::USER));
        QCoreApplication::processEvents();
    }
    // The sessions answer, the stock way: read through QDataStream into a QStandardItemModel
    // under a sorted proxy, each session's user and template found by a scan of the users'
    // logins, taken from the stock list, the rows fitted to their contents. Seconds a poll,
    // so one poll.
    QStandardItemModel sessionModel(0, 6);
    QSortFilterProxyModel sessionProxy;
    sessionProxy.setSourceModel(&sessionModel);
    sessionProxy.sort(0);
    QTableView sessionTable;
    sessionTable.setModel(&sessionProxy);
    sessionTable.resize(1280, 800);
    sessionTable.show();
    QCoreApplication::processEvents();
    const QByteArray answer = sessionsAnswer(users);
    const double poll = timedRepaint("stock sessions poll", sessionTable.viewport(), [&] {
        ZRDataStream in(answer);
        QHash<QByteArray, zeral::ConnectedUserInfo> sessions;
        QDateTime serverTime;
        in >> sessions >> serverTime;
        sessionModel.removeRows(0, sessionModel.rowCount());
        QStringList logins;
        for (int row = 0; row < s.model.rowCount(); ++row)
            logins << s.model.item(row, 0)->text();
        for (const zeral::ConnectedUserInfo &session : qAsConst(sessions)) {
            QString uid;
            QString roleTemplate;
            const int row = logins.indexOf(session.user);
            if (row >= 0) {
                uid = s.model.item(row, 2)->text();
                roleTemplate = s.model.item(row, 4)->text();
            }
            sessionModel.appendRow(
                {new QStandardItem(session.user), new QStandardItem(session.ipPort),
                 new QStandardItem(roleTemplate),
                 new QStandardItem(session.connectDateTime.toLocalTime().toString()),
                 new QStandardItem(session.lastActionTime.toLocalTime().toString()),
                 new QStandardItem(uid)});
        }
        sessionTable.resizeRowsToContents();
    });
    if (sessionModel.rowCount() != sessionCount)
        fail("the stock sessions table doesn't hold every session");

    bench::report("users_screen_fill_baseline", fills);
    bench::report("users_screen_filter_baseline", filters);
    bench::report("sessions_poll_baseline", {poll});
    return stock;
}

// Users on screen change their names (the login, the sort key, stays), on our screen and on
// the stock one in turns, so that a change of this machine's speed falls on both alike. Both
// show the same text: the full name, in a column as wide as ours (the stock's own 100 pixels
// would elide it to half the letters). The first renames of each list are not counted: they
// run the layout the filling left pending and draw letters at places in the cell that the
// font's glyph cache hasn't seen yet, costs of the filling's kind and not of a rename.
// Without `stock`, only ours: for a profiler.
void benchRenames(UsersScreen &ours, StockScreen *stock)
{
    constexpr int warmUps = 200;
    constexpr int renames = 120;
    QTableView *usersList = ours.table("usersList");
    QAbstractItemModel *shown = usersList->model();
    if (stock)
        stock->usersList.setColumnWidth(3, usersList->columnWidth(3));
    QVector<double> updates, stockUpdates;
    QRandomGenerator warmUpNames(7);
    QRandomGenerator names(99);
    for (int i = 0; i < warmUps + renames; ++i) {
        const bool counted = i >= warmUps;
        const int row = i % 10;
        DemoNames::Person person = DemoNames::person(counted ? names : warmUpNames);
        // The stock model announces no change for the name a row already has.
        const QModelIndex stockCell = stock ? stock->users.index(row, 3) : QModelIndex();
        while (stock && stockCell.data().toString() == fullName(person))
            person = DemoNames::person(counted ? names : warmUpNames);

        const TYPE_ID uid = shown->index(row, 0).data().toUInt();
        ObjectInfo changed = zeral::LocalStorage::instance()->constObject(uid, userDataname);
        setPerson(changed, person);
        QList<ObjectInfo> page{changed}; // made before, as a page comes from the wire
        const double ms = timedRepaint(counted ? "update" : "warm-up", usersList->viewport(), [&] {
            zeral::LocalStorage::instance()->applyChanged(userDataname, std::move(page));
        });
        if (!shown->index(row, 3).data(ItemRoles::SortText).toString().startsWith(person.surname))
            fail("the changed user's row shows the old name");
        if (counted)
            updates << ms;

        if (!stock)
            continue;
        const QString name = fullName(person);
        const double stockMs = timedRepaint(
            counted ? "stock update" : "stock warm-up", stock->usersList.viewport(),
            [&] { stock->model.setData(stock->users.mapToSource(stockCell), name); });
        if (counted)
            stockUpdates << stockMs;
    }
    bench::report("users_screen_update", updates);
    bench::report("users_screen_update_baseline", stockUpdates);
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const QList<ObjectInfo> users = makeUsers();
    zeral::LocalStorage::instance()->applyChanged(userDataname, users);
    AuthData::set({operatorLogin, operatorUid, "session-1",
                   QLatin1String(zeral::roletemplate::SUPERVISOR), supervisorRoles(), QString()});
    // "screen" or "stock" runs one half and then the renames ("screen": of ours alone), "open"
    // only one opening of the screen: for a profiler.
    const QString only = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString();
    const bool openOnly = only == QLatin1String("open");
    if (only != QLatin1String("stock"))
        benchUsersScreen(users, openOnly);
    if (openOnly)
        return 0;
    std::unique_ptr<StockScreen> stock;
    if (only != QLatin1String("screen"))
        stock = benchStock(users);
    UsersScreen ours;
    ours.fill();
    benchRenames(ours, stock.get());
    return 0;
}
