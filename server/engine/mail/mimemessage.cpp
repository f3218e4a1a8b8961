#include "mimemessage.h"

#include <QRegularExpression>
#include <QUuid>

namespace zeral::server {

namespace {

const QByteArray crlf("\r\n");
// Bytes of UTF-8 per encoded word: 52 base64 characters and the 12 of the frame keep a
// folded line under 78 characters.
constexpr int wordBytes = 39;

bool isPrintableAscii(const QString &value)
{
    for (const QChar c : value) {
        if (c.unicode() < 0x20 || c.unicode() > 0x7e)
            return false;
    }
    return true;
}

QString withoutLineBreaks(QString value)
{
    value.replace(QLatin1Char('\r'), QLatin1Char(' '));
    value.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return value;
}

// A file name fit for a quoted parameter: no path, no quotes, no control characters.
QString safeFileName(const QString &fileName)
{
    QString name = fileName.section(QLatin1Char('/'), -1).section(QLatin1Char('\\'), -1);
    name.remove(QRegularExpression(QStringLiteral("[\"\\x00-\\x1f\\x7f]")));
    return name.isEmpty() ? QStringLiteral("attachment") : name;
}

} // namespace

void MimeMessage::addHeader(const QByteArray &name, const QString &value)
{
    m_headers.append({name, withoutLineBreaks(value)});
}

void MimeMessage::setText(const QString &text)
{
    m_text = text;
}

void MimeMessage::addAttachment(const QString &fileName, const QString &mimeType,
                                const QByteArray &content)
{
    m_attachments.append({fileName, mimeType, content});
}

QByteArray MimeMessage::toBytes() const
{
    QByteArray message;
    for (const auto &header : m_headers)
        message += header.first + ": " + encodeHeaderValue(header.second) + crlf;
    message += "MIME-Version: 1.0" + crlf;
    if (m_attachments.isEmpty())
        return message + textPart();

    // "=_" can't occur in base64, so the boundary never meets a line of a part.
    const QByteArray boundary = "=_zr_" + QUuid::createUuid().toRfc4122().toHex();
    message
        += "Content-Type: multipart/mixed;" + crlf + " boundary=\"" + boundary + "\"" + crlf + crlf;
    message += "This is a multi-part message in MIME format." + crlf;
    message += "--" + boundary + crlf + textPart();
    for (const Attachment &attachment : m_attachments)
        message += "--" + boundary + crlf + attachmentPart(attachment);
    message += "--" + boundary + "--" + crlf;
    return message;
}

QByteArray MimeMessage::textPart() const
{
    // Text travels in its canonical form, with CRLF line ends.
    QString canonical = m_text;
    canonical.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    canonical.replace(QLatin1Char('\n'), QLatin1String("\r\n"));
    return "Content-Type: text/plain; charset=utf-8" + crlf + "Content-Transfer-Encoding: base64"
           + crlf + crlf + base64Lines(canonical.toUtf8());
}

QByteArray MimeMessage::attachmentPart(const Attachment &attachment)
{
    static const QRegularExpression mimeTypePattern(
        QStringLiteral("^[A-Za-z0-9][A-Za-z0-9!#$&^_.+-]*/[A-Za-z0-9][A-Za-z0-9!#$&^_.+-]*$"));
    const QString mimeType = mimeTypePattern.match(attachment.mimeType).hasMatch()
                                 ? attachment.mimeType
                                 : QStringLiteral("application/octet-stream");
    const QString fileName = safeFileName(attachment.fileName);

    QByteArray type = "Content-Type: " + mimeType.toLatin1();
    QByteArray disposition = "Content-Disposition: attachment; ";
    if (isPrintableAscii(fileName)) {
        type += "; name=\"" + fileName.toLatin1() + "\"";
        disposition += "filename=\"" + fileName.toLatin1() + "\"";
    } else {
        // Other than ASCII, the name goes as an extended parameter in UTF-8.
        disposition += crlf + " filename*=UTF-8''" + fileName.toUtf8().toPercentEncoding();
    }
    return type + crlf + disposition + crlf + "Content-Transfer-Encoding: base64" + crlf + crlf
           + base64Lines(attachment.content);
}

QByteArray MimeMessage::encodeHeaderValue(const QString &value)
{
    if (isPrintableAscii(value))
        return value.toLatin1();

    QByteArray encoded;
    QByteArray word;
    const auto flush = [&] {
        if (word.isEmpty())
            return;
        if (!encoded.isEmpty())
            encoded += crlf + " ";
        encoded += "=?UTF-8?B?" + word.toBase64() + "?=";
        word.clear();
    };
    // A word holds whole characters only: a surrogate pair stays together.
    for (int i = 0; i < value.size(); ++i) {
        int length = 1;
        if (value.at(i).isHighSurrogate() && i + 1 < value.size()
            && value.at(i + 1).isLowSurrogate())
            length = 2;
        const QByteArray character = value.mid(i, length).toUtf8();
        if (word.size() + character.size() > wordBytes)
            flush();
        word += character;
        i += length - 1;
    }
    flush();
    return encoded;
}

QByteArray MimeMessage::base64Lines(const QByteArray &data)
{
    const QByteArray base64 = data.toBase64();
    QByteArray lines;
    lines.reserve(base64.size() + base64.size() / 38 + 2);
    for (int offset = 0; offset < base64.size(); offset += 76)
        lines += base64.mid(offset, 76) + crlf;
    return lines;
}

} // namespace zeral::server
