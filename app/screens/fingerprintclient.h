#pragma once

#include <shared/types.h>

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>

struct Command;
class ZRServerInterface;

// The three fingerprint commands of the server, for the enrolment screen. Every call is
// asynchronous: its callback runs once, later, with the outcome, unless this object is gone by
// then. Requests carry the session of the logged-in operator.
class FingerprintClient : public QObject
{
    Q_OBJECT
public:
    struct Outcome
    {
        qint32 status = 0;
        QString text; // the server's sentence on failure
        bool isOk() const;
    };
    using Done = std::function<void(const Outcome &outcome)>;
    // The fingers, ascending, and the template format of each (missing from older servers).
    using FingersDone = std::function<void(const Outcome &outcome, const QList<qint32> &fingers,
                                           const QHash<qint32, quint32> &formats)>;

    explicit FingerprintClient(ZRServerInterface *server, QObject *parent = nullptr);
    ~FingerprintClient() override;

    // The fingers (0..9) of the user that have a template, with their formats.
    void getUserFingers(zeral::TYPE_ID uid, FingersDone done);
    // Stores a sample as the template of a finger, replacing an earlier one.
    void enrolFinger(zeral::TYPE_ID uid, qint32 finger, quint32 format, const QByteArray &sample,
                     Done done);
    void removeFinger(zeral::TYPE_ID uid, qint32 finger, Done done);

    int pendingCount() const { return m_pending; }

private:
    void send(const char *name, const QByteArray &payload,
              std::function<void(const Outcome &, const Command &)> finish);

    QPointer<ZRServerInterface> m_server;
    int m_pending = 0;
};
