// A new user made with the wizard of the users screen, end to end: the studio with the screen
// loaded from its plugin, a real server over loopback TCP, and, where the operator's creations
// need it, the confirmer's finger on the (simulated) reader before anything is sent.
#include <app/startup/studiocontroller.h>
#include <app/window/mainwindow.h>

#include <host/core/localstorage.h>
#include <host/gui/biometrics/authorizationwidget.h>
#include <host/gui/biometrics/simulatedfingerprintreader.h>
#include <host/gui/widgets/pluginwidget.h>
#include <host/gui/widgets/zrcombobox.h>
#include <host/gui/wizards/baseprogresswizardpage.h>
#include <shared/fingerprintformat.h>
#include <shared/objectpermission.h>
#include <shared/rolenames.h>
#include <tests/e2e/studiofixture.h>
#include <tests/support/modalanswerer.h>

#include <KPasswordLineEdit>

#include <QAbstractButton>
#include <QAction>
#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTreeView>
#include <QWizard>
#include <QtTest>

using namespace harness;
using zeral::TYPE_ID;

namespace {

// Types as the operator would, key by key (Cyrillic too).
void type(QWidget *widget, const QString &text)
{
    for (const QChar ch : text)
        QTest::sendKeyEvent(QTest::Click, widget, Qt::Key_unknown, QString(ch), Qt::NoModifier);
}

TYPE_ID addDepartment(WireClient &root, const QString &name)
{
    zeral::ObjectInfo department;
    department.type = QStringLiteral("OT_DEPARTMENT");
    department.parameters = {{QStringLiteral("PT_NAME"), name}};
    const Command answer = root.request(
        cmd::AddObject, ZRDataStream::pack(department, QList<zeral::_INHERIT_DATA>()));
    qint32 uid = 0;
    if (answer.status == zeral::proto::StatusOk)
        ZRDataStream(answer.data) >> uid;
    return TYPE_ID(uid);
}

QList<TYPE_ID> permittedObjects(WireClient &root, TYPE_ID user)
{
    const Command answer
        = root.request(cmd::GetPermissions, ZRDataStream::pack(QList<TYPE_ID>{user}));
    QList<zeral::OBJECT_PERMISSION> permissions;
    ZRDataStream in(answer.data);
    in >> permissions;
    QList<TYPE_ID> objects;
    for (const zeral::OBJECT_PERMISSION &permission : qAsConst(permissions)) {
        if (permission.subject == user)
            objects.append(permission.object);
    }
    std::sort(objects.begin(), objects.end());
    return objects;
}

TYPE_ID storedUid(const QString &login)
{
    const auto &users = zeral::LocalStorage::instance()->constObjects(QStringLiteral("user"));
    for (auto it = users.cbegin(); it != users.cend(); ++it) {
        if (it.value().parameters.value(QStringLiteral("PT_LOGIN")) == login)
            return it.key();
    }
    return 0;
}

// Sets the check of the rows of a tree whose uid (column 0) is among `uids`, at any depth.
void checkRows(QAbstractItemModel *model, const QList<TYPE_ID> &uids,
               const QModelIndex &parent = QModelIndex())
{
    for (int row = 0; row < model->rowCount(parent); ++row) {
        const QModelIndex index = model->index(row, 0, parent);
        if (uids.contains(index.data().toUInt()))
            model->setData(index, Qt::Checked, Qt::CheckStateRole);
        checkRows(model, uids, index);
    }
}

} // namespace

class NewUserStudioTest : public QObject, protected StudioFixture
{
    Q_OBJECT
public:
    NewUserStudioTest()
        : StudioFixture(QStringLiteral(ZR_BINARY_DIR "/plugins"))
    {}

private:
    PluginWidget *screen() const
    {
        return m_studio->mainWindow()->screenByName(QStringLiteral("userctl"));
    }

