#include <server/engine/mail/mailoutbox.h>
#include <server/engine/mail/mailrenderer.h>
#include <server/engine/mail/mailsender.h>
#include <tests/support/smtpsink.h>

#include <QDir>
#include <QMutex>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QtTest>

using namespace zeral;
using namespace zeral::server;

Q_DECLARE_METATYPE(zeral::server::MailOutbox::State)

namespace {

const QString connectionName = QStringLiteral("tst_mailsender");


RenderedMail tokenMail(const QString &token)
{
    _EMAIL_MESSAGE message;
    message.to = QStringLiteral("m.orlova@sevmeh.example");
    message.parameters.insert(QLatin1String(email::LOCALE), QStringLiteral("ru"));
    message.parameters.insert(QLatin1String(email::IS_MOBILE_TOKEN), true);
    message.parameters.insert(QLatin1String(email::TOKEN), token);
    return MailRenderer(QStringLiteral("zeral@sevmeh.example")).render(message);
}

QVariant column(QSqlDatabase &db, qint64 id, const QString &name)
{
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT %1 FROM mail_outbox WHERE id = ?").arg(name));
    query.addBindValue(id);
    return query.exec() && query.next() ? query.value(0) : QVariant();
}

QList<qint64> dueIds(QSqlDatabase &db, const QDateTime &now, int limit = 100)
{
    QList<qint64> ids;
    for (const MailOutbox::Entry &entry : MailOutbox::due(db, now, limit))
        ids.append(entry.id);
    return ids;
}

} // namespace

class TestMailSender : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void attemptsMoveThroughStates_data();
    void attemptsMoveThroughStates();
    void heldAndDueMails();
    void deliversToRelay();
    void refusedDeliveryIsRetried();

private:
    void startRelay(quint16 port);

    QTemporaryDir m_dir;
    QString m_databasePath;
    SmtpSink m_relay;
};

void TestMailSender::init()
{
    QVERIFY(m_dir.isValid());
    m_databasePath = m_dir.filePath(QStringLiteral("outbox-%1-%2.db")
                                        .arg(QLatin1String(QTest::currentTestFunction()),
                                             QLatin1String(QTest::currentDataTag())));
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connectionName);
    db.setDatabaseName(m_databasePath);
    QVERIFY(db.open() && QSqlQuery(db).exec(QStringLiteral("PRAGMA journal_mode=WAL")));
    QVERIFY(MailOutbox::createSchema(db));
    QVERIFY(MailOutbox::createSchema(db)); // a second start finds the table there
}

void TestMailSender::cleanup()
{
    m_relay.stop();
    QSqlDatabase::database(connectionName, false).close();
    QSqlDatabase::removeDatabase(connectionName);
}

void TestMailSender::startRelay(quint16 port)
{
    const QString error = m_relay.start(port);
    QVERIFY2(error.isEmpty(), qPrintable(error));
}

void TestMailSender::attemptsMoveThroughStates_data()
{
    // Outcomes of the attempts in order: "f" failed, "s" delivered.
    QTest::addColumn<QString>("outcomes");
    QTest::addColumn<int>("maxAttempts");
    QTest::addColumn<MailOutbox::State>("finalState");
    QTest::addRow("delivered at once") << "s" << 5 << MailOutbox::State::Sent;
    QTest::addRow("delivered on retry") << "ffs" << 5 << MailOutbox::State::Sent;
    QTest::addRow("one failure waits") << "f" << 5 << MailOutbox::State::Pending;
    QTest::addRow("failed for good") << "fffff" << 5 << MailOutbox::State::Failed;
    QTest::addRow("single try") << "f" << 1 << MailOutbox::State::Failed;
}

