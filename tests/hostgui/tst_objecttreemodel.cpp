#include <host/core/localstorage.h>
#include <host/gui/models/fasttreemodel.h>
#include <host/gui/models/itemroles.h>
#include <host/gui/models/objecttreemodel.h>
#include <tests/support/builders.h>
#include <tests/support/modeldump.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QSortFilterProxyModel>
#include <QtTest>

using zeral::ObjectInfo;
using zeral::TYPE_ID;
using Uids = QList<TYPE_ID>;
using Batches = QList<QList<ObjectInfo>>;
Q_DECLARE_METATYPE(Batches)

namespace {

ObjectInfo dept(TYPE_ID uid, TYPE_ID parent, const QString &name = {})
{
    return testing::makeObject(uid, QStringLiteral("OT_DEPARTMENT"),
                               {{QStringLiteral("PT_NAME"), name}}, parent);
}

// The tree as "uid[children]" in model order.

Uids sorted(Uids uids)
{
    std::sort(uids.begin(), uids.end());
    return uids;
}

} // namespace

class TestObjectTreeModel : public QObject
{
    Q_OBJECT
private slots:
    void arrivalOrder_data();
    void arrivalOrder();
    void removeAndReturn();
    void updateMovesAndKeepsRow();
    void cycleStaysAtTop();
    void rolesAndColumns();
    void valuesComeWithTheRows();
    void derivedCells();
    void codedParameter();
    void searchTextsSurviveRenames();
    void searchTextOfAUser();
    void storeModelFollowsStore();
    void rolesModelFollowsCatalogue();
};

void TestObjectTreeModel::arrivalOrder_data()
{
    QTest::addColumn<Batches>("batches");
    QTest::addColumn<QString>("expected");
    const ObjectInfo root = dept(1, 0), child = dept(2, 1), grandchild = dept(3, 2),
                     other = dept(4, 1), stray = dept(5, 99);

    QTest::addRow("parents first, one by one")
        << Batches{{root}, {child}, {grandchild}, {other}, {stray}} << "1[2[3],4],5";
    QTest::addRow("children first, one by one")
        << Batches{{grandchild}, {child}, {stray}, {other}, {root}} << "5,1[2[3],4]";
    QTest::addRow("one batch, children first")
        << Batches{{grandchild, stray, other, child, root}} << "5,1[4,2[3]]";
    QTest::addRow("batch completes what waits")
        << Batches{{grandchild}, {other, child}, {root, stray}} << "1[4,2[3]],5";
    QTest::addRow("batch into a filled model")
        << Batches{{root}, {grandchild, other, child}, {stray}} << "1[4,2[3]],5";
    // The last of a uid given twice in a batch counts: 4 first under 5, then under 1.
    QTest::addRow("a uid twice in a batch")
        << Batches{{dept(4, 5), grandchild, other, child, root, stray}} << "1[4,2[3]],5";
}

void TestObjectTreeModel::arrivalOrder()
{
    QFETCH(Batches, batches);
    QFETCH(QString, expected);
    ObjectTreeModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    for (const QList<ObjectInfo> &batch : batches) {
        if (batch.size() == 1) {
            const QModelIndex added = model.add(batch.first());
            QCOMPARE(added, model.indexForUid(batch.first().uid));
        } else {
            model.add(batch);
        }
    }
    QCOMPARE(testing::dumpTree(model), expected);
    QCOMPARE(model.parentKeys(3), (Uids{2, 1}));
    QCOMPARE(sorted(model.childKeys(1)), (Uids{2, 3, 4}));
    QCOMPARE(model.childKeys(5), Uids{});
}

void TestObjectTreeModel::removeAndReturn()
{
    ObjectTreeModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.add(QList<ObjectInfo>{dept(1, 0), dept(2, 1), dept(3, 2), dept(4, 1)});
    model.remove(2);
    QCOMPARE(testing::dumpTree(model), QStringLiteral("1[4],3"));
    QVERIFY(!model.indexForUid(2).isValid());
    QCOMPARE(model.constInfo(2).uid, TYPE_ID(0));
    model.add(dept(2, 1));
    QCOMPARE(testing::dumpTree(model), QStringLiteral("1[4,2[3]]"));
    model.remove(1);
    model.remove(3);
    model.remove(77);
    QCOMPARE(testing::dumpTree(model), QStringLiteral("4,2"));
    model.clear();
    QCOMPARE(model.rowCount(), 0);
    QVERIFY(model.uniqueKeys().isEmpty());
}

