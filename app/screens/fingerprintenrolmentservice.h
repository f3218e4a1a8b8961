#pragma once

#include <shared/types.h>

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QStringList>

struct Command;
class FingerprintEnrolmentDialog;
class ZRServerInterface;

// The studio's answer to "show:fingerprintwidget": a screen asks for the enrolment of a user's
// fingerprints, and the enrolment dialog of that user opens beside the main window. When it
// closes, each screen that asked for it is told by "fingerprint.finished:<its identity>".
class FingerprintEnrolmentService : public QObject
{
    Q_OBJECT
public:
    explicit FingerprintEnrolmentService(ZRServerInterface *server, QObject *parent = nullptr);
    // Closes the dialogs still open and stops answering.
    ~FingerprintEnrolmentService() override;

    // Closes every open dialog, telling the screens that asked for them.
    void closeAll();
    // The open dialog of a user, or null.
    FingerprintEnrolmentDialog *dialogFor(zeral::TYPE_ID uid) const;

signals:
    void dialogOpened(FingerprintEnrolmentDialog *dialog);

private:
    struct OpenDialog
    {
        QPointer<FingerprintEnrolmentDialog> dialog;
        const QObject *identity = nullptr; // tells this dialog from a later one of the same user
        QStringList clientIds;             // the screens to tell when it closes
    };

    void handleShowRequest(Command &command);
    void dialogClosed(zeral::TYPE_ID uid, const QObject *dialog);

    QPointer<ZRServerInterface> m_server;
    QHash<zeral::TYPE_ID, OpenDialog> m_dialogs;
};
