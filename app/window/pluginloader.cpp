#include "pluginloader.h"

#include <host/core/zrplugininterface.h>

#include <QDir>
#include <QJsonObject>
#include <QLibrary>
#include <QLoggingCategory>
#include <QPluginLoader>

Q_LOGGING_CATEGORY(lcPlugins, "zr.studio.plugins")

PluginLoader::PluginLoader(const QString &folder, QObject *parent)
    : QObject(parent)
    , m_folder(folder)
{}

void PluginLoader::scan(QStringList *problems)
{
    m_scanned = true;
    const QDir dir(m_folder);
    if (!dir.exists()) {
        m_scanProblems.append(tr("Папка модулей %1 не найдена: экраны модулей недоступны. "
                                 "Укажите её параметром --plugins.")
                                  .arg(QDir::toNativeSeparators(m_folder)));
        problems->append(m_scanProblems);
        return;
    }
    const QStringList files = dir.entryList(QDir::Files, QDir::Name);
    for (const QString &file : files) {
        const QString path = dir.absoluteFilePath(file);
        if (!QLibrary::isLibrary(path))
            continue;
        auto *loader = new QPluginLoader(path, this);
        const QString iid = loader->metaData().value(QStringLiteral("IID")).toString();
        if (iid != QLatin1String(ZRPluginInterface_iid)) {
            qCWarning(lcPlugins) << "not a plugin of the studio:" << path << iid;
            m_scanProblems.append(tr("Файл %1 не является модулем студии и пропущен.").arg(file));
            delete loader;
            continue;
        }
        m_loaders.append(loader);
    }
    problems->append(m_scanProblems);
}

QList<QObject *> PluginLoader::instances(QStringList *problems)
{
    if (!m_scanned)
        scan(problems);
    else
        problems->append(m_scanProblems);
    QList<QObject *> result;
    for (QPluginLoader *loader : qAsConst(m_loaders)) {
        QObject *instance = loader->instance();
        if (!instance) {
            qCWarning(lcPlugins) << "can't load" << loader->fileName() << loader->errorString();
            problems->append(tr("Модуль %1 не загружен: %2")
                                 .arg(QFileInfo(loader->fileName()).fileName(),
                                      loader->errorString()));
            continue;
        }
        qCInfo(lcPlugins) << "loaded" << loader->fileName();
        result.append(instance);
    }
    return result;
}
