#pragma once

#include <shared/fingerprintformat.h>

#include <QByteArray>
#include <QObject>
#include <QString>

// A fingerprint reader, as the screens that read fingers see it: started and stopped, it hands
// over each finger put on it as a sample in the format of its maker. Enrolment stores samples
// as templates; confirmation matches them against stored templates.
class FingerprintReader : public QObject
{
    Q_OBJECT
public:
    // The template format of samples that no real reader made (see SimulatedFingerprintReader).
    static constexpr quint32 SimulatedFormat = zeral::SIMULATED_FINGERPRINT_FORMAT;

    explicit FingerprintReader(QObject *parent = nullptr);

    // Starts waiting for fingers; false, with errorOccurred, when the reader can't be used.
    virtual bool start() = 0;
    virtual void stop() = 0;
    virtual bool isActive() const = 0;
    // True for a reader that only imitates one; the screens say so to the operator.
    virtual bool isSimulated() const = 0;
    // The reader's name for the operator.
    virtual QString name() const = 0;

signals:
    void sampleCaptured(quint32 format, const QByteArray &sample);
    void activeChanged(bool active);
    void errorOccurred(const QString &message);
};
