#pragma once

#include <shared/objectinfo.h>

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariant>

// Helpers about objects of the system that need no widgets.
class ZRGlobals
{
public:
    // The name an operator knows an object by: the login of a user, the full name of an
    // employee, the name of anything else.
    static QString objectName(const zeral::ObjectInfo &object);
    static QString objectName(const QString &type, const QHash<QString, QString> &parameters);

    // The same hash with every value as text.
    static QHash<QString, QString> convertHash(const QHash<QString, QVariant> &hash);

    // Built-in role template id to its Russian source text; translate in the context
    // "ZRGlobals".
    static const QHash<QString, QString> &roleTemplateNames();

    // Device object types, by what they do.
    static const QStringList &relayDevices();
    static const QStringList &videoDevices();
    static const QStringList &videoServerDevices();
    static const QStringList &accessShowDevices();

    ZRGlobals() = delete;
};

namespace zeral {

// A date and time as long text in the interface language ("mainwindow/language").
QString localeLongTime(const QDateTime &dateTime);

} // namespace zeral
