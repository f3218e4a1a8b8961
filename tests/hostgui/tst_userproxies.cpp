#include <host/gui/models/objecttreemodel.h>
#include <host/gui/models/userproxymodel.h>
#include <tests/support/builders.h>

#include <QAbstractItemModelTester>
#include <QtTest>

using zeral::ObjectInfo;
using zeral::TYPE_ID;

namespace {

ObjectInfo user(TYPE_ID uid, const QString &login, const QString &roleTemplate)
{
    ObjectInfo object = testing::makeUser(uid, login);
    if (!roleTemplate.isEmpty())
        object.parameters.insert(QStringLiteral("PT_ROLETEMPLATE"), roleTemplate);
    return object;
}

QString logins(const QAbstractItemModel &model)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts << model.index(row, 0).data(258).toString();
    return texts.join(QLatin1Char(','));
}

// The proxy over the model, sorted by login as the user lists are.
void showSorted(UserProxyModel &proxy, ObjectTreeModel &model)
{
    proxy.setSourceModel(&model);
    proxy.setSortRole(258);
    proxy.sort(0);
}

} // namespace

class TestUserProxies : public QObject
{
    Q_OBJECT
private slots:
    void templateFilter_data();
    void templateFilter();
    void followsTemplateChanges();
    void refiltersOnlyForAChangedAnswer_data();
    void refiltersOnlyForAChangedAnswer();
};

void TestUserProxies::templateFilter_data()
{
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<QStringList>("templates"); // "-" for no list given yet
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const QStringList none{"-"};
    QTest::addRow("filter off") << false << QStringList{"RT_X"} << ""
                                << "admin,anna,boris,nobody,root";
    QTest::addRow("before the list arrives") << true << none << ""
                                             << "admin,anna,boris,nobody,root";
    QTest::addRow("listed templates and the operator") << true << QStringList{"RT_OPERATOR"} << ""
                                                       << "admin,anna,boris";
    QTest::addRow("empty list leaves the operator") << true << QStringList{} << ""
                                                    << "admin";
    QTest::addRow("text filter still applies to the operator")
        << true << QStringList{"RT_OPERATOR"} << "bor"
        << "boris";
    QTest::addRow("users without a template are out")
        << true << QStringList{"RT_OPERATOR", "RT_SUPERVISOR"} << ""
        << "admin,anna,boris,root";
}

void TestUserProxies::templateFilter()
{
    QFETCH(bool, enabled);
    QFETCH(QStringList, templates);
    QFETCH(QString, text);
    QFETCH(QString, expected);
    ObjectTreeModel model;
    model.add(QList<ObjectInfo>{user(1, "root", "RT_SUPERVISOR"), user(2, "admin", "RT_ADMIN"),
                                user(3, "boris", "RT_OPERATOR"), user(4, "anna", "RT_OPERATOR"),
                                user(5, "nobody", "")});
    UserProxyModel proxy;
    QAbstractItemModelTester tester(&proxy, QAbstractItemModelTester::FailureReportingMode::QtTest);
    showSorted(proxy, model);
    proxy.setSearchEnabled(true);
    proxy.setCurrentUserUid(2);
    proxy.setRoletemplateFilterEnabled(enabled);
    if (templates != QStringList{"-"})
        proxy.setRoletemplateFilter(templates);
    proxy.setFilter(text);
    QCOMPARE(logins(proxy), expected);
}

void TestUserProxies::followsTemplateChanges()
{
    ObjectTreeModel model;
    model.add(QList<ObjectInfo>{user(3, "boris", "RT_OPERATOR"), user(4, "anna", "RT_MOBILE")});
    UserProxyModel proxy;
    QAbstractItemModelTester tester(&proxy, QAbstractItemModelTester::FailureReportingMode::QtTest);
    proxy.setSourceModel(&model);
    proxy.setRoletemplateFilterEnabled(true);
    proxy.setRoletemplateFilter({"RT_OPERATOR"});
    QCOMPARE(logins(proxy), QStringLiteral("boris"));
    model.add(user(4, "anna", "RT_OPERATOR"));
    QCOMPARE(proxy.rowCount(), 2);
    model.add(user(3, "boris", "RT_MOBILE"));
    QCOMPARE(logins(proxy), QStringLiteral("anna"));
    model.remove(4);
    QCOMPARE(proxy.rowCount(), 0);

    // Another parameter coded in the source: the template is read from each object.
    model.setCodedParameter("PT_LOGIN");
    model.add(user(5, "vera", "RT_CHIEF"));
    proxy.setRoletemplateFilter({"RT_MOBILE", "RT_CHIEF"});
    QCOMPARE(logins(proxy), QStringLiteral("boris,vera"));
    proxy.setRoletemplateFilter({"RT_MOBILE"});
    QCOMPARE(logins(proxy), QStringLiteral("boris"));
}

void TestUserProxies::refiltersOnlyForAChangedAnswer_data()
{
    QTest::addColumn<QStringList>("templates");
    QTest::addColumn<bool>("refiltered");
    QTest::addColumn<QString>("expected");
    QTest::addRow("a template nobody has")
        << QStringList{"RT_OPERATOR", "RT_MOBILE", "RT_X"} << false << "anna,boris";
    QTest::addRow("a listed template dropped") << QStringList{"RT_OPERATOR"} << true << "boris";
    QTest::addRow("a template of a hidden user added")
        << QStringList{"RT_OPERATOR", "RT_MOBILE", "RT_SUPERVISOR"} << true << "anna,boris,root";
}

// The answers are kept per template: a new list that changes none of them leaves every row
// as it is, without filtering and sorting the whole list again.
void TestUserProxies::refiltersOnlyForAChangedAnswer()
{
    QFETCH(QStringList, templates);
    QFETCH(bool, refiltered);
    QFETCH(QString, expected);
    ObjectTreeModel model;
    model.add(QList<ObjectInfo>{user(1, "root", "RT_SUPERVISOR"), user(3, "boris", "RT_OPERATOR"),
                                user(4, "anna", "RT_MOBILE")});
    UserProxyModel proxy;
    QAbstractItemModelTester tester(&proxy, QAbstractItemModelTester::FailureReportingMode::QtTest);
    showSorted(proxy, model);
    proxy.setRoletemplateFilterEnabled(true);
    proxy.setRoletemplateFilter({"RT_OPERATOR", "RT_MOBILE"});
    QCOMPARE(logins(proxy), QStringLiteral("anna,boris"));
    QSignalSpy layouts(&proxy, &QAbstractItemModel::layoutChanged);
    proxy.setRoletemplateFilter(templates);
    QCOMPARE(!layouts.isEmpty(), refiltered);
    QCOMPARE(logins(proxy), expected);
    QCOMPARE(proxy.acceptsUid(1), expected.contains("root"));
}

QTEST_MAIN(TestUserProxies)
#include "tst_userproxies.moc"
