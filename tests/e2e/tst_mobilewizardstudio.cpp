// Employees made mobile users in bulk, end to end: the studio with the users screen loaded from
// its plugin, the employees screen asking it for the wizard, a real server over loopback TCP
// delivering the credentials to a local mail relay, and the new accounts logging in with the
// password their mail carried.
#include <app/screens/employeesscreen.h>
#include <app/screens/employeetreeproxy.h>
#include <app/startup/studiocontroller.h>
#include <app/window/mainwindow.h>

#include <host/core/localstorage.h>
#include <host/gui/biometrics/authorizationwidget.h>
#include <host/gui/biometrics/simulatedfingerprintreader.h>
#include <host/gui/widgets/pluginwidget.h>
#include <host/gui/wizards/baseprogresswizardpage.h>
#include <server/engine/demo/demoorganisation.h>
#include <shared/inheritdata.h>
#include <tests/e2e/studiofixture.h>
#include <tests/support/modalanswerer.h>
#include <tests/support/smtpsink.h>

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPushButton>
#include <QSignalSpy>
#include <QToolButton>
#include <QTreeView>
#include <QWizard>
#include <QtTest>

using namespace harness;
using zeral::TYPE_ID;

namespace {

zeral::LocalStorage *store()
{
    return zeral::LocalStorage::instance();
}

// Employees with an address and no account yet, by uid, as many as asked for.
QList<TYPE_ID> employeesWithoutAccount(int count)
{
    QList<TYPE_ID> chosen;
    const auto &subjects = store()->constObjects(QStringLiteral("subject"));
    QList<TYPE_ID> uids = subjects.keys();
    std::sort(uids.begin(), uids.end());
    for (TYPE_ID uid : qAsConst(uids)) {
        const zeral::ObjectInfo &employee = subjects.value(uid);
        if (employee.type != QLatin1String("OT_WORKER")
            || employee.parameters.value(QStringLiteral("PT_EMAIL")).trimmed().isEmpty()
            || employee.parents.contains(zeral::INHERIT_WORKER_USER))
            continue;
        chosen.append(uid);
        if (chosen.size() == count)
            break;
    }
    return chosen;
}

// The account linked to an employee, 0 if none.
TYPE_ID accountOf(TYPE_ID employee)
{
    const auto &users = store()->constObjects(QStringLiteral("user"));
    for (auto it = users.cbegin(); it != users.cend(); ++it) {
        const auto links = it.value().children.values(zeral::INHERIT_WORKER_USER);
        for (const zeral::_INHERIT_DATA &link : links) {
            if (link.child == employee)
                return it.key();
        }
    }
    return 0;
}

// The stored user of that login, 0 if none.
TYPE_ID userWithLogin(const QString &login)
{
    const auto &users = store()->constObjects(QStringLiteral("user"));
    for (auto it = users.cbegin(); it != users.cend(); ++it) {
        if (it.value().parameters.value(QStringLiteral("PT_LOGIN")) == login)
            return it.key();
    }
    return 0;
}

// Whether a list shows the object, whose uid its rows carry in column 0.
bool listed(const QAbstractItemModel *list, TYPE_ID uid)
{
    for (int row = 0; row < list->rowCount(); ++row) {
        if (list->index(row, 0).data().toUInt() == uid)
            return true;
    }
    return false;
}

QWizard *openWizard()
{
    for (QWidget *top : QApplication::topLevelWidgets()) {
        if (top->objectName() == QLatin1String("NewMobileUserWizard") && top->isVisible())
            return qobject_cast<QWizard *>(top);
    }
    return nullptr;
}

} // namespace

class MobileWizardStudioTest : public QObject, protected StudioFixture
{
    Q_OBJECT
public:
    MobileWizardStudioTest()
        : StudioFixture(QStringLiteral(ZR_BINARY_DIR "/plugins"))
    {}

private:
    EmployeesScreen *employeesScreen() const
    {
        return qobject_cast<EmployeesScreen *>(
            m_studio->mainWindow()->screenByName(QStringLiteral("employees")));
    }

