#include <host/gui/widgets/pluginwidget.h>

#include <QPointer>
#include <QtTest>

class TestPluginWidget : public QObject
{
    Q_OBJECT
private slots:
    void popupGoesAwayAfterItsTime_data();
    void popupGoesAwayAfterItsTime();
    void popupGoesAwayOnClick();
    void popupsStack();
};

void TestPluginWidget::popupGoesAwayAfterItsTime_data()
{
    QTest::addColumn<bool>("critical");
    QTest::addColumn<int>("icon");
    QTest::addRow("message") << false << int(MessageWidget::Positive);
    QTest::addRow("critical") << true << int(MessageWidget::Critical);
}

void TestPluginWidget::popupGoesAwayAfterItsTime()
{
    QFETCH(bool, critical);
    QFETCH(int, icon);
    PluginWidget screen;
    screen.resize(800, 500);
    screen.show();
    const QString text = QStringLiteral("Изменение блокировки пользователя ivanov успешно");
    if (critical)
        screen.showPopupCriticalMessage(text, 150);
    else
        screen.showPopupMessage(text, MessageWidget::Positive, 150);
    QCOMPARE(screen.popups().size(), 1);
    QPointer<MessageWidget> popup = screen.popups().constFirst();
    QVERIFY(popup->isVisible());
    QCOMPARE(popup->text(), text);
    QCOMPARE(int(popup->messageIcon()), icon);
    QTRY_VERIFY_WITH_TIMEOUT(popup.isNull(), 2000);
    QVERIFY(screen.popups().isEmpty());
}

void TestPluginWidget::popupGoesAwayOnClick()
{
    PluginWidget screen;
    screen.resize(800, 500);
    screen.show();
    screen.showPopupMessage(QStringLiteral("Пользователь root не будет удален"));
    QPointer<MessageWidget> popup = screen.popups().constFirst();
    QTest::mouseClick(popup, Qt::LeftButton, Qt::NoModifier, popup->rect().center());
    QVERIFY(screen.popups().isEmpty());
    QTRY_VERIFY(popup.isNull());
}

void TestPluginWidget::popupsStack()
{
    PluginWidget screen;
    screen.resize(800, 500);
    screen.show();
    screen.showPopupMessage(QStringLiteral("первое"), MessageWidget::Information, 60000);
    screen.showPopupCriticalMessage(QStringLiteral("второе"), 60000);
    screen.showPopupMessage(QStringLiteral("третье"), MessageWidget::Warning, 60000);
    const QList<MessageWidget *> shown = screen.popups();
    QCOMPARE(shown.size(), 3);
    for (int i = 1; i < shown.size(); ++i) {
        QVERIFY(shown.at(i)->geometry().top() > shown.at(i - 1)->geometry().bottom());
        QCOMPARE(shown.at(i)->geometry().right(), shown.at(0)->geometry().right());
    }
    QVERIFY(screen.rect().contains(shown.constLast()->geometry()));

    // The stack stands on the bottom edge: when the newest goes, the older ones move down.
    const int secondTop = shown.at(1)->geometry().top();
    QTest::mouseClick(shown.at(2), Qt::LeftButton, Qt::NoModifier, shown.at(2)->rect().center());
    QCOMPARE(screen.popups().size(), 2);
    QVERIFY(screen.popups().constLast()->geometry().top() > secondTop);
}

QTEST_MAIN(TestPluginWidget)
#include "tst_pluginwidget.moc"
