#include "serverlanguages.h"

#include <server/engine/serverlogging.h>

#include <QDir>
#include <QLocale>
#include <QTranslator>

namespace zeral::server {

ServerLanguages::ServerLanguages() = default;
ServerLanguages::~ServerLanguages() = default;

QStringList ServerLanguages::load(const QString &folder)
{
    m_folder = folder;
    m_translators.clear();
    m_missingTold.clear();
    const QString prefix = QLatin1String(CatalogueName) + QLatin1Char('_');
    const QStringList files
        = QDir(folder).entryList({prefix + QLatin1String("*.qm")}, QDir::Files, QDir::Name);
    QStringList languages;
    for (const QString &file : files) {
        const QString language = file.mid(prefix.size()).chopped(3);
        auto translator = std::make_shared<QTranslator>();
        if (language.isEmpty() || !translator->load(file, folder)) {
            qCWarning(lcServer) << "the catalogue" << QDir(folder).filePath(file)
                                << "doesn't load: its language gets the Russian texts";
            continue;
        }
        m_translators.insert(language, translator);
        languages.append(language);
    }
    const QString also = languages.isEmpty()
                             ? QString()
                             : QLatin1String(" and ") + languages.join(QLatin1String(", "));
    qCInfo(lcServer).noquote() << QStringLiteral("texts for operators in Russian%1").arg(also)
                               << "from" << QDir::toNativeSeparators(folder);
    return languages;
}

const QTranslator *ServerLanguages::translator(const QString &language)
{
    if (language.isEmpty())
        return nullptr;
    // What a client names is read through QLocale, so that the names kept below are few
    // whatever it sends.
    const QLocale locale(language);
    if (locale.language() == QLocale::Russian)
        return nullptr;
    const QString name = locale.name();
    if (const auto whole = m_translators.constFind(name); whole != m_translators.cend())
        return whole->get();
    const QString alone = name.section(QLatin1Char('_'), 0, 0);
    if (const auto found = m_translators.constFind(alone); found != m_translators.cend())
        return found->get();
    if (!m_missingTold.contains(name)) {
        m_missingTold.insert(name);
        qCWarning(lcServer).noquote()
            << "no catalogue" << QLatin1String(CatalogueName) + QLatin1Char('_') + name + ".qm"
            << "(nor one for" << alone << "alone) in" << QDir::toNativeSeparators(m_folder)
            << "for a session that asks for" << language << "- its texts go in Russian";
    }
    return nullptr;
}

} // namespace zeral::server
