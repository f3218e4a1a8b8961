// The enrolment screen on libfprint's virtual image reader: each stored finger shows which kind
// of reader made it, a scan stores the library's print, and a busy or unplugged reader gives
// way to the simulated one with a notice.
#include <app/screens/fingerprintenrolmentdialog.h>
#include <host/core/authdata.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <host/gui/biometrics/fingerprintreaderfactory.h>
#include <host/gui/biometrics/libfprintcontext.h>
#include <host/gui/biometrics/libfprintreader.h>
#include <host/gui/biometrics/simulatedfingerprintreader.h>
#include <host/gui/widgets/messagewidget.h>
#include <shared/fingerprintformat.h>
#include <shared/rolenames.h>
#include <tests/hostgui/virtualfingerprintscanner.h>
#include <tests/support/scriptedserver.h>

#include <QLockFile>
#include <QPushButton>
#include <QSignalSpy>
#include <QTreeWidget>
#include <QtTest>

namespace proto = zeral::proto;
using Activity = FingerprintEnrolmentDialog::Activity;
using Failure = FingerprintReader::Failure;

namespace {
constexpr int Wait = 20000;
const QString enrolFinger = QLatin1String(proto::command::EnrolFinger);
} // namespace

class TestFingerprintEnrolmentReader : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();
    void showsTheKindOfEachFinger();
    void enrolsThroughTheLibrary();
    void busyReaderGivesWay();
    void unpluggedDuringAScan(); // last: the reader is gone afterwards

private:
    // A dialog on the preferred real reader, its fingers list read; finger 3 chosen.
    std::unique_ptr<FingerprintEnrolmentDialog> openDialog();
    QString message(FingerprintEnrolmentDialog &dialog) const;

    VirtualFingerprintScanner m_scanner; // before the first libfprint context
    ScriptedServer *m_server = nullptr;
};

void TestFingerprintEnrolmentReader::initTestCase()
{
    qRegisterMetaType<Failure>();
    QVERIFY(LibfprintReader::isDevicePresent());
}

void TestFingerprintEnrolmentReader::init()
{
    m_server = new ScriptedServer(this);
    // Finger 1 was enrolled on the simulated reader, finger 6 on a real one.
    m_server->script(QLatin1String(proto::command::GetUserFingers), [](const Command &request) {
        return Command::answer(
            request, proto::StatusOk,
            ZRDataStream::pack(QList<qint32>{1, 6},
                               QList<quint32>{zeral::SIMULATED_FINGERPRINT_FORMAT,
                                              zeral::LIBFPRINT_FINGERPRINT_FORMAT}));
    });
    AuthData::set({QStringLiteral("operator"),
                   2,
                   "session-7",
                   QString(),
                   {zeral::role::USER_SHOW, zeral::role::USER_BIOMETRICS_EDIT},
                   QString()});
    FingerprintReaderFactory::setPreferredKind(FingerprintReaderFactory::Kind::Libfprint);
    // The reader of the case before may still be closing.
    QTRY_VERIFY_WITH_TIMEOUT(!LibfprintContext::instance()->isClaimed(), Wait);
}

void TestFingerprintEnrolmentReader::cleanup()
{
    FingerprintReaderFactory::setPreferredKind(FingerprintReaderFactory::Kind::Simulated);
    delete m_server;
    AuthData::clear();
}

std::unique_ptr<FingerprintEnrolmentDialog> TestFingerprintEnrolmentReader::openDialog()
{
    auto dialog = std::make_unique<FingerprintEnrolmentDialog>(m_server, 41);
    dialog->show();
    if (!QTest::qWaitFor([&dialog] { return dialog->activity() == Activity::Idle; }, Wait))
        return nullptr;
    auto *fingers = dialog->findChild<QTreeWidget *>(QStringLiteral("fingerTree"));
    fingers->setCurrentItem(fingers->topLevelItem(3));
    return dialog;
}

QString TestFingerprintEnrolmentReader::message(FingerprintEnrolmentDialog &dialog) const
{
    return dialog.findChild<MessageWidget *>(QStringLiteral("messageLine"))->text();
}

void TestFingerprintEnrolmentReader::showsTheKindOfEachFinger()
{
    auto dialog = openDialog();
    QVERIFY(dialog);
    QVERIFY(qobject_cast<LibfprintReader *>(dialog->reader()));
    QVERIFY(dialog->readerNotice().isEmpty());
    QVERIFY(!dialog->findChild<QWidget *>(QStringLiteral("simulatedPanel")));
    auto *fingers = dialog->findChild<QTreeWidget *>(QStringLiteral("fingerTree"));
    QCOMPARE(fingers->topLevelItem(1)->text(1), QStringLiteral("сохранен (имитация)"));
    QCOMPARE(fingers->topLevelItem(6)->text(1), QStringLiteral("сохранен (сканер)"));
    QCOMPARE(fingers->topLevelItem(3)->text(1), QStringLiteral("нет"));
}