    // Opens the wizard and walks its first pages: login, surname, the password given (the
    // default one when empty), the template.
    QWizard *walkFirstPages(const QString &login, const QString &password,
                            const QString &roleTemplate)
    {
        screen()->findChild<QAction *>(QStringLiteral("actionAddUser"))->trigger();
        auto *wizard = screen()->findChild<QWizard *>(QStringLiteral("NewUserWizard"));
        if (!wizard)
            return nullptr;
        type(wizard->findChild<QLineEdit *>(QStringLiteral("loginEdit")), login);
        type(wizard->findChild<QLineEdit *>(QStringLiteral("surnameEdit")),
             QStringLiteral("Новиков"));
        wizard->next();
        if (!password.isEmpty()) {
            wizard->findChild<QCheckBox *>(QStringLiteral("cbUseDefaultPassword"))->click();
            // His own password: he isn't made to change it at the first login.
            auto *requireChange
                = wizard->findChild<QCheckBox *>(QStringLiteral("cbRequireChangePassword"));
            if (requireChange->isChecked())
                requireChange->click();
            wizard->findChild<KPasswordLineEdit *>(QStringLiteral("passwordEdit"))
                ->setPassword(password);
            wizard->findChild<KPasswordLineEdit *>(QStringLiteral("repeatEdit"))
                ->setPassword(password);
            // The strength check answers on its own time.
            if (!QTest::qWaitFor(
                    [wizard] { return wizard->button(QWizard::NextButton)->isEnabled(); }))
                return nullptr;
        }
        wizard->next();
        auto *templates = wizard->findChild<ZRComboBox *>(QStringLiteral("cbRoleTemplate"));
        if (!QTest::qWaitFor([templates] { return templates->count() > 0; })
            || !templates->setCurrentData(roleTemplate))
            return nullptr;
        wizard->next();
        return wizard;
    }

private slots:
    void init() { QCOMPARE(setUp(), QString()); }
    void cleanup() { tearDown(); }

    // Root makes a user with his own password, a template and rights on two departments of
    // three; the user then logs in with that password.
    void rootCreatesAUserWhoLogsIn()
    {
        std::unique_ptr<WireClient> root = m_server->rootClient();
        const TYPE_ID sales = addDepartment(*root, QStringLiteral("Отдел продаж"));
        const TYPE_ID stock = addDepartment(*root, QStringLiteral("Склад"));
        const TYPE_ID office = addDepartment(*root, QStringLiteral("Бухгалтерия"));
        QVERIFY(sales && stock && office);

        QVERIFY(logIn(QStringLiteral("root"), QStringLiteral("RootPass1")));
        QVERIFY2(screen(), "the users screen wasn't loaded from " ZR_BINARY_DIR "/plugins");
        QWizard *wizard = walkFirstPages(QStringLiteral("novikov"), QStringLiteral("Nv-4821-kq"),
                                         QStringLiteral("RT_OPERATOR"));
        QVERIFY(wizard);
        QCOMPARE(wizard->currentPage()->objectName(), QStringLiteral("departmentPermissionsPage"));

        QWizardPage *departments = wizard->currentPage();
        QVERIFY(QMetaObject::invokeMethod(departments->findChild<QWidget *>("permissions"),
                                          "uncheckAll"));
        auto *tree = departments->findChild<QTreeView *>(QStringLiteral("objectView"));
        QVERIFY(tree);
        QTRY_VERIFY(tree->model()->rowCount() > 0);
        checkRows(tree->model(), {sales, stock});
        for (int page = 0; page < 5; ++page)
            wizard->next();
        auto *progress = qobject_cast<BaseProgressWizardPage *>(wizard->currentPage());
        QVERIFY(progress);
        QSignalSpy finished(progress, &BaseProgressWizardPage::runFinished);
        QVERIFY(finished.wait(10000));
        QCOMPARE(finished.first().first().toBool(), true);

        QTRY_VERIFY(storedUid(QStringLiteral("novikov")) != 0);
        const TYPE_ID uid = storedUid(QStringLiteral("novikov"));
        const QHash<QString, QString> stored
            = zeral::LocalStorage::instance()->constObject(uid, QStringLiteral("user")).parameters;
        QCOMPARE(stored.value("PT_SURNAME"), QStringLiteral("Новиков"));
        QCOMPARE(stored.value("PT_ROLETEMPLATE"), QStringLiteral("RT_OPERATOR"));
        const QList<TYPE_ID> granted = permittedObjects(*root, uid);
        QVERIFY2(granted.contains(sales) && granted.contains(stock) && !granted.contains(office),
                 qPrintable(QString::number(granted.size())));

        const auto client = m_server->client();
        QCOMPARE(client->login(QStringLiteral("novikov"), QStringLiteral("Kk739146")).status,
                 qint32(zeral::proto::StatusLoginFailed));
        QCOMPARE(client->login(QStringLiteral("novikov"), QStringLiteral("Nv-4821-kq")).status,
                 qint32(zeral::proto::StatusOk));

        // Finish: the new user is the one selected in the list.
        wizard->button(QWizard::FinishButton)->click();
        auto *users = screen()->findChild<QAbstractItemView *>(QStringLiteral("usersList"));
        QTRY_COMPARE(users->selectionModel()->selectedRows().size(), 1);
        QCOMPARE(users->selectionModel()->selectedRows().first().data().toUInt(), uid);
    }

