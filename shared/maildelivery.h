#pragma once

#include <QDateTime>
#include <QMetaType>
#include <QString>

class QDataStream;

namespace zeral {

// What became of one mail of the server's outbox after an attempt to deliver it (or, in the
// answer to "send_email", when it was queued). The server pushes it to the sessions of the
// operator who queued the mail.
struct MailDelivery
{
    // The states as the wire spells them.
    static constexpr char Sent[] = "sent";       // the relay took it
    static constexpr char Pending[] = "pending"; // not delivered yet, tried again at nextAttempt
    static constexpr char Failed[] = "failed";   // given up after the last attempt
    static constexpr char Held[] = "held";       // no relay configured: kept until there is one

    qint64 id = 0;
    QString recipient;
    QString state;
    QString error;         // Russian, for the operator; empty when sent
    QDateTime nextAttempt; // UTC; invalid unless pending

    bool isKnownState() const;
    // Delivered or given up: nothing more will happen to it.
    bool isFinal() const;
    bool operator==(const MailDelivery &other) const;
    bool operator!=(const MailDelivery &other) const { return !(*this == other); }
};

QDataStream &operator<<(QDataStream &out, const MailDelivery &delivery);
QDataStream &operator>>(QDataStream &in, MailDelivery &delivery);

} // namespace zeral

Q_DECLARE_METATYPE(zeral::MailDelivery)
