// Fills an ObjectTreeModel with 100,000 objects under a sorted UserProxyModel and a tree view,
// then times one update and a text filter. Prints "name value" lines in milliseconds, the
// median of several runs; bench/run turns them into the table.
#include "benchreport.h"

#include <host/gui/models/itemroles.h>
#include <host/gui/models/objecttreemodel.h>
#include <host/gui/models/userproxymodel.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QTreeView>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>

using zeral::ObjectInfo;

namespace {

constexpr int objectCount = 100000;
const QStringList surnames = {"Иванов", "Петров", "Сидоров", "Смирнов", "Кузнецов",
                              "Попов",  "Волков", "Соколов", "Лебедев", "Козлов"};

ObjectInfo user(zeral::TYPE_ID uid, int generation = 0)
{
    ObjectInfo object;
    object.uid = uid;
    object.type = QStringLiteral("OT_USER");
    object.parameters
        = {{"PT_LOGIN", QStringLiteral("user%1-%2").arg(uid * 7919 % objectCount).arg(generation)},
           {"PT_SURNAME", surnames.at(uid % surnames.size())},
           {"PT_NAME", QStringLiteral("Имя%1").arg(uid % 997)},
           {"PT_EMAIL", QStringLiteral("u%1@example.org").arg(uid)},
           {"PT_ROLETEMPLATE", QStringLiteral("RT_OPERATOR")}};
    return object;
}

// Employees in 20 firms of 25 departments each.
QList<ObjectInfo> organisation()
{
    QList<ObjectInfo> objects;
    zeral::TYPE_ID next = 1;
    const auto add = [&](const char *type, zeral::TYPE_ID parent, const QString &name) {
        ObjectInfo object;
        object.uid = next++;
        object.type = QString::fromLatin1(type);
        object.parent = parent;
        object.parameters = {{"PT_NAME", name}, {"PT_SURNAME", name}};
        objects.append(object);
        return object.uid;
    };
    const zeral::TYPE_ID root = add("OT_SUBJECTROOT", 0, "Организация");
    QVector<zeral::TYPE_ID> departments;
    for (int firm = 0; firm < 20; ++firm) {
        const zeral::TYPE_ID firmUid = add("OT_FIRM", root, QStringLiteral("Фирма %1").arg(firm));
        for (int department = 0; department < 25; ++department)
            departments << add("OT_DEPARTMENT", firmUid,
                               QStringLiteral("Отдел %1").arg(department));
    }
    while (objects.size() < objectCount) {
        const int n = objects.size();
        add("OT_WORKER", departments.at(n % departments.size()),
            surnames.at(n % surnames.size()) + QString::number(n));
    }
    // The store hands objects over in no particular order: children often come first.
    std::reverse(objects.begin(), objects.end());
    return objects;
}

struct Screen
{
    std::unique_ptr<ObjectTreeModel> model = std::make_unique<ObjectTreeModel>();
    std::unique_ptr<UserProxyModel> proxy = std::make_unique<UserProxyModel>();
    std::unique_ptr<QTreeView> view = std::make_unique<QTreeView>();

    Screen()
    {
        model->setColumnCount(6);
        proxy->setSourceModel(model.get());
        proxy->setReadOnly(true);
        proxy->setSortRole(ItemRoles::SortText);
        proxy->setSortCaseSensitivity(Qt::CaseInsensitive);
        proxy->setSearchIndex(QStringLiteral("user"));
        proxy->setSearchEnabled(true);
        proxy->sort(0);
        view->setUniformRowHeights(true);
        view->setModel(proxy.get());
        view->resize(800, 600);
        view->show();
        QCoreApplication::processEvents();
    }
};

// With `settle`, the time includes the event processing that follows: the view's layout
// and repaint of what changed.
double timed(const std::function<void()> &work, bool settle = true)
{
    QElapsedTimer timer;
    timer.start();
    work();
    if (settle)
        QCoreApplication::processEvents();
    return timer.nsecsElapsed() / 1e6;
}

void benchFlat()
{
    QList<ObjectInfo> users;
    for (int uid = 1; uid <= objectCount; ++uid)
        users.append(user(uid));
    QVector<double> fills, updates, updateSignals, renames, filters, clears;
    for (int run = 0; run < 5; ++run) {
        Screen screen;
        fills << timed([&] { screen.model->add(users); });
        for (int i = 0; i < 40; ++i) {
            const zeral::TYPE_ID uid = 1 + (i * 2477) % objectCount;
            ObjectInfo changed = user(uid);
            changed.parameters.insert("PT_OBJECTSTATE", (run + i) % 2 ? "b" : "");
            updates << timed([&] { screen.model->add(changed); });
            changed.parameters.insert("PT_OBJECTSTATE", "x");
            updateSignals << timed([&] { screen.model->add(changed); }, false);
            QCoreApplication::processEvents();
            renames << timed([&] { screen.model->add(user(uid, run * 100 + i + 1)); });
        }
        const QStringList texts = {"user4242", "кузнецов имя17", "u77@", "смирнов"};
        for (const QString &text : texts) {
            filters << timed([&] { screen.proxy->setFilter(text); });
            clears << timed([&] { screen.proxy->clearFilter(); });
        }
    }
    bench::report("users_fill", fills);
    bench::report("users_update", updates);
    bench::report("users_update_signals", updateSignals);
    bench::report("users_rename", renames);
    bench::report("users_filter", filters);
    bench::report("users_clear_filter", clears);
}

void benchTree()
{
    const QList<ObjectInfo> objects = organisation();
    QVector<double> fills, filters;
    for (int run = 0; run < 3; ++run) {
        Screen screen;
        fills << timed([&] { screen.model->add(objects); });
        screen.view->expandToDepth(1);
        for (const QString &text : {QStringLiteral("кузнецов4242"), QStringLiteral("отдел 7")})
            filters << timed([&] { screen.proxy->setFilter(text); });
    }
    bench::report("tree_fill", fills);
    bench::report("tree_filter", filters);
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchFlat();
    benchTree();
    return 0;
}
