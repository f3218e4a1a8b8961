// The permissions editor of the users screen on a large store: 100,000 employees in 500
// departments, 5,000 access objects, reports, access groups and monitoring settings. Times
// the opening, a switch of tree, "check all" in the largest tree and the apply of every
// check, each up to the repaint of the tree; beside them the same work done by stock Qt
// parts (a checkable QStandardItemModel per tree under a QSortFilterProxyModel). Prints
// "name value" lines in milliseconds, the median of several runs.
//
// `bench_permissions editor` or `bench_permissions stock` runs one half (for a profiler).
#include "benchreport.h"

#include <tests/support/paintrecorder.h>
#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/gui/models/objecttreeproxy.h>
#include <host/gui/widgets/treeview.h>
#include <shared/metatypes.h>
#include <src/userpermissions.h>

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QTreeView>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>

using zeral::ObjectInfo;
using zeral::TYPE_ID;

namespace {

constexpr int Employees = 100000;
constexpr int Departments = 500;
constexpr int AccessObjects = 5000;
constexpr int Reports = 300;
constexpr int Policies = 200;
constexpr int Monitoring = 100;
constexpr int Runs = 7;

const QStringList datatypes{"orgstructure", "placing", "report", "policy", "monitoring_settings"};

[[noreturn]] void fail(const char *what)
{
    std::fprintf(stderr, "bench_permissions: %s\n", what);
    std::exit(1);
}

ObjectInfo object(TYPE_ID uid, const QString &type, TYPE_ID parent, const QString &name)
{
    ObjectInfo result;
    result.uid = uid;
    result.type = type;
    result.parent = parent;
    result.parameters.insert(QStringLiteral("PT_NAME"), name);
    return result;
}

// The datasets of the store, by name, in the order they are applied.
QVector<QPair<QString, QList<ObjectInfo>>> makeStore()
{
    TYPE_ID next = 10;
    QList<ObjectInfo> org;
    const TYPE_ID root = next++;
    org << object(root, "OT_SUBJECTROOT", 0, "Организация");
    QVector<TYPE_ID> firms, departments;
    for (int i = 0; i < 4; ++i) {
        firms << next;
        org << object(next++, "OT_FIRM", root, QStringLiteral("Фирма %1").arg(i + 1));
    }
    // Three levels: 40 top departments, 160 below them, the rest below those.
    for (int i = 0; i < Departments; ++i) {
        const TYPE_ID parent = i < 40    ? firms[i % firms.size()]
                               : i < 200 ? departments[i % 40]
                                         : departments[40 + i % 160];
        departments << next;
        org << object(next++, "OT_DEPARTMENT", parent, QStringLiteral("Отдел %1").arg(i + 1));
    }
    QList<ObjectInfo> workers;
    for (int i = 0; i < Employees; ++i) {
        ObjectInfo worker = object(next++, "OT_WORKER", departments[i % Departments],
                                   QStringLiteral("Имя%1").arg(i % 997));
        worker.parameters.insert(QStringLiteral("PT_SURNAME"),
                                 QStringLiteral("Фамилия%1").arg(i % 4999));
        workers << worker;
    }
    // A placing per ten objects; devices of the types the tree shows, and some it doesn't.
    const QStringList devices{"OT_TERM_ZR_NOVA",   "OT_TERM_ZR_PASS",    "OT_TERM_ZR_GATE",
                              "OT_TERM_ZR_NOVA_E", "OT_VIDEO_IP_CAMERA", "OT_TERM_ZR_RELAY",
                              "OT_TERM_ZR_DESK",   "OT_VIDEO_SERVER",    "OT_TERM_ZR_LOCK",
                              "OT_SENSOR"};
    QList<ObjectInfo> placings;
    TYPE_ID placing = 0;
    for (int i = 0; i < AccessObjects; ++i) {
        if (i % 10 == 0) {
            placing = next;
            placings << object(next++, "OT_PLACING", 0, QStringLiteral("Помещение %1").arg(i / 10));
            continue;
        }
        placings << object(next++, devices[i % devices.size()], placing,
                           QStringLiteral("Устройство %1").arg(i));
    }
    const auto flat = [&next](int count, const char *type, const char *name, int hiddenEvery) {
        QList<ObjectInfo> objects;
        for (int i = 0; i < count; ++i) {
            ObjectInfo item
                = object(next++, QString::fromLatin1(type), 0, QString::fromUtf8(name).arg(i + 1));
            if (hiddenEvery && i % hiddenEvery == 0)
                item.parameters.insert(QStringLiteral("PT_HIDDEN"), QStringLiteral("true"));
            objects << item;
        }
        return objects;
    };
    ObjectInfo user;
    user.uid = 5;
    user.type = QStringLiteral("OT_USER");
    user.parameters = {{"PT_LOGIN", "ivanov"}, {"PT_ROLETEMPLATE", "RT_OPERATOR"}};
    return {{"orgstructure", org},
            {"subject", workers},
            {"placing", placings},
            {"report", flat(Reports, "OT_REPORT", "Отчёт %1", 10)},
            {"policy", flat(Policies, "OT_ACCESS_POLICY", "Группа доступа %1", 20)},
            {"monitoring_settings", flat(Monitoring, "OT_MONITORING_SETTINGS", "Мониторинг %1", 0)},
            {"user", {user}}};
}

double ms(const QElapsedTimer &timer)
{
    return timer.nsecsElapsed() / 1e6;
}

// The time of `work` and of the events after it, up to a repaint of `painted`.
double timed(QWidget *painted, const std::function<void()> &work)
{
    PaintRecorder paints(painted);
    QElapsedTimer timer;
    timer.start();
    work();
    QElapsedTimer waited;
    waited.start();
    do {
        QCoreApplication::processEvents();
    } while (paints.paints() == 0 && waited.elapsed() < 60000);
    if (paints.paints() == 0)
        fail("the tree was not repainted");
    return ms(timer);
}

// The work of the editor, measured on the editor itself.
void runEditor(const QVector<QPair<QString, QList<ObjectInfo>>> &store)
{
    zeral::LocalStorage *storage = zeral::LocalStorage::instance();
    for (const auto &dataset : store)
        storage->applyChanged(dataset.first, dataset.second);
    const ObjectInfo user = storage->constObject(5, "user");
    zeral::ROLETEMPLATES_HASH templates;
    templates.insert("RT_OPERATOR",
                     {"RT_OPERATOR", QString(), QString(), false, {"RL_USER_SHOW"}, QString()});

    QVector<double> firstOpen, open, switches, checkAll, apply;
    int expected = 0;
    for (const QString &name : datatypes)
        expected += storage->constObjects(name).size();
    for (int run = 0; run < Runs; ++run) {
        // The first opening also makes the store's shared models of the five trees.
        QElapsedTimer made;
        made.start();
        auto editor = std::make_unique<UserPermissions>();
        const double construction = ms(made);
        editor->resize(600, 700);
        auto *view = editor->findChild<TreeView *>("objectView");
        const double shown = timed(view->viewport(), [&] {
            editor->setCurrent(user);
            editor->setRoleTemplates(templates);
            editor->setPermissions({{5, 20, 12}, {5, 600, 12}});
            editor->show();
        });
        (run == 0 ? firstOpen : open).append(construction + shown);
        // Every tree in turn, "check all" in each, then one task of every check.
        auto *selector = editor->findChild<QComboBox *>("cbDatatype");
        for (const QString &name : datatypes) {
            if (selector->currentData().toString() != name)
                switches.append(timed(view->viewport(), [&] { editor->setDatatype(name); }));
            const double checked = timed(view->viewport(), [&] { editor->checkAll(); });
            if (name == QLatin1String("placing"))
                checkAll.append(checked);
        }
        int sent = -1;
        QObject::connect(editor.get(), &UserPermissions::appendTask,
                         [&sent](const zeral::TaskInfo &task) { sent = task.data.size(); });
        QElapsedTimer applied;
        applied.start();
        editor->applyChanges();
        apply.append(ms(applied));
        // Each tree checks what it shows: placings and hidden objects go only as the
        // editor's rules say, so the task holds fewer uids than the store has.
        if (sent <= Departments || sent > expected)
            fail("the task doesn't hold the checked objects");
        if (run == 0)
            std::fprintf(stderr, "bench_permissions: one task of %d objects\n", sent);
    }
    bench::report("perms_open_first", firstOpen);
    bench::report("perms_open", open);
    bench::report("perms_switch", switches);
    bench::report("perms_check_all", checkAll);
    bench::report("perms_apply", apply);
}

// The same with stock parts: a checkable QStandardItemModel per tree (built before the
// timer, as the store's models are), each under a sorted QSortFilterProxyModel.
void runStock(const QVector<QPair<QString, QList<ObjectInfo>>> &store)
{
    QHash<QString, std::shared_ptr<QStandardItemModel>> models;
    for (const auto &dataset : store) {
        if (!datatypes.contains(dataset.first))
            continue;
        auto model = std::make_shared<QStandardItemModel>();
        QHash<TYPE_ID, QStandardItem *> items;
        for (const ObjectInfo &object : dataset.second) {
            auto *item = new QStandardItem(object.parameters.value("PT_NAME"));
            item->setCheckable(true);
            item->setData(object.uid, Qt::UserRole);
            items.insert(object.uid, item);
            QStandardItem *parent = items.value(object.parent);
            (parent ? parent : model->invisibleRootItem())->appendRow(item);
        }
        models.insert(dataset.first, model);
    }

    QVector<double> open, switches, checkAll, apply;
    for (int run = 0; run < Runs; ++run) {
        QTreeView view;
        view.resize(600, 700);
        QVector<QSortFilterProxyModel *> proxies;
        open.append(timed(view.viewport(), [&] {
            for (const QString &name : datatypes) {
                auto *proxy = new QSortFilterProxyModel(&view);
                proxy->setRecursiveFilteringEnabled(true);
                proxy->setSortCaseSensitivity(Qt::CaseInsensitive);
                proxy->setSourceModel(models.value(name).get());
                proxies << proxy;
            }
            view.setModel(proxies.first());
            view.sortByColumn(0, Qt::AscendingOrder);
            view.expandAll();
            view.show();
        }));
        for (int i = 0; i < proxies.size(); ++i) {
            QSortFilterProxyModel *proxy = proxies[i];
            if (i > 0)
                switches.append(timed(view.viewport(), [&] {
                    view.setModel(proxy);
                    view.sortByColumn(0, Qt::AscendingOrder);
                    view.expandAll();
                }));
            const double checked = timed(view.viewport(), [&] {
                std::function<void(const QModelIndex &)> checkBelow
                    = [&](const QModelIndex &parent) {
                          for (int row = 0; row < proxy->rowCount(parent); ++row) {
                              const QModelIndex index = proxy->index(row, 0, parent);
                              proxy->setData(index, Qt::Checked, Qt::CheckStateRole);
                              checkBelow(index);
                          }
                      };
                checkBelow({});
            });
            if (datatypes.at(i) == QLatin1String("placing"))
                checkAll.append(checked);
        }
        QElapsedTimer applied;
        applied.start();
        QMultiMap<QString, QVariant> data;
        for (const QString &name : datatypes) {
            std::function<void(const QStandardItem *)> collect = [&](const QStandardItem *parent) {
                for (int row = 0; row < parent->rowCount(); ++row) {
                    const QStandardItem *item = parent->child(row);
                    if (item->checkState() == Qt::Checked)
                        data.insert(
                            QStringLiteral("object-%1").arg(item->data(Qt::UserRole).toUInt()), 7);
                    collect(item);
                }
            };
            collect(models.value(name)->invisibleRootItem());
        }
        apply.append(ms(applied));
        if (data.isEmpty())
            fail("the stock task is empty");
        // Back to unchecked for the next run.
        for (const auto &model : qAsConst(models)) {
            std::function<void(QStandardItem *)> clear = [&](QStandardItem *parent) {
                for (int row = 0; row < parent->rowCount(); ++row) {
                    parent->child(row)->setCheckState(Qt::Unchecked);
                    clear(parent->child(row));
                }
            };
            clear(model->invisibleRootItem());
        }
    }
    bench::report("perms_open_baseline", open);
    bench::report("perms_switch_baseline", switches);
    bench::report("perms_check_all_baseline", checkAll);
    bench::report("perms_apply_baseline", apply);
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    const QString only = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString();
    AuthData::set({"supervisor", 1, "session", "RT_SUPERVISOR", {"RL_ROLE_LINKSUBDIV"}, QString()});
    const auto store = makeStore();
    if (only.isEmpty() || only == QLatin1String("editor"))
        runEditor(store);
    if (only.isEmpty() || only == QLatin1String("stock"))
        runStock(store);
    return 0;
}
