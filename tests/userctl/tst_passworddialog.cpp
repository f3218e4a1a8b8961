// The dialog that asks for a new password: the Ok button follows the host widget's verdict,
// and an operator's own password is only changed with his current one.
#include <src/passworddialog.h>

#include <host/core/authdata.h>
#include <host/core/passhash.h>
#include <host/gui/widgets/passwordchangewidget.h>
#include <host/gui/widgets/passwordcriteriapanel.h>

#include <KPasswordLineEdit>

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

namespace {

constexpr unsigned int OperatorUid = 2;
constexpr unsigned int ClerkUid = 7;
const QString CurrentPassword = QStringLiteral("OldPass1");
// Good enough for the default policy: eight characters, upper, lower and digit.
const QString GoodPassword = QStringLiteral("Secret12");

struct Dialog
{
    explicit Dialog(unsigned int uid)
        : dialog(uid)
    {
        dialog.show();
    }
    template<class Widget>
    Widget *child(const char *name) const
    {
        return dialog.findChild<Widget *>(QLatin1String(name));
    }
    QPushButton *ok() const
    {
        return child<QDialogButtonBox>("buttonBox")->button(QDialogButtonBox::Ok);
    }
    QLineEdit *current() const { return child<QLineEdit>("leOldPassword"); }
    QLabel *message() const { return child<QLabel>("lbMessage"); }
    PasswordChangeWidget *passwords() const
    {
        return child<PasswordChangeWidget>("passChangeWidget");
    }
    void typeNew(const QString &password, const QString &repeat)
    {
        passwords()->findChild<KPasswordLineEdit *>("passwordEdit")->setPassword(password);
        passwords()->findChild<KPasswordLineEdit *>("repeatEdit")->setPassword(repeat);
    }
    void typeCurrent(const QString &text)
    {
        current()->clear();
        QTest::keyClicks(current(), text);
    }

    PasswordDialog dialog;
    QSignalSpy finished{&dialog, &QDialog::finished};
};

} // namespace

class TestPasswordDialog : public QObject
{
    Q_OBJECT
private slots:
    void init()
    {
        AuthData::set({QStringLiteral("admin"),
                       OperatorUid,
                       "session-1",
                       QStringLiteral("RT_ADMINISTRATOR"),
                       {},
                       PassHash::encrypt(CurrentPassword, QCryptographicHash::Md5)});
    }
    void cleanup() { AuthData::clear(); }

    void form()
    {
        Dialog d(ClerkUid);
        QCOMPARE(d.dialog.objectName(), QStringLiteral("PasswordDialog"));
        QCOMPARE(d.dialog.windowTitle(), QStringLiteral("Смена пароля"));
        QCOMPARE(d.dialog.windowModality(), Qt::ApplicationModal);
        QCOMPARE(d.current()->echoMode(), QLineEdit::Password);
        QCOMPARE(d.message()->text(), QStringLiteral("Текущий пароль введен неверно"));
        QVERIFY(d.message()->isHidden());
        QVERIFY(d.message()->wordWrap());
        const QPalette palette = d.message()->palette();
        QCOMPARE(palette.color(QPalette::Active, QPalette::WindowText), QColor(255, 0, 0));
        QCOMPARE(palette.color(QPalette::Inactive, QPalette::WindowText), QColor(255, 0, 0));
        QCOMPARE(palette.color(QPalette::Disabled, QPalette::WindowText), QColor(120, 120, 120));
        // The dialog asks for a password only: no generator, no clear text.
        QVERIFY(d.passwords()->findChild<QWidget *>("generateButton")->isHidden());
        QVERIFY(d.passwords()->findChild<QWidget *>("showPasswordCheck")->isHidden());
    }

    // Ok follows the host widget's verdict, whoever's password it is.
    void okFollowsTheVerdict_data()
    {
        QTest::addColumn<unsigned int>("uid");
        QTest::addRow("own password") << OperatorUid;
        QTest::addRow("another user's") << ClerkUid;
    }
    void okFollowsTheVerdict()
    {
        QFETCH(unsigned int, uid);
        Dialog d(uid);
        QVERIFY(!d.ok()->isEnabled());
        d.typeNew(GoodPassword, QStringLiteral("Secret1"));
        QVERIFY(!d.ok()->isEnabled());
        d.typeNew(GoodPassword, GoodPassword);
        QVERIFY(d.ok()->isEnabled());
        d.typeNew(QStringLiteral("secret12"), QStringLiteral("secret12"));
        QVERIFY(!d.ok()->isEnabled());
        d.typeNew(GoodPassword, GoodPassword);
        QVERIFY(d.ok()->isEnabled());
        QCOMPARE(d.dialog.password(), GoodPassword);
    }