    // The personnel officer's creations wait for the guard's finger; a refusal leaves no
    // trace at the server.
    void creationWaitsForTheConfirmer_data()
    {
        QTest::addColumn<bool>("confirmed");
        QTest::addRow("confirmed") << true;
        QTest::addRow("refused") << false;
    }
    void creationWaitsForTheConfirmer()
    {
        QFETCH(bool, confirmed);
        std::unique_ptr<WireClient> root = m_server->rootClient();
        const ConfirmationSite site = makeConfirmationSite(*root);
        QVERIFY(site.isComplete());

        const QString allUsers = QStringLiteral("SELECT id FROM userid");
        const int usersBefore = select(*root, allUsers).rowCount;
        QVERIFY(usersBefore >= 4);
        QVERIFY(logIn(QStringLiteral("hr"), QStringLiteral("Passw0rd")));
        QVERIFY(screen());
        QWizard *wizard
            = walkFirstPages(QStringLiteral("orlova"), QString(), QStringLiteral("RT_OPERATOR"));
        QVERIFY(wizard);
        for (int page = 0; page < 4; ++page)
            wizard->next();
        QCOMPARE(wizard->currentPage()->objectName(), QStringLiteral("monitoringPermissionPage"));

        bool grantedBeforeConfirm = false;
        bool refusedFromTheStart = true;
        ModalAnswerer answerer([&](QWidget *modal) {
            auto *widget = modal->findChild<AuthorizationWidget *>();
            QVERIFY(widget);
            auto *confirm = modal->findChild<QPushButton *>(QStringLiteral("confirmButton"));
            QVERIFY(confirm);
            QVERIFY(QTest::qWaitFor([widget] { return widget->isEnabled(); }, 10000));
            refusedFromTheStart = !confirm->isEnabled();
            if (confirmed) {
                zeral::TEMPLATE_DATA finger;
                finger.format = zeral::SIMULATED_FINGERPRINT_FORMAT;
                finger.data = site.guardFinger;
                qobject_cast<SimulatedFingerprintReader *>(widget->reader())->touch(finger);
                grantedBeforeConfirm = confirm->isEnabled();
                confirm->click();
            } else {
                modal->findChild<QPushButton *>(QStringLiteral("refuseButton"))->click();
            }
        });
        wizard->next();
        QVERIFY(answerer.answered());
        QVERIFY(refusedFromTheStart);
        auto *progress = qobject_cast<BaseProgressWizardPage *>(wizard->currentPage());
        QVERIFY(progress);

        if (confirmed) {
            QVERIFY(grantedBeforeConfirm);
            QTRY_VERIFY_WITH_TIMEOUT(progress->isComplete(), 10000);
            QCOMPARE(progress->state(), BaseProgressWizardPage::State::Finished);
            QTRY_VERIFY(storedUid(QStringLiteral("orlova")) != 0);
            // Every request of the creation names the guard beside the operator: the new
            // user, his password, template and rights.
            const DbResult steps
                = select(*root, QStringLiteral("SELECT command, confirmed_by FROM audit_log WHERE "
                                               "operator = 'hr' AND object = %1 ORDER BY id")
                                    .arg(storedUid(QStringLiteral("orlova"))));
            QStringList named;
            for (int row = 0; row < steps.rowCount; ++row)
                named << steps.value(row, 0).toString() + QLatin1Char(' ')
                             + steps.value(row, 1).toString();
            QVERIFY2(steps.rowCount >= 3, qPrintable(named.join(QLatin1String(", "))));
            QCOMPARE(named.first(), QStringLiteral("data.add_object guard"));
            for (const QString &step : qAsConst(named))
                QVERIFY2(step.endsWith(QLatin1String(" guard")), qPrintable(step));
        } else {
            QCOMPARE(progress->state(), BaseProgressWizardPage::State::Dropped);
            // A round trip through the server: a creation would have been pushed by now.
            QVERIFY(addUser(*root, QStringLiteral("later"),
                            QLatin1String(zeral::roletemplate::OPERATOR)));
            QTRY_VERIFY(storedUid(QStringLiteral("later")) != 0);
            QCOMPARE(storedUid(QStringLiteral("orlova")), TYPE_ID(0));
            QCOMPARE(select(*root, allUsers).rowCount, usersBefore + 1);
        }
    }
};

QTEST_MAIN(NewUserStudioTest)
#include "tst_newuserstudio.moc"
