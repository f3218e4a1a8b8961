#include "fingerprintenrolmentservice.h"

#include "fingerprintenrolmentdialog.h"
#include "screenslogging.h"

#include <host/core/authdata.h>
#include <host/core/command.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <host/core/zrserverinterface.h>
#include <host/gui/widgets/zrguiglobals.h>
#include <shared/rolenames.h>

namespace proto = zeral::proto;

FingerprintEnrolmentService::FingerprintEnrolmentService(ZRServerInterface *server, QObject *parent)
    : QObject(parent)
    , m_server(server)
{
    if (m_server) {
        m_server->registerLocalHandler(QLatin1String(proto::studio::ShowFingerprintWidget),
                                       [this](Command &command) { handleShowRequest(command); });
    }
}

FingerprintEnrolmentService::~FingerprintEnrolmentService()
{
    if (m_server)
        m_server->unregisterLocalHandler(QLatin1String(proto::studio::ShowFingerprintWidget));
    // Closing tells the screens that asked, while this object can still send.
    closeAll();
}

void FingerprintEnrolmentService::closeAll()
{
    const auto open = m_dialogs;
    for (const OpenDialog &entry : open) {
        if (entry.dialog)
            entry.dialog->reject();
    }
}

FingerprintEnrolmentDialog *FingerprintEnrolmentService::dialogFor(zeral::TYPE_ID uid) const
{
    return m_dialogs.value(uid).dialog;
}

void FingerprintEnrolmentService::handleShowRequest(Command &command)
{
    ZRDataStream in(command.data);
    qint32 uid = 0;
    QString clientId;
    in >> uid >> clientId;
    command.data.clear();
    if (in.status() != QDataStream::Ok || uid <= 0) {
        qCWarning(lcStudioScreens) << "unreadable enrolment request";
        command.status = proto::StatusMalformed;
        command.data = ZRDataStream::pack(tr("Запрос на ввод отпечатков не прочитан."));
        return;
    }
    if (!AuthData::roles().contains(QLatin1String(zeral::role::USER_BIOMETRICS_EDIT))) {
        command.status = proto::StatusBiometricRefused;
        command.data = ZRDataStream::pack(
            tr("У вас нет права изменять биометрические данные. Обратитесь к администратору."));
        return;
    }

    auto existing = m_dialogs.find(zeral::TYPE_ID(uid));
    if (existing != m_dialogs.end() && existing->dialog) {
        if (!existing->clientIds.contains(clientId))
            existing->clientIds.append(clientId);
        existing->dialog->show();
        existing->dialog->raise();
        existing->dialog->activateWindow();
        command.status = proto::StatusOk;
        return;
    }

    auto *dialog = new FingerprintEnrolmentDialog(m_server, zeral::TYPE_ID(uid), nullptr,
                                                  ZRGuiGlobals::zrApp);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setModal(false);
    m_dialogs.insert(zeral::TYPE_ID(uid), {dialog, dialog, {clientId}});
    // A dialog ends by closing; one destroyed with the main window never finished, and the
    // screens are told all the same.
    const zeral::TYPE_ID user = zeral::TYPE_ID(uid);
    connect(dialog, &QDialog::finished, this, [this, user, dialog] { dialogClosed(user, dialog); });
    connect(dialog, &QObject::destroyed, this,
            [this, user](QObject *gone) { dialogClosed(user, gone); });
    dialog->show();
    command.status = proto::StatusOk;
    qCDebug(lcStudioScreens) << "fingerprint enrolment opened for" << uid << "by" << clientId;
    emit dialogOpened(dialog);
}

void FingerprintEnrolmentService::dialogClosed(zeral::TYPE_ID uid, const QObject *dialog)
{
    const auto entry = m_dialogs.constFind(uid);
    if (entry == m_dialogs.cend() || entry->identity != dialog)
        return;
    const QStringList clientIds = entry->clientIds;
    m_dialogs.erase(entry);
    if (!m_server)
        return;
    for (const QString &clientId : clientIds) {
        Command finished
            = Command::named(QLatin1String(proto::studio::FingerprintFinishedPrefix) + clientId);
        // The screen's answer tells nothing we act on.
        m_server->send(
            finished, [](Command &) {}, this);
    }
}
