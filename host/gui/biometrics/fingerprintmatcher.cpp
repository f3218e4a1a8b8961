#include "fingerprintmatcher.h"

#include "biometricslogging.h"
#include "fingerprintreader.h"

#include <bitset>

void FingerprintMatcher::setTemplates(const zeral::TEMPLATES_HASH &templates)
{
    m_templates = templates;
}

void FingerprintMatcher::setThresholdPerMille(int perMille)
{
    m_thresholdPerMille = qBound(1, perMille, 1000);
}

zeral::TYPE_ID FingerprintMatcher::identify(quint32 format, const QByteArray &sample) const
{
    if (format != FingerprintReader::SimulatedFormat) {
        qCWarning(lcBiometrics) << "no matcher for the template format" << format;
        return 0;
    }
    zeral::TYPE_ID best = 0;
    int bestSimilarity = 0;
    for (auto it = m_templates.constBegin(); it != m_templates.constEnd(); ++it) {
        const int similarity = similarityPerMille(format, sample, it.value());
        if (similarity >= m_thresholdPerMille && similarity > bestSimilarity) {
            best = it.key();
            bestSimilarity = similarity;
        }
    }
    return best;
}

int FingerprintMatcher::similarityPerMille(quint32 format, const QByteArray &sample,
                                           const zeral::TEMPLATE_DATA &enrolled)
{
    if (enrolled.format != format || enrolled.data.size() != sample.size() || sample.isEmpty())
        return 0;
    qint64 differing = 0;
    for (int i = 0; i < sample.size(); ++i)
        differing += std::bitset<8>(quint8(sample.at(i) ^ enrolled.data.at(i))).count();
    const qint64 bits = qint64(sample.size()) * 8;
    return int((bits - differing) * 1000 / bits);
}
