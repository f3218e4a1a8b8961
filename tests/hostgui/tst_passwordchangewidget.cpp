#include <host/core/guipassfuncs.h>
#include <host/gui/widgets/passwordchangewidget.h>

#include <host/gui/widgets/passwordcriteriapanel.h>

#include <KPasswordLineEdit>

#include <QSignalSpy>
#include <QtTest>

namespace {
using Options = QMap<QString, QVariant>;

Options policy(int minLength, bool upper, bool lower, bool digit, bool special)
{
    return {{GUIPassFuncs::MinLength, minLength},
            {GUIPassFuncs::RequireUpper, upper},
            {GUIPassFuncs::RequireLower, lower},
            {GUIPassFuncs::RequireDigit, digit},
            {GUIPassFuncs::RequireSpecial, special}};
}

void type(PasswordChangeWidget &widget, const QString &password, const QString &repeat)
{
    widget.findChild<KPasswordLineEdit *>(QStringLiteral("passwordEdit"))->setPassword(password);
    widget.findChild<KPasswordLineEdit *>(QStringLiteral("repeatEdit"))->setPassword(repeat);
}
} // namespace

class TestPasswordChangeWidget : public QObject
{
    Q_OBJECT
private slots:
    void verdict_data();
    void verdict();
    void reportsOnlyChanges();
    void generatedPasswordMeetsPolicy_data();
    void generatedPasswordMeetsPolicy();
    void startCheckingReportsAtOnce();
    void rulesComeBackAfterAPassingHide_data();
    void rulesComeBackAfterAPassingHide();
};

void TestPasswordChangeWidget::verdict_data()
{
    QTest::addColumn<Options>("options");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("repeat");
    QTest::addColumn<bool>("acceptable");

    const Options standard = policy(8, true, true, true, false);
    const Options strict = policy(10, true, true, true, true);
    const Options lax = policy(4, false, false, false, false);
    QTest::addRow("standard: good") << standard << "Secret12"
                                    << "Secret12" << true;
    QTest::addRow("standard: repeat differs") << standard << "Secret12"
                                              << "Secret13" << false;
    QTest::addRow("standard: too short") << standard << "Secr12"
                                         << "Secr12" << false;
    QTest::addRow("standard: no upper") << standard << "secret12"
                                        << "secret12" << false;
    QTest::addRow("standard: no lower") << standard << "SECRET12"
                                        << "SECRET12" << false;
    QTest::addRow("standard: no digit") << standard << "Secretive"
                                        << "Secretive" << false;
    QTest::addRow("standard: empty") << standard << ""
                                     << "" << false;
    QTest::addRow("strict: no special") << strict << "Secret1234"
                                        << "Secret1234" << false;
    QTest::addRow("strict: good") << strict << "Secret#1234"
                                  << "Secret#1234" << true;
    QTest::addRow("strict: one short") << strict << "Secret#12"
                                       << "Secret#12" << false;
    QTest::addRow("lax: four letters") << lax << "abcd"
                                       << "abcd" << true;
    QTest::addRow("lax: three letters") << lax << "abc"
                                        << "abc" << false;
    QTest::addRow("cyrillic counts as upper and lower") << standard << "Пароль12"
                                                        << "Пароль12" << true;
}

void TestPasswordChangeWidget::verdict()
{
    QFETCH(Options, options);
    QFETCH(QString, password);
    QFETCH(QString, repeat);
    QFETCH(bool, acceptable);

    PasswordChangeWidget widget;
    widget.setPasswordOptions(options);
    type(widget, password, repeat);
    QCOMPARE(widget.isPasswordAcceptable(), acceptable);
    QCOMPARE(widget.unmetCriteria().isEmpty(), acceptable);
    QCOMPARE(widget.password(), password);
}

