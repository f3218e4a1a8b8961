#include <host/gui/models/fastproxymodel.h>
#include <host/gui/models/fasttreemodel.h>

#include <tests/support/modeldump.h>

#include <QAbstractItemModelTester>
#include <QtTest>

namespace {

// Two groups of roles and one role on its own; a group given after its roles.
QVector<FastTreeModel::Item> catalogue()
{
    return {{"RL_USER_SHOW", "Просмотр пользователей", "G_USERS"},
            {"RL_USER_EDIT", "Изменение пользователей", "G_USERS"},
            {"G_USERS", "Пользователи", {}},
            {"G_REPORTS", "Отчеты", {}},
            {"RL_REPORT_SHOW", "Просмотр отчетов", "G_REPORTS"},
            {"RL_LOGIN", "Вход", {}}};
}

QString dump(const QAbstractItemModel &model)
{
    return testing::dumpTree(model, 1, true);
}

} // namespace

class TestFastModels : public QObject
{
    Q_OBJECT
private slots:
    void filters_data();
    void filters();
    void clickingAGroup();
};

void TestFastModels::filters_data()
{
    QTest::addColumn<QStringList>("checked");
    QTest::addColumn<bool>("stateFilter");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::addRow("nothing checked, no filter")
        << QStringList{} << false << ""
        << "G_USERS:0[RL_USER_SHOW:0,RL_USER_EDIT:0],G_REPORTS:0[RL_REPORT_SHOW:0],RL_LOGIN:0";
    QTest::addRow("partial and full groups")
        << QStringList{"RL_USER_SHOW", "RL_REPORT_SHOW"} << false << ""
        << "G_USERS:1[RL_USER_SHOW:2,RL_USER_EDIT:0],G_REPORTS:2[RL_REPORT_SHOW:2],RL_LOGIN:0";
    QTest::addRow("state filter keeps granted roles and their groups")
        << QStringList{"RL_USER_SHOW", "RL_REPORT_SHOW"} << true << ""
        << "G_USERS:1[RL_USER_SHOW:2],G_REPORTS:2[RL_REPORT_SHOW:2]";
    QTest::addRow("nothing checked under the state filter") << QStringList{} << true << ""
                                                            << "";
    QTest::addRow("text narrows the granted roles")
        << QStringList{"RL_USER_SHOW", "RL_REPORT_SHOW", "RL_LOGIN"} << true << "отчет"
        << "G_REPORTS:2[RL_REPORT_SHOW:2]";
    QTest::addRow("a group title finds its checked roles")
        << QStringList{"RL_USER_SHOW"} << true << "ПОЛЬЗОВАТЕЛИ"
        << "G_USERS:1[RL_USER_SHOW:2]";
    QTest::addRow("text alone") << QStringList{} << false << "просмотр пользователей"
                                << "G_USERS:0[RL_USER_SHOW:0]";
}

void TestFastModels::filters()
{
    QFETCH(QStringList, checked);
    QFETCH(bool, stateFilter);
    QFETCH(QString, text);
    QFETCH(QString, expected);
    FastTreeModel model;
    FastProxyModel proxy;
    QAbstractItemModelTester tester(&proxy, QAbstractItemModelTester::FailureReportingMode::QtTest);
    proxy.setSourceModel(&model);
    proxy.setCheckable(true);
    proxy.setPartiallyCheckEnabled(true);
    proxy.setSearchEnabled(true);
    proxy.setSortRole(259);
    proxy.sort(0);
    model.setItems(catalogue());
    if (stateFilter)
        proxy.setCheckStateFilter({Qt::Checked, Qt::PartiallyChecked});
    proxy.setChecked(checked);
    proxy.setFilter(text);
    QCOMPARE(dump(proxy), expected);
    proxy.clearFilter();
    proxy.clearCheckStateFilter();
    QCOMPARE(proxy.rowCount(), 3);
}

void TestFastModels::clickingAGroup()
{
    FastTreeModel model;
    model.setItems(catalogue());
    FastProxyModel proxy;
    QAbstractItemModelTester tester(&proxy, QAbstractItemModelTester::FailureReportingMode::QtTest);
    proxy.setSourceModel(&model);
    proxy.setCheckable(true);
    proxy.setPartiallyCheckEnabled(true);
    QSignalSpy changed(&proxy, &FastProxyModel::checkedChanged);
    const QModelIndex users = proxy.mapFromSource(model.indexForKey("G_USERS"));
    QVERIFY(proxy.setData(users, Qt::Checked, Qt::CheckStateRole));
    QCOMPARE(proxy.checked(), (QStringList{"G_USERS", "RL_USER_EDIT", "RL_USER_SHOW"}));
    QCOMPARE(users.data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
    QVERIFY(proxy.setData(proxy.index(0, 0, users), Qt::Unchecked, Qt::CheckStateRole));
    QCOMPARE(users.data(Qt::CheckStateRole).toInt(), int(Qt::PartiallyChecked));
    QCOMPARE(changed.count(), 2);
    // The checks live by key, so a new catalogue keeps them.
    model.setItems(catalogue());
    QCOMPARE(proxy.mapFromSource(model.indexForKey("G_USERS")).data(Qt::CheckStateRole).toInt(),
             int(Qt::PartiallyChecked));
    // A tree that only shows roles: its checks are drawn, nothing can be clicked, yet the
    // program still sets checks.
    proxy.setDisabledAll(true);
    const QModelIndex login = proxy.mapFromSource(model.indexForKey("RL_LOGIN"));
    QCOMPARE(proxy.flags(login) & (Qt::ItemIsEnabled | Qt::ItemIsUserCheckable),
             Qt::ItemIsUserCheckable);
    QVERIFY(!proxy.setData(login, Qt::Checked, Qt::CheckStateRole));
    proxy.setChecked({"RL_LOGIN"});
    QCOMPARE(login.data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
}

QTEST_MAIN(TestFastModels)
#include "tst_fastmodels.moc"
