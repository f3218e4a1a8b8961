#pragma once

#include <QByteArray>
#include <QString>

class QDataStream;

namespace zeral {

// One file attached to an e-mail.
struct _EMAIL_ATTACHMENT
{
    QString fileName;
    QString mimeType;
    QByteArray content;

    bool operator==(const _EMAIL_ATTACHMENT &other) const
    {
        return fileName == other.fileName && mimeType == other.mimeType && content == other.content;
    }
    bool operator!=(const _EMAIL_ATTACHMENT &other) const { return !(*this == other); }
};
using EMAIL_ATTACHMENT = _EMAIL_ATTACHMENT;

QDataStream &operator<<(QDataStream &out, const _EMAIL_ATTACHMENT &attachment);
QDataStream &operator>>(QDataStream &in, _EMAIL_ATTACHMENT &attachment);

} // namespace zeral
