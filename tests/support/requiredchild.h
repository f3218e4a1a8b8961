#pragma once

#include <QObject>
#include <QtGlobal>

// A child that a form must have, by object name: a test that can't find it stops at once
// with the name, instead of failing later on a null pointer.
template<class Widget>
Widget *requiredChild(const QObject *parent, const char *name)
{
    Widget *widget = parent->findChild<Widget *>(QLatin1String(name));
    if (!widget)
        qFatal("no child %s", name);
    return widget;
}
