#pragma once

#include <QObject>

// A Qt plugin of some other application: the studio must leave it alone.
class ForeignPlugin : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.example.SomethingElse/1.0" FILE "foreignplugin.json")
};
