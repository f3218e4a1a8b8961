#include "permissionsfixture.h"

#include <host/gui/models/objecttreeproxy.h>
#include <host/gui/widgets/searchwidget.h>
#include <host/gui/widgets/treeview.h>
#include <src/userpermissions.h>
#include <src/userpermissionsproxy.h>

#include <QAbstractItemModelTester>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QToolButton>
#include <QtTest>

#include <list>
#include <memory>

using namespace permissionsfixture;

class TestUserPermissions : public QObject
{
    Q_OBJECT

    std::unique_ptr<UserPermissions> editor;
    std::list<QAbstractItemModelTester> testers;
    QComboBox *selector = nullptr;
    TreeView *view = nullptr;

    // Makes the editor for "ivanov", with every tree's proxy under a model tester.
    void open(bool edited = true)
    {
        testers.clear();
        editor = std::make_unique<UserPermissions>();
        selector = editor->findChild<QComboBox *>("cbDatatype");
        view = editor->findChild<TreeView *>("objectView");
        for (int row = 0; row < selector->count(); ++row) {
            editor->setDatatype(selector->itemData(row).toString());
            testers.emplace_back(view->model(),
                                 QAbstractItemModelTester::FailureReportingMode::QtTest);
        }
        editor->setDatatype("orgstructure");
        if (edited)
            editor->setCurrent(editedUser());
        editor->resize(420, 420);
        editor->show();
    }
    ObjectTreeProxy *proxy() const { return qobject_cast<ObjectTreeProxy *>(view->model()); }
    QString datatype() const { return selector->currentData().toString(); }
    bool rowEnabled(int row) const
    {
        return qobject_cast<QStandardItemModel *>(selector->model())->item(row)->isEnabled();
    }
    // Checks a row as a click on its box does.
    void click(TYPE_ID uid, Qt::CheckState state = Qt::Checked)
    {
        const QModelIndex index = proxy()->indexForUid(uid);
        QVERIFY2(index.isValid(), qPrintable(QString::number(uid)));
        QVERIFY(proxy()->setData(index, state, Qt::CheckStateRole));
    }
    Qt::CheckState shown(TYPE_ID uid) const
    {
        return Qt::CheckState(proxy()->indexForUid(uid).data(Qt::CheckStateRole).toInt());
    }
    // Applies and returns the one task sent; an empty task when none was.
    zeral::TaskInfo apply()
    {
        QSignalSpy spy(editor.get(), &UserPermissions::appendTask);
        editor->applyChanges();
        if (spy.size() != 1)
            return zeral::TaskInfo();
        return spy.first().first().value<zeral::TaskInfo>();
    }

private slots:
    void init()
    {
        zeral::LocalStorage::instance()->clear();
        fillStore();
        logIn();
    }
    void cleanup()
    {
        testers.clear();
        editor.reset();
        AuthData::clear();
    }

    void selectorAndTrees()
    {
        open();
        const QStringList texts{"Подразделения", "Объекты доступа", "Отчеты", "Группы доступа",
                                "Настройки мониторинга"};
        const QStringList data{"orgstructure", "placing", "report", "policy",
                               "monitoring_settings"};
        QCOMPARE(selector->count(), 5);
        for (int row = 0; row < 5; ++row) {
            QCOMPARE(selector->itemText(row), texts.at(row));
            QCOMPARE(selector->itemData(row, 256).toString(), data.at(row));
            QVERIFY(!selector->itemIcon(row).isNull());
        }
        // The organisation begins below its invisible root; the firm is the first row seen.
        QCOMPARE(datatype(), QStringLiteral("orgstructure"));
        QCOMPARE(view->rootIndex(), proxy()->indexForUid(Root));
        QCOMPARE(proxy()->rowCount(view->rootIndex()), 1);
        QCOMPARE(proxy()->index(0, 0, view->rootIndex()), proxy()->indexForUid(Firm));
        QVERIFY(view->isExpanded(proxy()->indexForUid(Sales)));
        QVERIFY(view->isColumnHidden(1));
        // Access objects: devices of the listed types in their placings; only devices have
        // boxes, and a time terminal may be checked though the tree doesn't list its type.
        editor->setDatatype("placing");
        QVERIFY(!view->rootIndex().isValid());
        QVERIFY(proxy()->indexForUid(Reader).isValid());
        QVERIFY(proxy()->indexForUid(Desk).isValid());
        QVERIFY(!proxy()->indexForUid(Sensor).isValid());
        QVERIFY(!proxy()->indexForUid(TimeTerminal).isValid());
        QVERIFY(proxy()->isCheckable(TimeTerminal));
        QVERIFY(!proxy()->isCheckable(Site));
        // Hidden reports and groups are never in their trees.
        editor->setDatatype("report");
        QVERIFY(proxy()->indexForUid(Timesheet).isValid());
        QVERIFY(!proxy()->indexForUid(HiddenReport).isValid());
        editor->setDatatype("policy");
        QVERIFY(!proxy()->indexForUid(HiddenPolicy).isValid());
        QCOMPARE(editor->getCurrentDatatype(), QStringLiteral("Группы доступа"));
        // An unknown data type leaves the selection as it was.
        editor->setDatatype("job");
        QCOMPARE(datatype(), QStringLiteral("policy"));
        QVERIFY(editor->findChild<QLabel *>("infoMessage")->isHidden());
    }

