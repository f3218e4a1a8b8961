// A "send_email" through the real engine over loopback TCP: which recipients it refuses,
// what its answer and the "mail.delivery" pushes tell the operator, and that the token's
// password stays neither in the database nor in the log once the mail is out.

#include <shared/emailmessage.h>
#include <shared/maildelivery.h>
#include <tests/server/databasereader.h>
#include <tests/server/serverharness.h>
#include <tests/support/smtpsink.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QMutex>
#include <QSqlError>
#include <QtTest>

using namespace zeral;
using harness::cmd::SendEmail;

namespace {

QMutex logMutex;
QByteArray capturedLog;
QtMessageHandler previousHandler = nullptr;

void captureLog(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    {
        QMutexLocker lock(&logMutex);
        capturedLog += QByteArray(context.category) + ": " + text.toUtf8() + '\n';
    }
    // Debug lines are captured but not printed: too many to read.
    if (previousHandler && type != QtDebugMsg)
        previousHandler(type, context, text);
}

// Every category at every level, whatever the environment's rules say, so that the scan
// covers debug lines too.
void enableAllCategories(QLoggingCategory *category)
{
    for (const QtMsgType type : {QtDebugMsg, QtInfoMsg, QtWarningMsg, QtCriticalMsg})
        category->setEnabled(type, true);
}

QByteArray logSoFar()
{
    QMutexLocker lock(&logMutex);
    return capturedLog;
}

const QString password = QStringLiteral("Kv7-Ozelot-Moroz-2931");
const QString recipient = QStringLiteral("m.orlova@sevmeh.example");

// The auth data as the users screen writes it: base64 of JSON with the password in clear.
QString token()
{
    const QJsonObject data{{QStringLiteral("host"), QStringLiteral("127.0.0.1")},
                           {QStringLiteral("port"), 7700},
                           {QStringLiteral("login"), recipient},
                           {QStringLiteral("password"), password}};
    return QString::fromLatin1(QJsonDocument(data).toJson(QJsonDocument::Compact).toBase64());
}

QByteArray sendEmailRequest(const QString &to)
{
    _EMAIL_MESSAGE message;
    message.to = to;
    message.parameters = {{QLatin1String(email::LOCALE), QStringLiteral("ru")},
                          {QLatin1String(email::IS_MOBILE_TOKEN), true},
                          {QLatin1String(email::TOKEN), token()}};
    return ZRDataStream::pack(message, QStringLiteral("root"));
}

MailDelivery decode(const Command &push)
{
    MailDelivery delivery;
    ZRDataStream in(push.data);
    in >> delivery;
    return in.status() == QDataStream::Ok && in.atEnd() ? delivery : MailDelivery();
}

} // namespace

