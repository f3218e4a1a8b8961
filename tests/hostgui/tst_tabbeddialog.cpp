#include <host/gui/dialogs/tabbeddialog.h>
#include <host/gui/widgets/messagewidget.h>
#include <host/gui/widgets/zractionsinserthelper.h>
#include <host/gui/widgets/zractionstoolbar.h>

#include <QAction>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QToolButton>
#include <QtTest>

class TestTabbedDialog : public QObject
{
    Q_OBJECT
private slots:
    void saveButtonFollowsEditsAndSaves();
    void toolBarOffersTheShownTabsActions();
    void dialogActionsStayFirst();
    void messageLine_data();
    void messageLine();
};

void TestTabbedDialog::saveButtonFollowsEditsAndSaves()
{
    TabbedDialog dialog;
    dialog.addTab(new QWidget, QStringLiteral("Основное"));
    dialog.show();
    QVERIFY(!dialog.saveButton()->isVisible());

    QSignalSpy saves(&dialog, &TabbedDialog::save);
    dialog.showSaveButton();
    QVERIFY(dialog.saveButton()->isVisible());
    dialog.saveButton()->click();
    QCOMPARE(saves.count(), 1);
    // The button waits for the outcome: a refused save keeps nothing but the owner's word.
    QVERIFY(dialog.saveButton()->isVisible());
    dialog.saved();
    QVERIFY(!dialog.saveButton()->isVisible());
    QVERIFY(dialog.isVisible());
}

void TestTabbedDialog::toolBarOffersTheShownTabsActions()
{
    TabbedDialog dialog;
    auto *first = new QWidget;
    auto *second = new QWidget;
    auto *change = new QAction(QStringLiteral("Сменить пароль"), first);
    first->addAction(change);
    dialog.addTab(first, QStringLiteral("Основное"));
    dialog.addTab(second, QStringLiteral("Роли доступа"));
    dialog.show();

    QVERIFY(dialog.toolBar()->isVisible());
    QVERIFY(dialog.toolBar()->actions().contains(change));
    QVERIFY(dialog.toolBar()->widgetForAction(change));

    dialog.tabWidget()->setCurrentIndex(1);
    QVERIFY(!dialog.toolBar()->actions().contains(change));
    QVERIFY(!dialog.toolBar()->isVisible());

    // An action the shown tab gets later reaches the bar too.
    auto *late = new QAction(QStringLiteral("Проверить"), second);
    second->addAction(late);
    QTRY_VERIFY(dialog.toolBar()->actions().contains(late));
    QVERIFY(dialog.toolBar()->isVisible());

    dialog.tabWidget()->setCurrentIndex(0);
    QVERIFY(dialog.toolBar()->actions().contains(change));
    QVERIFY(!dialog.toolBar()->actions().contains(late));
}

void TestTabbedDialog::dialogActionsStayFirst()
{
    TabbedDialog dialog;
    auto *page = new QWidget;
    page->addAction(new QAction(QStringLiteral("Страница"), page));
    dialog.addTab(page, QStringLiteral("Основное"));
    auto *mail = new QAction(QStringLiteral("Передать логин/пароль"), &dialog);
    ZRActionsInsertHelper::addActionWidget(dialog.toolBar(), mail);
    dialog.showToolBar();
    dialog.tabWidget()->setCurrentIndex(0);
    dialog.menuPageSelected();
    dialog.show();

    // Callers take the bar's first action as their own.
    QCOMPARE(dialog.toolBar()->actions().constFirst(), mail);
    QVERIFY(qobject_cast<QToolButton *>(dialog.toolBar()->widgetForAction(mail)));
    QVERIFY(dialog.toolBar()->isVisible());
}

void TestTabbedDialog::messageLine_data()
{
    QTest::addColumn<bool>("critical");
    QTest::addColumn<int>("icon");
    QTest::addRow("information") << false << int(MessageWidget::Information);
    QTest::addRow("critical") << true << int(MessageWidget::Critical);
}

void TestTabbedDialog::messageLine()
{
    QFETCH(bool, critical);
    QFETCH(int, icon);
    TabbedDialog dialog;
    dialog.show();
    QVERIFY(!dialog.messageLine()->isVisible());
    const QString text = QStringLiteral("Параметры пользователя сохранены");
    if (critical)
        dialog.showCriticalMessage(text);
    else
        dialog.showMessage(text);
    QVERIFY(dialog.messageLine()->isVisible());
    QCOMPARE(dialog.messageLine()->text(), text);
    QCOMPARE(int(dialog.messageLine()->messageIcon()), icon);
}

QTEST_MAIN(TestTabbedDialog)
#include "tst_tabbeddialog.moc"
