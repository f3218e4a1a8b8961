#include "settings.h"

#include <QSettings>

#include <memory>

namespace {

std::unique_ptr<QSettings> &store()
{
    static std::unique_ptr<QSettings> settings;
    return settings;
}

} // namespace

QSettings *Settings::instance()
{
    if (!store())
        store() = std::make_unique<QSettings>();
    return store().get();
}

QVariant Settings::value(const QString &key, const QVariant &defaultValue)
{
    return instance()->value(key, defaultValue);
}

void Settings::setValue(const QString &key, const QVariant &value)
{
    instance()->setValue(key, value);
}

void Settings::useFile(const QString &fileName)
{
    if (store())
        store()->sync();
    store() = std::make_unique<QSettings>(fileName, QSettings::IniFormat);
}
