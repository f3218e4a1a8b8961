#pragma once

#include <QColor>
#include <QIcon>
#include <QPointer>
#include <QString>

class QWidget;

// Helpers for the look of every screen: icons of object types, colours of event categories,
// the grey of inactive text, and the application's main window as the parent of what a
// command opens.
class ZRGuiGlobals
{
public:
    // The theme icon "object-<type>"; a null icon for a type the theme lacks.
    static QIcon objectIcon(const QString &objectType);
    // The background of an event category's rows; invalid for a category without a colour.
    static QColor eventCategoryColor(unsigned int category);
    // The text colour of an item that is shown but not available.
    static QColor grey();

    // The main window of the host application, once it exists.
    static QPointer<QWidget> zrApp;
};
