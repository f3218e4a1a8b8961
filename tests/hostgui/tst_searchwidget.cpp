#include <host/gui/widgets/searchwidget.h>

#include <QAction>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QSignalSpy>
#include <QtTest>

class TestSearchWidget : public QObject
{
    Q_OBJECT
private slots:
    void searchesAfterAPauseInTyping();
    void enterSearchesAtOnce();
    void clearSearchesForEverything();
    void settingTheTextDoesNotSearch();
};

void TestSearchWidget::searchesAfterAPauseInTyping()
{
    SearchWidget search;
    search.show();
    QSignalSpy searches(&search, &SearchWidget::startSearch);
    auto *edit = search.findChild<QLineEdit *>();
    QElapsedTimer clock;
    clock.start();
    QTest::keyClicks(edit, QStringLiteral("adm"));
    QCOMPARE(searches.count(), 0);
    QVERIFY(searches.wait(SearchWidget::TypingPause * 5));
    QVERIFY(clock.elapsed() >= SearchWidget::TypingPause - 50);
    QCOMPARE(searches.count(), 1); // one search for the whole word, not one per key
    QCOMPARE(searches.first().first().toString(), QStringLiteral("adm"));
}

void TestSearchWidget::enterSearchesAtOnce()
{
    SearchWidget search;
    search.show();
    QSignalSpy searches(&search, &SearchWidget::startSearch);
    auto *edit = search.findChild<QLineEdit *>();
    QTest::keyClicks(edit, QStringLiteral("root"));
    QTest::keyClick(edit, Qt::Key_Return);
    QCOMPARE(searches.count(), 1);
    QCOMPARE(searches.first().first().toString(), QStringLiteral("root"));
    // The pending search was dropped with the Enter.
    QVERIFY(!search.findChild<QTimer *>()->isActive());
}

void TestSearchWidget::clearSearchesForEverything()
{
    SearchWidget search;
    search.show();
    auto *edit = search.findChild<QLineEdit *>();
    auto *clearAction = edit->findChild<QAction *>(QStringLiteral("clearAction"));
    QVERIFY(clearAction);
    QVERIFY(!clearAction->isVisible());
    QTest::keyClicks(edit, QStringLiteral("ivan"));
    QVERIFY(clearAction->isVisible());
    QSignalSpy searches(&search, &SearchWidget::startSearch);
    clearAction->trigger();
    QCOMPARE(searches.count(), 1);
    QCOMPARE(searches.first().first().toString(), QString());
    QCOMPARE(search.text(), QString());
    QVERIFY(!clearAction->isVisible());
}

void TestSearchWidget::settingTheTextDoesNotSearch()
{
    SearchWidget search;
    QSignalSpy searches(&search, &SearchWidget::startSearch);
    search.setText(QStringLiteral("петров"));
    QCOMPARE(search.text(), QStringLiteral("петров"));
    QVERIFY(!search.findChild<QTimer *>()->isActive());
    QCOMPARE(searches.count(), 0);

    search.showAdvancedButton(false);
    QVERIFY(!search.isAdvancedButtonShown());
}

QTEST_MAIN(TestSearchWidget)
#include "tst_searchwidget.moc"
