#include "fingerprintreaderfactory.h"

#include "biometricslogging.h"
#include "libfprintreader.h"
#include "simulatedfingerprintreader.h"

#include <QCoreApplication>

namespace {
FingerprintReaderFactory::Kind preferred = FingerprintReaderFactory::Kind::Simulated;
} // namespace

void FingerprintReaderFactory::setPreferredKind(Kind kind)
{
    preferred = kind;
}

FingerprintReaderFactory::Kind FingerprintReaderFactory::preferredKind()
{
    return preferred;
}

FingerprintReaderFactory::Kind FingerprintReaderFactory::kindFromSetting(const QString &value,
                                                                         Kind fallback)
{
    const QString key = value.trimmed().toLower();
    if (key == settingValue(Kind::Libfprint))
        return Kind::Libfprint;
    if (key == settingValue(Kind::Simulated))
        return Kind::Simulated;
    if (!key.isEmpty())
        qCWarning(lcBiometrics) << "unknown fingerprint reader kind" << value;
    return fallback;
}

QString FingerprintReaderFactory::settingValue(Kind kind)
{
    return kind == Kind::Libfprint ? QStringLiteral("libfprint") : QStringLiteral("simulated");
}

FingerprintReader *FingerprintReaderFactory::create(QObject *parent, QString *notice)
{
    if (notice)
        notice->clear();
    if (preferred == Kind::Libfprint) {
        if (LibfprintReader::isDevicePresent())
            return new LibfprintReader(parent);
        if (notice)
            *notice = fallbackNotice(QCoreApplication::translate("FingerprintReaderFactory",
                                                                 "Сканер отпечатков не найден."));
    }
    return new SimulatedFingerprintReader(parent);
}

QString FingerprintReaderFactory::fallbackNotice(const QString &reason)
{
    return QCoreApplication::translate("FingerprintReaderFactory",
                                       "%1 Отпечатки читаются имитацией сканера.")
        .arg(reason);
}

bool FingerprintReaderFactory::fallsBack(FingerprintReader::Failure failure)
{
    return failure == FingerprintReader::Failure::NoDevice
           || failure == FingerprintReader::Failure::DeviceBusy
           || failure == FingerprintReader::Failure::DeviceRemoved;
}
