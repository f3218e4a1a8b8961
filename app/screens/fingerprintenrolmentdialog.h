#pragma once

#include "fingerprintclient.h"

#include <host/gui/widgets/messagewidget.h>
#include <shared/types.h>

#include <host/gui/biometrics/fingerprintreader.h>

#include <QDialog>
#include <QHash>
#include <QList>
#include <QSet>

#include <memory>

namespace Ui {
class FingerprintEnrolmentDialog;
}
class QLabel;
class QTreeWidgetItem;
class SimulatedFingerprintPanel;
class ZRServerInterface;

// The fingerprints of one user: which of his ten fingers have a template, scanning a finger
// into a new template and removing one. The fingers are numbered 0 to 9, the right hand's
// thumb to little finger, then the left hand's. The reader is the one given, or the one
// FingerprintReaderFactory chooses; when a real reader is missing, busy or unplugged, the
// simulated one stands in with a notice. A simulated reader is shown with its panel, and each
// stored finger says which kind of reader made it, so that nobody takes a simulated enrolment
// for a real one.
class FingerprintEnrolmentDialog : public QDialog
{
    Q_OBJECT
public:
    static constexpr int FingerCount = 10;

    enum class Activity {
        Idle,
        Loading,          // reading which fingers have a template
        WaitingForFinger, // the reader runs
        Saving,           // a template is being stored or removed
    };
    Q_ENUM(Activity)

    // Takes over `reader`; without one it asks FingerprintReaderFactory.
    FingerprintEnrolmentDialog(ZRServerInterface *server, zeral::TYPE_ID uid,
                               FingerprintReader *reader = nullptr, QWidget *parent = nullptr);
    ~FingerprintEnrolmentDialog() override;

    zeral::TYPE_ID uid() const { return m_uid; }
    FingerprintReader *reader() const { return m_reader; }
    Activity activity() const { return m_activity; }
    // The fingers known to have a template, ascending.
    QList<qint32> enrolledFingers() const;
    // The finger chosen in the list, -1 for none.
    int selectedFinger() const;
    // The template format of an enrolled finger, 0 when unknown.
    quint32 fingerFormat(int finger) const { return m_formats.value(finger); }
    // Why the simulated reader stands in for a real one; empty when it doesn't.
    QString readerNotice() const;

    static QString fingerName(int finger);

public slots:
    void startScan();
    void cancelScan();
    // Asks first; removes only an enrolled finger.
    void removeSelectedFinger();
    void reject() override;

private:
    void loadFingers();
    void useReader(FingerprintReader *reader);
    void templateEnrolled(quint32 format, const QByteArray &templateData);
    void readerFailed(FingerprintReader::Failure failure, const QString &message);
    void removeFinger(int finger);
    void setActivity(Activity activity);
    void updateFingerRow(int finger);
    void updateControls();
    void showMessage(const QString &text, MessageWidget::Icon icon);
    QString failureText(const QString &what, const FingerprintClient::Outcome &outcome) const;
    QTreeWidgetItem *fingerItem(int finger) const;

    std::unique_ptr<Ui::FingerprintEnrolmentDialog> m_ui;
    FingerprintClient *m_client;
    FingerprintReader *m_reader = nullptr;
    SimulatedFingerprintPanel *m_simulatedPanel = nullptr;
    zeral::TYPE_ID m_uid;
    QSet<qint32> m_enrolled;
    QHash<qint32, quint32> m_formats; // finger → template format, as far as known
    QLabel *m_noticeLabel = nullptr;
    bool m_fingersKnown = false;
    int m_scannedFinger = -1; // the finger on the reader or being saved
    Activity m_activity = Activity::Idle;
};
