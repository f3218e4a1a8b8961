#pragma once

#include <QByteArray>
#include <QString>

namespace zeral::server {

// A mail made ready for the outbox: who gets it, what it says, and the whole message as it
// goes over SMTP (headers and MIME body, CRLF line ends).
struct RenderedMail
{
    QString recipient;
    QString subject;
    QString body;
    QByteArray message;
};

} // namespace zeral::server
