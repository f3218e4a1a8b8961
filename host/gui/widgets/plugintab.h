#pragma once

#include <QIcon>
#include <QString>

// One tab of a plugin's screen as the studio lists it at its side.
struct PLUGIN_TAB
{
    QString name;
    QIcon icon;
    int index = 0;
    bool current = false;
    bool hidden = false;
};