    // Selects the employees in their screen and asks for mobile accounts, as the operator does.
    QWizard *askForAccounts(const QList<TYPE_ID> &employees)
    {
        EmployeesScreen *screen = employeesScreen();
        QItemSelectionModel *selection = screen->view()->selectionModel();
        selection->clearSelection();
        for (TYPE_ID uid : employees)
            selection->select(screen->proxy()->indexForUid(uid),
                              QItemSelectionModel::Select | QItemSelectionModel::Rows);
        screen->findChild<QAction *>(QStringLiteral("createMobileUsersAction"))->trigger();
        QWizard *wizard = nullptr;
        if (!QTest::qWaitFor([&wizard] { return (wizard = openWizard()) != nullptr; }, 10000))
            return nullptr;
        return wizard;
    }

private slots:
    void init()
    {
        QCOMPARE(m_sink.start(), QString());
        zeral::server::ServerEngine::Options options;
        options.demo = true;
        options.smtpUrl = m_sink.url();
        QCOMPARE(setUp(options), QString());
    }
    void cleanup()
    {
        tearDown();
        m_sink.stop();
    }

    void tenEmployeesBecomeMobileUsers()
    {
        QVERIFY(logIn(QStringLiteral("root"), QStringLiteral("RootPass1")));
        QVERIFY2(employeesScreen(), "the studio has no employees screen");
        const QList<TYPE_ID> employees = employeesWithoutAccount(10);
        QCOMPARE(employees.size(), 10);
        auto *mobileList = m_studio->mainWindow()
                               ->screenByName(QStringLiteral("userctl"))
                               ->findChild<QAbstractItemView *>(QStringLiteral("mobileUsersList"));
        QVERIFY(mobileList);

        QWizard *wizard = askForAccounts(employees);
        QVERIFY2(wizard, "the wizard didn't open");
        // The ten come checked; the page fills itself once the wizard stands.
        QTRY_COMPARE(wizard->field(QStringLiteral("user/uids")).toList().size(), 10);
        wizard->next(); // access objects
        wizard->next(); // a mobile employee skips the departments: reports
        QCOMPARE(wizard->currentPage()->objectName(), QStringLiteral("reportPermissionPage"));
        wizard->next();
        QCOMPARE(wizard->currentPage()->objectName(), QStringLiteral("checkUserPage"));
        wizard->currentPage()->findChild<QToolButton *>(QStringLiteral("tbCheckAll"))->click();
        auto *sendEmail = wizard->currentPage()->findChild<QCheckBox *>(QStringLiteral("cbSendEmail"));
        if (!sendEmail->isChecked())
            sendEmail->click();
        QVERIFY(wizard->button(QWizard::NextButton)->isEnabled());
        wizard->next();
        auto *progress = qobject_cast<BaseProgressWizardPage *>(wizard->currentPage());
        QVERIFY(progress);
        QSignalSpy finished(progress, &BaseProgressWizardPage::runFinished);
        QVERIFY(finished.wait(60000));
        QVERIFY(finished.first().first().toBool());

        // Ten accounts, each linked to its employee, its login the employee's address.
        QHash<QString, TYPE_ID> accountByAddress;
        for (TYPE_ID employee : employees) {
            QTRY_VERIFY(accountOf(employee) != 0);
            const TYPE_ID account = accountOf(employee);
            const QString address = store()
                                        ->constObject(employee, QStringLiteral("subject"))
                                        .parameters.value(QStringLiteral("PT_EMAIL"));
            const auto parameters = store()->constObject(account, QStringLiteral("user")).parameters;
            QCOMPARE(parameters.value(QStringLiteral("PT_LOGIN")), address);
            QCOMPARE(parameters.value(QStringLiteral("PT_ROLETEMPLATE")), QStringLiteral("RT_MOBILE"));
            accountByAddress.insert(address, account);
        }
        for (TYPE_ID account : qAsConst(accountByAddress))
            QTRY_VERIFY2(listed(mobileList->model(), account), qPrintable(QString::number(account)));

        // Ten mails, one for each address, whose token logs its account in.
        QTRY_COMPARE_WITH_TIMEOUT(m_sink.count(), 10, 30000);
        const QList<SmtpSink::Mail> mails = m_sink.mails();
        QSet<QString> recipients;
        for (const SmtpSink::Mail &mail : mails) {
            recipients.insert(mail.recipient);
            const QStringList tokens = SmtpSink::tokensIn(mail.text);
            QCOMPARE(tokens.size(), 1);
            const QJsonObject auth
                = QJsonDocument::fromJson(QByteArray::fromBase64(tokens.first().toLatin1())).object();
            QCOMPARE(auth.value(QStringLiteral("user")).toString(), mail.recipient);
            const auto client = m_server->client();
            QCOMPARE(client->login(mail.recipient, auth.value(QStringLiteral("passw")).toString())
                         .status,
                     qint32(zeral::proto::StatusOk));
        }
        QCOMPARE(recipients, QSet<QString>(accountByAddress.keyBegin(), accountByAddress.keyEnd()));
        wizard->button(QWizard::FinishButton)->click();
        QTRY_VERIFY(!openWizard());

        // Asked again for the same ten, the wizard offers none of them.
        wizard = askForAccounts(employees);
        QVERIFY(wizard);
        QTRY_VERIFY(wizard->currentPage() != nullptr);
        QVERIFY(wizard->field(QStringLiteral("user/uids")).toList().isEmpty());
        QVERIFY(!wizard->button(QWizard::NextButton)->isEnabled());
        wizard->reject();
    }