    void ownPassword_data()
    {
        QTest::addColumn<QString>("given");
        QTest::addColumn<bool>("accepted");
        QTest::addRow("right") << CurrentPassword << true;
        QTest::addRow("wrong") << QStringLiteral("OldPass2") << false;
        QTest::addRow("case differs") << QStringLiteral("oldpass1") << false;
        QTest::addRow("empty") << QString() << false;
    }
    void ownPassword()
    {
        QFETCH(QString, given);
        QFETCH(bool, accepted);
        Dialog d(OperatorUid);
        QVERIFY(d.child<QWidget>("oldPasswordWidget")->isVisible());
        d.typeNew(GoodPassword, GoodPassword);
        d.typeCurrent(given);
        QTest::mouseClick(d.ok(), Qt::LeftButton);
        if (accepted) {
            QCOMPARE(d.finished.count(), 1);
            QCOMPARE(d.dialog.result(), int(QDialog::Accepted));
            QVERIFY(d.message()->isHidden());
            QCOMPARE(d.dialog.password(), GoodPassword);
            return;
        }
        // Open still, with the label and an empty field for the next try.
        QCOMPARE(d.finished.count(), 0);
        QVERIFY(d.dialog.isVisible());
        QVERIFY(d.message()->isVisible());
        QVERIFY(d.current()->text().isEmpty());
        QVERIFY(d.ok()->isEnabled());
        // Typing again takes the label away; the right password then goes through.
        d.typeCurrent(CurrentPassword);
        QVERIFY(d.message()->isHidden());
        QTest::mouseClick(d.ok(), Qt::LeftButton);
        QCOMPARE(d.finished.count(), 1);
        QCOMPARE(d.dialog.result(), int(QDialog::Accepted));
    }

    // A wrong current password doesn't bring the Ok button: only the verdict does.
    void wrongCurrentPasswordLeavesOkDisabled()
    {
        Dialog d(OperatorUid);
        d.typeCurrent(QStringLiteral("nonsense"));
        d.typeNew(GoodPassword, QStringLiteral("Other12A"));
        QVERIFY(!d.ok()->isEnabled());
        // A click on a disabled button reaches nobody.
        QTest::mouseClick(d.ok(), Qt::LeftButton);
        QCOMPARE(d.finished.count(), 0);
        QVERIFY(d.message()->isHidden());
        QCOMPARE(d.current()->text(), QStringLiteral("nonsense"));
    }

    // For another user the current password is neither shown nor looked at.
    void anotherUsersPassword()
    {
        Dialog d(ClerkUid);
        QVERIFY(d.child<QWidget>("oldPasswordWidget")->isHidden());
        d.current()->setText(QStringLiteral("certainly wrong"));
        d.typeNew(GoodPassword, GoodPassword);
        QTest::mouseClick(d.ok(), Qt::LeftButton);
        QCOMPARE(d.finished.count(), 1);
        QCOMPARE(d.dialog.result(), int(QDialog::Accepted));
        QVERIFY(d.message()->isHidden());
    }

    void cancel()
    {
        Dialog d(OperatorUid);
        d.typeNew(GoodPassword, GoodPassword);
        QTest::mouseClick(d.child<QDialogButtonBox>("buttonBox")->button(QDialogButtonBox::Cancel),
                          Qt::LeftButton);
        QCOMPARE(d.finished.count(), 1);
        QCOMPARE(d.dialog.result(), int(QDialog::Rejected));
    }

    void selfChange_data()
    {
        QTest::addColumn<unsigned int>("uid");
        QTest::addColumn<bool>("self");
        QTest::addRow("operator") << OperatorUid << true;
        QTest::addRow("another user") << ClerkUid << false;
        QTest::addRow("no user") << 0u << false;
    }
    void selfChange()
    {
        QFETCH(unsigned int, uid);
        QTEST(PasswordDialog::selfChange(uid), "self");
    }

    // The rules float beside the dialog and follow it when it moves.
    void rulesFollowTheDialog()
    {
        Dialog d(ClerkUid);
        QVERIFY(QTest::qWaitForWindowExposed(&d.dialog));
        d.typeNew(QStringLiteral("a"), QString());
        PasswordCriteriaPanel *rules = d.passwords()->criteriaWidget();
        QTRY_VERIFY(rules->isVisible());
        const QPoint before = rules->pos();
        d.dialog.move(d.dialog.pos() + QPoint(0, 40));
        QTRY_COMPARE(rules->pos(), before + QPoint(0, 40));
    }
};

QTEST_MAIN(TestPasswordDialog)
#include "tst_passworddialog.moc"