void TestFingerprintEnrolmentReader::enrolsThroughTheLibrary()
{
    auto dialog = openDialog();
    QVERIFY(dialog);
    auto *reader = dialog->reader();
    connect(reader, &FingerprintReader::fingerWanted, this, [this] { QVERIFY(m_scanner.put(31)); });
    QSignalSpy progress(reader, &FingerprintReader::progress);
    QSignalSpy sent(m_server, &ScriptedServer::commandSent);
    dialog->findChild<QPushButton *>(QStringLiteral("scanButton"))->click();
    QCOMPARE(dialog->activity(), Activity::WaitingForFinger);
    QTRY_VERIFY_WITH_TIMEOUT(!m_server->lastSent(enrolFinger).name.isEmpty(), Wait);
    QVERIFY(progress.count() >= 4); // the reader asked for the finger again between readings

    quint32 uid = 0, format = 0;
    qint32 finger = -1;
    QByteArray print;
    ZRDataStream in(m_server->lastSent(enrolFinger).data);
    in >> uid >> finger >> format >> print;
    QCOMPARE(uid, 41u);
    QCOMPARE(finger, 3);
    QCOMPARE(format, zeral::LIBFPRINT_FINGERPRINT_FORMAT);
    QVERIFY(print.startsWith("FP"));
    m_server->answerOk(m_server->lastSent(enrolFinger));
    QTRY_COMPARE(dialog->activity(), Activity::Idle);
    QCOMPARE(dialog->enrolledFingers(), (QList<qint32>{1, 3, 6}));
    QCOMPARE(
        dialog->findChild<QTreeWidget *>(QStringLiteral("fingerTree"))->topLevelItem(3)->text(1),
        QStringLiteral("сохранен (сканер)"));
}

void TestFingerprintEnrolmentReader::busyReaderGivesWay()
{
    QLockFile otherStudio(LibfprintContext::lockFilePath(LibfprintContext::instance()->device()));
    QVERIFY(otherStudio.tryLock(0));
    auto dialog = openDialog();
    QVERIFY(dialog);
    dialog->findChild<QPushButton *>(QStringLiteral("scanButton"))->click();
    QCOMPARE(dialog->activity(), Activity::Idle);
    QVERIFY2(dialog->readerNotice().contains(QStringLiteral("занят")),
             qPrintable(dialog->readerNotice()));
    QVERIFY(message(*dialog).contains(QStringLiteral("занят")));
    auto *standIn = qobject_cast<SimulatedFingerprintReader *>(dialog->reader());
    QVERIFY(standIn);
    QVERIFY(dialog->findChild<QWidget *>(QStringLiteral("simulatedPanel")));

    // The operator may go on with the stand-in, which the stored finger will say.
    dialog->findChild<QPushButton *>(QStringLiteral("scanButton"))->click();
    standIn->touchUnknownFinger();
    quint32 uid = 0, format = 0;
    qint32 finger = -1;
    ZRDataStream in(m_server->lastSent(enrolFinger).data);
    in >> uid >> finger >> format;
    QCOMPARE(format, zeral::SIMULATED_FINGERPRINT_FORMAT);
}

void TestFingerprintEnrolmentReader::unpluggedDuringAScan()
{
    auto dialog = openDialog();
    QVERIFY(dialog);
    QSignalSpy wanted(dialog->reader(), &FingerprintReader::fingerWanted);
    dialog->findChild<QPushButton *>(QStringLiteral("scanButton"))->click();
    QVERIFY(wanted.wait(Wait));
    QVERIFY(m_scanner.unplug());
    QTRY_VERIFY_WITH_TIMEOUT(dialog->reader()->isSimulated(), Wait);
    QCOMPARE(dialog->activity(), Activity::Idle);
    QVERIFY2(message(*dialog).contains(QStringLiteral("отключен")), qPrintable(message(*dialog)));
    QVERIFY(dialog->readerNotice().contains(QStringLiteral("имитацией")));
    QVERIFY(m_server->lastSent(enrolFinger).name.isEmpty()); // nothing was stored
    QCOMPARE(dialog->enrolledFingers(), (QList<qint32>{1, 6}));
}

QTEST_MAIN(TestFingerprintEnrolmentReader)
#include "tst_fingerprintenrolmentreader.moc"
