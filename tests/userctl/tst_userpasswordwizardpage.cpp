#include "wizardpagefixture.h"

#include <src/wizards/userpasswordwizardpage.h>
#include <tests/support/builders.h>

#include <host/core/localstorage.h>
#include <host/gui/widgets/passwordchangewidget.h>
#include <host/gui/widgets/passwordcriteriapanel.h>
#include <host/gui/widgets/zrdateedit.h>

#include <KPasswordLineEdit>

#include <QCheckBox>
#include <QDate>
#include <QPushButton>
#include <QSignalSpy>
#include <QVBoxLayout>
#include <QtTest>

using wizardpages::md5;
using wizardpages::propertiesOf;
using Wizard = PageInWizard<UserPasswordWizardPage>;

namespace {
const QString DefaultPassword = QStringLiteral("Zr-Default-2024");
// Meets the installation's policy: long enough, upper and lower case, a digit.
const QString StrongPassword = QStringLiteral("Lantern7Mosaic");
} // namespace

class TestUserPasswordWizardPage : public QObject
{
    Q_OBJECT

    static void setDatabase(const QHash<QString, QString> &parameters)
    {
        zeral::LocalStorage::instance()->clear();
        zeral::LocalStorage::instance()->applyChanged(QStringLiteral("db"),
                                                      {testing::makeDatabase(1, parameters)});
    }

    template<class Widget = QCheckBox>
    static Widget *child(const QObject *page, const char *name)
    {
        return page->findChild<Widget *>(QLatin1String(name));
    }
    static PasswordChangeWidget *passwords(const QObject *page)
    {
        return child<PasswordChangeWidget>(page, "passChangeWidget");
    }
    static void enterPassword(const QObject *page, const QString &password, const QString &repeat)
    {
        passwords(page)->findChild<KPasswordLineEdit *>("passwordEdit")->setPassword(password);
        passwords(page)->findChild<KPasswordLineEdit *>("repeatEdit")->setPassword(repeat);
    }

private slots:
    void init()
    {
        setDatabase({{"PT_PASSWORD_DEF", DefaultPassword}, {"PT_PASSWORD_EXPIRED", "30"}});
    }

    void form()
    {
        UserPasswordWizardPage page;
        QCOMPARE(page.objectName(), QStringLiteral("UserPasswordWizardPage"));
        QCOMPARE(page.windowTitle(), QStringLiteral("WizardPage"));
        QCOMPARE(page.title(), QStringLiteral("Пароль"));
        QCOMPARE(page.size(), QSize(488, 114));
        auto *layout = qobject_cast<QVBoxLayout *>(page.layout());
        QVERIFY(layout);
        const QStringList order{"cbUseDefaultPassword", "passChangeWidget",
                                "cbRequireChangePassword", "widget"};
        for (int i = 0; i < order.size(); ++i)
            QCOMPARE(layout->itemAt(i)->widget()->objectName(), order.at(i));

        QCheckBox *useDefault = child(&page, "cbUseDefaultPassword");
        QCOMPARE(useDefault->text(), QStringLiteral("Использовать пароль по умолчанию"));
        QVERIFY(useDefault->isChecked());
        QCOMPARE(passwords(&page)->minimumWidth(), 400);
        QVERIFY(!passwords(&page)->findChild<KPasswordLineEdit *>("passwordEdit")->isEnabled());
        // Unlike the password dialog, the page offers a generated password.
        QVERIFY(!passwords(&page)->findChild<QPushButton *>("generateButton")->isHidden());
        QCheckBox *requireChange = child(&page, "cbRequireChangePassword");
        QCOMPARE(requireChange->text(), QStringLiteral("Сменить пароль при первом входе"));
        QVERIFY(requireChange->isChecked());
        QVERIFY(!requireChange->isEnabled());
        QCOMPARE(wizardpages::nextTabStop(useDefault), requireChange);

        QWidget *row = child<QWidget>(&page, "widget");
        QCOMPARE(row->minimumHeight(), 30);
        QCOMPARE(row->layout()->contentsMargins(), QMargins());
        QCheckBox *limit = child(&page, "cbIsPasswordTimeLimit");
        QCOMPARE(limit->text(), QStringLiteral("Срок действия пароля"));
        QVERIFY(!limit->isChecked());
        const QList<ZRDateEdit *> dates = page.findChildren<ZRDateEdit *>();
        QCOMPARE(dates.size(), 1);
        ZRDateEdit *date = dates.first();
        QCOMPARE(date->objectName(), QStringLiteral("passwExpireDate"));
        QCOMPARE(date->parentWidget(), row);
        QVERIFY(date->highlightsPast());
        QVERIFY(date->calendarPopup());
        QVERIFY(!date->isEnabled());
        QCOMPARE(row->layout()->indexOf(date), 1);
    }

