#include "zrguiglobals.h"

#include <QApplication>
#include <QPalette>

QPointer<QWidget> ZRGuiGlobals::zrApp;

QIcon ZRGuiGlobals::objectIcon(const QString &objectType)
{
    return QIcon::fromTheme(QLatin1String("object-") + objectType);
}

QColor ZRGuiGlobals::eventCategoryColor(unsigned int category)
{
    // Alarms (1) and faults (4) stand out; every other category keeps the view's background.
    switch (category) {
    case 1:
        return QColor(0xfb, 0xd5, 0xd5);
    case 4:
        return QColor(0xfd, 0xed, 0xc4);
    default:
        return QColor();
    }
}

QColor ZRGuiGlobals::grey()
{
    return QApplication::palette().color(QPalette::Disabled, QPalette::Text);
}
