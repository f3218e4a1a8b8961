#include <app/screens/employeecard.h>
#include <app/screens/employeesscreen.h>
#include <app/screens/employeetreeproxy.h>
#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <host/gui/models/objecttreemodel.h>
#include <host/gui/widgets/searchwidget.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <shared/inheritdata.h>
#include <shared/rolenames.h>
#include <tests/support/builders.h>
#include <tests/support/scriptedserver.h>
#include <tests/support/testplugin.h>

#include <QAbstractItemModelTester>
#include <QAction>
#include <QTreeView>
#include <QtTest>

using zeral::ObjectInfo;
using zeral::TYPE_ID;
using Uids = QList<TYPE_ID>;
namespace proto = zeral::proto;

namespace {

const QString subjects = QLatin1String(zeral::SUBJECT_DATANAME);

ObjectInfo unit(TYPE_ID uid, const char *type, const char *name, TYPE_ID parent)
{
    return testing::makeObject(uid, QLatin1String(type), {{"PT_NAME", QString::fromUtf8(name)}},
                               parent);
}

// An employee named "<surname> Анна", personnel number = uid, with an account if given.
ObjectInfo worker(TYPE_ID uid, const char *surname, TYPE_ID department, TYPE_ID account = 0,
                  bool dismissed = false)
{
    ObjectInfo person = testing::makeWorker(uid, QString::fromUtf8(surname), "Анна");
    person.parent = department;
    person.parameters.insert(db::worker::WORKERNUM, QString::number(uid).rightJustified(6, '0'));
    if (dismissed)
        person.parameters.insert(db::user::OBJECTSTATE, "d");
    if (account)
        person.parents.insert(15, {uid, account, 15, 0, {}, {}});
    return person;
}

// Every row the proxy shows, at any depth.
Uids visibleUids(const QAbstractItemModel *proxy, const QModelIndex &parent = {})
{
    Uids found;
    for (int row = 0; row < proxy->rowCount(parent); ++row) {
        found.append(proxy->index(row, 0, parent).data().toUInt());
        found += visibleUids(proxy, proxy->index(row, 0, parent));
    }
    std::sort(found.begin(), found.end());
    return found;
}

} // namespace

class TestEmployeesScreen : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void shownOnlyWithTheRight();
    void treeFollowsTheStore();
    void searchNarrows_data();
    void searchNarrows();
    void actionsFollowSelection_data();
    void actionsFollowSelection();
    void actionsReachTheUsersScreen();

private:
    void select(const Uids &uids);
    TYPE_ID parentOf(TYPE_ID uid) const;

    std::unique_ptr<ScriptedServer> m_server;
    std::unique_ptr<EmployeesScreen> m_screen;
};

void TestEmployeesScreen::init()
{
    // A firm with two departments under the organisation's root; 102 has the account 500.
    auto *store = zeral::LocalStorage::instance();
    store->clear();
    store->applyChanged(zeral::ORGSTRUCTURE_DATANAME,
                        {unit(1, db::orgstructure::SUBJECTROOT, "Оргструктура", 0),
                         unit(10, db::orgstructure::FIRM, "Завод", 1),
                         unit(20, db::orgstructure::DEPARTMENT, "Цех", 10),
                         unit(21, db::orgstructure::DEPARTMENT, "Бухгалтерия", 10)});
    store->applyChanged(subjects, {worker(100, "Иванова", 20), worker(101, "Петрова", 20, 0, true),
                                   worker(102, "Сидорова", 21, 500), worker(103, "Кузьмина", 21)});
    store->applyChanged(zeral::USER_DATANAME, {testing::makeUser(500, "sidorova")});

    m_screen.reset();
    m_server = std::make_unique<ScriptedServer>();
    m_screen = std::make_unique<EmployeesScreen>();
    for (QAbstractItemModel *model : {static_cast<QAbstractItemModel *>(m_screen->model()),
                                      static_cast<QAbstractItemModel *>(m_screen->proxy())}) {
        new QAbstractItemModelTester(model, QAbstractItemModelTester::FailureReportingMode::QtTest,
                                     m_screen.get());
    }
    m_screen->init(m_server.get(), "employees");
    m_screen->insertedToInterface();
    m_screen->show();
}

