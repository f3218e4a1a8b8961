#include "mailsender.h"

#include <server/engine/mail/maillog.h>
#include <server/engine/mail/mailoutbox.h>
#include <server/engine/mail/smtpclient.h>
#include <server/engine/storage/databaseaddress.h>

#include <QAtomicInteger>
#include <QDateTime>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QThread>
#include <QTimer>

#include <atomic>

namespace zeral::server {

namespace {

// Mails taken from the outbox at a time; more are fetched at once after these.
constexpr int batchSize = 20;
// Even without a wake-up the outbox is looked at this often.
constexpr int idleLookMs = 60 * 1000;
constexpr qint64 longestPauseMs = 6 * 60 * 60 * 1000;

QAtomicInteger<quint64> connectionCounter;

} // namespace

// Lives in the sender's thread: owns the database connection and does the deliveries.
class MailSender::Worker : public QObject
{
public:
    Worker(MailSender *owner, QString databasePath, const QString &relayUrl, int maxAttempts,
           int firstPauseMs, int timeoutMs)
        : m_owner(owner)
        , m_databasePath(std::move(databasePath))
        , m_connection(
              QStringLiteral("zr.mailsender.%1").arg(connectionCounter.fetchAndAddRelaxed(1)))
        , m_smtp(relayUrl)
        , m_maxAttempts(maxAttempts)
        , m_firstPauseMs(firstPauseMs)
        , m_timer(this)
    {
        m_smtp.setTimeout(timeoutMs);
        m_smtp.setAbortFlag(&stopping);
        m_timer.setSingleShot(true);
        connect(&m_timer, &QTimer::timeout, this, [this] { deliverDue(); });
    }

    void open();
    void close();
    void lookSoon() { m_timer.start(0); }

    std::atomic<bool> stopping{false};

private:
    void deliverDue();
    void scheduleNextLook(QSqlDatabase &db);
    qint64 pauseAfter(int attempt) const;

