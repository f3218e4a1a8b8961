// The first page of the new-mobile-users wizard: which employees the tree shows, which can be
// chosen, what "user/uids" then holds, the wizard opened on given employees, and the pages a
// mobile employee and a mobile chief pass.
#include "mobilewizardfixture.h"

#include <src/emailsubjectproxymodel.h>

#include <host/gui/models/itemroles.h>
#include <host/gui/widgets/searchwidget.h>
#include <host/gui/widgets/zrguiglobals.h>

#include <QAbstractItemModelTester>
#include <QCheckBox>
#include <QRadioButton>
#include <QToolButton>
#include <QTreeView>

using namespace mobilefixture;

namespace {

QSet<unsigned int> fieldUids(const QWizard *wizard)
{
    QSet<unsigned int> uids;
    for (const QVariant &uid : wizard->field(QStringLiteral("user/uids")).toList())
        uids.insert(uid.toUInt());
    return uids;
}

} // namespace

struct SelectPageRun
{
    SelectPageRun()
    {
        fillStore();
        wizard = new NewMobileUserWizard;
        page = wizard->selectPage();
        proxy = page->proxy();
        tester.reset(new QAbstractItemModelTester(
            proxy, QAbstractItemModelTester::FailureReportingMode::QtTest));
    }
    ~SelectPageRun()
    {
        tester.reset();
        delete wizard;
    }
    void show()
    {
        wizard->show();
        QVERIFY(QTest::qWaitForWindowExposed(wizard));
        // The first filling is queued until the wizard stands.
        QTRY_COMPARE(page->findChild<QTreeView *>("treeView")->rootIndex(), proxy->index(0, 0));
    }
    bool shown(TYPE_ID uid) const { return proxy->indexForUid(uid).isValid(); }
    bool enabled(TYPE_ID uid) const
    {
        return proxy->flags(proxy->indexForUid(uid)).testFlag(Qt::ItemIsEnabled);
    }
    template<class Widget>
    Widget *child(const char *name) const
    {
        return page->findChild<Widget *>(QLatin1String(name));
    }

    QPointer<NewMobileUserWizard> wizard;
    MobileUserSelectWizardPage *page;
    EmailSubjectProxyModel *proxy;
    std::unique_ptr<QAbstractItemModelTester> tester;
};