class TestMailDelivery : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        ZR_SKIP_WITHOUT_TEST_DATABASE();
        previousHandler = qInstallMessageHandler(captureLog);
        m_previousFilter = QLoggingCategory::installFilter(enableAllCategories);
    }
    void cleanupTestCase()
    {
        QLoggingCategory::installFilter(m_previousFilter);
        qInstallMessageHandler(previousHandler);
    }
    void init() { m_server = std::make_unique<harness::Server>(); }
    void cleanup()
    {
        m_server.reset();
        m_relay.stop();
    }

    void refusedRecipientQueuesNothing_data()
    {
        QTest::addColumn<QString>("to");
        QTest::addRow("empty") << QString();
        QTest::addRow("blanks only") << QStringLiteral("   ");
        QTest::addRow("blank inside") << QStringLiteral("m.orlova @sevmeh.example");
        QTest::addRow("no domain") << QStringLiteral("m.orlova@");
        QTest::addRow("no top-level domain") << QStringLiteral("a@b");
        QTest::addRow("two with comma") << QStringLiteral("a@x.example, b@y.example");
        QTest::addRow("two with semicolon") << QStringLiteral("a@x.example;b@y.example");
        QTest::addRow("display name") << QStringLiteral("Ivan <a@b.example>");
        QTest::addRow("non-ASCII local part") << QStringLiteral("иван@sevmeh.example");
    }
    void refusedRecipientQueuesNothing()
    {
        QFETCH(QString, to);
        QVERIFY(m_server->start().isEmpty());
        auto root = m_server->rootClient();
        const Command answer = root->request(SendEmail, sendEmailRequest(to));
        QCOMPARE(answer.status, qint32(proto::StatusMalformed));
        // The operator is told which address and what to do about it.
        if (!to.trimmed().isEmpty()) {
            QVERIFY2(answer.errorText().contains(to.trimmed()), qPrintable(answer.errorText()));
            QVERIFY(answer.errorText().contains(QStringLiteral("Исправьте e-mail")));
        }
        QCOMPARE(outboxCount(), 0);
    }

    void queuedMailAnswersItsId_data()
    {
        QTest::addColumn<bool>("relay");
        QTest::addColumn<QString>("state");
        QTest::addRow("no relay configured") << false << QString::fromLatin1(MailDelivery::Held);
        // Nobody listens at the relay: the mail waits in the outbox all the same.
        QTest::addRow("relay configured") << true << QString::fromLatin1(MailDelivery::Pending);
    }
    void queuedMailAnswersItsId()
    {
        QFETCH(bool, relay);
        QFETCH(QString, state);
        server::ServerEngine::Options options;
        if (relay) {
            options.smtpUrl = QStringLiteral("smtp://127.0.0.1:%1").arg(SmtpSink::freePort());
            options.mailFirstPauseMs = 60 * 60 * 1000;
        }
        QVERIFY(m_server->start(options).isEmpty());
        auto root = m_server->rootClient();
        const Command answer
            = root->request(SendEmail, sendEmailRequest(QStringLiteral(" ") + recipient));
        QCOMPARE(answer.status, qint32(proto::StatusOk));
        qint64 id = 0;
        QString answeredState;
        ZRDataStream in(answer.data);
        in >> id >> answeredState;
        QVERIFY(in.status() == QDataStream::Ok && in.atEnd());
        QCOMPARE(answeredState, state);
        QSqlQuery row = outboxRow(id);
        QVERIFY(row.next());
        QCOMPARE(row.value(QStringLiteral("recipient")).toString(), recipient);
        QCOMPARE(row.value(QStringLiteral("operator")).toString(), QStringLiteral("root"));
        if (!relay) {
            QCOMPARE(row.value(QStringLiteral("state")).toString(), state);
            // A held mail keeps its text until a relay takes it: the scan below finds it.
            row.finish();
            const QByteArray stored = storedBytes();
            QVERIFY(stored.contains(token().toUtf8()));
            QVERIFY(stored.contains("qr-code.png"));
            // Nothing was attempted, so nothing is pushed: a later answer comes alone.
            QCOMPARE(root->request(harness::cmd::GetSessionsInfo).status, qint32(proto::StatusOk));
            QVERIFY(root->pushesNamed(proto::command::MailDelivery).isEmpty());
        }
    }

    void deliveredMailKeepsNoToken()
    {
        const quint16 port = SmtpSink::freePort();
        const QString error = m_relay.start(port);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        server::ServerEngine::Options options;
        options.smtpUrl = QStringLiteral("smtp://127.0.0.1:%1").arg(port);
        QVERIFY(m_server->start(options).isEmpty());
        auto root = m_server->rootClient();
        auto otherRootSession = m_server->rootClient();
        QVERIFY(harness::addUser(*root, QStringLiteral("auditor1"), QStringLiteral("RT_AUDITOR")));
        auto auditor = m_server->client();
        QCOMPARE(auditor->login(QStringLiteral("auditor1"), QStringLiteral("Passw0rd")).status,
                 qint32(proto::StatusOk));

        const Command answer = root->request(SendEmail, sendEmailRequest(recipient));
        QCOMPARE(answer.status, qint32(proto::StatusOk));
        qint64 id = 0;
        ZRDataStream(answer.data) >> id;
        QTRY_COMPARE_WITH_TIMEOUT(root->pushesNamed(proto::command::MailDelivery).size(), 1, 20000);
        const MailDelivery delivered
            = decode(root->pushesNamed(proto::command::MailDelivery).first());
        QCOMPARE(delivered.id, id);
        QCOMPARE(delivered.recipient, recipient);
        QCOMPARE(delivered.state, QString::fromLatin1(MailDelivery::Sent));
        QVERIFY(delivered.error.isEmpty());
        QVERIFY(!delivered.nextAttempt.isValid());
        // Every session of the operator who queued it hears of it, nobody else.
        QTRY_COMPARE(otherRootSession->pushesNamed(proto::command::MailDelivery).size(), 1);
        QCOMPARE(root->request(harness::cmd::GetSessionsInfo).status, qint32(proto::StatusOk));
        QVERIFY(auditor->pushesNamed(proto::command::MailDelivery).isEmpty());

        // The relay got the token; the outbox keeps only the record.
        QCOMPARE(m_relay.mails().size(), 1);
        QCOMPARE(m_relay.mails().first().recipient, recipient);
        expectErasedText(id, MailDelivery::Sent);
        expectNoTokenStored();
        const QByteArray log = logSoFar();
        QVERIFY(log.contains("mail delivered id:"));
        QVERIFY(log.contains("client connected:")); // debug lines are in it too
        QVERIFY(!log.contains(password.toUtf8()));
        QVERIFY(!log.contains(token().toUtf8()));
    }

    void relayDownIsReportedThenGivenUp()
    {
        server::ServerEngine::Options options;
        const quint16 port = SmtpSink::freePort(); // nothing listens there
        options.smtpUrl = QStringLiteral("smtp://127.0.0.1:%1").arg(port);
        options.mailMaxAttempts = 2;
        options.mailFirstPauseMs = 300;
        options.mailTimeoutMs = 5000;
        options.catalogueDir = QStringLiteral(ZR_BINARY_DIR "/translations");
        QVERIFY(m_server->start(options).isEmpty());
        auto root = m_server->rootClient();
        // The same operator in an English studio too: each session is told in its language.
        auto english = m_server->client();
        QCOMPARE(english->login(QStringLiteral("root"), QStringLiteral("RootPass1"),
                                QStringLiteral("en_GB"))
                     .status,
                 qint32(proto::StatusOk));
        const QDateTime queuedAt = QDateTime::currentDateTimeUtc();
        const Command answer = root->request(SendEmail, sendEmailRequest(recipient));
        QCOMPARE(answer.status, qint32(proto::StatusOk));
        qint64 id = 0;
        ZRDataStream(answer.data) >> id;

        QTRY_COMPARE_WITH_TIMEOUT(root->pushesNamed(proto::command::MailDelivery).size(), 2, 20000);
        const MailDelivery retry = decode(root->pushesNamed(proto::command::MailDelivery).at(0));
        QCOMPARE(retry.id, id);
        QCOMPARE(retry.recipient, recipient);
        QCOMPARE(retry.state, QString::fromLatin1(MailDelivery::Pending));
        QVERIFY2(retry.error.contains(QStringLiteral("127.0.0.1:%1").arg(port)),
                 qPrintable(retry.error));
        QVERIFY(retry.nextAttempt > queuedAt);
        const MailDelivery givenUp = decode(root->pushesNamed(proto::command::MailDelivery).at(1));
        QCOMPARE(givenUp.id, id);
        QCOMPARE(givenUp.state, QString::fromLatin1(MailDelivery::Failed));
        QVERIFY(!givenUp.error.isEmpty());
        QVERIFY(!givenUp.nextAttempt.isValid());

        QVERIFY2(retry.error.startsWith(QStringLiteral("Не удалось передать письмо")),
                 qPrintable(retry.error));
        QTRY_COMPARE_WITH_TIMEOUT(english->pushesNamed(proto::command::MailDelivery).size(), 2,
                                  5000);
        const MailDelivery told = decode(english->pushesNamed(proto::command::MailDelivery).at(0));
        QCOMPARE(told.id, id);
        QVERIFY2(told.error.startsWith(QStringLiteral("The mail could not be handed to the mail "
                                                      "server smtp://127.0.0.1:%1")
                                           .arg(port)),
                 qPrintable(told.error));
        // The outbox keeps the reason in the server's own language.
        QSqlQuery row = outboxRow(id);
        QVERIFY(row.next());
        QCOMPARE(row.value(QStringLiteral("last_error")).toString(), givenUp.error);

        expectErasedText(id, MailDelivery::Failed);
        expectNoTokenStored();
    }