void TestMailSender::attemptsMoveThroughStates()
{
    QFETCH(QString, outcomes);
    QFETCH(int, maxAttempts);
    QFETCH(MailOutbox::State, finalState);
    QSqlDatabase db = QSqlDatabase::database(connectionName);

    const qint64 id = MailOutbox::enqueue(db, tokenMail("T1"), QStringLiteral("admin"), true);
    QVERIFY(id > 0);
    QCOMPARE(MailOutbox::state(db, id), MailOutbox::State::Pending);

    QDateTime now = QDateTime::currentDateTimeUtc();
    for (int i = 0; i < outcomes.size(); ++i) {
        const bool delivered = outcomes.at(i) == QLatin1Char('s');
        QVERIFY(dueIds(db, now).contains(id));
        const QDateTime retryAt = now.addSecs(600);
        QVERIFY(MailOutbox::recordAttempt(db, id, delivered,
                                          delivered ? QString() : QStringLiteral("relay down"), now,
                                          retryAt, maxAttempts));
        QCOMPARE(column(db, id, QStringLiteral("attempts")).toInt(), i + 1);
        if (MailOutbox::state(db, id) == MailOutbox::State::Pending) {
            // Not before the pause is over.
            QCOMPARE(column(db, id, QStringLiteral("last_error")).toString(),
                     QStringLiteral("relay down"));
            QVERIFY(!dueIds(db, retryAt.addMSecs(-1)).contains(id));
            QCOMPARE(MailOutbox::nextDue(db), retryAt);
        }
        now = retryAt;
    }
    QCOMPARE(MailOutbox::state(db, id), finalState);
    if (finalState != MailOutbox::State::Pending) {
        QVERIFY(!dueIds(db, now.addYears(1)).contains(id));
        // A finished mail takes no further attempt.
        QVERIFY(!MailOutbox::recordAttempt(db, id, true, QString(), now, now, maxAttempts));
    }
    QCOMPARE(column(db, id, QStringLiteral("sent")).isNull(),
             finalState != MailOutbox::State::Sent);
    // The text with the token stays only while the mail may still go; the record stays.
    const bool keepsText = finalState == MailOutbox::State::Pending;
    QCOMPARE(column(db, id, QStringLiteral("body")).toString().contains(QStringLiteral("T1")),
             keepsText);
    QCOMPARE(column(db, id, QStringLiteral("message")).toByteArray().isEmpty(), !keepsText);
    QCOMPARE(column(db, id, QStringLiteral("recipient")).toString(),
             QStringLiteral("m.orlova@sevmeh.example"));
    QVERIFY(!column(db, id, QStringLiteral("subject")).toString().isEmpty());
    QCOMPARE(MailOutbox::state(db, id + 1000), MailOutbox::State::Missing);
}

void TestMailSender::heldAndDueMails()
{
    QSqlDatabase db = QSqlDatabase::database(connectionName);
    const qint64 held = MailOutbox::enqueue(db, tokenMail("T0"), QStringLiteral("hr"), false);
    QList<qint64> ids;
    for (int i = 1; i <= 3; ++i)
        ids.append(MailOutbox::enqueue(db, tokenMail("T"), QStringLiteral("admin"), true));
    QCOMPARE(MailOutbox::state(db, held), MailOutbox::State::Held);
    QCOMPARE(column(db, held, QStringLiteral("operator")).toString(), QStringLiteral("hr"));
    // Oldest first, at most as many as asked; a mail that failed waits for its retry.
    const QDateTime now = QDateTime::currentDateTimeUtc();
    QVERIFY(MailOutbox::recordAttempt(db, ids[0], false, "x", now, now.addSecs(60), 5));
    QCOMPARE(dueIds(db, now, 1), QList<qint64>{ids[1]});
    QCOMPARE(dueIds(db, now.addSecs(60)), (QList<qint64>{ids[1], ids[2], ids[0]}));
    // Held mails go only once a relay is there.
    QCOMPARE(MailOutbox::releaseHeld(db, now.addSecs(61)), 1);
    QCOMPARE(dueIds(db, now.addSecs(61)), (QList<qint64>{ids[1], ids[2], ids[0], held}));
}