    void defaultPasswordIsCompleteWhateverTheVerdict()
    {
        Wizard w;
        w.show();
        QVERIFY(w.nextEnabled());
        emit passwords(w.page)->passCheckResult(false);
        QVERIFY(w.page->isComplete());
        QVERIFY(w.nextEnabled());
    }

    void ownPasswordNeedsAPassingVerdict_data()
    {
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("repeat");
        QTest::addColumn<bool>("complete");
        QTest::addRow("nothing typed") << ""
                                       << "" << false;
        QTest::addRow("strong") << StrongPassword << StrongPassword << true;
        QTest::addRow("repetition differs") << StrongPassword << "Lantern7Mosaik" << false;
        QTest::addRow("too short") << "Ab1"
                                   << "Ab1" << false;
    }
    void ownPasswordNeedsAPassingVerdict()
    {
        QFETCH(QString, password);
        QFETCH(QString, repeat);
        QFETCH(bool, complete);
        Wizard w;
        w.show();
        QSignalSpy verdicts(passwords(w.page), &PasswordChangeWidget::passCheckResult);
        child(w.page, "cbUseDefaultPassword")->click();
        // The check starts at once, on the empty fields.
        QVERIFY(!verdicts.isEmpty());
        QCOMPARE(verdicts.last().first().toBool(), false);
        QVERIFY(!w.nextEnabled());
        enterPassword(w.page, password, repeat);
        QCOMPARE(w.page->isComplete(), complete);
        QCOMPARE(w.nextEnabled(), complete);
    }

    void generatedPasswordCountsAsPassed()
    {
        Wizard w;
        w.show();
        child(w.page, "cbUseDefaultPassword")->click();
        QVERIFY(!w.nextEnabled());
        QSignalSpy generated(passwords(w.page), &PasswordChangeWidget::passwordGenerated);
        passwords(w.page)->findChild<QPushButton *>("generateButton")->click();
        QCOMPARE(generated.size(), 1);
        QVERIFY(w.nextEnabled());
        QCOMPARE(passwords(w.page)->password(), generated.first().first().toString());
    }

    void defaultForcesTheChangeAtFirstLogin()
    {
        UserPasswordWizardPage page;
        QCheckBox *useDefault = child(&page, "cbUseDefaultPassword");
        QCheckBox *requireChange = child(&page, "cbRequireChangePassword");
        useDefault->click();
        QVERIFY(requireChange->isEnabled());
        QVERIFY(requireChange->isChecked()); // the tick stays
        requireChange->click();
        QVERIFY(!requireChange->isChecked());
        useDefault->click();
        QVERIFY(!requireChange->isEnabled());
        QVERIFY(requireChange->isChecked());
        QVERIFY(!passwords(&page)->findChild<KPasswordLineEdit *>("passwordEdit")->isEnabled());
        useDefault->click();
        QVERIFY(requireChange->isEnabled());
        QVERIFY(requireChange->isChecked());
        QVERIFY(passwords(&page)->findChild<KPasswordLineEdit *>("passwordEdit")->isEnabled());
    }

    void expiry_data()
    {
        QTest::addColumn<QString>("days");
        QTest::addColumn<int>("expected");
        QTest::addRow("30 days") << "30" << 30;
        QTest::addRow("no setting: today") << "" << 0;
        QTest::addRow("unreadable: today") << "ninety" << 0;
        QTest::addRow("a year") << "365" << 365;
    }
    void expiry()
    {
        QFETCH(QString, days);
        QFETCH(int, expected);
        setDatabase({{"PT_PASSWORD_EXPIRED", days}});
        UserPasswordWizardPage page;
        QCheckBox *limit = child(&page, "cbIsPasswordTimeLimit");
        auto *date = child<ZRDateEdit>(&page, "passwExpireDate");
        date->setDate(QDate(2001, 1, 1));
        limit->click();
        QVERIFY(date->isEnabled());
        QCOMPARE(date->date(), QDate::currentDate().addDays(expected));
        QCOMPARE(page.properties().value("PT_PASSWORD_EXPIRED"),
                 QDate::currentDate().addDays(expected).toString(Qt::ISODate));
        limit->click();
        QVERIFY(!date->isEnabled());
        QCOMPARE(page.properties().value("PT_PASSWORD_EXPIRED"), QString());
    }

