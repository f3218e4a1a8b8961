#include <app/screens/fingerprintenrolmentdialog.h>
#include <app/screens/fingerprintenrolmentservice.h>
#include <host/core/authdata.h>
#include <host/core/loginclient.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <host/gui/biometrics/simulatedfingerprintreader.h>
#include <host/gui/widgets/messagewidget.h>
#include <host/gui/widgets/zrguiglobals.h>
#include <shared/rolenames.h>
#include <tests/server/serverharness.h>
#include <tests/support/scriptedserver.h>
#include <tests/support/testplugin.h>

#include <QMainWindow>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTreeWidget>
#include <QtTest>

namespace proto = zeral::proto;
using zeral::TYPE_ID;
using Activity = FingerprintEnrolmentDialog::Activity;
using Fingers = QList<qint32>;

namespace {

const QString getFingers = QLatin1String(proto::command::GetUserFingers);
const QString enrolFinger = QLatin1String(proto::command::EnrolFinger);

void logIn(const QStringList &roles)
{
    AuthData::set({QStringLiteral("operator"), 2, "session-7", QString(), roles, QString()});
}

// Sends "show:fingerprintwidget" through the router and waits for the answer.
Command askForEnrolment(ZRServerInterface &server, const QByteArray &payload)
{
    Command request = Command::named(QLatin1String(proto::studio::ShowFingerprintWidget));
    request.data = payload;
    Command answer;
    answer.status = -1;
    server.send(request, [&answer](Command &reply) { answer = reply; });
    (void)QTest::qWaitFor([&answer] { return answer.status != -1; }, 5000);
    return answer;
}

template<class Widget>
Widget *child(QWidget &dialog, const char *name)
{
    return dialog.findChild<Widget *>(QLatin1String(name));
}
QTreeWidget *fingerTree(QWidget &dialog)
{
    return child<QTreeWidget>(dialog, "fingerTree");
}
MessageWidget *messageLine(QWidget &dialog)
{
    return child<MessageWidget>(dialog, "messageLine");
}

} // namespace

class TestFingerprintEnrolment : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void serviceAnswers_data();
    void serviceAnswers();
    void finishedGoesToEveryScreenThatAsked();
    void listThenEnrol();
    void refusalIsShown_data();
    void refusalIsShown();
    void enrolsAndRemovesAtTheRealServer();

private:
    ScriptedServer *m_server = nullptr;
};

void TestFingerprintEnrolment::init()
{
    m_server = new ScriptedServer(this);
    // The fingers list of every dialog: 1 and 6 have templates.
    m_server->script(getFingers, [](const Command &request) {
        return Command::answer(request, proto::StatusOk, ZRDataStream::pack(Fingers{1, 6}));
    });
    logIn({zeral::role::USER_SHOW, zeral::role::USER_BIOMETRICS_EDIT});
}

void TestFingerprintEnrolment::cleanup()
{
    delete m_server;
    AuthData::clear();
}

void TestFingerprintEnrolment::serviceAnswers_data()
{
    QTest::addColumn<bool>("mayEdit");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<int>("status");
    QTest::addRow("operator without the right")
        << false << ZRDataStream::pack(qint32(41), QStringLiteral("userctl-1")) << 18;
    QTest::addRow("empty payload") << true << QByteArray() << int(proto::StatusMalformed);
    QTest::addRow("uid without identity")
        << true << ZRDataStream::pack(qint32(41)) << int(proto::StatusMalformed);
}

void TestFingerprintEnrolment::serviceAnswers()
{
    QFETCH(bool, mayEdit);
    QFETCH(QByteArray, payload);
    QFETCH(int, status);
    if (!mayEdit)
        logIn({zeral::role::USER_SHOW});
    FingerprintEnrolmentService service(m_server);
    QSignalSpy opened(&service, &FingerprintEnrolmentService::dialogOpened);
    const Command answer = askForEnrolment(*m_server, payload);
    QCOMPARE(answer.status, status);
    QVERIFY(!answer.errorText().isEmpty());
    QCOMPARE(opened.count(), 0);
    QVERIFY(m_server->sent().isEmpty()); // answered in the studio, the server asked nothing
}

