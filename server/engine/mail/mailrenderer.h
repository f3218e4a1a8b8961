#pragma once

#include <server/engine/mail/renderedmail.h>
#include <shared/emailmessage.h>

namespace zeral::server {

// Writes the text of a mail from the parameters of a "send_email" request, in the language of
// its LOCALE parameter ("ru" or "en"; anything else falls back to Russian). A mail of mobile
// credentials whose text is rendered here carries its token as text and as a QR code image (an
// attachment, since the mail is plain text), unless the token is too long for one code.
class MailRenderer
{
public:
    // The attachment that carries the token of a mobile access mail as a QR code.
    static constexpr char QrCodeFileName[] = "qr-code.png";

    explicit MailRenderer(QString senderAddress);
    RenderedMail render(const _EMAIL_MESSAGE &message) const;

    // Whether `address` is one plain address (local@domain.tld, ASCII, nothing around it)
    // that a mail can go to; the rule of email::isValidAddress, which the client shares.
    static bool isValidAddress(const QString &address);

private:
    QString m_sender;
};

} // namespace zeral::server
