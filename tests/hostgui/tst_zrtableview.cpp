#include <host/gui/widgets/zrtableview.h>

#include <tests/support/paintrecorder.h>

#include <QAbstractItemModelTester>
#include <QHeaderView>
#include <QMenu>
#include <QSignalSpy>
#include <QSortFilterProxyModel>
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
    void unpaintedRolesRepaintNothing_data();
    void unpaintedRolesRepaintNothing();
    void columnsFitTheirContentsOnce_data();
    void columnsFitTheirContentsOnce();
    void selectionLostToARefilterIsReported_data();
    void selectionLostToARefilterIsReported();
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
    if (!uniform)
        return;
    // The height QTableView's own fit gives the first row, and a row that comes later gets it.
    QTableView plain;
    plain.setModel(model);
    plain.resizeRowsToContents();
    QCOMPARE(view.rowHeight(1), plain.rowHeight(0));
    model->appendRow(new QStandardItem(QStringLiteral("later")));
    QCOMPARE(view.rowHeight(model->rowCount() - 1), view.rowHeight(0));
}

void TestZRTableView::unpaintedRolesRepaintNothing_data()
{
    const int rowData = Qt::UserRole + 1;
    QTest::addColumn<QVector<int>>("unpainted");
    QTest::addColumn<int>("role");
    QTest::addColumn<bool>("repainted");
    QTest::addRow("none set") << QVector<int>{} << rowData << true;
    QTest::addRow("an unpainted role") << QVector<int>{rowData} << rowData << false;
    QTest::addRow("a painted role") << QVector<int>{rowData} << int(Qt::DisplayRole) << true;
    QTest::addRow("one of several unpainted")
        << QVector<int>{Qt::UserRole, rowData} << rowData << false;
}

void TestZRTableView::unpaintedRolesRepaintNothing()
{
    QFETCH(QVector<int>, unpainted);
    QFETCH(int, role);
    QFETCH(bool, repainted);
    ZRTableView view;
    QStandardItemModel *model = makeModel(&view);
    view.setModel(model);
    view.setUnpaintedRoles(unpainted);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    PaintRecorder recorder(view.viewport());

    const QModelIndex changed = model->index(1, 2);
    model->setData(changed, QStringLiteral("changed"), role);
    // A paint of a cell elsewhere shows when the change's repaint, if any, has been done.
    const QRect elsewhere = view.visualRect(model->index(2, 0));
    view.viewport()->update(elsewhere);
    QTRY_VERIFY(recorder.painted().contains(elsewhere));
    QCOMPARE(recorder.painted().intersects(view.visualRect(changed)), repainted);
}

void TestZRTableView::columnsFitTheirContentsOnce_data()
{
    QTest::addColumn<bool>("rowsBeforeShow");
    QTest::addColumn<bool>("stateRestored");
    QTest::addRow("rows, then shown") << true << false;
    QTest::addRow("shown, then the rows") << false << false;
    QTest::addRow("a saved state wins") << true << true;
}

