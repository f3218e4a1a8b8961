// The user dialog of the users screen in the studio against a real server: a password reset
// that makes the user choose a new password at his next login, and a change that waits for a
// second person's finger, applied when confirmed and not at all when refused.
#include <app/startup/studiocontroller.h>
#include <app/window/mainwindow.h>

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/gui/biometrics/authorizationwidget.h>
#include <host/gui/biometrics/simulatedfingerprintreader.h>
#include <host/gui/dialogs/tabbeddialog.h>
#include <host/gui/dialogs/validatingdialog.h>
#include <host/gui/widgets/messagewidget.h>
#include <host/gui/widgets/parameterizededit.h>
#include <host/gui/widgets/pluginwidget.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <shared/fingerprintformat.h>
#include <shared/rolenames.h>
#include <shared/wire.h>
#include <tests/e2e/studiofixture.h>
#include <tests/support/modalanswerer.h>

#include <QAction>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableView>
#include <QtTest>

using namespace harness;
using zeral::TYPE_ID;

namespace {

QString storedParameter(TYPE_ID uid, const char *key)
{
    return zeral::LocalStorage::instance()
        ->constObject(uid, QLatin1String(zeral::USER_DATANAME))
        .parameters.value(QLatin1String(key));
}

QPushButton *buttonOf(QWidget *window, const QString &text)
{
    for (QPushButton *button : window->findChildren<QPushButton *>()) {
        if (button->text() == text)
            return button;
    }
    return nullptr;
}

} // namespace

class UserPropertiesStudioTest : public QObject, protected StudioFixture
{
    Q_OBJECT
public:
    UserPropertiesStudioTest()
        : StudioFixture(QStringLiteral(ZR_BINARY_DIR "/plugins"))
    {}

private:
    // The properties dialog of `uid`, opened from the users list as an operator does.
    TabbedDialog *openProperties(TYPE_ID uid)
    {
        PluginWidget *screen = m_studio->mainWindow()->screenByName(QStringLiteral("userctl"));
        if (!screen)
            return nullptr;
        auto *users = screen->findChild<QTableView *>(QStringLiteral("usersList"));
        if (!QTest::qWaitFor([&] { return users->model()->rowCount() > 0; }, 10000))
            return nullptr;
        for (int row = 0; row < users->model()->rowCount(); ++row) {
            if (users->model()->index(row, 0).data().toUInt() == uid)
                users->selectRow(row);
        }
        screen->findChild<QAction *>(QStringLiteral("actionProperties"))->trigger();
        // The plugin's classes are known here by name only.
        for (TabbedDialog *dialog : screen->findChildren<TabbedDialog *>()) {
            if (dialog->metaObject()->className() == QByteArray("UserPropertiesDialog"))
                return dialog;
        }
        return nullptr;
    }

private slots:
    void init() { QCOMPARE(setUp(), QString()); }
    void cleanup() { tearDown(); }

    void resetMakesTheUserChooseANewPassword()
    {
        std::unique_ptr<WireClient> root = m_server->rootClient();
        const TYPE_ID worker = addUser(*root, QStringLiteral("worker"),
                                       QLatin1String(zeral::roletemplate::OPERATOR));
        QVERIFY(worker);
        QVERIFY(logIn(QStringLiteral("root"), QStringLiteral("RootPass1")));
        const QString defaultPassword
            = zeral::LocalStorage::instance()->dbSettings().parameters.value(
                QLatin1String(db::database::PASSWORD_DEF));
        QVERIFY(!defaultPassword.isEmpty());

        QPointer<TabbedDialog> dialog = openProperties(worker);
        QVERIFY(dialog);
        QAction *reset = nullptr;
        for (QAction *action : dialog->findChildren<QAction *>()) {
            if (action->objectName() == QLatin1String("actionResetPassword"))
                reset = action;
        }
        QVERIFY(reset && reset->isEnabled());
        QString question;
        ModalAnswerer yes([&question](QWidget *modal) {
            auto *box = qobject_cast<QMessageBox *>(modal);
            question = box->text();
            box->button(QMessageBox::Yes)->click();
        });
        reset->trigger();
        QCOMPARE(question, QStringLiteral("Сбросить пароль для пользователя worker?"));
        QTRY_COMPARE_WITH_TIMEOUT(
            dialog->messageLine()->text(),
            QStringLiteral("Пароль пользователя worker сброшен на пароль по умолчанию"), 10000);
        QCOMPARE(storedParameter(worker, db::user::REQUIRE_CHANGE), QStringLiteral("1"));

        // The user's old password is gone; the default one lets him in only to change it.
        QCOMPARE(
            m_server->client()->login(QStringLiteral("worker"), QStringLiteral("Passw0rd")).status,
            qint32(zeral::proto::StatusLoginFailed));
        QCOMPARE(m_server->client()->login(QStringLiteral("worker"), defaultPassword).status,
                 qint32(zeral::proto::StatusPasswordChangeRequired));
    }