    void checksSurviveSwitching_data()
    {
        QTest::addColumn<QString>("tree");
        QTest::addColumn<TYPE_ID>("uid");
        QTest::addColumn<QList<TYPE_ID>>("checked"); // what the click checks in that tree
        QTest::addRow("departments")
            << "orgstructure" << TYPE_ID(Sales) << QList<TYPE_ID>{Sales, SalesEast};
        QTest::addRow("access objects") << "placing" << TYPE_ID(Reader) << QList<TYPE_ID>{Reader};
        QTest::addRow("reports") << "report" << TYPE_ID(Visits) << QList<TYPE_ID>{Visits};
        QTest::addRow("access groups") << "policy" << TYPE_ID(Day) << QList<TYPE_ID>{Day};
        QTest::addRow("monitoring")
            << "monitoring_settings" << TYPE_ID(Alarms) << QList<TYPE_ID>{Alarms};
    }
    void checksSurviveSwitching()
    {
        QFETCH(QString, tree);
        QFETCH(TYPE_ID, uid);
        QFETCH(QList<TYPE_ID>, checked);
        open();
        editor->setDatatype(tree);
        click(uid);
        // Every other tree in turn, as the operator picks it, and one check there each.
        QSet<TYPE_ID> elsewhere;
        for (int row = 0; row < selector->count(); ++row) {
            if (selector->itemData(row).toString() == tree)
                continue;
            selector->setCurrentIndex(row);
            emit selector->activated(row);
            QCOMPARE(proxy()->checked(), QSet<TYPE_ID>());
            const TYPE_ID first = proxy()->index(0, 0, view->rootIndex()).data().value<TYPE_ID>();
            if (proxy()->isCheckable(first)) {
                click(first, Qt::Checked);
                elsewhere.unite(proxy()->checked());
            }
        }
        editor->setDatatype(tree);
        QCOMPARE(shown(uid), Qt::Checked);
        QList<TYPE_ID> inTree = proxy()->checked().values();
        std::sort(inTree.begin(), inTree.end());
        QCOMPARE(inTree, checked);

        // One task holds the checks of all five trees (hidden reports only with reports here).
        QSet<TYPE_ID> expected = elsewhere + QSet<TYPE_ID>(checked.cbegin(), checked.cend());
        if (tree == QLatin1String("report"))
            expected.insert(HiddenReport);
        QList<TYPE_ID> sorted = expected.values();
        std::sort(sorted.begin(), sorted.end());
        QCOMPARE(objectsOf(apply()), sorted);
    }

    void exactTask()
    {
        open();
        click(Stock);
        editor->setDatatype("placing");
        click(Desk);
        const zeral::TaskInfo task = apply();
        QCOMPARE(task.type, QStringLiteral("update_permissions"));
        QCOMPARE(task.uid, TYPE_ID(Edited));
        QCOMPARE(task.receiver.data(), static_cast<QObject *>(editor.get()));
        QCOMPARE(task.method, QStringLiteral("saved"));
        QCOMPARE(task.startMessage, QStringLiteral("Сохранение полномочий пользователя ivanov"));
        QCOMPARE(task.errorMessage,
                 QStringLiteral("Ошибка сохранения полномочий пользователя ivanov"));
        QVERIFY(task.dependsOn.isEmpty());
        QVERIFY(task.subtasks.isEmpty());
        QCOMPARE(task.data.keys(), (QStringList{"object-23", "object-5"}));
        bool valuesRight = false;
        QCOMPARE(objectsOf(task, &valuesRight), (QList<TYPE_ID>{Stock, Desk}));
        QVERIFY(valuesRight);
        // The queue calls the receiver by name with a uid.
        QVERIFY(QMetaObject::invokeMethod(editor.get(), "saved", Q_ARG(zeral::TYPE_ID, 100)));
    }

