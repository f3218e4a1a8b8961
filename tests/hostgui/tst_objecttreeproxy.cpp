#include <host/gui/models/itemroles.h>
#include <host/gui/models/objecttreemodel.h>
#include <host/gui/models/objecttreeproxy.h>
#include <host/gui/models/placingmodelproxy.h>
#include <tests/support/builders.h>
#include <tests/support/modeldump.h>

#include <QAbstractItemModelTester>
#include <QtTest>

using zeral::ObjectInfo;
using zeral::TYPE_ID;

namespace {

ObjectInfo object(TYPE_ID uid, const char *type, TYPE_ID parent, const QString &name,
                  QHash<QString, QString> parameters = {})
{
    parameters.insert(QStringLiteral("PT_NAME"), name);
    return testing::makeObject(uid, QString::fromLatin1(type), parameters, parent);
}

ObjectInfo worker(TYPE_ID uid, TYPE_ID parent, const QString &surname, const QString &name,
                  QHash<QString, QString> parameters = {})
{
    parameters.insert(QStringLiteral("PT_SURNAME"), surname);
    return object(uid, "OT_WORKER", parent, name, parameters);
}

// An organisation: root 1, firm 2, departments "Отдел" 3 and "Бюро" 4, three employees.
QList<ObjectInfo> organisation()
{
    return {object(1, "OT_SUBJECTROOT", 0, "Корень"),
            object(2, "OT_FIRM", 1, "Фирма"),
            object(3, "OT_DEPARTMENT", 2, "Отдел"),
            object(4, "OT_DEPARTMENT", 2, "Бюро"),
            worker(10, 3, "Иванов", "Пётр", {{"PT_EMAIL", "piotr@example.org"}}),
            worker(11, 3, "Петров", "Иван"),
            worker(12, 4, "Сидорова", "Анна", {{"PT_HIDDEN", "true"}})};
}

// The visible tree as "uid[children]", in the proxy's order.

template<class Set>
QString joined(const Set &uids)
{
    QList<TYPE_ID> list(uids.cbegin(), uids.cend());
    std::sort(list.begin(), list.end());
    QStringList texts;
    for (TYPE_ID uid : list)
        texts << QString::number(uid);
    return texts.join(QLatin1Char(','));
}

QSet<TYPE_ID> uidSet(const QString &text)
{
    QSet<TYPE_ID> uids;
    for (const QString &part : text.split(QLatin1Char(','), Qt::SkipEmptyParts))
        uids.insert(part.toUInt());
    return uids;
}

// Applies a step written as "name:argument" to the proxy.
void apply(ObjectTreeProxy &proxy, const QString &step)
{
    const QString name = step.section(QLatin1Char(':'), 0, 0);
    const QString argument = step.section(QLatin1Char(':'), 1);
    const QStringList list = argument.split(QLatin1Char(','), Qt::SkipEmptyParts);
    if (name == "text")
        proxy.setFilter(argument);
    else if (name == "words")
        proxy.setSearchByWordsEnabled(true);
    else if (name == "index")
        proxy.setSearchIndex(argument);
    else if (name == "types")
        proxy.setObjectTypeFilter(list);
    else if (name == "uids")
        proxy.setFilterUids(uidSet(argument));
    else if (name == "hidden")
        proxy.addParameterFilter("PT_HIDDEN", {"true"},
                                 ObjectTreeProxy::FilterType(argument.toInt()));
    else if (name == "auto")
        proxy.setAutoCheckChildren(argument != "off");
    else if (name == "partial")
        proxy.setPartiallyCheckEnabled(true);
    else if (name == "checkable")
        proxy.setCheckableObjectTypes(list);
    else if (name == "set")
        proxy.setChecked(uidSet(argument));
    else if (name == "checkAll")
        proxy.checkAll();
    else if (name == "uncheckAll")
        proxy.uncheckAll();
    else if (name == "click" || name == "unclick")
        QVERIFY(proxy.setData(proxy.indexForUid(argument.toUInt()),
                              name == "click" ? Qt::Checked : Qt::Unchecked, Qt::CheckStateRole));
    else
        QFAIL(qPrintable("unknown step " + step));
}

QString states(const ObjectTreeProxy &proxy, const QList<TYPE_ID> &uids)
{
    QStringList texts;
    for (TYPE_ID uid : uids) {
        const QModelIndex index = proxy.indexForUid(uid);
        // A row that shows must show what the proxy holds.
        if (index.isValid() && proxy.isCheckable(uid))
            QTest::qCompare(index.data(Qt::CheckStateRole).toInt(), int(proxy.checkState(uid)),
                            "shown", "held", __FILE__, __LINE__);
        texts << (proxy.isCheckable(uid) ? QString::number(proxy.checkState(uid))
                                         : QStringLiteral("-"));
    }
    return texts.join(QLatin1Char(' '));
}

} // namespace

