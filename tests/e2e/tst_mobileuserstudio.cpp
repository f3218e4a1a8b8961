// The mobile user dialog in the studio against a real server with the demo organisation: a
// new login saved, a reset, the credentials handed over through the clipboard, and a login
// over the wire with exactly what the clipboard carries.
#include <app/startup/studiocontroller.h>
#include <app/window/mainwindow.h>

#include <host/core/localstorage.h>
#include <host/gui/dialogs/tabbeddialog.h>
#include <host/gui/widgets/messagewidget.h>
#include <host/gui/widgets/parameterizededit.h>
#include <host/gui/widgets/pluginwidget.h>
#include <host/gui/widgets/zractionstoolbar.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <tests/e2e/studiofixture.h>
#include <tests/support/modalanswerer.h>

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableView>
#include <QtTest>

using namespace harness;
using zeral::TYPE_ID;

namespace {

const zeral::ObjectInfo &storedUser(TYPE_ID uid)
{
    return zeral::LocalStorage::instance()->constObject(uid, QLatin1String(zeral::USER_DATANAME));
}

} // namespace

class MobileUserStudioTest : public QObject, protected StudioFixture
{
    Q_OBJECT
public:
    MobileUserStudioTest()
        : StudioFixture(QStringLiteral(ZR_BINARY_DIR "/plugins"))
    {}

private:
    // The first mobile user of the list who isn't blocked, selected.
    TYPE_ID selectMobileUser(PluginWidget *screen)
    {
        auto *mobile = screen->findChild<QTableView *>(QStringLiteral("mobileUsersList"));
        if (!QTest::qWaitFor([&] { return mobile->model()->rowCount() > 0; }, 10000))
            return 0;
        for (int row = 0; row < mobile->model()->rowCount(); ++row) {
            const TYPE_ID uid = mobile->model()->index(row, 0).data().toUInt();
            if (storedUser(uid).parameters.value(QLatin1String(db::user::OBJECTSTATE))
                != QLatin1String("b")) {
                mobile->selectRow(row);
                return uid;
            }
        }
        return 0;
    }

private slots:
    void init()
    {
        m_settings = std::make_unique<QTemporaryDir>();
        Settings::useFile(m_settings->filePath(QStringLiteral("studio.ini")));
        m_server = std::make_unique<harness::Server>();
        zeral::server::ServerEngine::Options options;
        options.demo = true;
        options.demoSize = 40;
        QCOMPARE(m_server->start(options), QString());
    }
    void cleanup() { tearDown(); }

    void newLoginResetAndClipboardLogIn()
    {
        QVERIFY(logIn(QStringLiteral("root"), QStringLiteral("RootPass1")));
        PluginWidget *screen = m_studio->mainWindow()->screenByName(QStringLiteral("userctl"));
        QVERIFY(screen);
        const TYPE_ID uid = selectMobileUser(screen);
        QVERIFY(uid);
        screen->findChild<QAction *>(QStringLiteral("actionPropertiesMobile"))->trigger();
        QPointer<TabbedDialog> dialog;
        for (TabbedDialog *candidate : screen->findChildren<TabbedDialog *>()) {
            if (candidate->metaObject()->className() == QByteArray("MobileUserPropertiesDialog"))
                dialog = candidate;
        }
        QVERIFY(dialog);

        // A login that is no longer the employee's address: saved, with the warning shown.
        const QString login = QStringLiteral("mobile.test@example.ru");
        auto *loginEdit = dialog->findChild<ParameterizedEdit *>(QStringLiteral("loginEdit"));
        QVERIFY(
            !dialog->findChild<QWidget *>(QStringLiteral("wrongEmailWidget"))->isVisibleTo(dialog));
        loginEdit->selectAll();
        QTest::keyClicks(loginEdit, login);
        QVERIFY(
            dialog->findChild<QWidget *>(QStringLiteral("wrongEmailWidget"))->isVisibleTo(dialog));
        QVERIFY(dialog->isSaveButtonShown());
        dialog->saveButton()->click();
        QTRY_COMPARE_WITH_TIMEOUT(storedUser(uid).parameters.value(QLatin1String(db::user::LOGIN)),
                                  login, 10000);
        QTRY_COMPARE_WITH_TIMEOUT(dialog->messageLine()->text(),
                                  QStringLiteral("Параметры пользователя сохранены"), 10000);

        // The reset, then the hand-over through the clipboard.
        QSignalSpy changed(zeral::LocalStorage::instance(), &zeral::LocalStorage::dataChanged);
        QString question;
        ModalAnswerer yes([&question](QWidget *modal) {
            auto *box = qobject_cast<QMessageBox *>(modal);
            question = box ? box->windowTitle() : QString();
            if (box)
                box->button(QMessageBox::Yes)->click();
            else
                modal->close();
        });
        QAction *handOver = dialog->toolBar()->actions().first();
        handOver->menu()->actions().at(1)->trigger();
        QCOMPARE(question, QStringLiteral("Генерация пароля"));
        QCOMPARE(dialog->messageLine()->text(),
                 QStringLiteral("Данные скопированы в буфер обмена"));
        // The server tells of the new hash with the user's change.
        QTRY_VERIFY_WITH_TIMEOUT(
            std::any_of(changed.cbegin(), changed.cend(),
                        [uid](const QList<QVariant> &signal) {
                            return signal.at(0).toString() == QLatin1String(zeral::USER_DATANAME)
                                   && signal.at(1).value<QList<TYPE_ID>>().contains(uid);
                        }),
            10000);

        const QJsonObject auth
            = QJsonDocument::fromJson(
                  QByteArray::fromBase64(QGuiApplication::clipboard()->text().toLatin1()))
                  .object();
        QCOMPARE(auth.value(QStringLiteral("user")).toString(), login);
        const QString password = auth.value(QStringLiteral("passw")).toString();
        QVERIFY(!password.isEmpty());
        const Command answer = m_server->client()->login(login, password);
        QCOMPARE(answer.status, qint32(zeral::proto::StatusOk));
        // And only that password: the demo's own no longer lets him in.
        QVERIFY(m_server->client()->login(login, password + QLatin1Char('x')).status
                != zeral::proto::StatusOk);
    }
};

QTEST_MAIN(MobileUserStudioTest)
#include "tst_mobileuserstudio.moc"