    void nothingCheckedSendsNothing_data()
    {
        QTest::addColumn<QString>("tree");
        QTest::addColumn<bool>("checkThenClear");
        QTest::addRow("never checked") << "orgstructure" << false;
        QTest::addRow("reports on view, hidden reports stored") << "report" << false;
        QTest::addRow("checked, then all unchecked") << "placing" << true;
        QTest::addRow("stored set read, then all unchecked") << "report" << true;
    }
    void nothingCheckedSendsNothing()
    {
        QFETCH(QString, tree);
        QFETCH(bool, checkThenClear);
        open();
        editor->setDatatype(tree);
        if (checkThenClear) {
            editor->setPermissions({{Edited, Visits, 12}, {Edited, Reader, 12}});
            editor->checkAll();
            for (int row = 0; row < selector->count(); ++row) {
                editor->setDatatype(selector->itemData(row).toString());
                editor->findChild<QToolButton *>("tbUncheckAll")->click();
            }
            editor->setDatatype(tree);
        }
        QSignalSpy spy(editor.get(), &UserPermissions::appendTask);
        editor->applyChanges();
        QCOMPARE(spy.size(), 0);
    }

    void hiddenReportsOnlyWithReportsInView_data()
    {
        QTest::addColumn<QString>("tree");
        QTest::addColumn<bool>("hiddenSent");
        QTest::addRow("departments") << "orgstructure" << false;
        QTest::addRow("access objects") << "placing" << false;
        QTest::addRow("reports") << "report" << true;
        QTest::addRow("access groups") << "policy" << false;
        QTest::addRow("monitoring") << "monitoring_settings" << false;
    }
    void hiddenReportsOnlyWithReportsInView()
    {
        QFETCH(QString, tree);
        QFETCH(bool, hiddenSent);
        open();
        editor->setDatatype("report");
        click(Timesheet);
        editor->setDatatype(tree);
        // Hidden access groups never travel, whatever is in view.
        const QList<TYPE_ID> expected
            = hiddenSent ? QList<TYPE_ID>{Timesheet, HiddenReport} : QList<TYPE_ID>{Timesheet};
        QCOMPARE(objectsOf(apply()), expected);
    }

    void storedSetShownAsItIs()
    {
        open();
        QSignalSpy edited(editor.get(), &UserPermissions::dataEdited);
        editor->setDatatype("placing");
        click(Desk); // made before the answer came: the answer overrides it
        // A department without the one below it, a hidden report, objects the store lacks.
        editor->setPermissions({{Edited, Sales, 12},
                                {Edited, Reader, 12},
                                {Edited, HiddenReport, 12},
                                {Edited, 777, 12},
                                {Edited, 0, 12}});
        QCOMPARE(edited.size(), 0);
        QCOMPARE(proxy()->checked(), QSet<TYPE_ID>{Reader});
        editor->setDatatype("orgstructure");
        QCOMPARE(shown(Sales), Qt::Checked);
        QCOMPARE(shown(SalesEast), Qt::Unchecked);
        QCOMPARE(shown(Firm), Qt::PartiallyChecked);
        // The operator's own clicks check what lies below again.
        click(Stock, Qt::Unchecked);
        click(Firm);
        QCOMPARE(shown(SalesEast), Qt::Checked);
        // Only objects of the store go out; the hidden report was stored and stays.
        editor->setDatatype("placing");
        QCOMPARE(objectsOf(apply()),
                 (QList<TYPE_ID>{Firm, Sales, SalesEast, Stock, Reader, HiddenReport}));
        // A new answer replaces everything, also in the trees out of view.
        editor->setPermissions({});
        QCOMPARE(apply().type, QString());
    }