void TestObjectTreeModel::updateMovesAndKeepsRow()
{
    ObjectTreeModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.add(QList<ObjectInfo>{dept(1, 0, "A"), dept(2, 0, "B"), dept(3, 1, "C")});
    const QPersistentModelIndex c = model.indexForUid(3);
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);

    QCOMPARE(model.add(dept(3, 1, "C2")), QModelIndex(c));
    QCOMPARE(inserted.count(), 0);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(c.data(ItemRoles::SortText).toString(), QStringLiteral("C2"));

    model.add(dept(3, 2, "C2")); // to another parent
    QCOMPARE(testing::dumpTree(model), QStringLiteral("1,2[3]"));
    QCOMPARE(c.parent(), model.indexForUid(2));
    model.add(dept(3, 50, "C2")); // to a parent not there yet
    QCOMPARE(testing::dumpTree(model), QStringLiteral("1,2,3"));
    model.add(dept(50, 0));
    QCOMPARE(testing::dumpTree(model), QStringLiteral("1,2,50[3]"));
}

void TestObjectTreeModel::cycleStaysAtTop()
{
    ObjectTreeModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.add(dept(1, 2));
    model.add(dept(2, 1));
    QCOMPARE(testing::dumpTree(model), QStringLiteral("1[2]"));
    model.add(QList<ObjectInfo>{dept(7, 8), dept(8, 7)});
    QCOMPARE(model.uniqueKeys().size(), 4);
    QCOMPARE(model.childKeys(1), Uids{2});
    model.add(dept(1, 2)); // an update that would put 1 below its own child
    QCOMPARE(model.parentKeys(1), Uids{});
}

void TestObjectTreeModel::rolesAndColumns()
{
    ObjectTreeModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setColumnCount(4);
    model.setHorizontalHeaderLabels({"Логин", "Тип объекта", "ФИО"});
    const QModelIndex index = model.add(testing::makeWorker(10, "Иванов", "Пётр"));
    QCOMPARE(model.headerData(2, Qt::Horizontal).toString(), QStringLiteral("ФИО"));
    QCOMPARE(index.data().toUInt(), 10u);
    QCOMPARE(index.siblingAtColumn(1).data().toString(), QStringLiteral("OT_WORKER"));
    QCOMPARE(index.data(ItemRoles::Parameters).toHash().value("PT_SURNAME").toString(),
             QStringLiteral("Иванов"));
    QCOMPARE(index.data(ItemRoles::SortText).toString(), QStringLiteral("Иванов Пётр"));
    // What belongs to the object can't be overwritten from outside.
    QVERIFY(!model.setData(index, 11));
    QVERIFY(!model.setData(index.siblingAtColumn(1), "OT_USER"));
    QVERIFY(model.setData(index, "Пётр И.", ItemRoles::SortText));
    QVERIFY(model.setData(index.siblingAtColumn(3), "x", Qt::EditRole));
    QVERIFY(model.setData(index.siblingAtColumn(3), 7, ItemRoles::ObjectState));
    // An update of the object keeps what the screen stored.
    model.add(testing::makeWorker(10, "Иванов", "Павел"));
    QCOMPARE(index.data(ItemRoles::SortText).toString(), QStringLiteral("Пётр И."));
    QCOMPARE(index.siblingAtColumn(3).data().toString(), QStringLiteral("x"));
    QCOMPARE(index.siblingAtColumn(3).data(ItemRoles::ObjectState).toInt(), 7);
    QCOMPARE(model.constInfo(10).parameters.value("PT_NAME"), QStringLiteral("Павел"));
}

void TestObjectTreeModel::valuesComeWithTheRows()
{
    using Cell = ObjectTreeModel::CellValue;
    ObjectTreeModel model;
    model.setColumnCount(3);
    QSortFilterProxyModel sorted;
    sorted.setSourceModel(&model);
    sorted.setSortRole(ItemRoles::SortText);
    sorted.sort(0);
    QAbstractItemModelTester tester(&sorted,
                                    QAbstractItemModelTester::FailureReportingMode::QtTest);
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    // The rows point to the objects, which live as long as the add() that reads them.
    const QList<ObjectInfo> depts{dept(1, 0), dept(2, 0), dept(3, 0), dept(4, 0), dept(5, 0)};
    const auto row = [&depts](TYPE_ID uid, const char *name, const char *text) {
        return ObjectTreeModel::Row{&depts.at(int(uid) - 1),
                                    {Cell{0, ItemRoles::SortText, QString::fromUtf8(name)},
                                     Cell{2, Qt::EditRole, QString::fromUtf8(text)}}};
    };

    // New rows arrive with their values: the sorted proxy has them in place, nothing changed.
    model.add({row(1, "c", "x"), row(2, "a", "y"), row(3, "b", "z")});
    QCOMPARE(testing::dumpTree(sorted), QStringLiteral("2,3,1"));
    QCOMPARE(sorted.index(0, 2).data().toString(), QStringLiteral("y"));
    QCOMPARE(changed.count(), 0);

    // A row already there: its object and its changed name are changes, the same text isn't.
    model.add({row(1, "0", "x"), row(4, "d", "w")});
    QCOMPARE(testing::dumpTree(sorted), QStringLiteral("1,2,3,4"));
    QCOMPARE(changed.count(), 2);

    // A cell given twice in a new row: the later value counts, now and when set again.
    model.add(
        {{&depts.at(4), {Cell{2, Qt::EditRole, "first"}, Cell{2, Qt::DisplayRole, "second"}}}});
    const QModelIndex twice = model.indexForUid(5, 2);
    QCOMPARE(twice.data().toString(), QStringLiteral("second"));
    QVERIFY(model.setData(twice, "third"));
    QCOMPARE(twice.data(Qt::EditRole).toString(), QStringLiteral("third"));
    model.remove(5);
}

