#pragma once

#include <host/core/zrplugininterface.h>

#include <QObject>

// The smallest plugin there is: a QObject with the plugin interface and nothing else, so
// that tests reach the interface's own behaviour.
class TestPlugin : public QObject, public ZRPluginInterface
{
    Q_OBJECT
    Q_INTERFACES(ZRPluginInterface)
public:
    explicit TestPlugin(QObject *parent = nullptr)
        : QObject(parent)
    {}

    QString pluginName() const override { return QStringLiteral("test plugin"); }
    int pluginVersion() const override { return 1; }
    QString pluginBuild() const override { return QStringLiteral("test"); }
    QObject *object() override { return this; }
};
