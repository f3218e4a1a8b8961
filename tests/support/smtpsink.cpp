#include "smtpsink.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>

SmtpSink::~SmtpSink()
{
    stop();
}

QString SmtpSink::start(quint16 port)
{
    if (!m_dir.isValid())
        return QStringLiteral("no temporary folder for the maildir");
    m_port = port ? port : freePort();
    m_relay.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_relay.start(QStringLiteral("/usr/bin/python3"),
                  {QStringLiteral("-m"), QStringLiteral("aiosmtpd"), QStringLiteral("-n"),
                   QStringLiteral("-c"), QStringLiteral("aiosmtpd.handlers.Mailbox"), maildir(),
                   QStringLiteral("-l"), QStringLiteral("127.0.0.1:%1").arg(m_port)});
    if (!m_relay.waitForStarted())
        return m_relay.errorString();
    // The relay needs a moment to import and bind; it is ready when it answers.
    const QDeadlineTimer deadline(15000);
    while (!accepts(m_port)) {
        if (m_relay.state() == QProcess::NotRunning)
            return QStringLiteral("aiosmtpd ended at once (is python3-aiosmtpd installed?)");
        if (deadline.hasExpired())
            return QStringLiteral("aiosmtpd doesn't take connections on port %1").arg(m_port);
        m_relay.waitForFinished(50);
    }
    return {};
}

void SmtpSink::stop()
{
    if (m_relay.state() == QProcess::NotRunning)
        return;
    m_relay.kill();
    m_relay.waitForFinished();
}

QString SmtpSink::url() const
{
    return QStringLiteral("smtp://127.0.0.1:%1").arg(m_port);
}

QString SmtpSink::maildir() const
{
    return m_dir.filePath(QStringLiteral("maildir"));
}

int SmtpSink::count() const
{
    return QDir(maildir() + QStringLiteral("/new")).entryList(QDir::Files).size();
}

QList<SmtpSink::Mail> SmtpSink::mails() const
{
    QList<Mail> mails;
    const QDir incoming(maildir() + QStringLiteral("/new"));
    for (const QString &name : incoming.entryList(QDir::Files, QDir::Time | QDir::Reversed)) {
        QFile file(incoming.filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        Mail mail;
        mail.raw = file.readAll();
        const int rcpt = mail.raw.indexOf("X-RcptTo: ");
        if (rcpt >= 0) {
            const int start = rcpt + 10;
            mail.recipient = QString::fromUtf8(
                mail.raw.mid(start, mail.raw.indexOf('\n', start) - start).trimmed());
        }
        // The text goes base64 in its part; the part ends at the next boundary or the end.
        const int part = mail.raw.indexOf("Content-Type: text/plain");
        const int textStart = part < 0 ? -1 : mail.raw.indexOf("\n\n", part);
        if (textStart >= 0) {
            const int end = mail.raw.indexOf("\n--", textStart + 2);
            mail.text = QString::fromUtf8(QByteArray::fromBase64(
                mail.raw.mid(textStart + 2, end < 0 ? -1 : end - textStart - 2)));
        }
        mails.append(mail);
    }
    return mails;
}

quint16 SmtpSink::freePort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

bool SmtpSink::accepts(quint16 port)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    return socket.waitForConnected(200);
}

QStringList SmtpSink::tokensIn(const QString &text)
{
    QStringList tokens;
    static const QRegularExpression base64Line(QStringLiteral("^[A-Za-z0-9+/]{16,}={0,2}$"));
    for (const QString &line : text.split(QRegularExpression(QStringLiteral("\r?\n")))) {
        const QString candidate = line.trimmed();
        if (!base64Line.match(candidate).hasMatch())
            continue;
        const QJsonDocument json
            = QJsonDocument::fromJson(QByteArray::fromBase64(candidate.toLatin1()));
        if (json.isObject())
            tokens.append(candidate);
    }
    return tokens;
}
