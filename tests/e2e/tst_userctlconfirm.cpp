// A change confirmed by a second person's fingerprint, end to end: fingers enrolled at a real
// server over loopback TCP, the users screen loaded into the studio for an operator whose
// changes need confirmation, the server running the screen's statement, and the confirmer's
// finger on the (simulated) reader of the confirmation dialog.
#include <app/startup/studiocontroller.h>
#include <app/window/mainwindow.h>

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/gui/biometrics/authorizationwidget.h>
#include <host/gui/biometrics/simulatedfingerprintreader.h>
#include <host/gui/dialogs/validatingdialog.h>
#include <host/gui/widgets/pluginwidget.h>
#include <host/gui/wizards/deleteobjectwizard.h>
#include <host/gui/wizards/deleteverifywizardpage.h>
#include <shared/fingerprintformat.h>
#include <shared/rolenames.h>
#include <shared/templatedata.h>
#include <tests/e2e/studiofixture.h>

#include <QAction>
#include <QPushButton>
#include <QTableView>
#include <QtTest>

using namespace harness;
using zeral::TYPE_ID;
using Templates = QMultiHash<TYPE_ID, zeral::TEMPLATE_DATA>;

// Records what the users screen sends towards a fingerprint widget.
class Recorder : public QObject
{
    Q_OBJECT
public slots:
    void templates(QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA> templates)
    {
        ++templatesCount;
        given = templates;
    }
    void variant(QString name, int id, int count)
    {
        variants.append(QStringLiteral("%1/%2/%3").arg(name).arg(id).arg(count));
    }
    void uids(int variant, int index, QList<zeral::TYPE_ID> uids)
    {
        if (variant == 0 && index == 0)
            granting = uids;
    }
    void accepted() { ++acceptedCount; }

public:
    int templatesCount = 0;
    Templates given;
    QStringList variants;
    QList<TYPE_ID> granting;
    int acceptedCount = 0;
};

class UserCtlConfirmTest : public QObject, protected StudioFixture
{
    Q_OBJECT
public:
    UserCtlConfirmTest()
        : StudioFixture(QStringLiteral(ZR_BINARY_DIR "/plugins"))
    {}

private slots:
    void init() { QCOMPARE(setUp(), QString()); }
    void cleanup() { tearDown(); }

    void changeConfirmedByEnrolledFinger()
    {
        namespace t = zeral::roletemplate;
        std::unique_ptr<WireClient> root = m_server->rootClient();
        const TYPE_ID guard = addUser(*root, QStringLiteral("guard"), QLatin1String(t::SECURITY));
        const TYPE_ID clerk = addUser(*root, QStringLiteral("clerk"), QLatin1String(t::OPERATOR));
        QVERIFY(guard && clerk);
        QVERIFY(addUser(*root, QStringLiteral("hr"), QLatin1String(t::HR)));

        // Two fingers of a confirmer, one of a user who may not confirm.
        const QByteArray guardFingers[]
            = {enrolSimulatedFinger(*root, guard, 1), enrolSimulatedFinger(*root, guard, 6)};
        const QByteArray clerkFinger = enrolSimulatedFinger(*root, clerk, 2);
        QVERIFY(!guardFingers[0].isEmpty() && !guardFingers[1].isEmpty() && !clerkFinger.isEmpty());

        // The personnel officer's changes of users wait for a confirmation.
        QVERIFY(logIn(QStringLiteral("hr"), QStringLiteral("Passw0rd")));
        PluginWidget *screen = m_studio->mainWindow()->screenByName(QStringLiteral("userctl"));
        QVERIFY2(screen, "the users screen wasn't loaded from " ZR_BINARY_DIR "/plugins");

        // The screen's signals are known here by name only.
        Recorder seen;
        QVERIFY(connect(
            screen, SIGNAL(templatesForVerify(QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA>)),
            &seen, SLOT(templates(QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA>))));
        QVERIFY(connect(screen, SIGNAL(variantsForVerify(QString, int, int)), &seen,
                        SLOT(variant(QString, int, int))));
        QVERIFY(connect(screen, SIGNAL(uidsForVerify(int, int, QList<zeral::TYPE_ID>)), &seen,
                        SLOT(uids(int, int, QList<zeral::TYPE_ID>))));
        QVERIFY(connect(screen, SIGNAL(acceptChanges()), &seen, SLOT(accepted())));
        QVERIFY(QMetaObject::invokeMethod(screen, "verifyEdit"));
        QVERIFY(QTest::qWaitFor([&seen] { return seen.templatesCount > 0; }, 10000));

        // Only the confirmer's fingers come back, both of them, as they were enrolled.
        QCOMPARE(seen.templatesCount, 1);
        QCOMPARE(seen.given.uniqueKeys(), QList<TYPE_ID>{guard});
        QList<QByteArray> bytes;
        for (const zeral::TEMPLATE_DATA &fingerprint : seen.given.values(guard)) {
            QCOMPARE(fingerprint.format, quint32(zeral::SIMULATED_FINGERPRINT_FORMAT));
            bytes.append(fingerprint.data);
        }
        std::sort(bytes.begin(), bytes.end());
        QList<QByteArray> expected{guardFingers[0], guardFingers[1]};
        std::sort(expected.begin(), expected.end());
        QCOMPARE(bytes, expected);
        QCOMPARE(seen.variants, QStringList{QStringLiteral("Служба охраны/0/1")});
        QCOMPARE(seen.granting, QList<TYPE_ID>{guard});

        auto *dialog = screen->findChild<ValidatingDialog *>();
        QVERIFY(dialog && dialog->isVisible());
        auto *widget = qobject_cast<AuthorizationWidget *>(dialog->centralWidget());
        QVERIFY(widget && widget->isEnabled());
        QPushButton *confirm = nullptr;
        for (QPushButton *button : dialog->findChildren<QPushButton *>()) {
            if (button->text() == QStringLiteral("Подтвердить"))
                confirm = button;
        }
        QVERIFY(confirm && !confirm->isEnabled());
        auto *reader = qobject_cast<SimulatedFingerprintReader *>(widget->reader());
        QVERIFY(reader);

        zeral::TEMPLATE_DATA finger;
        finger.format = zeral::SIMULATED_FINGERPRINT_FORMAT;
        finger.data = clerkFinger;
        reader->touch(finger); // not a confirmer: nothing to match
        QVERIFY(!confirm->isEnabled());
        finger.data = guardFingers[1];
        reader->touch(finger);
        QVERIFY(confirm->isEnabled());
        confirm->click();
        QCOMPARE(seen.acceptedCount, 1);
    }