void TestMailSender::deliversToRelay()
{
    const quint16 port = SmtpSink::freePort();
    startRelay(port);
    QSqlDatabase db = QSqlDatabase::database(connectionName);
    const RenderedMail mail = tokenMail(QStringLiteral("eyJob3N0IjoiMTI3LjAuMC4xIn0="));
    const qint64 id = MailOutbox::enqueue(db, mail, QStringLiteral("admin"), true);

    MailSender sender(m_databasePath, QStringLiteral("smtp://127.0.0.1:%1").arg(port));
    QSignalSpy attempted(&sender, &MailSender::attempted);
    sender.start();
    sender.wake();
    QTRY_COMPARE_WITH_TIMEOUT(attempted.count(), 1, 15000);
    QCOMPARE(attempted.first().at(0).toLongLong(), id);
    QVERIFY2(attempted.first().at(1).toBool(), qPrintable(attempted.first().at(2).toString()));
    sender.stop();
    QCOMPARE(MailOutbox::state(db, id), MailOutbox::State::Sent);

    // The relay stored the message as it was sent: same Message-ID, the token in the text.
    const QList<SmtpSink::Mail> mails = m_relay.mails();
    QCOMPARE(mails.size(), 1);
    const QByteArray received = mails.first().raw;
    const auto messageId = [](const QByteArray &message) {
        const int start = message.indexOf("Message-ID:");
        return message.mid(start, message.indexOf('\n', start) - start).trimmed();
    };
    QCOMPARE(messageId(received), messageId(mail.message));
    QVERIFY(received.contains("X-RcptTo: m.orlova@sevmeh.example"));
    QVERIFY(received.contains("X-MailFrom: zeral@sevmeh.example"));
    // The text part carries the token; its QR code follows as a picture.
    const int textPart = received.indexOf("Content-Type: text/plain");
    const int textStart = received.indexOf("\n\n", textPart) + 2;
    QVERIFY(textPart > 0 && textStart > textPart);
    const QByteArray text
        = received.mid(textStart, received.indexOf("\n--", textStart) - textStart);
    QVERIFY(QString::fromUtf8(QByteArray::fromBase64(text))
                .contains(QStringLiteral("eyJob3N0IjoiMTI3LjAuMC4xIn0=")));
    QVERIFY(received.indexOf("Content-Type: image/png", textStart) > 0);
}

void TestMailSender::refusedDeliveryIsRetried()
{
    const quint16 port = SmtpSink::freePort(); // nobody listens there yet
    QSqlDatabase db = QSqlDatabase::database(connectionName);
    const qint64 lost = MailOutbox::enqueue(db, tokenMail("T3"), QStringLiteral("admin"), true);

    {
        // The relay is down: every attempt is refused, paused and counted until the last.
        MailSender sender(m_databasePath, QStringLiteral("smtp://127.0.0.1:%1").arg(port));
        sender.setDeliveryPolicy(3, 100, 5000);
        QSignalSpy attempted(&sender, &MailSender::attempted);
        QMutex mutex;
        QVector<qint64> times;
        connect(
            &sender, &MailSender::attempted, &sender,
            [&] {
                QMutexLocker lock(&mutex);
                times.append(QDateTime::currentMSecsSinceEpoch());
            },
            Qt::DirectConnection);
        sender.start();
        QTRY_COMPARE_WITH_TIMEOUT(attempted.count(), 3, 15000);
        QCOMPARE(attempted.last().at(0).toLongLong(), lost);
        QVERIFY(
            attempted.last().at(2).toString().contains(QStringLiteral("127.0.0.1:%1").arg(port)));
        QTRY_COMPARE(MailOutbox::state(db, lost), MailOutbox::State::Failed);
        QVERIFY(!column(db, lost, QStringLiteral("last_error")).toString().isEmpty());
        sender.stop();
        // The pause doubles: 100 ms after the first failure, 200 ms after the second.
        QCOMPARE(times.size(), 3);
        QVERIFY2(times[1] - times[0] >= 90, qPrintable(QString::number(times[1] - times[0])));
        QVERIFY2(times[2] - times[1] >= 190, qPrintable(QString::number(times[2] - times[1])));
    }

    // A mail that failed is delivered by a retry once the relay is back.
    const qint64 id = MailOutbox::enqueue(db, tokenMail("T4"), QStringLiteral("admin"), true);
    MailSender sender(m_databasePath, QStringLiteral("smtp://127.0.0.1:%1").arg(port));
    sender.setDeliveryPolicy(10, 200, 5000);
    QSignalSpy attempted(&sender, &MailSender::attempted);
    sender.start();
    QTRY_COMPARE_WITH_TIMEOUT(attempted.count(), 1, 15000);
    QCOMPARE(MailOutbox::state(db, id), MailOutbox::State::Pending);
    startRelay(port);
    QTRY_COMPARE_WITH_TIMEOUT(MailOutbox::state(db, id), MailOutbox::State::Sent, 20000);
    // The sender's thread records the outcome before it reports the attempt.
    QTRY_VERIFY(attempted.last().at(1).toBool());
    QCOMPARE(column(db, id, QStringLiteral("attempts")).toInt(), attempted.count());
}

QTEST_GUILESS_MAIN(TestMailSender)
#include "tst_mailsender.moc"