    void expiryBoxSetFromCodeLeavesTheDate()
    {
        UserPasswordWizardPage page;
        auto *date = child<ZRDateEdit>(&page, "passwExpireDate");
        date->setDate(QDate(2001, 1, 1));
        child(&page, "cbIsPasswordTimeLimit")->setChecked(true);
        QVERIFY(!date->isEnabled());
        QCOMPARE(date->date(), QDate(2001, 1, 1));
    }

    void saveTask_data()
    {
        QTest::addColumn<bool>("useDefault");
        QTest::addColumn<bool>("requireChange");
        QTest::addColumn<bool>("limited");
        QTest::addColumn<QString>("hashOf");
        QTest::addColumn<QString>("required");
        // clang-format off
        QTest::addRow("default") << true << true << false << DefaultPassword << "1";
        QTest::addRow("default, limited") << true << true << true << DefaultPassword << "1";
        QTest::addRow("own, change asked") << false << true << false << StrongPassword << "1";
        QTest::addRow("own, no change") << false << false << true << StrongPassword << "0";
        // clang-format on
    }
    void saveTask()
    {
        QFETCH(bool, useDefault);
        QFETCH(bool, requireChange);
        QFETCH(bool, limited);
        QFETCH(QString, hashOf);
        QFETCH(QString, required);
        Wizard w;
        w.show();
        if (!useDefault) {
            child(w.page, "cbUseDefaultPassword")->click();
            enterPassword(w.page, StrongPassword, StrongPassword);
            if (!requireChange)
                child(w.page, "cbRequireChangePassword")->click();
        }
        if (limited)
            child(w.page, "cbIsPasswordTimeLimit")->click();
        zeral::TaskInfo task;
        w.leaveWithOneUserTask("save_object", "objectUpdated", &task);
        if (QTest::currentTestFailed())
            return;
        const QString expiry
            = limited ? QDate::currentDate().addDays(30).toString(Qt::ISODate) : QString();
        const QHash<QString, QString> expected{{"PT_PASSHASH", md5(hashOf)},
                                               {"PT_REQUIRE_CHANGE", required},
                                               {"PT_PASSWORD_EXPIRED", expiry}};
        QCOMPARE(propertiesOf(task), expected);
        // The page's hash holds no login: the user is named by nothing.
        QCOMPARE(task.startMessage, QStringLiteral("Изменение параметров пользователя "));
        QCOMPARE(task.errorMessage, QStringLiteral("Ошибка изменения параметров пользователя "));
    }

    void noDefaultPasswordInTheDatabaseHashesTheEmptyText()
    {
        setDatabase({});
        UserPasswordWizardPage page;
        QCOMPARE(page.properties().value("PT_PASSHASH"), md5(QString()));
    }

    void rulesStayWhileTypingAndGoWithNext()
    {
        Wizard w;
        w.show();
        child(w.page, "cbUseDefaultPassword")->click();
        PasswordCriteriaPanel *rules = passwords(w.page)->criteriaWidget();
        QVERIFY(rules);
        QTRY_VERIFY(rules->isVisible());
        // A new verdict changes the wizard's buttons, which hides the page for a moment.
        enterPassword(w.page, StrongPassword, StrongPassword);
        QVERIFY(w.nextEnabled());
        QVERIFY(rules->isVisible());
        QVERIFY(w.page->validatePage());
        QVERIFY(!rules->isVisible());
    }

    void rulesFollowTheWizard_data()
    {
        QTest::addColumn<bool>("resize");
        QTest::addRow("moved") << false;
        QTest::addRow("resized") << true;
    }
    void rulesFollowTheWizard()
    {
        QFETCH(bool, resize);
        Wizard w;
        w.wizard.move(20, 20);
        w.show();
        child(w.page, "cbUseDefaultPassword")->click();
        PasswordCriteriaPanel *rules = passwords(w.page)->criteriaWidget();
        QTRY_VERIFY(rules->isVisible());
        const QPoint stray(-500, -500);
        rules->move(stray);
        if (resize)
            w.wizard.resize(w.wizard.size() + QSize(40, 30));
        else
            w.wizard.move(40, 30);
        QTRY_VERIFY(rules->pos() != stray);
    }
};

QTEST_MAIN(TestUserPasswordWizardPage)
#include "tst_userpasswordwizardpage.moc"