    void rowsFollowTheTemplate_data()
    {
        QTest::addColumn<QStringList>("roles");
        QTest::addColumn<QString>("roleTemplate");
        QTest::addColumn<QString>("from");
        QTest::addColumn<QList<bool>>("enabled");
        QTest::addColumn<QString>("to");
        const QList<bool> all{true, true, true, true, true};
        const QList<bool> none{false, true, false, true, false};
        // clang-format off
        QTest::addRow("viewer of users: all") << QStringList{"RL_USER_SHOW"} << "RT_CLERK" << "monitoring_settings" << all << "monitoring_settings";
        QTest::addRow("no role: off the departments") << QStringList{} << "RT_CLERK" << "orgstructure" << none << "placing";
        QTest::addRow("unknown template grants nothing") << QStringList{"RL_USER_SHOW"} << "RT_GONE" << "report" << none << "placing";
        QTest::addRow("lower case is no role") << QStringList{"rl_user_show"} << "RT_CLERK" << "orgstructure" << none << "placing";
        QTest::addRow("monitoring: departments too") << QStringList{"RL_MONITORING_SHOW"} << "RT_CLERK" << "report" << QList<bool>{true, true, false, true, true} << "orgstructure";
        QTest::addRow("workers: reports, no monitoring") << QStringList{"RL_WORKER_SHOW"} << "RT_CLERK" << "monitoring_settings" << QList<bool>{true, true, true, true, false} << "orgstructure";
        QTest::addRow("placings: departments only") << QStringList{"RL_PLACINGS_SHOW", "RL_USER_BLOCK"} << "RT_CLERK" << "policy" << QList<bool>{true, true, false, true, false} << "policy";
        // clang-format on
    }
    void rowsFollowTheTemplate()
    {
        QFETCH(QStringList, roles);
        QFETCH(QString, roleTemplate);
        QFETCH(QString, from);
        QFETCH(QList<bool>, enabled);
        QFETCH(QString, to);
        open(false);
        editor->setCurrent(editedUser(roleTemplate));
        editor->setDatatype(from);
        click(proxy()->index(0, 0, view->rootIndex()).data().value<TYPE_ID>());
        const QSet<TYPE_ID> left = proxy()->checked();
        // Before the table of templates comes, every tree is offered.
        for (int row = 0; row < 5; ++row)
            QVERIFY(rowEnabled(row));
        editor->setRoleTemplates(templates(roles));
        for (int row = 0; row < 5; ++row)
            QCOMPARE(rowEnabled(row), enabled.at(row));
        QCOMPARE(datatype(), to);
        QCOMPARE(view->model(),
                 editor->findChildren<ObjectTreeProxy *>().at(selector->currentIndex()));
        // The checks on the tree left behind stay and are sent.
        const QList<TYPE_ID> sent = objectsOf(apply());
        for (TYPE_ID uid : left)
            QVERIFY(sent.contains(uid));
        // A template change saved on the roles tab counts at once.
        editor->setCurrentRoleTemplate("RT_ADMINISTRATOR");
        for (int row = 0; row < 5; ++row)
            QVERIFY(rowEnabled(row));
    }

    void ownCardOnlyLooks()
    {
        open(false);
        zeral::ObjectInfo self = testing::makeUser(Operator, "admin");
        self.parameters.insert("PT_ROLETEMPLATE", "RT_CLERK");
        editor->setCurrent(self);
        editor->setRoleTemplates(templates({}));
        QVERIFY(editor->findChild<QLabel *>("infoMessage")->isVisible());
        QVERIFY(!view->isEnabled());
        QVERIFY(!editor->findChild<QToolButton *>("tbCheckAll")->isEnabled());
        QVERIFY(selector->isEnabled());
        for (int row = 0; row < 5; ++row)
            QVERIFY(rowEnabled(row));
        editor->setCurrent(editedUser());
        QVERIFY(editor->findChild<QLabel *>("infoMessage")->isHidden());
        QVERIFY(view->isEnabled());
        QVERIFY(!rowEnabled(0));
    }

    void searchInEachTree_data()
    {
        QTest::addColumn<QString>("tree");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QList<TYPE_ID>>("found");
        QTest::addColumn<QList<TYPE_ID>>("gone");
        // clang-format off
        QTest::addRow("department by name") << "orgstructure" << "восток" << QList<TYPE_ID>{Root, Firm, Sales, SalesEast} << QList<TYPE_ID>{Stock};
        QTest::addRow("device keeps its placing") << "placing" << "пост" << QList<TYPE_ID>{Site, Desk} << QList<TYPE_ID>{Reader};
        QTest::addRow("reports by words") << "report" << "сещ Пос" << QList<TYPE_ID>{Visits} << QList<TYPE_ID>{Timesheet};
        QTest::addRow("hidden stays hidden") << "policy" << "служеб" << QList<TYPE_ID>{} << QList<TYPE_ID>{Day, HiddenPolicy};
        QTest::addRow("monitoring") << "monitoring_settings" << "трев" << QList<TYPE_ID>{Alarms} << QList<TYPE_ID>{Screen};
        // clang-format on
    }
    void searchInEachTree()
    {
        QFETCH(QString, tree);
        QFETCH(QString, text);
        QFETCH(QList<TYPE_ID>, found);
        QFETCH(QList<TYPE_ID>, gone);
        open();
        editor->setDatatype(tree);
        auto *search = editor->findChild<SearchWidget *>("searchWidget");
        search->setText(text);
        QTest::keyClick(search->findChild<QLineEdit *>(), Qt::Key_Return);
        for (TYPE_ID uid : found)
            QVERIFY2(proxy()->indexForUid(uid).isValid(), qPrintable(QString::number(uid)));
        for (TYPE_ID uid : gone)
            QVERIFY2(!proxy()->indexForUid(uid).isValid(), qPrintable(QString::number(uid)));
        // Check all takes only what the search shows.
        editor->checkAll();
        QCOMPARE(proxy()->checked().size(),
                 int(std::count_if(found.cbegin(), found.cend(),
                                   [this](TYPE_ID uid) { return proxy()->isCheckable(uid); })));
        // Another tree and back: the search is gone, the checks are not.
        const QSet<TYPE_ID> checked = proxy()->checked();
        editor->setDatatype(tree == QLatin1String("placing") ? "policy" : "placing");
        editor->setDatatype(tree);
        QVERIFY(search->text().isEmpty());
        for (TYPE_ID uid : gone)
            QVERIFY(proxy()->indexForUid(uid).isValid() || uid == HiddenPolicy);
        QCOMPARE(proxy()->checked(), checked);
    }

