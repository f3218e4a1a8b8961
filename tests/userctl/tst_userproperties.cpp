// The properties tab of the user dialog: the form per user and operator, the login check,
// the tasks it hands to the screen's queue (also through the queue to the scripted server),
// and what it makes of their outcome.
#include <tests/support/requiredchild.h>
#include "userctlharness.h"

#include <src/passworddialog.h>
#include <src/userloginvalidator.h>
#include <src/userproperties.h>

#include <host/core/zrglobals.h>
#include <host/gui/dialogs/tabbeddialog.h>
#include <host/gui/widgets/parameterizededit.h>
#include <host/gui/widgets/passwordchangewidget.h>
#include <host/gui/widgets/zractionstoolbar.h>
#include <host/gui/widgets/zrcombobox.h>
#include <host/gui/widgets/zrdateedit.h>
#include <shared/metatypes.h>
#include <tests/support/modalanswerer.h>

#include <KPasswordLineEdit>

#include <QCheckBox>
#include <QCryptographicHash>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

using zeral::TaskInfo;
using Data = QMultiMap<QString, QVariant>;

namespace {

constexpr TYPE_ID RootUid = 1;
constexpr TYPE_ID OperatorUid = 2; // the logged-in operator, "admin"
constexpr TYPE_ID ClerkUid = 7;
constexpr TYPE_ID DatabaseUid = 100;
const QString OperatorPassword = QStringLiteral("OldPass1");
const QString DefaultPassword = QStringLiteral("Default1");
const QString NewPassword = QStringLiteral("Secret12");
constexpr int ExpiryDays = 30;

// The client hash, worked out here on its own: the lower-case hex MD5 of the UTF-8 text.
QString md5(const QString &text)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Md5).toHex());
}

void logIn()
{
    AuthData::set({QStringLiteral("admin"), OperatorUid, "session-42",
                   QStringLiteral("RT_ADMINISTRATOR"), UserCtlHarness::allRoles(),
                   md5(OperatorPassword)});
}

zeral::ObjectInfo user(TYPE_ID uid, const QString &login, const QString &roleTemplate,
                       const QString &identType = QStringLiteral("0"),
                       const QString &expires = QString())
{
    zeral::ObjectInfo object = UserCtlHarness::user(uid, login, roleTemplate);
    object.parameters.insert(QStringLiteral("PT_PATRONYMIC"), QStringLiteral("Отчество"));
    if (!identType.isNull())
        object.parameters.insert(QStringLiteral("PT_IDENT_TYPE"), identType);
    object.parameters.insert(QStringLiteral("PT_PASSWORD_EXPIRED"), expires);
    return object;
}
zeral::ObjectInfo clerk(const QString &identType = QStringLiteral("0"),
                        const QString &expires = QString())
{
    return user(ClerkUid, QStringLiteral("clerk"), QStringLiteral("RT_OPERATOR"), identType,
                expires);
}

zeral::ObjectInfo database(bool withDefault = true)
{
    QHash<QString, QString> parameters{{"PT_PASSWORD_EXPIRED", QString::number(ExpiryDays)}};
    if (withDefault)
        parameters.insert(QStringLiteral("PT_PASSWORD_DEF"), DefaultPassword);
    return testing::makeDatabase(DatabaseUid, parameters);
}

// The users the login check compares with, and the database object.
void fillStore(bool withDatabase = true, bool withDefault = true)
{
    UserCtlHarness::storeUsers({user(RootUid, "root", "RT_SUPERVISOR"),
                                user(OperatorUid, "admin", "RT_ADMINISTRATOR"), clerk()});
    if (withDatabase)
        zeral::LocalStorage::instance()->applyChanged(QStringLiteral("db"),
                                                      {database(withDefault)});
}

struct Editor
{
    Editor()
    {
        QObject::connect(&tab, &UserProperties::appendTask, &tab,
                         [this](const TaskInfo &task) { tasks.append(task); });
        QObject::connect(&tab, &UserProperties::dataEdited, &tab,
                         [this] { said.append(QStringLiteral("edited")); });
        QObject::connect(&tab, &UserProperties::denyEdit, &tab,
                         [this] { said.append(QStringLiteral("denied")); });
        tab.show();
    }
    template<class Widget>
    Widget *child(const char *name) const
    {
        return requiredChild<Widget>(&tab, name);
    }
    ParameterizedEdit *edit(const char *name) const { return child<ParameterizedEdit>(name); }
    ParameterizedEdit *login() const { return edit("loginEdit"); }
    ZRComboBox *policy() const { return child<ZRComboBox>("cbIdentType"); }
    QCheckBox *expiryCheck() const { return child<QCheckBox>("passwExpireCheck"); }
    ZRDateEdit *expiry() const { return child<ZRDateEdit>("passwordExpireDateEdit"); }
    QLabel *warning() const { return child<QLabel>("lbWarning"); }
    QAction *changeAction() const { return child<QAction>("actionChangePassword"); }
    QAction *resetAction() const { return child<QAction>("actionResetPassword"); }
    QString lastMessage() const
    {
        return messages.isEmpty() ? QString() : messages.last().at(0).toString();
    }
    // As the operator does it, through the keyboard: that is what emits activated().
    void pickPolicy(int data)
    {
        const int index = policy()->findData(data);
        QVERIFY(index >= 0);
        policy()->setFocus();
        policy()->setCurrentIndex(index > 0 ? index - 1 : 1);
        QTest::keyClick(policy(), index > 0 ? Qt::Key_Down : Qt::Key_Up);
        QCOMPARE(policy()->currentData().toInt(), data);
    }
    // Replaces the login as typed, one key after the other.
    void typeLogin(const QString &text)
    {
        login()->clear();
        QTest::keyClicks(login(), text);
    }