private:
    QString databasePath() const { return m_server->databasePath; }
    int outboxCount()
    {
        QSqlQuery query = harness::readDatabase(databasePath(),
                                                QStringLiteral("SELECT COUNT(*) FROM mail_outbox"));
        return query.next() ? query.value(0).toInt() : -1;
    }
    QSqlQuery outboxRow(qint64 id)
    {
        return harness::readDatabase(
            databasePath(), QStringLiteral("SELECT * FROM mail_outbox WHERE id = %1").arg(id));
    }
    void expectErasedText(qint64 id, const char *state)
    {
        QSqlQuery row = outboxRow(id);
        QVERIFY(row.next());
        QCOMPARE(row.value(QStringLiteral("state")).toString(), QString::fromLatin1(state));
        QCOMPARE(row.value(QStringLiteral("body")).toString(), QString());
        QVERIFY(row.value(QStringLiteral("message")).toByteArray().isEmpty());
        QCOMPARE(row.value(QStringLiteral("recipient")).toString(), recipient);
        QVERIFY(!row.value(QStringLiteral("subject")).toString().isEmpty());
        QVERIFY(!row.value(QStringLiteral("last_attempt")).isNull());
    }
    // The database file and its log as they are on disk, the log written back first. On
    // PostgreSQL the text of every live row of every table (row versions a change left behind
    // stay in its files until vacuumed: docs/server.md says so).
    QByteArray storedBytes()
    {
        if (harness::onPostgres()) {
            QByteArray rows;
            {
                QSqlDatabase db = harness::sideDatabase(databasePath(), QStringLiteral("rows"));
                if (db.open()) {
                    QSqlQuery tables(db);
                    tables.exec(QStringLiteral("SELECT table_name FROM information_schema.tables"
                                               " WHERE table_schema = 'public'"));
                    while (tables.next()) {
                        QSqlQuery table(db);
                        table.exec(QStringLiteral("SELECT t::text FROM %1 t")
                                       .arg(tables.value(0).toString()));
                        while (table.next())
                            rows += table.value(0).toString().toUtf8() + '\n';
                    }
                }
                db.close();
            }
            QSqlDatabase::removeDatabase(QStringLiteral("rows"));
            return rows;
        }
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"),
                                                        QStringLiteral("checkpoint"));
            db.setDatabaseName(databasePath());
            if (db.open()) {
                QSqlQuery checkpoint(db);
                if (!checkpoint.exec(QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)")))
                    qWarning() << "checkpoint failed:" << checkpoint.lastError().text();
            }
            db.close();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("checkpoint"));
        QByteArray bytes;
        for (const QString &suffix : {QString(), QStringLiteral("-wal")}) {
            QFile file(databasePath() + suffix);
            if (file.open(QIODevice::ReadOnly))
                bytes += file.readAll();
        }
        return bytes;
    }
    // Neither the outbox nor any other table (the audit log among them) holds the token,
    // nor does free space of the file.
    void expectNoTokenStored()
    {
        QSqlDatabase::removeDatabase(QStringLiteral("reader:") + databasePath());
        m_server->engine->stop();
        const QByteArray bytes = storedBytes();
        QVERIFY(bytes.size() > 0);
        QVERIFY(bytes.contains(recipient.toUtf8())); // the record is there to be found
        QVERIFY(!bytes.contains(password.toUtf8()));
        QVERIFY(!bytes.contains(token().toUtf8()));
        QVERIFY(!bytes.contains("qr-code.png")); // the message with its picture is gone too
    }

    std::unique_ptr<harness::Server> m_server;
    SmtpSink m_relay;
    QLoggingCategory::CategoryFilter m_previousFilter = nullptr;
};

QTEST_GUILESS_MAIN(TestMailDelivery)
#include "tst_maildelivery.moc"
