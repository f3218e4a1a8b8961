#pragma once

#include <QDir>

class QWidget;

// Each section renders its widgets into the gallery folder, one PNG per widget.
namespace gallery {
// Grabs a shown widget into <dir>/<name>.png; returns false when the file could not be written.
bool shoot(QWidget *widget, const QDir &dir, const QString &name);

void shootWidgets(const QDir &dir);
void shootWizards(const QDir &dir);
void shootUserRoles(const QDir &dir);
void shootUserProperties(const QDir &dir);
void shootUserPermissions(const QDir &dir);
void shootNewUserPages(const QDir &dir);
} // namespace gallery
