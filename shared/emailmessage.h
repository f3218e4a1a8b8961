#pragma once

#include <shared/emailattachment.h>

#include <QHash>
#include <QList>
#include <QString>
#include <QVariant>

class QDataStream;

namespace zeral {

namespace email {
// Keys of _EMAIL_MESSAGE::parameters: the server renders the mail from them.
inline constexpr char LOCALE[] = "LOCALE";
inline constexpr char IS_MOBILE_TOKEN[] = "IS_MOBILE_TOKEN";
inline constexpr char GREETINGS[] = "GREETINGS";
inline constexpr char TOKEN[] = "TOKEN";
} // namespace email

// One e-mail handed to the server. An empty body asks the server to render the text from
// the parameters.
struct _EMAIL_MESSAGE
{
    QString to;
    QString subject;
    QString body;
    QList<_EMAIL_ATTACHMENT> attachments;
    QHash<QString, QVariant> parameters;

    bool operator==(const _EMAIL_MESSAGE &other) const;
    bool operator!=(const _EMAIL_MESSAGE &other) const { return !(*this == other); }
};
using EMAIL_MESSAGE = _EMAIL_MESSAGE;

QDataStream &operator<<(QDataStream &out, const _EMAIL_MESSAGE &message);
QDataStream &operator>>(QDataStream &in, _EMAIL_MESSAGE &message);

} // namespace zeral