void TestFingerprintEnrolment::finishedGoesToEveryScreenThatAsked()
{
    QMainWindow mainWindow;
    ZRGuiGlobals::zrApp = &mainWindow;
    FingerprintEnrolmentService service(m_server);
    TestPlugin screens;
    QStringList told;
    QList<CommandType> types;
    for (const QString &identity : {QStringLiteral("userctl-1"), QStringLiteral("userctl-2")}) {
        types.append({proto::NamedCommand, QStringLiteral("fingerprint.finished:") + identity});
        screens.registerCommandHandler(types.last(), [&told, identity](Command &command) {
            told.append(identity);
            command.status = proto::StatusOk;
        });
    }
    m_server->registerPlugin(&screens, types);
    QSignalSpy opened(&service, &FingerprintEnrolmentService::dialogOpened);
    const auto ask = [this](const QString &identity) {
        return askForEnrolment(*m_server, ZRDataStream::pack(qint32(41), identity)).status;
    };

    QCOMPARE(ask(QStringLiteral("userctl-1")), int(proto::StatusOk));
    QPointer<FingerprintEnrolmentDialog> first = service.dialogFor(41);
    QVERIFY(first && first->isVisible() && !first->isModal());
    QCOMPARE(first->parentWidget(), &mainWindow);
    QVERIFY(first->testAttribute(Qt::WA_DeleteOnClose));
    QVERIFY(first->reader()->isSimulated() && child<QWidget>(*first, "simulatedPanel"));
    QCOMPARE(m_server->lastSent(getFingers).data, ZRDataStream::pack(quint32(41)));
    // A second request for the same user raises the open dialog.
    QCOMPARE(ask(QStringLiteral("userctl-2")), int(proto::StatusOk));
    QCOMPARE(opened.count(), 1);
    QCOMPARE(service.dialogFor(41), first.data());
    QVERIFY(told.isEmpty());

    first->close();
    QTRY_COMPARE(told.size(), 2);
    told.sort();
    QCOMPARE(told, (QStringList{QStringLiteral("userctl-1"), QStringLiteral("userctl-2")}));
    QTRY_VERIFY(first.isNull());

    // Once closed, a request opens a new dialog, and its end is told once more.
    QCOMPARE(ask(QStringLiteral("userctl-1")), int(proto::StatusOk));
    QCOMPARE(opened.count(), 2);
    service.dialogFor(41)->reject();
    QTRY_COMPARE(told.size(), 3);
    QCOMPARE(told.last(), QStringLiteral("userctl-1"));
}

void TestFingerprintEnrolment::listThenEnrol()
{
    auto *reader = new SimulatedFingerprintReader;
    QSignalSpy captured(reader, &SimulatedFingerprintReader::sampleCaptured);
    FingerprintEnrolmentDialog dialog(m_server, 41, reader);
    dialog.show();
    auto *progress = dialog.findChild<QProgressBar *>();
    QVERIFY(progress->isVisible()); // reading the list
    QTRY_COMPARE(dialog.activity(), Activity::Idle);
    QVERIFY(!progress->isVisible());
    QCOMPARE(m_server->lastSent(getFingers).sessionId, QByteArray("session-7"));
    QCOMPARE(dialog.enrolledFingers(), (Fingers{1, 6}));
    QTreeWidget *tree = fingerTree(dialog);
    for (int finger = 0; finger < 10; ++finger) {
        QCOMPARE(tree->topLevelItem(finger)->text(1),
                 finger == 1 || finger == 6 ? QStringLiteral("сохранен") : QStringLiteral("нет"));
    }
    QPushButton *removeButton = child<QPushButton>(dialog, "removeButton");
    tree->setCurrentItem(tree->topLevelItem(6));
    QVERIFY(removeButton->isEnabled());
    tree->setCurrentItem(tree->topLevelItem(3));
    QVERIFY(!removeButton->isEnabled());

    QTest::mouseClick(child<QPushButton>(dialog, "scanButton"), Qt::LeftButton);
    QCOMPARE(dialog.activity(), Activity::WaitingForFinger);
    QVERIFY(reader->isActive() && progress->isVisible());
    QVERIFY(messageLine(dialog)->text().contains(QStringLiteral("Правый безымянный")));
    reader->touchUnknownFinger();
    QVERIFY(!reader->isActive());
    QCOMPARE(dialog.activity(), Activity::Saving);
    QVERIFY(progress->isVisible());
    const Command request = m_server->lastSent(enrolFinger);
    QCOMPARE(request.sessionId, QByteArray("session-7"));
    QCOMPARE(request.data,
             ZRDataStream::pack(quint32(41), qint32(3), quint32(FingerprintReader::SimulatedFormat),
                                captured.first().at(1).toByteArray()));

    m_server->answerOk(request);
    QTRY_COMPARE(dialog.activity(), Activity::Idle);
    QCOMPARE(dialog.enrolledFingers(), (Fingers{1, 3, 6}));
    QCOMPARE(tree->topLevelItem(3)->text(1), QStringLiteral("сохранен (имитация)"));
    QCOMPARE(messageLine(dialog)->messageIcon(), MessageWidget::Positive);
}

