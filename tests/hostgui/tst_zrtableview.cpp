#include <host/gui/widgets/zrtableview.h>

#include <QAbstractItemModelTester>
#include <QHeaderView>
#include <QMenu>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QtTest>

namespace {
QStandardItemModel *makeModel(QObject *parent)
{
    auto *model = new QStandardItemModel(3, 6, parent);
    model->setHorizontalHeaderLabels({QStringLiteral("Логин"), QStringLiteral("Тип объекта"),
                                      QStringLiteral("Логин"), QStringLiteral("ФИО"),
                                      QStringLiteral("Шаблон ролей"), QStringLiteral("Состояние")});
    new QAbstractItemModelTester(model, QAbstractItemModelTester::FailureReportingMode::QtTest,
                                 parent);
    return model;
}
} // namespace

class TestZRTableView : public QObject
{
    Q_OBJECT
private slots:
    void hiddenByDefault_data();
    void hiddenByDefault();
    void stateRoundTrip();
    void headerMenuShowsAndHidesColumns();
    void uniformRowHeights_data();
    void uniformRowHeights();
};

void TestZRTableView::hiddenByDefault_data()
{
    QTest::addColumn<bool>("modelFirst");
    QTest::addRow("model set before the defaults") << true;
    QTest::addRow("defaults set before the model") << false;
}

void TestZRTableView::hiddenByDefault()
{
    QFETCH(bool, modelFirst);
    ZRTableView view;
    QStandardItemModel *model = makeModel(&view);
    if (modelFirst)
        view.setModel(model);
    view.setHeaderHiddenByDefaultColumns({0, 1});
    if (!modelFirst)
        view.setModel(model);
    QVERIFY(view.isColumnHidden(0));
    QVERIFY(view.isColumnHidden(1));
    QVERIFY(!view.isColumnHidden(2));

    // No saved state, or a broken one, gives the defaults.
    view.setColumnHidden(2, true);
    QVERIFY(!view.restoreHeaderState(QByteArray()));
    QVERIFY(!view.isColumnHidden(2));
    QVERIFY(view.isColumnHidden(0));
    view.setColumnHidden(2, true);
    QVERIFY(!view.restoreHeaderState(QByteArrayLiteral("not a header")));
    QVERIFY(!view.isColumnHidden(2));
}

void TestZRTableView::stateRoundTrip()
{
    ZRTableView arranged;
    arranged.setModel(makeModel(&arranged));
    arranged.setHeaderHiddenByDefaultColumns({0, 1});
    arranged.show();
    QSignalSpy changes(&arranged, &ZRTableView::headerStateChanged);

    // What an operator does: shows a default-hidden column, moves one, widens one.
    QHeaderView *header = arranged.horizontalHeader();
    header->setSectionHidden(1, false);
    header->moveSection(header->visualIndex(5), 2);
    header->resizeSection(3, 211);
    QVERIFY(changes.wait());
    QCOMPARE(changes.count(), 1); // one report for a burst of changes
    // A screen repeating the same defaults (after each change of its rows) keeps that layout.
    arranged.setHeaderHiddenByDefaultColumns({0, 1});
    QVERIFY(!arranged.isColumnHidden(1));
    QCOMPARE(header->visualIndex(5), 2);

    ZRTableView restored;
    restored.setModel(makeModel(&restored));
    restored.setHeaderHiddenByDefaultColumns({0, 1});
    QSignalSpy echoes(&restored, &ZRTableView::headerStateChanged);
    QVERIFY(restored.restoreHeaderState(changes.last().first().toByteArray()));
    QVERIFY(restored.isColumnHidden(0));
    QVERIFY(!restored.isColumnHidden(1));
    QCOMPARE(restored.horizontalHeader()->visualIndex(5), 2);
    QCOMPARE(restored.horizontalHeader()->sectionSize(3), 211);
    // Restoring is not an operator's change, and isn't reported back.
    QTRY_VERIFY(!restored.findChild<QTimer *>()->isActive());
    QCOMPARE(echoes.count(), 0);
}

void TestZRTableView::headerMenuShowsAndHidesColumns()
{
    ZRTableView view;
    view.setModel(makeModel(&view));
    view.setHeaderHiddenByDefaultColumns({1});
    QSignalSpy changes(&view, &ZRTableView::headerStateChanged);
    QScopedPointer<QMenu> menu(view.createHeaderMenu(nullptr));
    QList<QAction *> entries = menu->actions();
    QCOMPARE(entries.at(3)->text(), QStringLiteral("ФИО"));
    QVERIFY(!entries.at(1)->isChecked());
    entries.at(1)->trigger();
    entries.at(3)->trigger();
    QVERIFY(!view.isColumnHidden(1));
    QVERIFY(view.isColumnHidden(3));
    QVERIFY(changes.wait());

    // The last column shown can't be hidden.
    for (int column : {0, 1, 2, 4})
        view.setColumnHidden(column, true);
    menu.reset(view.createHeaderMenu(nullptr));
    QVERIFY(!menu->actions().at(5)->isEnabled());
    QVERIFY(menu->actions().at(0)->isEnabled());
}

void TestZRTableView::uniformRowHeights_data()
{
    QTest::addColumn<bool>("uniform");
    QTest::addRow("each row measured") << false;
    QTest::addRow("as high as the first") << true;
}

void TestZRTableView::uniformRowHeights()
{
    QFETCH(bool, uniform);
    ZRTableView view;
    QStandardItemModel *model = makeModel(&view);
    view.setModel(model);
    view.setUniformRowHeights(uniform);
    const QString threeLines = QStringLiteral("one\ntwo\nthree");
    model->setData(model->index(2, 0), threeLines);
    view.resizeRowsToContents();
    QCOMPARE(view.rowHeight(2) > view.rowHeight(0), !uniform);

    // A change of the first row is measured again, and then sets every row's height.
    const int oneLine = view.rowHeight(1);
    model->setData(model->index(0, 0), threeLines);
    view.resizeRowsToContents();
    QCOMPARE(view.rowHeight(1) > oneLine, uniform);
}

QTEST_MAIN(TestZRTableView)
#include "tst_zrtableview.moc"