    UserProperties tab;
    QList<TaskInfo> tasks;
    QStringList said; // "edited" and "denied", in order
    QSignalSpy messages{&tab, &UserProperties::showMessage};
};

// The frame every task of the tab has.
void checkFrame(const TaskInfo &task, const UserProperties *tab, const QString &method,
                const QString &start, const QString &error)
{
    QCOMPARE(task.uid, ClerkUid);
    QCOMPARE(task.type, QStringLiteral("save_object"));
    QCOMPARE(task.receiver.data(), static_cast<const QObject *>(tab));
    QCOMPARE(task.method, method);
    QCOMPARE(task.startMessage, start);
    QCOMPARE(task.errorMessage, error);
    QVERIFY(task.dependsOn.isEmpty());
    QVERIFY(task.subtasks.isEmpty());
}

Data taskData(const QVariantHash &changes)
{
    Data data;
    data.insert(QStringLiteral("object_type"), QStringLiteral("OT_USER"));
    data.insert(QStringLiteral("parent"), TYPE_ID(40));
    for (auto it = changes.cbegin(); it != changes.cend(); ++it)
        data.insert(QStringLiteral("property-") + it.key(), it.value());
    return data;
}

// QMultiMap's own comparison takes QVariant(1) for QVariant("1"); the types count here.
void compareData(const Data &actual, const Data &expected)
{
    QCOMPARE(actual.keys(), expected.keys());
    for (auto it = expected.cbegin(); it != expected.cend(); ++it) {
        const QVariant value = actual.value(it.key());
        QVERIFY2(value.userType() == it.value().userType(), qPrintable(it.key()));
        QCOMPARE(value, it.value());
    }
}

// Answers the reset question; checks what it asks first.
ModalAnswerer *answerQuestion(QMessageBox::StandardButton button, bool *asked)
{
    return new ModalAnswerer([button, asked](QWidget *modal) {
        auto *box = qobject_cast<QMessageBox *>(modal);
        if (!box) {
            modal->close();
            return;
        }
        *asked = box->windowTitle() == QStringLiteral("Сброс пароля")
                 && box->text() == QStringLiteral("Сбросить пароль для пользователя clerk?")
                 && box->defaultButton() == box->button(QMessageBox::No)
                 && box->standardButtons() == (QMessageBox::Yes | QMessageBox::No);
        box->button(button)->click();
    });
}

// Fills in the password dialog: the new password twice, and the current one if asked.
ModalAnswerer *answerPasswordDialog(bool ok, const QString &current = QString())
{
    return new ModalAnswerer([ok, current](QWidget *modal) {
        auto *dialog = qobject_cast<PasswordDialog *>(modal);
        if (!dialog) {
            modal->close();
            return;
        }
        auto *passwords = dialog->findChild<PasswordChangeWidget *>("passChangeWidget");
        passwords->findChild<KPasswordLineEdit *>("passwordEdit")->setPassword(NewPassword);
        passwords->findChild<KPasswordLineEdit *>("repeatEdit")->setPassword(NewPassword);
        dialog->findChild<QLineEdit *>("leOldPassword")->setText(current);
        auto *buttons = dialog->findChild<QDialogButtonBox *>("buttonBox");
        buttons->button(ok ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel)->click();
    });
}

} // namespace

