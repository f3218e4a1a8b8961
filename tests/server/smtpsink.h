#pragma once

// A real SMTP relay for the mail tests: aiosmtpd (Debian python3-aiosmtpd) on a loopback
// port, storing what it receives in a maildir.

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

namespace harness {

inline quint16 freePort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

inline bool accepts(quint16 port)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    return socket.waitForConnected(200);
}

class SmtpSink
{
public:
    ~SmtpSink() { stop(); }

    // Starts the relay on `port`, keeping mails in `maildir`; true once it accepts.
    bool start(quint16 port, const QString &maildir)
    {
        m_maildir = maildir;
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral("/usr/bin/python3"),
                        {QStringLiteral("-m"), QStringLiteral("aiosmtpd"), QStringLiteral("-n"),
                         QStringLiteral("-c"), QStringLiteral("aiosmtpd.handlers.Mailbox"), maildir,
                         QStringLiteral("-l"), QStringLiteral("127.0.0.1:%1").arg(port)});
        if (!m_process.waitForStarted())
            return false;
        QDeadlineTimer deadline(15000);
        while (!accepts(port) && !deadline.hasExpired())
            QTest::qWait(50);
        return accepts(port);
    }
    void stop()
    {
        if (m_process.state() != QProcess::NotRunning) {
            m_process.kill();
            m_process.waitForFinished();
        }
    }
    QString errorString() const { return m_process.errorString(); }
    // The mails received so far, as stored (with the relay's X-MailFrom and X-RcptTo).
    QList<QByteArray> mails() const
    {
        QList<QByteArray> result;
        const QDir dir(m_maildir + QStringLiteral("/new"));
        for (const QString &name : dir.entryList(QDir::Files, QDir::Name)) {
            QFile file(dir.filePath(name));
            if (file.open(QIODevice::ReadOnly))
                result.append(file.readAll());
        }
        return result;
    }

private:
    QProcess m_process;
    QString m_maildir;
};

} // namespace harness