    MailSender *const m_owner;
    const QString m_databasePath;
    const QString m_connection;
    SmtpClient m_smtp;
    const int m_maxAttempts;
    const int m_firstPauseMs;
    QTimer m_timer;
};

void MailSender::Worker::open()
{
    const DatabaseAddress address(m_databasePath);
    QSqlDatabase db
        = address.addConnection(m_connection, QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
    if (!db.open()) {
        qCWarning(lcMail) << "mail sender can't open the database" << address.displayText()
                          << db.lastError().text();
        return;
    }
    // PostgreSQL has no such settings: its server keeps the journal, and an erased text
    // leaves the live rows at once, but stays in the row version left behind until vacuumed
    // and in the journal until recycled (docs/server.md).
    if (!address.isPostgres()) {
        QSqlQuery wal(db);
        if (!wal.exec(QStringLiteral("PRAGMA journal_mode=WAL")))
            qCDebug(lcMail) << "mail sender: journal mode unchanged" << wal.lastError().text();
        // The text of a delivered mail is erased through this connection: overwrite it.
        if (!wal.exec(QStringLiteral("PRAGMA secure_delete=ON")))
            qCWarning(lcMail) << "mail sender: secure delete not set" << wal.lastError().text();
    }

    const int released = MailOutbox::releaseHeld(db, QDateTime::currentDateTimeUtc());
    if (released > 0)
        qCInfo(lcMail) << "held mails released to the relay:" << released;
    lookSoon();
}

void MailSender::Worker::close()
{
    m_timer.stop();
    {
        QSqlDatabase db = QSqlDatabase::database(m_connection, false);
        db.close();
    }
    QSqlDatabase::removeDatabase(m_connection);
}

void MailSender::Worker::deliverDue()
{
    QSqlDatabase db = QSqlDatabase::database(m_connection, false);
    if (!db.isOpen() || stopping)
        return;
    const QList<MailOutbox::Entry> entries
        = MailOutbox::due(db, QDateTime::currentDateTimeUtc(), batchSize);
    for (const MailOutbox::Entry &entry : entries) {
        ServerText reason;
        const bool delivered = m_smtp.send(entry.mail.recipient, entry.mail.message, &reason);
        // The outbox and the log keep the reason in the sources' language.
        const QString error = reason.toString();
        if (stopping && !delivered)
            return; // broken off by stop(): not the relay's fault, not counted
        const QDateTime at = QDateTime::currentDateTimeUtc();
        const int attempt = entry.attempts + 1;
        const QDateTime retryAt = at.addMSecs(pauseAfter(attempt));
        const bool recorded
            = MailOutbox::recordAttempt(db, entry.id, delivered, error, at, retryAt, m_maxAttempts);
        if (delivered)
            qCInfo(lcMail) << "mail delivered id:" << entry.id << "attempt:" << attempt;
        else
            qCWarning(lcMail) << "mail not delivered id:" << entry.id << "attempt:" << attempt
                              << "of" << m_maxAttempts << error;
        emit m_owner->attempted(entry.id, delivered, error);
        if (recorded) {
            MailDelivery outcome;
            outcome.id = entry.id;
            outcome.recipient = entry.mail.recipient;
            outcome.state = MailOutbox::stateName(MailOutbox::state(db, entry.id));
            outcome.error = delivered ? QString() : error;
            if (outcome.state == QLatin1String(MailDelivery::Pending))
                outcome.nextAttempt = retryAt;
            emit m_owner->attemptRecorded(entry.operatorLogin, outcome,
                                          delivered ? ServerText() : reason);
        } else {
            // The outbox can't say what was sent: wait rather than send the mail again and
            // again.
            m_timer.start(idleLookMs);
            return;
        }
    }
    if (entries.size() == batchSize)
        lookSoon();
    else
        scheduleNextLook(db);
}

void MailSender::Worker::scheduleNextLook(QSqlDatabase &db)
{
    const QDateTime next = MailOutbox::nextDue(db);
    const qint64 wait = next.isValid() ? QDateTime::currentDateTimeUtc().msecsTo(next) : idleLookMs;
    m_timer.start(int(qBound<qint64>(0, wait, idleLookMs)));
}

qint64 MailSender::Worker::pauseAfter(int attempt) const
{
    // The first pause after the first failure, then twice as long after each further one.
    const int doublings = qBound(0, attempt - 1, 20);
    return qMin(qint64(m_firstPauseMs) << doublings, longestPauseMs);
}

MailSender::MailSender(QString databasePath, QString relayUrl, QObject *parent)
    : QObject(parent)
    , m_databasePath(std::move(databasePath))
    , m_relayUrl(std::move(relayUrl))
{}

MailSender::~MailSender()
{
    stop();
}

void MailSender::setDeliveryPolicy(int maxAttempts, int firstPauseMs, int timeoutMs)
{
    m_maxAttempts = qMax(1, maxAttempts);
    m_firstPauseMs = qMax(0, firstPauseMs);
    m_timeoutMs = qMax(1, timeoutMs);
}

void MailSender::start()
{
    if (m_thread)
        return;
    if (m_relayUrl.isEmpty()) {
        qCInfo(lcMail) << "no mail relay configured: mails stay held in the outbox";
        return;
    }
    if (!SmtpClient::initialiseLibrary()) {
        qCWarning(lcMail) << "libcurl could not be initialised: no mail is delivered";
        return;
    }
    qCInfo(lcMail) << "mail sender started, relay:" << SmtpClient::displayUrl(m_relayUrl);
    m_thread = new QThread;
    m_thread->setObjectName(QStringLiteral("zr-mail"));
    m_worker
        = new Worker(this, m_databasePath, m_relayUrl, m_maxAttempts, m_firstPauseMs, m_timeoutMs);
    m_worker->moveToThread(m_thread);
    Worker *worker = m_worker;
    connect(m_thread, &QThread::started, worker, [worker] { worker->open(); });
    m_thread->start();
}

void MailSender::stop()
{
    if (!m_thread)
        return;
    m_worker->stopping = true;
    Worker *worker = m_worker;
    QMetaObject::invokeMethod(
        worker, [worker] { worker->close(); }, Qt::QueuedConnection);
    m_thread->quit();
    m_thread->wait();
    // The thread has ended: nothing runs in it any more, so its objects can go from here.
    delete m_worker;
    delete m_thread;
    m_worker = nullptr;
    m_thread = nullptr;
}

void MailSender::wake()
{
    if (!m_worker)
        return;
    Worker *worker = m_worker;
    QMetaObject::invokeMethod(
        worker, [worker] { worker->lookSoon(); }, Qt::QueuedConnection);
}

} // namespace zeral::server