void TestFingerprintEnrolment::refusalIsShown_data()
{
    QTest::addColumn<int>("status"); // 0: the connection drops
    QTest::addColumn<QString>("serverText");
    QTest::addColumn<QString>("shown");
    QTest::addRow("no right") << 18 << QStringLiteral("Нет права") << "нет права";
    QTest::addRow("connection lost") << 0 << QString() << "нет связи с сервером";
    QTest::addRow("server's own words") << 2 << QStringLiteral("Шаблон пуст.") << "Шаблон пуст.";
}

void TestFingerprintEnrolment::refusalIsShown()
{
    QFETCH(int, status);
    QFETCH(QString, serverText);
    QFETCH(QString, shown);
    auto *reader = new SimulatedFingerprintReader;
    FingerprintEnrolmentDialog dialog(m_server, 41, reader);
    QTRY_COMPARE(dialog.activity(), Activity::Idle);
    dialog.startScan();
    reader->touchUnknownFinger();
    const Command request = m_server->lastSent(enrolFinger);
    QVERIFY(request.id);
    if (status == 0)
        m_server->dropConnection();
    else
        m_server->answerFailure(request, status, serverText);

    QTRY_COMPARE(dialog.activity(), Activity::Idle);
    QCOMPARE(dialog.enrolledFingers(), (Fingers{1, 6}));
    QCOMPARE(messageLine(dialog)->messageIcon(), MessageWidget::Critical);
    QVERIFY2(messageLine(dialog)->text().contains(shown), qPrintable(messageLine(dialog)->text()));
}

void TestFingerprintEnrolment::enrolsAndRemovesAtTheRealServer()
{
    harness::Server server;
    QCOMPARE(server.start(), QString());
    const auto root = server.rootClient();
    const TYPE_ID target = harness::addUser(*root, QStringLiteral("target"), QString());
    QVERIFY(target);
    const auto storedFingers = [&root, target] {
        Fingers fingers;
        ZRDataStream in(
            root->request(proto::command::GetUserFingers, ZRDataStream::pack(quint32(target)))
                .data);
        in >> fingers;
        return fingers;
    };

    AuthData::clear();
    ZRServerInterface router;
    LoginClient login(&router);
    QSignalSpy loggedIn(&login, &LoginClient::loggedIn);
    router.connectToServer(QStringLiteral("127.0.0.1"), server.engine->port());
    QTRY_COMPARE(router.state(), ZRServerInterface::State::Connected);
    login.login(QStringLiteral("root"), QStringLiteral("RootPass1"), QStringLiteral("test"));
    QVERIFY(loggedIn.wait(5000));

    auto *reader = new SimulatedFingerprintReader;
    FingerprintEnrolmentDialog enrolment(&router, target, reader);
    QTRY_COMPARE(enrolment.activity(), Activity::Idle);
    fingerTree(enrolment)->setCurrentItem(fingerTree(enrolment)->topLevelItem(4));
    enrolment.startScan();
    reader->touchUnknownFinger();
    QTRY_COMPARE(enrolment.activity(), Activity::Idle);
    QVERIFY2(enrolment.enrolledFingers() == Fingers{4}, qPrintable(messageLine(enrolment)->text()));
    QCOMPARE(storedFingers(), Fingers{4});

    // A dialog opened later reads what the first one stored, and removes it after asking.
    FingerprintEnrolmentDialog later(&router, target);
    later.show();
    QTRY_COMPARE(later.enrolledFingers(), Fingers{4});
    fingerTree(later)->setCurrentItem(fingerTree(later)->topLevelItem(4));
    for (auto choice : {QMessageBox::No, QMessageBox::Yes}) {
        QTest::mouseClick(child<QPushButton>(later, "removeButton"), Qt::LeftButton);
        auto *question = child<QMessageBox>(later, "removeQuestion");
        QVERIFY(question && question->isVisible());
        QTest::mouseClick(question->button(choice), Qt::LeftButton);
        if (choice == QMessageBox::No) {
            QCOMPARE(later.activity(), Activity::Idle);
            QTRY_VERIFY(!child<QMessageBox>(later, "removeQuestion"));
        }
    }
    QCOMPARE(later.activity(), Activity::Saving);
    QTRY_VERIFY(later.enrolledFingers().isEmpty());
    QCOMPARE(messageLine(later)->messageIcon(), MessageWidget::Positive);
    QVERIFY(storedFingers().isEmpty());
    router.disconnectFromServer();
}

QTEST_MAIN(TestFingerprintEnrolment)
#include "tst_fingerprintenrolment.moc"