    // The personnel officer's creations wait for a confirming finger, in the wizard's last
    // page as in the new-user wizard; each account's creation then names the confirmer at
    // the server.
    void creationsNameTheirConfirmer()
    {
        QVERIFY(logIn(QStringLiteral("hr"), zeral::server::DemoOrganisation::demoPassword()));
        const TYPE_ID security = userWithLogin(QStringLiteral("security"));
        QVERIFY(security != 0);
        const std::unique_ptr<WireClient> root = m_server->rootClient();
        const QByteArray finger = enrolSimulatedFinger(*root, security, 6);
        QVERIFY(!finger.isEmpty());
        const QList<TYPE_ID> employees = employeesWithoutAccount(2);
        QCOMPARE(employees.size(), 2);

        QWizard *wizard = askForAccounts(employees);
        QVERIFY2(wizard, "the wizard didn't open");
        QTRY_COMPARE(wizard->field(QStringLiteral("user/uids")).toList().size(), 2);
        wizard->next(); // access objects
        wizard->next(); // reports
        wizard->next();
        QCOMPARE(wizard->currentPage()->objectName(), QStringLiteral("checkUserPage"));
        wizard->currentPage()->findChild<QToolButton *>(QStringLiteral("tbCheckAll"))->click();
        QVERIFY(wizard->button(QWizard::NextButton)->isEnabled());

        bool granted = false;
        ModalAnswerer answerer([&](QWidget *modal) {
            auto *widget = modal->findChild<AuthorizationWidget *>();
            auto *confirm = modal->findChild<QPushButton *>(QStringLiteral("confirmButton"));
            QVERIFY(widget && confirm);
            // The confirmers come from the server's statement, as for the new-user wizard.
            QVERIFY(QTest::qWaitFor([widget] { return widget->isEnabled(); }, 10000));
            zeral::TEMPLATE_DATA touched;
            touched.format = zeral::SIMULATED_FINGERPRINT_FORMAT;
            touched.data = finger;
            qobject_cast<SimulatedFingerprintReader *>(widget->reader())->touch(touched);
            granted = confirm->isEnabled();
            if (granted)
                confirm->click();
            else
                modal->findChild<QPushButton *>(QStringLiteral("refuseButton"))->click();
        });
        wizard->next();
        QVERIFY(answerer.answered());
        QVERIFY(granted);
        auto *progress = qobject_cast<BaseProgressWizardPage *>(wizard->currentPage());
        QVERIFY(progress);
        QTRY_VERIFY_WITH_TIMEOUT(progress->state() == BaseProgressWizardPage::State::Finished,
                                 60000);

        const DbResult creations = select(
            *root, QStringLiteral("SELECT object, confirmed_by FROM audit_log WHERE operator = "
                                  "'hr' AND command = 'data.add_object' AND status = 1"));
        QCOMPARE(creations.rowCount, 2);
        QTRY_VERIFY(accountOf(employees.at(0)) != 0 && accountOf(employees.at(1)) != 0);
        QSet<TYPE_ID> created;
        for (int row = 0; row < creations.rowCount; ++row) {
            created.insert(creations.value(row, 0).toUInt());
            QCOMPARE(creations.value(row, 1).toString(), QStringLiteral("security"));
        }
        QCOMPARE(created, (QSet<TYPE_ID>{accountOf(employees.at(0)), accountOf(employees.at(1))}));
        wizard->button(QWizard::FinishButton)->click();
    }

private:
    SmtpSink m_sink;
};

QTEST_MAIN(MobileWizardStudioTest)
#include "tst_mobilewizardstudio.moc"
