#include <host/gui/models/objecttreemodel.h>
#include <src/userfilterproxymodel.h>
#include <tests/support/builders.h>
#include <tests/support/modeldump.h>

#include <QAbstractItemModelTester>
#include <QtTest>

using Filter = ObjectTreeProxy::FilterType;

class TestUserFilterProxyModel : public QObject
{
    Q_OBJECT
    ObjectTreeModel source;
    zeral::ROLETEMPLATES_HASH table;
    // Users 1 to 6 by template; 5 has none, 6 one that the table doesn't know.
    const QStringList ids{"RT_MOBILE", "RT_MOBILE_CHIEF", "RT_SUPERVISOR", "RT_OPERATOR", "", "X"};

private slots:
    void initTestCase()
    {
        const QList<QStringList> roles{{"RL_MOBILE_LOGIN"},
                                       {"RL_MOBILE_LOGIN", "RL_USER_SHOW"},
                                       {"RL_USER_CREATE", "RL_MOBILE_LOGIN"},
                                       {"RL_USER_SHOW"}};
        for (int i = 0; i < ids.size(); ++i) {
            zeral::ObjectInfo user = testing::makeUser(i + 1, "login");
            if (!ids[i].isEmpty())
                user.parameters.insert("PT_ROLETEMPLATE", ids[i]);
            source.add(user);
            if (i < roles.size())
                table.insert(ids[i], {ids[i], {}, {}, false, roles[i], {}});
        }
    }

    void filters_data()
    {
        QTest::addColumn<QStringList>("roles");
        QTest::addColumn<int>("roleMode");
        QTest::addColumn<QStringList>("ids");
        QTest::addColumn<int>("idMode");
        QTest::addColumn<QString>("shown");
        const QStringList none, login{"RL_MOBILE_LOGIN"}, mobile{"RT_MOBILE", "RT_MOBILE_CHIEF"};
        QTest::addRow("both off, whatever the mode") << none << 1 << none << 1 << "1,2,3,4,5,6";
        QTest::addRow("users tab") << none << 0 << mobile << 1 << "3,4,5,6";
        QTest::addRow("mobile tab") << login << 0 << QStringList{"RT_SUPERVISOR"} << 1 << "1,2";
        QTest::addRow("no common role") << login << 1 << none << 0 << "4,5,6";
        QTest::addRow("role filter refuses first") << login << 1 << mobile << 0 << "";
        QTest::addRow("unknown modes") << login << 2 << none << 0 << "";
        QTest::addRow("empty id passes mode 1")
            << none << 0 << QStringList(ids.mid(0, 4)) << 1 << "5,6";
    }

    void filters()
    {
        QFETCH(QStringList, roles);
        QFETCH(int, roleMode);
        QFETCH(QStringList, ids);
        QFETCH(int, idMode);
        UserFilterProxyModel proxy(nullptr);
        QAbstractItemModelTester tester(&proxy,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        proxy.setSourceModel(&source);
        proxy.setFilterByRoleList(roles, Filter(roleMode));
        proxy.setFilterByRoleTemplateList(ids, Filter(idMode));
        // The role filter sees no roles until the table comes, and filters anew when it does.
        if (!roles.isEmpty() && roleMode == 0)
            QCOMPARE(testing::dumpTree(proxy), QString());
        proxy.setRoleTemplates(table);
        QTEST(testing::dumpTree(proxy), "shown");
    }
};

QTEST_MAIN(TestUserFilterProxyModel)
#include "tst_userfilterproxymodel.moc"
