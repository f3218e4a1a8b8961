#pragma once

#include <QString>
#include <QVariant>

class QSettings;

// The studio's settings store. One QSettings for the process: by default the user's
// configuration of the application; the studio or a test may point it at a file.
class Settings
{
public:
    static QSettings *instance();
    static QVariant value(const QString &key, const QVariant &defaultValue = QVariant());
    static void setValue(const QString &key, const QVariant &value);
    // Uses an INI file from now on (the previous store is synced and dropped).
    static void useFile(const QString &fileName);

    Settings() = delete;
};
