// Real fingerprints end to end, through libfprint's virtual image reader: a supervisor enrols a
// finger of a security officer in the studio's enrolment screen, and a deletion by a personnel
// officer in the users screen waits for that finger at the confirmation. A different finger is
// refused, and a damaged template of another confirmer is skipped without harm.
#include <app/screens/fingerprintenrolmentdialog.h>
#include <app/startup/studiocontroller.h>
#include <app/window/mainwindow.h>

#include <host/core/localstorage.h>
#include <host/gui/biometrics/authorizationwidget.h>
#include <host/gui/biometrics/libfprintreader.h>
#include <host/gui/widgets/pluginwidget.h>
#include <host/gui/wizards/deleteobjectwizard.h>
#include <host/gui/wizards/deleteverifywizardpage.h>
#include <shared/fingerprintformat.h>
#include <shared/rolenames.h>
#include <tests/e2e/studiofixture.h>
#include <tests/hostgui/virtualfingerprintscanner.h>

#include <QAction>
#include <QPushButton>
#include <QTableView>
#include <QTreeWidget>
#include <QtTest>

using namespace harness;
using zeral::TYPE_ID;

namespace {
constexpr int Wait = 20000;
constexpr int GuardFinger = 21, OtherFinger = 22; // the drawn patterns
} // namespace

class FingerprintReaderStudioTest : public QObject, protected StudioFixture
{
    Q_OBJECT
public:
    FingerprintReaderStudioTest()
        : StudioFixture(QStringLiteral(ZR_BINARY_DIR "/plugins"))
    {}

private slots:
    void init() { QCOMPARE(setUp(), QString()); }
    void cleanup() { tearDown(); }

    void enrolledFingerConfirmsADeletion()
    {
        namespace t = zeral::roletemplate;
        std::unique_ptr<WireClient> root = m_server->rootClient();
        const TYPE_ID guard = addUser(*root, QStringLiteral("guard"), QLatin1String(t::SECURITY));
        const TYPE_ID night = addUser(*root, QStringLiteral("night"), QLatin1String(t::SECURITY));
        const TYPE_ID clerk = addUser(*root, QStringLiteral("clerk"), QLatin1String(t::OPERATOR));
        QVERIFY(guard && night && clerk);
        QVERIFY(addUser(*root, QStringLiteral("hr"), QLatin1String(t::HR)));
        // Another confirmer's print was damaged in storage.
        QCOMPARE(root->request(cmd::EnrolFinger,
                               ZRDataStream::pack(quint32(night), qint32(1),
                                                  quint32(zeral::LIBFPRINT_FINGERPRINT_FORMAT),
                                                  QByteArray("FP3 cut short")))
                     .status,
                 qint32(zeral::proto::StatusOk));

        // The supervisor enrols the guard's right index finger at the reader.
        QVERIFY(logIn(QStringLiteral("root"), QStringLiteral("RootPass1")));
        {
            FingerprintEnrolmentDialog enrolment(m_studio->router(), guard);
            enrolment.show();
            auto *reader = qobject_cast<LibfprintReader *>(enrolment.reader());
            QVERIFY2(reader, "the studio didn't choose the libfprint reader");
            QVERIFY(enrolment.readerNotice().isEmpty());
            connect(reader, &FingerprintReader::fingerWanted, this,
                    [this] { QVERIFY(m_scanner.put(GuardFinger)); });
            QTRY_COMPARE(enrolment.activity(), FingerprintEnrolmentDialog::Activity::Idle);
            auto *fingers = enrolment.findChild<QTreeWidget *>(QStringLiteral("fingerTree"));
            fingers->setCurrentItem(fingers->topLevelItem(1));
            enrolment.findChild<QPushButton *>(QStringLiteral("scanButton"))->click();
            QTRY_VERIFY_WITH_TIMEOUT(enrolment.enrolledFingers() == QList<qint32>{1}, Wait);
            QCOMPARE(enrolment.fingerFormat(1), zeral::LIBFPRINT_FINGERPRINT_FORMAT);
            QCOMPARE(fingers->topLevelItem(1)->text(1), QStringLiteral("сохранен (сканер)"));
            enrolment.reject();
        }
        // The server holds it as a libfprint print.
        QList<qint32> stored;
        QList<quint32> formats;
        ZRDataStream in(
            root->request(cmd::GetUserFingers, ZRDataStream::pack(quint32(guard))).data);
        in >> stored >> formats;
        QCOMPARE(stored, QList<qint32>{1});
        QCOMPARE(formats, QList<quint32>{zeral::LIBFPRINT_FINGERPRINT_FORMAT});
        m_studio.reset();

        // The personnel officer deletes the clerk; the guard confirms at the reader.
        QVERIFY(logIn(QStringLiteral("hr"), QStringLiteral("Passw0rd")));
        PluginWidget *screen = m_studio->mainWindow()->screenByName(QStringLiteral("userctl"));
        QVERIFY2(screen, "the users screen wasn't loaded from " ZR_BINARY_DIR "/plugins");
        auto *users = screen->findChild<QTableView *>(QStringLiteral("usersList"));
        for (int row = 0; row < users->model()->rowCount(); ++row) {
            if (users->model()->index(row, 0).data().toUInt() == clerk)
                users->selectRow(row);
        }
        screen->findChild<QAction *>(QStringLiteral("actionRemove"))->trigger();
        auto *wizard = screen->findChild<DeleteObjectWizard *>();
        QVERIFY(wizard && wizard->needVerify());
        AuthorizationWidget *widget = wizard->verifyPage()->authorizationWidget();
        auto *reader = qobject_cast<LibfprintReader *>(widget->reader());
        QVERIFY(reader);
        // First a finger nobody enrolled, then the guard's.
        auto fingers = std::make_shared<QList<int>>(QList<int>{OtherFinger, GuardFinger});
        connect(reader, &FingerprintReader::fingerWanted, this, [this, fingers] {
            if (!fingers->isEmpty())
                QVERIFY(m_scanner.put(fingers->takeFirst()));
        });
        QSignalSpy identified(reader, &FingerprintReader::identified);
        QTest::ignoreMessage(
            QtWarningMsg,
            QRegularExpression(
                QStringLiteral("skipped an unreadable fingerprint template of user %1 ")
                    .arg(night)));
        wizard->next();
        QCOMPARE(wizard->currentId(), int(DeleteObjectWizard::VerifyPage));
        QVERIFY(identified.wait(Wait));
        QCOMPARE(identified.first().at(0).value<TYPE_ID>(), TYPE_ID(0));
        QVERIFY(widget->statusText().contains(QStringLiteral("не распознан")));
        QVERIFY(!wizard->verifyPage()->isComplete());
        QTRY_VERIFY_WITH_TIMEOUT(wizard->verifyPage()->isComplete(), Wait);
        QCOMPARE(widget->identifiedUids(), QList<TYPE_ID>{guard});
        QVERIFY(
            zeral::LocalStorage::instance()->constObjects(QStringLiteral("user")).contains(clerk));
        wizard->next();
        QTRY_VERIFY_WITH_TIMEOUT(
            !zeral::LocalStorage::instance()->constObjects(QStringLiteral("user")).contains(clerk),
            Wait);
    }

private:
    VirtualFingerprintScanner m_scanner;
};

QTEST_MAIN(FingerprintReaderStudioTest)
#include "tst_fingerprintreaderstudio.moc"
