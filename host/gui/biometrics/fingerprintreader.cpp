#include "fingerprintreader.h"

FingerprintReader::FingerprintReader(QObject *parent)
    : QObject(parent)
{}

zeral::TEMPLATES_HASH
FingerprintReader::readableTemplates(const zeral::TEMPLATES_HASH &gallery) const
{
    zeral::TEMPLATES_HASH readable;
    for (auto it = gallery.constBegin(); it != gallery.constEnd(); ++it) {
        if (it.value().format == templateFormat())
            readable.insert(it.key(), it.value());
    }
    return readable;
}

QString FingerprintReader::formatName(quint32 format)
{
    switch (format) {
    case SimulatedFormat:
        return tr("имитация");
    case LibfprintFormat:
        return tr("сканер");
    default:
        return tr("формат %1").arg(format, 8, 16, QLatin1Char('0'));
    }
}
