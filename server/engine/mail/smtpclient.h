#pragma once

#include <server/engine/ops/servertext.h>

#include <QByteArray>
#include <QString>

#include <atomic>

namespace zeral::server {

// Hands one message to an SMTP relay with libcurl and waits for the relay's answer.
// Blocking: it runs in the sender's thread, never on the request path.
class SmtpClient
{
public:
    // `relayUrl` as libcurl takes it: smtp://host:port, smtps://host:port, with user and
    // password in the URL if the relay wants them.
    explicit SmtpClient(QString relayUrl);

    // Prepares libcurl once for the whole process; call it before the first thread uses
    // this class.
    static bool initialiseLibrary();
    // The relay URL without user and password, for the log.
    static QString displayUrl(const QString &relayUrl);
    // The address in the message's From field, for the envelope.
    static QString envelopeSender(const QByteArray &message);

    void setTimeout(int milliseconds) { m_timeoutMs = milliseconds; }
    // While the flag is set, a running delivery is broken off as soon as possible.
    void setAbortFlag(const std::atomic<bool> *abort) { m_abort = abort; }

    // True when the relay accepted the message; otherwise `error` says why, in words an
    // administrator can act on, in the language of whoever it is told to.
    bool send(const QString &recipient, const QByteArray &message, ServerText *error) const;

private:
    QString m_relayUrl;
    int m_timeoutMs = 60000;
    const std::atomic<bool> *m_abort = nullptr;
};

} // namespace zeral::server
