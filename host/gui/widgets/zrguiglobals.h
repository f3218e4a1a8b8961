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
    // The name of the studio's own icon theme, shipped in the library's resources.
    static const QString IconThemeName;

    // The theme icon "object-<type>". For a type the theme lacks, the theme's rules give a
    // generic "object" icon of the inherited theme, or a null icon.
    static QIcon objectIcon(const QString &objectType);
    // The background of an event category's rows; invalid for a category without a colour.
    static QColor eventCategoryColor(unsigned int category);
    // The text colour of an item that is shown but not available.
    static QColor grey();
    // Makes the studio's theme the one QIcon::fromTheme reads. The library calls it when a
    // QCoreApplication starts; calling it again does no harm.
    static void installIconTheme();

    // The main window of the host application, once it exists.
    static QPointer<QWidget> zrApp;
};
