#pragma once

#include "fingerprintmatcher.h"
#include "fingerprintreader.h"

#include <shared/templatedata.h>

// The reader of a machine that has none. A person "touches" it by choosing one of the enrolled
// fingers (SimulatedFingerprintPanel lists them): the sample is that template with a little
// noise, as a second reading of a real finger never equals the first. A finger nobody has
// enrolled gives random bytes, which is also what enrolment stores as a new template.
// Identification compares the sample bit by bit through FingerprintMatcher.
class SimulatedFingerprintReader : public FingerprintReader
{
    Q_OBJECT
public:
    // Bytes of a simulated template.
    static constexpr int TemplateSize = zeral::SIMULATED_FINGERPRINT_SIZE;

    explicit SimulatedFingerprintReader(QObject *parent = nullptr);

    bool startEnrolment() override;
    bool startIdentification(const zeral::TEMPLATES_HASH &gallery) override;
    void stop() override;
    bool isActive() const override { return m_active; }
    bool isSimulated() const override { return true; }
    QString name() const override;
    quint32 templateFormat() const override { return SimulatedFormat; }

    // Bits of a touch that differ from the enrolled template, out of a thousand.
    void setNoisePerMille(int perMille);

    // Puts an enrolled finger on the reader; nothing happens while it is stopped.
    void touch(const zeral::TEMPLATE_DATA &enrolled);
    // Puts a finger on it that no template was made from.
    void touchUnknownFinger();

    // A new random template of the simulated format.
    static QByteArray newTemplate();

signals:
    // Every touch, as read, before it is enrolled or identified.
    void sampleCaptured(quint32 format, const QByteArray &sample);

private:
    bool begin(bool identifying);
    void read(quint32 format, const QByteArray &sample);

    bool m_active = false;
    bool m_identifying = false;
    FingerprintMatcher m_matcher;
    int m_noisePerMille = 30;
};