class TestObjectTreeProxy : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void filters_data();
    void filters();
    void checks_data();
    void checks();
    void sortsByName_data();
    void sortsByName();
    void followsTheModel();
    void checksFollowTheModel_data();
    void checksFollowTheModel();
    void placingKeepsContainers();

private:
    ObjectTreeModel *m_model = nullptr;
    ObjectTreeProxy *m_proxy = nullptr;
    QAbstractItemModelTester *m_tester = nullptr;
};

void TestObjectTreeProxy::init()
{
    m_model = new ObjectTreeModel(this);
    m_model->add(organisation());
    m_proxy = new ObjectTreeProxy(this);
    m_proxy->setSourceModel(m_model);
    m_proxy->setSortRole(ItemRoles::SortText);
    m_proxy->setSortCaseSensitivity(Qt::CaseInsensitive);
    m_proxy->sort(0);
    m_proxy->setSearchEnabled(true);
    m_tester = new QAbstractItemModelTester(m_proxy,
                                            QAbstractItemModelTester::FailureReportingMode::QtTest);
}

void TestObjectTreeProxy::cleanup()
{
    delete m_tester;
    delete m_proxy;
    delete m_model;
}

void TestObjectTreeProxy::filters_data()
{
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QString>("visible");
    QTest::addColumn<QString>("result");
    QTest::addRow("nothing set, sorted by name") << QStringList{} << "1[2[4[12],3[10,11]]]"
                                                 << "1,2,3,4,10,11,12";
    QTest::addRow("a match keeps its parents") << QStringList{"text:иванов"} << "1[2[3[10]]]"
                                               << "10";
    QTest::addRow("case does not matter") << QStringList{"text:ИВАН"} << "1[2[3[10,11]]]"
                                          << "10,11";
    QTest::addRow("whole text in one piece") << QStringList{"text:анна сидорова"} << ""
                                             << "";
    QTest::addRow("separate words") << QStringList{"words", "text:анна  сидорова"} << "1[2[4[12]]]"
                                    << "12";
    QTest::addRow("a matching parent without matching children")
        << QStringList{"text:бюро"} << "1[2[4]]"
        << "4";
    QTest::addRow("types") << QStringList{"types:OT_SUBJECTROOT,OT_FIRM,OT_DEPARTMENT"}
                           << "1[2[4,3]]"
                           << "1,2,3,4";
    QTest::addRow("a match of a type not shown keeps nothing")
        << QStringList{"types:OT_SUBJECTROOT,OT_FIRM,OT_DEPARTMENT", "text:иванов"} << ""
        << "";
    QTest::addRow("uids") << QStringList{"uids:1,2,4,12"} << "1[2[4[12]]]"
                          << "1,2,4,12";
    QTest::addRow("parameter must not match") << QStringList{"hidden:1"} << "1[2[4,3[10,11]]]"
                                              << "1,2,3,4,10,11";
    QTest::addRow("parameter must match") << QStringList{"hidden:0"} << ""
                                          << "12";
    QTest::addRow("role text has no e-mail") << QStringList{"text:piotr@"} << ""
                                             << "";
    QTest::addRow("index has the e-mail")
        << QStringList{"index:orgstructure", "text:piotr@"} << "1[2[3[10]]]"
        << "10";
    QTest::addRow("cleared text") << QStringList{"text:иванов", "text:  "} << "1[2[4[12],3[10,11]]]"
                                  << "1,2,3,4,10,11,12";
}

