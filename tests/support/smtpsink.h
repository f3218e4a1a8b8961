#pragma once

#include <QByteArray>
#include <QList>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

// A local mail relay that keeps what it receives: Python's aiosmtpd (Debian python3-aiosmtpd)
// on a free loopback port, writing each mail into a maildir of its own. The server under test
// delivers to url(); the test reads mails() back.
class SmtpSink
{
public:
    struct Mail
    {
        QString recipient; // the envelope's recipient, as the relay was given it
        QString text;      // the decoded text/plain part
        QByteArray raw;
    };

    SmtpSink() = default;
    ~SmtpSink();
    SmtpSink(const SmtpSink &) = delete;
    SmtpSink &operator=(const SmtpSink &) = delete;

    // Starts the relay on `port` (a free one when 0) and waits until it takes connections;
    // empty on success, else why not.
    QString start(quint16 port = 0);
    void stop();
    quint16 port() const { return m_port; }
    QString url() const;

    QList<Mail> mails() const;
    int count() const;

    // A loopback port that nobody listens on at the moment of the call.
    static quint16 freePort();
    // Whether something takes connections on the loopback port.
    static bool accepts(quint16 port);
    // The authorisation tokens in a mail's text: the lines that are base64 of a JSON object.
    static QStringList tokensIn(const QString &text);

private:
    QString maildir() const;

    QTemporaryDir m_dir;
    QProcess m_relay;
    quint16 m_port = 0;
};