    void storeFillsAfterOpening()
    {
        zeral::LocalStorage::instance()->clear();
        open();
        QVERIFY(!view->rootIndex().isValid());
        // The answer comes before the objects it names.
        editor->setPermissions({{Edited, Sales, 12}, {Edited, Reader, 12}, {Edited, 888, 12}});
        QCOMPARE(apply().type, QString());
        fillStore("orgstructure");
        QTRY_COMPARE(view->rootIndex(), proxy()->indexForUid(Root));
        QTRY_COMPARE(shown(Sales), Qt::Checked);
        // Stored as it is: the department below isn't checked by the late arrival.
        QCOMPARE(shown(SalesEast), Qt::Unchecked);
        QVERIFY(view->isExpanded(proxy()->indexForUid(Sales)));
        fillStore("placing");
        editor->setDatatype("placing");
        QTRY_COMPARE(shown(Reader), Qt::Checked);
        QCOMPARE(objectsOf(apply()), (QList<TYPE_ID>{Sales, Reader}));
        // A later answer is the truth: what it doesn't name stays unchecked on arrival.
        editor->setPermissions({{Edited, Timesheet, 12}});
        fillStore("report");
        editor->setDatatype("report");
        QTRY_COMPARE(shown(Timesheet), Qt::Checked);
        QCOMPARE(objectsOf(apply()), (QList<TYPE_ID>{Timesheet, HiddenReport}));
    }

    void childUids_data()
    {
        QTest::addColumn<TYPE_ID>("uid");
        QTest::addColumn<QList<TYPE_ID>>("below");
        QTest::addRow("root") << TYPE_ID(Root) << QList<TYPE_ID>{Firm, Sales, SalesEast, Stock};
        QTest::addRow("department") << TYPE_ID(Sales) << QList<TYPE_ID>{SalesEast};
        QTest::addRow("leaf") << TYPE_ID(Stock) << QList<TYPE_ID>{};
        QTest::addRow("absent") << TYPE_ID(999) << QList<TYPE_ID>{};
    }
    void childUids()
    {
        QFETCH(TYPE_ID, uid);
        QFETCH(QList<TYPE_ID>, below);
        open();
        QSet<unsigned int> result;
        editor->getChildUids(proxy()->sourceModel(), uid, result);
        QList<TYPE_ID> sorted = result.values();
        std::sort(sorted.begin(), sorted.end());
        QCOMPARE(sorted, below);
    }

    void selectorVisibility()
    {
        open();
        editor->setObjectTypeSelectorEnabled(false);
        QVERIFY(!editor->isObjectTypeSelectoEnabled());
        editor->setObjectTypeSelectorVisible(false);
        QVERIFY(!editor->isObjectTypeSelectorVisisble());
        QVERIFY(editor->findChild<QLabel *>("lbDatatype")->isHidden());
        editor->setObjectTypeSelectorVisible(true);
        QVERIFY(editor->isObjectTypeSelectorVisisble());
        // The proxy class the plugin keeps beside the editor is a granted-objects proxy.
        UserPermissionsProxy kept;
        QVERIFY(kept.isCheckable());
        QVERIFY(kept.isReadOnly());
    }
};

QTEST_MAIN(TestUserPermissions)
#include "tst_userpermissions.moc"