    void updateWaitsForAConfirmingFinger_data()
    {
        QTest::addColumn<bool>("confirmed");
        QTest::addRow("confirmed") << true;
        QTest::addRow("refused") << false;
    }
    void updateWaitsForAConfirmingFinger()
    {
        QFETCH(bool, confirmed);
        std::unique_ptr<WireClient> root = m_server->rootClient();
        const ConfirmationSite site = makeConfirmationSite(*root);
        QVERIFY(site.isComplete());
        const TYPE_ID clerk = site.clerk;
        const QByteArray guardFinger = site.guardFinger;

        // The personnel officer's changes of users need a confirmation.
        QVERIFY(logIn(QStringLiteral("hr"), QStringLiteral("Passw0rd")));
        QPointer<TabbedDialog> dialog = openProperties(clerk);
        QVERIFY(dialog);
        // A new login: every save of the user carries one, so a stale one would show.
        auto *login = dialog->findChild<ParameterizedEdit *>(QStringLiteral("loginEdit"));
        const QString before = login->text();
        login->selectAll();
        QTest::keyClicks(login, QStringLiteral("clerk2"));
        QVERIFY(dialog->isSaveButtonShown());
        dialog->saveButton()->click();

        PluginWidget *screen = m_studio->mainWindow()->screenByName(QStringLiteral("userctl"));
        QPointer<ValidatingDialog> confirming = screen->findChild<ValidatingDialog *>();
        QVERIFY(confirming);
        auto *widget = qobject_cast<AuthorizationWidget *>(confirming->centralWidget());
        QTRY_VERIFY_WITH_TIMEOUT(widget->isEnabled(), 10000); // the confirmers have come
        if (confirmed) {
            zeral::TEMPLATE_DATA finger;
            finger.format = zeral::SIMULATED_FINGERPRINT_FORMAT;
            finger.data = guardFinger;
            qobject_cast<SimulatedFingerprintReader *>(widget->reader())->touch(finger);
            // The roles tab saves after the properties tab; once it has heard its answer,
            // the store holds what the server holds after both.
            QWidget *rolesTab = nullptr;
            for (QWidget *child : dialog->findChildren<QWidget *>()) {
                if (child->metaObject()->className() == QByteArray("UserRoles"))
                    rolesTab = child;
            }
            QVERIFY(rolesTab);
            QSignalSpy rolesSaved(rolesTab, SIGNAL(showMessage(QString)));
            buttonOf(confirming, QStringLiteral("Подтвердить"))->click();
            QTRY_COMPARE_WITH_TIMEOUT(rolesSaved.size(), 1, 10000);
            QCOMPARE(rolesSaved.at(0).at(0).toString(),
                     QStringLiteral("Параметры пользователя сохранены"));
            QCOMPARE(storedParameter(clerk, db::user::LOGIN), QStringLiteral("clerk2"));
            QCOMPARE(dialog->messageLine()->text(),
                     QStringLiteral("Параметры пользователя сохранены"));
            // Each request of the confirmed change names the guard beside the operator.
            const DbResult changes = select(
                *root, QStringLiteral("SELECT command, confirmed_by FROM audit_log WHERE "
                                      "operator = 'hr' AND object = %1 AND status = 1")
                           .arg(clerk));
            QVERIFY(changes.rowCount >= 2); // the properties, then the role template
            for (int row = 0; row < changes.rowCount; ++row) {
                QCOMPARE(changes.value(row, 1).toString() + QLatin1Char(' ')
                             + changes.value(row, 0).toString(),
                         QStringLiteral("guard ") + changes.value(row, 0).toString());
            }
        } else {
            buttonOf(confirming, QStringLiteral("Отклонить"))->click();
            QVERIFY(!dialog->isSaveButtonShown());
            // Nothing went to the server: the screen sends a save the moment it is accepted,
            // so a read after the refusal would see it.
            QCOMPARE(storedParameter(clerk, db::user::LOGIN), before);
            const Command snapshot = root->request(
                cmd::Snapshot, ZRDataStream::pack(QString::fromLatin1(zeral::USER_DATANAME),
                                                  quint32(clerk - 1), qint32(1)));
            QList<zeral::ObjectInfo> objects;
            ZRDataStream in(snapshot.data);
            zeral::wire::readList(in, objects);
            QCOMPARE(objects.value(0).uid, clerk);
            QCOMPARE(objects.value(0).parameters.value(QLatin1String(db::user::LOGIN)), before);
        }
    }
};

QTEST_MAIN(UserPropertiesStudioTest)
#include "tst_userpropertiesstudio.moc"
