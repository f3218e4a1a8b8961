// The studio when the server wants a new password at login: the dialog for it, with the
// server's reason and policy, a refusal retried in place, the way on to the main window, and
// cancelling back to the login dialog. A real server on a temporary database over loopback.
#include <app/startup/logindialog.h>
#include <app/startup/passwordchangedialog.h>
#include <app/startup/studiocontroller.h>
#include <app/window/mainwindow.h>

#include <host/core/authdata.h>
#include <host/core/guipassfuncs.h>
#include <host/core/localstorage.h>
#include <host/gui/widgets/passwordchangewidget.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <tests/e2e/studiofixture.h>
#include <tests/server/serverharness.h>

#include <KPasswordLineEdit>

#include <QDialogButtonBox>
#include <QDir>
#include <QPushButton>
#include <QtTest>

using namespace harness;
using Phase = StudioController::Phase;
using Params = QHash<QString, QString>;

namespace {

const QString Login = QStringLiteral("worker");
const QString CurrentPassword = QStringLiteral("Current9pass");
const QString NewPassword = QStringLiteral("Fresh7Password");

void typePassword(PasswordChangeDialog *dialog, const QString &password)
{
    for (KPasswordLineEdit *field : dialog->passwordWidget()->findChildren<KPasswordLineEdit *>())
        field->setPassword(password);
}

QPushButton *dialogButton(QDialog *dialog, QDialogButtonBox::StandardButton which)
{
    return dialog->findChild<QDialogButtonBox *>()->button(which);
}

Command update(WireClient &by, zeral::TYPE_ID uid, const QString &type, const Params &parameters)
{
    return by.request(cmd::UpdateObject,
                      ZRDataStream::pack(quint32(uid), type, quint32(0), parameters));
}

} // namespace

class PasswordChangeTest : public QObject, protected StudioFixture
{
    Q_OBJECT
public:
    PasswordChangeTest()
        : StudioFixture(QStringLiteral(ZR_BINARY_DIR "/tests/e2e/no-plugins"))
    {}

private slots:
    void init()
    {
        QVERIFY(QDir().mkpath(m_pluginDir));
        QCOMPARE(setUp(), QString());
        m_root = m_server->rootClient();
        m_uid = addUser(*m_root, Login, QStringLiteral("RT_OPERATOR"), CurrentPassword);
        QVERIFY(m_uid);
        // A policy stricter than the default one, to see that the dialog has the server's.
        const Command databases = m_root->request(
            cmd::Snapshot,
            ZRDataStream::pack(QString::fromLatin1(zeral::DB_DATANAME), quint32(0), qint32(1)));
        QList<zeral::ObjectInfo> objects;
        ZRDataStream in(databases.data);
        zeral::wire::readList(in, objects);
        QCOMPARE(objects.size(), 1);
        QCOMPARE(update(*m_root, objects.first().uid, QLatin1String(db::system::DATABASE),
                        {{QLatin1String(db::database::PASSWORD_MIN_LENGTH), QStringLiteral("11")}})
                     .status,
                 qint32(zeral::proto::StatusOk));
    }
    void cleanup()
    {
        m_root.reset();
        tearDown();
    }

