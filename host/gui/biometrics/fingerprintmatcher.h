#pragma once

#include <shared/templatedata.h>

// Tells whose finger a sample is, against a set of stored templates. A sample is compared only
// with templates of its own format. The simulated format is compared bit by bit: a sample
// matches a template of the same length when at least the threshold share of bits agree. Two
// unrelated fingers agree in about half of their bits.
class FingerprintMatcher
{
public:
    // Share of equal bits, in per mille, from which a simulated sample matches.
    static constexpr int DefaultThresholdPerMille = 900;

    void setTemplates(const zeral::TEMPLATES_HASH &templates);
    const zeral::TEMPLATES_HASH &templates() const { return m_templates; }
    void setThresholdPerMille(int perMille);

    // The owner of the best matching template; 0 when no template matches.
    zeral::TYPE_ID identify(quint32 format, const QByteArray &sample) const;

    // How much of a sample agrees with a template, in per mille; 0 for another format or size.
    static int similarityPerMille(quint32 format, const QByteArray &sample,
                                  const zeral::TEMPLATE_DATA &enrolled);

private:
    zeral::TEMPLATES_HASH m_templates;
    int m_thresholdPerMille = DefaultThresholdPerMille;
};