void TestEmployeesScreen::select(const Uids &uids)
{
    m_screen->view()->selectionModel()->clearSelection();
    for (TYPE_ID uid : uids) {
        m_screen->view()->selectionModel()->select(m_screen->proxy()->indexForUid(uid),
                                                   QItemSelectionModel::Select
                                                       | QItemSelectionModel::Rows);
    }
}

TYPE_ID TestEmployeesScreen::parentOf(TYPE_ID uid) const
{
    return m_screen->model()->uidForIndex(m_screen->model()->indexForUid(uid).parent());
}

void TestEmployeesScreen::shownOnlyWithTheRight()
{
    AuthData::set({"hr", 7, "s", QString(), {zeral::role::USER_SHOW}, QString()});
    QVERIFY(!m_screen->canShow());
    AuthData::set({"hr", 7, "s", QString(), {zeral::role::WORKER_SHOW}, QString()});
    QVERIFY(m_screen->canShow());
    AuthData::clear();
}

void TestEmployeesScreen::treeFollowsTheStore()
{
    ObjectTreeModel *model = m_screen->model();
    QVERIFY(!model->contains(1)); // the organisation's root: the firms are the top
    QCOMPARE(model->rowCount(), 1);
    QCOMPARE(parentOf(20), TYPE_ID(10));
    QCOMPARE(parentOf(100), TYPE_ID(20));
    const auto iconOf = [model](TYPE_ID uid) {
        return model->indexForUid(uid).data(Qt::DecorationRole).value<QIcon>().name();
    };
    QCOMPARE(iconOf(100), QStringLiteral("object-OT_WORKER"));
    QCOMPARE(iconOf(101), QStringLiteral("object-OT_WORKER-d"));

    // A new employee, a transfer with dismissal, a return to work, removals.
    auto *store = zeral::LocalStorage::instance();
    store->applyChanged(subjects, {worker(104, "Орлова", 21), worker(100, "Иванова", 21, 0, true),
                                   worker(101, "Петрова", 20)});
    QCOMPARE(parentOf(104), TYPE_ID(21));
    QCOMPARE(parentOf(100), TYPE_ID(21));
    QCOMPARE(iconOf(100), QStringLiteral("object-OT_WORKER-d"));
    QCOMPARE(iconOf(101), QStringLiteral("object-OT_WORKER"));
    store->applyRemoved(subjects, {102});
    store->applyRemoved(zeral::ORGSTRUCTURE_DATANAME, {21});
    QVERIFY(!model->contains(102) && !model->contains(21));
    store->applyChanged(zeral::USER_DATANAME, {testing::makeUser(600, "x")});
    QVERIFY(!model->contains(600));
}

void TestEmployeesScreen::searchNarrows_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<Uids>("shown");
    const Uids everything{10, 20, 21, 100, 101, 102, 103};
    QTest::addRow("empty: everything") << QString() << everything;
    QTest::addRow("surname, with the path") << "иванова" << Uids{10, 20, 100};
    QTest::addRow("first name") << "Анна" << everything;
    QTest::addRow("personnel number") << "000102" << Uids{10, 21, 102};
    QTest::addRow("a department's name finds no one") << "Бухгалтерия" << Uids{};
    QTest::addRow("nobody") << "Кузнецов" << Uids{};
}

void TestEmployeesScreen::searchNarrows()
{
    QFETCH(QString, text);
    QFETCH(Uids, shown);
    emit m_screen->searchWidget()->startSearch("Петрова");
    QCOMPARE(visibleUids(m_screen->proxy()), (Uids{10, 20, 101}));
    emit m_screen->searchWidget()->startSearch(text);
    QCOMPARE(visibleUids(m_screen->proxy()), shown);
    if (!text.isEmpty() && !shown.isEmpty()) // the path to a match is opened
        QVERIFY(m_screen->view()->isExpanded(m_screen->proxy()->indexForUid(shown.at(1))));
}