    void changeThenMainWindow_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("reason"); // a part of the server's text shown above
        QTest::addRow("reset by an administrator")
            << QString::fromLatin1(db::user::REQUIRE_CHANGE) << "1"
            << "сброшен";
        // The server's clock says 2024-03-01.
        QTest::addRow("expired") << QString::fromLatin1(db::database::PASSWORD_EXPIRED)
                                 << "2024-02-01"
                                 << "истёк 01.02.2024";
    }
    void changeThenMainWindow()
    {
        QFETCH(QString, key);
        QFETCH(QString, value);
        QFETCH(QString, reason);
        QCOMPARE(update(*m_root, m_uid, QStringLiteral("OT_USER"), {{key, value}}).status,
                 qint32(zeral::proto::StatusOk));
        startStudio();
        submitLogin(m_studio->loginDialog(), Login, CurrentPassword);
        QTRY_VERIFY_WITH_TIMEOUT(m_studio->passwordChangeDialog(), 20000);
        PasswordChangeDialog *dialog = m_studio->passwordChangeDialog();
        QCOMPARE(m_studio->phase(), Phase::ChangingPassword);
        QVERIFY(dialog->isVisible());
        QVERIFY(!m_studio->mainWindow());
        QVERIFY2(dialog->reasonText().contains(reason), qPrintable(dialog->reasonText()));
        QCOMPARE(dialog->passwordWidget()->passwordOptions().value(GUIPassFuncs::MinLength).toInt(),
                 11);

        // Ten characters fall short of this server's policy.
        QPushButton *ok = dialogButton(dialog, QDialogButtonBox::Ok);
        typePassword(dialog, QStringLiteral("Short1pass"));
        QVERIFY(!ok->isEnabled());

        // The server refuses the current password as the new one; the dialog says so and
        // stays for another try.
        typePassword(dialog, CurrentPassword);
        QVERIFY(ok->isEnabled());
        ok->click();
        QTRY_VERIFY(!dialog->refusalText().isEmpty());
        QVERIFY(dialog->refusalText().contains(QStringLiteral("отличаться")));
        QCOMPARE(m_studio->phase(), Phase::ChangingPassword);
        QVERIFY(m_studio->passwordChangeDialog() == dialog);

        typePassword(dialog, NewPassword);
        QVERIFY(ok->isEnabled());
        ok->click();
        QTRY_COMPARE_WITH_TIMEOUT(m_studio->phase(), Phase::Running, 20000);
        QVERIFY(m_studio->mainWindow() && m_studio->mainWindow()->isVisible());
        QVERIFY(!m_studio->passwordChangeDialog());
        QVERIFY(!m_studio->loginDialog()->isVisible());
        QCOMPARE(AuthData::user(), Login);
        // The store was loaded as after any login, with the user as he is now.
        const zeral::ObjectInfo stored = zeral::LocalStorage::instance()->constObject(
            m_uid, QLatin1String(zeral::USER_DATANAME));
        QCOMPARE(stored.uid, m_uid);
        QVERIFY(!stored.parameters.contains(QLatin1String(db::user::REQUIRE_CHANGE)));

        QCOMPARE(m_server->client()->login(Login, NewPassword).status,
                 qint32(zeral::proto::StatusOk));
        QCOMPARE(m_server->client()->login(Login, CurrentPassword).status,
                 qint32(zeral::proto::StatusLoginFailed));
    }

    void cancelReturnsToLogin()
    {
        QCOMPARE(update(*m_root, m_uid, QStringLiteral("OT_USER"),
                        {{QLatin1String(db::user::REQUIRE_CHANGE), QStringLiteral("1")}})
                     .status,
                 qint32(zeral::proto::StatusOk));
        startStudio();
        LoginDialog *login = m_studio->loginDialog();
        submitLogin(login, Login, CurrentPassword);
        QTRY_VERIFY_WITH_TIMEOUT(m_studio->passwordChangeDialog(), 20000);
        QPointer<PasswordChangeDialog> dialog = m_studio->passwordChangeDialog();
        dialogButton(dialog, QDialogButtonBox::Cancel)->click();

        QCOMPARE(m_studio->phase(), Phase::Login);
        QVERIFY(!m_studio->passwordChangeDialog());
        QTRY_VERIFY(!dialog);
        QVERIFY(login->isVisible());
        QVERIFY(!login->isBusy());
        QVERIFY(login->messageText().contains(QStringLiteral("не сменён")));
        QCOMPARE(login->password(), QString());
        QVERIFY(!m_studio->mainWindow());
        QVERIFY(!AuthData::isLoggedIn());
        // Nothing changed at the server: the old password still asks for a new one.
        QCOMPARE(m_server->client()->login(Login, CurrentPassword).status,
                 qint32(zeral::proto::StatusPasswordChangeRequired));

        // Another try goes the same way.
        submitLogin(login, Login, CurrentPassword);
        QTRY_VERIFY_WITH_TIMEOUT(m_studio->passwordChangeDialog(), 20000);
        QCOMPARE(m_studio->phase(), Phase::ChangingPassword);
    }

private:
    std::unique_ptr<WireClient> m_root;
    zeral::TYPE_ID m_uid = 0;
};

QTEST_MAIN(PasswordChangeTest)
#include "tst_passwordchange.moc"