void TestObjectTreeProxy::filters()
{
    QFETCH(QStringList, steps);
    QFETCH(QString, visible);
    QFETCH(QString, result);
    for (const QString &step : steps)
        apply(*m_proxy, step);
    QCOMPARE(testing::dumpTree(*m_proxy), visible);
    QCOMPARE(joined(m_proxy->filterResult()), result);
}

void TestObjectTreeProxy::sortsByName_data()
{
    QTest::addColumn<QStringList>("names"); // of uids 101, 102, ...
    QTest::addColumn<QString>("order");
    QTest::addRow("first letters") << QStringList{"Борис", "Анна", "Вера"} << "102,101,103";
    QTest::addRow("alike in four letters, apart later")
        << QStringList{"Иванова", "Иванов", "Иванович", "Ивановский"} << "102,101,103,104";
    QTest::addRow("alike in eight letters, apart later")
        << QStringList{"petrovsky.b", "petrovsky", "petrovsky.a", "petrovskaya"}
        << "104,102,103,101";
    QTest::addRow("shorter than four letters")
        << QStringList{"Яна", "Ян", "Я", "Яков"} << "103,104,102,101";
    QTest::addRow("case is ignored, the uid decides a tie")
        << QStringList{"анна", "АННА", "Анна", "анн"} << "104,101,102,103";
    QTest::addRow("ё after я, Latin before Cyrillic")
        << QStringList{"Ёлкин", "Яшин", "Ершов", "Zorin"} << "104,103,102,101";
    QTest::addRow("a surrogate pair between the planes' code units")
        << QStringList{QString::fromUtf8("\xF0\x9F\x98\x80x"), QString::fromUtf8("\xEF\xBD\x81"),
                       "z"}
        << "103,101,102";
    QTest::addRow("a NUL inside the first four")
        << QStringList{QString("ab") + QChar(0) + "c", "ab", QString("ab") + QChar(0)}
        << "102,103,101";
    QTest::addRow("a NUL inside the second four")
        << QStringList{QString("abcdef") + QChar(0) + "c", "abcdef", QString("abcdef") + QChar(0)}
        << "102,103,101";
}

