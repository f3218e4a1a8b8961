#include "zrguiglobals.h"

#include <QApplication>
#include <QPalette>

const QString ZRGuiGlobals::IconThemeName = QStringLiteral("zeral");

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

void ZRGuiGlobals::installIconTheme()
{
    // Our theme lives in the resources; the icons it inherits (breeze) and the ones Qt and
    // KDE widgets ask for by standard names come from the system's folders.
    QStringList paths = QIcon::themeSearchPaths();
    const QString resourcePath = QStringLiteral(":/icons");
    const QString systemPath = QStringLiteral("/usr/share/icons");
    if (!paths.contains(resourcePath))
        paths.prepend(resourcePath);
    if (!paths.contains(systemPath))
        paths.append(systemPath);
    QIcon::setThemeSearchPaths(paths);
    QIcon::setThemeName(IconThemeName);
}

namespace {
void installIconThemeAtStartup()
{
    ZRGuiGlobals::installIconTheme();
}
} // namespace

Q_COREAPP_STARTUP_FUNCTION(installIconThemeAtStartup)
