#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

class QPluginLoader;

// Finds the studio's screens in a folder of plugins. A file is taken only if its metadata
// names the studio's plugin interface, which is read before any of its code runs. The
// libraries stay loaded for the life of the studio; their root objects are made anew for
// each login, since the screens are built for the operator who logged in.
class PluginLoader : public QObject
{
    Q_OBJECT
public:
    explicit PluginLoader(const QString &folder, QObject *parent = nullptr);

    QString folder() const { return m_folder; }
    // The root object of every usable plugin, in the order of the file names. What could not
    // be used is described in `problems`, one sentence per file, for the operator.
    QList<QObject *> instances(QStringList *problems);

private:
    void scan(QStringList *problems);

    QString m_folder;
    bool m_scanned = false;
    QStringList m_scanProblems;
    QList<QPluginLoader *> m_loaders;
};
