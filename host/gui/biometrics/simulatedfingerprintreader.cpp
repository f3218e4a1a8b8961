#include "simulatedfingerprintreader.h"

#include "biometricslogging.h"

#include <QRandomGenerator>

SimulatedFingerprintReader::SimulatedFingerprintReader(QObject *parent)
    : FingerprintReader(parent)
{}

bool SimulatedFingerprintReader::startEnrolment()
{
    return begin(false);
}

bool SimulatedFingerprintReader::startIdentification(const zeral::TEMPLATES_HASH &gallery)
{
    m_matcher.setTemplates(readableTemplates(gallery));
    return begin(true);
}

bool SimulatedFingerprintReader::begin(bool identifying)
{
    m_identifying = identifying;
    if (!m_active) {
        m_active = true;
        emit activeChanged(true);
    }
    emit fingerWanted();
    return true;
}

void SimulatedFingerprintReader::stop()
{
    if (m_active) {
        m_active = false;
        emit activeChanged(false);
    }
}

QString SimulatedFingerprintReader::name() const
{
    return tr("Имитация сканера отпечатков");
}

void SimulatedFingerprintReader::setNoisePerMille(int perMille)
{
    m_noisePerMille = qBound(0, perMille, 1000);
}

void SimulatedFingerprintReader::touch(const zeral::TEMPLATE_DATA &enrolled)
{
    if (!m_active)
        return;
    QByteArray sample = enrolled.data;
    const int bits = sample.size() * 8;
    const int flips = bits * m_noisePerMille / 1000;
    auto *random = QRandomGenerator::global();
    for (int flip = 0; flip < flips; ++flip) {
        const int bit = random->bounded(bits);
        sample[bit / 8] = char(sample.at(bit / 8) ^ (1 << (bit % 8)));
    }
    qCDebug(lcBiometrics) << "simulated touch of an enrolled finger, bits changed" << flips;
    read(enrolled.format, sample);
}

void SimulatedFingerprintReader::touchUnknownFinger()
{
    if (!m_active)
        return;
    read(SimulatedFormat, newTemplate());
}

void SimulatedFingerprintReader::read(quint32 format, const QByteArray &sample)
{
    emit sampleCaptured(format, sample);
    // A slot of sampleCaptured may have stopped the reader.
    if (!m_active)
        return;
    if (m_identifying)
        emit identified(m_matcher.identify(format, sample));
    else
        emit enrolled(format, sample);
}

QByteArray SimulatedFingerprintReader::newTemplate()
{
    QByteArray bytes(TemplateSize, Qt::Uninitialized);
    QRandomGenerator::global()->fillRange(reinterpret_cast<quint32 *>(bytes.data()),
                                          TemplateSize / int(sizeof(quint32)));
    return bytes;
}