void TestObjectTreeModel::derivedCells()
{
    using Cell = ObjectTreeModel::CellValue;
    ObjectTreeModel model;
    model.setColumnCount(3);
    QString suffix = QStringLiteral("!");
    model.setDerivedCell(2, Qt::EditRole, [&suffix](const ObjectTreeModel::Node &node) {
        return QVariant(node.info.parameters.value("PT_KIND") + suffix);
    });
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    ObjectInfo a = dept(1, 0), b = dept(2, 0), c = dept(3, 0);
    a.parameters.insert("PT_KIND", "x");
    b.parameters.insert("PT_KIND", "y");
    // A value given with the row is not kept: the cell is the function's.
    model.add({{&a, {Cell{2, Qt::EditRole, "given"}, Cell{2, ItemRoles::ObjectState, "b"}}},
               {&b, {}},
               {&c, {}}});
    const QModelIndex cell = model.indexForUid(1, 2);
    QCOMPARE(cell.data(Qt::DisplayRole).toString(), QStringLiteral("x!"));
    QCOMPARE(cell.data(Qt::EditRole).toString(), QStringLiteral("x!"));
    QCOMPARE(cell.data(ItemRoles::ObjectState).toString(), QStringLiteral("b"));
    QVERIFY(!model.setData(cell, "set"));
    QCOMPARE(cell.data().toString(), QStringLiteral("x!"));

    // A change of the object announces the cell only when its value changed.
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    a.parameters.insert("PT_NAME", "renamed");
    model.add(a);
    const auto derivedAnnounced = [&changed] {
        return std::count_if(changed.cbegin(), changed.cend(), [](const QList<QVariant> &args) {
            return args.at(0).toModelIndex().column() == 2;
        });
    };
    QCOMPARE(derivedAnnounced(), 0);
    a.parameters.insert("PT_KIND", "z");
    model.add(a);
    QCOMPARE(derivedAnnounced(), 1);
    QCOMPARE(changed.last().at(0).toModelIndex(), cell);
    QCOMPARE(changed.last().at(2).value<QVector<int>>(),
             (QVector<int>{Qt::DisplayRole, Qt::EditRole}));

    // What the function reads besides the node changed: the whole column, in one block.
    changed.clear();
    suffix = QStringLiteral("?");
    model.announceColumn(2, Qt::EditRole);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.first().at(0).toModelIndex(), model.index(0, 2));
    QCOMPARE(changed.first().at(1).toModelIndex(), model.index(2, 2));
    QCOMPARE(model.indexForUid(2, 2).data().toString(), QStringLiteral("y?"));
}

void TestObjectTreeModel::codedParameter()
{
    ObjectTreeModel model;
    ObjectInfo a = dept(1, 0), b = dept(2, 0), c = dept(3, 0);
    a.parameters.insert("PT_KIND", "x");
    b.parameters.insert("PT_KIND", "y");
    c.parameters.insert("PT_KIND", "x");
    model.add(QList<ObjectInfo>{a, b});
    const auto code = [&model](TYPE_ID uid) {
        return model.node(uid)->code;
    };
    QCOMPARE(code(1), -1);
    // Coded when set, for the nodes there and those that come; the same text, the same code.
    model.setCodedParameter("PT_KIND");
    model.add(c);
    QCOMPARE(code(3), code(1));
    QVERIFY(code(2) != code(1));
    QCOMPARE(model.codeText(code(2)), QStringLiteral("y"));
    // A changed object gets the code of its new text; a missing parameter codes as empty.
    b.parameters.insert("PT_KIND", "x");
    model.add(b);
    QCOMPARE(code(2), code(1));
    c.parameters.remove("PT_KIND");
    model.add(c);
    QCOMPARE(model.codeText(code(3)), QString());
}

