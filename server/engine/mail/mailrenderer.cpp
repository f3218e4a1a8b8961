#include "mailrenderer.h"

#include <server/engine/mail/mimemessage.h>
#include <server/engine/mail/qrcodeimage.h>
#include <server/engine/serverlogging.h>
#include <shared/emailaddress.h>

#include <QDateTime>
#include <QUuid>

namespace zeral::server {

namespace {

// The texts of a mail in one language. The language is the recipient's, given with each
// mail, not the server's, so the texts are chosen here rather than by a translator.
struct MailTexts
{
    const char *greeting; // when the request brings none
    const char *tokenSubject;
    const char *plainSubject;
    const char *tokenIntro;
    const char *tokenSteps;
    const char *tokenWarning;
    const char *tokenPicture; // when the QR code of the data is attached
    const char *closing;
};

const MailTexts russianTexts = {
    "Здравствуйте!",
    "Zeral: доступ к мобильному приложению",
    "Сообщение системы Zeral",
    "Для вас открыт доступ к мобильному приложению системы Zeral.",
    "Чтобы настроить приложение, откройте в нём добавление учётной записи и вставьте данные "
    "авторизации, приведённые ниже, целиком, одной строкой:",
    "В этих данных содержится ваш пароль. Не пересылайте это письмо и удалите его, когда "
    "приложение будет настроено.",
    "Те же данные есть в приложенной картинке с QR-кодом: их можно не вставлять, а отсканировать "
    "камерой телефона в приложении.",
    "Письмо отправлено автоматически, отвечать на него не нужно.\n"
    "С уважением, администратор системы Zeral",
};

const MailTexts englishTexts = {
    "Hello!",
    "Zeral: access to the mobile app",
    "Message from the Zeral system",
    "You have been given access to the Zeral mobile app.",
    "To set the app up, open the adding of an account in it and paste the authorisation data "
    "below, in full, as one line:",
    "This data contains your password. Do not forward this message, and delete it once the app "
    "is set up.",
    "The same data is in the attached QR code picture: instead of pasting it, you can scan it "
    "with the phone's camera in the app.",
    "This message was sent automatically; please do not reply.\n"
    "Kind regards, your Zeral system administrator",
};

const MailTexts &textsFor(const QVariant &locale)
{
    return locale.toString().left(2).compare(QLatin1String("en"), Qt::CaseInsensitive) == 0
               ? englishTexts
               : russianTexts;
}

QString domainOf(const QString &address)
{
    const QString domain = address.section(QLatin1Char('@'), -1).remove(QLatin1Char('>')).trimmed();
    return MailRenderer::isValidAddress(QStringLiteral("x@") + domain)
               ? domain
               : QStringLiteral("zeral.localdomain");
}

} // namespace

MailRenderer::MailRenderer(QString senderAddress)
    : m_sender(std::move(senderAddress))
{}

RenderedMail MailRenderer::render(const _EMAIL_MESSAGE &message) const
{
    const MailTexts &texts = textsFor(message.parameters.value(QLatin1String(email::LOCALE)));
    const bool withToken = message.parameters.value(QLatin1String(email::IS_MOBILE_TOKEN)).toBool();
    const QString token
        = withToken ? message.parameters.value(QLatin1String(email::TOKEN)).toString().trimmed()
                    : QString();
    // The mail is plain text, so the code goes as an attachment rather than an inline image of
    // an HTML part. A token too long for one code still goes as text. A body of the client's
    // own goes as it stands, without a picture its text doesn't mention.
    QByteArray qrCode;
    if (!token.isEmpty() && message.body.isEmpty()) {
        QString why;
        qrCode = QrCodeImage::png(token.toUtf8(), &why);
        if (qrCode.isEmpty())
            qCWarning(lcServer) << "the mail to" << message.to.trimmed()
                                << "goes without the QR code of its token:" << why;
    }

    RenderedMail mail;
    mail.recipient = message.to.trimmed();
    mail.subject = message.subject.trimmed();
    if (mail.subject.isEmpty())
        mail.subject = QString::fromUtf8(withToken ? texts.tokenSubject : texts.plainSubject);

    if (!message.body.isEmpty()) {
        // A body of its own is sent as it stands.
        mail.body = message.body;
    } else {
        QString greeting
            = message.parameters.value(QLatin1String(email::GREETINGS)).toString().trimmed();
        if (greeting.isEmpty())
            greeting = QString::fromUtf8(texts.greeting);
        QStringList paragraphs{greeting};
        if (withToken) {
            paragraphs << QString::fromUtf8(texts.tokenIntro) << QString::fromUtf8(texts.tokenSteps)
                       << token;
            if (!qrCode.isEmpty())
                paragraphs << QString::fromUtf8(texts.tokenPicture);
            paragraphs << QString::fromUtf8(texts.tokenWarning);
        }
        paragraphs << QString::fromUtf8(texts.closing);
        mail.body = paragraphs.join(QLatin1String("\n\n")) + QLatin1Char('\n');
    }

    MimeMessage mime;
    mime.addHeader("From", m_sender);
    mime.addHeader("To", mail.recipient);
    mime.addHeader("Subject", mail.subject);
    mime.addHeader("Date", QDateTime::currentDateTime().toString(Qt::RFC2822Date));
    mime.addHeader("Message-ID", QLatin1Char('<')
                                     + QUuid::createUuid().toString(QUuid::WithoutBraces)
                                     + QLatin1Char('@') + domainOf(m_sender) + QLatin1Char('>'));
    mime.setText(mail.body);
    if (!qrCode.isEmpty())
        mime.addAttachment(QLatin1String(QrCodeFileName), QStringLiteral("image/png"), qrCode);
    for (const _EMAIL_ATTACHMENT &attachment : message.attachments)
        mime.addAttachment(attachment.fileName, attachment.mimeType, attachment.content);
    mail.message = mime.toBytes();
    return mail;
}

bool MailRenderer::isValidAddress(const QString &address)
{
    return email::isValidAddress(address);
}

} // namespace zeral::server