class TestUserProperties : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { zeral::registerMetaTypes(); }
    void init()
    {
        logIn();
        fillStore();
    }
    void cleanup()
    {
        AuthData::clear();
        zeral::LocalStorage::instance()->clear();
    }

    void form()
    {
        Editor e;
        QCOMPARE(e.tab.objectName(), QStringLiteral("UserProperties"));
        QCOMPARE(e.tab.minimumWidth(), 460);
        QStringList items;
        QList<int> data;
        for (int i = 0; i < e.policy()->count(); ++i) {
            items << e.policy()->itemText(i);
            data << e.policy()->itemData(i).toInt();
        }
        QCOMPARE(items, (QStringList{"Логин + пароль", "Логин + биометрическая информация",
                                     "Логин + пароль + биометрическая информация",
                                     "Авторизация Kerberos"}));
        QCOMPARE(data, (QList<int>{0, 1, 2, 4}));

        // The date edit built to mark a passed date, in the form's place, starting at the
        // end of a new password's validity.
        QCOMPARE(e.tab.findChildren<ZRDateEdit *>().size(), 1);
        QVERIFY(e.expiry()->highlightsPast());
        QVERIFY(e.expiry()->calendarPopup());
        QVERIFY(!e.expiry()->isEnabled());
        QCOMPARE(e.expiry()->date(), QDate::currentDate().addDays(ExpiryDays));
        auto *grid = qobject_cast<QGridLayout *>(e.child<QGroupBox>("groupBox")->layout());
        QVERIFY(grid);
        QCOMPARE(grid->itemAtPosition(1, 1)->widget(), e.expiry());
        QCOMPARE(grid->itemAtPosition(1, 0)->widget(), e.expiryCheck());

        QWidget *focus = e.login();
        QStringList order{focus->objectName()};
        for (int i = 0; i < 6; ++i) {
            focus = focus->nextInFocusChain();
            while (focus->focusPolicy() == Qt::NoFocus || !focus->isVisible())
                focus = focus->nextInFocusChain();
            order << focus->objectName();
        }
        QCOMPARE(order, (QStringList{"loginEdit", "surnameEdit", "nameEdit", "patronymicEdit",
                                     "cbIdentType", "passwExpireCheck", "passwordExpireDateEdit"}));

        QVERIFY(e.warning()->isHidden());
        QCOMPARE(e.warning()->font().pointSize(), e.tab.font().pointSize() + 2);
        const QPalette palette = e.warning()->palette();
        QCOMPARE(palette.color(QPalette::Active, QPalette::WindowText), QColor(255, 0, 0));
        QCOMPARE(palette.color(QPalette::Inactive, QPalette::WindowText), QColor(255, 0, 0));
        QCOMPARE(palette.color(QPalette::Disabled, QPalette::WindowText), QColor(120, 120, 120));
        QCOMPARE(e.warning()->alignment(), Qt::AlignLeft | Qt::AlignBottom);

        // The tab carries its actions for the dialog's tool bar.
        QCOMPARE(e.tab.actions(), (QList<QAction *>{e.changeAction(), e.resetAction()}));
        QCOMPARE(e.changeAction()->text(), QStringLiteral("Сменить пароль"));
        QCOMPARE(e.resetAction()->text(), QStringLiteral("Сбросить пароль"));
        QCOMPARE(e.changeAction()->icon().name(), QStringLiteral("action-change_password"));
        QCOMPARE(e.resetAction()->icon().name(), QStringLiteral("action-device_reset"));
    }

    // The dialog offers the tab's actions on its tool bar, as they are enabled for the user.
    void actionsOnTheDialogToolBar()
    {
        TabbedDialog dialog;
        auto *tab = new UserProperties(&dialog);
        dialog.addTab(tab, QStringLiteral("Основное"));
        tab->setCurrent(user(OperatorUid, "admin", "RT_ADMINISTRATOR"));
        dialog.show();
        const auto onToolBar = [&dialog](const QString &text) -> QAction * {
            for (QAction *action : dialog.toolBar()->actions()) {
                if (action->text() == text)
                    return action;
            }
            return nullptr;
        };
        QTRY_VERIFY(onToolBar(QStringLiteral("Сменить пароль")));
        QVERIFY(onToolBar(QStringLiteral("Сменить пароль"))->isEnabled());
        QVERIFY(onToolBar(QStringLiteral("Сбросить пароль")));
        QVERIFY(!onToolBar(QStringLiteral("Сбросить пароль"))->isEnabled());
        QVERIFY(dialog.toolBar()->isVisible());
    }

    void stateAfterSetCurrent_data()
    {
        QTest::addColumn<TYPE_ID>("uid");
        QTest::addColumn<QString>("login");
        QTest::addColumn<QString>("roleTemplate");
        QTest::addColumn<QString>("identType");
        QTest::addColumn<QString>("expires");
        QTest::addColumn<bool>("loginEnabled");
        QTest::addColumn<bool>("namesEnabled");
        QTest::addColumn<bool>("checkEnabled");
        QTest::addColumn<bool>("dateEnabled");
        QTest::addColumn<bool>("change");
        QTest::addColumn<bool>("reset");
        QTest::addColumn<int>("policy");

        const QString date = QStringLiteral("2031-03-15");
        // clang-format off
        QTest::addRow("another user") << ClerkUid << "clerk" << "RT_OPERATOR" << "0" << ""
            << true << true << true << false << true << true << 0;
        QTest::addRow("another user with expiry") << ClerkUid << "clerk" << "RT_OPERATOR" << "2"
            << date << true << true << true << true << true << true << 2;
        QTest::addRow("no policy stored") << ClerkUid << "clerk" << "RT_OPERATOR" << QString()
            << "" << true << true << true << false << true << true << 0;
        QTest::addRow("self as administrator") << OperatorUid << "admin" << "RT_ADMINISTRATOR"
            << "1" << date << true << true << false << false << true << false << 1;
        QTest::addRow("self as supervisor") << OperatorUid << "admin" << "RT_SUPERVISOR" << "0"
            << "" << true << true << false << false << true << false << 0;
        QTest::addRow("self, ordinary template") << OperatorUid << "admin" << "RT_OPERATOR"
            << "0" << date << false << false << false << false << true << false << 0;
        // Selecting a policy other than the first gives no login or reset back here.
        QTest::addRow("self, ordinary template, fingerprint") << OperatorUid << "admin"
            << "RT_OPERATOR" << "1" << "" << false << false << false << false << true << false
            << 1;
        QTest::addRow("root") << RootUid << "root" << "RT_SUPERVISOR" << "0" << ""
            << false << true << true << false << true << true << 0;
        QTest::addRow("kerberos") << ClerkUid << "clerk" << "RT_OPERATOR" << "4" << date
            << false << true << true << true << false << false << 4;
        QTest::addRow("self on kerberos") << OperatorUid << "admin" << "RT_ADMINISTRATOR" << "4"
            << "" << false << true << false << false << false << false << 4;
        // clang-format on
    }
    void stateAfterSetCurrent()
    {
        QFETCH(TYPE_ID, uid);
        QFETCH(QString, login);
        QFETCH(QString, roleTemplate);
        QFETCH(QString, identType);
        QFETCH(QString, expires);
        Editor e;
        e.tab.setCurrent(user(uid, login, roleTemplate, identType, expires));

        QVERIFY(e.tab.isEnabled());
        QCOMPARE(e.login()->text(), login);
        QCOMPARE(e.edit("surnameEdit")->text(), QStringLiteral("Фамилия") + login);
        QCOMPARE(e.edit("nameEdit")->text(), QStringLiteral("Имя"));
        QCOMPARE(e.edit("patronymicEdit")->text(), QStringLiteral("Отчество"));
        QTEST(e.login()->isEnabled(), "loginEnabled");
        QTEST(e.edit("surnameEdit")->isEnabled(), "namesEnabled");
        QTEST(e.edit("nameEdit")->isEnabled(), "namesEnabled");
        QTEST(e.edit("patronymicEdit")->isEnabled(), "namesEnabled");
        QTEST(e.expiryCheck()->isEnabled(), "checkEnabled");
        QCOMPARE(e.expiryCheck()->isChecked(), !expires.isEmpty());
        QTEST(e.expiry()->isEnabled(), "dateEnabled");
        if (!expires.isEmpty())
            QCOMPARE(e.expiry()->date(), QDate::fromString(expires, Qt::ISODate));
        else
            QCOMPARE(e.expiry()->date(), QDate::currentDate().addDays(ExpiryDays));
        QTEST(e.changeAction()->isEnabled(), "change");
        QTEST(e.resetAction()->isEnabled(), "reset");
        QTEST(e.policy()->currentData().toInt(), "policy");

        // The login is checked against every other user, and the edit judges itself.
        auto *validator = qobject_cast<const UserLoginValidator *>(e.login()->validator());
        QVERIFY(validator);
        QStringList others = validator->denyLogins();
        others.sort();
        QStringList expected{"admin", "clerk", "root"};
        expected.removeAll(login);
        QCOMPARE(others, expected);
        QVERIFY(e.login()->isValidationHighlighted());
        QVERIFY(!e.login()->isEmptyTextAllowed());
        // Filling is no edit.
        QCOMPARE(e.said, QStringList());
    }

    // Each setCurrent brings a validator; the earlier ones stay with the edit.
    void validatorPerUser()
    {
        Editor e;
        e.tab.setCurrent(clerk());
        e.tab.setCurrent(user(RootUid, "root", "RT_SUPERVISOR"));
        QCOMPARE(e.login()->findChildren<UserLoginValidator *>().size(), 2);
        auto *validator = qobject_cast<const UserLoginValidator *>(e.login()->validator());
        QVERIFY(!validator->denyLogins().contains(QStringLiteral("root")));
        QVERIFY(validator->denyLogins().contains(QStringLiteral("clerk")));
    }

    void noUser()
    {
        Editor e;
        e.tab.setTemplatesCount(ClerkUid, 0);
        e.tab.setCurrent(clerk("0", "2031-03-15"));
        e.tab.setTemplatesCount(ClerkUid, 0);
        QVERIFY(e.expiryCheck()->isChecked());
        e.tab.setCurrent(zeral::ObjectInfo());
        QVERIFY(!e.tab.isEnabled());
        for (const char *name : {"loginEdit", "surnameEdit", "nameEdit", "patronymicEdit"})
            QVERIFY2(e.edit(name)->text().isEmpty(), name);
        QVERIFY(!e.expiryCheck()->isChecked());
        QVERIFY(!e.expiry()->isEnabled());
        QCOMPARE(e.said, QStringList());
        // The count stays: another uid's count changes nothing, the stored 0 still shows.
        e.warning()->hide();
        e.tab.setTemplatesCount(ClerkUid, 3);
        QVERIFY(!e.warning()->isHidden());
        // A new user works as before.
        e.tab.setCurrent(clerk());
        QVERIFY(e.tab.isEnabled());
        QCOMPARE(e.login()->text(), QStringLiteral("clerk"));
    }

    // The count of the current user is kept; another user's is not, and the kept one is
    // applied to the form all the same.
    void templatesCount_data()
    {
        QTest::addColumn<bool>("told");
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("otherCount");
        QTest::addColumn<bool>("warning");
        QTest::addRow("never told") << false << 0 << 0 << false;
        QTest::addRow("unknown") << true << -1 << 0 << false;
        QTest::addRow("none") << true << 0 << 5 << true;
        QTest::addRow("some") << true << 3 << 0 << false;
    }
    void templatesCount()
    {
        QFETCH(bool, told);
        QFETCH(int, count);
        QFETCH(int, otherCount);
        QFETCH(bool, warning);
        Editor e;
        e.tab.setCurrent(clerk());
        if (told)
            e.tab.setTemplatesCount(ClerkUid, count);
        const auto check = [&] {
            QCOMPARE(!e.warning()->isHidden(), warning);
            QCOMPARE(e.policy()->isItemEnabled(0), true);
            QCOMPARE(e.policy()->isItemEnabled(1), !warning);
            QCOMPARE(e.policy()->isItemEnabled(2), !warning);
            QCOMPARE(e.policy()->isItemEnabled(3), true);
        };
        check();
        // Spoil the form: the other uid's count must put it back as the kept count says.
        e.warning()->setVisible(!warning);
        e.policy()->setItemEnabled(1, warning);
        e.policy()->setItemEnabled(2, warning);
        e.tab.setTemplatesCount(ClerkUid + 1, otherCount);
        check();
        QCOMPARE(e.policy()->currentData().toInt(), 0);
    }

    // A user on a fingerprint policy without templates keeps it, greyed out as it is.
    void fingerprintPolicyKeptWithoutTemplates_data()
    {
        QTest::addColumn<QString>("identType");
        QTest::addRow("fingerprint") << "1";
        QTest::addRow("password and fingerprint") << "2";
    }
    void fingerprintPolicyKeptWithoutTemplates()
    {
        QFETCH(QString, identType);
        Editor e;
        e.tab.setCurrent(clerk(identType));
        e.tab.setTemplatesCount(ClerkUid, 0);
        QCOMPARE(e.policy()->currentData().toString(), identType);
        QVERIFY(!e.policy()->isItemEnabled(e.policy()->currentIndex()));
        QVERIFY(!e.warning()->isHidden());
        e.tab.applyChanges();
        QVERIFY(!e.tasks.at(0).data.contains(QStringLiteral("property-PT_IDENT_TYPE")));
    }

    // Kerberos takes the password actions and the login away at once; any other policy
    // gives them back, also where the form itself had taken them.
    void kerberosAndBack_data()
    {
        QTest::addColumn<TYPE_ID>("uid");
        QTest::addColumn<QString>("login");
        QTest::addColumn<QString>("roleTemplate");
        QTest::addRow("another user") << ClerkUid << "clerk"
                                      << "RT_OPERATOR";
        QTest::addRow("root") << RootUid << "root"
                              << "RT_SUPERVISOR";
        QTest::addRow("own account") << OperatorUid << "admin"
                                     << "RT_OPERATOR";
    }
    void kerberosAndBack()
    {
        QFETCH(TYPE_ID, uid);
        QFETCH(QString, login);
        QFETCH(QString, roleTemplate);
        Editor e;
        e.tab.setCurrent(user(uid, login, roleTemplate));
        e.pickPolicy(4);
        QVERIFY(!e.changeAction()->isEnabled());
        QVERIFY(!e.resetAction()->isEnabled());
        QVERIFY(!e.login()->isEnabled());
        QCOMPARE(e.said, QStringList{"edited"});

        e.pickPolicy(2);
        QVERIFY(e.changeAction()->isEnabled());
        QVERIFY(e.resetAction()->isEnabled());
        QVERIFY(e.login()->isEnabled());
        QCOMPARE(e.said, (QStringList{"edited", "edited"}));
    }

    void checkLogin_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("said"); // after the last key
        QTest::addRow("free") << "clerk2"
                              << "edited";
        QTest::addRow("own login again") << "clerk"
                                         << "edited";
        QTest::addRow("taken") << "admin"
                               << "denied";
        QTest::addRow("taken by root") << "root"
                                       << "denied";
        QTest::addRow("blanks only") << "   "
                                     << "denied";
        QTest::addRow("case differs") << "Admin"
                                      << "edited";
        QTest::addRow("leading blank") << " admin"
                                       << "edited";
    }
    void checkLogin()
    {
        QFETCH(QString, typed);
        Editor e;
        e.tab.setCurrent(clerk());
        e.typeLogin(typed);
        QCOMPARE(e.said.size(), typed.size());
        QTEST(e.said.last(), "said");
        QCOMPARE(e.login()->isInputValid(), e.said.last() == QStringLiteral("edited"));
        // Erasing everything is a blank login, which takes the Save button away.
        e.login()->selectAll();
        QTest::keyClick(e.login(), Qt::Key_Backspace);
        QCOMPARE(e.said.last(), QStringLiteral("denied"));
    }

    // What the operator does raises the Save button; what the form does to itself doesn't.
    void editsRaiseSave()
    {
        Editor e;
        e.tab.setCurrent(clerk());
        e.tab.setTemplatesCount(ClerkUid, 2);
        e.tab.setCurrent(clerk("4", "2031-03-15"));
        QCOMPARE(e.said, QStringList());
        QTest::keyClicks(e.edit("surnameEdit"), QStringLiteral("v"));
        QCOMPARE(e.said.size(), 1);
        QTest::keyClicks(e.edit("nameEdit"), QStringLiteral("a"));
        QTest::keyClicks(e.edit("patronymicEdit"), QStringLiteral("c"));
        QCOMPARE(e.said.size(), 3);
        e.expiry()->setDate(QDate(2032, 1, 1));
        QCOMPARE(e.said.size(), 4);
        QTest::mouseClick(e.expiryCheck(), Qt::LeftButton);
        QVERIFY(!e.expiryCheck()->isChecked());
        QVERIFY(!e.expiry()->isEnabled());
        QCOMPARE(e.said.size(), 5);
        QTest::mouseClick(e.expiryCheck(), Qt::LeftButton);
        QVERIFY(e.expiry()->isEnabled());
        QCOMPARE(e.said.size(), 6);
        QCOMPARE(e.said.count(QStringLiteral("edited")), 6);
    }

    // Apply collects what differs from the user as given; the expiry always goes.
    void applyTasks_data()
    {
        QTest::addColumn<QString>("expires"); // of the stored user
        QTest::addColumn<QVariantHash>("typed");
        QTest::addColumn<int>("check"); // -1: leave, 0: uncheck, 1: check
        QTest::addColumn<QDate>("date");
        QTest::addColumn<int>("policy"); // -1: leave
        QTest::addColumn<QVariantHash>("changes");

        const QString stored = QStringLiteral("2031-03-15");
        const QDate later(2032, 7, 1);
        const QString laterText = QStringLiteral("2032-07-01");
        // clang-format off
        QTest::addRow("nothing changed") << "" << QVariantHash() << -1 << QDate() << -1
            << QVariantHash{{"PT_PASSWORD_EXPIRED", ""}};
        QTest::addRow("nothing changed, with expiry") << stored << QVariantHash() << -1 << QDate()
            << -1 << QVariantHash{{"PT_PASSWORD_EXPIRED", stored}};
        QTest::addRow("surname") << "" << QVariantHash{{"surnameEdit", "Петров"}} << -1 << QDate()
            << -1 << QVariantHash{{"PT_SURNAME", "Петров"}, {"PT_PASSWORD_EXPIRED", ""}};
        QTest::addRow("typed back as it was") << "" << QVariantHash{{"nameEdit", "Имя"}} << -1
            << QDate() << -1 << QVariantHash{{"PT_PASSWORD_EXPIRED", ""}};
        QTest::addRow("all four") << ""
            << QVariantHash{{"loginEdit", "clerk2"}, {"surnameEdit", "Петров"},
                            {"nameEdit", "Пётр"}, {"patronymicEdit", ""}}
            << -1 << QDate() << -1
            << QVariantHash{{"PT_LOGIN", "clerk2"}, {"PT_SURNAME", "Петров"}, {"PT_NAME", "Пётр"},
                            {"PT_PATRONYMIC", ""}, {"PT_PASSWORD_EXPIRED", ""}};
        QTest::addRow("expiry set") << "" << QVariantHash() << 1 << later << -1
            << QVariantHash{{"PT_PASSWORD_EXPIRED", laterText}};
        QTest::addRow("expiry moved") << stored << QVariantHash() << -1 << later << -1
            << QVariantHash{{"PT_PASSWORD_EXPIRED", laterText}};
        QTest::addRow("expiry taken away") << stored << QVariantHash() << 0 << QDate() << -1
            << QVariantHash{{"PT_PASSWORD_EXPIRED", ""}};
        QTest::addRow("policy") << "" << QVariantHash() << -1 << QDate() << 2
            << QVariantHash{{"PT_IDENT_TYPE", "2"}, {"PT_PASSWORD_EXPIRED", ""}};
        QTest::addRow("kerberos") << "" << QVariantHash() << -1 << QDate() << 4
            << QVariantHash{{"PT_IDENT_TYPE", "4"}, {"PT_PASSWORD_EXPIRED", ""}};
        QTest::addRow("same policy picked") << "" << QVariantHash() << -1 << QDate() << 0
            << QVariantHash{{"PT_PASSWORD_EXPIRED", ""}};
        // clang-format on
    }
    void applyTasks()
    {
        QFETCH(QString, expires);
        QFETCH(QVariantHash, typed);
        QFETCH(int, check);
        QFETCH(QDate, date);
        QFETCH(int, policy);
        QFETCH(QVariantHash, changes);
        Editor e;
        e.tab.setCurrent(clerk("0", expires));
        for (auto it = typed.cbegin(); it != typed.cend(); ++it)
            e.edit(it.key().toLatin1().constData())->setText(it.value().toString());
        if (check >= 0)
            e.expiryCheck()->setChecked(check == 1);
        if (date.isValid())
            e.expiry()->setDate(date);
        if (policy >= 0)
            e.pickPolicy(policy);

        const qint64 before = TaskInfo::_nextid;
        e.tab.applyChanges();
        QCOMPARE(e.tasks.size(), 1);
        const TaskInfo &task = e.tasks.at(0);
        checkFrame(task, &e.tab, "saved", "Сохранение параметров пользователя clerk",
                   "Ошибка сохранения параметров пользователя clerk");
        QVERIFY(task.id >= before);
        compareData(task.data, taskData(changes));
        QVERIFY(e.tab.isEnabled());

        // Every call makes a task of its own.
        e.tab.applyChanges();
        QCOMPARE(e.tasks.size(), 2);
        QVERIFY(e.tasks.at(1).id > task.id);
    }

    void resetPassword_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::addColumn<bool>("database");
        QTest::addColumn<bool>("withDefault");
        QTest::addColumn<QString>("warning");
        QTest::addColumn<bool>("sent");
        QTest::addColumn<QString>("password"); // whose hash is sent
        QTest::addRow("yes") << true << true << true << "" << true << DefaultPassword;
        QTest::addRow("no") << false << true << true << "" << false << QString();
        QTest::addRow("no database object")
            << true << false << false << "ERROR: no DB objects!" << false << QString();
        // An installation without a default gets the empty one, as the store reads it.
        QTest::addRow("database object without a default")
            << true << true << false << "" << true << QString();
    }
    void resetPassword()
    {
        QFETCH(bool, yes);
        QFETCH(bool, database);
        QFETCH(bool, withDefault);
        QFETCH(QString, warning);
        QFETCH(bool, sent);
        QFETCH(QString, password);
        fillStore(database, withDefault);
        Editor e;
        e.tab.setCurrent(clerk());
        bool asked = false;
        std::unique_ptr<ModalAnswerer> answerer(
            answerQuestion(yes ? QMessageBox::Yes : QMessageBox::No, &asked));
        if (!warning.isEmpty())
            QTest::ignoreMessage(QtWarningMsg, qPrintable(warning));
        e.resetAction()->trigger();
        QVERIFY(answerer->answered());
        QVERIFY(asked);
        if (!sent) {
            QVERIFY(e.tasks.isEmpty());
            QVERIFY(e.tab.isEnabled());
            return;
        }
        QCOMPARE(e.tasks.size(), 1);
        const TaskInfo &task = e.tasks.at(0);
        checkFrame(task, &e.tab, "passwordCleared", "Сброс пароля пользователя clerk",
                   "Ошибка сброса пароля пользователя clerk");
        compareData(task.data,
                    taskData({{"PT_CLEAR_PASSWORD", 1}, {"PT_PASSHASH", md5(password)}}));
        // Disabled until the outcome is known.
        QVERIFY(!e.tab.isEnabled());
    }

    void setPassword_data()
    {
        QTest::addColumn<TYPE_ID>("uid");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QString>("current");
        QTest::addRow("another user") << ClerkUid << true << QString();
        QTest::addRow("cancelled") << ClerkUid << false << QString();
        QTest::addRow("own account") << OperatorUid << true << OperatorPassword;
    }
    void setPassword()
    {
        QFETCH(TYPE_ID, uid);
        QFETCH(bool, ok);
        QFETCH(QString, current);
        Editor e;
        const zeral::ObjectInfo edited
            = uid == ClerkUid ? clerk() : user(uid, "admin", "RT_ADMINISTRATOR");
        e.tab.setCurrent(edited);
        std::unique_ptr<ModalAnswerer> answerer(answerPasswordDialog(ok, current));
        e.changeAction()->trigger();
        QVERIFY(answerer->answered());
        // The dialog was the tab's child, and is gone with the call.
        QVERIFY(e.tab.findChildren<PasswordDialog *>().isEmpty());
        if (!ok) {
            QVERIFY(e.tasks.isEmpty());
            QVERIFY(e.tab.isEnabled());
            return;
        }
        QCOMPARE(e.tasks.size(), 1);
        const TaskInfo &task = e.tasks.at(0);
        QCOMPARE(task.uid, uid);
        QCOMPARE(task.method, QStringLiteral("passwordSet"));
        QCOMPARE(task.startMessage,
                 "Установка пароля пользователя " + edited.parameters["PT_LOGIN"]);
        QCOMPARE(task.errorMessage,
                 "Ошибка установки пароля пользователя " + edited.parameters["PT_LOGIN"]);
        compareData(task.data,
                    taskData({{"PT_SET_PASSWORD", 1}, {"PT_PASSHASH", md5(NewPassword)}}));
        QVERIFY(!task.data.values().contains(NewPassword));
        QVERIFY(!e.tab.isEnabled());
    }

    // The outcome of each task, as the queue tells it.
    void results_data()
    {
        QTest::addColumn<QString>("slot");
        QTest::addColumn<TYPE_ID>("uid");
        QTest::addColumn<QString>("message");
        QTest::addRow("saved") << "saved" << ClerkUid << "Параметры пользователя сохранены";
        QTest::addRow("not saved")
            << "saved" << TYPE_ID(0) << "Ошибка сохранения параметров пользователя";
        QTest::addRow("cleared") << "passwordCleared" << ClerkUid
                                 << "Пароль пользователя clerk2 сброшен на пароль по умолчанию";
        QTest::addRow("not cleared") << "passwordCleared" << TYPE_ID(0) << "Ошибка сброса пароля";
        QTest::addRow("set") << "passwordSet" << ClerkUid
                             << "Пароль пользователя clerk2 установлен";
        QTest::addRow("not set") << "passwordSet" << TYPE_ID(0) << "Ошибка установки пароля";
    }
    void results()
    {
        QFETCH(QString, slot);
        QFETCH(TYPE_ID, uid);
        Editor e;
        e.tab.setCurrent(clerk("0", "2031-03-15"));
        // Edited meanwhile: the login text is what the password messages name.
        e.login()->setText(QStringLiteral("clerk2"));
        e.edit("surnameEdit")->setText(QStringLiteral("Петров"));
        e.pickPolicy(2);
        e.tab.setEnabled(false);
        QVERIFY(QMetaObject::invokeMethod(&e.tab, slot.toLatin1().constData(),
                                          Q_ARG(zeral::TYPE_ID, uid)));
        QTEST(e.lastMessage(), "message");
        QCOMPARE(e.messages.size(), 1);
        if (slot != QLatin1String("saved")) {
            // A password outcome only reports; the form stays as the operator left it.
            QVERIFY(e.tab.isEnabled());
            QCOMPARE(e.login()->text(), QStringLiteral("clerk2"));
            QCOMPARE(e.policy()->currentData().toInt(), 2);
            return;
        }
        e.tab.setEnabled(true);
        e.tasks.clear();
        e.tab.applyChanges();
        const Data data = e.tasks.at(0).data;
        if (uid) {
            // The tab holds what the server now holds: nothing differs any more.
            QCOMPARE(e.login()->text(), QStringLiteral("clerk2"));
            compareData(data, taskData({{"PT_PASSWORD_EXPIRED", "2031-03-15"}}));
        } else {
            // A failed save puts the form back as the user is stored.
            QCOMPARE(e.login()->text(), QStringLiteral("clerk"));
            QCOMPARE(e.edit("surnameEdit")->text(), QStringLiteral("Фамилияclerk"));
            QCOMPARE(e.policy()->currentData().toInt(), 0);
            QVERIFY(e.expiryCheck()->isChecked());
            compareData(data, taskData({{"PT_PASSWORD_EXPIRED", "2031-03-15"}}));
        }
    }

    // Through the screen's queue to the scripted server: the request as it goes out, and the
    // outcome told back to the tab.
    void throughTheQueue_data()
    {
        QTest::addColumn<QString>("action"); // "apply", "reset" or "set"
        QTest::addColumn<bool>("succeeds");
        QTest::addColumn<QVariantHash>("parameters");
        QTest::addColumn<QString>("message");

        const QVariantHash applied{
            {"PT_SURNAME", "Петров"}, {"PT_PASSWORD_EXPIRED", ""}, {"PT_IDENT_TYPE", "2"}};
        const QVariantHash reset{{"PT_CLEAR_PASSWORD", "1"}, {"PT_PASSHASH", md5(DefaultPassword)}};
        const QVariantHash set{{"PT_SET_PASSWORD", "1"}, {"PT_PASSHASH", md5(NewPassword)}};
        // clang-format off
        QTest::addRow("apply") << "apply" << true << applied << "Параметры пользователя сохранены";
        QTest::addRow("apply refused") << "apply" << false << applied
            << "Ошибка сохранения параметров пользователя";
        QTest::addRow("reset") << "reset" << true << reset
            << "Пароль пользователя clerk сброшен на пароль по умолчанию";
        QTest::addRow("reset refused") << "reset" << false << reset << "Ошибка сброса пароля";
        QTest::addRow("set") << "set" << true << set << "Пароль пользователя clerk установлен";
        QTest::addRow("set refused") << "set" << false << set << "Ошибка установки пароля";
        // clang-format on
    }
    void throughTheQueue()
    {
        QFETCH(QString, action);
        QFETCH(bool, succeeds);
        QFETCH(QVariantHash, parameters);
        UserCtlHarness h;
        logIn();
        fillStore();
        Editor e;
        QObject::connect(&e.tab, &UserProperties::appendTask, h.screen, &UserCtl::addTask);
        e.tab.setCurrent(clerk());

        std::unique_ptr<ModalAnswerer> answerer;
        if (action == QLatin1String("apply")) {
            e.edit("surnameEdit")->setText(QStringLiteral("Петров"));
            e.pickPolicy(2);
            e.tab.applyChanges();
        } else if (action == QLatin1String("reset")) {
            bool asked = false;
            answerer.reset(answerQuestion(QMessageBox::Yes, &asked));
            e.resetAction()->trigger();
            QVERIFY(asked);
        } else {
            answerer.reset(answerPasswordDialog(true));
            e.changeAction()->trigger();
            QVERIFY(answerer->answered());
        }

        const QList<Command> saves = h.sent(command::UpdateObject);
        QCOMPARE(saves.size(), 1);
        const SavedObject saved(saves.at(0));
        QCOMPARE(saved.uid, ClerkUid);
        QCOMPARE(saved.type, QStringLiteral("OT_USER"));
        QCOMPARE(saved.parent, TYPE_ID(40));
        // Every value travels as text, the hash of a password among them, never the password.
        QCOMPARE(saved.parameters, ZRGlobals::convertHash(parameters));
        // A password task waits with the form disabled.
        QCOMPARE(e.tab.isEnabled(), action == QLatin1String("apply"));

        if (succeeds)
            h.server.answerOk(saves.at(0));
        else
            h.server.answerFailure(saves.at(0), zeral::proto::StatusForbidden, "no");
        QTRY_COMPARE(e.messages.size(), 1);
        QTEST(e.lastMessage(), "message");
        QVERIFY(e.tab.isEnabled());
        if (action == QLatin1String("apply")) {
            QCOMPARE(e.edit("surnameEdit")->text(),
                     succeeds ? QStringLiteral("Петров") : QStringLiteral("Фамилияclerk"));
            QCOMPARE(e.policy()->currentData().toInt(), succeeds ? 2 : 0);
        }
    }
};

QTEST_MAIN(TestUserProperties)
#include "tst_userproperties.moc"
