#pragma once

#include <app/startup/logindialog.h>
#include <app/startup/studiocontroller.h>

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/core/settings.h>
#include <host/gui/biometrics/simulatedfingerprintreader.h>
#include <shared/fingerprintformat.h>
#include <shared/rolenames.h>
#include <tests/server/serverharness.h>

#include <KPasswordLineEdit>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

// What the end-to-end tests of the studio share: a real server on a temporary database, a
// studio that connects to it over loopback TCP and loads its screens from `pluginDir`, and
// settings in a temporary file. A test class derives from it and calls setUp() in init() and
// tearDown() in cleanup().
class StudioFixture
{
protected:
    explicit StudioFixture(const QString &pluginDir)
        : m_pluginDir(pluginDir)
    {}

    // Empty on success, else why the server didn't start.
    QString setUp(zeral::server::ServerEngine::Options serverOptions = {})
    {
        m_settings = std::make_unique<QTemporaryDir>();
        Settings::useFile(m_settings->filePath(QStringLiteral("studio.ini")));
        m_server = std::make_unique<harness::Server>();
        return m_server->start(serverOptions);
    }

    void tearDown()
    {
        m_studio.reset();
        m_server.reset();
        AuthData::clear();
        zeral::LocalStorage::instance()->clear();
    }

    void startStudio(quint16 port = 0)
    {
        StudioOptions options;
        options.serverHost = QStringLiteral("127.0.0.1");
        options.serverPort = port ? port : m_server->engine->port();
        options.pluginDir = m_pluginDir;
        m_studio = std::make_unique<StudioController>(options);
        m_studio->start();
    }

    static void submitLogin(LoginDialog *dialog, const QString &login, const QString &password,
                            const QString &server = QString())
    {
        dialog->findChild<QLineEdit *>(QStringLiteral("loginEdit"))->setText(login);
        dialog->findChild<KPasswordLineEdit *>(QStringLiteral("passwordEdit"))
            ->setPassword(password);
        if (!server.isEmpty())
            dialog->findChild<QComboBox *>(QStringLiteral("serverCombo"))->setEditText(server);
        dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click();
    }

    // Stores a new template of the simulated reader for a finger of `uid`, as `by`; returns
    // the template, or nothing when the server refused it.
    static QByteArray enrolSimulatedFinger(harness::WireClient &by, zeral::TYPE_ID uid,
                                           qint32 finger)
    {
        const QByteArray data = SimulatedFingerprintReader::newTemplate();
        const Command answer
            = by.request(harness::cmd::EnrolFinger,
                         ZRDataStream::pack(quint32(uid), finger,
                                            quint32(zeral::SIMULATED_FINGERPRINT_FORMAT), data));
        return answer.status == zeral::proto::StatusOk ? data : QByteArray();
    }

    // A site where changes of users wait for a finger: "guard" (security, who confirms, one
    // finger enrolled), "clerk" (an operator to change) and "hr" (whose changes need the
    // confirmation), all with the password "Passw0rd". Empty uids when the server refused.
    struct ConfirmationSite
    {
        zeral::TYPE_ID guard = 0;
        zeral::TYPE_ID clerk = 0;
        zeral::TYPE_ID hr = 0;
        QByteArray guardFinger;
        bool isComplete() const { return guard && clerk && hr && !guardFinger.isEmpty(); }
    };
    static ConfirmationSite makeConfirmationSite(harness::WireClient &root)
    {
        namespace t = zeral::roletemplate;
        ConfirmationSite site;
        site.guard = harness::addUser(root, QStringLiteral("guard"), QLatin1String(t::SECURITY));
        site.clerk = harness::addUser(root, QStringLiteral("clerk"), QLatin1String(t::OPERATOR));
        site.hr = harness::addUser(root, QStringLiteral("hr"), QLatin1String(t::HR));
        if (site.guard)
            site.guardFinger = enrolSimulatedFinger(root, site.guard, 1);
        return site;
    }

    // Starts a studio and logs in; true once its main window stands.
    bool logIn(const QString &login, const QString &password)
    {
        startStudio();
        submitLogin(m_studio->loginDialog(), login, password);
        if (!QTest::qWaitFor(
                [this] { return m_studio->phase() == StudioController::Phase::Running; }, 20000))
            qWarning() << "login ended in" << m_studio->phase()
                       << m_studio->loginDialog()->messageText();
        return m_studio->mainWindow() != nullptr;
    }

    const QString m_pluginDir;
    std::unique_ptr<QTemporaryDir> m_settings;
    std::unique_ptr<harness::Server> m_server;
    std::unique_ptr<StudioController> m_studio;
};