void TestPasswordChangeWidget::reportsOnlyChanges()
{
    PasswordChangeWidget widget;
    widget.setPasswordOptions(policy(8, true, true, true, false));
    QSignalSpy verdicts(&widget, &PasswordChangeWidget::passCheckResult);
    const auto field = [&widget](const char *name) {
        return widget.findChild<KPasswordLineEdit *>(QLatin1String(name));
    };

    type(widget, QStringLiteral("Secret12"), QStringLiteral("Secret1"));
    QCOMPARE(verdicts.count(), 0); // never acceptable so far: nothing to tell
    field("repeatEdit")->setPassword(QStringLiteral("Secret12"));
    QCOMPARE(verdicts.count(), 1);
    QCOMPARE(verdicts.last().first().toBool(), true);
    widget.setPasswordOptions(policy(6, true, true, true, false)); // still met
    QCOMPARE(verdicts.count(), 1);
    field("passwordEdit")->setPassword(QStringLiteral("secret12"));
    QCOMPARE(verdicts.count(), 2);
    QCOMPARE(verdicts.last().first().toBool(), false);
    field("repeatEdit")->setPassword(QStringLiteral("secret12")); // equal, but no capital
    QCOMPARE(verdicts.count(), 2);
    // A laxer policy turns the password good without a keystroke.
    widget.setPasswordOptions(policy(4, false, true, false, false));
    QCOMPARE(verdicts.count(), 3);
    QCOMPARE(verdicts.last().first().toBool(), true);
}

void TestPasswordChangeWidget::generatedPasswordMeetsPolicy_data()
{
    QTest::addColumn<Options>("options");
    QTest::addRow("standard") << policy(8, true, true, true, false);
    QTest::addRow("strict and long") << policy(20, true, true, true, true);
}

void TestPasswordChangeWidget::generatedPasswordMeetsPolicy()
{
    QFETCH(Options, options);
    PasswordChangeWidget widget;
    widget.setPasswordOptions(options);
    QSignalSpy generated(&widget, &PasswordChangeWidget::passwordGenerated);
    QSignalSpy verdicts(&widget, &PasswordChangeWidget::passCheckResult);
    widget.generatePassword();
    QCOMPARE(generated.count(), 1);
    QCOMPARE(generated.first().first().toString(), widget.password());
    QVERIFY(widget.isPasswordAcceptable());
    QCOMPARE(verdicts.count(), 1);
    QCOMPARE(verdicts.first().first().toBool(), true);
}

void TestPasswordChangeWidget::startCheckingReportsAtOnce()
{
    PasswordChangeWidget widget;
    widget.setPasswordOptions(policy(8, true, true, true, false));
    widget.show();
    QSignalSpy verdicts(&widget, &PasswordChangeWidget::passCheckResult);
    widget.startCheckingProcess();
    QCOMPARE(verdicts.count(), 1);
    QCOMPARE(verdicts.first().first().toBool(), false);
    QVERIFY(widget.criteriaWidget()->isVisible());

    widget.setElementsEnabled(false);
    QVERIFY(!widget.criteriaWidget()->isVisible());
}

void TestPasswordChangeWidget::rulesComeBackAfterAPassingHide_data()
{
    QTest::addColumn<bool>("dropped");
    QTest::addColumn<bool>("shownAgain");
    QTest::addRow("hidden with its window: back when shown") << false << true;
    QTest::addRow("dropped first: stay away") << true << false;
}

// A wizard hides its pages for a moment whenever a page tells that its completeness changed;
// the rules must not vanish with that, unless they were dropped on purpose.
void TestPasswordChangeWidget::rulesComeBackAfterAPassingHide()
{
    QFETCH(bool, dropped);
    QFETCH(bool, shownAgain);
    QWidget window;
    auto *holder = new QWidget(&window);
    auto *widget = new PasswordChangeWidget(holder);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    widget->startCheckingProcess();
    QVERIFY(widget->criteriaWidget()->isVisible());
    if (dropped)
        widget->hideCriteriaWidget();
    holder->hide();
    QVERIFY(!widget->criteriaWidget()->isVisible());
    holder->show();
    QCOMPARE(widget->criteriaWidget()->isVisible(), shownAgain);
}

QTEST_MAIN(TestPasswordChangeWidget)
#include "tst_passwordchangewidget.moc"