void TestZRTableView::columnsFitTheirContentsOnce()
{
    QFETCH(bool, rowsBeforeShow);
    QFETCH(bool, stateRestored);
    const QString login = QStringLiteral("operator12-with-a-long-login");
    ZRTableView view;
    view.resize(900, 120); // a few rows in sight, as in a window still being laid out
    auto *model = new QStandardItemModel(0, 6, &view);
    new QAbstractItemModelTester(model, QAbstractItemModelTester::FailureReportingMode::QtTest,
                                 &view);
    view.setModel(model);
    const int narrow = 40;
    for (int column = 0; column < 6; ++column)
        view.horizontalHeader()->resizeSection(column, narrow);
    // What the screen does at its start: the operator's saved state, or none yet.
    QCOMPARE(view.restoreHeaderState(stateRestored ? view.headerState() : QByteArray()),
             stateRestored);
    // The long login stands below the rows in sight: the fit must not measure only those.
    const auto addRows = [model, &login] {
        for (int row = 0; row < 40; ++row)
            model->appendRow({new QStandardItem(QStringLiteral("root")),
                              new QStandardItem(QStringLiteral("x"))});
        model->appendRow({new QStandardItem(login), new QStandardItem(QStringLiteral("x"))});
    };
    if (rowsBeforeShow)
        addRows();
    QSignalSpy reports(&view, &ZRTableView::headerStateChanged);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    if (!rowsBeforeShow)
        addRows();

    const int needed = view.fontMetrics().horizontalAdvance(login);
    if (stateRestored) {
        QTest::qWait(0); // a fit would be queued; let it run if there were one
        QCOMPARE(view.columnWidth(0), narrow);
        return;
    }
    QTRY_VERIFY(view.columnWidth(0) >= needed);
    QVERIFY(view.columnWidth(1) < needed); // each column by its own contents
    // The fit is the table's own doing and isn't saved as the operator's layout.
    QVERIFY(!view.findChild<QTimer *>()->isActive());
    QCOMPARE(reports.count(), 0);
    // The operator widens no more than once: later rows leave his widths alone.
    view.horizontalHeader()->resizeSection(0, narrow);
    model->appendRow(new QStandardItem(login + login));
    QTest::qWait(0);
    QCOMPARE(view.columnWidth(0), narrow);
}

namespace {
// Refilters in one pass, as the object tree proxy does: the base class announces it as a new
// layout, not as removed rows.
class OnePassFilter : public QSortFilterProxyModel
{
public:
    using QSortFilterProxyModel::QSortFilterProxyModel;
    void setHidden(const QString &text)
    {
        m_hidden = text;
        invalidate();
    }

protected:
    bool filterAcceptsRow(int row, const QModelIndex &parent) const override
    {
        return sourceModel()->index(row, 0, parent).data().toString() != m_hidden;
    }

private:
    QString m_hidden;
};
} // namespace

void TestZRTableView::selectionLostToARefilterIsReported_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<int>("selectedAfter");
    QTest::addColumn<int>("reports");
    QTest::addRow("refilter hides the selected row") << "hide b" << 1 << 1;
    QTest::addRow("refilter hides another row") << "hide c" << 2 << 0;
    QTest::addRow("sorted") << "sort" << 2 << 0;
    QTest::addRow("reset") << "reset" << 0 << 1;
}

void TestZRTableView::selectionLostToARefilterIsReported()
{
    QFETCH(QString, change);
    QFETCH(int, selectedAfter);
    QFETCH(int, reports);
    ZRTableView view;
    auto *source = new QStandardItemModel(&view);
    for (const char *text : {"a", "b", "c"})
        source->appendRow(new QStandardItem(QLatin1String(text)));
    auto *proxy = new OnePassFilter(&view);
    proxy->setSourceModel(source);
    new QAbstractItemModelTester(proxy, QAbstractItemModelTester::FailureReportingMode::QtTest,
                                 &view);
    view.setModel(proxy);
    view.setSelectionBehavior(QAbstractItemView::SelectRows);
    view.selectRow(0);
    view.selectionModel()->select(proxy->index(1, 0),
                                  QItemSelectionModel::Select | QItemSelectionModel::Rows);
    view.selectionModel()->setCurrentIndex(proxy->index(1, 0), QItemSelectionModel::NoUpdate);
    QSignalSpy selection(view.selectionModel(), &QItemSelectionModel::selectionChanged);
    QSignalSpy current(view.selectionModel(), &QItemSelectionModel::currentChanged);

    if (change == QLatin1String("hide b"))
        proxy->setHidden(QStringLiteral("b"));
    else if (change == QLatin1String("hide c"))
        proxy->setHidden(QStringLiteral("c"));
    else if (change == QLatin1String("sort"))
        proxy->sort(0, Qt::DescendingOrder);
    else
        proxy->setSourceModel(new QStandardItemModel(&view));

    QCOMPARE(view.selectionModel()->selectedRows().size(), selectedAfter);
    QCOMPARE(selection.count(), reports);
    // The current row was "b": it goes with the refilter that hides it, and with the reset.
    QCOMPARE(current.count(), reports);
}

QTEST_MAIN(TestZRTableView)
#include "tst_zrtableview.moc"
