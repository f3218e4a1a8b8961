#include "fingerprintclient.h"

#include "screenslogging.h"

#include <host/core/authdata.h>
#include <host/core/command.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <host/core/zrserverinterface.h>
#include <shared/wire.h>

#include <QTimer>

namespace proto = zeral::proto;

bool FingerprintClient::Outcome::isOk() const
{
    return status == proto::StatusOk;
}

FingerprintClient::FingerprintClient(ZRServerInterface *server, QObject *parent)
    : QObject(parent)
    , m_server(server)
{}

FingerprintClient::~FingerprintClient()
{
    // Answers that come after us must not reach callbacks into a dialog that is gone.
    if (m_server)
        m_server->cancelCallbacks(this);
}

void FingerprintClient::getUserFingers(zeral::TYPE_ID uid, FingersDone done)
{
    send(
        proto::command::GetUserFingers, ZRDataStream::pack(quint32(uid)),
        [done](const Outcome &outcome, const Command &answer) {
            QList<qint32> fingers;
            QHash<qint32, quint32> formats;
            if (!outcome.isOk()) {
                done(outcome, fingers, formats);
                return;
            }
            ZRDataStream in(answer.data);
            zeral::wire::readList(in, fingers);
            if (in.status() != QDataStream::Ok) {
                qCWarning(lcStudioScreens) << "unreadable list of fingers";
                done({proto::StatusMalformed, tr("Сервер прислал нечитаемый список пальцев.")}, {},
                     {});
                return;
            }
            // The formats, finger by finger; a server that sends none leaves them unknown.
            QList<quint32> formatList;
            if (!in.atEnd())
                zeral::wire::readList(in, formatList);
            if (in.status() == QDataStream::Ok && formatList.size() == fingers.size()) {
                for (int i = 0; i < fingers.size(); ++i)
                    formats.insert(fingers.at(i), formatList.at(i));
            } else if (!formatList.isEmpty() || in.status() != QDataStream::Ok) {
                qCWarning(lcStudioScreens) << "unreadable template formats of the fingers";
            }
            done(outcome, fingers, formats);
        });
}

void FingerprintClient::enrolFinger(zeral::TYPE_ID uid, qint32 finger, quint32 format,
                                    const QByteArray &sample, Done done)
{
    send(proto::command::EnrolFinger, ZRDataStream::pack(quint32(uid), finger, format, sample),
         [done](const Outcome &outcome, const Command &) { done(outcome); });
}

void FingerprintClient::removeFinger(zeral::TYPE_ID uid, qint32 finger, Done done)
{
    send(proto::command::RemoveFinger, ZRDataStream::pack(quint32(uid), finger),
         [done](const Outcome &outcome, const Command &) { done(outcome); });
}

void FingerprintClient::send(const char *name, const QByteArray &payload,
                             std::function<void(const Outcome &, const Command &)> finish)
{
    if (!m_server) {
        // The studio has torn its connection down: fail as a lost connection does, later.
        QTimer::singleShot(0, this, [finish] {
            finish({proto::StatusConnectionLost, tr("Нет соединения с сервером.")}, Command());
        });
        return;
    }
    Command request = Command::named(QLatin1String(name), AuthData::sessionId());
    request.data = payload;
    ++m_pending;
    m_server->send(
        request,
        [this, finish](Command &answer) {
            --m_pending;
            Outcome outcome{answer.status, QString()};
            if (!outcome.isOk()) {
                outcome.text = answer.errorText();
                qCDebug(lcStudioScreens)
                    << answer.name << "refused" << answer.status << outcome.text;
            }
            finish(outcome, answer);
        },
        this);
}