    void deletionWaitsForAConfirmer_data()
    {
        QTest::addColumn<bool>("confirmed");
        QTest::addRow("confirmed") << true;
        QTest::addRow("refused") << false;
    }
    void deletionWaitsForAConfirmer()
    {
        QFETCH(bool, confirmed);
        std::unique_ptr<WireClient> root = m_server->rootClient();
        const ConfirmationSite site = makeConfirmationSite(*root);
        QVERIFY(site.isComplete());
        const TYPE_ID clerk = site.clerk;
        const QByteArray guardFinger = site.guardFinger;

        // The personnel officer deletes, the guard confirms at the reader.
        QVERIFY(logIn(QStringLiteral("hr"), QStringLiteral("Passw0rd")));
        PluginWidget *screen = m_studio->mainWindow()->screenByName(QStringLiteral("userctl"));
        auto *users = screen->findChild<QTableView *>(QStringLiteral("usersList"));
        for (int row = 0; row < users->model()->rowCount(); ++row) {
            if (users->model()->index(row, 0).data().toUInt() == clerk)
                users->selectRow(row);
        }
        screen->findChild<QAction *>(QStringLiteral("actionRemove"))->trigger();
        auto *wizard = screen->findChild<DeleteObjectWizard *>();
        QVERIFY(wizard && wizard->needVerify());
        wizard->next();
        QCOMPARE(wizard->currentId(), int(DeleteObjectWizard::VerifyPage));
        AuthorizationWidget *widget = wizard->verifyPage()->authorizationWidget();
        QTRY_VERIFY(widget->isEnabled());
        QVERIFY(!wizard->verifyPage()->isComplete());

        zeral::ObjectInfo stillThere;
        if (confirmed) {
            zeral::TEMPLATE_DATA finger;
            finger.format = zeral::SIMULATED_FINGERPRINT_FORMAT;
            finger.data = guardFinger;
            qobject_cast<SimulatedFingerprintReader *>(widget->reader())->touch(finger);
            QVERIFY(wizard->verifyPage()->isComplete());
            wizard->next();
            QTRY_VERIFY_WITH_TIMEOUT(!zeral::LocalStorage::instance()
                                          ->constObjects(QStringLiteral("user"))
                                          .contains(clerk),
                                     10000);
            // The deletion's audit row names the guard who confirmed it.
            const DbResult removal = select(
                *root, QStringLiteral("SELECT confirmed_by FROM audit_log WHERE operator = 'hr' "
                                      "AND command = 'data.remove_object' AND object = %1")
                           .arg(clerk));
            QCOMPARE(removal.rowCount, 1);
            QCOMPARE(removal.value(0, 0).toString(), QStringLiteral("guard"));
        } else {
            wizard->reject();
            // A round trip through the server: a deletion would have been pushed by now.
            QVERIFY(addUser(*root, QStringLiteral("later"),
                            QLatin1String(zeral::roletemplate::OPERATOR)));
            QTRY_VERIFY(zeral::LocalStorage::instance()->constObjects(QStringLiteral("user")).size()
                        == 5);
            QVERIFY(zeral::LocalStorage::instance()
                        ->constObjects(QStringLiteral("user"))
                        .contains(clerk));
        }
    }
};

QTEST_MAIN(UserCtlConfirmTest)
#include "tst_userctlconfirm.moc"