void TestEmployeesScreen::actionsFollowSelection_data()
{
    QTest::addColumn<Uids>("selected");
    QTest::addColumn<bool>("create");
    QTest::addColumn<bool>("properties");
    QTest::addColumn<TYPE_ID>("card");
    QTest::addRow("nothing") << Uids{} << false << false << TYPE_ID(0);
    QTest::addRow("employee without account") << Uids{100} << true << false << TYPE_ID(100);
    QTest::addRow("employee with account") << Uids{102} << true << true << TYPE_ID(102);
    QTest::addRow("two, one with account") << Uids{100, 102} << true << false << TYPE_ID(0);
    QTest::addRow("two, the first with account") << Uids{103, 102} << true << false << TYPE_ID(0);
    QTest::addRow("a department") << Uids{21} << false << false << TYPE_ID(0);
    QTest::addRow("department and employee") << Uids{21, 102} << true << true << TYPE_ID(102);
}

void TestEmployeesScreen::actionsFollowSelection()
{
    QFETCH(Uids, selected);
    QFETCH(bool, create);
    QFETCH(bool, properties);
    QFETCH(TYPE_ID, card);
    select(selected);
    QCOMPARE(m_screen->createMobileUsersAction()->isEnabled(), create);
    QCOMPARE(m_screen->mobileUserAction()->isEnabled(), properties);
    QCOMPARE(m_screen->card()->employee(), card);

    // An account linked later enables the action at once.
    select({100});
    zeral::LocalStorage::instance()->applyChanged(subjects, {worker(100, "Иванова", 20, 501)});
    QVERIFY(m_screen->mobileUserAction()->isEnabled());
}

void TestEmployeesScreen::actionsReachTheUsersScreen()
{
    // Without the users screen the command goes to the server, which doesn't know it.
    const QString wizards = proto::studio::ShowMobileUserWizards;
    const QString properties = proto::studio::ShowMobileUserProperties;
    m_server->script(properties, [](const Command &request) {
        return Command::failure(request, proto::StatusNotFound, "Нет такой команды");
    });
    select({102});
    m_screen->mobileUserAction()->trigger();
    QTRY_COMPARE(m_screen->popups().size(), 1);
    QCOMPARE(m_screen->popups().first()->messageIcon(), MessageWidget::Critical);
    QVERIFY(m_screen->popups().first()->text().contains("Экран пользователей недоступен"));

    TestPlugin usersScreen;
    QList<Command> received;
    for (const QString &name : {wizards, properties}) {
        usersScreen.registerCommandHandler({proto::NamedCommand, name}, [&](Command &command) {
            received.append(command);
            command.status = proto::StatusOk;
        });
    }
    m_server->registerPlugin(&usersScreen,
                             {{proto::NamedCommand, wizards}, {proto::NamedCommand, properties}});
    m_server->clearSent();
    QVERIFY(m_screen->card()->toPlainText().contains("sidorova"));
    m_screen->mobileUserAction()->trigger();
    select({102, 21, 100});
    m_screen->createMobileUsersAction()->trigger();
    QTRY_COMPARE(received.size(), 2);
    QCOMPARE(received.at(0).name, properties);
    QCOMPARE(received.at(0).data, ZRDataStream::pack(qint32(500)));
    QCOMPARE(received.at(1).name, wizards);
    QCOMPARE(received.at(1).data, ZRDataStream::pack(QList<unsigned int>{100, 102}));
    QVERIFY(m_server->sent().isEmpty()); // handled inside the studio
    QCOMPARE(m_screen->popups().size(), 1);
}

QTEST_MAIN(TestEmployeesScreen)
#include "tst_employeesscreen.moc"