class TestMobileUserSelect : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { zeral::LocalStorage::instance()->clear(); }

    void rows_data()
    {
        QTest::addColumn<TYPE_ID>("uid");
        QTest::addColumn<bool>("shownAtStart");
        QTest::addColumn<bool>("shownWithoutEmail"); // with cbShowWithoutEmail on
        QTest::addColumn<bool>("enabled");
        QTest::addRow("nested employee") << TYPE_ID(Ivanov) << true << true << true;
        QTest::addRow("employee") << TYPE_ID(Petrov) << true << true << true;
        QTest::addRow("no address") << TYPE_ID(Sidorov) << false << true << false;
        QTest::addRow("address of blanks") << TYPE_ID(Blank) << true << true << false;
        QTest::addRow("has an account") << TYPE_ID(Linked) << true << true << false;
        QTest::addRow("nobody in Stock") << TYPE_ID(Storeman) << false << true << false;
        QTest::addRow("department of nobody") << TYPE_ID(Stock) << false << true << true;
        QTest::addRow("department of one nested") << TYPE_ID(SalesEast) << true << true << true;
        QTest::addRow("firm") << TYPE_ID(Firm) << true << true << true;
    }
    void rows()
    {
        QFETCH(TYPE_ID, uid);
        QFETCH(bool, shownAtStart);
        QFETCH(bool, shownWithoutEmail);
        QFETCH(bool, enabled);
        SelectPageRun run;
        run.show();
        auto *showAll = run.child<QCheckBox>("cbShowWithoutEmail");
        QVERIFY(!showAll->isChecked());
        QVERIFY(!run.proxy->isSubjectWithoutEmailVisible());
        QCOMPARE(run.shown(uid), shownAtStart);
        showAll->setChecked(true);
        QCOMPARE(run.shown(uid), shownWithoutEmail);
        QCOMPARE(run.enabled(uid), enabled);
        const QModelIndex row = run.proxy->indexForUid(uid);
        const QVariant foreground = row.data(Qt::ForegroundRole);
        QCOMPARE(foreground == QVariant(ZRGuiGlobals::grey()), !enabled);
        // The e-mail column sorts on the trimmed address of an employee, on nothing else.
        const QVariant sortText = row.siblingAtColumn(1).data(ItemRoles::SortText);
        if (row.siblingAtColumn(1).data().toString() == QLatin1String("OT_WORKER"))
            QCOMPARE(sortText.toString(), emailOf(uid).trimmed());
        else
            QVERIFY(!sortText.isValid());
    }

    void checkAllLeavesTheDisabledOut_data()
    {
        QTest::addColumn<bool>("withoutEmail");
        QTest::addRow("employees with addresses") << false;
        QTest::addRow("everybody shown") << true;
    }
    void checkAllLeavesTheDisabledOut()
    {
        QFETCH(bool, withoutEmail);
        SelectPageRun run;
        run.show();
        run.child<QCheckBox>("cbShowWithoutEmail")->setChecked(withoutEmail);
        QVERIFY(!run.page->isComplete());
        QVERIFY(!run.wizard->button(QWizard::NextButton)->isEnabled());

        run.child<QToolButton>("tbCheckAll")->click();
        const QSet<unsigned int> expected{Ivanov, Petrov, Kuznetsov};
        QCOMPARE(run.page->checkedUids(), expected);
        QCOMPARE(fieldUids(run.wizard), expected);
        QVERIFY(run.page->isComplete());
        QVERIFY(run.wizard->button(QWizard::NextButton)->isEnabled());
        // Checked in the proxy's set, yet never shown so: grey and off.
        for (const TYPE_ID uid : {Blank, Linked})
            QCOMPARE(run.proxy->indexForUid(uid).data(Qt::CheckStateRole).toInt(),
                     int(Qt::Unchecked));
        QCOMPARE(run.proxy->indexForUid(Ivanov).data(Qt::CheckStateRole).toInt(),
                 int(Qt::Checked));

        run.child<QToolButton>("tbUncheckAll")->click();
        QVERIFY(fieldUids(run.wizard).isEmpty());
        QVERIFY(!run.page->isComplete());
    }

    void checkingByHand()
    {
        SelectPageRun run;
        run.show();
        const QModelIndex petrov = run.proxy->indexForUid(Petrov);
        QVERIFY(run.proxy->setData(petrov, Qt::Checked, Qt::CheckStateRole));
        QCOMPARE(fieldUids(run.wizard), QSet<unsigned int>{Petrov});
        // The department above shows partly checked; checked itself it adds nobody.
        QCOMPARE(run.proxy->indexForUid(Sales).data(Qt::CheckStateRole).toInt(),
                 int(Qt::PartiallyChecked));
        QVERIFY(run.proxy->setData(run.proxy->indexForUid(SalesEast), Qt::Checked,
                                   Qt::CheckStateRole));
        QCOMPARE(fieldUids(run.wizard), QSet<unsigned int>{Petrov});
    }

    void search()
    {
        SelectPageRun run;
        run.show();
        run.page->startSearch(QStringLiteral("петров"));
        QVERIFY(run.shown(Petrov));
        QVERIFY(!run.shown(Ivanov));
        QVERIFY(!run.shown(SalesEast));
        QVERIFY(run.shown(Sales));
        run.page->startSearch(QString());
        QVERIFY(run.shown(Ivanov));
    }

    void openedOnEmployees_data()
    {
        QTest::addColumn<QList<TYPE_ID>>("given");
        QTest::addColumn<QSet<unsigned int>>("chosen");
        QTest::addRow("one with an address, one without, one linked")
            << QList<TYPE_ID>{Ivanov, Sidorov, Linked} << QSet<unsigned int>{Ivanov};
        QTest::addRow("only one without an address") << QList<TYPE_ID>{Storeman}
                                                     << QSet<unsigned int>{};
    }
    void openedOnEmployees()
    {
        QFETCH(QList<TYPE_ID>, given);
        QFETCH(QSet<unsigned int>, chosen);
        SelectPageRun run;
        run.wizard->setCheckedEmployees(given);
        run.wizard->show();
        QVERIFY(QTest::qWaitForWindowExposed(run.wizard));
        QVERIFY(run.child<SearchWidget>("searchWidget")->isHidden());
        auto *showAll = run.child<QCheckBox>("cbShowWithoutEmail");
        QVERIFY(showAll->isChecked());
        QVERIFY(!showAll->isEnabled());
        // The given people and the way to them, nobody else.
        for (const TYPE_ID uid : {Ivanov, Petrov, Sidorov, Linked, Storeman, Kuznetsov})
            QCOMPARE(run.shown(uid), given.contains(uid));
        for (const TYPE_ID uid : given) {
            for (const TYPE_ID above : run.proxy->sourceModel()->parentKeys(uid))
                QVERIFY(run.shown(above));
        }
        QCOMPARE(run.page->checkedUids(), chosen);
        QCOMPARE(fieldUids(run.wizard), chosen);
        QCOMPARE(run.page->isComplete(), !chosen.isEmpty());
    }

    void pagesByRole_data()
    {
        QTest::addColumn<QString>("radio");
        QTest::addColumn<QList<int>>("ids");
        QTest::addRow("mobile employee") << "rbMobileEmployee" << QList<int>{0, 1, 3, 4, 5};
        QTest::addRow("mobile chief") << "rbMobileChief" << QList<int>{0, 1, 2, 3, 4, 5};
    }
    void pagesByRole()
    {
        QFETCH(QString, radio);
        QFETCH(QList<int>, ids);
        SelectPageRun run;
        run.wizard->setCheckedEmployees({Petrov});
        run.wizard->show();
        QVERIFY(QTest::qWaitForWindowExposed(run.wizard));
        run.page->findChild<QRadioButton *>(radio)->setChecked(true);
        QList<int> visited{run.wizard->currentId()};
        while (visited.last() != NewMobileUserWizard::CheckUserPage)
            visited.append(next(run.wizard));
        // The check page starts with every box off.
        QVERIFY(!run.wizard->button(QWizard::NextButton)->isEnabled());
        run.wizard->checkPage()->model()->checkAll();
        visited.append(next(run.wizard));
        QCOMPARE(visited, ids);
        QCOMPARE(run.page->roleTemplateId(),
                 radio == QLatin1String("rbMobileChief") ? QStringLiteral("RT_MOBILE_CHIEF")
                                                         : QStringLiteral("RT_MOBILE"));
    }
};

QTEST_MAIN(TestMobileUserSelect)
#include "tst_mobileuserselect.moc"
