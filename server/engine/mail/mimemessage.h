#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

namespace zeral::server {

// An Internet message in the form SMTP carries it: header fields, then a plain UTF-8 text,
// alone or followed by attachments in a multipart/mixed body. Lines end in CRLF, header
// values with other than printable ASCII become encoded words, and every body part goes
// base64-encoded, so no line is ever too long.
class MimeMessage
{
public:
    // `value` is text; line breaks in it are dropped, so nobody can add a header field.
    void addHeader(const QByteArray &name, const QString &value);
    void setText(const QString &text);
    void addAttachment(const QString &fileName, const QString &mimeType, const QByteArray &content);
    QByteArray toBytes() const;

    // The value as it may stand in a header field: as it is if it is printable ASCII,
    // otherwise as folded "=?UTF-8?B?...?=" words.
    static QByteArray encodeHeaderValue(const QString &value);
    // Base64 in lines of 76 characters, each ended by CRLF.
    static QByteArray base64Lines(const QByteArray &data);

private:
    struct Attachment
    {
        QString fileName;
        QString mimeType;
        QByteArray content;
    };

    QByteArray textPart() const;
    static QByteArray attachmentPart(const Attachment &attachment);

    QList<QPair<QByteArray, QString>> m_headers;
    QString m_text;
    QList<Attachment> m_attachments;
};

} // namespace zeral::server