void TestObjectTreeProxy::sortsByName()
{
    QFETCH(QStringList, names);
    QFETCH(QString, order);
    QList<ObjectInfo> objects;
    for (int i = 0; i < names.size(); ++i)
        objects << object(101 + TYPE_ID(i), "OT_DEPARTMENT", 0, names.at(i));
    ObjectTreeModel model;
    model.add(objects);
    ObjectTreeProxy proxy;
    proxy.setSourceModel(&model);
    proxy.setSortRole(ItemRoles::SortText);
    proxy.setSortCaseSensitivity(Qt::CaseInsensitive);
    proxy.sort(0);
    QAbstractItemModelTester tester(&proxy, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QStringList uids;
    for (int row = 0; row < proxy.rowCount(); ++row)
        uids << QString::number(model.uidForIndex(proxy.mapToSource(proxy.index(row, 0))));
    QCOMPARE(uids.join(QLatin1Char(',')), order);
}

void TestObjectTreeProxy::checks_data()
{
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QString>("checked");
    QTest::addColumn<QString>("states"); // of 1, 2, 3, 10; 0 unchecked, 1 partly, 2 checked
    const QString departments = "types:OT_SUBJECTROOT,OT_FIRM,OT_DEPARTMENT";
    QTest::addRow("a click checks the visible rows below")
        << QStringList{departments, "partial", "auto", "click:2"} << "2,3,4"
        << "1 2 2 0";
    QTest::addRow("without auto-check only the row")
        << QStringList{departments, "partial", "click:2"} << "2"
        << "1 2 0 0";
    QTest::addRow("without partial checking parents stay unchecked")
        << QStringList{"click:10"} << "10"
        << "0 0 0 2";
    QTest::addRow("unchecking clears below, hidden rows too")
        << QStringList{departments, "set:2,3,10", "auto", "unclick:2"} << ""
        << "0 0 0 0";
    QTest::addRow("set replaces, drops unknown uids")
        << QStringList{"set:1,2", "partial", "set:3,999"} << "3"
        << "1 1 2 0";
    QTest::addRow("set with auto-check takes the rows below")
        << QStringList{"auto", "set:3"} << "3,10,11"
        << "0 0 2 2";
    QTest::addRow("checkable types only")
        << QStringList{"checkable:OT_WORKER", "partial", "set:3,10,11"} << "10,11"
        << "- - - 2";
    QTest::addRow("check all reaches only what shows")
        << QStringList{"text:иванов", "checkAll"} << "1,2,3,10"
        << "2 2 2 2";
    QTest::addRow("uncheck all reaches hidden rows")
        << QStringList{"set:10,12", "text:анна", "uncheckAll"} << ""
        << "0 0 0 0";
}

void TestObjectTreeProxy::checks()
{
    QFETCH(QStringList, steps);
    QFETCH(QString, checked);
    QFETCH(QString, states);
    m_proxy->setCheckable(true);
    for (const QString &step : steps)
        apply(*m_proxy, step);
    QCOMPARE(joined(m_proxy->checked()), checked);
    QCOMPARE(::states(*m_proxy, {1, 2, 3, 10}), states);
}

void TestObjectTreeProxy::followsTheModel()
{
    m_proxy->setCheckable(true);
    m_proxy->setPartiallyCheckEnabled(true);
    m_proxy->setFilter("иванов");
    QCOMPARE(testing::dumpTree(*m_proxy), QStringLiteral("1[2[3[10]]]"));

    m_model->add(worker(13, 4, "Иванова", "Ольга")); // a match under a hidden parent
    QCOMPARE(testing::dumpTree(*m_proxy), QStringLiteral("1[2[4[13],3[10]]]"));
    m_model->add(worker(13, 4, "Смирнова", "Ольга")); // no longer a match
    QCOMPARE(testing::dumpTree(*m_proxy), QStringLiteral("1[2[3[10]]]"));
    m_model->add(worker(20, 30, "Иванов", "Олег")); // before its department
    QCOMPARE(testing::dumpTree(*m_proxy), QStringLiteral("20,1[2[3[10]]]"));
    m_model->add(object(30, "OT_DEPARTMENT", 2, "Склад"));
    QCOMPARE(testing::dumpTree(*m_proxy), QStringLiteral("1[2[3[10],30[20]]]"));
    QCOMPARE(joined(m_proxy->filterResult()), QStringLiteral("10,20"));

    m_proxy->setChecked({10, 20});
    QCOMPARE(m_proxy->checkState(3), Qt::PartiallyChecked);
    m_model->remove(10);
    QCOMPARE(testing::dumpTree(*m_proxy), QStringLiteral("1[2[30[20]]]"));
    QCOMPARE(joined(m_proxy->checked()), QStringLiteral("20"));
    QCOMPARE(m_proxy->checkState(3), Qt::Unchecked);
    QCOMPARE(m_proxy->checkState(2), Qt::PartiallyChecked);

    m_proxy->clearFilter();
    QCOMPARE(testing::dumpTree(*m_proxy), QStringLiteral("1[2[4[12,13],3[11],30[20]]]"));
}

void TestObjectTreeProxy::checksFollowTheModel_data()
{
    QTest::addColumn<QString>("step");
    QTest::addColumn<QString>("checked");
    QTest::addColumn<QString>("states"); // of 3, 4 and 10
    QTest::addRow("moved to another parent") << "move:4"
                                             << "10"
                                             << "0 1 2";
    QTest::addRow("moved to a parent not yet there") << "move:99"
                                                     << "10"
                                                     << "0 0 2";
    QTest::addRow("parent removed") << "remove:3"
                                    << "10"
                                    << "- 0 2";
    QTest::addRow("model cleared") << "clear"
                                   << ""
                                   << "- - -";
    QTest::addRow("another model") << "other"
                                   << ""
                                   << "- - -";
}

// The tester attached in init() reads check states while a change is under way.
void TestObjectTreeProxy::checksFollowTheModel()
{
    QFETCH(QString, step);
    QFETCH(QString, checked);
    QFETCH(QString, states);
    m_proxy->setCheckable(true);
    m_proxy->setPartiallyCheckEnabled(true);
    m_proxy->setChecked({10});
    QCOMPARE(::states(*m_proxy, {3, 4, 10}), QStringLiteral("1 0 2"));
    QSignalSpy changed(m_proxy, &ObjectTreeProxy::checkedChanged);
    ObjectTreeModel other;
    if (step.startsWith("move:"))
        m_model->add(worker(10, step.mid(5).toUInt(), "Иванов", "Пётр"));
    else if (step == "remove:3")
        m_model->remove(3);
    else if (step == "clear")
        m_model->clear();
    else
        m_proxy->setSourceModel(&other);
    QCOMPARE(joined(m_proxy->checked()), checked);
    QCOMPARE(changed.count(), checked.isEmpty() ? 1 : 0);
    QCOMPARE(::states(*m_proxy, {3, 4, 10}), states);
}

void TestObjectTreeProxy::placingKeepsContainers()
{
    ObjectTreeModel model;
    model.add(QList<ObjectInfo>{
        object(1, "OT_PLACING", 0, "Здание"), object(2, "OT_PLACING", 1, "Этаж"),
        object(3, "OT_TERM_ZR_DESK", 2, "Пульт"), object(4, "OT_PLACING", 1, "Подвал"),
        object(5, "OT_TERM_ZR_NOVA_E", 1, "Турникет")});
    PlacingModelProxy proxy;
    QAbstractItemModelTester tester(&proxy, QAbstractItemModelTester::FailureReportingMode::QtTest);
    proxy.setSourceModel(&model);
    proxy.setObjectTypeFilter({"OT_TERM_ZR_DESK", "OT_TERM_ZR_NOVA_E"});
    proxy.setCheckableObjectTypes({"OT_TERM_ZR_DESK"});
    QCOMPARE(testing::dumpTree(proxy), QStringLiteral("1[2[3],5]"));
    proxy.setSearchEnabled(true);
    proxy.setFilter("турникет");
    QCOMPARE(testing::dumpTree(proxy), QStringLiteral("1[5]"));
    proxy.clearFilter();
    // Only the listed types carry a check box, and only in column 0.
    const QModelIndex desk = proxy.indexForUid(3);
    QVERIFY(proxy.flags(desk) & Qt::ItemIsUserCheckable);
    QVERIFY(!(proxy.flags(desk.siblingAtColumn(1)) & Qt::ItemIsUserCheckable));
    QVERIFY(!(proxy.flags(proxy.indexForUid(5)) & Qt::ItemIsUserCheckable));
    QVERIFY(!(proxy.flags(desk) & Qt::ItemIsEditable));
    proxy.checkAll();
    QCOMPARE(proxy.checked(), QSet<TYPE_ID>{3});
    QCOMPARE(proxy.checkState(1), Qt::PartiallyChecked);
}

QTEST_MAIN(TestObjectTreeProxy)
#include "tst_objecttreeproxy.moc"