void TestObjectTreeModel::storeModelFollowsStore()
{
    zeral::LocalStorage *storage = zeral::LocalStorage::instance();
    storage->applyChanged("orgstructure", {dept(1, 0), dept(3, 2)});
    ObjectTreeModel *model = storage->model("orgstructure");
    QVERIFY(model);
    QCOMPARE(storage->model("orgstructure"), model);
    QVERIFY(storage->model("report") != model);
    QAbstractItemModelTester tester(model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(sorted(model->uniqueKeys()), (Uids{1, 3}));
    QCOMPARE(model->rowCount(), 2);
    storage->applyChanged("orgstructure", {dept(2, 1, "new")});
    QCOMPARE(testing::dumpTree(*model), QStringLiteral("1[2[3]]"));
    storage->applyChanged("report", {dept(9, 0)});
    QVERIFY(!model->contains(9));
    storage->applyRemoved("orgstructure", {3});
    QCOMPARE(testing::dumpTree(*model), QStringLiteral("1[2]"));
    storage->clear();
    QCOMPARE(model->rowCount(), 0);
}

void TestObjectTreeModel::rolesModelFollowsCatalogue()
{
    zeral::LocalStorage *storage = zeral::LocalStorage::instance();
    FastTreeModel *roles = storage->rolesModel();
    QVERIFY(roles);
    QAbstractItemModelTester tester(roles, QAbstractItemModelTester::FailureReportingMode::QtTest);
    storage->setRoleCatalogue({{"RL_USER_SHOW", "Просмотр", "G_USERS", false},
                               {"G_USERS", "Пользователи", {}, true},
                               {"RL_USER_EDIT", "Изменение", "G_USERS", false}});
    QCOMPARE(testing::dumpTree(*roles), QStringLiteral("Пользователи[Просмотр,Изменение]"));
    const QModelIndex edit = roles->indexForKey("RL_USER_EDIT");
    QCOMPARE(edit.data(ItemRoles::SelectorData).toString(), QStringLiteral("RL_USER_EDIT"));
    QCOMPARE(edit.data(ItemRoles::CatalogueOrder).toInt(), 2);
    storage->setRoleCatalogue({});
    QCOMPARE(roles->rowCount(), 0);
}

// A user's name is his login; his search text holds it once, then the other searched values.
void TestObjectTreeModel::searchTextOfAUser()
{
    ObjectTreeModel model;
    ObjectInfo user = testing::makeUser(7, QStringLiteral("Ivanov.P"));
    user.parameters.insert(QStringLiteral("PT_SURNAME"), QStringLiteral("Иванов"));
    user.parameters.insert(QStringLiteral("PT_EMAIL"), QStringLiteral("ivanov.p@example.org"));
    model.add(user);
    const QString text = model.searchText(*model.node(7)).toString();
    QCOMPARE(text.count(QStringLiteral("ivanov.p")), 2); // the login, and in the e-mail
    QVERIFY(text.startsWith(QStringLiteral("ivanov.p\n")));
    QVERIFY(text.contains(QStringLiteral("\nиванов")));
    QCOMPARE(
        model.uidsContaining(QStringLiteral("ivanov.p"), ObjectTreeModel::SearchedText::SearchText),
        QVector<TYPE_ID>{7});
}

// A few objects renamed often enough for the search corpus to compact itself, which moves
// every text: each node still reads its own, latest text, and a search finds only those.
void TestObjectTreeModel::searchTextsSurviveRenames()
{
    ObjectTreeModel model;
    const int count = 1500, renamed = 100, rounds = 40;
    const auto named = [](TYPE_ID uid, int round) {
        return dept(uid, 0, QStringLiteral("Отдел%1 Раунд%2").arg(uid).arg(round));
    };
    QList<ObjectInfo> objects;
    for (TYPE_ID uid = 1; uid <= count; ++uid)
        objects << named(uid, 0);
    model.add(objects);
    for (int round = 1; round <= rounds; ++round) {
        for (TYPE_ID uid = 1; uid <= renamed; ++uid)
            model.add(named(uid, round));
    }
    for (TYPE_ID uid = 1; uid <= count; ++uid) {
        const ObjectTreeModel::Node *node = model.node(uid);
        const QString expected
            = QStringLiteral("отдел%1 раунд%2").arg(uid).arg(uid <= renamed ? rounds : 0);
        QCOMPARE(model.sortKey(*node).toString(), expected);
        QVERIFY(model.searchText(*node).startsWith(expected));
    }
    const auto found = [&model](const QString &word) {
        return model.uidsContaining(word, ObjectTreeModel::SearchedText::SearchText);
    };
    QCOMPARE(found(QStringLiteral("раунд1\n")), QVector<TYPE_ID>{});
    QCOMPARE(found(QStringLiteral("отдел777 ")), QVector<TYPE_ID>{777});
    QCOMPARE(found(QStringLiteral("раунд%1").arg(rounds)).size(), renamed);
}

QTEST_MAIN(TestObjectTreeModel)
#include "tst_objecttreemodel.moc"
