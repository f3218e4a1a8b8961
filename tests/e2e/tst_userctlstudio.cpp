// The users screen in the studio: loaded from the studio's plugin folder, logged in against a
// real server on a temporary database over loopback TCP, with its tabs by the operator's rights.
#include <app/startup/logindialog.h>
#include <app/startup/studiocontroller.h>
#include <app/window/mainwindow.h>

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/core/settings.h>
#include <host/gui/widgets/pluginwidget.h>
#include <host/gui/widgets/searchwidget.h>
#include <host/gui/widgets/zractionstoolbar.h>
#include <shared/rolenames.h>
#include <tests/server/serverharness.h>

#include <KPasswordLineEdit>

#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QtTest>

using namespace harness;
using Phase = StudioController::Phase;

class UserCtlStudioTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_settings = std::make_unique<QTemporaryDir>();
        Settings::useFile(m_settings->filePath(QStringLiteral("studio.ini")));
        m_server = std::make_unique<Server>();
        QCOMPARE(m_server->start(), QString());
    }

    void cleanup()
    {
        m_studio.reset();
        m_server.reset();
        AuthData::clear();
        zeral::LocalStorage::instance()->clear();
    }

    void screenAndTabsByRights_data()
    {
        QTest::addColumn<QString>("roleTemplate");
        QTest::addColumn<bool>("shown");
        QTest::addColumn<bool>("mobileTab");
        QTest::addColumn<bool>("sessionsTab");
        namespace t = zeral::roletemplate;
        QTest::addRow("supervisor") << t::SUPERVISOR << true << true << true;
        QTest::addRow("operator") << t::OPERATOR << true << false << true;
        QTest::addRow("hr") << t::HR << true << true << false;
        QTest::addRow("mobile") << t::MOBILE << false << false << false;
    }
    void screenAndTabsByRights()
    {
        QFETCH(QString, roleTemplate);
        QFETCH(bool, shown);
        QFETCH(bool, mobileTab);
        QFETCH(bool, sessionsTab);
        if (roleTemplate == QLatin1String(zeral::roletemplate::SUPERVISOR)) {
            QVERIFY(logIn(QStringLiteral("root"), QStringLiteral("RootPass1")));
        } else {
            QVERIFY(addUser(*m_server->rootClient(), QStringLiteral("person"), roleTemplate));
            QVERIFY(logIn(QStringLiteral("person"), QStringLiteral("Passw0rd")));
        }

        MainWindow *window = m_studio->mainWindow();
        PluginWidget *screen = window->screenByName(QStringLiteral("userctl"));
        QCOMPARE(screen != nullptr, shown);
        if (!screen)
            return;
        QVERIFY(window->showTab(screen, 0));
        QCOMPARE(window->showTab(screen, 1), mobileTab);
        QCOMPARE(window->showTab(screen, 2), sessionsTab);

        // The tool bar holds the page of the tab in front and the filter box.
        auto *toolBar = screen->findChild<ZRActionsToolBar *>(QStringLiteral("toolBar"));
        QVERIFY(toolBar && toolBar->isVisible());
        auto *search = toolBar->findChild<SearchWidget *>();
        QVERIFY(search && search->isVisible());
        auto *pages = screen->findChild<QTabWidget *>(QStringLiteral("tabWidget"));
        QCOMPARE(pages->currentIndex(), window->currentTab());
    }

private:
    bool logIn(const QString &login, const QString &password)
    {
        StudioOptions options;
        options.serverHost = QStringLiteral("127.0.0.1");
        options.serverPort = m_server->engine->port();
        options.pluginDir = QStringLiteral(ZR_BINARY_DIR "/plugins");
        m_studio = std::make_unique<StudioController>(options);
        m_studio->start();
        LoginDialog *dialog = m_studio->loginDialog();
        dialog->findChild<QLineEdit *>(QStringLiteral("loginEdit"))->setText(login);
        dialog->findChild<KPasswordLineEdit *>(QStringLiteral("passwordEdit"))
            ->setPassword(password);
        dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click();
        if (!QTest::qWaitFor([this] { return m_studio->phase() == Phase::Running; }, 20000))
            qWarning() << "login ended in" << m_studio->phase() << dialog->messageText();
        return m_studio->mainWindow() != nullptr;
    }

    std::unique_ptr<QTemporaryDir> m_settings;
    std::unique_ptr<Server> m_server;
    std::unique_ptr<StudioController> m_studio;
};

QTEST_MAIN(UserCtlStudioTest)
#include "tst_userctlstudio.moc"
